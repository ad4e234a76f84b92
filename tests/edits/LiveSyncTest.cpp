// What happens on disk while the library is open, by chance and by the thousand: the tree follows,
// every card stays with its file, and no file is touched.
#include "edits/EditedLibrary.h"

#include "platform/FileFacts.h"

#include <QProcess>
#include <QStandardPaths>

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
    // The folder is linked into a library that lies elsewhere.
    void openLinked()
    {
        folder.makeFolder("My Space");
        lib = std::make_unique<EditedLibrary>(outside.path("library"));
        lib->linkSync.setDelays({40, 120, 10, 60});
        lib->linkSync.start();
        lib->addFiles.add({folder.path("My Space")}, {}, {});
        ASSERT_TRUE(lib->settle());
        ASSERT_FALSE(lib->find("My Space").isEmpty());
    }
    // Everything as before the first seed.
    void clear()
    {
        lib.reset();
        for (const TempFolder* each : {&folder, &outside})
            for (const QString& name :
                QDir(each->path()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot))
                ASSERT_TRUE(QDir(each->path(name)).removeRecursively());
    }
    void settle()
    {
        lib->diskSync.catchUp();
        lib->linkSync.catchUp();
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
            if (node.path.isNull() || lib->library.isInTrash(node.id) ||
                node.path == folder.path("My Space"))
                return;
            const QString path =
                node.isLinked() ? node.path.mid(folder.path().size() + 1) : node.path;
            EXPECT_FALSE(found.contains(path)) << "two cards for " << path.toStdString();
            EXPECT_FALSE(lib->library.isMissing(node.id)) << path.toStdString();
            found[path] = node.id;
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
    static void run(const QString& program, const QStringList& arguments)
    {
        EXPECT_EQ(QProcess::execute(program, arguments), 0)
            << program.toStdString() << ' ' << arguments.join(' ').toStdString();
    }
    // A few files and folders with times of their own, packed.
    QString archive() const
    {
        if (!QFileInfo::exists(outside.path("it.tar"))) {
            outside.makeFile("in/a.txt", "packed");
            outside.makeFile("in/b/c.txt", "packed deeper");
            outside.makeFolder("in/empty");
            run("tar", {"-cf", outside.path("it.tar"), "-C", outside.path("in"), "."});
        }
        return outside.path("it.tar");
    }
    // A working copy of two branches with some names in common.
    void switchBranch(const QString& where)
    {
        if (QStandardPaths::findExecutable("git").isEmpty())
            return;
        const auto git = [&](const QStringList& arguments) {
            run("git", QStringList{"-C", folder.path(where), "-c", "user.name=A", "-c",
                           "user.email=a@example.com"} +
                           arguments);
        };
        if (!QFileInfo::exists(folder.path(where + "/.git/HEAD"))) {
            if (where == "My Space" || QFileInfo::exists(folder.path(where + "/.git")))
                return;
            git({"init", "-q", "-b", "one"});
            for (const char* branch : {"one", "two"}) {
                folder.makeFile(where + "/common.txt", branch);
                folder.makeFile(where + "/of " + branch + "/only.txt", branch);
                git({"add", "common.txt", QString("of ") + branch});
                git({"commit", "-q", "-m", branch});
                if (QLatin1String(branch) == "one")
                    git({"checkout", "-q", "-b", "two"});
            }
            return;
        }
        git({"checkout", "-qf", random() % 2 ? "one" : "two"});
    }
    void doSomething()
    {
        const QString file = any(false), where = any(true), other = any(true);
        const auto words = [&] { return QByteArray("words ") + QByteArray::number(++names); };
        const auto what = random() % 24;
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
            if (!file.isEmpty() && !QFileInfo(folder.path(file)).isSymLink())
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
        case 15: // another case of its name
            if (!file.isEmpty()) {
                const QString name = QFileInfo(file).fileName();
                const QString other_ = name == name.toUpper() ? name.toLower() : name.toUpper();
                rename(file, QFileInfo(file).path() + "/" + other_);
            }
            break;
        case 16:
            if (!file.isEmpty())
                (void)::link(QFile::encodeName(folder.path(file)),
                    QFile::encodeName(folder.path(fresh(where) + ".hard")));
            break;
        case 17:
            if (!file.isEmpty())
                (void)::symlink(QFile::encodeName(folder.path(file)),
                    QFile::encodeName(folder.path(fresh(where) + ".soft")));
            break;
        case 18:
            if (!file.isEmpty())
                (void)::chmod(QFile::encodeName(folder.path(file)), random() % 2 ? 0600 : 0644);
            break;
        case 19: // deleted, and back from a backup or from elsewhere
            if (!file.isEmpty() && !QFileInfo(folder.path(file)).isSymLink()) {
                const QByteArray kept = folder.content(file);
                if (random() % 2) {
                    QFile::remove(folder.path(file));
                    folder.makeFile(file, kept);
                } else {
                    folder.makeFolder("away");
                    rename(file, "away/it");
                    rename("away/it", file);
                }
            }
            break;
        case 20: {
            const QString target = fresh(where);
            folder.makeFolder(target);
            run("tar", {"-xf", archive(), "-C", folder.path(target)});
            break;
        }
        case 21:
            switchBranch(where);
            break;
        case 22: // in a folder that goes at once
            if (!file.isEmpty() && other != "My Space" && !file.startsWith(other + "/")) {
                rename(file, other + "/" + QFileInfo(file).fileName());
                rename(other, fresh("My Space"));
            }
            break;
        default: // nobody's business
            folder.makeFile(where + "/node_modules/x/y.js");
            folder.makeFile(where + "/.git/any");
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

    // What a person gave a card stays with it; its name is the file's.
    void checkKept(const std::map<QString, Node>& before) const
    {
        for (const auto& [path, id] : tree()) {
            const Node& node = lib->node(id);
            ASSERT_EQ(node.title, lastComponent(path));
            const auto was = before.find(id);
            if (was == before.end())
                continue;
            ASSERT_EQ(node.color, was->second.color) << path.toStdString();
            if (node.parentID == was->second.parentID) {
                ASSERT_EQ(QPointF(node.x, node.y), QPointF(was->second.x, was->second.y))
                    << path.toStdString();
            }
        }
    }
    std::map<QString, Node> nodes() const
    {
        std::map<QString, Node> found;
        for (const auto& [path, id] : tree())
            found[id] = lib->node(id);
        return found;
    }

    void run(unsigned seed, int rounds)
    {
        SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(seed));
        random.seed(seed);
        for (int i = 0; i < rounds && !HasFatalFailure(); ++i) {
            const Disk before = disk();
            const auto idsBefore = tree();
            for (const auto& [path, id] : idsBefore)
                if (random() % 8 == 0)
                    lib->edits.setColor({id}, random() % 2 ? NodeColor::Blue : NodeColor::Red);
            const auto nodesBefore = nodes();
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
            checkKept(nodesBefore);
        }
    }

    TempFolder folder{QDir::homePath()}, outside; // what lies in the temporary one isn't linked
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
        clear();
    }
}

