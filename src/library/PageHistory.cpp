#include "library/PageHistory.h"

#include "base/Clock.h"

namespace corvelle {

namespace {

Result<std::pair<qint64, qint64>> weight(SQLite& connection, const QString& node)
{
    std::pair<qint64, qint64> bytesAndCount;
    auto asked = connection.each(
        "SELECT coalesce(sum(bytes), 0), count(*) FROM page_history WHERE node_id = ?", {node},
        [&](const SQLRow& row) {
            bytesAndCount = {row.integer(0), row.integer(1)};
        });
    if (!asked)
        return asked.failure();
    return bytesAndCount;
}

Result<void> trimPage(SQLite& connection, const QString& node, const PageHistoryLimits& limits)
{
    if (auto done = connection.run(
            "DELETE FROM page_history WHERE node_id = ?1 AND seq NOT IN (SELECT seq FROM "
            "page_history WHERE node_id = ?1 ORDER BY seq DESC LIMIT ?2)",
            {node, limits.states});
        !done)
        return done;
    while (true) {
        const auto now = weight(connection, node);
        if (!now)
            return now.failure();
        if (now->first <= limits.pageBytes || now->second < 2)
            return {};
        if (auto done = connection.run(
                "DELETE FROM page_history WHERE node_id = ?1 AND seq = (SELECT min(seq) FROM "
                "page_history WHERE node_id = ?1)",
                {node});
            !done)
            return done;
    }
}

Result<void> trimAll(SQLite& connection, qint64 most)
{
    while (true) {
        qint64 bytes = 0;
        if (auto asked = connection.each("SELECT coalesce(sum(bytes), 0) FROM page_history", {},
                [&](const SQLRow& row) { bytes = row.integer(0); });
            !asked)
            return asked;
        if (bytes <= most)
            return {};
        if (auto done = connection.run("DELETE FROM page_history WHERE rowid = (SELECT rowid FROM "
                                       "page_history ORDER BY at LIMIT 1)");
            !done)
            return done;
    }
}

Result<void> addState(SQLite& connection, const QString& node, const PageState& state,
    const PageHistoryLimits& limits)
{
    const qint64 bytes = state.doc.toUtf8().size();
    if (bytes > limits.stateBytes)
        return connection.run("DELETE FROM page_history WHERE node_id = ?", {node});
    if (auto done = connection.run(
            "INSERT INTO page_history (node_id, seq, doc, icon, bytes, at) VALUES (?1, "
            "coalesce((SELECT max(seq) FROM page_history WHERE node_id = ?1), 0) + 1, ?2, ?3, ?4, "
            "?5)",
            {node, state.doc, state.icon, bytes, now()});
        !done)
        return done;
    if (auto done = trimPage(connection, node, limits); !done)
        return done;
    return trimAll(connection, limits.allBytes);
}

} // namespace

void PageHistory::add(const QString& node, const PageState& state)
{
    m_store.write([=, limits = m_limits](
                      SQLite& connection) { return addState(connection, node, state, limits); });
}

void PageHistory::replaceAll(
    const QString& node, const std::optional<PageState>& first, const PageState& then)
{
    m_store.write([=, limits = m_limits](SQLite& connection) -> Result<void> {
        if (auto done = connection.run("DELETE FROM page_history WHERE node_id = ?", {node}); !done)
            return done;
        if (first)
            if (auto done = addState(connection, node, *first, limits); !done)
                return done;
        return addState(connection, node, then, limits);
    });
}

void PageHistory::replaceLast(const QString& node, const PageState& old, const QString& doc)
{
    m_store.write([=](SQLite& connection) {
        return connection.run(
            "UPDATE page_history SET doc = ?4, bytes = ?5 WHERE node_id = ?1 AND seq = (SELECT "
            "max(seq) FROM page_history WHERE node_id = ?1 AND doc = ?2 AND icon IS ?3)",
            {node, old.doc, old.icon, doc, doc.toUtf8().size()});
    });
}

void PageHistory::truncate(const QString& node, const PageState& state)
{
    m_store.write([=](SQLite& connection) {
        return connection.run(
            "DELETE FROM page_history WHERE node_id = ?1 AND seq > (SELECT max(seq) FROM "
            "page_history WHERE node_id = ?1 AND doc = ?2 AND icon IS ?3)",
            {node, state.doc, state.icon});
    });
}

std::vector<PageState> PageHistory::load(const QString& node)
{
    std::vector<PageState> states;
    m_store.read([&](SQLite& connection) {
        (void)connection.each("SELECT doc, icon FROM page_history WHERE node_id = ? ORDER BY seq",
            {node}, [&](const SQLRow& row) {
                states.push_back({row.text(0), row.optionalText(1)});
            });
    });
    return states;
}

std::vector<QString> PageHistory::pages()
{
    std::vector<QString> ids;
    m_store.read([&](SQLite& connection) {
        (void)connection.each("SELECT DISTINCT node_id FROM page_history", {},
            [&](const SQLRow& row) { ids.push_back(row.text(0)); });
    });
    return ids;
}

} // namespace corvelle
