// Files that mean harm, and real ones that were cut off or damaged: each is opened or refused
// within two seconds and 512 MiB. CORVELLE_HOSTILE tells how often each real file is cut and
// damaged, 2 unless it does, and CORVELLE_SEED another seed.
#include "documents/DocumentText.h"
#include "documents/DocxFixture.h"
#include "support/Printing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <random>
#include <vector>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

constexpr std::clock_t mostMs = 2'000;
constexpr qint64 mostMemory = 512LL << 20;

#ifdef __SANITIZE_ADDRESS__
constexpr bool isMemoryOurs = false; // the sanitizer keeps what was freed
#else
constexpr bool isMemoryOurs = true;
#endif

// What the process keeps resident at most, since the last call of forgetPeak().
qint64 peakMemory()
{
    QFile status(u"/proc/self/status"_s);
    EXPECT_TRUE(status.open(QIODevice::ReadOnly));
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.sliced(6).simplified().split(' ').first().toLongLong() * 1024;
    return 0;
}

void forgetPeak()
{
    QFile refs(u"/proc/self/clear_refs"_s);
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}

using Reading = std::function<void(const QByteArray& bytes)>;

// The ways in which a file of this kind is opened.
std::vector<Reading> readingsOf(const QString& extension)
{
    if (extension == u"xml")
        return {[](const QByteArray& bytes) { XNode::parse(bytes); }};
    if (extension == u"docx" || extension == u"docm")
        return {[](const QByteArray& bytes) {
                    if (const auto blocks = DocxReader::blocks(ZipArchive(bytes)))
                        (void)dumpOf(*blocks);
                },
            [](const QByteArray& bytes) { DocxReader::open(ZipArchive(bytes)); }};
    if (extension == u"zip")
        return {[](const QByteArray& bytes) {
            const ZipArchive zip(bytes);
            for (const QString& name : zip.names())
                zip.read(name);
        }};
    return {[extension](const QByteArray& bytes) {
        (void)dumpOf(DocumentText::preview(extension, bytes));
    }};
}

void expectBorne(const QString& extension, const QByteArray& bytes)
{
    for (const Reading& read : readingsOf(extension)) {
        forgetPeak();
        const qint64 before = peakMemory();
        // The process's own time: others may keep the machine busy.
        const std::clock_t start = std::clock();
        read(bytes);
        EXPECT_LT((std::clock() - start) * 1000 / CLOCKS_PER_SEC, mostMs);
        if (isMemoryOurs) {
            EXPECT_LT(peakMemory() - before, mostMemory);
        }
    }
}

void expectDamageBorne(
    const QString& extension, const QByteArray& bytes, int times, std::mt19937& random)
{
    const auto below = [&](qsizetype limit) {
        return std::uniform_int_distribution<qsizetype>(0, limit - 1)(random);
    };
    for (int i = 0; i < times && !bytes.isEmpty(); ++i) {
        expectBorne(extension, bytes.first(below(bytes.size())));
        QByteArray damaged = bytes;
        for (qsizetype flips = 1 + below(8); flips > 0; --flips)
            damaged[below(bytes.size())] = char(below(256));
        expectBorne(extension, damaged);
    }
}

} // namespace

TEST(HostileDocuments, realFilesAreBorneWholeCutOffAndDamaged)
{
    const QDir corpus(qEnvironmentVariable("CORVELLE_SHARED", u"../shared"_s) + u"/corpus"_s);
    if (!corpus.exists())
        GTEST_SKIP() << "The real files aren't at " << corpus.path().toStdString()
                     << "; CORVELLE_SHARED tells another place.";
    const int times = qEnvironmentVariableIsSet("CORVELLE_HOSTILE")
                          ? qEnvironmentVariableIntValue("CORVELLE_HOSTILE")
                          : 2;
    const uint seed = qEnvironmentVariableIsSet("CORVELLE_SEED")
                          ? uint(qEnvironmentVariableIntValue("CORVELLE_SEED"))
                          : std::random_device()();
    std::printf("CORVELLE_SEED=%u\n", seed);
    int files = 0;
    for (const QString& kind :
        {u"docx"_s, u"rtf"_s, u"odt"_s, u"pptx"_s, u"zip"_s, u"xml"_s, u"misc"_s})
        for (const QFileInfo& info : QDir(corpus.filePath(kind)).entryInfoList(QDir::Files)) {
            if (info.fileName().contains(u".expected."))
                continue;
            SCOPED_TRACE(info.fileName().toStdString());
            QFile file(info.filePath());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            expectBorne(info.suffix().toLower(), bytes);
            std::mt19937 random(seed);
            expectDamageBorne(info.suffix().toLower(), bytes, times, random);
            ++files;
        }
    EXPECT_GT(files, 100);
}

