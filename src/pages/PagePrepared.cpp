#include "pages/PagePrepared.h"

#include "base/Log.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

PagePrepared preparedPage(QByteArray json, std::optional<double> stamp)
{
    PagePrepared prepared;
    const auto page = pageTree(json);
    prepared.readable = page.has_value();
    prepared.text = textFromNodes(page ? page->content : PageNodes());
    if (page)
        prepared.attrs = page->attrs;
    prepared.settings = pageSettings(prepared.attrs);
    prepared.json = std::move(json);
    prepared.stamp = stamp;
    return prepared;
}

std::optional<PagePrepared> PagePreparer::prepare(const QString& database, const QString& pageID)
{
    QByteArray json;
    std::optional<double> stamp;
    {
        const std::scoped_lock lock(m_lock);
        if (!m_connection || m_database != database) {
            m_connection.reset();
            auto opened = SQLite::open(database);
            if (!opened) {
                logLine(u"prepare page: "_s + opened.failure().sentence());
                return std::nullopt;
            }
            m_connection = std::move(*opened);
            m_database = database;
        }
        const auto read = m_connection->each("SELECT doc, updated_at FROM pages WHERE node_id = ?",
            {pageID}, [&](const SQLRow& row) {
                json = row.text(0).toUtf8();
                stamp = row.date(1);
            });
        if (!read)
            logLine(u"prepare page: "_s + read.failure().sentence());
    }
    if (json.isNull())
        return std::nullopt;
    return preparedPage(std::move(json), stamp);
}

} // namespace corvelle
