#include "interface/canvas/CanvasAccessible.h"

#include "canvas/CanvasModel.h"
#include "canvas/FileWords.h"
#include "interface/canvas/CanvasView.h"
#include "interface/canvas/CardWords.h"

#include <QAccessible>
#include <QAccessibleWidget>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// One card. Cards are no objects, so an item stands for a key and asks the model.
class CardItem : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    CardItem(CanvasView& view, QString key)
        : m_view(&view)
        , m_key(std::move(key))
    {}

    bool isValid() const override { return m_view && card(); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_view);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name && isValid() ? spokenCard(m_view->model(), m_key)
                                                      : QString();
    }

    QRect rect() const override
    {
        if (!isValid())
            return {};
        const CanvasModel& model = m_view->model();
        const QRectF onScreen = toScreen(card()->rect(), model.camera(), model.viewport());
        return QRect(m_view->mapToGlobal(onScreen.topLeft()).toPoint(), onScreen.size().toSize());
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.focusable = state.selectable = true;
        state.selected = m_view->model().selection().contains(m_key);
        state.focused = m_view->hasFocus() && m_view->model().focus() == m_key;
        state.offscreen = !m_view->rect().intersects(
            toScreen(card()->rect(), m_view->model().camera(), m_view->model().viewport())
                .toRect());
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& action) override
    {
        if (isValid() && action == pressAction())
            m_view->model().openCard(m_key);
    }

private:
    const PlacedCard* card() const { return m_view->model().card(m_key); }

    QPointer<CanvasView> m_view;
    const QString m_key;
};

class CanvasList : public QAccessibleWidget
{
public:
    explicit CanvasList(CanvasView& view)
        : QAccessibleWidget(&view, QAccessible::List, u"Canvas"_s)
        , m_view(view)
    {}

    ~CanvasList() override
    {
        for (const QAccessible::Id id : std::as_const(m_items))
            QAccessible::deleteAccessibleInterface(id);
    }

    int childCount() const override { return static_cast<int>(m_view.model().cards().size()); }

    QAccessibleInterface* child(int index) const override
    {
        const auto& cards = m_view.model().cards();
        return index >= 0 && index < childCount() ? item(cards[static_cast<size_t>(index)].key)
                                                  : nullptr;
    }

    int indexOfChild(const QAccessibleInterface* wanted) const override
    {
        const QString key =
            m_items.key(QAccessible::uniqueId(const_cast<QAccessibleInterface*>(wanted)));
        const auto& cards = m_view.model().cards();
        for (size_t i = 0; i < cards.size(); ++i)
            if (cards[i].key == key)
                return static_cast<int>(i);
        return -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override
    {
        const QString key = m_view.model().cardAt(m_view.mapFromGlobal(QPoint(x, y)));
        return key.isEmpty() ? nullptr : item(key);
    }

    QAccessibleInterface* focusChild() const override
    {
        const QString& key = m_view.model().focus();
        return m_view.hasFocus() && m_view.model().card(key) ? item(key) : nullptr;
    }

private:
    QAccessibleInterface* item(const QString& key) const
    {
        const auto known = m_items.constFind(key);
        if (known != m_items.cend())
            return QAccessible::accessibleInterface(*known);
        auto* made = new CardItem(m_view, key);
        m_items.insert(key, QAccessible::registerAccessibleInterface(made));
        return made;
    }

    CanvasView& m_view;
    mutable QHash<QString, QAccessible::Id> m_items;
};

QAccessibleInterface* canvasFactory(const QString&, QObject* object)
{
    auto* view = qobject_cast<CanvasView*>(object);
    return view ? new CanvasList(*view) : nullptr;
}

} // namespace

QString spokenCard(const CanvasModel& model, const QString& key)
{
    const Node* node = model.library().node(key);
    if (!node)
        return {};
    QString kind, more;
    switch (node->kind) {
    case NodeKind::Folder:
        kind = u"Folder"_s;
        more = countWords(model.childCount(key));
        break;
    case NodeKind::Page:
        kind = u"Page"_s;
        break;
    case NodeKind::Link:
        kind = u"Website"_s;
        break;
    case NodeKind::File:
        kind = node->isPicture() ? u"Picture"_s : u"File"_s;
        if (node->byteSize)
            more = sizeWords(*node->byteSize);
        break;
    }
    if (model.library().isMissing(key))
        more = u"can’t be found"_s;
    return more.isEmpty() ? kind + u", "_s + node->title
                          : kind + u", "_s + node->title + u", "_s + more;
}

void installCanvasAccessibility()
{
    QAccessible::installFactory(canvasFactory);
}

} // namespace corvelle
