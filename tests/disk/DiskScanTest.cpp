#include "disk/DiskScan.h"

#include "support/Printing.h"
#include "support/RefusedCall.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <filesystem>
#include <thread>

using namespace corvelle;
using namespace corvelle::DiskPlan;

namespace {

class DiskScanTest : public testing::Test
{
protected:
    // The toolkit can't remove names that are no text.
    DiskScanTest() { m_root.setAutoRemove(false); }
    ~DiskScanTest() override
    {
        std::error_code error;
        std::filesystem::remove_all(root().toStdString(), error);
    }

    QString root() const { return m_root.path(); }
    QByteArray native(const QByteArray& name) const { return root().toUtf8() + '/' + name; }

    // The folders on the way are made too.
    void givenFile(const QString& path, const QByteArray& contents = "contents") const
    {
        givenFolder(parentPath(path));
        QFile file(root() + u'/' + path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(contents);
    }

    void givenFolder(const QString& path) const
    {
        ASSERT_TRUE(QDir(root()).mkpath(path.isEmpty() ? "." : path));
    }

    void givenLink(const char* name, const char* target) const
    {
        ASSERT_EQ(::symlink(target, native(name).constData()), 0);
    }

    Scans tree(const QStringList& tops = {""}) const { return scanTree(root(), tops); }
    Scans folders(const QStringList& some) const { return scanFolders(root(), some); }

    std::optional<Entry> entryAt(const QString& path) const
    {
        return entry(root() + u'/' + path, path);
    }

private:
    QTemporaryDir m_root;
};

// "folder: name name/ name*", a line for each folder; "/" marks a folder and "*" a generated one.
QString shape(const Scans& scans)
{
    QString lines;
    for (const auto& [folder, entries] : scans) {
        QStringList names;
        for (const Entry& entry : entries) {
            EXPECT_EQ(parentPath(entry.path), folder);
            names += lastComponent(entry.path) + (entry.generated ? "*" : entry.folder ? "/" : "");
        }
        names.sort();
        lines += folder + ": " + names.join(' ') + '\n';
    }
    return lines;
}

std::optional<Entry> found(const Scans& scans, const QString& path)
{
    const auto folder = scans.find(parentPath(path));
    if (folder != scans.end())
        for (const Entry& entry : folder->second)
            if (entry.path == path)
                return entry;
    return std::nullopt;
}

// Rights mean nothing to the super-user, so while this lives we are nobody.
class AsOrdinaryUser
{
public:
    AsOrdinaryUser() { m_isOrdinary = m_before != 0 || ::seteuid(65534) == 0; }
    ~AsOrdinaryUser()
    {
        if (m_before == 0 && ::seteuid(0) != 0)
            std::abort();
    }
    bool isOrdinary() const { return m_isOrdinary; }

private:
    const uid_t m_before = ::geteuid();
    bool m_isOrdinary = false;
};

// A chain of folders that goes deeper than any path that can be opened, taken away again
// afterwards.
class DeepChain
{
public:
    DeepChain(const QByteArray& top, int count)
    {
        int at = ::open(top.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int i = 0; at >= 0 && i < count; ++i) {
            m_folders.push_back(at);
            ::mkdirat(at, m_name.constData(), 0700);
            at = ::openat(at, m_name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        }
        m_last = at;
    }
    ~DeepChain()
    {
        ::close(m_last);
        for (auto folder = m_folders.rbegin(); folder != m_folders.rend(); ++folder) {
            ::unlinkat(*folder, m_name.constData(), AT_REMOVEDIR);
            ::close(*folder);
        }
    }
    bool isWhole() const { return m_last >= 0; }

private:
    const QByteArray m_name = QByteArray(200, 'd');
    std::vector<int> m_folders;
    int m_last = -1;
};

// What a scan writes to the log.
template<class Act>
QString logOf(Act act)
{
    testing::internal::CaptureStderr();
    act();
    return QString::fromStdString(testing::internal::GetCapturedStderr());
}

} // namespace

TEST_F(DiskScanTest, aTreeIsToldFolderByFolderAndAListOfFoldersOneByOne)
{
    givenFile("Space/a.txt", "12345");
    givenFile("Space/f/g/b.txt");
    givenFolder("Space/empty");
    givenFile("Other/c.txt");
    EXPECT_EQ(shape(tree({"Space"})),
        "Space: a.txt empty/ f/\nSpace/empty: \nSpace/f: g/\nSpace/f/g: b.txt\n");
    EXPECT_EQ(shape(tree({"Space/f", "Other"})), "Other: c.txt\nSpace/f: g/\nSpace/f/g: b.txt\n");
    EXPECT_EQ(shape(folders({"Space", "Space/f/g", "Space/none", "Space/a.txt"})),
        "Space: a.txt empty/ f/\nSpace/f/g: b.txt\n");
    EXPECT_EQ(shape(folders({""})), ": Other/ Space/\n");
}

TEST_F(DiskScanTest, anEntryHoldsTheFactsOfItsFile)
{
    givenFile("a.txt", "12345");
    givenFolder("f");
    const timespec times[2] = {{0, UTIME_OMIT}, {1'700'000'000, 500'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, native("a.txt").constData(), times, 0), 0);
    const std::optional<Entry> file = entryAt("a.txt");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path, "a.txt");
    EXPECT_FALSE(file->folder);
    EXPECT_EQ(file->size, 5);
    EXPECT_EQ(file->modified, 1'700'000'000.5);
    const std::optional<Entry> folder = entryAt("f");
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->folder);
    EXPECT_EQ(folder->size, 0);
    const Scans scans = tree();
    EXPECT_EQ(found(scans, "a.txt"), file);
    EXPECT_EQ(found(scans, "f"), folder);
    EXPECT_FALSE(entryAt("none"));
}

TEST_F(DiskScanTest, aRenamedFileIsRecognisedAndARecreatedOneIsNot)
{
    givenFile("a.txt");
    givenFolder("f");
    const quint64 identity = entryAt("a.txt")->inode;
    ASSERT_TRUE(QFile::rename(root() + "/a.txt", root() + "/f/b.txt"));
    EXPECT_EQ(found(tree(), "f/b.txt")->inode, identity);

    struct stat before, after;
    ASSERT_EQ(::stat(native("f/b.txt").constData(), &before), 0);
    ASSERT_TRUE(QFile::remove(root() + "/f/b.txt"));
    ::usleep(20'000); // birth times move on with the timer's ticks
    givenFile("f/b.txt");
    ASSERT_EQ(::stat(native("f/b.txt").constData(), &after), 0);
    EXPECT_NE(found(tree(), "f/b.txt")->inode, identity)
        << (before.st_ino == after.st_ino ? "the inode came back" : "on another inode");
}

TEST_F(DiskScanTest, aLinkIsAFileOfItsOwnAndNeverFollowed)
{
    givenFile("real/a.txt");
    givenLink("dangling", "nowhere");
    givenLink("to folder", "real");
    givenLink("self", "self");
    givenLink("real/up", "..");
    EXPECT_EQ(shape(tree()), ": dangling real/ self to folder\nreal: a.txt up\n");
    EXPECT_EQ(shape(folders({"to folder", "self", "real/up", "real/up/real"})), "");
    EXPECT_EQ(entryAt("dangling")->size, 7);
    EXPECT_NE(entryAt("to folder")->inode, entryAt("real")->inode);
    EXPECT_TRUE(scanTree(root() + "/to folder", QStringList("")).empty()) << "not as a root either";
}

TEST_F(DiskScanTest, whatIsNoFileOrFolderIsLeftOut)
{
    givenFile("a.txt");
    ASSERT_EQ(::mkfifo(native("fifo").constData(), 0600), 0);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(native("socket").size(), qsizetype(sizeof address.sun_path));
    qstrcpy(address.sun_path, native("socket").constData());
    ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(fd);
    EXPECT_EQ(shape(tree()), ": a.txt\n");
    EXPECT_FALSE(entryAt("fifo"));
    EXPECT_FALSE(entryAt("socket"));
}

TEST_F(DiskScanTest, hiddenAndSkippedItemsAreNeitherToldNorEntered)
{
    givenFile("Space/.git/config");
    givenFile("Space/load.part/a.txt");
    givenFile("Space/~$Letter.docx");
    givenFile("Space/Letter.docx");
    EXPECT_EQ(shape(tree({"Space"})), "Space: Letter.docx\n");
    EXPECT_EQ(shape(folders({"Space/.git", "Space/load.part", "Space/load.part/none"})), "");
    EXPECT_FALSE(entryAt("Space/~$Letter.docx"));
    const QString path = root() + "/Space/~$Letter.docx";
    EXPECT_TRUE(entry(path, path, NameRules::Ignore)) << "a linked file may have any name";
}

TEST_F(DiskScanTest, aFollowedFolderMayHaveAnyNameItself)
{
    givenFile("Work.part/f/a.txt");
    EXPECT_EQ(shape(tree({"Work.part"})), "Work.part: f/\nWork.part/f: a.txt\n");
    EXPECT_EQ(shape(folders({"Work.part", "Work.part/f"})), "Work.part: f/\nWork.part/f: a.txt\n");
}

TEST_F(DiskScanTest, generatedFoldersAreToldButNotEntered)
{
    givenFile("Space/node_modules/left/index.js");
    givenFile("Space/venv/pyvenv.cfg");
    givenFile("Space/venv/lib/a.py");
    givenFile("Space/f/venv/b.txt");
    givenFolder("Space/g/venv/pyvenv.cfg");
    givenFile("Space/Pods", "a file of this name");
    EXPECT_EQ(shape(tree({"Space"})),
        "Space: Pods f/ g/ node_modules* venv*\nSpace/f: venv/\nSpace/f/venv: b.txt\n"
        "Space/g: venv/\nSpace/g/venv: pyvenv.cfg/\nSpace/g/venv/pyvenv.cfg: \n");
    EXPECT_EQ(shape(folders({"Space/node_modules", "Space/node_modules/left", "Space/venv",
                  "Space/venv/lib", "Space/f/venv"})),
        "Space/f/venv: b.txt\n");
    EXPECT_TRUE(entryAt("Space/venv")->generated);
    EXPECT_FALSE(entryAt("Space/f/venv")->generated);
    EXPECT_FALSE(entryAt("Space/Pods")->generated);

    for (const char* path :
        {"Space/node_modules", "Space/node_modules/left/index.js", "Space/venv/lib/none"})
        EXPECT_TRUE(isInsideGenerated(path, root())) << path;
    for (const char* path :
        {"", "Space", "Space/f/venv/b.txt", "Space/Node_modules/a", "node_modules2"})
        EXPECT_FALSE(isInsideGenerated(path, root())) << path;
}

TEST_F(DiskScanTest, oddNamesComeThroughUnchangedAndThoseThatAreNoTextAreToldOnce)
{
    const QStringList odd = {"two\nlines", QString(255, u'x'), QString("u") + QChar(0x0308),
        QChar(QChar::ByteOrderMark) + QString("marked"), "a\\b", "*?\"", " "};
    for (const QString& name : odd)
        givenFile("f/" + name);
    for (const char* name : {"f/\xFF", "f/caf\xE9", "\xC3"})
        ASSERT_EQ(::mkdir(native(name).constData(), 0700), 0);
    Scans scans;
    const QString log = logOf([&] { scans = tree(); });
    ASSERT_EQ(scans.size(), 2u);
    EXPECT_EQ(scans["f"].size(), size_t(odd.size()));
    for (const QString& name : odd) {
        EXPECT_TRUE(found(scans, "f/" + name)) << name.toStdString();
        EXPECT_EQ(found(scans, "f/" + name), entryAt("f/" + name)) << name.toStdString();
    }
    EXPECT_EQ(log, "disk scan: left out 3 names that are not UTF-8\n");
    EXPECT_EQ(logOf([&] { folders({"f/" + odd[0]}); }), "");
}

TEST_F(DiskScanTest, pathsTooLongToOpenAreLeftOut)
{
    givenFile("a.txt");
    const DeepChain chain(root().toUtf8(), 25);
    ASSERT_TRUE(chain.isWhole());
    Scans scans;
    const QString log = logOf([&] { scans = tree(); });
    EXPECT_EQ(log, "disk scan: left out 1 paths that are too long to open\n");
    const auto fitting = static_cast<size_t>((PATH_MAX - 1 - root().size()) / 201);
    EXPECT_EQ(scans.size(), 1 + fitting);
    for (const auto& [folder, entries] : scans)
        for (const Entry& one : entries)
            EXPECT_EQ(entryAt(one.path), one);
}

TEST_F(DiskScanTest, aFolderThatCannotBeReadIsLeftOutOfTheMap)
{
    givenFile("closed/a.txt");
    givenFile("names only/a.txt");
    givenFile("open/a.txt");
    ASSERT_EQ(::chmod(root().toUtf8().constData(), 0755), 0);
    ASSERT_EQ(::chmod(native("closed").constData(), 0), 0);
    // It can be listed, but nothing in it can be looked at.
    ASSERT_EQ(::chmod(native("names only").constData(), 0444), 0);
    Scans scans;
    bool isOrdinary = false;
    {
        const AsOrdinaryUser user;
        isOrdinary = user.isOrdinary();
        scans = tree();
    }
    ::chmod(native("closed").constData(), 0700);
    ::chmod(native("names only").constData(), 0700);
    if (!isOrdinary)
        GTEST_SKIP() << "runs as the super-user and can't give that up here";
    EXPECT_EQ(shape(scans), ": closed/ names only/ open/\nopen: a.txt\n");
}

TEST_F(DiskScanTest, aFolderThatWentAwayIsLeftOutOfTheMap)
{
    givenFolder("f");
    ASSERT_TRUE(QDir(root()).rmdir("f"));
    EXPECT_TRUE(folders({"f"}).empty());
    EXPECT_TRUE(scanTree(root() + "/f", QStringList("")).empty());
}

TEST_F(DiskScanTest, aFolderOnAFailingDiskIsLeftOutOfTheMap)
{
    givenFile("Space/a.txt");
    EXPECT_EXIT(
        {
            const bool isRefused = refuseCall(SYS_getdents64, EIO);
            ::_exit(!isRefused ? 2 : tree({"Space"}).empty() && folders({"Space"}).empty() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(DiskScanTest, aStoppedScanSaysNothing)
{
    for (int i = 0; i < 200; ++i)
        givenFolder(QString("Space/f%1").arg(i));
    const QStringList tops = {"Space"};
    const size_t whole = tree(tops).size();
    ASSERT_EQ(whole, 201u);
    for (int microseconds = 0; microseconds < 1000; microseconds += 20) {
        std::stop_source source;
        std::jthread stopper([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
            source.request_stop();
        });
        const size_t size = scanTree(root(), tops, source.get_token()).size();
        EXPECT_TRUE(size == 0 || size == whole) << size;
    }
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_TRUE(scanTree(root(), tops, stopped.get_token()).empty());
    EXPECT_TRUE(scanFolders(root(), tops, stopped.get_token()).empty());
}

TEST_F(DiskScanTest, planAndScanFollowAMoveOnTheRealDisk)
{
    givenFile("Space/a.txt");
    givenFile("Space/f/b.txt");
    std::vector<Known> known;
    for (const auto& [folder, entries] : tree({"Space"}))
        for (const Entry& one : entries)
            known.push_back({one.path, one.path, one.folder, one.inode, one.size, one.modified});
    const QSet<QString> withNode = {"Space", "Space/f"};
    const auto planned = [&] {
        return compare(tree({"Space"}), known, {}, withNode, Pass::Structural, NameCase::Kept)
            .actions;
    };
    EXPECT_TRUE(planned().empty());

    ASSERT_TRUE(QFile::rename(root() + "/Space/a.txt", root() + "/Space/f/c.txt"));
    ASSERT_TRUE(QFile::remove(root() + "/Space/f/b.txt"));
    const std::vector<Action> actions = planned();
    ASSERT_EQ(actions.size(), 2u);
    EXPECT_EQ(actions[0], Action(Moved{"Space/a.txt", *entryAt("Space/f/c.txt")}));
    EXPECT_EQ(actions[1], Action(Removed{"Space/f/b.txt"}));
}
