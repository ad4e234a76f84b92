// Saving page documents: at once, or on a queue while an editor stays open.
//
// The words of a page are stored for search only with the document that is still the newest: a save
// that was overtaken changes nothing of them. On the main thread; the writes of save() run on the
// queue `corvelle.page-index` with a connection of their own each time.
#pragma once

#include "base/SerialQueue.h"
#include "library/Library.h"

#include <QHash>

namespace corvelle {

class PageSaves : public QObject
{
    Q_OBJECT

public:
    explicit PageSaves(Library& library, QObject* parent = nullptr);

    // The stamp of the stored document; none when there is no such page.
    std::optional<double> stamp(const QString& id);

    // Stores the document and its plain words and gives the new stamp, which is greater than the
    // old one. `expected` names the stamp that the caller read: another one by now is a failure and
    // nothing is written.
    Result<double> saveNow(const QString& id, const QString& doc, const QString& words,
        std::optional<double> expected = {});

    // The same in the background; saved() or unsaved() tells the end.
    void save(const QString& id, const QString& doc, const QString& words);

    bool isWriting(const QString& id) const { return m_writing.contains(id); }
    bool isIdle() const { return m_writing.isEmpty(); }
    void drain() { m_queue.drain(); }

signals:
    void saved(const QString& id, double stamp);
    void unsaved(const QString& id);

private:
    struct Writing
    {
        QString doc;
        double stamp = 0;
    };
    double nextStamp(const QString& id);
    void wrote(const QString& id, double stamp);

    Library& m_library;
    QHash<QString, Writing> m_writing; // handed to the queue and not finished
    SerialQueue m_queue;
};

} // namespace corvelle
