// Prints, as Markdown, how far our reading of the real Word files agrees with pandoc's: their
// words, and how many headings, items, cells and notes each has.
//
//   measure_documents                  the tables
//   measure_documents --differences    also the words that only one of the two has
//
// Fails when a file differs by more than is allowed and no rule explains it, or one that is
// explained doesn't differ, or the targets for all files are missed.
#include "documents/WordJudge.h"

#include <QDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>
#include <vector>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

constexpr double leastAgreement = 0.97; // of a file
constexpr double leastMedian = 0.99, leastShare = 0.9;

struct Judged
{
    QString name;
    std::optional<DocumentFacts> ours, theirs;

    bool isComparable() const { return ours && theirs; }
    // Where the judge refuses a file there is nothing to compare.
    double words() const
    {
        return isComparable() ? agreement(ours->words, theirs->words) : theirs ? 0 : 1;
    }
    bool hasSameCounts() const
    {
        return !theirs ||
               (ours && ours->headings == theirs->headings && ours->items == theirs->items &&
                   ours->cells == theirs->cells && ours->notes == theirs->notes);
    }
    bool differs() const { return words() < leastAgreement || !hasSameCounts(); }
};

QString countsOf(const std::optional<DocumentFacts>& facts)
{
    return facts ? u"%1 %2 %3 %4"_s.arg(facts->headings)
                       .arg(facts->items)
                       .arg(facts->cells)
                       .arg(facts->notes)
                 : u"refused"_s;
}

QString onlyIn(const WordCounts& one, const WordCounts& other)
{
    QStringList words;
    for (auto word = one.cbegin(); word != one.cend(); ++word)
        if (const int more = *word - other.value(word.key()); more > 0)
            words.append(more == 1 ? word.key() : u"%1×%2"_s.arg(more).arg(word.key()));
    words.sort();
    return words.join(u' ');
}

QString ruleOf(const std::vector<WordDifference>& differences, const QString& name)
{
    for (const WordDifference& difference : differences)
        if (difference.files.contains(name))
            return difference.rule;
    return {};
}

std::vector<Judged> judgeAll(const QDir& folder)
{
    std::vector<Judged> all;
    for (const QString& name : folder.entryList({u"*.docx"_s, u"*.docm"_s}, QDir::Files)) {
        const QString path = folder.filePath(name);
        all.push_back({name, ourFacts(path), judgedFacts(path)});
    }
    return all;
}

void printFiles(
    const std::vector<Judged>& all, const std::vector<WordDifference>& differences, bool withWords)
{
    std::printf("| file | words | ours | pandoc | rule |\n| --- | ---: | --- | --- | --- |\n");
    for (const Judged& judged : all) {
        if (!judged.differs() && judged.isComparable() && !withWords)
            continue;
        std::printf("| %s | %.3f | %s | %s | %s |\n", qUtf8Printable(judged.name), judged.words(),
            qUtf8Printable(countsOf(judged.ours)), qUtf8Printable(countsOf(judged.theirs)),
            qUtf8Printable(ruleOf(differences, judged.name)));
        if (withWords && judged.isComparable() && judged.words() < 1)
            std::printf("  only ours: %s\n  only pandoc's: %s\n",
                qUtf8Printable(onlyIn(judged.ours->words, judged.theirs->words)),
                qUtf8Printable(onlyIn(judged.theirs->words, judged.ours->words)));
    }
}

void printRules(const std::vector<WordDifference>& differences)
{
    std::printf("\n| rule | files | |\n| --- | ---: | --- |\n");
    for (const WordDifference& difference : differences)
        std::printf("| %s | %lld | %s |\n", qUtf8Printable(difference.rule),
            difference.files.size(), qUtf8Printable(difference.sentence));
}

// One row of the totals; true when the target is met.
bool printShare(const char* what, const std::vector<Judged>& all,
    const std::function<bool(const Judged&)>& counts, std::optional<double> least = leastShare)
{
    const auto share = static_cast<double>(std::count_if(all.begin(), all.end(), counts)) /
                       static_cast<double>(all.size());
    std::printf("| %s | %.1f %% | %s |\n", what, 100 * share,
        least ? qUtf8Printable(u"%1 %"_s.arg(100 * *least)) : "");
    return !least || share >= *least;
}

bool printTotals(std::vector<Judged> all)
{
    std::erase_if(all, [](const Judged& judged) { return !judged.theirs; });
    if (all.empty())
        return false;
    std::sort(all.begin(), all.end(),
        [](const Judged& left, const Judged& right) { return left.words() < right.words(); });
    const double median = all[all.size() / 2].words();
    std::printf("\n| of %zu files that pandoc reads | | target |\n| --- | ---: | ---: |\n"
                "| words, median | %.3f | %.2f |\n",
        all.size(), median, leastMedian);
    bool isGood = median >= leastMedian;
    isGood &= printShare("files with words of 0.97 or more", all,
        [](const Judged& judged) { return judged.words() >= leastAgreement; });
    const auto isSame = [](int DocumentFacts::*count) {
        return [count](const Judged& judged) {
            return judged.ours && (*judged.ours).*count == (*judged.theirs).*count;
        };
    };
    isGood &= printShare("as many headings", all, isSame(&DocumentFacts::headings));
    isGood &= printShare("as many items", all, isSame(&DocumentFacts::items));
    isGood &= printShare("as many cells", all, isSame(&DocumentFacts::cells));
    isGood &= printShare("as many notes", all, isSame(&DocumentFacts::notes));
    printShare(
        "all four", all, [](const Judged& j) { return j.hasSameCounts(); }, std::nullopt);
    return isGood;
}

} // namespace

int main(int argc, char** argv)
{
    const QDir folder(qEnvironmentVariable("CORVELLE_SHARED", u"../shared"_s) + u"/corpus/docx"_s);
    const bool withWords = argc > 1 && argv[1] == std::string_view("--differences");
    const auto differences = wordDifferences();
    const std::vector<Judged> all = judgeAll(folder);
    printFiles(all, differences, withWords);
    printRules(differences);
    bool isGood = printTotals(all);
    if (all.empty())
        std::fprintf(stderr, "There are no files in %s; CORVELLE_SHARED tells another place.\n",
            qUtf8Printable(folder.path()));
    for (const Judged& judged : all)
        if (judged.differs() == ruleOf(differences, judged.name).isEmpty()) {
            isGood = false;
            std::fprintf(stderr, "%s %s\n", qUtf8Printable(judged.name),
                judged.differs() ? "differs and no rule explains it" : "doesn't differ any more");
        }
    return isGood ? 0 : 1;
}
