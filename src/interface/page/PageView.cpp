#include "interface/page/PageView.h"

#include "interface/page/PageCopy.h"
#include "interface/theme/Fonts.h"
#include "interface/widgets/Look.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double widestColumn = 680, leastSide = 40, wideSide = 64;
constexpr double topRoom = 30, titleGap = 10, bottomRoom = 120, coverHeight = 132;
constexpr double leastZoom = 0.5, mostZoom = 3;
constexpr double thumbWidth = 6, thumbEdge = 3, leastThumb = 32;
constexpr int autoScrollMs = 16, thumbLingersMs = 900;

struct Tone
{
    QStringView name;
    QRgb top, bottom;
};

constexpr Tone tones[] = {
    {u"sand", 0xFFF7D9A8, 0xFFF2A97E},
    {u"sky", 0xFFB8D4F6, 0xFFD9ECF9},
    {u"mint", 0xFFC9EECF, 0xFFB5D79A},
    {u"dusk", 0xFFE68F7F, 0xFFB3638A},
    {u"rose", 0xFFDDC6F6, 0xFFEFC3B5},
    {u"graphite", 0xFF5B5B60, 0xFF1F1F22},
};

const Tone* coverTone(const PageSettings& settings)
{
    if (!settings.cover.startsWith(u"tone:"))
        return nullptr;
    const auto found = std::find_if(std::begin(tones), std::end(tones),
        [&](const Tone& tone) { return tone.name == QStringView(settings.cover).mid(5); });
    return found == std::end(tones) ? nullptr : found;
}

QString titleWords(const ShownPage& page)
{
    return page.icon.isEmpty() ? page.title : page.icon + u' ' + page.title;
}

} // namespace

PageView::PageView(ItemLooks items, MentionSource mentions, QWidget* parent)
    : QWidget(parent)
    , m_items(std::move(items))
    , m_mentions(std::move(mentions))
    , m_layout(m_items, m_pictures)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(u"Page"_s);
    connect(&m_pictures, &PagePictures::decoded, this, qOverload<>(&QWidget::update));
    m_thumbLingers.setSingleShot(true);
    m_thumbLingers.setInterval(thumbLingersMs);
    connect(&m_thumbLingers, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    m_autoScroll.setInterval(autoScrollMs);
    connect(&m_autoScroll, &QTimer::timeout, this, &PageView::autoScroll);
}

// ---- what is shown ----

void PageView::take(ShownPage page)
{
    m_page = std::move(page);
    ++m_turn;
    m_targets.clear();
    m_focused = -1;
    m_layout.setPage(m_page.text, PageStyle(schemeOf(*this), m_page.settings, m_zoom));
    const auto within = [this](PagePlace& place) {
        place = placeWithin(m_page.text, std::move(place));
    };
    within(m_dragStart.first);
    within(m_dragStart.second);
    within(m_anchor);
    within(m_head);
    m_selected = selectedBetween(m_page.text, m_anchor, m_head);
    m_found = findInPage(m_page.text, m_words);
    m_currentFound = m_found.empty() ? -1 : std::clamp(m_currentFound, 0, foundCount() - 1);
}

void PageView::open(ShownPage page)
{
    letGo();
    m_isUnpainted = true;
    m_anchor = m_head = {};
    m_isPlaced = false;
    m_layout.forgetShifts();
    m_wideTable.reset();
    m_words.clear();
    m_topPiece = 0;
    m_isAtTop = true;
    take(std::move(page));
    layOut();
    emit foundChanged();
}

void PageView::refresh(ShownPage page)
{
    const qsizetype block = m_layout.count() > 0 ? m_layout.extent(m_topPiece).block : 0;
    const Units from = m_layout.count() > 0 ? m_layout.extent(m_topPiece).from : 0;
    const int row = m_layout.count() > 0 ? m_layout.extent(m_topPiece).firstRow : 0;
    take(std::move(page));
    m_topPiece = m_layout.pieceOf(block, from, row);
    layOut();
    emit foundChanged();
}

void PageView::refreshItems()
{
    m_layout.forgetLaid();
    settle();
}

void PageView::setStyle()
{
    m_layout.setStyle(PageStyle(schemeOf(*this), m_page.settings, m_zoom));
    settle();
}

void PageView::setZoom(double zoom)
{
    zoom = std::clamp(zoom, leastZoom, mostZoom);
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    m_layout.setStyle(PageStyle(schemeOf(*this), m_page.settings, m_zoom));
    layOut();
}

void PageView::zoomBy(double steps)
{
    setZoom(m_zoom * std::pow(1.1, steps));
}

