#include "interface/shell/Dock.h"

#include "interface/widgets/BarButton.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double clickReach = 6; // points

Icon signOf(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Folder:
        return Icon::Folder;
    case NodeKind::Link:
        return Icon::Globe;
    case NodeKind::File:
        return Icon::Upload;
    case NodeKind::Page:
        break;
    }
    return Icon::Page;
}

} // namespace

Dock::Dock(QWidget* parent)
    : GlassPanel(Fill::Glass, radius::bar, parent)
{
    setAccessibleName(u"Add"_s);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(6, 6, 6, 6);
    row->setSpacing(2);
    addItem(NodeKind::Page, u"Page"_s);
    addItem(NodeKind::Folder, u"Folder"_s);
    addItem(NodeKind::Link, u"Website"_s);
    addItem(NodeKind::File, u"File"_s);
    setFixedSize(row->sizeHint());
}

void Dock::addItem(NodeKind kind, const QString& name)
{
    auto* item = new BarButton(signOf(kind), name, this, BarButton::Form::Dock);
    item->setProperty("kind", static_cast<int>(kind));
    item->installEventFilter(this);
    connect(item, &QAbstractButton::clicked, this, [this, kind] { emit wanted(kind); });
    layout()->addWidget(item);
}

void Dock::cancelDrag()
{
    m_pressedAt.reset();
    if (!std::exchange(m_dragged, std::nullopt))
        return;
    releaseKeyboard();
    emit dragCancelled();
}

void Dock::keyPressEvent(QKeyEvent* event)
{
    if (m_dragged && event->key() == Qt::Key_Escape)
        cancelDrag();
    else
        GlassPanel::keyPressEvent(event);
}

// A press that goes on to a drag is no click any more.
bool Dock::eventFilter(QObject* watched, QEvent* event)
{
    auto* item = qobject_cast<BarButton*>(watched);
    if (!item)
        return false;
    const auto kind = static_cast<NodeKind>(item->property("kind").toInt());
    if (event->type() == QEvent::MouseButtonPress) {
        const auto* press = static_cast<QMouseEvent*>(event);
        if (press->button() == Qt::LeftButton && kind != NodeKind::File)
            m_pressedAt = press->globalPosition();
    } else if (event->type() == QEvent::MouseMove && m_pressedAt) {
        const QPointF at = static_cast<QMouseEvent*>(event)->globalPosition();
        const QPointF way = at - *m_pressedAt;
        if (!m_dragged && std::hypot(way.x(), way.y()) < clickReach)
            return false;
        if (!m_dragged) {
            m_dragged = kind;
            item->setDown(false);
            grabKeyboard();
        }
        emit dragMoved(kind, at);
        return true;
    } else if (event->type() == QEvent::MouseButtonRelease) {
        m_pressedAt.reset();
        if (m_dragged) {
            m_dragged.reset();
            item->setDown(false);
            releaseKeyboard();
            emit dropped(kind, static_cast<QMouseEvent*>(event)->globalPosition());
            return true;
        }
    }
    return false;
}

} // namespace corvelle
