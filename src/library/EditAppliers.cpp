#include "library/EditAppliers.h"

#include "base/Clock.h"
#include "library/Edits.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double placeTolerance = 0.5; // points, on each axis

template<class Value>
const Value& expected(const Pair<Value>& pair, UndoDirection direction)
{
    return direction == UndoDirection::Undo ? pair.to : pair.from;
}

template<class Value>
const Value& wanted(const Pair<Value>& pair, UndoDirection direction)
{
    return direction == UndoDirection::Undo ? pair.from : pair.to;
}

template<class Map, class Value>
auto wantedOf(const Map& pairs, UndoDirection direction, Value) -> std::map<QString, Value>
{
    std::map<QString, Value> values;
    for (const auto& [id, pair] : pairs)
        values[id] = wanted(pair, direction);
    return values;
}

// One change against the library as it stands.
class Looking
{
public:
    Looking(const Library& library, UndoDirection direction, const QSet<QString>& touched)
        : m_library(library)
        , m_direction(direction)
        , m_touched(touched)
    {}

    Look operator()(change::Made made) const
    {
        std::erase_if(made.ids, [&](const QString& id) { return !m_library.node(id); });
        if (made.ids.empty())
            return LookGone{};
        return LookFine{made};
    }

    Look operator()(change::Trashed trashed) const { return existing(std::move(trashed)); }
    Look operator()(change::Restored restored) const { return existing(std::move(restored)); }

    Look operator()(const change::Renamed& renamed) const
    {
        const Node* node = m_library.node(renamed.id);
        if (!node)
            return LookGone{};
        if (!m_touched.contains(renamed.id) && node->title != expected(renamed.title, m_direction))
            return LookChanged{name(renamed.id) + u" was renamed since."_s};
        return LookFine{renamed};
    }

    Look operator()(change::Colored colored) const
    {
        return compared(std::move(colored), &change::Colored::colors,
            [this](const Node& node, const QString& color) {
                return word(node.color) == color
                           ? QString()
                           : name(node.id) + u" was given another colour since."_s;
            });
    }

    Look operator()(change::Moved moved) const
    {
        return compared(
            std::move(moved), &change::Moved::places, [this](const Node& node, const Place& place) {
                if (m_library.isInTrash(node.id))
                    return name(node.id) + u" is in the Trash."_s;
                return node.parentID == place.parent
                           ? QString()
                           : name(node.id) + u" was moved to another folder since."_s;
            });
    }

    Look operator()(change::Placed placed) const
    {
        return compared(std::move(placed), &change::Placed::points,
            [this](const Node& node, const QPointF& point) {
                return std::abs(node.x - point.x()) <= placeTolerance &&
                               std::abs(node.y - point.y()) <= placeTolerance
                           ? QString()
                           : name(node.id) + u" was moved since."_s;
            });
    }

    // Belong to others.
    template<class Other>
    Look operator()(const Other&) const
    {
        return LookGone{};
    }

private:
    QString name(const QString& id) const
    {
        const Node* node = m_library.node(id);
        return u"“"_s + (node && !node->title.isEmpty() ? node->title : u"Corvelle"_s) + u"”"_s;
    }

    template<class Times>
    Look existing(Times change) const
    {
        std::erase_if(
            change.times, [&](const auto& entry) { return !m_library.node(entry.first); });
        if (change.times.empty())
            return LookGone{};
        return LookFine{std::move(change)};
    }

    // Keeps the nodes that still exist; `problem` says of the first that differs how it does.
    template<class Case, class Map, class Problem>
    Look compared(Case change, Map Case::*pairs, Problem problem) const
    {
        std::erase_if(
            change.*pairs, [&](const auto& entry) { return !m_library.node(entry.first); });
        if ((change.*pairs).empty())
            return LookGone{};
        for (const auto& [id, pair] : change.*pairs)
            if (!m_touched.contains(id))
                if (const QString told = problem(*m_library.node(id), expected(pair, m_direction));
                    !told.isNull())
                    return LookChanged{told};
        return LookFine{std::move(change)};
    }

    const Library& m_library;
    const UndoDirection m_direction;
    const QSet<QString>& m_touched;
};

template<class Times>
std::vector<QString> idsOf(const Times& times)
{
    std::vector<QString> ids;
    for (const auto& [id, at] : times)
        ids.push_back(id);
    return ids;
}

} // namespace

void EditAppliers::registerAt(UndoJournal& journal)
{
    journal.setApplier<change::Made>(this);
    journal.setApplier<change::Trashed>(this);
    journal.setApplier<change::Restored>(this);
    journal.setApplier<change::Renamed>(this);
    journal.setApplier<change::Colored>(this);
    journal.setApplier<change::Moved>(this);
    journal.setApplier<change::Placed>(this);
}

Look EditAppliers::look(
    const Change& change, UndoDirection direction, const QSet<QString>& touched) const
{
    // As the rows stand now: another process may have changed them.
    for (const QString& id : touchedIds(change))
        (void)m_edits.m_library.freshNode(id);
    return std::visit(Looking(m_edits.m_library, direction, touched), change);
}

std::optional<Change> EditAppliers::apply(const Change& change, UndoDirection direction)
{
    Edits& edits = m_edits;
    const auto trash = [&edits](const std::map<QString, double>& times) {
        (void)edits.trashAt(times, true);
        for (const auto& [id, at] : times)
            if (!edits.m_library.isInTrash(id))
                return false;
        return true;
    };
    const auto restore = [&edits](const std::vector<QString>& ids) {
        (void)edits.restoreAll(ids);
        return std::none_of(ids.begin(), ids.end(), [&](const QString& id) {
            const Node* node = edits.m_library.node(id);
            return node && !node->isLive();
        });
    };
    const bool undoing = direction == UndoDirection::Undo;
    bool done = false;
    if (const auto* made = std::get_if<change::Made>(&change)) {
        std::map<QString, double> times;
        const double at = now();
        for (const QString& id : made->ids)
            times[id] = at;
        done = undoing ? trash(times) : restore(made->ids);
    } else if (const auto* trashed = std::get_if<change::Trashed>(&change)) {
        done = undoing ? restore(idsOf(trashed->times)) : trash(trashed->times);
    } else if (const auto* restored = std::get_if<change::Restored>(&change)) {
        done = undoing ? trash(restored->times) && edits.storeParents(restored->parents)
                       : restore(idsOf(restored->times));
    } else if (const auto* renamed = std::get_if<change::Renamed>(&change)) {
        const QString& title = wanted(renamed->title, direction);
        const Node* node = edits.m_library.node(renamed->id);
        done = node && (node->title == title || edits.storeTitle(renamed->id, title));
    } else if (const auto* colored = std::get_if<change::Colored>(&change)) {
        done = edits.storeColors(wantedOf(colored->colors, direction, QString()));
    } else if (const auto* moved = std::get_if<change::Moved>(&change)) {
        done = edits.applyPlaces(wantedOf(moved->places, direction, Place()));
    } else if (const auto* placed = std::get_if<change::Placed>(&change)) {
        done = edits.storePoints(wantedOf(placed->points, direction, QPointF()));
    }
    return done ? std::optional(change) : std::nullopt;
}

} // namespace corvelle
