// The queues, the journal and the main connection all at once, and a quit in the middle.
#include "edits/EditedLibrary.h"

#include <QElapsedTimer>
#include <QThread>

#include <random>

using namespace corvelle;

namespace {

// What anybody has written to the database, be it in its log or in itself.
QString written(const QString& root)
{
    QString result;
    for (const char* end : {"", "-wal"}) {
        const QFileInfo file(databasePath(root) + end);
        result += QString::number(file.size()) + '@' +
                  QString::number(file.lastModified().toMSecsSinceEpoch()) + ' ';
    }
    return result;
}

QString storedDoc(const QString& root, const QString& id)
{
    QString doc;
    auto connection = SQLite::open(databasePath(root));
    EXPECT_TRUE(connection->each("SELECT doc FROM pages WHERE node_id = ?", {id},
        [&](const SQLRow& row) { doc = row.text(0); }));
    return doc;
}

} // namespace

TEST(Stress, queuesJournalAndConnectionLoseNoWriteAndEndWithTheQuit)
{
    const int ms = qEnvironmentVariableIsSet("CORVELLE_MS")
                       ? qEnvironmentVariableIntValue("CORVELLE_MS")
                       : 1'500;
    const unsigned seed = qEnvironmentVariableIsSet("CORVELLE_SEED")
                              ? qEnvironmentVariable("CORVELLE_SEED").toUInt()
                              : std::random_device()();
    SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    const TempFolder folder, outside;
    QHash<QString, QString> docs, titles; // what was last saved, and the last name
    QStringList pages, folders;
    int added = 0;
    {
        EditedLibrary lib(folder.path());
        for (int i = 0; i < 5; ++i) {
            pages.append(lib.make(NodeKind::Page, "page"));
            folders.append(lib.folder("folder " + QString::number(i)));
        }
        QElapsedTimer time;
        time.start();
        for (int i = 0; time.elapsed() < ms; ++i) {
            const QString page = pages[static_cast<int>(random() % 5)];
            const QString box = folders[static_cast<int>(random() % 5)];
            const QString number = QString::number(i);
            switch (random() % 8) {
            case 0:
            case 1:
                docs[page] = R"({"blocks":[],"n":)" + number + "}";
                lib.pageSaves.save(page, docs[page], "words " + number);
                break;
            case 2:
                docs[page] = R"({"blocks":[],"now":)" + number + "}";
                ASSERT_TRUE(lib.pageSaves.saveNow(page, docs[page], "words " + number));
                break;
            case 3:
                titles[box] = "renamed " + number;
                ASSERT_TRUE(lib.edits.rename(box, titles[box]));
                break;
            case 4: {
                const QString name = "file " + number + ".txt";
                outside.makeFile(name, number.toUtf8());
                lib.addFiles.add({outside.path(name)}, box, {});
                ++added;
                break;
            }
            case 5:
                lib.diskSync.start();
                break;
            case 6:
                lib.library.reload();
                break;
            default:
                if (const auto names = lib.manager.undoNames();
                    !names.empty() && names.front() == "Rename") {
                    lib.undo();
                    lib.redo();
                }
            }
            lib.done();
            QCoreApplication::processEvents();
        }
        EXPECT_EQ(lib.failures, QStringList());
        EXPECT_EQ(lib.refusals, QStringList());
        // The quit comes while all of them are at work.
        lib.pageSaves.drain();
        lib.journal.quit();
    }
    const QString atQuit = written(folder.path());
    QThread::msleep(150);
    QCoreApplication::processEvents();
    EXPECT_EQ(written(folder.path()), atQuit);
    for (const QString& page : std::as_const(pages))
        if (docs.contains(page)) {
            EXPECT_EQ(storedDoc(folder.path(), page), docs[page]);
        }

    EditedLibrary lib(folder.path());
    ASSERT_TRUE(lib.look());
    int files = 0;
    lib.library.tree().eachNode([&](const Node& node, const SeenFile&) {
        files += node.kind == NodeKind::File;
        if (titles.contains(node.id)) {
            EXPECT_EQ(node.title, titles[node.id]);
        }
    });
    EXPECT_LE(files, added)
        << "what was on its way at the quit may be missing, nothing may be doubled";
    EXPECT_GE(files, added / 2);
    EXPECT_TRUE(lib.manager.canUndo());
}
