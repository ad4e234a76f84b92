// What happens on disk while the library is open, by chance and by the thousand: the tree follows,
// every card stays with its file, and no file is touched.
#include "edits/EditedLibrary.h"

#include "platform/FileFacts.h"

#include <map>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using namespace corvelle;

namespace {

struct OnDisk
{
    bool folder = false;
    quint64 identity = 0;
    QByteArray content;

    bool operator==(const OnDisk&) const = default;
};
using Disk = std::map<QString, OnDisk>; // by path below the root

class LiveSync : public testing::Test
{
protected:
    void open()
    {
        lib = std::make_unique<EditedLibrary>(folder.path());
        // Long enough that what a busy machine tells in two batches is judged as one.
        lib->diskSync.setDelays({1, 40, 120});
        lib->diskSync.watch();
        ASSERT_TRUE(lib->settle());
    }
    void settle()
    {
        lib->diskSync.catchUp();
        ASSERT_TRUE(lib->settle());
    }

    // ---- what is there ----
    Disk disk() const
    {
        Disk found;
        read("My Space", found);
        return found;
    }
    void read(const QString& below, Disk& found) const
    {
        for (const QString& name :
            QDir(folder.path(below))
                .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)) {
            const QString path = below + "/" + name;
            const auto facts = fileFacts(QFile::encodeName(folder.path(path)));
            if (!facts || name.endsWith('~'))
                continue;
            const bool isFolder = facts->kind == FileFacts::Kind::Folder;
            found[path] = {
                isFolder, facts->identity, isFolder ? QByteArray() : folder.content(path)};
            if (isFolder && name != "node_modules")
                read(path, found);
        }
    }
    std::map<QString, QString> tree() const // path to id
    {
        std::map<QString, QString> found;
        lib->library.tree().eachNode([&](const Node& node, const SeenFile&) {
            if (!node.path.isNull() && !lib->library.isInTrash(node.id)) {
                EXPECT_FALSE(found.contains(node.path))
                    << "two cards for " << node.path.toStdString();
                found[node.path] = node.id;
            }
        });
        return found;
    }

    // ---- what a person, a tool or a script does ----
    QString any(bool isFolder)
    {
        std::vector<QString> paths;
        if (isFolder)
            paths.push_back("My Space");
        for (const auto& [path, facts] : disk())
            if (facts.folder == isFolder && !path.contains("node_modules"))
                paths.push_back(path);
        return paths.empty() ? QString() : paths[random() % paths.size()];
    }
    QString fresh(const QString& in) { return QString("%1/n%2").arg(in).arg(++names); }
    void rename(const QString& from, const QString& to) const
    {
        (void)::rename(QFile::encodeName(folder.path(from)), QFile::encodeName(folder.path(to)));
    }
    void doSomething()
    {
        const QString file = any(false), where = any(true), other = any(true);
        const auto words = [&] { return QByteArray("words ") + QByteArray::number(++names); };
        const auto what = random() % 16;
        told += QString("%1: file %2, folder %3, other %4\n").arg(what).arg(file, where, other);
        switch (what) {
        case 0:
        case 1:
            folder.makeFile(fresh(where) + ".txt", words());
            break;
        case 2:
            folder.makeFolder(fresh(where));
            break;
        case 3: { // new folders with something in them, at once
            const QString top = fresh(where);
            folder.makeFile(top + "/a.txt", words());
            folder.makeFile(top + "/deep/b.txt", words());
            break;
        }
        case 4:
            if (!file.isEmpty())
                folder.makeFile(file, words());
            break;
        case 5: // saved by way of another file
            if (!file.isEmpty()) {
                folder.makeFile(where + "/saving~", words());
                rename(where + "/saving~", file);
            }
            break;
        case 6: // saved with the old one kept aside, as editors do
            if (!file.isEmpty()) {
                rename(file, file + "~");
                folder.makeFile(file, words());
                QFile::remove(folder.path(file + "~"));
            }
            break;
        case 7:
        case 8:
            if (!file.isEmpty())
                rename(file, fresh(QFileInfo(file).path()) + ".md");
            break;
        case 9:
            if (!file.isEmpty())
                rename(file, fresh(where));
            break;
        case 10: // a folder goes somewhere else; never into itself
            if (other != "My Space" && where != other && !where.startsWith(other + "/"))
                rename(other, fresh(where));
            break;
        case 11: // a new folder, and something moves into it
            if (!file.isEmpty()) {
                const QString target = fresh(where);
                folder.makeFolder(target);
                rename(file, target + "/" + QFileInfo(file).fileName());
            }
            break;
        case 12: { // two files change names
            const QString second = any(false);
            if (!file.isEmpty() && second != file) {
                rename(file, file + "~");
                rename(second, file);
                rename(file + "~", second);
            }
            break;
        }
        case 13:
            if (!file.isEmpty())
                QFile::remove(folder.path(file));
            break;
        case 14:
            if (other != "My Space" && random() % 3 == 0)
                QDir(folder.path(other)).removeRecursively();
            break;
        default: // nobody's business
            folder.makeFile(where + "/node_modules/x/y.js");
            folder.makeFile(where + "/.git/index");
            break;
        }
    }

