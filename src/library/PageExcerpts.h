// The first lines of the pages in sight, read in batches in the background and kept until a page is
// written.
//
// Main thread; reading runs on the queue `corvelle.page-excerpts` with a connection of its own.
#pragma once

#include "base/SerialQueue.h"
#include "library/Library.h"
#include "pages/PageExcerpt.h"

#include <QCache>
#include <QSet>
#include <QTimer>

#include <memory>

namespace corvelle {

class PageExcerpts : public QObject
{
    Q_OBJECT

public:
    explicit PageExcerpts(Library& library, QObject* parent = nullptr);
    ~PageExcerpts() override;

    // What is known of a page; null for nothing yet. What isn't there or is out of date is read,
    // and read() tells of it.
    const std::vector<ExcerptRow>* rows(const QString& id);

    bool isIdle() const { return m_wanted.isEmpty() && m_reading.isEmpty(); }

signals:
    void read(const QSet<QString>& ids);

private:
    void readWanted();
    struct Kept
    {
        std::vector<ExcerptRow> rows;
        bool isStale = false;
    };
    void took(
        const QSet<QString>& asked, std::vector<std::pair<QString, std::vector<ExcerptRow>>> found);
    void takeTreeChange(const TreeChange& change);

    Library& m_library;
    QCache<QString, Kept> m_kept;
    QSet<QString> m_wanted, m_reading;
    QSet<QString> m_changed; // while they were being read
    QTimer m_soon;
    struct Reader;
    std::shared_ptr<Reader> m_reader; // on the queue
    SerialQueue m_queue;
};

} // namespace corvelle
