#include "disk/DiskPlan.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;
using namespace corvelle::DiskPlan;

namespace {

Entry file(const QString& path, quint64 inode, qint64 size = 10, double modified = 1000)
{
    return {path, false, inode, size, modified, false};
}

Entry folder(const QString& path, quint64 inode, double modified = 1000)
{
    return {path, true, inode, 0, modified, false};
}

Entry generated(const QString& path, quint64 inode)
{
    return {path, true, inode, 0, 1000, true};
}

Known node(const QString& id, const Entry& seen)
{
    return {id, seen.path, seen.folder, seen.inode, seen.size, seen.modified};
}

Known neverSeen(const QString& id, const Entry& at)
{
    return {id, at.path, at.folder, std::nullopt, std::nullopt, std::nullopt};
}

Known withoutTime(Known known)
{
    known.modified.reset();
    return known;
}

Known withoutSize(Known known)
{
    known.size.reset();
    return known;
}

QString told(const Changed& action)
{
    return "changed " + action.id + ' ' + action.entry.path;
}
QString told(const Identity& action)
{
    return "identity " + action.id + ' ' + action.entry.path;
}
QString told(const Moved& action)
{
    return "moved " + action.id + ' ' + action.to.path;
}
QString told(const Restored& action)
{
    return "restored " + action.id + ' ' + action.to.path;
}
QString told(const Added& action)
{
    return "added " + action.entry.path;
}
QString told(const Removed& action)
{
    return "removed " + action.id;
}

QStringList told(const std::vector<Action>& actions)
{
    QStringList lines;
    for (const Action& action : actions)
        lines += std::visit([](const auto& one) { return told(one); }, action);
    return lines;
}

// One look at a disk. The folders that were scanned are named; entries go into the list of theirs.
struct Look
{
    QStringList scanned;
    std::vector<Entry> disk;
    std::vector<Known> known = {};
    QHash<quint64, QString> trashed = {};
    QStringList folders = {"Space"}; // with a node, beside the folders in `known`
    NameCase nameCase = NameCase::Kept;

    Outcome compared(Pass pass) const
    {
        Scans scans;
        for (const QString& path : scanned)
            scans[path];
        for (const Entry& entry : disk)
            if (const auto list = scans.find(parentPath(entry.path)); list != scans.end())
                list->second.push_back(entry);
        QSet<QString> withNode;
        for (const QString& path : folders)
            withNode.insert(pathKey(path, nameCase));
        for (const Known& one : known)
            if (one.folder)
                withNode.insert(pathKey(one.path, nameCase));
        return compare(scans, known, trashed, withNode, pass, nameCase);
    }
};

struct Case
{
    const char* what;
    Look look;
    QStringList structural; // the actions of a structural pass
    QStringList incremental = {};
    QSet<QString> again = {}; // of the incremental pass
};

void check(const std::vector<Case>& cases)
{
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Outcome structural = c.look.compared(Pass::Structural);
        EXPECT_EQ(told(structural.actions), c.structural);
        EXPECT_TRUE(structural.again.isEmpty());
        const Outcome incremental = c.look.compared(Pass::Incremental);
        EXPECT_EQ(told(incremental.actions), c.incremental);
        EXPECT_EQ(incremental.again, c.again);
    }
}

} // namespace

