// Turns what the plan made of a look into a pass: which folders have to come first, what comes with
// a new folder, and when to look again. Runs where the look runs.
#pragma once

#include "disk/DiskPass.h"
#include "disk/DiskView.h"

namespace corvelle {

// The rows that a pass compares with the disk.
struct KnownRows
{
    std::vector<DiskPlan::Known> live;
    QHash<quint64, QString> trashed; // by identity
};

// Adds the live files and folders below a folder to `known`, but for those whose ids are there;
// with `folders`, by path, only what belongs to these.
Result<void> addKnownBelow(SQLite& connection, const QString& folder,
    std::vector<DiskPlan::Known>& known, QSet<QString>& ids,
    const QHash<QString, QString>* folders = nullptr);

// Takes over the actions. While another look can follow, folders that are new come in before
// anything that could have gone into them is taken for gone, and nothing comes in that is on its
// way out of a folder that this look didn't cover, or saw before.
Result<void> takeOutcome(DiskPass& pass, SQLite& connection, const DiskView& view,
    DiskPlan::Outcome outcome, const DiskPlan::Scans& scans, const KnownRows& rows, Round round);

// The same for a structural look at single folders: what lay below a folder that is gone or moved
// is read from the table, and folders that came are scanned.
Result<void> judgeStructure(DiskPass& pass, SQLite& connection, const DiskView& view,
    DiskPlan::Outcome outcome, DiskPlan::Scans& scans, KnownRows& rows, Round round);

// Notes the sizes of the pictures among the files that differ or moved.
void measurePictures(DiskPass& pass, const DiskView& view);

} // namespace corvelle
