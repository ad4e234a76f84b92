#include "library/DataSteps.h"

#include "base/Log.h"
#include "pages/PageNode.h"

#include <QSet>

#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// Empty PDFs were stored as nothing but their page markers.
QByteArray emptyPdfTest()
{
    QByteArray text = "text";
    for (char digit = '0'; digit <= '9'; ++digit)
        text = QByteArray("replace(") + text + ", '" + digit + "', '')";
    return "trim(replace(" + text +
           ", '[page ]', ''), ' ' || char(9) || char(10) || char(12) || char(13)) = ''";
}

Result<void> dropWordsMadeAgain(SQLite& connection)
{
    if (!connection.hasTable("node_text"))
        return {};
    for (const QByteArray& sql :
        {QByteArray("DELETE FROM node_text WHERE source = 'text' AND substr(text, 1, 4) = "
                    "'PK' || char(3) || char(4)"),
            QByteArray("DELETE FROM node_text WHERE source = 'pdf' AND length(text) < 20000 AND ") +
                emptyPdfTest(),
            QByteArray("DELETE FROM node_text WHERE source = 'page'"),
            QByteArray("DELETE FROM node_text WHERE source = 'ocr' AND node_id IN "
                       "(SELECT id FROM nodes WHERE mime LIKE 'image/%')")})
        if (auto done = connection.run(sql); !done)
            return done;
    return {};
}

// Websites once kept the person's notes as a page.
Result<void> movePagesOfLinksToNotes(SQLite& connection)
{
    const auto pages = connection.query("SELECT p.node_id, p.doc FROM pages p JOIN links l ON "
                                        "l.node_id = p.node_id JOIN nodes n ON n.id = p.node_id\n"
                                        "WHERE n.kind = 'link' AND coalesce(l.notes, '') = ''",
        {}, [](const SQLRow& row) { return std::pair(row.text(0), row.text(1).toUtf8()); });
    if (!pages)
        return pages.failure();
    for (const auto& [id, doc] : *pages)
        if (const QString text = plainText(nodeFromJson(doc)); !text.trimmed().isEmpty())
            if (auto done =
                    connection.run("UPDATE links SET notes = ? WHERE node_id = ?", {text, id});
                !done)
                return done;
    return {};
}

Result<void> stepOne(SQLite& connection)
{
    if (auto done = connection.run("DROP TABLE IF EXISTS search_body"); !done)
        return done;
    if (auto done = dropWordsMadeAgain(connection); !done)
        return done;
    if (auto done = movePagesOfLinksToNotes(connection); !done)
        return done;
    return connection.execute("PRAGMA user_version = 1");
}

bool liesInSkippedFolder(const QString& path)
{
    static const QSet<QString> skipped = {u"node_modules"_s, u"site-packages"_s, u"dist-packages"_s,
        u"venv"_s, u".venv"_s, u"__pycache__"_s, u".git"_s, u"Pods"_s, u"DerivedData"_s,
        u"bower_components"_s, u".next"_s, u".tox"_s};
    const QStringList components = path.split(u'/');
    return std::any_of(components.begin(), components.end(),
        [](const QString& component) { return skipped.contains(component); });
}

Result<void> dropWordsOf(SQLite& connection, const std::vector<QString>& ids)
{
    std::vector<QByteArray> statements = {
        "UPDATE node_text SET source = 'none', text = NULL WHERE node_id = ?"};
    if (connection.hasTable("chunk_fts"))
        statements.push_back("INSERT INTO chunk_fts (chunk_fts, rowid, title, body) "
                             "SELECT 'delete', id, title, body FROM chunks WHERE node_id = ?");
    if (connection.hasTable("chunks"))
        statements.push_back("DELETE FROM chunks WHERE node_id = ?");
    if (connection.hasTable("chunk_state"))
        statements.push_back("DELETE FROM chunk_state WHERE node_id = ?");
    std::vector<SQLStatement> prepared;
    for (const QByteArray& sql : statements) {
        auto statement = connection.prepare(sql);
        if (!statement)
            return statement.failure();
        prepared.push_back(std::move(*statement));
    }
    for (const QString& id : ids)
        for (SQLStatement& statement : prepared)
            if (auto done = statement.run({id}); !done)
                return done;
    return {};
}

Result<void> stepTwo(SQLite& connection)
{
    const auto rows = connection.query(
        "SELECT t.node_id, n.path FROM node_text t JOIN nodes n ON n.id = t.node_id\n"
        "WHERE t.source != 'none' AND n.path IS NOT NULL",
        {}, [](const SQLRow& row) { return std::pair(row.text(0), row.text(1)); });
    if (!rows)
        return rows.failure();
    std::vector<QString> ids;
    for (const auto& [id, path] : *rows)
        if (liesInSkippedFolder(path))
            ids.push_back(id);
    if (auto done = dropWordsOf(connection, ids); !done)
        return done;
    if (!ids.empty())
        logLine(u"shrink: %1 files in generated folders lost their words"_s.arg(ids.size()));
    return connection.execute("PRAGMA user_version = 2");
}

} // namespace

void runDataSteps(SQLite& connection)
{
    using DataStep = Result<void> (*)(SQLite&);
    constexpr DataStep steps[] = {stepOne, stepTwo};
    qint64 version = 0;
    const auto asked = connection.each(
        "PRAGMA user_version", {}, [&](const SQLRow& row) { version = row.integer(0); });
    if (!asked)
        return;
    for (size_t i = static_cast<size_t>(std::max<qint64>(version, 0)); i < std::size(steps); ++i)
        if (const auto done = connection.transaction([&] { return steps[i](connection); }); !done) {
            logLine(u"shrink: "_s + done.failure().sentence());
            return;
        }
}

} // namespace corvelle
