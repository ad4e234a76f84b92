#include "interface/canvas/CanvasView.h"

#include "base/Clock.h"
#include "canvas/FileWords.h"
#include "interface/canvas/CardWords.h"
#include "interface/canvas/Ground.h"
#include "interface/theme/Fonts.h"
#include "interface/theme/Shadows.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QStyle>
#include <QUrl>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int restAfterMs = 120;
constexpr double pointsPerLine = 16; // of a wheel without precise deltas
constexpr double zoomPerPoint = 0.006;
constexpr double keyZoomFactor = 1.2;

// A notch of a wheel is 120 units. It zooms by one line, and pans by as many as the desktop says.
QPointF wheelPoints(const QWheelEvent& event, double linesPerNotch)
{
    if (!event.pixelDelta().isNull())
        return event.pixelDelta();
    return QPointF(event.angleDelta()) / 120.0 * pointsPerLine * linesPerNotch;
}

double slowMotion()
{
    static const double factor = [] {
        bool isNumber = false;
        const double value = qEnvironmentVariable("CORVELLE_SLOWMO").toDouble(&isNumber);
        return isNumber && value >= 0 ? value : 1.0;
    }();
    return factor;
}

// The desktop's wish for no motion reaches us as a style without animations.
bool reducesMotion(const QWidget& widget)
{
    return widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) == 0;
}

bool adds(Qt::KeyboardModifiers modifiers)
{
    return modifiers & (Qt::ShiftModifier | Qt::ControlModifier);
}

// On whole device pixels, so that text and hairlines stay sharp.
double snapped(double coordinate, double ratio)
{
    return std::round(coordinate * ratio) / ratio;
}

CardFace::Line::Kind lineKind(Block kind)
{
    using Kind = CardFace::Line::Kind;
    switch (kind) {
    case Block::Bullet:
        return Kind::Bullet;
    case Block::Ordered:
        return Kind::Number;
    case Block::Todo:
        return Kind::Todo;
    case Block::Done:
        return Kind::Done;
    case Block::Quote:
        return Kind::Quote;
    case Block::Code:
        return Kind::Code;
    default:
        return isHeading(kind) ? Kind::Heading : Kind::Text;
    }
}

QString hostOf(const QString& url)
{
    const QString host = QUrl(url).host();
    return host.startsWith(u"www.") ? host.mid(4) : host;
}

} // namespace

CanvasView::CanvasView(CanvasModel& model, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_excerpts(model.library())
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(u"Canvas"_s);
    setAcceptDrops(true);

    m_rest.setSingleShot(true);
    m_rest.setInterval(restAfterMs);
    connect(&m_rest, &QTimer::timeout, &m_model, &CanvasModel::rest);
    m_glideTick.setTimerType(Qt::PreciseTimer);
    m_glideTick.setInterval(16);
    connect(&m_glideTick, &QTimer::timeout, this, &CanvasView::tickGlide);

    connect(&m_model, &CanvasModel::cameraChanged, this, &CanvasView::cameraChanged);
    connect(&m_model, &CanvasModel::cardsChanged, this, qOverload<>(&QWidget::update));
    connect(&m_model, &CanvasModel::selectionChanged, this, [this] {
        update();
        announceFocus();
    });
    connect(&m_model, &CanvasModel::folderChanged, this, [this] {
        stopGlide();
        callOffGestures();
        setPointed({});
    });
    connect(&m_model, &CanvasModel::facesChanged, this, [this](const QSet<QString>& keys) {
        m_faces.invalidate(keys);
        update();
    });
    connect(&m_model, &CanvasModel::glideWanted, this, &CanvasView::glideTo);
    connect(&m_model, &CanvasModel::renamingChanged, this, &CanvasView::takeRenaming);
    connect(&m_model, &CanvasModel::cardsChanged, this, &CanvasView::placeField);
    m_edgeScroll.setInterval(16);
    connect(&m_edgeScroll, &QTimer::timeout, this, &CanvasView::tickEdgeScroll);
    connect(&m_faces, &FaceStore::drawn, this, &CanvasView::updateCard);
    connect(&m_excerpts, &PageExcerpts::read, this, [this](const QSet<QString>& ids) {
        m_faces.invalidate(ids);
        update();
    });
}

