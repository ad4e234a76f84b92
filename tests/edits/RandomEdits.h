// Edits by the thousand, as a seed says, and what must hold after them.
#pragma once

#include "edits/EditedLibrary.h"

#include <QSet>

#include <random>

// What a library holds as a person would tell it, for comparing.
struct Told
{
    QString title, parent, color;
    bool inTrash = false;
    bool operator==(const Told&) const = default;
};
void PrintTo(const Told& told, std::ostream* out);
std::map<QString, Told> toldTree(const corvelle::Library& library);

class RandomEdits
{
public:
    struct Chances
    {
        bool faults = false;  // of the disk and the database
        bool outside = false; // other programs change files
        bool forGood = false; // deleting for good
        bool restores = true; // undo and redo
    };

    RandomEdits(unsigned seed, const TempFolder& outside)
        : m_random(seed)
        , m_outside(outside)
    {}
    ~RandomEdits();

    // One operation, whole with its background half.
    void one(EditedLibrary& lib, const Chances& chances);

    // Contents that must be found: those that were put in, less those that somebody deleted.
    const QSet<QByteArray>& contents() const { return m_contents; }

    // Opens the library afresh, looks at the disk and checks it all. `stage` says when, for the
    // message.
    static void check(const QString& root, const QSet<QByteArray>& contents, const char* stage);

private:
    int below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    QString anyLive(EditedLibrary& lib, bool folders);
    std::vector<QString> some(EditedLibrary& lib);
    std::vector<QString> inTrash(EditedLibrary& lib);
    QString anyTitle();
    QByteArray newContent();
    void meddle(EditedLibrary& lib);
    void edit(EditedLibrary& lib, int which);
    void armFaults(EditedLibrary& lib);
    void disarm(EditedLibrary& lib);

    std::mt19937 m_random;
    const TempFolder& m_outside;
    QSet<QByteArray> m_contents;
    int m_count = 0;
};