void PageView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        setStyle();
    QWidget::changeEvent(event);
}

// ---- layout ----

QRectF PageView::column() const
{
    const bool full = m_page.settings.fullWidth;
    const double wanted = full ? width() - 2 * wideSide : widestColumn * m_zoom;
    const double wide = std::max(120.0, std::min(wanted, width() - 2 * leastSide));
    return QRectF(std::floor((width() - wide) / 2), 0, wide, height());
}

double PageView::headHeight() const
{
    const double cover = coverTone(m_page.settings) ? coverHeight : 0;
    if (m_page.title.isEmpty())
        return cover + topRoom;
    const Lettering lettering(TypeStyle::PageTitle, m_zoom);
    const auto lines = lettering.lines(titleWords(m_page), column().width(), 12).size();
    return cover + topRoom +
           static_cast<double>(std::max<size_t>(1, lines)) * lettering.lineHeight() + titleGap;
}

void PageView::layOut()
{
    m_layout.setWidth(column().width());
    if (m_isAtTop) {
        m_topPiece = 0;
        m_topOffset = -headHeight();
    }
    settle();
}

void PageView::resizeEvent(QResizeEvent*)
{
    const PageLayout::Extent top =
        m_layout.count() > 0 ? m_layout.extent(m_topPiece) : PageLayout::Extent();
    m_layout.setWidth(column().width());
    if (m_topPiece > 0)
        m_topPiece = m_layout.pieceOf(top.block, top.from, top.firstRow);
    layOut();
}

// Brings the upper edge into the piece that it names.
void PageView::settleTop()
{
    while (m_topOffset < 0 && m_topPiece > 0) {
        --m_topPiece;
        m_topOffset += m_layout.laid(m_topPiece).height();
    }
    while (m_topPiece + 1 < m_layout.count() && m_topOffset >= m_layout.laid(m_topPiece).height()) {
        m_topOffset -= m_layout.height(m_topPiece);
        ++m_topPiece;
    }
    if (m_topPiece == 0)
        m_topOffset = std::max(m_topOffset, -headHeight());
}

// Lays out what is in sight; the page's end doesn't come up from the lower edge.
void PageView::settle()
{
    if (m_layout.count() == 0 || height() == 0)
        return;
    m_topPiece = std::clamp(m_topPiece, 0, m_layout.count() - 1);
    settleTop();
    double y = -m_topOffset;
    int piece = m_topPiece;
    while (y < height() && piece < m_layout.count())
        y += m_layout.laid(piece++).height();
    if (piece == m_layout.count() && y + bottomRoom < height()) {
        m_topOffset -= height() - y - bottomRoom;
        settleTop();
    }
    m_layout.keepOnly(m_topPiece - 20, lastInSight() + 20);
    m_isAtTop = m_topPiece == 0 && m_topOffset <= -headHeight();
    update();
}

int PageView::lastInSight() const
{
    double y = -m_topOffset;
    int piece = m_topPiece;
    for (; piece + 1 < m_layout.count() && y + m_layout.height(piece) < height(); ++piece)
        y += m_layout.height(piece);
    return piece;
}

// ---- scrolling ----

double PageView::scrollPlace() const
{
    return m_layout.count() == 0 ? 0 : m_layout.top(m_topPiece) + m_topOffset + headHeight();
}

double PageView::scrollRange() const
{
    return std::max(0.0, headHeight() + m_layout.total() + bottomRoom - height());
}

void PageView::scrollBy(double pixels)
{
    m_topOffset += std::round(pixels);
    m_thumbLingers.start();
    settle();
}

void PageView::scrollTo(double place)
{
    if (m_layout.count() == 0)
        return;
    const double y = std::clamp(place, 0.0, scrollRange()) - headHeight();
    m_topPiece = m_layout.pieceAtHeight(y);
    m_topOffset = std::round(y - m_layout.top(m_topPiece));
    m_thumbLingers.start();
    settle();
}

// From the upper edge of the view, by what is known of the heights between.
double PageView::topOf(int piece) const
{
    return m_layout.top(piece) - m_layout.top(m_topPiece) - m_topOffset;
}