    // ---- what must hold ----
    // Where what lay at a path may be expected now: under its name, in its folder or where that
    // went; or where its own identity is.
    struct Expected
    {
        QString byName, byIdentity;
    };
    static std::map<QString, Expected> expectations(const Disk& before, const Disk& after)
    {
        std::map<quint64, QString> places;
        for (const auto& [path, facts] : after)
            places[facts.identity] = places.contains(facts.identity) ? QString() : path;
        std::map<QString, Expected>
            expected; // in the order of the paths: a folder before its contents
        for (const auto& [path, facts] : before) {
            const auto isThere = [&](const QString& at) {
                const auto found = after.find(at);
                return found != after.end() && found->second.folder == facts.folder;
            };
            const qsizetype slash = path.lastIndexOf('/');
            const auto parent = expected.find(path.left(slash));
            const QString above = parent == expected.end()           ? path.left(slash)
                                  : !parent->second.byName.isEmpty() ? parent->second.byName
                                                                     : parent->second.byIdentity;
            Expected& each = expected[path];
            if (!above.isEmpty() && isThere(above + path.mid(slash)))
                each.byName = above + path.mid(slash);
            if (const auto place = places.find(facts.identity);
                place != places.end() && isThere(place->second))
                each.byIdentity = place->second;
        }
        return expected;
    }

    // A card stays with its name where that is, else it goes where its file went.
    void checkFollowed(
        const Disk& before, const std::map<QString, QString>& idsBefore, const Disk& after) const
    {
        std::map<QString, QSet<QString>> allowed; // by path now
        std::map<QString, QString> kept;
        for (const auto& [path, expected] : expectations(before, after)) {
            const QString& id = idsBefore.at(path);
            if (!expected.byName.isEmpty())
                allowed[expected.byName].insert(id);
            else if (!expected.byIdentity.isEmpty())
                allowed[expected.byIdentity].insert(id);
            if (expected.byName == path && expected.byIdentity == path)
                kept[path] = id;
        }
        const auto ids = tree();
        for (const auto& [path, facts] : after) {
            if (const auto same = kept.find(path); same != kept.end()) {
                ASSERT_EQ(ids.at(path), same->second) << path.toStdString();
            } else if (const auto may = allowed.find(path); may != allowed.end()) {
                ASSERT_TRUE(may->second.contains(ids.at(path)))
                    << path.toStdString() << " has a card of its own";
            }
        }
    }

    void run(unsigned seed, int rounds)
    {
        SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(seed));
        random.seed(seed);
        for (int i = 0; i < rounds && !HasFatalFailure(); ++i) {
            const Disk before = disk();
            const auto idsBefore = tree();
            const int many = 1 + static_cast<int>(random() % 6);
            told.clear();
            for (int n = 0; n < many; ++n)
                doSomething();
            const Disk after = disk();
            settle();
            SCOPED_TRACE("round " + std::to_string(i) + ", what was done:\n" + told.toStdString());
            EXPECT_EQ(disk(), after) << "no file is touched";
            QStringList wanted, got;
            for (const auto& [path, facts] : after)
                if (!path.endsWith("/node_modules"))
                    wanted.append(path);
            for (const auto& [path, id] : tree())
                got.append(path);
            ASSERT_EQ(got.join('\n').toStdString(), wanted.join('\n').toStdString());
            Disk known = after;
            std::erase_if(
                known, [](const auto& each) { return each.first.endsWith("/node_modules"); });
            Disk knownBefore = before;
            std::erase_if(
                knownBefore, [](const auto& each) { return each.first.endsWith("/node_modules"); });
            checkFollowed(knownBefore, idsBefore, known);
        }
    }

    TempFolder folder;
    std::unique_ptr<EditedLibrary> lib;
    std::mt19937 random;
    int names = 0;
    QString told;
};

} // namespace

TEST_F(LiveSync, theTreeFollowsWhateverHappens)
{
    const int seeds = qEnvironmentVariable("CORVELLE_SEEDS", "6").toInt();
    const unsigned first = qEnvironmentVariable("CORVELLE_SEED", "1").toUInt();
    for (int i = 0; i < seeds && !HasFailure(); ++i) {
        open();
        run(first + static_cast<unsigned>(i), 12);
        lib.reset();
        for (const QString& name :
            QDir(folder.path()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot))
            ASSERT_TRUE(QDir(folder.path(name)).removeRecursively());
    }
}

