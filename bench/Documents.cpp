// What reading documents costs, as one line of JSON: milliseconds of the processor, or bytes.
//   bench_documents text FILE      a Word file into plain text, inside a process that runs already
//   bench_documents memory FILE    what that keeps resident at most, and how large the largest part
//   is bench_documents zip FILE       all entries of an archive, read by us and by libzip
#include "documents/DocxReader.h"

#include <QFile>

#include <zip.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>

using namespace corvelle;

namespace {

constexpr int tries = 15;

double best(const std::function<void()>& work)
{
    double least = 1e12;
    for (int i = 0; i < tries; ++i) {
        const std::clock_t start = std::clock();
        work();
        least = std::min(least, static_cast<double>(std::clock() - start) * 1e3 / CLOCKS_PER_SEC);
    }
    return least;
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Resident at most since the last forgetPeak().
double peakBytes()
{
    for (const QByteArray& line : contents(QStringLiteral("/proc/self/status")).split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.sliced(6).simplified().split(' ').first().toDouble() * 1024;
    return 0;
}

void forgetPeak()
{
    QFile refs(QStringLiteral("/proc/self/clear_refs"));
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}

bool text(const QString& path)
{
    const QByteArray bytes = contents(path);
    bool isRead = true;
    const double took =
        best([&] { isRead = isRead && DocxReader::text(ZipArchive(bytes)).has_value(); });
    std::printf("{\"text\": %f}\n", took);
    return isRead;
}

bool memory(const QString& path)
{
    qint64 largest = 0;
    bool isRead = false;
    const ZipArchive zip = ZipArchive::ofFile(path);
    for (const QString& name : zip.names())
        largest = std::max(largest, zip.entry(name)->size);
    forgetPeak();
    const double before = peakBytes();
    isRead = DocxReader::text(zip).has_value();
    const double forText = peakBytes() - before;
    std::printf("{\"peak\": %f, \"largest\": %lld}\n", forText, static_cast<long long>(largest));
    return isRead;
}

bool readByLibzip(const QByteArray& path, qint64* total)
{
    zip_t* zip = zip_open(path.constData(), ZIP_RDONLY, nullptr);
    if (!zip)
        return false;
    const zip_int64_t entries = zip_get_num_entries(zip, 0);
    for (zip_int64_t i = 0; i < entries; ++i) {
        zip_stat_t about;
        zip_file_t* file = zip_fopen_index(zip, zip_uint64_t(i), 0);
        if (!file || zip_stat_index(zip, zip_uint64_t(i), 0, &about) != 0)
            return false;
        QByteArray bytes(qsizetype(about.size), Qt::Uninitialized);
        *total += zip_fread(file, bytes.data(), about.size);
        zip_fclose(file);
    }
    zip_close(zip);
    return true;
}

bool compareZip(const QString& path)
{
    qint64 ours = 0, theirs = 0;
    bool isRead = true;
    const double oursTook = best([&] {
        const ZipArchive archive = ZipArchive::ofFile(path);
        for (const QString& name : archive.names())
            ours += archive.read(name).value_or(QByteArray()).size();
    });
    const double theirsTook =
        best([&] { isRead = isRead && readByLibzip(path.toLocal8Bit(), &theirs); });
    std::printf("{\"ours\": %f, \"libzip\": %f}\n", oursTook, theirsTook);
    return isRead && ours == theirs;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string what = argc == 3 ? argv[1] : "";
    const QString path = argc == 3 ? QString::fromLocal8Bit(argv[2]) : QString();
    if (what == "text")
        return text(path) ? 0 : 1;
    if (what == "memory")
        return memory(path) ? 0 : 1;
    return what == "zip" && compareZip(path) ? 0 : 2;
}
