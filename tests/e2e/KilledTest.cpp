#include "e2e/FolderPrint.h"
#include "e2e/Program.h"
#include "support/Printing.h"

#include <QDirIterator>
#include <QElapsedTimer>

#include <sqlite3.h>

#include <random>

namespace {

constexpr int rounds = 100;
constexpr int roundsForOneLibrary = 10;
constexpr int firstOpenings = 6;     // of these begin with no database
constexpr qint64 longestMs = 55'000; // a slow machine does fewer rounds, and says how many

// Goes on changing a folder as a person might, the same way for the same seed.
class Changes
{
public:
    Changes(const Home& home, unsigned seed)
        : m_home(home)
        , m_random(seed)
    {}

    void fill()
    {
        for (int folder = 0; folder < 24; ++folder)
            for (int file = 0; file < 45; ++file)
                m_home.givenFile(
                    folderName(folder) + QString("/%1.txt").arg(file), QByteArray::number(file));
    }

    void make()
    {
        for (int i = 0; i < 6; ++i)
            makeOne();
    }

    int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(m_random); }

private:
    // Three levels deep.
    static QString folderName(int n)
    {
        return n < 4 ? QString("F%1").arg(n) : folderName(n / 4) + QString("/F%1").arg(n);
    }

    QStringList list(QDir::Filters what) const
    {
        QStringList found;
        QDirIterator all(m_home.space(), what | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (all.hasNext())
            found.append(all.next());
        found.sort();
        return found;
    }
    QString any(const QStringList& paths)
    {
        return paths[upTo(static_cast<int>(paths.size()) - 1)];
    }

    void makeOne()
    {
        const QString file = any(list(QDir::Files)), folder = any(list(QDir::Dirs));
        const QString name = QString("n%1").arg(++m_count);
        switch (upTo(5)) {
        case 0:
            m_home.moves(file, QFileInfo(file).path() + '/' + name + ".txt");
            break;
        case 1:
            m_home.moves(file, folder + '/' + name + ".txt");
            break;
        case 2:
            m_home.moves(folder, QFileInfo(folder).path() + '/' + name);
            break;
        case 3:
            EXPECT_TRUE(QDir().mkpath(folder + '/' + name));
            m_home.moves(file, folder + '/' + name + "/moved.txt");
            break;
        case 4:
            EXPECT_TRUE(QFile::remove(file));
            break;
        case 5:
            m_home.folder.makeFile(
                QDir(m_home.path({})).relativeFilePath(folder + '/' + name + ".md"));
            break;
        }
    }

    const Home& m_home;
    std::mt19937 m_random;
    int m_count = 0;
};

qint64 logSize(const Home& home)
{
    return QFileInfo(home.library(".corvelle/library.sqlite-wal")).size();
}

void waitForLog(const Home& home, qint64 size, int atMostMs)
{
    QElapsedTimer time;
    time.start();
    while (logSize(home) < size && time.elapsed() < atMostMs)
        ::usleep(50);
}

struct Left
{
    QByteArray integrity = "ok"; // what SQLite says
    int rows = 0;
};

// The database as the killed program left it; looked at in a copy, so that the next start finds it
// so.
Left leftBehind(const Home& home)
{
    const QString original = home.library(".corvelle/library.sqlite"),
                  copy = home.path("copy.sqlite");
    for (const char* ending : {"", "-wal", "-journal"}) {
        QFile::remove(copy + ending);
        QFile::copy(original + ending, copy + ending);
    }
    Left left;
    if (!QFile::exists(copy))
        return left; // it was killed before it made one
    sqlite3* database = nullptr;
    const auto ask = [&](const char* sql) {
        const auto take = [](void* into, int, char** values, char**) {
            *static_cast<QByteArray*>(into) = values[0];
            return 0;
        };
        QByteArray answer;
        const int done = sqlite3_exec(database, sql, take, &answer, nullptr);
        return done == SQLITE_OK ? answer : QByteArray(sqlite3_errmsg(database));
    };
    if (sqlite3_open(copy.toUtf8().constData(), &database) != SQLITE_OK)
        left.integrity = "not opened";
    else
        left.integrity = ask("PRAGMA integrity_check");
    left.rows = ask("SELECT count(*) FROM nodes").toInt(); // 0 where there is no table yet
    sqlite3_close(database);
    QFile::remove(copy + "-shm");
    return left;
}

// Every path on disk has one live node whose parent is its folder's node, and there is no other
// live node.
void expectToMirrorTheDisk(const Tree& tree, const Home& home)
{
    QStringList paths;
    QDirIterator all(
        home.space(), QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (all.hasNext())
        paths.append(QDir(home.library()).relativeFilePath(all.next()));
    paths.sort();
    EXPECT_EQ(tree.paths(), paths);
    for (const QString& path : paths) {
        const QString parent = QFileInfo(path).path();
        const QString expected = parent == "My Space" ? QString() : tree.idAt(parent);
        EXPECT_EQ(tree.at(path)["parentID"].toString(), expected) << path.toStdString();
        EXPECT_EQ(tree.at(path)["kind"].toString(),
            QFileInfo(home.library(path)).isDir() ? "folder" : "file");
    }
}

TEST(Killed, theProgramLosesNothingAndDoublesNothingWheneverItDies)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    QElapsedTimer time;
    time.start();
    int longestWaitMs = 0;
    qint64 wholeLog = 0;
    {
        const Home other; // how long an undisturbed opening takes here
        Changes(other, seed).fill();
        QElapsedTimer undisturbed;
        undisturbed.start();
        Program program(other);
        program.settle();
        longestWaitMs = static_cast<int>(undisturbed.elapsed());
        wholeLog = logSize(other);
    }
    int done = 0, before = 0, within = 0;
    while (done < rounds && time.elapsed() < longestMs) {
        const Home home;
        Changes changes(home, seed + static_cast<unsigned>(done));
        changes.fill();
        for (int round = 0; round < roundsForOneLibrary && time.elapsed() < longestMs;
             ++round, ++done) {
            if (round < firstOpenings)
                QDir(home.library(".corvelle")).removeRecursively();
            const FolderPrint print = printOf(home.library());
            {
                Program program(home, {{}, {{"CORVELLE_BACKGROUND", "1"}}});
                if (round % 2 == 0)
                    ::usleep(static_cast<useconds_t>(changes.upTo(longestWaitMs * 1000)));
                else // in the few milliseconds in which the rows are written, which begin with the
                     // second fifth of the log
                    waitForLog(home,
                        wholeLog / 5 + changes.upTo(static_cast<int>(wholeLog * 4 / 5)),
                        longestWaitMs);
                EXPECT_TRUE(program.isRunning()) << program.log().toStdString();
                program.kill();
            }
            const Left left = leftBehind(home);
            ASSERT_EQ(left.integrity, "ok");
            ASSERT_EQ(differences(print, printOf(home.library())), QStringList());
            before += left.rows == 0;
            within += left.rows > 0 && left.rows < print.size() - 1 && round < firstOpenings;
            changes.make();
        }
        Program program(home);
        program.settle();
        expectToMirrorTheDisk(program.tree(), home);
        EXPECT_EQ(program.quit(), 0);
    }
    std::printf(
        "%d deaths in %lld ms: %d before the first row, %d between the first and the last\n", done,
        static_cast<long long>(time.elapsed()), before, within);
    EXPECT_GE(done, roundsForOneLibrary);
}

} // namespace