TEST(DiskPlan, contentsThatChangedAreToldApartFromAnIdentityThatDid)
{
    const Entry seen = file("Space/a", 1, 10, 1000);
    const Known known = node("n", seen);
    const Known folderKnown = node("f", folder("Space/f", 5, 1000));
    const struct
    {
        const char* what;
        Known known;
        Entry found;
        QStringList expected;
    } cases[] = {
        {"nothing", known, seen, {}},
        {"another size", known, file("Space/a", 1, 11, 1000), {"changed n Space/a"}},
        {"a second later", known, file("Space/a", 1, 10, 1001), {}},
        {"a second earlier", known, file("Space/a", 1, 10, 999), {}},
        {"a little more than a second later", known, file("Space/a", 1, 10, 1001.001),
            {"changed n Space/a"}},
        {"a little more than a second earlier", known, file("Space/a", 1, 10, 998.999),
            {"changed n Space/a"}},
        {"replaced by the same contents", known, file("Space/a", 2, 10, 1000.5),
            {"identity n Space/a"}},
        {"replaced by others", known, file("Space/a", 2, 12, 1000), {"changed n Space/a"}},
        {"no time stored", withoutTime(known), file("Space/a", 1, 99, 5000),
            {"identity n Space/a"}},
        {"no size stored", withoutSize(known), file("Space/a", 1, 99, 1000), {}},
        {"no size stored, later", withoutSize(known), file("Space/a", 1, 99, 2000),
            {"changed n Space/a"}},
        {"nothing stored", neverSeen("n", seen), seen, {"identity n Space/a"}},
        {"the time became unknown", known, file("Space/a", 1, 10, distantPast),
            {"changed n Space/a"}},
        {"a folder's time", folderKnown, folder("Space/f", 5, 9000), {}},
        {"a folder without a stored time", withoutTime(folderKnown), folder("Space/f", 5, 1000),
            {}},
        {"another folder of this name", folderKnown, folder("Space/f", 6, 9000),
            {"identity f Space/f"}},
    };
    for (const auto& c : cases)
        check({{c.what, {{"Space"}, {c.found}, {c.known}}, c.expected, c.expected}});
}

TEST(DiskPlan, aRenameOrMoveIsFollowedByIdentityInAStructuralPassOnly)
{
    check({
        {"a rename in place", {{"Space"}, {file("Space/b", 1)}, {node("n", file("Space/a", 1))}},
            {"moved n Space/b"}, {}, {"Space"}},
        {"a move to another folder",
            {{"Space", "Space/f"}, {folder("Space/f", 9), file("Space/f/a", 1)},
                {node("f", folder("Space/f", 9)), node("n", file("Space/a", 1))}},
            {"moved n Space/f/a"}, {}, {"Space", "Space/f"}},
        {"a move that was edited on the way",
            {{"Space"}, {file("Space/b", 1, 77, 9000)}, {node("n", file("Space/a", 1))}},
            {"moved n Space/b"}, {}, {"Space"}},
        {"a folder, with what lies in it",
            {{"Space", "Space/new", "Space/new/in"},
                {folder("Space/new", 9), folder("Space/new/in", 8), file("Space/new/a", 1)},
                {node("f", folder("Space/old", 9)), node("i", folder("Space/old/in", 8)),
                    node("n", file("Space/old/a", 1))}},
            {"moved f Space/new"}, {}, {"Space"}},
        {"a file never seen before can't be matched",
            {{"Space"}, {file("Space/b", 1)}, {neverSeen("n", file("Space/a", 1))}},
            {"added Space/b", "removed n"}, {}, {"Space"}},
        {"a folder doesn't become a file",
            {{"Space"}, {file("Space/b", 1)}, {node("f", folder("Space/a", 1))}},
            {"added Space/b", "removed f"}, {}, {"Space"}},
        {"two nodes of one file: the first gets it",
            {{"Space"}, {file("Space/c", 1)},
                {node("m", file("Space/b", 1)), node("n", file("Space/a", 1))}},
            {"moved m Space/c", "removed n"}, {}, {"Space"}},
        {"out of sight, into a folder without a node",
            {{"Space", "Space/x"}, {folder("Space/x", 9), file("Space/x/a", 1)},
                {node("n", file("Space/a", 1))}},
            {"added Space/x", "removed n"}, {}, {"Space"}},
    });
}

