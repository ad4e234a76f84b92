#include "interface/sheet/SheetAccessible.h"

#include "interface/sheet/SheetView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// One place of the sheet that is shown now; what stands there is asked of the view.
class CellItem : public QAccessibleInterface, public QAccessibleTableCellInterface
{
public:
    CellItem(SheetView& view, CellPlace place)
        : m_view(&view)
        , m_place(place)
    {}

    bool isValid() const override
    {
        return m_view && m_place.column <= m_view->last().column &&
               m_place.row <= m_view->last().row;
    }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_view);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::Cell; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override
    {
        if (kind != QAccessible::Name || !isValid())
            return {};
        const QString words = textAt(m_view->sheet(), m_place);
        return placeName(m_place) + u", "_s + (words.isEmpty() ? u"empty"_s : words);
    }

    QRect rect() const override
    {
        if (!isValid())
            return {};
        const QRect place = m_view->rectOf(m_place);
        return {m_view->mapToGlobal(place.topLeft()), place.size()};
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.focusable = state.selectable = true;
        state.selected = isSelected();
        state.focused = m_view->hasFocus() && m_view->pick().picked == m_place;
        state.offscreen = !m_view->rect().intersects(m_view->rectOf(m_place));
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableCellInterface
                   ? static_cast<QAccessibleTableCellInterface*>(this)
                   : nullptr;
    }
    bool isSelected() const override
    {
        return isValid() && m_view->pick().range().contains(m_place);
    }
    int rowIndex() const override { return m_place.row; }
    int columnIndex() const override { return m_place.column; }
    int rowExtent() const override { return 1; }
    int columnExtent() const override { return 1; }
    QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    QList<QAccessibleInterface*> columnHeaderCells() const override { return {}; }
    QAccessibleInterface* table() const override { return parent(); }

private:
    QPointer<SheetView> m_view;
    const CellPlace m_place;
};

class SheetTable : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    explicit SheetTable(SheetView& view)
        : QAccessibleWidget(&view, QAccessible::Table)
        , m_view(view)
    {}

    ~SheetTable() override
    {
        for (const QAccessible::Id id : std::as_const(m_items))
            QAccessible::deleteAccessibleInterface(id);
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    // ---- cells as children, row by row ----
    int childCount() const override { return rowCount() * columnCount(); }
    QAccessibleInterface* child(int index) const override
    {
        return index >= 0 && index < childCount()
                   ? item({index % columnCount(), index / columnCount()})
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* wanted) const override
    {
        auto* cell = const_cast<QAccessibleInterface*>(wanted)->tableCellInterface();
        return cell ? cell->rowIndex() * columnCount() + cell->columnIndex() : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        const auto place = m_view.placeAt(m_view.mapFromGlobal(QPoint(x, y)));
        return place ? item(*place) : nullptr;
    }
    QAccessibleInterface* focusChild() const override
    {
        return m_view.hasFocus() ? item(m_view.pick().picked) : nullptr;
    }

    // ---- the table ----
    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override
    {
        const bool isThere = row >= 0 && row < rowCount() && column >= 0 && column < columnCount();
        return isThere ? item({column, row}) : nullptr;
    }
    int columnCount() const override { return m_view.last().column + 1; }
    int rowCount() const override { return m_view.last().row + 1; }
    QString columnDescription(int column) const override { return columnName(column); }
    QString rowDescription(int row) const override { return QString::number(row + 1); }

    int selectedCellCount() const override
    {
        return static_cast<int>(selectedColumns().size() * selectedRows().size());
    }
    int selectedColumnCount() const override { return static_cast<int>(selectedColumns().size()); }
    int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
    QList<QAccessibleInterface*> selectedCells() const override
    {
        constexpr int most = 1000; // that anybody listens to
        QList<QAccessibleInterface*> cells;
        for (const int row : selectedRows())
            for (const int column : selectedColumns())
                if (cells.size() < most)
                    cells.append(item({column, row}));
        return cells;
    }
    QList<int> selectedColumns() const override
    {
        const CellRange range = m_view.pick().range();
        return numbers(range.from.column, range.to.column);
    }
    QList<int> selectedRows() const override
    {
        const CellRange range = m_view.pick().range();
        return numbers(range.from.row, range.to.row);
    }
    bool isColumnSelected(int column) const override { return selectedColumns().contains(column); }
    bool isRowSelected(int row) const override { return selectedRows().contains(row); }
    bool selectRow(int) override { return false; }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent*) override {}

private:
    static QList<int> numbers(int from, int to)
    {
        QList<int> all;
        for (int number = from; number <= to; ++number)
            all.append(number);
        return all;
    }

    QAccessibleInterface* item(CellPlace place) const
    {
        const auto key = std::pair(place.row, place.column);
        const auto known = m_items.constFind(key);
        if (known != m_items.cend())
            return QAccessible::accessibleInterface(*known);
        auto* made = new CellItem(m_view, place);
        m_items.insert(key, QAccessible::registerAccessibleInterface(made));
        return made;
    }

    SheetView& m_view;
    mutable QHash<std::pair<int, int>, QAccessible::Id> m_items;
};

QAccessibleInterface* sheetFactory(const QString&, QObject* object)
{
    auto* view = qobject_cast<SheetView*>(object);
    return view ? new SheetTable(*view) : nullptr;
}

} // namespace

void installSheetAccessibility()
{
    QAccessible::installFactory(sheetFactory);
}

} // namespace corvelle
