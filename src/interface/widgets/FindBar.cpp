#include "interface/widgets/FindBar.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/Look.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int fieldWidth = 220, leastField = 80, leastCount = 76, barHeight = 44;

} // namespace

FindBar::FindBar(const QString& where, QWidget* parent)
    : GlassPanel(Fill::Panel, radius::menu, parent)
    , m_field(new QLineEdit(this))
    , m_count(new QLabel(this))
{
    setBare(true);
    setAccessibleName(u"Find"_s);
    setWhere(where);
    m_field->setFrame(false);
    m_field->setFixedHeight(32);
    m_field->setMinimumWidth(fieldWidth);
    m_field->setTextMargins(8, 0, 8, 0);
    m_field->setFont(corvelle::font(TypeStyle::Body));
    m_field->installEventFilter(this);
    m_count->setFixedWidth(leastCount);
    m_count->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_count->setFont(corvelle::font(TypeStyle::Small));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(6, 6, 6, 6);
    row->setSpacing(0);
    row->addWidget(m_field, 1);
    row->addWidget(m_count);
    row->addSpacing(6);
    const auto button = [&](Icon sign, const QString& name, auto act) {
        auto* made = new BarButton(sign, name, this);
        made->setSignSize(16);
        connect(made, &QAbstractButton::clicked, this, act);
        row->addWidget(made);
    };
    button(Icon::ChevronUp, u"Previous"_s, [this] { emit stepWanted(-1); });
    button(Icon::ChevronDown, u"Next"_s, [this] { emit stepWanted(1); });
    button(Icon::Close, u"Close"_s, [this] { emit closeWanted(); });
    connect(m_field, &QLineEdit::textChanged, this, &FindBar::wordsChanged);
    // From now on the field gives way to long counts.
    m_wanted = sizeHint().width();
    setFixedSize(m_wanted, barHeight);
    m_field->setMinimumWidth(leastField);
    hide();
}

void FindBar::setWhere(const QString& where)
{
    m_field->setAccessibleName(where);
    m_field->setPlaceholderText(where);
}

void FindBar::fit(int room)
{
    const int least = layout()->minimumSize().width();
    setFixedWidth(std::clamp(room, least, std::max(least, m_wanted)));
}

void FindBar::open()
{
    QPalette colors = m_field->palette();
    colors.setColor(QPalette::Base, Qt::transparent); // its ground has round corners
    m_field->setPalette(colors);
    if (!isVisible() || isLeaving())
        appear();
    m_field->setFocus();
    m_field->selectAll();
}

void FindBar::setWords(const QString& words)
{
    m_field->setText(words);
}

QString FindBar::words() const
{
    return m_field->text();
}

void FindBar::setCount(int current, int count, Search search)
{
    const auto number = [](int value) { return QLocale(QLocale::English).toString(value); };
    const bool ended = search == Search::Ended;
    QString words;
    if (m_field->text().isEmpty())
        words.clear();
    else if (count == 0)
        words = ended ? u"Not found"_s : u"…"_s;
    else if (current < 0)
        words = u"%1 found"_s.arg(number(count));
    else
        words = u"%1 of %2"_s.arg(number(current + 1), number(count));
    if (count > 0 && !ended && !words.isEmpty())
        words += u'…';
    m_count->setText(words);
    m_count->setFixedWidth(std::max(leastCount, m_count->sizeHint().width()));
}

QString FindBar::countWords() const
{
    return m_count->text();
}

void FindBar::paintEvent(QPaintEvent* event)
{
    GlassPanel::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(corvelle::palette(schemeOf(*this)).field);
    painter.drawRoundedRect(m_field->geometry(), radius::control, radius::control);
}

bool FindBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_field || event->type() != QEvent::KeyPress)
        return GlassPanel::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F3:
        emit stepWanted(key->modifiers() & Qt::ShiftModifier ? -1 : 1);
        return true;
    case Qt::Key_Down:
        emit stepWanted(1);
        return true;
    case Qt::Key_Up:
        emit stepWanted(-1);
        return true;
    case Qt::Key_Escape:
        emit closeWanted();
        return true;
    default:
        return false;
    }
}

} // namespace corvelle
