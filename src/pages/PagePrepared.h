// A page that is read and parsed ahead of being shown, off the main thread.
#pragma once

#include "pages/PageDocument.h"
#include "store/SQLite.h"

#include <mutex>
#include <optional>

namespace corvelle {

struct PagePrepared
{
    QByteArray json;             // as it was read
    std::optional<double> stamp; // its `updated_at`
    FlatText text;               // with the closing paragraph
    PageSettings settings;
    QByteArray attrs; // of the document; empty when there are none
    bool readable = true;
};

// Parses a page that is at hand.
PagePrepared preparedPage(QByteArray json, std::optional<double> stamp);

// Reads pages by a connection of its own, which is never the library's. Any thread.
class PagePreparer
{
public:
    // None when there is no such page, or none can be read. Whoever asks knows that no write of the
    // page is under way.
    std::optional<PagePrepared> prepare(const QString& database, const QString& pageID);

private:
    std::mutex m_lock;
    QString m_database;
    std::optional<SQLite> m_connection; // opened at the first use, and for another library anew
};

} // namespace corvelle
