// The published examples of Markdown, the two documents that each gives (ours of its text, and the
// one of the HTML that its publishers want), and what explains those that differ.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>

#include <vector>

namespace corvelle {

struct MarkdownExample
{
    int number = 0;
    QString section, markdown, html;
};

// The sources of examples, by the names of their files.
inline constexpr const char* exampleSources[] = {
    "commonmark__spec", "cmark-gfm__spec", "cmark-gfm__extensions", "cmark-gfm__regression"};

// The folder of the real files that tests read; CORVELLE_SHARED tells another place than the one
// beside the sources.
QString realFiles();

// Empty when they can't be read.
std::vector<MarkdownExample> markdownExamples(const QString& source);

// As a page is saved that was opened with it.
QByteArray savedFromMarkdown(const QString& markdown);
QByteArray savedFromHtml(const QString& html);

// A rule of ours by which examples differ.
struct MarkdownDifference
{
    QString rule, sentence;
    QHash<QString, QSet<int>> examples; // their numbers, by source
};
std::vector<MarkdownDifference> markdownDifferences();

} // namespace corvelle