TEST(DiskPlan, hardLinksAreNeverMatched)
{
    check({{"two new links to the file of a missing node",
               {{"Space"}, {file("Space/c", 1), file("Space/b", 1)},
                   {node("n", file("Space/a", 1))}},
               {"added Space/b", "added Space/c", "removed n"}, {}, {"Space"}},
        {"three",
            {{"Space"}, {file("Space/c", 1), file("Space/b", 1), file("Space/d", 1)},
                {node("n", file("Space/a", 1))}},
            {"added Space/b", "added Space/c", "added Space/d", "removed n"}, {}, {"Space"}},
        {"a new link beside the known one",
            {{"Space"}, {file("Space/a", 1), file("Space/b", 1)}, {node("n", file("Space/a", 1))}},
            {"added Space/b"}, {}, {"Space"}}});
}

TEST(DiskPlan, aRenameInCaseIsAMoveWhereTheVolumeIgnoresCaseAndAnywhere)
{
    const std::vector<Known> known = {node("n", file("Space/Report.DOCX", 1))};
    const std::vector<Entry> found = {file("Space/report.docx", 1, 99, 9000)};
    check({
        {"ignored: the contents come with the next pass",
            {{"Space"}, found, known, {}, {"Space"}, NameCase::Ignored},
            {"moved n Space/report.docx"}, {}, {"Space"}},
        {"kept", {{"Space"}, found, known}, {"moved n Space/report.docx"}, {}, {"Space"}},
        {"kept: both are there",
            {{"Space"}, {file("Space/report.docx", 2), file("Space/Report.DOCX", 1)}, known},
            {"added Space/report.docx"}, {}, {"Space"}},
        {"a parent in another case is no rename of the file",
            {{"space"}, {file("space/Report.DOCX", 1)}, known, {}, {"Space"}, NameCase::Ignored},
            {}},
        {"composition alone",
            {{"Space"}, {file(QString("Space/u") + QChar(0x0308), 1)},
                {node("n", file("Space/ü", 1))}, {}, {"Space"}, NameCase::Ignored},
            {QString("moved n Space/u") + QChar(0x0308)}, {}, {"Space"}},
        {"of two entries with one key the later counts",
            {{"Space"}, {file("Space/A", 1), file("Space/a", 2)}, {node("n", file("Space/a", 2))},
                {}, {"Space"}, NameCase::Ignored},
            {}},
        {"a folder in Greek capitals is found again from what lies in it",
            {{"Space/ΟΔΟΣ"}, {file("Space/ΟΔΟΣ/b", 2)}, {node("n", file("Space/οδος/a", 1))}, {},
                {"Space/οδος"}, NameCase::Ignored},
            {"added Space/ΟΔΟΣ/b", "removed n"}, {}, {"Space/ΟΔΟΣ", "Space/οδος"}},
    });
}

TEST(DiskPlan, onlyFoldersThatWereScannedSayAnything)
{
    check({
        {"a folder that couldn't be listed",
            {{"Space"}, {folder("Space/f", 9)},
                {node("f", folder("Space/f", 9)), node("n", file("Space/f/a", 1))}},
            {}},
        {"a folder that was empty",
            {{"Space", "Space/f"}, {folder("Space/f", 9)},
                {node("f", folder("Space/f", 9)), node("n", file("Space/f/a", 1))}},
            {"removed n"}, {}, {"Space/f"}},
        {"nothing at all", {{}, {}, {node("n", file("Space/a", 1))}}, {}},
        {"the root itself", {{""}, {file("b", 2)}, {node("n", file("a", 1))}, {}, {""}},
            {"added b", "removed n"}, {}, {""}},
    });
}

TEST(DiskPlan, aNewFolderStandsForWhatLiesInItAndGeneratedFoldersForNothing)
{
    check({
        {"by path, a folder first, and whatever lies in it not at all",
            {{"Space", "Space/f", "Space/f/g"},
                {file("Space/z", 1), folder("Space/f", 2), file("Space/f/a", 3),
                    folder("Space/f/g", 4), file("Space/a", 5)}},
            {"added Space/a", "added Space/f", "added Space/z"}, {}, {"Space"}},
        {"a generated folder", {{"Space"}, {generated("Space/node_modules", 2)}}, {}},
        {"a generated folder that has a node already",
            {{"Space"}, {generated("Space/venv", 2)}, {node("v", folder("Space/venv", 2))}}, {}},
        {"a folder renamed to a generated one",
            {{"Space"}, {generated("Space/Pods", 2)}, {node("f", folder("Space/Peas", 2))}},
            {"removed f"}, {}, {"Space"}},
        {"a file in place of a folder",
            {{"Space"}, {file("Space/a", 3)},
                {node("f", folder("Space/a", 2)), node("n", file("Space/a/b", 4))}},
            {"added Space/a", "removed f"}, {}, {"Space"}},
    });
}

