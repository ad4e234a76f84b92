// What the canvas view does to cards: carrying them, taking drops from outside, renaming in place.
#include "interface/canvas/CanvasView.h"

#include "canvas/CanvasCommands.h"
#include "interface/canvas/CardWords.h"
#include "interface/theme/Fonts.h"
#include "interface/theme/Shadows.h"
#include "interface/widgets/TitleField.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QWindow>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double edgeReach = 44; // points from the side where the canvas begins to move
constexpr double edgePointsPerSecond = 924;
constexpr double carriedScale = 1.02, overTargetScale = 0.66;
constexpr double secondTilt = 3; // degrees
constexpr size_t mostShownOverTarget = 2;

// Where the title of a card stands, in points of the card.
QRectF titlePlace(CardFace::Kind kind, QSizeF size)
{
    switch (kind) {
    case CardFace::Kind::Folder:
        return QRectF(10, 95, size.width() - 20, 26);
    case CardFace::Kind::Page:
        return QRectF(10, 13, size.width() - 20, 26);
    case CardFace::Kind::File:
        return QRectF(6, 165, size.width() - 12, 24);
    case CardFace::Kind::Link:
        return QRectF(7, 97, size.width() - 14, 25);
    case CardFace::Kind::Picture:
        break;
    }
    return QRectF(0, size.height() + 6, size.width(), 26); // it has no title of its own
}

TypeStyle titleStyle(CardFace::Kind kind)
{
    switch (kind) {
    case CardFace::Kind::Folder:
        return TypeStyle::FolderTitle;
    case CardFace::Kind::Page:
        return TypeStyle::CardTitle;
    case CardFace::Kind::Link:
        return TypeStyle::LinkTitle;
    default:
        return TypeStyle::FileTitle;
    }
}

bool canTake(const QMimeData& data)
{
    return data.hasUrls() || data.hasText();
}

} // namespace

// ---- carrying ----

void CanvasView::startDrag(QPointF at)
{
    // A card that isn't selected is carried alone.
    if (!m_model.selection().contains(m_pressedCard))
        m_model.click(m_pressedCard, false);
    m_drag.emplace(m_model, m_pressedCard, at);
}

void CanvasView::moveDrag(QPointF at)
{
    if (!m_drag->move(at))
        return;
    m_pressed.clear();
    setPointed({});
    if (!window()->rect().contains(mapTo(window(), at.toPoint()))) {
        dragOut();
        return;
    }
    setCursor(Qt::ClosedHandCursor);
    findTargets();
    if (!m_edgeScroll.isActive())
        m_edgeScroll.start();
    update();
}

// A place in the chrome comes before a folder's card below it.
void CanvasView::findTargets()
{
    const auto up = m_findUpTarget ? m_findUpTarget(m_drag->pointer()) : std::nullopt;
    m_upTarget = up && m_drag->accepts(up->folder) ? up : std::nullopt;
    m_dropTarget = m_upTarget ? QString() : m_drag->dropTarget();
}

void CanvasView::endDrag()
{
    const DragGesture drag = *m_drag;
    const auto up = m_upTarget;
    const QString target = m_dropTarget;
    callOffGestures();
    if (up)
        m_commands->moveUp(drag.ids(), up->folder);
    else if (!target.isEmpty())
        m_commands->moveInto(drag.ids(), target);
    else
        m_commands->place(drag.places());
    update();
}

void CanvasView::callOffDrag()
{
    m_edgeScroll.stop();
    m_dropTarget.clear();
    m_upTarget.reset();
    if (m_findUpTarget)
        m_findUpTarget(std::nullopt);
    if (m_drag)
        update();
    m_drag.reset();
}

// Near a side the canvas moves under what is carried, faster the nearer.
void CanvasView::tickEdgeScroll()
{
    if (!m_drag || m_upTarget)
        return;
    const QPointF at = m_drag->pointer();
    const auto pull = [](double distance) {
        return distance < edgeReach ? (edgeReach - std::max(distance, 0.0)) / edgeReach : 0;
    };
    const QPointF strength(
        pull(width() - at.x()) - pull(at.x()), pull(height() - at.y()) - pull(at.y()));
    if (strength.isNull())
        return;
    const QPointF step = strength * edgePointsPerSecond * m_edgeScroll.interval() / 1000.0;
    m_model.pan(step.x(), step.y());
    m_drag->move(at);
    findTargets();
    update();
}

// Out of the window it goes on as a drag of the desktop: files as files, all else as addresses of
// ours.
void CanvasView::dragOut()
{
    auto* mime = new QMimeData;
    QList<QUrl> urls;
    QStringList addresses;
    for (const QString& id : m_drag->ids()) {
        const Node& node = *m_model.library().node(id);
        if (!node.path.isNull())
            urls.append(QUrl::fromLocalFile(m_model.library().filePath(node)));
        else if (!node.url.isEmpty())
            urls.append(QUrl(node.url));
        addresses.append(u"corvelle://item/"_s + id);
    }
    mime->setUrls(urls);
    mime->setText(addresses.join(u'\n'));
    callOffGestures();
    m_dragCalledOff = true;
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->exec(Qt::CopyAction | Qt::LinkAction, Qt::CopyAction);
    m_dragCalledOff = false;
}

