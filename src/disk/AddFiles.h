// Puts files and folders on a canvas: by dropping, pasting or choosing them.
//
// What lies outside the library is linked and stays where it is; what may go away by itself is
// copied in; what lies in the library's folder is found where it is by a look at the disk. Copying
// and scanning run on the queue `corvelle.arrivals`. On the main thread.
#pragma once

#include "disk/DiskPlan.h"
#include "library/Arrivals.h"
#include "library/Edits.h"

#include <QSet>

namespace corvelle {

class AddFiles : public QObject
{
    Q_OBJECT

public:
    explicit AddFiles(Edits& edits, QObject* parent = nullptr);
    ~AddFiles() override;

    // Absolute paths, around a point of the parent's canvas. Returns at once. One undo step.
    void add(const QStringList& paths, const QString& parent, QPointF point);

    bool isIdle() const { return m_running == 0 && m_queue.isIdle() && m_arrivals.isIdle(); }

signals:
    void added(const std::vector<QString>& ids);
    // These have a card already.
    void alreadyHere(const std::vector<QString>& ids);
    // Something lies in the library's own folder without a card.
    void lookWanted();

private:
    struct Source
    {
        QString path; // resolved
        bool copies = false;
    };
    struct Prepared // a source that was copied and looked through on the queue
    {
        Source source;
        QString staged; // the copy
        std::vector<ArrivingItem> items;
        std::optional<Failure> problem;
    };
    struct Request
    {
        QString parent;
        QPointF point;
        QString staging;
        std::vector<Source> sources;
    };

    std::vector<Source> sourcesOf(const QStringList& paths, std::vector<QString>& here);
    QString liveCard(const QString& path) const;
    void forget(const std::vector<Source>& sources);
    void prepared(const Request& request, std::vector<Prepared> found);
    Result<void> moveIn(Prepared& source, const QString& parent);
    void tellFailures(const std::vector<std::pair<QString, Failure>>& failures);
    void end(const Request& request);

    Edits& m_edits;
    Library& m_library;
    QSet<QString> m_importing; // paths that are being brought in
    int m_running = 0;
    std::stop_source m_stop;
    Arrivals m_arrivals;
    SerialQueue m_queue;
};

} // namespace corvelle