CanvasView::~CanvasView() = default;

void CanvasView::setScheme(Scheme scheme)
{
    m_scheme = scheme;
    m_faces.setLook(scheme, devicePixelRatioF());
    update();
}

void CanvasView::setShowsDots(bool shows)
{
    m_showsDots = shows;
    update();
}

bool CanvasView::isSettled() const
{
    return !m_glide && m_model.isAtRest() && m_faces.isIdle() && m_excerpts.isIdle();
}

int CanvasView::shownZoomPercent() const
{
    return static_cast<int>((m_glide ? m_glide->to.zoom : m_model.camera().zoom) * 100 + 1e-9);
}

// ---- camera ----

void CanvasView::cameraChanged()
{
    if (!m_model.isAtRest())
        m_rest.start();
    if (!m_pointed.isEmpty())
        setPointed({});
    placeField();
    update();
    emit zoomLabelChanged();
}

void CanvasView::glideTo(const Camera& camera)
{
    stopGlide();
    const Camera target{camera.x, camera.y, clampedZoom(camera.zoom)};
    const int duration = static_cast<int>(motion::glideMs * slowMotion());
    if (target == m_model.camera())
        return;
    if (duration == 0 || reducesMotion(*this) || !isVisible()) {
        m_model.setCamera(target);
        return;
    }
    m_glide.emplace(Glide{m_model.camera(), target, {}, duration});
    m_glide->time.start();
    m_glideTick.start();
    emit zoomLabelChanged();
}

void CanvasView::tickGlide()
{
    if (!m_glide)
        return;
    const double progress = static_cast<double>(m_glide->time.elapsed()) / m_glide->durationMs;
    if (progress < 1) {
        m_model.moveCamera(glided(m_glide->from, m_glide->to, progress));
        return;
    }
    const Camera target = m_glide->to;
    stopGlide();
    m_model.setCamera(target);
}

void CanvasView::stopGlide()
{
    m_glide.reset();
    m_glideTick.stop();
}

// ---- painting ----

QRectF CanvasView::cardOnScreen(const PlacedCard& card) const
{
    const QRectF rect = toScreen(card.rect(), m_model.camera(), m_model.viewport());
    if (!m_model.isAtRest())
        return rect;
    const double ratio = devicePixelRatioF();
    return QRectF(snapped(rect.x(), ratio), snapped(rect.y(), ratio),
        std::max(1 / ratio, snapped(rect.width(), ratio)),
        std::max(1 / ratio, snapped(rect.height(), ratio)));
}

CardFace::Kind CanvasView::faceKind(const Node& node) const
{
    switch (node.kind) {
    case NodeKind::Folder:
        return CardFace::Kind::Folder;
    case NodeKind::Page:
        return CardFace::Kind::Page;
    case NodeKind::Link:
        return CardFace::Kind::Link;
    case NodeKind::File:
        break;
    }
    return node.isPicture() ? CardFace::Kind::Picture : CardFace::Kind::File;
}

FaceRequest CanvasView::describe(const QString& key)
{
    const Node& node = *m_model.library().node(key);
    FaceRequest request;
    CardFace& face = request.face;
    face.kind = faceKind(node);
    face.size = m_model.card(key)->size;
    face.title = node.icon.isEmpty() ? node.title : node.icon + u' ' + node.title;
    face.color = node.color;
    face.missing = m_model.library().isMissing(key);
    if (face.missing) {
        face.meta = u"Can’t be found"_s;
        if (face.kind == CardFace::Kind::File)
            face.badge = fileBadge(node.mime, node.title);
        return request;
    }
    switch (face.kind) {
    case CardFace::Kind::Folder:
        face.count = m_model.childCount(key);
        for (const FolderPeek& peek : m_model.peeks(key)) {
            const bool picture = peek.mime.startsWith(u"image/");
            using Kind = CardFace::Peek::Kind;
            const Kind kind = peek.kind == NodeKind::Folder ? Kind::Folder
                              : peek.kind == NodeKind::Page ? Kind::Page
                              : peek.kind == NodeKind::Link ? Kind::Link
                              : picture                     ? Kind::Picture
                                                            : Kind::File;
            face.peeks.push_back({kind, peek.color, {}});
            request.peekPictures.push_back(picture ? PictureSource{peek.path, 0} : PictureSource{});
        }
        break;
    case CardFace::Kind::Picture:
        request.picture = {m_model.library().filePath(node), node.updatedAt};
        break;
    case CardFace::Kind::File:
        face.badge = fileBadge(node.mime, node.title);
        if (node.byteSize)
            face.meta = sizeWords(*node.byteSize);
        break;
    case CardFace::Kind::Link:
        face.host = hostOf(node.url);
        break;
    case CardFace::Kind::Page:
        if (const auto* rows = m_excerpts.rows(key))
            for (const ExcerptRow& row : *rows)
                face.lines.push_back({lineKind(row.kind), row.text, row.number});
        break;
    }
    return request;
}

