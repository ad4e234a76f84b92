#include "interface/page/PageAccessible.h"

#include "interface/page/PageView.h"
#include "interface/page/SpokenPage.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include <algorithm>

namespace corvelle {

namespace {

// Words alone, to ask for the parts of.
class PlainText : public QAccessibleTextInterface
{
public:
    explicit PlainText(QString words)
        : m_words(std::move(words))
    {}

    int characterCount() const override { return static_cast<int>(m_words.size()); }
    QString text(int from, int to) const override { return m_words.mid(from, to - from); }
    void selection(int, int*, int*) const override {}
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint&) const override { return 0; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int, int*, int*) const override { return {}; }

private:
    const QString m_words;
};

class PageText : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit PageText(PageView& view)
        : QAccessibleWidget(&view, QAccessible::Document)
        , m_view(view)
        , m_selected(QObject::connect(
              &view, &PageView::selectionChanged, &view, [this] { tellOfSelection(); }))
    {}
    ~PageText() override { QObject::disconnect(m_selected); }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface*>(this)
                                                  : QAccessibleWidget::interface_cast(type);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        state.multiLine = true;
        state.selectableText = true;
        return state;
    }

    // ---- the text ----
    int characterCount() const override { return static_cast<int>(spoken().length()); }
    QString text(int from, int to) const override { return spoken().text(from, to); }
    QString text(QAccessible::Text kind) const override { return QAccessibleWidget::text(kind); }
    QString textBeforeOffset(
        int offset, QAccessible::TextBoundaryType type, int* from, int* to) const override
    {
        return near(&QAccessibleTextInterface::textBeforeOffset, offset, type, from, to);
    }
    QString textAfterOffset(
        int offset, QAccessible::TextBoundaryType type, int* from, int* to) const override
    {
        return near(&QAccessibleTextInterface::textAfterOffset, offset, type, from, to);
    }
    QString textAtOffset(
        int offset, QAccessible::TextBoundaryType type, int* from, int* to) const override
    {
        return near(&QAccessibleTextInterface::textAtOffset, offset, type, from, to);
    }
    QString attributes(int offset, int* from, int* to) const override
    {
        *from = *to = offset;
        return {};
    }

    // ---- selection ----
    // Selected cells are several stretches, one for each row.
    int selectionCount() const override { return static_cast<int>(stretches().size()); }
    void selection(int index, int* from, int* to) const override
    {
        const auto all = stretches();
        *from = *to = 0;
        if (index < 0 || static_cast<size_t>(index) >= all.size())
            return;
        *from = static_cast<int>(spoken().offsetOf(all[static_cast<size_t>(index)].first));
        *to = static_cast<int>(spoken().offsetOf(all[static_cast<size_t>(index)].second));
    }
    void addSelection(int from, int to) override { setSelection(0, from, to); }
    void removeSelection(int) override { m_view.select(m_view.head(), m_view.head()); }
    void setSelection(int, int from, int to) override
    {
        m_view.select(spoken().placeOf(from), spoken().placeOf(to));
    }
    int cursorPosition() const override
    {
        return static_cast<int>(spoken().offsetOf(m_view.head()));
    }
    void setCursorPosition(int offset) override
    {
        const PagePlace place = spoken().placeOf(offset);
        m_view.select(place, place);
        m_view.showPlace(place);
    }

    // ---- where it is ----
    QRect characterRect(int offset) const override
    {
        const QRectF place = m_view.rectOf(spoken().placeOf(offset));
        return QRect(m_view.mapToGlobal(place.topLeft()).toPoint(), place.size().toSize());
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return static_cast<int>(
            spoken().offsetOf(m_view.placeAt(m_view.mapFromGlobal(QPointF(point)))));
    }
    void scrollToSubstring(int from, int) override { m_view.showPlace(spoken().placeOf(from)); }

private:
    std::vector<std::pair<PagePlace, PagePlace>> stretches() const
    {
        if (!m_view.hasSelection())
            return {};
        return stretchesOf(m_view.page().text, m_view.selected());
    }

    void tellOfSelection() const
    {
        if (!QAccessible::isActive())
            return;
        QAccessibleTextCursorEvent moved(&m_view, cursorPosition());
        QAccessible::updateAccessibility(&moved);
        int from = 0, to = 0;
        selection(0, &from, &to);
        QAccessibleTextSelectionEvent selected(&m_view, from, to);
        QAccessible::updateAccessibility(&selected);
    }

    // What the interface does by itself for words and sentences, on the words round the offset: it
    // would ask for the whole page each time.
    using Answer = QString (QAccessibleTextInterface::*)(
        int, QAccessible::TextBoundaryType, int*, int*) const;
    QString near(
        Answer answer, int offset, QAccessible::TextBoundaryType type, int* from, int* to) const
    {
        constexpr int reach = 8'000;
        const int length = characterCount();
        if (offset < 0)
            offset = length;
        const int first = std::max(0, offset - reach);
        const PlainText words(text(first, std::min(length, offset + reach)));
        const QString found = (words.*answer)(offset - first, type, from, to);
        if (*from >= 0) {
            *from += first;
            *to += first;
        }
        return found;
    }

    // Made anew for another text only.
    const SpokenPage& spoken() const
    {
        if (m_turn != m_view.turn()) {
            m_spoken = SpokenPage(m_view.page().text);
            m_turn = m_view.turn();
        }
        return m_spoken;
    }

    PageView& m_view;
    const QMetaObject::Connection m_selected;
    mutable SpokenPage m_spoken;
    mutable int m_turn = -1;
};

QAccessibleInterface* pageFactory(const QString& name, QObject* object)
{
    auto* view =
        name == QLatin1String("corvelle::PageView") ? qobject_cast<PageView*>(object) : nullptr;
    return view ? new PageText(*view) : nullptr;
}

} // namespace

void installPageAccessibility()
{
    QAccessible::installFactory(pageFactory);
}

} // namespace corvelle
