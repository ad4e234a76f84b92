#include "library/UndoJournal.h"

#include "base/Clock.h"
#include "library/LibraryOpening.h"
#include "library/VersionFiles.h"
#include "store/Schema.h"
#include "support/EventLoop.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <random>

using namespace corvelle;

namespace {

// A library that is nothing but titles, and applies renames and coworkers' turns to them.
class Titles : public ChangeApplier
{
public:
    std::map<QString, QString> titles;
    bool fails = false;
    std::function<void()> whileApplying;

    Look look(const Change& c, UndoDirection direction, const QSet<QString>& touched) const override
    {
        if (std::holds_alternative<change::Coworker>(c))
            return direction == UndoDirection::Redo ? Look(LookGone{}) : Look(LookFine{c});
        const auto& renamed = std::get<change::Renamed>(c);
        const auto at = titles.find(renamed.id);
        if (at == titles.end())
            return LookGone{};
        const QString& expected =
            direction == UndoDirection::Undo ? renamed.title.to : renamed.title.from;
        if (!touched.contains(renamed.id) && at->second != expected)
            return LookChanged{"It was renamed since."};
        return LookFine{c};
    }
    std::optional<Change> apply(const Change& c, UndoDirection direction) override
    {
        if (whileApplying)
            whileApplying();
        if (fails)
            return std::nullopt;
        if (const auto* renamed = std::get_if<change::Renamed>(&c))
            titles[renamed->id] =
                direction == UndoDirection::Undo ? renamed->title.from : renamed->title.to;
        return c;
    }
};

// One run of the program.
struct Session
{
    Session(const QString& root, Titles& model, qint64 mostVersionBytes = 536'870'912)
        : titles(model)
    {
        journal.setApplier<change::Renamed>(&titles);
        journal.setApplier<change::Coworker>(&titles);
        QObject::connect(&journal, &UndoJournal::refused, &journal,
            [this](const QString& title, const QString& reason) {
                refusals.append(title + ": " + reason);
            });
        journal.start({root, root + "/library.sqlite", false, {}, mostVersionBytes});
    }
    ~Session() { journal.quit(); }

    void rename(const QString& id, const QString& to, const QString& name = "Rename")
    {
        const QString from = std::exchange(titles.titles[id], to);
        journal.record(change::Renamed{id, {from, to}});
        journal.setName(name);
    }
    void end() { manager.closeEventGroup(); }
    void step(const QString& id, const QString& to, const QString& name = "Rename")
    {
        rename(id, to, name);
        end();
    }

    Titles& titles;
    UndoManager manager;
    UndoJournal journal{manager};
    QStringList refusals;
};

class UndoJournalTest : public testing::Test
{
protected:
    UndoJournalTest()
    {
        auto made = SQLite::open(path());
        EXPECT_TRUE(made && makeCoreTables(*made));
        connection = std::make_unique<SQLite>(std::move(*made));
        titles.titles = {{"a", "A"}, {"b", "B"}};
    }
    QString path() const { return folder.path("library.sqlite"); }
    qint64 number(const QByteArray& sql)
    {
        return connection->query(sql, {}, [](const SQLRow& row) { return row.integer(0); })
            ->front();
    }

    TempFolder folder;
    std::unique_ptr<SQLite> connection;
    Titles titles;
};

std::vector<QString> names(std::initializer_list<const char*> list)
{
    std::vector<QString> result;
    for (const char* name : list)
        result.push_back(QString::fromLatin1(name));
    return result;
}

} // namespace

TEST_F(UndoJournalTest, allChangesOfOneEventAreOneStep)
{
    Session run(folder.path(), titles);
    run.rename("a", "A1");
    run.rename("b", "B1", "Both");
    run.rename("a", "A2", "Both");
    ASSERT_TRUE(turnUntil([&] { return run.manager.groupingLevel() == 0; })) << "the event ends";
    EXPECT_EQ(run.manager.undoNames(), names({"Both"}));
    run.manager.undo();
    EXPECT_EQ(titles.titles["a"], "A") << "two renames of one node: only the last is compared";
    EXPECT_EQ(titles.titles["b"], "B");
    run.manager.redo();
    EXPECT_EQ(titles.titles["a"], "A2");
    EXPECT_TRUE(run.refusals.isEmpty());
}

