#include "library/UndoStore.h"

#include "base/Log.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int mostDoneRows = 200;

void logProblem(const Failure& failure)
{
    logLine(u"undo journal: "_s + failure.sentence());
}

} // namespace

struct UndoStore::State
{
    QString path;
    std::optional<SQLite> connection;

    SQLite* opened()
    {
        if (!connection) {
            auto fresh = SQLite::open(path);
            if (!fresh) {
                logProblem(fresh.failure());
                return nullptr;
            }
            connection = std::move(*fresh);
        }
        return &*connection;
    }
};

UndoStore::UndoStore()
    : m_queue(u"corvelle.undo-journal"_s)
{}

UndoStore::~UndoStore() = default;

void UndoStore::open(const QString& databasePath)
{
    m_state = std::make_shared<State>();
    m_state->path = databasePath;
}

void UndoStore::write(Body body)
{
    if (!m_state)
        return;
    m_queue.async([state = m_state, body = std::move(body)] {
        SQLite* connection = state->opened();
        if (!connection)
            return;
        if (auto done = connection->transaction([&] { return body(*connection); }); !done)
            logProblem(done.failure());
    });
}

void UndoStore::read(const std::function<void(SQLite&)>& body)
{
    if (!m_state)
        return;
    m_queue.sync([this, &body] {
        if (SQLite* connection = m_state->opened())
            body(*connection);
    });
}

void UndoStore::put(qint64 seq, const Step& step, bool undone)
{
    write([seq, step, undone](SQLite& connection) -> Result<void> {
        if (auto done = connection.run("INSERT OR REPLACE INTO undo_journal (seq, name, at, "
                                       "undone, step) VALUES (?, ?, ?, ?, ?)",
                {seq, step.name, step.at, undone ? 1 : 0, stepToJson(step)});
            !done)
            return done;
        return connection.run(
            "DELETE FROM undo_journal WHERE undone = 0 AND seq NOT IN (SELECT seq FROM "
            "undo_journal WHERE undone = 0 ORDER BY seq DESC LIMIT ?)",
            {mostDoneRows});
    });
}

void UndoStore::remove(std::vector<qint64> seqs)
{
    if (seqs.empty())
        return;
    write([seqs = std::move(seqs)](SQLite& connection) -> Result<void> {
        for (const qint64 seq : seqs)
            if (auto done = connection.run("DELETE FROM undo_journal WHERE seq = ?", {seq}); !done)
                return done;
        return {};
    });
}

void UndoStore::removeUndone()
{
    write([](SQLite& connection) {
        return connection.run("DELETE FROM undo_journal WHERE undone = 1");
    });
}

} // namespace corvelle