TEST(DiskPlan, aNodeInTheTrashReturnsOnce)
{
    const QHash<quint64, QString> trashed = {{1, "t"}};
    check({
        {"in its place", {{"Space"}, {file("Space/a", 1)}, {}, trashed}, {"restored t Space/a"}, {},
            {"Space"}},
        {"the first link by path, the others are new",
            {{"Space"}, {file("Space/c", 1), file("Space/a", 1), file("Space/b", 1)}, {}, trashed},
            {"restored t Space/a", "added Space/b", "added Space/c"}, {}, {"Space"}},
        {"a missing node comes before it",
            {{"Space"}, {file("Space/b", 1)}, {node("n", file("Space/a", 1))}, trashed},
            {"moved n Space/b"}, {}, {"Space"}},
        {"a known file with this identity stays with its node",
            {{"Space"}, {file("Space/a", 1)}, {node("n", file("Space/a", 1))}, trashed}, {}},
    });
}

TEST(DiskPlan, theRemovalOfAFolderCoversWhatLayInIt)
{
    Look look{{"Space", "Space/f/g"}, {}, {node("f", folder("Space/f", 1))}};
    for (quint64 i = 0; i < 1000; ++i)
        look.known.push_back(node("n", file(QString("Space/f/g/%1").arg(i), 10 + i)));
    look.known.push_back(node("like", file("Space/f2", 5)));
    EXPECT_EQ(
        told(look.compared(Pass::Structural).actions), QStringList({"removed f", "removed like"}));
}

TEST(DiskPlan, actionsComeInTheOrderInWhichTheyAreCarriedOut)
{
    const Look look{{"Space"},
        {file("Space/new", 20), file("Space/back", 30), file("Space/to", 40),
            file("Space/same", 51), file("Space/edited", 60, 99)},
        {node("gone", file("Space/gone", 10)), node("moved", file("Space/from", 40)),
            node("same", file("Space/same", 50)), node("edited", file("Space/edited", 60))},
        {{30, "back"}}};
    EXPECT_EQ(told(look.compared(Pass::Structural).actions),
        QStringList(
            {"identity same Space/same", "changed edited Space/edited", "moved moved Space/to",
                "restored back Space/back", "added Space/new", "removed gone"}));
}

TEST(DiskPlan, namesThatProgramsWorkUnderAreSkipped)
{
    for (const char* name :
        {".hidden", ".", "~$Report.docx", "notes.txt~", "~", "Icon\r", "a.sb-1234", "a.TMP",
            "a.b.crdownload", "a.Download", "a.part", "a.partial", "#notes#", "4913"})
        EXPECT_TRUE(isSkippedName(QString(name))) << name;
    for (const char* name : {"notes.txt", "~notes", "$~a", "Icon", "icon\r", "tmp", "part",
             "a.tmp.txt", "a.parts", "a.tmp.", "#", "##", "#notes", "4914", "04913", "a.sb", ""})
        EXPECT_FALSE(isSkippedName(QString(name))) << name;
}

TEST(DiskPlan, generatedFoldersAreKnownByTheirExactName)
{
    for (const char* name : {"node_modules", "__pycache__", "Pods", "DerivedData"})
        EXPECT_EQ(generatedByName(QString(name)), Generated::Yes) << name;
    EXPECT_EQ(generatedByName(u"venv"), Generated::IfMarked);
    for (const char* name : {"Node_modules", "pods", ".venv", "Venv", "build", ""})
        EXPECT_EQ(generatedByName(QString(name)), Generated::No) << name;
}