TEST_F(UndoJournalTest, whatWasOvertakenIsRefusedAndTheNextStepStaysUsable)
{
    Session run(folder.path(), titles);
    run.step("b", "B1");
    run.step("a", "A1", "Second");
    titles.titles["a"] = "elsewhere";
    run.manager.undo();
    EXPECT_EQ(run.refusals,
        QStringList({QString::fromUtf8("Couldn’t undo Second: It was renamed since.")}));
    EXPECT_FALSE(run.manager.canRedo());
    run.manager.undo();
    EXPECT_EQ(titles.titles["b"], "B");
    titles.titles.erase("b");
    run.manager.redo();
    EXPECT_EQ(run.refusals.last(),
        QString::fromUtf8("Couldn’t redo Rename: What it changed was deleted for good."));
    run.journal.quit();
    EXPECT_EQ(number("SELECT count(*) FROM undo_journal"), 0);
}

TEST_F(UndoJournalTest, ofAStepHalfGoneTheOtherHalfIsUndoneAndStays)
{
    Session run(folder.path(), titles);
    run.rename("a", "A1");
    run.rename("b", "B1");
    run.end();
    titles.titles.erase("a");
    run.manager.undo();
    EXPECT_EQ(titles.titles["b"], "B");
    titles.titles["a"] = "again";
    run.manager.redo();
    EXPECT_EQ(titles.titles["a"], "again") << "only what was undone stays in the step";
    EXPECT_EQ(titles.titles["b"], "B1");
}

TEST_F(UndoJournalTest, fiveUndoneStepsAreDoneAgainInTheSameOrderAfterARestart)
{
    {
        Session run(folder.path(), titles);
        for (int i = 1; i <= 8; ++i)
            run.step("a", "A" + QString::number(i), "Step " + QString::number(i));
        for (int i = 0; i < 5; ++i)
            run.manager.undo();
        EXPECT_EQ(titles.titles["a"], "A3");
    }
    Session run(folder.path(), titles);
    EXPECT_EQ(run.manager.undoNames(), names({"Step 3", "Step 2", "Step 1"}));
    EXPECT_EQ(run.manager.redoNames(), names({"Step 4", "Step 5", "Step 6", "Step 7", "Step 8"}));
    run.manager.redo();
    EXPECT_EQ(titles.titles["a"], "A4");
    run.step("a", "New", "Cut");
    EXPECT_FALSE(run.manager.canRedo());
    run.journal.quit();
    EXPECT_EQ(number("SELECT count(*) FROM undo_journal WHERE undone = 1"), 0);
}

TEST_F(UndoJournalTest, theOldestOf201StepsGoesFromListManagerAndTable)
{
    Session run(folder.path(), titles);
    for (int i = 0; i <= 200; ++i)
        run.step("a", QString::number(i), "S" + QString::number(i));
    EXPECT_EQ(run.manager.undoNames().size(), 200u);
    EXPECT_EQ(run.manager.undoNames().back(), "S1");
    run.journal.quit();
    EXPECT_EQ(number("SELECT count(*) FROM undo_journal"), 200);
    EXPECT_EQ(number("SELECT min(seq) FROM undo_journal"), 2);
}

TEST_F(UndoJournalTest, oldDamagedAndCutRowsDontComeBack)
{
    {
        Session run(folder.path(), titles);
        for (int i = 1; i <= 5; ++i)
            run.step("a", QString::number(i), "S" + QString::number(i));
    }
    ASSERT_TRUE(connection->run("UPDATE undo_journal SET at = at - 2592001 WHERE seq = 1"));
    ASSERT_TRUE(connection->run("UPDATE undo_journal SET step = '{\"name\":1}' WHERE seq = 3"));
    ASSERT_TRUE(connection->run("UPDATE undo_journal SET undone = 1 WHERE seq = 4"));
    Session run(folder.path(), titles);
    EXPECT_EQ(run.manager.undoNames(), names({"S5", "S2"}));
    EXPECT_FALSE(run.manager.canRedo()) << "a later step can be undone: that branch was cut";
    run.step("b", "B1");
    run.journal.quit();
    EXPECT_EQ(number("SELECT max(seq) FROM undo_journal"), 6);
    EXPECT_EQ(number("SELECT count(*) FROM undo_journal"), 3);
}

