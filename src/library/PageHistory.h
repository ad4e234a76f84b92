// Whole states of pages, oldest first, from which a page's own undo is filled again after a
// restart.
//
// Bounded for a state, a page and the library; the oldest goes first. Written on the queue of the
// undo journal, in the order of the calls.
#pragma once

#include "library/UndoStore.h"

namespace corvelle {

struct PageState
{
    QString doc;
    std::optional<QString> icon;

    bool operator==(const PageState&) const = default;
};

struct PageHistoryLimits
{
    qint64 stateBytes = 4'194'304; // of UTF-8
    int states = 40;               // of a page
    qint64 pageBytes = 8'388'608;  // of a page, but one state stays
    qint64 allBytes = 33'554'432;
};

class PageHistory
{
public:
    explicit PageHistory(UndoStore& store, PageHistoryLimits limits = {})
        : m_store(store)
        , m_limits(limits)
    {}

    // A state too big for the history takes all of its page's history along.
    void add(const QString& node, const PageState& state);
    // When the history can't be continued.
    void replaceAll(
        const QString& node, const std::optional<PageState>& first, const PageState& then);
    // When the typing goes on in the newest state, which must still be `old`.
    void replaceLast(const QString& node, const PageState& old, const QString& doc);
    // When a page is edited after an undo: the states behind `state` go.
    void truncate(const QString& node, const PageState& state);

    // Waits for what is written before.
    std::vector<PageState> load(const QString& node);
    std::vector<QString> pages();

private:
    UndoStore& m_store;
    const PageHistoryLimits m_limits;
};

} // namespace corvelle
