// Copies of items beside their originals, as one undo step.
//
// Files are copied on the queue `corvelle.duplicates` into `.corvelle/staging/`, and only when they
// are whole do they come into their folders together with their rows. So a copy that is cut short
// leaves nothing that anybody sees. On the main thread.
#pragma once

#include "base/SerialQueue.h"
#include "library/Edits.h"

namespace corvelle {

class Duplicates : public QObject
{
    Q_OBJECT

public:
    explicit Duplicates(Edits& edits, QObject* parent = nullptr);
    ~Duplicates() override;

    // Pages and websites by their rows, files and folders with what is in them on disk. Beside each
    // original, on the same canvas. Returns at once.
    void duplicate(const std::vector<QString>& ids);

    bool isIdle() const { return m_running == 0; }

    struct Copied // what became of one original on disk
    {
        QString id;
        QString staged; // absolute; null for what has no file
        int missed = 0; // files that couldn't be copied
        bool failed = false;
    };

signals:
    // The copies that stand now, in the order of their originals.
    void duplicated(const std::vector<QString>& ids);

private:
    struct Original
    {
        QString id;
        QString source; // absolute; null for what has no file
    };

    std::optional<Original> originalOf(const QString& id);
    void take(const std::vector<Copied>& copies);
    Result<QString> bringIn(const Copied& copy, std::vector<std::pair<Node, SeenFile>>& made);
    Result<void> writeCopy(const Node& from, const Node& copy);

    Edits& m_edits;
    Library& m_library;
    int m_running = 0;
    std::atomic<bool> m_stopping = false;
    SerialQueue m_queue;
};

} // namespace corvelle
