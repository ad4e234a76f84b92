// Scans a folder of a library once, as a disk pass does. Prints milliseconds.
//
//   bench_scan ROOT FOLDER

#include "disk/DiskScan.h"

#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

using namespace corvelle;

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "bench_scan ROOT FOLDER\n");
        return 2;
    }
    const QString root = QFile::decodeName(argv[1]), folder = QFile::decodeName(argv[2]);
    QElapsedTimer time;
    time.start();
    const DiskPlan::Scans scans = DiskPlan::scanTree(root, std::span(&folder, 1));
    const double ms = static_cast<double>(time.nsecsElapsed()) / 1e6;
    size_t entries = 0;
    for (const auto& [path, list] : scans)
        entries += list.size();
    std::printf("%.3f\n", ms);
    std::fprintf(stderr, "%zu entries in %zu folders\n", entries, scans.size());
    return entries == 0;
}
