#include "library/PageExcerpts.h"

#include "base/Log.h"
#include "library/LibraryPlace.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int mostKept = 4'000; // pages
constexpr int pagesAtOnce = 64; // pages of one look at the database

using Found = std::vector<std::pair<QString, std::vector<ExcerptRow>>>;

} // namespace

// The connection, opened at the first use.
struct PageExcerpts::Reader
{
    std::optional<SQLite> connection;

    Found read(const QString& database, const std::vector<QString>& ids)
    {
        Found found;
        if (!connection) {
            auto opened = SQLite::open(database);
            if (!opened) {
                logLine(u"page excerpts: "_s + opened.failure().sentence());
                return found;
            }
            connection = std::move(*opened);
        }
        for (const QString& id : ids) {
            const auto read = connection->each(
                "SELECT doc FROM pages WHERE node_id = ?", {id}, [&](const SQLRow& row) {
                    found.emplace_back(id, pageExcerpt(row.text(0).toUtf8()).rows);
                });
            if (!read)
                logLine(u"page excerpts: "_s + read.failure().sentence());
        }
        return found;
    }
};

PageExcerpts::PageExcerpts(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_kept(mostKept)
    , m_reader(std::make_shared<Reader>())
    , m_queue(u"corvelle.page-excerpts"_s)
{
    // What one paint asks for is one batch.
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    connect(&m_soon, &QTimer::timeout, this, &PageExcerpts::readWanted);
    connect(&library, &Library::treeChanged, this, &PageExcerpts::takeTreeChange);
}

PageExcerpts::~PageExcerpts() = default;

const std::vector<ExcerptRow>* PageExcerpts::rows(const QString& id)
{
    const Kept* kept = m_kept.object(id);
    if ((!kept || kept->isStale) && !m_reading.contains(id) && m_library.isOpen()) {
        m_wanted.insert(id);
        if (m_reading.isEmpty())
            m_soon.start();
    }
    return kept ? &kept->rows : nullptr;
}

void PageExcerpts::readWanted()
{
    if (m_wanted.isEmpty() || !m_reading.isEmpty())
        return;
    std::vector<QString> ids;
    for (auto id = m_wanted.begin(); id != m_wanted.end() && ids.size() < pagesAtOnce;) {
        ids.push_back(*id);
        m_reading.insert(*id);
        id = m_wanted.erase(id);
    }
    m_queue.run([reader = m_reader, database = databasePath(m_library.root()),
                    ids] { return reader->read(database, ids); },
        this, [this](Found found) { took(std::exchange(m_reading, {}), std::move(found)); });
}

void PageExcerpts::took(const QSet<QString>& asked, Found found)
{
    // A page that isn't there has no lines; that is known of it as well.
    QSet<QString> missing = asked;
    for (auto& [id, rows] : found) {
        missing.remove(id);
        m_kept.insert(id, new Kept{std::move(rows), m_changed.contains(id)});
    }
    for (const QString& id : missing)
        m_kept.insert(id, new Kept{{}, m_changed.contains(id)});
    m_changed.clear();
    emit read(asked);
    if (!m_wanted.isEmpty())
        m_soon.start();
}

void PageExcerpts::takeTreeChange(const TreeChange& change)
{
    const auto touch = [this](const QString& id) {
        if (Kept* kept = m_kept.object(id))
            kept->isStale = true;
        if (m_reading.contains(id))
            m_changed.insert(id);
    };
    if (change.everything) {
        m_kept.clear();
        m_changed = m_reading;
    }
    for (const QString& id : change.nodes)
        touch(id);
    for (const QString& id : change.changedPages)
        touch(id);
}

} // namespace corvelle
