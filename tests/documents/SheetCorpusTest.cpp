#include "documents/SheetCorpus.h"
#include "documents/Xlsx.h"
#include "support/Printing.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <random>

#include <sys/resource.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 mostMs = 2000;
constexpr long mostKilobytes = 512L << 10;

long peakKilobytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Everything that a workbook gives; false when it is refused.
bool readWhole(const QByteArray& bytes)
{
    const auto book = Xlsx::read(bytes);
    for (int sheet = 0; book && sheet < book->names().size(); ++sheet)
        if (const auto rows = book->rows(sheet))
            (void)plainText(*rows);
    return book.has_value();
}

class SheetCorpus : public testing::Test
{
protected:
    void SetUp() override
    {
        if (realWorkbooks().isEmpty()) {
            GTEST_SKIP() << "The real files aren't there; CORVELLE_SHARED tells their place.";
        }
    }
};

void expectExplained(const std::vector<JudgedBook>& books)
{
    for (const JudgedBook& book : books)
        for (const JudgedCell& cell : book.cells)
            EXPECT_EQ(cell.differs(), !cell.rule.isEmpty())
                << book.name.toStdString() << ' ' << cell.place.toStdString() << ": "
                << cell.ours.toStdString() << " for " << cell.theirs.toStdString();
}

} // namespace

TEST_F(SheetCorpus, showsWhatTheProgramShowsThatWroteThem)
{
    const auto books = judgedBooks();
    EXPECT_GE(books.size(), 11u);
    expectExplained(books);
}

TEST_F(SheetCorpus, showsWhatSelfCheckingWorkbooksExpect)
{
    const auto books = selfCheckingBooks();
    EXPECT_EQ(books.size(), 4u);
    expectExplained(books);
}

TEST_F(SheetCorpus, readsWhatIsWrittenInUnusualWays)
{
    const struct
    {
        QString book;
        size_t row, column;
        QString text;
    } cases[] = {
        {u"calamine__date_1904.xlsx"_s, 0, 0, u"2021-01-01"_s},
        {u"calamine__date_1904.xlsx"_s, 2, 0, u"255:10:10"_s},
        {u"calamine__date_iso.xlsx"_s, 0, 0, u"2021-01-01"_s},
        {u"calamine__date_iso.xlsx"_s, 1, 0, u"2021-01-01 10:10:10"_s},
        {u"calamine__date_iso.xlsx"_s, 2, 0, u"10:10:10"_s},
        {u"calamine__empty_s_attribute.xlsx"_s, 1, 1, u"1"_s},
        {u"calamine__has_x000D_.xlsx"_s, 0, 0, u"ABC\r\nDEF"_s},
        {u"calamine__inlineStr_cdata.xlsx"_s, 0, 0, u"Hello CDATA"_s},
        {u"calamine__nonstandard-xml-ns-prefix.xlsx"_s, 1, 1, u"3"_s},
        {u"calamine__richtext-namespaced.xlsx"_s, 0, 7, u"shared string\nLine 2\nLine 3"_s},
        {u"calamine__rph.xlsx"_s, 0, 0, u"課きく\u3000毛こ"_s},
        {u"calamine__table_with_absolute_paths.xlsx"_s, 1, 0, u"100"_s},
        {u"poi__59021.xlsx"_s, 0, 0, u"Destination"_s},
        {u"PhpSpreadsheet__utf16be.bom.xlsx"_s, 0, 0, u"1"_s},
        {u"sheetjs__1904.xlsx"_s, 0, 1, u"1904-01-02"_s},
    };
    for (const auto& c : cases) {
        const auto book = Xlsx::read(realWorkbook(c.book));
        const auto sheet = book ? book->rows(0) : std::nullopt;
        SCOPED_TRACE(c.book.toStdString());
        ASSERT_TRUE(sheet && c.row < sheet->rows.size() && c.column < sheet->rows[c.row].size());
        EXPECT_EQ(sheet->rows[c.row][c.column].text, c.text);
    }
}

TEST_F(SheetCorpus, refusesWhatIsNoWorkbook)
{
    for (const QString& name : {u"poi__protected_passtika.xlsx"_s, u"../misc/calamine__date.xls"_s,
             u"../misc/calamine__date.xlsb"_s, u"../misc/calamine__date.ods"_s})
        EXPECT_FALSE(readWhole(realWorkbook(name))) << name.toStdString();
}

// CORVELLE_ROUNDS tells how often each is damaged in either way, CORVELLE_SEED how.
TEST_F(SheetCorpus, opensOrRefusesWhatIsDamaged)
{
    const int rounds = qEnvironmentVariable("CORVELLE_ROUNDS", u"2"_s).toInt();
    const unsigned seed = qEnvironmentVariableIsSet("CORVELLE_SEED")
                              ? qEnvironmentVariable("CORVELLE_SEED").toUInt()
                              : std::random_device()();
    SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    qint64 slowest = 0;
    const long before = peakKilobytes();
    for (const QString& name : realWorkbooks()) {
        const QByteArray whole = realWorkbook(name);
        for (int round = 0; round <= 2 * rounds; ++round) {
            QByteArray bytes = whole;
            const auto place = [&] {
                return static_cast<qsizetype>(random() % static_cast<size_t>(whole.size()));
            };
            if (round > rounds)
                bytes.truncate(place());
            else if (round > 0)
                for (auto flips = 1 + random() % 8; flips > 0; --flips)
                    bytes[place()] = static_cast<char>(random());
            QElapsedTimer time;
            time.start();
            (void)readWhole(bytes);
            slowest = std::max(slowest, time.elapsed());
            EXPECT_LT(time.elapsed(), mostMs) << name.toStdString() << ", round " << round;
        }
    }
    EXPECT_LT(peakKilobytes() - before, mostKilobytes);
    RecordProperty("seed", std::to_string(seed));
    RecordProperty("slowestMs", std::to_string(slowest));
    std::printf("seed %u, %d rounds: the slowest took %lld ms, %ld KiB at most\n", seed, rounds,
        slowest, peakKilobytes() - before);
}
