// What one edit costs, and what it costs to rename and to trash a large folder. Prints a line of
// JSON.
//
//   bench_edits FOLDER     an empty one that is its to fill

#include "library/Edits.h"
#include "library/SnapshotReader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <cstdio>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

constexpr int large = 50'000;
constexpr int tries = 400;

struct Times
{
    std::vector<double> ms;
    double median()
    {
        std::sort(ms.begin(), ms.end());
        return ms[ms.size() / 2];
    }
};

template<class Work>
double timed(Work work)
{
    QElapsedTimer time;
    time.start();
    work();
    return static_cast<double>(time.nsecsElapsed()) / 1e6;
}

// A library with this many items in one folder, straight into the table; the folder is on disk.
QString fill(const QString& root, int count)
{
    auto opening = openLibrary({root, true}, OpenMode::Application);
    const QString space = opening.tree.spaces().front().id;
    QDir().mkpath(root + u"/My Space/Large"_s);
    Node node;
    node.id = u"00000000-0000-4000-8000-000000000000"_s;
    node.spaceID = space;
    node.kind = NodeKind::Folder;
    node.title = u"Large"_s;
    node.path = u"My Space/Large"_s;
    node.position = u"a0"_s;
    const QString folder = node.id;
    (void)opening.connection->transaction([&]() -> Result<void> {
        auto insert = opening.connection->prepare(insertNodeSQL);
        if (auto done = insertNode(*insert, node, {}); !done)
            return done;
        for (int i = 0; i < count; ++i) {
            node.id = u"%1-0000-4000-8000-000000000000"_s.arg(i + 1, 8, 16, QChar(u'0'));
            node.parentID = folder;
            node.kind = NodeKind::File;
            node.title = u"item %1.txt"_s.arg(i);
            node.path = u"My Space/Large/"_s + node.title;
            node.position = u"b%1"_s.arg(i, 7, 10, QChar(u'0'));
            if (auto done = insertNode(*insert, node, {}); !done)
                return done;
        }
        return {};
    });
    return folder;
}

struct Editing
{
    explicit Editing(const QString& root)
        : library({root, true}, OpenMode::Application)
        , journal(manager)
        , edits(library, manager, journal)
    {
        library.open(openLibrary({root, true}, OpenMode::Application));
        journal.start({library.root(), databasePath(library.root()), false, {}, 0});
    }
    ~Editing() { journal.quit(); }

    Library library;
    UndoManager manager;
    UndoJournal journal;
    Edits edits;
};

// The longest time without a sign that work goes on.
template<class Work>
std::pair<double, double> watched(Editing& editing, Work work)
{
    double longest = 0;
    QElapsedTimer silence;
    silence.start();
    const auto note = [&] {
        longest = std::max(longest, static_cast<double>(silence.nsecsElapsed()) / 1e6);
        silence.restart();
    };
    const auto connection = QObject::connect(&editing.library, &Library::working, note);
    const double ms = timed(work);
    note();
    QObject::disconnect(connection);
    return {ms, longest};
}

double bareUpdate(const QString& root, const QString& from, const QString& to)
{
    auto connection = SQLite::open(databasePath(root));
    return timed([&] {
        (void)connection->execute("BEGIN IMMEDIATE");
        (void)connection->run("UPDATE nodes SET path = ?1 || substr(path, length(?2) + 1) WHERE "
                              "path = ?2 OR (path >= ?2 || '/' AND path < ?2 || '0')",
            {to, from});
        (void)connection->execute("COMMIT");
    });
}

double oneEdit(const QString& root)
{
    Editing editing(root);
    Times times;
    QString id;
    for (int i = 0; i < tries; ++i) {
        times.ms.push_back(timed([&] {
            id = editing.edits.make({NodeKind::Page, u"Page"_s, {}, {0, 0}, {}, {}});
            editing.edits.rename(id, u"Renamed"_s);
            editing.edits.savePositions({{id, QPointF(i, 5)}});
            editing.edits.trash({id});
            editing.manager.closeEventGroup();
        }));
        QCoreApplication::processEvents();
    }
    return times.median();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    if (argc != 2)
        return 2;
    const QString base = QFile::decodeName(argv[1]);
    const QString small = base + u"/small"_s, huge = base + u"/huge"_s,
                  folders = base + u"/large"_s;
    fill(small, 100);
    fill(huge, 100'000);
    const QString folder = fill(folders, large);

    Times bare, renames, trashes, silences;
    for (int i = 0; i < 5; ++i) {
        const QString from = i % 2 ? u"My Space/Bare"_s : u"My Space/Large"_s;
        bare.ms.push_back(
            bareUpdate(folders, from, i % 2 ? u"My Space/Large"_s : u"My Space/Bare"_s));
    }
    bareUpdate(folders, u"My Space/Bare"_s, u"My Space/Large"_s);
    {
        Editing editing(folders);
        for (int i = 0; i < 5; ++i) {
            const auto [ms, silent] =
                watched(editing, [&] { editing.edits.rename(folder, u"Name %1"_s.arg(i)); });
            renames.ms.push_back(ms);
            silences.ms.push_back(silent);
            const auto [trashMs, trashSilent] =
                watched(editing, [&] { editing.edits.trash({folder}); });
            trashes.ms.push_back(trashMs);
            silences.ms.push_back(trashSilent);
            editing.edits.restore({folder});
        }
    }
    std::vector<double> smallMs, hugeMs;
    for (int i = 0; i < 3; ++i) {
        smallMs.push_back(oneEdit(small));
        hugeMs.push_back(oneEdit(huge));
    }
    std::sort(smallMs.begin(), smallMs.end());
    std::sort(hugeMs.begin(), hugeMs.end());
    std::printf("{\"bare\": %.3f, \"rename\": %.3f, \"trash\": %.3f, \"silence\": %.3f, \"small\": "
                "%.4f, \"huge\": %.4f}\n",
        bare.median(), renames.median(), trashes.median(),
        *std::max_element(silences.ms.begin(), silences.ms.end()), smallMs[1], hugeMs[1]);
}
