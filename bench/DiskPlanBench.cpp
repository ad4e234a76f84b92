// Comparing a disk of 100,000 files in 5,000 folders with its nodes, against putting all paths into
// one hash and finding them there once, which no comparison can do without.

#include "disk/DiskPlan.h"

#include "Items.h"

using namespace corvelle;
using namespace corvelle::DiskPlan;

namespace {

const QString top = QStringLiteral("My Space");

struct Made
{
    Scans scans;
    std::vector<Known> known;
    QSet<QString> folders;
    size_t entries = 0;
};

Made madeDisk()
{
    Made made;
    quint64 inode = 0;
    const auto add = [&](const QString& folder, const QString& name, bool isFolder) {
        const Entry entry{
            folder + u'/' + name, isFolder, ++inode, isFolder ? 0 : 1000, 1'700'000'000.5};
        made.scans[folder].push_back(entry);
        made.known.push_back(
            {QStringLiteral("0c7d5f1e-4a56-4a1c-9d53-%1").arg(inode, 12, 16, QChar(u'0')),
                entry.path, isFolder, entry.inode, entry.size, entry.modified});
        if (isFolder) {
            made.scans[entry.path];
            made.folders.insert(entry.path);
        }
        ++made.entries;
        return entry.path;
    };
    made.folders.insert(top);
    const auto addFiles = [&](const QString& folder) {
        for (int file = 0; file < 20; ++file)
            add(folder, QStringLiteral("Document %1.pdf").arg(file), false);
    };
    for (int area = 0; area < 50; ++area) {
        const QString areaPath = add(top, QStringLiteral("Area %1").arg(area), true);
        addFiles(areaPath);
        for (int folder = 0; folder < 99; ++folder)
            addFiles(add(areaPath, QStringLiteral("Folder %1").arg(folder), true));
    }
    return made;
}

const Made& theDisk()
{
    static const Made made = madeDisk();
    return made;
}

void compareUnchanged(benchmark::State& state)
{
    const Made& made = theDisk();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            compare(made.scans, made.known, {}, made.folders, Pass::Structural, NameCase::Kept));
    workedThrough(state, made.entries);
}

void compareNew(benchmark::State& state)
{
    const Made& made = theDisk();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            compare(made.scans, {}, {}, {top}, Pass::Structural, NameCase::Kept));
    workedThrough(state, made.entries);
}

void hashOfPaths(benchmark::State& state)
{
    const Made& made = theDisk();
    for (auto _ : state) {
        QHash<QString, const Entry*> places;
        places.reserve(static_cast<qsizetype>(made.entries));
        for (const auto& [folder, entries] : made.scans)
            for (const Entry& entry : entries)
                places.insert(entry.path, &entry);
        for (const Known& node : made.known)
            benchmark::DoNotOptimize(places.value(node.path));
    }
    workedThrough(state, made.entries);
}

} // namespace

BENCHMARK(compareUnchanged);
BENCHMARK(compareNew);
BENCHMARK(hashOfPaths);
