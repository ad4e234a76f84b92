#include "disk/DissolvedFolders.h"

#include <gtest/gtest.h>

using namespace corvelle;
using namespace corvelle::DiskPlan;

namespace {

Known known(const QString& id, const QString& path, quint64 inode, bool folder = false)
{
    return {id, path, folder, inode, 1, 1.0};
}

Entry entry(const QString& path, quint64 inode, bool folder = false)
{
    return {path, folder, inode, 1, 1.0, false};
}

} // namespace

TEST(DissolvedFolders, whatLeftAFolderThatIsGoneIsThatThingMoved)
{
    const std::vector<Known> nodes = {known("A", "S/A", 1, true), known("x", "S/A/x.txt", 2),
        known("sub", "S/A/sub", 3, true), known("deep", "S/A/sub/deep.txt", 4),
        known("other", "S/other.txt", 5)};
    Outcome outcome;
    outcome.actions = {Added{entry("S/C/deep.txt", 4)}, Added{entry("S/C/new.txt", 9)},
        Added{entry("S/C/x.txt", 2)}, Removed{"A"}};
    followOutOfRemovedFolders(outcome, {}, nodes, NameCase::Kept);
    EXPECT_EQ(outcome.actions,
        (std::vector<Action>{Moved{"deep", entry("S/C/deep.txt", 4)},
            Moved{"x", entry("S/C/x.txt", 2)}, Added{entry("S/C/new.txt", 9)}, Removed{"A"}}));
}

TEST(DissolvedFolders, doubtMovesNothing)
{
    const std::vector<Known> nodes = {known("A", "S/A", 1, true), known("x", "S/A/x", 2),
        known("was folder", "S/A/f", 4, true), known("elsewhere", "S/B/y", 6)};
    Outcome outcome;
    outcome.actions = {Added{entry("S/1", 2)}, Added{entry("S/2", 2)}, Added{entry("S/4", 4)},
        Added{entry("S/5", 6)}, Removed{"A"}};
    const Outcome before = outcome;
    followOutOfRemovedFolders(outcome, {}, nodes, NameCase::Kept);
    EXPECT_EQ(outcome, before);
}

TEST(DissolvedFolders, oneOfTwoLinksThatLayThereKeepsItsCard)
{
    const std::vector<Known> nodes = {
        known("A", "S/A", 1, true), known("twin2", "S/A/t2", 3), known("twin", "S/A/t", 3)};
    Outcome outcome;
    outcome.actions = {Added{entry("S/t", 3)}, Removed{"A"}};
    followOutOfRemovedFolders(outcome, {}, nodes, NameCase::Kept);
    EXPECT_EQ(outcome.actions, (std::vector<Action>{Moved{"twin", entry("S/t", 3)}, Removed{"A"}}));
}

TEST(DissolvedFolders, aLinkInTheTrashDoesNotTakeTheFileOver)
{
    const std::vector<Known> nodes = {known("A", "S/A", 1, true), known("x", "S/A/x.txt", 2)};
    Outcome outcome;
    outcome.actions = {Restored{"link", entry("S/y.txt", 2)}, Removed{"A"}};
    followOutOfRemovedFolders(outcome, {}, nodes, NameCase::Kept);
    EXPECT_EQ(
        outcome.actions, (std::vector<Action>{Moved{"x", entry("S/y.txt", 2)}, Removed{"A"}}));
}

TEST(DissolvedFolders, aFolderThatMovedIntoANewOneIsNotTornApart)
{
    // A moved into the new folder N, where it isn't known yet; then a link to x was made elsewhere.
    const std::vector<Known> nodes = {known("A", "S/A", 1, true), known("x", "S/A/x.txt", 2)};
    const Scans scans = {{"S/N", {entry("S/N/A", 1, true)}}, {"S/N/A", {entry("S/N/A/x.txt", 2)}}};
    Outcome outcome;
    outcome.actions = {Added{entry("S/N", 9, true)}, Added{entry("S/link.txt", 2)}, Removed{"A"}};
    const Outcome before = outcome;
    followOutOfRemovedFolders(outcome, scans, nodes, NameCase::Kept);
    EXPECT_EQ(outcome, before);

    // The same with a folder that moved, too.
    outcome.actions = {
        Moved{"N", entry("S/N", 9, true)}, Added{entry("S/link.txt", 2)}, Removed{"A"}};
    const Outcome moved = outcome;
    followOutOfRemovedFolders(outcome, scans, nodes, NameCase::Kept);
    EXPECT_EQ(outcome, moved);
}
