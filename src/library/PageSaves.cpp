#include "library/PageSaves.h"

#include "base/Clock.h"
#include "base/Log.h"
#include "base/MainThread.h"

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qsizetype mostWords = 200'000; // UTF-16 units

Result<void> writePage(SQLite& connection, const QString& id, const QString& doc, double stamp)
{
    if (auto done = connection.run(
            "INSERT INTO pages (node_id, doc, updated_at) VALUES (?, ?, ?) ON CONFLICT(node_id) "
            "DO UPDATE SET doc = excluded.doc, updated_at = excluded.updated_at",
            {id, doc, stamp});
        !done)
        return done;
    return connection.run("UPDATE nodes SET updated_at = ? WHERE id = ?", {stamp, id});
}

Result<void> writeWords(
    SQLite& connection, const QString& id, const QString& plainWords, double stamp)
{
    return connection.run(
        "INSERT INTO node_text (node_id, source, text) SELECT ?, 'page', ? WHERE (SELECT "
        "updated_at FROM pages WHERE node_id = ?) = ?\n"
        "ON CONFLICT(node_id) DO UPDATE SET source = excluded.source, text = excluded.text",
        {id, plainWords.left(mostWords), id, stamp});
}

} // namespace

PageSaves::PageSaves(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_queue(u"corvelle.page-index"_s)
{}

std::optional<double> PageSaves::stamp(const QString& id)
{
    std::optional<double> found;
    (void)m_library.connection().each("SELECT updated_at FROM pages WHERE node_id = ?", {id},
        [&](const SQLRow& row) { found = row.real(0); });
    return found;
}

double PageSaves::nextStamp(const QString& id)
{
    double last = m_writing.contains(id) ? m_writing.value(id).stamp : 0;
    if (const auto stored = stamp(id))
        last = std::max(last, *stored);
    return std::max(now(), std::nextafter(last, std::numeric_limits<double>::infinity()));
}

Result<double> PageSaves::saveNow(
    const QString& id, const QString& doc, const QString& words, std::optional<double> expected)
{
    Q_ASSERT(onMainThread());
    if (m_writing.contains(id)) {
        m_queue.drain();
        m_writing.remove(id);
    }
    SQLite& connection = m_library.connection();
    const double fresh = nextStamp(id);
    const auto written = connection.transaction([&]() -> Result<void> {
        if (expected && stamp(id) != expected)
            return Failure(u"the page was changed meanwhile"_s);
        return writePage(connection, id, doc, fresh);
    });
    if (!written)
        return written.failure();
    if (auto stored = writeWords(connection, id, words, fresh); !stored)
        logLine(u"index page: "_s + stored.failure().sentence());
    wrote(id, fresh);
    return fresh;
}

void PageSaves::save(const QString& id, const QString& doc, const QString& words)
{
    Q_ASSERT(onMainThread());
    const double fresh = nextStamp(id);
    m_writing[id] = {doc, fresh};
    m_queue.run(
        [path = databasePath(m_library.root()), id, doc, words, fresh] {
            auto connection = SQLite::open(path);
            const auto written =
                !connection ? Result<void>(connection.failure()) : connection->transaction([&] {
                    return writePage(*connection, id, doc, fresh);
                });
            if (!written)
                logLine(u"Couldn't save page: "_s + written.failure().sentence());
            else if (auto stored = writeWords(*connection, id, words, fresh); !stored)
                logLine(u"index page: "_s + stored.failure().sentence());
            return bool(written);
        },
        this,
        [this, id, fresh](bool written) {
            if (const auto mine = m_writing.constFind(id);
                mine != m_writing.cend() && mine->stamp == fresh)
                m_writing.erase(mine);
            if (!written) {
                emit unsaved(id);
                return;
            }
            wrote(id, fresh);
            emit saved(id, fresh);
        });
}

void PageSaves::wrote(const QString& id, double stamp)
{
    const Node* node = m_library.node(id);
    if (!node || node->updatedAt > stamp)
        return;
    m_library.tookPageStamp(id, stamp);
    Node copy = *node;
    copy.updatedAt = stamp;
    const SeenFile seen = m_library.tree().seen(id);
    m_library.took({{std::move(copy), seen}});
}

} // namespace corvelle
