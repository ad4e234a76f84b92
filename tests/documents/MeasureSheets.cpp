// Prints, as Markdown, how many cells of workbooks show what the program shows that wrote them, and
// the rules that explain the others.
//
//   measure_sheets                       the tables
//   measure_sheets --differences [RULE]  the cells that differ
//
// Fails when a difference isn't explained, when what is the same is, and below the targets.
#include "documents/SheetCorpus.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>

using namespace corvelle;

namespace {

constexpr double plainTarget = 0.99, formatTarget = 0.80;

struct Share
{
    int equal = 0, all = 0;

    double value() const { return all == 0 ? 1 : static_cast<double>(equal) / all; }
};

Share shareOf(
    const std::vector<JudgedBook>& books, const std::function<bool(const JudgedBook&)>& counts)
{
    Share share;
    for (const JudgedBook& book : books)
        if (counts(book)) {
            share.equal += book.equal();
            share.all += static_cast<int>(book.cells.size());
        }
    return share;
}

void printBooks(const char* title, const std::vector<JudgedBook>& books)
{
    std::printf("| %s | equal cells | left out |\n| --- | ---: | ---: |\n", title);
    for (const JudgedBook& book : books)
        std::printf("| %s | %d of %zu | %d |\n", qUtf8Printable(book.name), book.equal(),
            book.cells.size(), book.filled);
    std::printf("\n");
}

int countOf(const std::vector<JudgedBook>& books, const QString& rule)
{
    int count = 0;
    for (const JudgedBook& book : books)
        count += static_cast<int>(std::count_if(book.cells.begin(), book.cells.end(),
            [&](const JudgedCell& cell) { return cell.rule == rule; }));
    return count;
}

void printRules(const std::vector<JudgedBook>& judged, const std::vector<JudgedBook>& checking)
{
    std::printf("| rule | cells | rows | |\n| --- | ---: | ---: | --- |\n");
    for (const SheetDifference& difference : sheetDifferences())
        std::printf("| %s | %d | %d | %s |\n", qUtf8Printable(difference.rule),
            countOf(judged, difference.rule), countOf(checking, difference.rule),
            qUtf8Printable(difference.sentence));
    std::printf("\n");
}

void printDifferences(const std::vector<JudgedBook>& books, const QString& rule)
{
    for (const JudgedBook& book : books)
        for (const JudgedCell& cell : book.cells)
            if (cell.differs() && (rule.isEmpty() || cell.rule == rule))
                std::printf("%s %s %s: theirs “%s”, ours “%s”\n", qUtf8Printable(book.name),
                    qUtf8Printable(cell.place), qUtf8Printable(cell.rule),
                    qUtf8Printable(cell.theirs), qUtf8Printable(cell.ours));
}

bool isExplained(const std::vector<JudgedBook>& books)
{
    bool all = true;
    for (const JudgedBook& book : books)
        for (const JudgedCell& cell : book.cells)
            if (cell.differs() == cell.rule.isEmpty()) {
                all = false;
                std::fprintf(stderr, "%s %s %s\n", qUtf8Printable(book.name),
                    qUtf8Printable(cell.place),
                    cell.differs() ? "differs and no rule explains it" : "is the same");
            }
    return all;
}

bool isReached(const char* what, const Share& share, double target)
{
    std::printf("%s: %d of %d cells, %.2f%% (at least %.0f%%)\n\n", what, share.equal, share.all,
        100 * share.value(), 100 * target);
    return share.value() >= target;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<JudgedBook> judged = judgedBooks(), checking = selfCheckingBooks();
    if (judged.empty()) {
        std::fprintf(
            stderr, "There are no workbooks to judge by; CORVELLE_SHARED tells another place.\n");
        return 2;
    }
    if (argc > 1 && argv[1] == std::string_view("--differences")) {
        const QString rule = argc > 2 ? QString::fromUtf8(argv[2]) : QString();
        printDifferences(judged, rule);
        printDifferences(checking, rule);
        return 0;
    }
    printBooks("workbook", judged);
    printBooks("workbook that checks formats", checking);
    const bool plain = isReached("Outside the workbooks of formats",
        shareOf(judged, [](const JudgedBook& book) { return !book.isOfFormats; }), plainTarget);
    const bool formats = isReached("Workbooks of formats",
        shareOf(judged, [](const JudgedBook& book) { return book.isOfFormats; }), formatTarget);
    printRules(judged, checking);
    const bool explained = isExplained(judged) && isExplained(checking);
    return plain && formats && explained ? 0 : 1;
}