TEST(HostileDocuments, bombsGiveNothing)
{
    DocxParts bomb;
    bomb.others = {{u"word/media/a.png"_s, QByteArray(40 << 20, ' ')},
        {u"word/header1.xml"_s, "<a>" + QByteArray(70 << 20, ' ') + "</a>"}};
    for (int i = 0; i < 10; ++i)
        bomb.rels += "<Relationship Id=\"p" + QByteArray::number(i) +
                     "\" Type=\"x/image\" Target=\"media/A.png\"/>"
                     "<Relationship Id=\"h\" Type=\"x/header\" Target=\"header1.xml\"/>";
    QByteArray pictures;
    for (int i = 0; i < 10; ++i)
        pictures += "<w:r><w:pict><v:shape><v:imagedata r:id=\"p" + QByteArray::number(i) +
                    "\"/></v:shape></w:pict></w:r>";
    expectBorne(u"docx"_s, docxOf(p(r("a") + pictures), bomb));
    EXPECT_EQ(dumpOfDocx(QByteArray(70 << 20, ' ')), "(unreadable)");
}

TEST(HostileDocuments, whatTurnsInCirclesEnds)
{
    DocxParts parts;
    // Styles and notes that are the main part, and a header that is its own package's.
    parts.rels = "<Relationship Id=\"s\" Type=\"x/styles\" Target=\"document.xml\"/>"
                 "<Relationship Id=\"h\" Type=\"x/header\" Target=\"_rels/document.xml.rels\"/>";
    parts.footnotes =
        "<w:footnote w:id=\"1\">" + p(r("one") + "<w:r><w:footnoteReference w:id=\"2\"/></w:r>") +
        "</w:footnote>" + "<w:footnote w:id=\"2\">" +
        p(r("two") + "<w:r><w:footnoteReference w:id=\"1\"/></w:r>") + "</w:footnote>";
    parts.numbering = "<w:abstractNum w:abstractNumId=\"1\"><w:numStyleLink w:val=\"L\"/>"
                      "</w:abstractNum><w:num w:numId=\"1\"><w:abstractNumId w:val=\"1\"/></w:num>";
    const QByteArray body =
        p(r("a") + "<w:r><w:footnoteReference w:id=\"1\"/></w:r>",
            "<w:numPr><w:ilvl w:val=\"0\"/><w:numId w:val=\"1\"/></w:numPr>") +
        "<w:style w:type=\"numbering\" w:styleId=\"L\"><w:pPr><w:numPr><w:numId w:val=\"1\"/>"
        "</w:numPr></w:pPr></w:style>";
    EXPECT_EQ(dumpOfDocx(body, parts),
        "paragraph 0\ta[1]\nitem ordered 0 1\tone[2] ↑\nitem ordered 0 2\ttwo[1] ↑\n");
    expectBorne(u"docx"_s, docxOf(body, parts));
}

TEST(HostileDocuments, muchOfOneThingTakesNoLonger)
{
    const QByteArray begin = "<w:r><w:fldChar w:fldCharType=\"begin\"/></w:r>";
    const struct
    {
        const char* what;
        QByteArray body;
    } cases[] = {
        {"open fields", p(begin.repeated(50'000) + r("x").repeated(50'000))},
        {"deleted marks", p(r("x"), "<w:rPr><w:del/></w:rPr>").repeated(50'000)},
        {"references of notes",
            p(QByteArray("<w:r><w:footnoteReference w:id=\"1\"/></w:r>").repeated(50'000))},
        {"merged cells", "<w:tbl>" +
                             ("<w:tr>" +
                                 QByteArray("<w:tc><w:tcPr><w:gridSpan w:val=\"1000\"/><w:vMerge/>"
                                            "</w:tcPr></w:tc>")
                                     .repeated(200) +
                                 "</w:tr>")
                                 .repeated(200) +
                             "</w:tbl>"},
        {"nested tables", QByteArray("<w:tbl><w:tr><w:tc>").repeated(80) +
                              QByteArray("</w:tc></w:tr></w:tbl>").repeated(80)},
        {"namespaces", QByteArray("<w:p xmlns:b='urn:b' b:c='1'/>").repeated(50'000)},
        {"alternates", QByteArray("<mc:AlternateContent><mc:Fallback>").repeated(120) + p(r("x")) +
                           QByteArray("</mc:Fallback></mc:AlternateContent>").repeated(120)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        expectBorne(u"docx"_s, docxOf(c.body));
    }
    const auto tagWith = [](const char* before, const char* behind) {
        QByteArray tag = "<a";
        for (int i = 0; tag.size() < 3 << 20; ++i)
            tag += before + QByteArray::number(i) + behind;
        return tag + "/>";
    };
    for (const auto& [before, behind] : {std::pair(" a", "=''"), std::pair(" xmlns:a", "='u'")})
        expectBorne(u"xml"_s, tagWith(before, behind));
}