QRectF CanvasView::carriedOnScreen(const PlacedCard& card) const
{
    const Camera& camera = m_model.camera();
    const bool overTarget = m_upTarget || !m_dropTarget.isEmpty();
    QRectF rect = toScreen(card.rect().translated(m_drag->offset()), camera, m_model.viewport());
    const double scale = overTarget ? overTargetScale : carriedScale;
    // Over a target they gather at the pointer, so that the target can be seen.
    const QPointF about = overTarget ? m_drag->pointer() : rect.center();
    const QPointF topLeft = about + (rect.topLeft() - about) * scale;
    return QRectF(topLeft, rect.size() * scale);
}

void CanvasView::paintCarried(QPainter& painter)
{
    if (!m_drag || !m_drag->hasMoved())
        return;
    const bool overTarget = m_upTarget || !m_dropTarget.isEmpty();
    std::vector<const PlacedCard*> carried;
    for (const QString& id : m_drag->ids())
        if (id != m_drag->lead())
            carried.push_back(m_model.card(id));
    if (overTarget && carried.size() >= mostShownOverTarget)
        carried.resize(mostShownOverTarget - 1);
    if (const PlacedCard* lead = m_model.card(m_drag->lead()))
        carried.push_back(lead);
    QRectF leadRect;
    for (const PlacedCard* card : carried) {
        QRectF rect = carriedOnScreen(*card);
        const bool isLead = card->key == m_drag->lead();
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setRenderHint(QPainter::Antialiasing);
        if (overTarget && !isLead) {
            rect.moveCenter(
                carriedOnScreen(*m_model.card(m_drag->lead())).center() + QPointF(18, 12));
            painter.translate(rect.center());
            painter.rotate(secondTilt);
            painter.translate(-rect.center());
        }
        const CardFace::Kind kind = faceKind(*m_model.library().node(card->key));
        drawShadow(
            painter, rect, cornerRadius(kind, m_model.camera().scale()), Elevation::Drag, m_scheme);
        paintFace(painter, *card, rect);
        painter.restore();
        if (isLead)
            leadRect = rect;
    }
    if (m_drag->keys().size() > 1) {
        const QString count = QString::number(m_drag->keys().size());
        const Lettering letters(TypeStyle::SmallStrong);
        const double wide = std::max(24.0, letters.width(count) + 14);
        const QRectF badge(leadRect.right() - wide / 2, leadRect.top() - 12, wide, 24);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(colors().raised, 2));
        painter.setBrush(colors().accent);
        painter.drawRoundedRect(badge, 12, 12);
        painter.setPen(colors().onAccent);
        letters.draw(painter, badge, Qt::AlignHCenter, count);
    }
    const QString words = m_upTarget ? u"Move to "_s + m_upTarget->name
                          : m_dropTarget.isEmpty()
                              ? QString()
                              : u"Drop into "_s + m_model.library().node(m_dropTarget)->title;
    paintHint(painter, words, QPointF(leadRect.right() + 14, m_drag->pointer().y()));
}

void CanvasView::paintTarget(QPainter& painter)
{
    const PlacedCard* card = m_model.card(m_dropTarget);
    if (card)
        paintRing(painter, cardOnScreen(*card), CardFace::Kind::Folder, m_model.camera().scale(),
            colors(), Ring::Selected);
    if (m_outsideDrag)
        paintHint(painter,
            card ? u"Drop into "_s + m_model.library().node(m_dropTarget)->title : QString(),
            m_outsideAt + QPointF(18, 18));
}

void CanvasView::showPlacing(std::optional<NodeKind> kind, QPointF at)
{
    m_placing.reset();
    if (kind)
        m_placing.emplace(*kind, at);
    update();
}

// A plain card stands for the one that isn't made yet.
void CanvasView::paintPlacing(QPainter& painter)
{
    if (!m_placing)
        return;
    Node node;
    node.kind = m_placing->first;
    const double scale = m_model.camera().scale();
    const QSizeF size = cardSize(node) * scale;
    const QRectF rect(m_placing->second - QPointF(size.width() / 2, size.height() / 2), size);
    drawShadow(painter, rect, cornerRadius(faceKind(node), scale), Elevation::Drag, m_scheme);
    plainCard(painter, rect, faceKind(node), NodeColor::Gray, scale, colors());
}

void CanvasView::paintHint(QPainter& painter, const QString& words, QPointF at)
{
    if (words.isEmpty())
        return;
    const Lettering letters(TypeStyle::Hint);
    const QString shown = letters.elided(words, 320, Qt::ElideMiddle);
    const double wide = std::ceil(letters.width(shown)) + 22, high = 30;
    const QRectF box(std::round(std::clamp(at.x(), 8.0, std::max(8.0, width() - wide - 8))),
        std::round(std::clamp(at.y(), 8.0, std::max(8.0, height() - high - 8))), wide, high);
    painter.setRenderHint(QPainter::Antialiasing);
    drawShadow(painter, box, radius::hint, Elevation::Hint, m_scheme);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors().inverse);
    painter.drawRoundedRect(box, radius::hint, radius::hint);
    painter.setPen(colors().onInverse);
    letters.draw(painter, box, Qt::AlignHCenter, shown);
}

