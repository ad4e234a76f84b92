// Prints, as Markdown, how many of the published examples give the same document here, by section
// and by the rule that explains the others.
//
//   measure_markdown                       the two tables
//   measure_markdown --differences [RULE]  the examples that differ, with both documents
//
// Fails when a difference isn't explained, or what is the same is.
#include "pages/MarkdownExamples.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>

using namespace corvelle;

namespace {

enum class Column { CommonMark, GFM };

struct Judged
{
    Column column = Column::CommonMark;
    QString source;
    MarkdownExample example;
    QByteArray ours, theirs;
    QString rule; // that explains the difference; empty when none does

    bool differs() const { return ours != theirs; }
};

QString ruleOf(
    const std::vector<MarkdownDifference>& differences, const QString& source, int number)
{
    for (const MarkdownDifference& difference : differences)
        if (difference.examples.value(source).contains(number))
            return difference.rule;
    return {};
}

std::vector<Judged> judge(const std::vector<MarkdownDifference>& differences)
{
    std::vector<Judged> all;
    for (const QString source : exampleSources)
        for (MarkdownExample& example : markdownExamples(source)) {
            Judged judged;
            judged.column = source == exampleSources[0] ? Column::CommonMark : Column::GFM;
            judged.source = source;
            judged.ours = savedFromMarkdown(example.markdown);
            judged.theirs = savedFromHtml(example.html);
            judged.rule = ruleOf(differences, source, example.number);
            if (!source.endsWith("spec"))
                example.section = "Tests: " + source.section("__", 1);
            judged.example = std::move(example);
            all.push_back(std::move(judged));
        }
    return all;
}

qsizetype countExamples(
    const std::vector<Judged>& all, Column column, const std::function<bool(const Judged&)>& counts)
{
    return std::count_if(all.begin(), all.end(),
        [&](const Judged& judged) { return judged.column == column && counts(judged); });
}

void printSections(const std::vector<Judged>& all)
{
    std::printf("| section | CommonMark | GFM |\n| --- | ---: | ---: |\n");
    const auto row = [&](const char* title, const auto& belongs) {
        std::printf("| %s |", title);
        for (const Column column : {Column::CommonMark, Column::GFM}) {
            const auto total = countExamples(all, column, belongs);
            const auto same = countExamples(
                all, column, [&](const Judged& j) { return belongs(j) && !j.differs(); });
            if (total > 0)
                std::printf(" %lld of %lld |", same, total);
            else
                std::printf(" |");
        }
        std::printf("\n");
    };
    QStringList sections;
    for (const Judged& judged : all)
        if (!sections.contains(judged.example.section))
            sections.append(judged.example.section);
    for (const QString& section : sections)
        row(qUtf8Printable(section), [&](const Judged& j) { return j.example.section == section; });
    row("**all**", [](const Judged&) { return true; });
}

void printRules(const std::vector<Judged>& all, const std::vector<MarkdownDifference>& differences)
{
    std::printf("| rule | CommonMark | GFM | |\n| --- | ---: | ---: | --- |\n");
    for (const MarkdownDifference& difference : differences) {
        const auto countOf = [&](Column column) {
            return countExamples(
                all, column, [&](const Judged& j) { return j.rule == difference.rule; });
        };
        std::printf("| %s | %lld | %lld | %s |\n", qUtf8Printable(difference.rule),
            countOf(Column::CommonMark), countOf(Column::GFM), qUtf8Printable(difference.sentence));
    }
}

void printDifferences(const std::vector<Judged>& all, const QString& rule)
{
    for (const Judged& judged : all)
        if (judged.differs() && (rule.isEmpty() || judged.rule == rule))
            std::printf("### %s %d, %s: %s\n%s--- published\n%s--- theirs\n%s\n--- ours\n%s\n\n",
                qUtf8Printable(judged.source), judged.example.number,
                qUtf8Printable(judged.example.section), qUtf8Printable(judged.rule),
                judged.example.markdown.toUtf8().constData(),
                judged.example.html.toUtf8().constData(), judged.theirs.constData(),
                judged.ours.constData());
}

} // namespace

int main(int argc, char** argv)
{
    const auto differences = markdownDifferences();
    const std::vector<Judged> all = judge(differences);
    if (all.empty()) {
        std::fprintf(stderr, "There are no examples in %s; CORVELLE_SHARED tells another place.\n",
            qUtf8Printable(realFiles()));
        return 2;
    }
    if (argc > 1 && argv[1] == std::string_view("--differences")) {
        printDifferences(all, argc > 2 ? QString::fromUtf8(argv[2]) : QString());
        return 0;
    }
    printSections(all);
    std::printf("\n");
    printRules(all, differences);
    bool isExplained = true;
    for (const Judged& judged : all)
        if (judged.differs() == judged.rule.isEmpty()) {
            isExplained = false;
            std::fprintf(stderr, "%s %d %s\n", qUtf8Printable(judged.source), judged.example.number,
                judged.differs() ? "differs and no rule explains it" : "is the same");
        }
    return isExplained ? 0 : 1;
}