TEST_F(UndoJournalTest, aCoworkersTurnIsUndoneOnceAndCanBeForgotten)
{
    Session run(folder.path(), titles);
    for (const char* turn : {"one", "two"}) {
        run.journal.record(change::Coworker{turn});
        run.journal.setName("Coworker Changes");
        run.end();
    }
    run.journal.forgetCoworker("two");
    EXPECT_EQ(run.manager.undoNames().size(), 1u);
    run.manager.undo();
    EXPECT_FALSE(run.manager.canRedo());
    EXPECT_FALSE(run.manager.canUndo());
}

TEST_F(UndoJournalTest, aFailedOrForgottenStepEndsOnceItsUndoHasEnded)
{
    Session run(folder.path(), titles);
    run.step("a", "A1");
    run.step("b", "B1");
    titles.fails = true;
    run.manager.undo();
    titles.fails = false;
    EXPECT_FALSE(run.manager.canRedo()) << "a change that failed ends its step";
    titles.whileApplying = [&] { run.journal.forget(1); };
    run.manager.undo();
    EXPECT_EQ(titles.titles["a"], "A");
    EXPECT_FALSE(run.manager.canRedo());
    titles.whileApplying = nullptr;
    run.rename("a", "A2");
    run.journal.forgetGathering();
    run.end();
    EXPECT_FALSE(run.manager.canUndo());
}

TEST_F(UndoJournalTest, aWriteThatFailsIsNotShownAndTheStepLivesUntilTheQuit)
{
    Session run(folder.path(), titles);
    ASSERT_TRUE(connection->execute("DROP TABLE undo_journal"));
    run.step("a", "A1");
    run.manager.undo();
    EXPECT_EQ(titles.titles["a"], "A");
    EXPECT_TRUE(run.refusals.isEmpty());
}

TEST_F(UndoJournalTest, nothingIsWrittenAfterTheQuitAndTheGatheringStepIs)
{
    Session run(folder.path(), titles);
    run.rename("a", "A1", "Last");
    run.journal.quit();
    run.step("a", "A2", "Too late");
    EXPECT_EQ(number("SELECT count(*) FROM undo_journal WHERE name = 'Last'"), 1);
    EXPECT_EQ(number("SELECT count(*) FROM undo_journal"), 1);
}

// Thousands of steps, undos, redos and restarts against two plain lists.
TEST_F(UndoJournalTest, behavesAsTwoListsWould)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    struct Entry
    {
        QString name, from, to;
    };
    std::deque<Entry> done, undone;
    auto run = std::make_unique<Session>(folder.path(), titles);
    for (int i = 0; i < 3'000; ++i) {
        const unsigned what = random() % 20;
        if (what < 9) {
            const Entry entry{
                "S" + QString::number(i), titles.titles["a"], "T" + QString::number(i)};
            run->step("a", entry.to, entry.name);
            done.push_back(entry);
            undone.clear();
            if (done.size() > 200)
                done.pop_front();
        } else if (what < 14 && !done.empty()) {
            run->manager.undo();
            undone.push_front(done.back());
            done.pop_back();
            ASSERT_EQ(titles.titles["a"], undone.front().from);
        } else if (what < 18 && !undone.empty()) {
            run->manager.redo();
            done.push_back(undone.front());
            undone.pop_front();
            ASSERT_EQ(titles.titles["a"], done.back().to);
        } else if (what == 19 && random() % 20 == 0) {
            run.reset();
            run = std::make_unique<Session>(folder.path(), titles);
        }
        const auto undoNames = run->manager.undoNames(), redoNames = run->manager.redoNames();
        ASSERT_EQ(undoNames.size(), done.size());
        ASSERT_EQ(redoNames.size(), undone.size());
        for (size_t at = 0; at < done.size(); ++at)
            ASSERT_EQ(undoNames[done.size() - 1 - at], done[at].name);
        for (size_t at = 0; at < undone.size(); ++at)
            ASSERT_EQ(redoNames[at], undone[at].name);
    }
    EXPECT_TRUE(run->refusals.isEmpty());
}