// ---- from outside ----

QString CanvasView::folderCardAt(QPointF at) const
{
    const QString key = m_model.cardAt(at);
    const Node* node = m_model.library().node(key);
    return node && node->kind == NodeKind::Folder ? key : QString();
}

void CanvasView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!m_commands || event->source() == this)
        return;
    if (!canTake(*event->mimeData())) {
        emit dropRefused();
        return;
    }
    m_outsideDrag = true;
    event->acceptProposedAction();
}

void CanvasView::dragMoveEvent(QDragMoveEvent* event)
{
    m_outsideAt = event->position();
    m_dropTarget = event->mimeData()->hasUrls() ? folderCardAt(m_outsideAt) : QString();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    update();
}

void CanvasView::dragLeaveEvent(QDragLeaveEvent*)
{
    m_outsideDrag = false;
    m_dropTarget.clear();
    update();
}

void CanvasView::dropEvent(QDropEvent* event)
{
    if (!m_commands)
        return;
    const QMimeData& mime = *event->mimeData();
    const QPointF at = toCanvas(event->position(), m_model.camera(), m_model.viewport());
    const QString target = mime.hasUrls() ? folderCardAt(event->position()) : QString();
    m_outsideDrag = false;
    m_dropTarget.clear();
    event->setDropAction(Qt::CopyAction); // never a move: the file manager would delete its file
    event->accept();
    if (mime.hasUrls())
        m_commands->addUrls(mime.urls(), target, at);
    else if (mime.hasText())
        m_commands->addText(mime.text(), at);
    update();
}

// ---- renaming ----

void CanvasView::takeRenaming()
{
    if (m_model.renaming().isEmpty())
        return; // the field goes by itself, or with its card
    const QString key = m_model.renaming();
    const Node& node = *m_model.library().node(key);
    const CardFace::Kind kind = faceKind(node);
    m_field = new TitleField(node.title, node.kind == NodeKind::File, this);
    const bool onPocket = kind == CardFace::Kind::Folder;
    m_field->setLook(corvelle::font(titleStyle(kind), std::max(0.8, m_model.camera().scale())),
        onPocket ? colors().tones(node.color).ink : colors().ink,
        onPocket ? colors().tones(node.color).fill : colors().surface);
    connect(m_field, &TitleField::committed, this,
        [this, key](const QString& title) { m_commands->rename(key, title); });
    connect(m_field, &TitleField::ended, this, [this] {
        const bool hadFocus = m_field && m_field->hasFocus();
        m_field.clear();
        m_model.endRenaming();
        if (hadFocus)
            setFocus();
    });
    placeField();
    m_field->show();
    m_field->setFocus();
}

void CanvasView::placeField()
{
    if (!m_field)
        return;
    const PlacedCard* card = m_model.card(m_model.renaming());
    if (!card) {
        m_field->hide();
        return;
    }
    const QRectF rect = cardOnScreen(*card);
    const double scale = m_model.camera().scale();
    const CardFace::Kind kind = faceKind(*m_model.library().node(card->key));
    const QRectF place = titlePlace(kind, card->size);
    const double least = 120;
    QRectF field(rect.topLeft() + place.topLeft() * scale,
        QSizeF(std::max(least, place.width() * scale), std::max(26.0, place.height() * scale)));
    if (field.width() > rect.width())
        field.moveLeft(rect.center().x() - field.width() / 2);
    m_field->setGeometry(field.toAlignedRect());
}

// ---- keys and menu ----

bool CanvasView::editKey(QKeyEvent* event)
{
    if (!m_commands)
        return false;
    const auto ids = m_commands->selected();
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (event->key() == Qt::Key_F2 && modifiers == Qt::NoModifier && ids.size() == 1) {
        m_model.startRenaming(ids.front());
        return true;
    }
    if ((event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) && !ids.empty() &&
        (modifiers == Qt::NoModifier || modifiers == Qt::ControlModifier)) {
        m_commands->trash(ids);
        return true;
    }
    if (event->key() == Qt::Key_D && modifiers == Qt::ControlModifier) {
        m_commands->duplicate(ids);
        return true;
    }
    if (event->key() == Qt::Key_Menu ||
        (event->key() == Qt::Key_F10 && modifiers == Qt::ShiftModifier)) {
        const PlacedCard* card = ids.empty() ? nullptr : m_model.card(ids.front());
        const QPointF at =
            card ? cardOnScreen(*card).center() : QPointF(width() / 2.0, height() / 2.0);
        emit menuWanted(card ? card->key : QString(), at.toPoint());
        return true;
    }
    return false;
}

void CanvasView::contextMenuEvent(QContextMenuEvent* event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        event->accept(); // the key itself has opened it
        return;
    }
    const QString key = m_model.cardAt(QPointF(event->pos()));
    if (!key.isEmpty() && !m_model.selection().contains(key))
        m_model.click(key, false);
    emit menuWanted(key, event->pos());
    event->accept();
}

} // namespace corvelle