// Asks for the faces of all cards in sight, those nearest to the middle first.
void CanvasView::wantFaces()
{
    const Camera& camera = m_model.camera();
    const double scale =
        m_model.isAtRest() ? camera.scale() : m_model.drawnCardZoom() * screenScale;
    std::vector<std::pair<double, QString>> byDistance;
    for (const int index : m_model.cardsMeeting(visibleRect(camera, m_model.viewport()))) {
        const PlacedCard& card = m_model.cards()[static_cast<size_t>(index)];
        const QPointF d = card.centre - QPointF(camera.x, camera.y);
        byDistance.emplace_back(d.x() * d.x() + d.y() * d.y(), card.key);
    }
    std::sort(byDistance.begin(), byDistance.end());
    std::vector<QString> keys;
    keys.reserve(byDistance.size());
    for (auto& [distance, key] : byDistance)
        keys.push_back(std::move(key));
    m_faces.want(keys, scale, [this](const QString& key) { return describe(key); });
}

void CanvasView::paintEvent(QPaintEvent* event)
{
    const Camera& camera = m_model.camera();
    const QSizeF viewport = m_model.viewport();
    QPainter painter(this);
    painter.setClipRegion(event->region());
    paintGround(painter, size(), toScreen(QPointF(0, 0), camera, viewport), camera.zoom, colors(),
        m_showsDots);

    wantFaces();
    // What a face throws beyond its card comes into sight before the card does.
    const double margin = faceMargin(camera.scale());
    const QRectF shown = QRectF(event->rect()).adjusted(-margin, -margin, margin, margin);
    const QRectF onCanvas(
        toCanvas(shown.topLeft(), camera, viewport), shown.size() / camera.scale());
    std::vector<const PlacedCard*> selected;
    bool allHaveFaces = true;
    for (const int index : m_model.cardsMeeting(onCanvas)) {
        const PlacedCard& card = m_model.cards()[static_cast<size_t>(index)];
        if (m_drag && m_drag->hasMoved() && m_drag->keys().contains(card.key))
            continue; // above all others, where the pointer has them
        if (m_model.selection().contains(card.key))
            selected.push_back(&card);
        else
            allHaveFaces &= paintCard(painter, card);
    }
    for (const PlacedCard* card : selected)
        allHaveFaces &= paintCard(painter, *card);
    paintRings(painter);
    paintTarget(painter);
    paintCarried(painter);
    paintPlacing(painter);
    if (m_marquee && !m_marquee->rect().isNull()) {
        painter.setPen(QPen(colors().marqueeEdge, 1));
        painter.setBrush(colors().marqueeFill);
        painter.drawRect(m_marquee->rect());
    }
    paintFarHint(painter);
    painter.end();

    if (m_firstFacesAt == 0)
        noteFirstCards(allHaveFaces);
}

void CanvasView::noteFirstCards(bool allHaveFaces)
{
    if (m_model.cards().empty())
        return;
    if (m_firstCardsAt == 0)
        m_firstCardsAt = now();
    if (allHaveFaces)
        m_firstFacesAt = now();
}