void PageView::showRange(const TextRange& range)
{
    const int piece = m_layout.pieceOf(range);
    constexpr double margin = 60, sideMargin = 24;
    if (m_layout.mostShift(piece) > 0) {
        const QRectF place = m_layout.laid(piece).rectOf(range);
        const double right = std::min(place.right(), place.left() + m_layout.width() / 2);
        const double before = std::min(0.0, place.left() - sideMargin),
                     beyond = std::max(0.0, right + sideMargin - m_layout.width());
        scrollSideways(piece, before < 0 ? before : beyond);
    }
    const QRectF rect = m_layout.laid(piece).rectOf(range);
    const double y = topOf(piece) + rect.top();
    const bool near = piece >= m_topPiece && piece <= lastInSight();
    if (near && y >= margin / 2 && y + rect.height() <= height() - margin / 2)
        return;
    m_topPiece = piece;
    m_topOffset = std::round(rect.top() - height() / 3.0);
    settle();
}

QRectF PageView::thumb() const
{
    const double range = scrollRange();
    if (range <= 0)
        return {};
    const double track = std::max(leastThumb, height() - 2 * thumbEdge);
    const double length = std::clamp(track * height() / (range + height()), leastThumb, track);
    const double top = thumbEdge + (track - length) * std::clamp(scrollPlace() / range, 0.0, 1.0);
    return QRectF(width() - thumbEdge - thumbWidth, top, thumbWidth, length);
}

// Quiet at rest: it comes with scrolling and with the pointer.
bool PageView::isThumbShown() const
{
    return m_isNearThumb || m_drag == Drag::Thumb || m_thumbLingers.isActive();
}

void PageView::leaveEvent(QEvent*)
{
    const bool wasOver = std::exchange(m_isOverWide, false);
    if (std::exchange(m_isNearThumb, false) || wasOver)
        update();
}

// A drag that hears nothing of its release ends here.
void PageView::letGo()
{
    m_drag = Drag::None;
    m_autoScroll.stop();
}

void PageView::hideEvent(QHideEvent*)
{
    letGo();
}

bool PageView::isOnTrack(QPointF at) const
{
    const QRectF bar = thumb();
    return !bar.isEmpty() && at.x() >= bar.left() - 4;
}

void PageView::dragThumb(double y)
{
    const double free = height() - 2 * thumbEdge - thumb().height();
    if (free > 0)
        scrollTo((y - m_thumbGrip - thumbEdge) / free * scrollRange());
}

// ---- painting ----

void PageView::paintHead(QPainter& painter, double y) const
{
    const QRectF place = column();
    if (const Tone* tone = coverTone(m_page.settings)) {
        QLinearGradient fade(0, y, 0, y + coverHeight);
        fade.setColorAt(0, QColor::fromRgb(tone->top));
        fade.setColorAt(1, QColor::fromRgb(tone->bottom));
        painter.fillRect(QRectF(0, y, width(), coverHeight), fade);
        y += coverHeight;
    }
    if (m_page.title.isEmpty())
        return;
    const Lettering lettering(TypeStyle::PageTitle, m_zoom);
    painter.setPen(m_layout.style().colors().ink);
    y += topRoom;
    for (const QString& line : lettering.lines(titleWords(m_page), place.width(), 12)) {
        lettering.draw(painter, QRectF(place.left(), y, place.width(), lettering.lineHeight()),
            readsRightToLeft(m_page.title) ? Qt::AlignRight : Qt::AlignLeft, line);
        y += lettering.lineHeight();
    }
}

void PageView::paintPiece(QPainter& painter, int piece, double y, const QRectF& visible)
{
    const PageLayout::Extent& extent = m_layout.extent(piece);
    const Units start = m_page.text.block(extent.block).start;
    LaidPiece::Paint paint;
    paint.visible = visible;
    if (hasSelection())
        paint.selected = &m_selected;
    paint.found = foundWithin(m_found, 0, start + extent.from, start + extent.to);
    if (m_currentFound >= 0)
        paint.current = &m_found[static_cast<size_t>(m_currentFound)];
    if (m_focused >= 0 && hasFocus())
        paint.focus = &m_targets[static_cast<size_t>(m_focused)].range;
    m_layout.laid(piece).draw(painter, QPointF(column().left(), y), paint);
}

void PageView::paintEvent(QPaintEvent* event)
{
    if (std::exchange(m_isUnpainted, false))
        emit painted();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Palette& colors = m_layout.style().colors();
    painter.fillRect(event->rect(), colors.surface);
    double y = -m_topOffset;
    if (m_topPiece == 0)
        paintHead(painter, y - headHeight());
    for (int piece = m_topPiece; piece < m_layout.count() && y < height(); ++piece) {
        const double tall = m_layout.laid(piece).height();
        if (y + tall >= event->rect().top() && y <= event->rect().bottom())
            paintPiece(painter, piece, y, event->rect());
        y += tall;
    }
    paintSidewaysThumb(painter);
    if (const QRectF bar = thumb(); !bar.isEmpty() && isThumbShown()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_drag == Drag::Thumb ? colors.ink4 : colors.hairlineStrong);
        painter.drawRoundedRect(bar, thumbWidth / 2, thumbWidth / 2);
    }
}

