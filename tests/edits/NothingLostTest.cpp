// Nothing that was put into a library may be lost, whatever fails and whoever meddles.
#include "edits/RandomEdits.h"
#include "platform/FileMoves.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <sqlite3.h>

#include <csignal>
#include <iostream>
#include <unistd.h>

using namespace corvelle;

namespace {

unsigned seedFrom(const char* name, unsigned fallback)
{
    return qEnvironmentVariableIsSet(name) ? qEnvironmentVariable(name).toUInt() : fallback;
}

int rounds(int usual)
{
    return qEnvironmentVariableIsSet("CORVELLE_ROUNDS")
               ? qEnvironmentVariableIntValue("CORVELLE_ROUNDS")
               : usual;
}

// ---- the child that is killed ----

long stepsToLive = -1;

void step()
{
    if (stepsToLive >= 0 && stepsToLive-- == 0)
        ::kill(::getpid(), SIGKILL);
}
int dyingDisk(const char*, const QByteArray&)
{
    step();
    return 0;
}
int dyingCommit(void*)
{
    step();
    return 0;
}

} // namespace

TEST(NothingLost, whateverFailsAndWhoeverMeddles)
{
    const unsigned first = seedFrom("CORVELLE_SEED", std::random_device()());
    for (int round = 0; round < rounds(6); ++round) {
        const unsigned seed = first + static_cast<unsigned>(round);
        SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(seed) + " CORVELLE_ROUNDS=1");
        const TempFolder folder, outside;
        RandomEdits edits(seed, outside);
        const RandomEdits::Chances wild{true, true, round % 2 == 1, true};
        for (int part = 0; part < 3; ++part) {
            {
                EditedLibrary lib(folder.path());
                for (int i = 0; i < 60; ++i)
                    edits.one(lib, wild);
                ASSERT_TRUE(lib.settle());
            }
            RandomEdits::check(folder.path(), edits.contents(), "after faults");
        }

        // In quiet: what is undone after a restart gives the tree of before.
        std::map<QString, Told> before;
        size_t steps = 0;
        {
            EditedLibrary lib(folder.path());
            before = toldTree(lib.library);
            const size_t earlier = lib.manager.undoNames().size();
            for (int i = 0; i < 50; ++i)
                edits.one(lib, {false, false, false, false});
            steps = lib.manager.undoNames().size() - earlier;
            if (earlier + steps > 200)
                continue;
        }
        {
            EditedLibrary lib(folder.path());
            for (size_t i = 0; i < steps; ++i)
                ASSERT_TRUE(lib.undo());
            EXPECT_TRUE(lib.refusals.isEmpty()) << lib.refusals.join("\n").toStdString();
            EXPECT_TRUE(lib.failures.isEmpty()) << lib.failures.join("\n").toStdString();
            for (const auto& [id, told] : toldTree(lib.library)) {
                if (const auto was = before.find(id); was == before.end()) {
                    EXPECT_TRUE(told.inTrash)
                        << "made and not taken back: " << told.title.toStdString();
                } else
                    EXPECT_EQ(was->second, told) << told.title.toStdString();
            }
        }
        RandomEdits::check(folder.path(), edits.contents(), "after undoing all");
        if (testing::Test::HasFailure())
            return;
    }
}

// Run by the test below as a process of its own; it never ends by itself before its death.
TEST(NothingLostChild, DISABLED_diesInTheMiddle)
{
    const TempFolder outside;
    RandomEdits edits(seedFrom("CORVELLE_SEED", 1), outside);
    EditedLibrary lib(qEnvironmentVariable("CORVELLE_CHILD_LIBRARY"));
    ASSERT_TRUE(lib.look());
    stepsToLive = qEnvironmentVariable("CORVELLE_CHILD_STEPS").toLong();
    for (int i = 0; i < 40; ++i) {
        injectDiskFault(dyingDisk);
        sqlite3_commit_hook(lib.library.connection().handle(), dyingCommit, nullptr);
        edits.one(lib, {false, false, false, true});
        injectDiskFault(dyingDisk);
    }
}