TEST_F(LiveSync, aLinkedFolderIsFollowedAsTheLibraryIs)
{
    const int seeds = qEnvironmentVariable("CORVELLE_SEEDS", "6").toInt();
    const unsigned first = qEnvironmentVariable("CORVELLE_SEED", "1").toUInt();
    for (int i = 0; i < seeds && !HasFailure(); ++i) {
        openLinked();
        run(first + static_cast<unsigned>(i), 12);
        clear();
    }
}

TEST_F(LiveSync, fiveThousandFilesAtOnce)
{
    open();
    for (int i = 0; i < 5000; ++i)
        folder.makeFile(QString("My Space/%1/%2.txt").arg(i % 50).arg(i));
    settle();
    EXPECT_EQ(lib->library.tree().size(), 5050);
    const QString id = lib->find("4321.txt");
    rename("My Space/21", "My Space/twenty-one");
    for (int i = 21; i < 5000; i += 50)
        rename(QString("My Space/twenty-one/%1.txt").arg(i), QString("My Space/0/%1.md").arg(i));
    settle();
    EXPECT_EQ(lib->library.tree().size(), 5050);
    EXPECT_EQ(lib->node(id).path, "My Space/0/4321.md");
    ASSERT_TRUE(QDir(folder.path("My Space/0")).removeRecursively());
    settle();
    EXPECT_TRUE(lib->library.isInTrash(id));
    EXPECT_EQ(tree().size(), 4849u);
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

// The only place left of a file whose folder moved and then lost it; another link to it lies in the
// Trash, and must not take the place.
TEST_F(LiveSync, whatLeftAFolderThatMovedComesBeforeTheTrash)
{
    folder.makeFile("My Space/a/deep/b/c.txt", "words");
    folder.makeFolder("My Space/other");
    const auto link = [&](const QString& from, const QString& to) {
        ASSERT_EQ(
            ::link(QFile::encodeName(folder.path(from)), QFile::encodeName(folder.path(to))), 0);
    };
    link("My Space/a/deep/b/c.txt", "My Space/other/d.txt");
    open();
    const QString id = lib->find("c.txt"), trashed = lib->find("d.txt");
    ASSERT_TRUE(QDir(folder.path("My Space/other")).removeRecursively());
    settle();
    ASSERT_TRUE(lib->library.isInTrash(trashed));
    rename("My Space/a/deep", "My Space/moved");
    link("My Space/moved/b/c.txt", "My Space/e.txt");
    ASSERT_TRUE(QDir(folder.path("My Space/moved/b")).removeRecursively());
    settle();
    EXPECT_EQ(lib->node(id).path, "My Space/e.txt");
    EXPECT_TRUE(lib->library.isInTrash(trashed));
}

TEST_F(LiveSync, outOfTheLibraryAndBackIsTheSameCard)
{
    folder.makeFile("My Space/a/b.txt");
    open();
    const QString id = lib->find("b.txt");
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

TEST_F(LiveSync, aLookAtEverythingThatFailsIsMadeAgain)
{
    open();
    auto& connection = lib->library.connection();
    ASSERT_TRUE(connection.run("ALTER TABLE spaces RENAME TO away", {}));
    lib->diskSync.start();
    (void)turnUntil([] { return false; }, 30);
    ASSERT_TRUE(connection.run("ALTER TABLE away RENAME TO spaces", {}));
    EXPECT_FALSE(lib->diskSync.isIdle()) << "it waits for the next try";
    folder.makeFile("My Space/a.txt");
    ASSERT_TRUE(lib->settle());
    EXPECT_FALSE(lib->find("a.txt").isEmpty());
}
