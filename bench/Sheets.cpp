// What reading a workbook costs, as one line of JSON.
//   bench_sheets text FILE    every sheet to plain text: milliseconds of the processor, and its
//   length bench_sheets look FILE    the same of what a preview shows bench_sheets open FILE opened
//   and its first sheet previewed: by how many KiB the process grew
#include "documents/Xlsx.h"

#include <QFile>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string_view>

using namespace corvelle;

namespace {

constexpr SheetLimits everything{1'048'576, 16'384, 100'000};
constexpr int tries = 3;

QByteArray contents(const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qsizetype textLength(const QByteArray& bytes, const SheetLimits& limits)
{
    qsizetype length = 0;
    const auto book = Xlsx::read(bytes);
    for (int sheet = 0; book && sheet < book->names().size(); ++sheet)
        if (const auto rows = book->rows(sheet, limits))
            length += plainText(*rows).size();
    return length;
}

// Of this program alone; what the system tells of a process counts what it was forked from.
long peakKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray all = status.readAll();
    const QByteArray label = "VmHWM:";
    const qsizetype from = all.indexOf(label) + label.size();
    return all.mid(from, all.indexOf('k', from) - from).trimmed().toLong();
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view what = argc > 2 ? argv[1] : "";
    const QByteArray bytes = argc > 2 ? contents(argv[2]) : QByteArray();
    if (what == "text" || what == "look") {
        double least = 1e12;
        qsizetype length = 0;
        for (int i = 0; i < tries; ++i) {
            const std::clock_t start = std::clock();
            length = textLength(bytes, what == "text" ? everything : SheetLimits());
            least =
                std::min(least, static_cast<double>(std::clock() - start) * 1e3 / CLOCKS_PER_SEC);
        }
        std::printf("{\"ms\": %.2f, \"characters\": %lld}\n", least, length);
    } else if (what == "open") {
        const long before = peakKilobytes();
        const auto book = Xlsx::read(bytes);
        const auto rows = book ? book->rows(0) : std::nullopt;
        std::printf("{\"kilobytes\": %ld, \"rows\": %zu}\n", peakKilobytes() - before,
            rows ? rows->rows.size() : 0);
    } else {
        return 2;
    }
}