// ---- what is stored ----

TEST(Change, isStoredAsTold)
{
    const std::pair<Change, const char*> cases[] = {
        {change::Made{{"x"}}, R"({"made":{"_0":["x"]}})"},
        {change::Trashed{{{"x", 1.5}}}, R"({"trashed":{"_0":{"x":1.5}}})"},
        {change::Restored{{{"x", 2}}, {}}, R"({"restored":{"_0":{"x":2}}})"},
        {change::Renamed{"x", {"A", "B"}}, R"({"renamed":{"_0":"x","_1":{"from":"A","to":"B"}}})"},
        {change::Colored{{{"x", {"red", "blue"}}}},
            R"({"colored":{"_0":{"x":{"from":"red","to":"blue"}}}})"},
        {change::Moved{{{"x", {Place{{}, 1, 2, "a0"}, Place{"p", 3, 4, "a1"}}}}},
            R"({"moved":{"_0":{"x":{"from":{"position":"a0","x":1,"y":2},"to":{"parent":"p","position":"a1","x":3,"y":4}}}}})"},
        {change::Placed{{{"x", {QPointF(1, 2), QPointF(3, 4)}}}},
            R"({"placed":{"_0":{"x":{"from":[1,2],"to":[3,4]}}}})"},
        {change::Fans{{{"f", {QJsonValue(), QJsonObject{{"id", "f"}}}}}},
            R"({"fans":{"_0":{"f":{"to":{"id":"f"}}}}})"},
        {change::FileEdit{"x", ".corvelle/versions/a", 9.25},
            R"({"fileEdit":{"_0":"x","version":".corvelle/versions/a","stamp":9.25}})"},
        {change::FinderVersion{"x", "c", "/o", QByteArray("\x01\xff", 2), "T"},
            R"({"finderVersion":{"_0":"x","copy":"c","original":"/o","bookmark":"Af8=","title":"T"}})"},
        {change::Coworker{"t"}, R"({"coworker":{"_0":"t"}})"},
        {change::Notes{"x", {"a", "b"}}, R"({"notes":{"_0":"x","_1":{"from":"a","to":"b"}}})"},
    };
    static_assert(std::size(cases) == std::variant_size_v<Change>);
    for (const auto& [c, text] : cases) {
        const QJsonObject expected = QJsonDocument::fromJson(text).object();
        EXPECT_EQ(toJson(c), expected) << QJsonDocument(toJson(c)).toJson().toStdString();
        EXPECT_EQ(changeFromJson(expected), c) << text;
        const Step step{"Name", 12.5, {c, c}, true};
        EXPECT_EQ(stepFromJson(stepToJson(step)), step);
    }
    for (const char* damaged : {"", "[]", "{}", R"({"name":"n","at":1,"changes":[]})",
             R"({"name":"n","at":1,"changes":[{"made":{"_0":[1]}}]})",
             R"({"name":"n","at":1,"changes":[{"made":{"_0":["x"]}},{"new":{"_0":1}}]})",
             R"({"name":"n","at":1,"changes":[{"placed":{"_0":{"x":{"from":[1],"to":[3,4]}}}}]})"})
        EXPECT_FALSE(stepFromJson(damaged)) << damaged;
}

