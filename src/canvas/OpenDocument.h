// The page, Markdown file or document that is open over the canvas: read in the background, and
// again when it changes.
//
// Main thread; reading runs on the queue `corvelle.page-open`.
#pragma once

#include "base/SerialQueue.h"
#include "canvas/DocumentPage.h"
#include "canvas/Viewer.h"
#include "library/Library.h"
#include "pages/PagePrepared.h"

#include <memory>

namespace corvelle {

class OpenDocument : public QObject
{
    Q_OBJECT

public:
    struct Contents
    {
        FlatText text;
        PageSettings settings;
        QByteArray attrs;
        bool readable = true;
        std::shared_ptr<const DocumentPage> document; // of a document that is only read
    };

    explicit OpenDocument(Library& library, QObject* parent = nullptr);

    void open(const QString& id);
    void close();
    // Empty when nothing is open.
    const QString& id() const { return m_id; }
    const Contents& contents() const { return m_contents; }
    // Opened, and not read yet.
    bool isReading() const { return m_reading > 0; }

signals:
    // What was opened is there: the first time, and then each time it has changed.
    void read(bool again);
    // It can't be shown; the sentence says why.
    void unreadable(const QString& sentence);

private:
    void start();
    void took(const QString& id, std::optional<Contents> contents, const QString& why);
    void takeTreeChange(const TreeChange& change);

    Library& m_library;
    QString m_id;
    Contents m_contents;
    bool m_isThere = false;
    int m_reading = 0;
    std::shared_ptr<PagePreparer> m_preparer; // on the queue
    SerialQueue m_queue;
};

} // namespace corvelle