// False while a plain shape stands for the face.
bool CanvasView::paintCard(QPainter& painter, const PlacedCard& card)
{
    const QRectF rect = cardOnScreen(card);
    const double scale = m_model.camera().scale();
    const Node& node = *m_model.library().node(card.key);
    const CardFace::Kind kind = faceKind(node);
    const bool pointed = card.key == m_pointed;
    if (pointed)
        paintHoverLift(painter, rect, kind, scale, colors());
    const bool hasFace = paintFace(painter, card, rect);
    if (pointed) {
        paintHover(painter, rect, kind, scale, colors());
        if (m_commands && detailAt(scale) != Detail::Far)
            paintMoreButton(painter, rect, kind, node.color, scale, colors());
    }
    return hasFace;
}

// The face as it was drawn last, at any size.
bool CanvasView::paintFace(QPainter& painter, const PlacedCard& card, const QRectF& rect)
{
    const Node& node = *m_model.library().node(card.key);
    const CardFace::Kind kind = faceKind(node);
    const double scale = rect.width() / card.size.width();
    const bool inPlace = rect == cardOnScreen(card);
    const FaceStore::Face face = m_faces.face(card.key);
    if (face.image.isNull()) {
        plainCard(painter, rect, kind, node.color, scale, colors());
    } else if (inPlace && face.scale == m_model.camera().scale() && m_model.isAtRest()) {
        const int margin = faceMargin(face.scale);
        painter.drawImage(rect.topLeft() - QPointF(margin, margin), face.image);
    } else {
        const double ratio = scale / face.scale;
        const double margin = faceMargin(face.scale) * ratio;
        painter.drawImage(QRectF(rect.topLeft() - QPointF(margin, margin),
                              face.image.deviceIndependentSize() * ratio),
            face.image);
    }
    return !face.image.isNull();
}

void CanvasView::paintRings(QPainter& painter)
{
    const double scale = m_model.camera().scale();
    const auto ring = [&](const QString& key, Ring kind) {
        const PlacedCard* card = m_model.card(key);
        if (!card)
            return;
        const QRectF rect = cardOnScreen(*card);
        if (rect.adjusted(-ringReach, -ringReach, ringReach, ringReach)
                .intersects(QRectF(this->rect())))
            paintRing(painter, rect, faceKind(*m_model.library().node(key)), scale, colors(), kind);
    };
    for (const QString& key : m_model.selection())
        if (!m_drag || !m_drag->hasMoved())
            ring(key, Ring::Selected);
    if (hasFocus() && !m_model.focus().isEmpty() && !m_model.selection().contains(m_model.focus()))
        ring(m_model.focus(), Ring::Focused);
}

// Seen from far a card tells its whole title above itself.
void CanvasView::paintFarHint(QPainter& painter)
{
    const PlacedCard* card = m_model.card(m_pointed);
    const double scale = m_model.camera().scale();
    if (!card || detailAt(scale) != Detail::Far)
        return;
    const Lettering letters(TypeStyle::Hint);
    const QString title =
        letters.elided(m_model.library().node(card->key)->title, 320, Qt::ElideMiddle);
    const double width = letters.width(title) + 22, height = 30, gap = 10;
    const QRectF over = cardOnScreen(*card);
    const double left =
        std::clamp(over.center().x() - width / 2, 8.0, std::max(8.0, this->width() - width - 8));
    const double top =
        over.top() - gap - height > 8 ? over.top() - gap - height : over.bottom() + gap;
    const QRectF box(std::round(left), std::round(top), std::ceil(width), height);
    painter.setRenderHint(QPainter::Antialiasing);
    drawShadow(painter, box, radius::hint, Elevation::Hint, m_scheme);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors().inverse);
    painter.drawRoundedRect(box, radius::hint, radius::hint);
    painter.setPen(colors().onInverse);
    letters.draw(painter, box, Qt::AlignHCenter, title);
}

void CanvasView::updateCard(const QString& key)
{
    const PlacedCard* card = m_model.card(key);
    if (!card)
        return;
    const double margin = faceMargin(m_model.camera().scale()) + ringReach + 2;
    const QRectF rect = cardOnScreen(*card).adjusted(-margin, -margin, margin, margin);
    update(rect.toAlignedRect() & this->rect());
}