TEST_F(LiveSync, aMoveIntoANewFolderKeepsTheCard)
{
    folder.makeFile("My Space/a.txt");
    open();
    const QString id = lib->find("a.txt");
    folder.makeFolder("My Space/new");
    rename("My Space/a.txt", "My Space/new/b.txt");
    settle();
    EXPECT_EQ(lib->node(id).path, "My Space/new/b.txt");
    EXPECT_EQ(lib->node(id).title, "b.txt");
    // A folder moves, and a file in it is renamed, in one go.
    folder.makeFolder("My Space/other");
    rename("My Space/new", "My Space/other/moved");
    rename("My Space/other/moved/b.txt", "My Space/other/moved/c.txt");
    settle();
    EXPECT_EQ(lib->node(id).path, "My Space/other/moved/c.txt");
    // A name is used again at once.
    rename("My Space/other/moved/c.txt", "My Space/d.txt");
    folder.makeFile("My Space/other/moved/c.txt", "another");
    settle();
    EXPECT_FALSE(lib->library.isInTrash(id));
    EXPECT_EQ(lib->library.tree().size(), 4);
}

TEST_F(LiveSync, outOfTheLibraryAndBackIsTheSameCard)
{
    folder.makeFile("My Space/a/b.txt");
    open();
    const QString id = lib->find("b.txt");
    const TempFolder outside;
    ASSERT_EQ(::rename(QFile::encodeName(folder.path("My Space/a/b.txt")),
                  QFile::encodeName(outside.path("b.txt"))),
        0);
    settle();
    EXPECT_TRUE(lib->library.isInTrash(id));
    EXPECT_EQ(lib->manager.undoActionName(), "Move to Trash");
    ASSERT_EQ(::rename(QFile::encodeName(outside.path("b.txt")),
                  QFile::encodeName(folder.path("My Space/c.txt"))),
        0);
    settle();
    EXPECT_FALSE(lib->library.isInTrash(id));
    EXPECT_EQ(lib->node(id).path, "My Space/c.txt");
}

// What programs do to save a file: one card, no entry in the Trash, one change.
TEST_F(LiveSync, savingIsAChangeHoweverItIsDone)
{
    folder.makeFile("My Space/a.txt", "first");
    open();
    const QString id = lib->find("a.txt");
    int changes = 0;
    QObject::connect(&lib->diskSync, &DiskSync::filesChanged, &lib->library,
        [&](const QSet<QString>& ids) { changes += ids == QSet<QString>{id} ? 1 : 100; });
    const auto file = [](const QString& name) { return "My Space/" + name; };
    const auto remove = [&](const QString& name) {
        ASSERT_TRUE(QFile::remove(folder.path(file(name))));
    };
    const std::vector<std::pair<const char*, std::function<void()>>> programs{
        {"in place", [&] { folder.makeFile(file("a.txt"), "in place"); }},
        {"vim",
            [&] {
                folder.makeFile(file(".a.txt.swp"));
                folder.makeFile(file("4913"));
                remove("4913");
                rename(file("a.txt"), file("a.txt~"));
                folder.makeFile(file("a.txt"), "by vim!");
                remove("a.txt~");
                remove(".a.txt.swp");
            }},
        {"emacs",
            [&] {
                folder.makeFile(file("#a.txt#"), "by emacs");
                ASSERT_TRUE(QFile::link("nobody@nowhere", folder.path(file(".#a.txt"))));
                rename(file("a.txt"), file("a.txt~"));
                folder.makeFile(file("a.txt"), "by emacs");
                remove("#a.txt#");
                remove(".#a.txt");
            }},
        {"an office",
            [&] {
                folder.makeFile(file(".~lock.a.txt#"));
                folder.makeFile(file("lu1234.tmp~"), "by an office");
                rename(file("lu1234.tmp~"), file("a.txt"));
                remove(".~lock.a.txt#");
            }},
        {"a desktop's editor",
            [&] {
                folder.makeFile(file(".goutputstream-X7Y8Z9"), "by a desktop's editor");
                rename(file(".goutputstream-X7Y8Z9"), file("a.txt"));
            }},
        {"rsync",
            [&] {
                folder.makeFile(file(".a.txt.Gq3kLm"), "synced from another machine");
                rename(file(".a.txt.Gq3kLm"), file("a.txt"));
            }},
        {"a browser",
            [&] {
                folder.makeFile(file("a.txt.crdownload"), "downloaded again, and longer");
                rename(file("a.txt.crdownload"), file("a.txt"));
            }},
    };
    for (const auto& [name, save] : programs) {
        SCOPED_TRACE(name);
        changes = 0;
        save();
        settle();
        EXPECT_EQ(lib->library.children({}).size(), 1u);
        EXPECT_EQ(lib->find("a.txt"), id);
        EXPECT_EQ(lib->library.tree().size(), 1) << "nothing is in the Trash";
        EXPECT_EQ(changes, 1);
        EXPECT_EQ(lib->node(id).byteSize, folder.content(file("a.txt")).size());
        folder.makeFile(file("keep"), "");
        remove("keep"); // came and went before anybody looked
        settle();
        EXPECT_EQ(lib->library.tree().size(), 1);
    }
}