TEST(VersionFiles, stepsOverTheLimitGoWithAllThatCouldBeUndoneBeforeThem)
{
    const std::vector<StepFiles> steps = {{9, true, {"u"}}, {8, false, {"a"}}, {7, false, {}},
        {6, false, {"a", "b"}}, {5, false, {"big"}}, {4, false, {}}, {3, false, {"b"}}};
    const auto bytes = [](const QString& path) -> qint64 { return path == "big" ? 60 : 10; };
    std::vector<QString> needed;
    EXPECT_TRUE(stepsOverLimit(steps, bytes, 90, needed).empty()) << "each file counts once";
    EXPECT_EQ(needed.size(), 4u);
    EXPECT_EQ(stepsOverLimit(steps, bytes, 89, needed), (std::vector<qint64>{5, 4, 3}));
    EXPECT_EQ(needed.size(), 3u);
}

TEST_F(UndoJournalTest, versionFilesAreParkedAndNothingElseIsTouched)
{
    folder.makeFile(".corvelle/versions/x/1", "earlier");
    folder.makeFile(".corvelle/undo/versions/x/old", "not needed");
    folder.makeFile("precious", "mine");
    const auto put = [&](int seq, const QString& version) {
        const Step step{"Edit File", now(), {change::FileEdit{"x", version, {}}}, {}};
        ASSERT_TRUE(connection->run(
            "INSERT INTO undo_journal (seq, name, at, undone, step) VALUES (?, 'n', ?, 0, ?)",
            {seq, step.at, stepToJson(step)}));
    };
    put(1, ".corvelle/versions/x/1");
    put(2, ".corvelle/versions/../../precious");
    put(3, "precious");
    Session run(folder.path(), titles);
    EXPECT_EQ(folder.content(".corvelle/undo/versions/x/1"), "earlier");
    EXPECT_EQ(findVersion(folder.path(), ".corvelle/versions/x/1"),
        folder.path(".corvelle/undo/versions/x/1"));
    EXPECT_FALSE(QFile::exists(folder.path(".corvelle/undo/versions/x/old")));
    EXPECT_EQ(folder.content("precious"), "mine") << "what a damaged row names is left alone";
    EXPECT_TRUE(unparkVersion(folder.path(), ".corvelle/versions/x/1"));
    EXPECT_EQ(folder.content(".corvelle/versions/x/1"), "earlier");
}

TEST_F(UndoJournalTest, pageStatesAreBoundedByTheirSizesAndTheirNumber)
{
    Session run(folder.path(), titles);
    PageHistory& history = run.journal.pageHistory();
    const auto state = [](qsizetype bytes) { return PageState{QString(bytes, 'x'), {}}; };
    history.add("exact", state(4'194'304));
    EXPECT_EQ(history.load("exact").size(), 1u);
    history.add("exact", state(4'194'305));
    EXPECT_TRUE(history.load("exact").empty()) << "one byte more takes the whole history";
    for (int i = 0; i < 45; ++i)
        history.add("many", {QString::number(i), QString("i")});
    ASSERT_EQ(history.load("many").size(), 40u);
    EXPECT_EQ(history.load("many").front().doc, "5");
    for (int i = 0; i < 3; ++i)
        history.add("large", state(3 * 1024 * 1024 + i));
    EXPECT_EQ(history.load("large").size(), 2u);

    history.replaceLast("many", {"44", QString("i")}, "44 more");
    EXPECT_EQ(history.load("many").back().doc, "44 more");
    history.replaceLast("many", {"not the last", QString("i")}, "wrong");
    EXPECT_EQ(history.load("many").back().doc, "44 more");
    history.truncate("many", {"20", QString("i")});
    EXPECT_EQ(history.load("many").back().doc, "20");
    history.replaceAll("many", PageState{"one", {}}, PageState{"two", {}});
    EXPECT_EQ(history.load("many"), (std::vector<PageState>{{"one", {}}, {"two", {}}}));

    for (int i = 0; i < 10; ++i)
        history.add("page " + QString::number(i), state(4'000'000));
    EXPECT_LE(number("SELECT sum(bytes) FROM page_history"), 33'554'432);
    EXPECT_EQ(history.load("page 9").size(), 1u) << "the oldest of any page goes first";
    EXPECT_TRUE(history.load("large").empty());
}