void CanvasView::resizeEvent(QResizeEvent*)
{
    m_faces.setLook(m_scheme, devicePixelRatioF());
    m_model.setViewport(size());
}

// ---- pointer ----

bool CanvasView::event(QEvent* event)
{
    if (event->type() == QEvent::NativeGesture) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            stopGlide();
            const double factor = std::clamp(1 + gesture->value(), 0.5, 2.0);
            m_model.zoomAt(m_model.camera().zoom * factor, gesture->position());
            return true;
        }
    }
    return QWidget::event(event);
}

void CanvasView::wheelEvent(QWheelEvent* event)
{
    QElapsedTimer time;
    time.start();
    stopGlide();
    if (event->modifiers() & Qt::ControlModifier) {
        const double dy = wheelPoints(*event, 1).y();
        m_model.zoomAt(m_model.camera().zoom * std::exp(dy * zoomPerPoint), event->position());
    } else {
        QPointF d = wheelPoints(*event, QApplication::wheelScrollLines());
        if ((event->modifiers() & Qt::ShiftModifier) && d.x() == 0)
            d = d.transposed();
        m_model.pan(-d.x(), -d.y());
    }
    m_eventMs += static_cast<double>(time.nsecsElapsed()) / 1e6;
    event->accept();
}

void CanvasView::mousePressEvent(QMouseEvent* event)
{
    stopGlide();
    callOffGestures();
    const QPointF at = event->position();
    const bool pans = event->button() == Qt::MiddleButton ||
                      (event->button() == Qt::LeftButton &&
                          (m_spaceHeld || (event->modifiers() & Qt::AltModifier)));
    if (pans) {
        m_pan.emplace(m_model, at);
        setCursor(Qt::ClosedHandCursor);
        return;
    }
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const QString key = m_model.cardAt(at);
    if (m_commands && !key.isEmpty() && detailAt(m_model.camera().scale()) != Detail::Far &&
        moreButton(cardOnScreen(*m_model.card(key)), faceKind(*m_model.library().node(key)),
            m_model.camera().scale())
            .contains(at)) {
        emit menuWanted(key, at.toPoint());
        return;
    }
    m_pressedCard = key;
    m_pressedAt = at;
    if (key.isEmpty()) {
        if (!adds(event->modifiers()))
            m_model.select({});
        m_marquee.emplace(m_model, at,
            adds(event->modifiers()) ? MarqueeGesture::Base::Selection
                                     : MarqueeGesture::Base::Empty);
        return;
    }
    // A plain press on a selected card waits: the whole selection may be meant.
    if (!adds(event->modifiers()) && m_model.selection().contains(key))
        m_pressed = key;
    else
        m_model.click(key, adds(event->modifiers()));
}

void CanvasView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF at = event->position();
    if (event->buttons() == Qt::NoButton) {
        callOffGestures(); // the release went elsewhere
        setPointed(m_model.cardAt(at));
        return;
    }
    if (m_ignoresPress || m_dragCalledOff)
        return;
    QElapsedTimer time;
    time.start();
    if (m_drag || (!m_pressedCard.isEmpty() && m_commands)) {
        if (!m_drag)
            startDrag(m_pressedAt);
        moveDrag(at);
    } else if (m_pan) {
        m_pan->move(at);
    } else if (m_marquee) {
        m_marquee->move(at);
        update();
    }
    m_eventMs += static_cast<double>(time.nsecsElapsed()) / 1e6;
}

void CanvasView::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_ignoresPress) {
        m_ignoresPress = false;
        return;
    }
    if (m_drag && m_drag->hasMoved()) {
        endDrag();
        return;
    }
    const QString pressed = m_dragCalledOff ? QString() : m_pressed;
    callOffGestures();
    m_dragCalledOff = false;
    if (!pressed.isEmpty() && event->button() == Qt::LeftButton)
        m_model.click(pressed, false);
    update();
}