TEST(NothingLost, whenKilledBetweenAnyTwoSteps)
{
    const unsigned first = seedFrom("CORVELLE_SEED", std::random_device()());
    std::mt19937 random(first);
    SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(first));
    const TempFolder folder;
    QSet<QByteArray> contents;
    for (int i = 0; i < 12; ++i) {
        const QByteArray content = "kept " + QByteArray::number(i);
        folder.makeFile(
            "My Space/" + QString(i % 3 ? "Box/" : "") + QString::number(i) + ".txt", content);
        contents.insert(content);
    }
    RandomEdits::check(folder.path(), contents, "at first");
    int deaths = 0;
    for (int i = 0; i < rounds(40); ++i) {
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("CORVELLE_CHILD_LIBRARY", folder.path());
        environment.insert("CORVELLE_CHILD_STEPS", QString::number(random() % 60));
        environment.insert("CORVELLE_SEED", QString::number(random()));
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(),
            {"--gtest_filter=NothingLostChild.*", "--gtest_also_run_disabled_tests"});
        ASSERT_TRUE(child.waitForFinished(60'000));
        deaths += child.exitStatus() == QProcess::CrashExit;
        RandomEdits::check(folder.path(), contents, "after a death");
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_GE(deaths, rounds(40) / 2) << "too few died for this to say anything";
}

// ---- two processes ----

TEST(NothingLostChild, DISABLED_editsBesideAnother)
{
    EditedLibrary lib(qEnvironmentVariable("CORVELLE_CHILD_LIBRARY"), OpenMode::ToolServer);
    std::mt19937 random(7);
    QElapsedTimer time;
    time.start();
    const qint64 ms = qEnvironmentVariable("CORVELLE_CHILD_MS").toLongLong();
    for (int i = 0; time.elapsed() < ms; ++i) {
        const QString id = lib.folder("tool " + QString::number(i));
        ASSERT_FALSE(id.isEmpty()) << lib.lastFailure().toStdString();
        if (i % 3 == 0) {
            ASSERT_TRUE(lib.edits.rename(id, "tool renamed " + QString::number(i)))
                << lib.lastFailure().toStdString();
        }
        std::cout << id.toStdString() << std::endl;
    }
}

TEST(NothingLost, twoProcessesEditAtOnce)
{
    const TempFolder folder;
    const int ms = qEnvironmentVariableIsSet("CORVELLE_MS")
                       ? qEnvironmentVariableIntValue("CORVELLE_MS")
                       : 4'000;
    QSet<QString> made;
    QProcess child;
    {
        EditedLibrary lib(folder.path());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("CORVELLE_CHILD_LIBRARY", folder.path());
        environment.insert("CORVELLE_CHILD_MS", QString::number(ms));
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(),
            {"--gtest_filter=NothingLostChild.*Beside*", "--gtest_also_run_disabled_tests"});
        int i = 0;
        while (child.state() != QProcess::NotRunning) {
            const QString id = lib.folder("app " + QString::number(++i));
            ASSERT_FALSE(id.isEmpty()) << lib.lastFailure().toStdString();
            made.insert(id);
            if (i % 3 == 0) {
                ASSERT_TRUE(lib.edits.rename(id, "app renamed " + QString::number(i)));
            }
            if (i % 50 == 0)
                lib.library.reload();
            QCoreApplication::processEvents();
        }
        EXPECT_EQ(child.exitCode(), 0);
        for (const QByteArray& line : child.readAllStandardOutput().split('\n'))
            if (line.size() == 36 && line.count('-') == 4)
                made.insert(QString::fromLatin1(line));
        lib.library.reload();
        ASSERT_TRUE(lib.settle());
        EXPECT_EQ(lib.library.tree().size(), made.size());
        for (const QString& id : std::as_const(made))
            EXPECT_TRUE(lib.library.node(id) && QFileInfo(lib.path(id)).isDir())
                << id.toStdString();
    }
    EXPECT_GT(made.size(), 50);
    RandomEdits::check(folder.path(), {}, "after two processes");
}
