#include "interface/shell/ZoomBar.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/Look.h"

#include <QHBoxLayout>
#include <QKeySequence>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QString keyName(const QString& key)
{
    return QKeySequence(key).toString(QKeySequence::NativeText);
}

} // namespace

// The percent.
class ZoomBar::Label : public QWidget
{
public:
    explicit Label(QWidget* parent)
        : QWidget(parent)
    {
        setFixedSize(50, 32);
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

    void setPercent(int percent)
    {
        m_words = u"%1%"_s.arg(percent);
        setAccessibleName(m_words);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        TypeSpec spec = typeSpec(TypeStyle::Small);
        spec.weight = 500;
        painter.setPen(corvelle::palette(schemeOf(*this)).ink2);
        Lettering(spec).draw(painter, rect(), Qt::AlignHCenter, m_words);
    }

private:
    QString m_words;
};

ZoomBar::ZoomBar(QWidget* parent)
    : GlassPanel(Fill::Glass, radius::zoom, parent)
    , m_label(new Label(this))
{
    setAccessibleName(u"Zoom"_s);
    auto* out = new BarButton(Icon::Minus, u"Zoom out"_s, this);
    auto* in = new BarButton(Icon::Plus, u"Zoom in"_s, this);
    out->setSignSize(18);
    in->setSignSize(18);
    out->setName(u"Zoom out"_s, keyName(u"Ctrl+-"_s));
    in->setName(u"Zoom in"_s, keyName(u"Ctrl++"_s));
    connect(out, &QAbstractButton::clicked, this, &ZoomBar::zoomOutWanted);
    connect(in, &QAbstractButton::clicked, this, &ZoomBar::zoomInWanted);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(4, 4, 4, 4);
    row->setSpacing(0);
    row->addWidget(out);
    row->addWidget(m_label);
    row->addWidget(in);
    setFixedSize(row->sizeHint().width(), 40);
}

void ZoomBar::setPercent(int percent)
{
    m_label->setPercent(percent);
}

} // namespace corvelle