// ---- places ----

PageView::Spot PageView::spotAt(QPointF at) const
{
    double y = -m_topOffset;
    int piece = m_topPiece;
    for (; piece + 1 < m_layout.count() && y + m_layout.height(piece) <= at.y(); ++piece)
        y += m_layout.height(piece);
    return {piece, QPointF(at.x() - column().left(), at.y() - y)};
}

PagePlace PageView::placeAt(QPointF at)
{
    if (m_layout.count() == 0)
        return {};
    const Spot spot = spotAt(at);
    return m_layout.placeAt(spot.piece, spot.in);
}

QRectF PageView::rectOf(const PagePlace& place)
{
    if (m_layout.count() == 0)
        return {};
    const int piece = m_layout.pieceOf(place);
    const QRectF rect = m_layout.laid(piece).rectOf({place.cells, place.at, place.at + 1});
    return rect.translated(column().left(), topOf(piece));
}

void PageView::showPlace(const PagePlace& place)
{
    if (m_layout.count() > 0)
        showRange({place.cells, place.at, place.at + 1});
}

void PageView::showAtTop(Units place)
{
    if (m_layout.count() == 0)
        return;
    constexpr double margin = 24;
    const TextRange range{{}, place, place + 1};
    m_topPiece = m_layout.pieceOf(range);
    const QRectF rect = m_layout.laid(m_topPiece).rectOf(range);
    m_topOffset = std::round(rect.top() - margin);
    m_isAtTop = false;
    settle();
}

PageTarget PageView::targetAt(QPointF at)
{
    if (m_layout.count() == 0 || !rect().contains(at.toPoint()))
        return {};
    const Spot spot = spotAt(at);
    return m_layout.laid(spot.piece).targetAt(spot.in);
}

// ---- selecting ----

void PageView::select(const PagePlace& anchor, const PagePlace& head)
{
    m_anchor = anchor;
    m_head = head;
    m_isPlaced = true;
    m_goalX.reset();
    m_selected = selectedBetween(m_page.text, m_anchor, m_head);
    update();
    emit selectionChanged();
}

void PageView::selectAll()
{
    select(0, m_page.text.length());
}

PageNodes PageView::nodes(Units from, Units to) const
{
    PageNodes nodes = nodesBetween(m_page.text, from, to);
    makeWhole(nodes);
    return nodes;
}

// What leaves the page has the bytes of its pictures, and no links that lead nowhere else.
void PageView::makeWhole(PageNodes& nodes) const
{
    m_pictures.putInBytes(nodes);
    if (m_page.isDocument)
        dropInnerLinks(nodes);
}

void PageView::copy() const
{
    if (!hasSelection())
        return;
    PageNodes nodes = nodesOf(m_page.text, m_selected);
    makeWhole(nodes);
    QGuiApplication::clipboard()->setMimeData(copiedBlocks(nodes, m_mentions).release());
}

QString PageView::selectedWords() const
{
    const auto [cells, from, to] = m_selected.range;
    const auto text = m_selected.rect ? std::nullopt : textIn(m_page.text, cells);
    const bool isInBlock = text && text->blockAt(from).index == text->blockAt(to).index;
    return isInBlock ? text->text(from, to) : QString();
}

// ---- finding ----

void PageView::find(const QString& words)
{
    m_words = words;
    m_found = findInPage(m_page.text, words);
    m_currentFound = -1;
    if (!m_found.empty() && m_layout.count() > 0) {
        const auto here = std::partition_point(m_found.begin(), m_found.end(),
            [this](const TextRange& range) { return m_layout.pieceOf(range) < m_topPiece; });
        m_currentFound = here == m_found.end() ? 0 : static_cast<int>(here - m_found.begin());
        showRange(m_found[static_cast<size_t>(m_currentFound)]);
    }
    update();
    emit foundChanged();
}

void PageView::endFind()
{
    if (m_currentFound >= 0 && !hasSelection()) {
        const TextRange& found = m_found[static_cast<size_t>(m_currentFound)];
        const PagePlace place{found.cells, found.from};
        select(place, place);
    }
    find({});
}

void PageView::goToFound(int step)
{
    if (m_found.empty())
        return;
    const int count = foundCount();
    m_currentFound = (m_currentFound + step + count) % count;
    showRange(m_found[static_cast<size_t>(m_currentFound)]);
    update();
    emit foundChanged();
}

} // namespace corvelle
