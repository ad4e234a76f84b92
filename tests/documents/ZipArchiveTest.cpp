#include "documents/ZipArchive.h"
#include "documents/ZipWriter.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <QDir>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

QByteArray zipOf(const std::vector<std::pair<QString, QByteArray>>& files)
{
    ZipWriter writer(QDateTime(QDate(2024, 2, 29), QTime(13, 45, 58)));
    for (const auto& [name, data] : files)
        writer.add(name, data);
    return writer.finish();
}

QByteArray readOf(const QByteArray& zip, const QString& name)
{
    return ZipArchive(zip).read(name).value_or("(none)");
}

QByteArray drained(const ByteSource& source, qsizetype step)
{
    QByteArray all, piece(step, Qt::Uninitialized);
    if (!source)
        return "(none)";
    for (;;) {
        const qsizetype count = source(piece.data(), step);
        if (count < 0)
            return "(broken)";
        if (count == 0)
            return all;
        all += piece.first(count);
    }
}

// Sets a number in the central entry of an archive with one file.
template<class T>
QByteArray withCentral(QByteArray zip, int field, T value)
{
    const qsizetype central = zip.indexOf("PK\x01\x02");
    qToLittleEndian(value, zip.data() + central + field);
    return zip;
}

constexpr int methodField = 10, compressedField = 20, sizeField = 24, offsetField = 42;

} // namespace

