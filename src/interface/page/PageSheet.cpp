#include "interface/page/PageSheet.h"

#include "interface/theme/Fonts.h"
#include "interface/theme/Shadows.h"
#include "interface/widgets/Look.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int widestSheet = 920, sideRoom = 24, sheetTop = 76, headSide = 18;

} // namespace

PageSheet::PageSheet(ItemLooks items, MentionSource mentions, QWidget* parent)
    : OpenedFrame(u"Find in the page"_s, parent)
    , m_view(new PageView(std::move(items), std::move(mentions), this))
{
    orderTabs({m_view});
    connect(m_view, &PageView::closeWanted, this, &PageSheet::escape);
    connect(m_view, &PageView::foundChanged, this,
        [this] { field().setCount(m_view->currentFound(), m_view->foundCount()); });
}

void PageSheet::setName(Icon sign, const QString& name, Apps apps)
{
    m_sign = sign;
    m_name = name;
    m_view->setAccessibleName(name);
    setHasApp(apps == Apps::Another);
    update();
}

// ---- layout ----

QRect PageSheet::place() const
{
    const int wide = std::min(widestSheet, width() - 2 * sideRoom);
    return QRect((width() - wide) / 2, sheetTop, wide, std::max(headHeight, height() - sheetTop));
}

void PageSheet::layOut()
{
    const QRect sheet = place();
    m_view->setGeometry(sheet.adjusted(0, headHeight, 0, 0));
    layOutHead();
    // In the head row it hides nothing of what it finds.
    field().fit(headEnd() - 6 - sheet.left() - headSide / 2);
    field().move(
        headEnd() - 6 - field().width(), sheet.top() + (headHeight - field().height()) / 2);
}

void PageSheet::showParts(bool shows)
{
    OpenedFrame::showParts(shows);
    m_view->setVisible(shows);
}

// ---- painting ----

void PageSheet::paintSheet(QPainter& painter, const QRectF& box) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    drawShadow(
        painter, box.adjusted(0, 0, 0, 40), radius::sheet, Elevation::Sheet, schemeOf(*this));
    QPainterPath surface;
    surface.addRoundedRect(box.adjusted(0, 0, 0, radius::sheet + 4), radius::sheet, radius::sheet);
    painter.fillPath(surface, colors.surface);
    painter.setPen(QPen(colors.glassEdge, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(surface);
    paintHead(painter);

    const double middle = box.top() + headHeight / 2.0;
    drawIcon(painter, m_sign, QRectF(box.left() + headSide, middle - 9, 18, 18), colors.ink3);
    const Lettering letters(TypeStyle::Label);
    const int end = isFinding() ? findBar().x() : headEnd();
    const QRectF name(box.left() + headSide + 26, box.top(),
        std::max(0.0, end - box.left() - headSide - 26 - 12), headHeight - 1);
    painter.setPen(colors.ink);
    letters.draw(
        painter, name, Qt::AlignLeft, letters.elided(m_name, name.width(), Qt::ElideMiddle));
}

void PageSheet::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QColor dim = corvelle::palette(schemeOf(*this)).dim;
    dim.setAlphaF(dim.alphaF() * static_cast<float>(arrival().share()));
    painter.fillRect(rect(), dim);
    if (arrival().isComing())
        arrival().paint(painter, place(), radius::sheet);
    else
        paintSheet(painter, place());
}

// ---- finding ----

void PageSheet::find(const QString& words)
{
    if (isFinding())
        m_view->find(words);
    else
        m_view->endFind();
}

QString PageSheet::wordsToFind() const
{
    const QString words = m_view->selectedWords().left(200);
    return words.contains(u'\n') || words.contains(lineBreak) ? QString() : words;
}

} // namespace corvelle