void CanvasView::mouseDoubleClickEvent(QMouseEvent* event)
{
    callOffGestures();
    if (event->button() != Qt::LeftButton)
        return;
    const QString key = m_model.cardAt(event->position());
    if (key.isEmpty() || adds(event->modifiers()))
        return;
    m_ignoresPress = true;
    m_model.openCard(key);
}

void CanvasView::leaveEvent(QEvent*)
{
    setPointed({});
}

void CanvasView::setPointed(const QString& key)
{
    if (key == m_pointed)
        return;
    const QString before = std::exchange(m_pointed, key);
    if (detailAt(m_model.camera().scale()) == Detail::Far) {
        update(); // the hint lies outside the card
        return;
    }
    updateCard(before);
    updateCard(key);
}

void CanvasView::callOffGestures()
{
    m_pan.reset();
    m_marquee.reset();
    m_pressed.clear();
    m_pressedCard.clear();
    callOffDrag();
    setCursor(m_spaceHeld ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

void CanvasView::focusOutEvent(QFocusEvent*)
{
    m_spaceHeld = false;
    callOffGestures();
    update();
}

void CanvasView::hideEvent(QHideEvent*)
{
    m_spaceHeld = false;
    callOffGestures();
}

void CanvasView::announceFocus()
{
    if (!QAccessible::isActive() || m_model.focus().isEmpty() || m_model.focus() == m_announced)
        return;
    m_announced = m_model.focus();
    const QAccessibleInterface* list = QAccessible::queryAccessibleInterface(this);
    QAccessibleInterface* item = list ? list->focusChild() : nullptr;
    if (!item)
        return;
    QAccessibleEvent event(item, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

// ---- keys ----

bool CanvasView::zoomKey(QKeyEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier))
        return false;
    const QPointF centre(width() / 2.0, height() / 2.0);
    const Camera from = m_glide ? m_glide->to : m_model.camera();
    switch (event->key()) {
    case Qt::Key_0:
        glideTo(zoomedAt(from, 1.0, centre, m_model.viewport()));
        return true;
    case Qt::Key_Equal:
    case Qt::Key_Plus:
        glideTo(zoomedAt(from, from.zoom * keyZoomFactor, centre, m_model.viewport()));
        return true;
    case Qt::Key_Minus:
        glideTo(zoomedAt(from, from.zoom / keyZoomFactor, centre, m_model.viewport()));
        return true;
    default:
        return false;
    }
}

bool CanvasView::selectionKey(QKeyEvent* event)
{
    const bool extends = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Left:
        m_model.moveSelection(Direction::Left, extends);
        return true;
    case Qt::Key_Right:
        m_model.moveSelection(Direction::Right, extends);
        return true;
    case Qt::Key_Up:
        m_model.moveSelection(Direction::Up, extends);
        return true;
    case Qt::Key_Down:
        m_model.moveSelection(Direction::Down, extends);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_model.selection().size() == 1)
            m_model.openCard(*m_model.selection().begin());
        else if (m_model.selection().isEmpty() && !m_model.focus().isEmpty())
            m_model.openCard(m_model.focus());
        return true;
    case Qt::Key_Escape:
        if (m_marquee)
            m_marquee->cancel();
        else
            m_model.select({});
        callOffGestures();
        update();
        return true;
    default:
        return false;
    }
}

void CanvasView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier) {
        if (!event->isAutoRepeat()) {
            m_spaceHeld = true;
            setCursor(Qt::OpenHandCursor);
        }
        return;
    }
    if (m_drag && event->key() == Qt::Key_Escape) {
        callOffGestures();
        m_dragCalledOff = true;
        update();
        return;
    }
    if (zoomKey(event) || editKey(event))
        return;
    if (event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_A) {
        m_model.selectAll();
        return;
    }
    if (event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_Up) {
        m_model.goUp();
        return;
    }
    const Qt::KeyboardModifiers modifiers =
        event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    if (modifiers == Qt::NoModifier && selectionKey(event))
        return;
    QWidget::keyPressEvent(event);
}

void CanvasView::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        m_spaceHeld = false;
        if (!m_pan)
            setCursor(Qt::ArrowCursor);
    }
    QWidget::keyReleaseEvent(event);
}

} // namespace corvelle
