// Where the main pane has been: what Back and Forward go to. Pure.
#pragma once

#include <QString>

#include <deque>
#include <functional>
#include <optional>

namespace corvelle {

// A folder's canvas, or an item that is open over it.
struct NavPlace
{
    enum class Kind : unsigned char { Folder, Page, File };

    Kind kind = Kind::Folder;
    QString id; // of a folder empty for the top of the space

    bool operator==(const NavPlace&) const = default;
};

class NavHistory
{
public:
    using Place = NavPlace;

    explicit NavHistory(Place start = {})
        : m_current(std::move(start))
    {}

    const Place& current() const { return m_current; }

    // A new move: what lay ahead is forgotten. The place that is current already records nothing.
    void record(const Place& place);

    // The place to go to, now the current one; none when there is nothing. Places for which
    // `exists` is false are skipped.
    using Exists = std::function<bool(const Place&)>;
    std::optional<Place> back(const Exists& exists);
    std::optional<Place> forward(const Exists& exists);

    bool canGoBack() const { return !m_back.empty(); }
    bool canGoForward() const { return !m_forward.empty(); }

private:
    std::optional<Place> travel(
        std::deque<Place>& from, std::deque<Place>& to, const Exists& exists);

    Place m_current;
    std::deque<Place> m_back, m_forward;
};

} // namespace corvelle