TEST(ZipArchive, whatIsWrittenIsRead)
{
    const QByteArray large = QByteArray("corvelle ").repeated(100'000);
    const QByteArray zip = zipOf(
        {{u"word/document.xml"_s, large}, {u"word/media/ü.png"_s, "\x89PNG"}, {u"empty"_s, ""}});
    EXPECT_LT(zip.size(), large.size() / 20);
    const ZipArchive archive(zip);
    EXPECT_EQ(archive.names(), (QStringList{u"empty"_s, u"word/"_s, u"word/document.xml"_s,
                                   u"word/media/"_s, u"word/media/ü.png"_s}));
    EXPECT_EQ(archive.read(u"word/document.xml"_s), large);
    EXPECT_EQ(archive.read(u"word/document.xml"_s, 9), "corvelle ");
    EXPECT_EQ(archive.read(u"word/media/ü.png"_s), "\x89PNG");
    EXPECT_EQ(archive.read(u"empty"_s), "");
    EXPECT_EQ(archive.read(u"word"_s), std::nullopt);
    EXPECT_EQ(drained(archive.source(u"word/document.xml"_s), 4099), large);
    EXPECT_EQ(drained(archive.source(u"nothing"_s), 100), "(none)");
}

TEST(ZipArchive, aTimeIsWrittenAsDosDoes)
{
    const QByteArray zip = zipOf({{u"a"_s, "a"}});
    EXPECT_EQ(qFromLittleEndian<quint16>(zip.constData() + 10), 13 * 2048 + 45 * 32 + 29);
    EXPECT_EQ(qFromLittleEndian<quint16>(zip.constData() + 12), (2024 - 1980) * 512 + 2 * 32 + 29);
}

TEST(ZipArchive, aNameInAnotherCaseIsFound)
{
    EXPECT_EQ(readOf(zipOf({{u"word/Document.xml"_s, "a"}}), u"word/document.xml"_s), "a");
    // The very name first, then the first in code order.
    const QByteArray three = zipOf({{u"b"_s, "low"}, {u"B"_s, "up"}});
    EXPECT_EQ(readOf(three, u"b"_s), "low");
    EXPECT_EQ(readOf(zipOf({{u"aB"_s, "2"}, {u"Ab"_s, "1"}}), u"ab"_s), "1");
}

TEST(ZipArchive, theLaterOfTwoEntriesWithOneNameCounts)
{
    EXPECT_EQ(readOf(zipOf({{u"a"_s, "first"}, {u"a"_s, "second"}}), u"a"_s), "second");
}

TEST(ZipArchive, theEndIsFoundBehindTheLongestComment)
{
    const QByteArray zip = zipOf({{u"a"_s, "a"}});
    EXPECT_EQ(readOf(zip + QByteArray(65'535, 'x'), u"a"_s), "a");
    EXPECT_EQ(readOf(zip + QByteArray(65'536, 'x'), u"a"_s), "(none)");
}

TEST(ZipArchive, claimsThatCantBeTrueGiveNothing)
{
    const QByteArray zip = zipOf({{u"a"_s, QByteArray(1000, 'a')}});
    const struct
    {
        const char* what;
        QByteArray zip;
    } cases[] = {
        {"a size of 2 GiB", withCentral<quint32>(zip, sizeField, 0x7FFFFFFF)},
        {"one byte more than there is", withCentral<quint32>(zip, sizeField, 1001)},
        {"more packed bytes than the file has",
            withCentral<quint32>(zip, compressedField, 100'000)},
        {"a header outside the file", withCentral<quint32>(zip, offsetField, 0xFFFFFFFF)},
        {"a header that is none", withCentral<quint32>(zip, offsetField, 1)},
        {"a method that we don't know", withCentral<quint16>(zip, methodField, 12)},
        {"cut off before the directory", zip.first(zip.size() / 2)},
        {"no zip at all", "PK"},
        {"an end record alone", QByteArray("PK\x05\x06") + QByteArray(18, '\xFF')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(readOf(c.zip, u"a"_s), "(none)");
        const QByteArray streamed = drained(ZipArchive(c.zip).source(u"a"_s), 100);
        EXPECT_TRUE(streamed == "(none)" || streamed == "(broken)") << streamed.toStdString();
    }
    EXPECT_EQ(readOf(withCentral<quint32>(zip, sizeField, 10), u"a"_s), "aaaaaaaaaa");
}

TEST(ZipArchive, oneArchiveInflatesOnlySoMuch)
{
    // 100 MiB of zeros, which deflate can just bear.
    const QByteArray zip = zipOf({{u"a"_s, QByteArray(100 << 20, '\0')}});
    const ZipArchive archive(zip);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(archive.read(u"a"_s)) << i;
    EXPECT_FALSE(archive.read(u"a"_s));
    EXPECT_EQ(drained(archive.source(u"a"_s), 1 << 20), "(broken)");
    EXPECT_TRUE(ZipArchive(zip).read(u"a"_s));
}

TEST(ZipArchive, aFileIsReadFromItsPath)
{
    const TempFolder folder;
    folder.makeFile("a.zip", zipOf({{u"a"_s, "inside"}}));
    EXPECT_EQ(ZipArchive::ofFile(folder.path("a.zip")).read(u"a"_s), "inside");
    EXPECT_TRUE(ZipArchive::ofFile(folder.path("none.zip")).names().isEmpty());
    EXPECT_TRUE(ZipArchive::ofFile(folder.path()).names().isEmpty());
}

TEST(ZipArchive, whatOthersPublishAsRightIsReadWhole)
{
    const QDir folder(qEnvironmentVariable("CORVELLE_SHARED", u"../shared"_s) + u"/corpus/zip"_s);
    if (!folder.exists())
        GTEST_SKIP() << "The real files aren't at " << folder.path().toStdString()
                     << "; CORVELLE_SHARED tells another place.";
    int entries = 0;
    for (const QString& file : folder.entryList({u"*__success-*.zip"_s})) {
        SCOPED_TRACE(file.toStdString());
        const ZipArchive archive = ZipArchive::ofFile(folder.filePath(file));
        if (file.contains(u"encryption"))
            continue;
        if (!file.contains(u"empty") && !file.contains(u"zip64")) {
            EXPECT_FALSE(archive.names().isEmpty());
        }
        for (const QString& name : archive.names()) {
            const auto read = archive.read(name);
            const auto entry = archive.entry(name);
            // Its name says that this one's method is none.
            EXPECT_EQ(read.has_value(), entry->method == 0 || entry->method == 8)
                << name.toStdString();
            if (read && entry->method == 8) {
                EXPECT_EQ(read->size(), entry->size);
            }
            ++entries;
        }
    }
    EXPECT_GT(entries, 20);
}
