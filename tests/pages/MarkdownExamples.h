// The published examples of Markdown, and the two documents that each gives: ours of its text, and
// the one of the HTML that its publishers want.
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace corvelle {

struct MarkdownExample
{
    int number = 0;
    QString section, markdown, html;
};

// The folder of the real files that tests read; CORVELLE_SHARED tells another place than the one
// beside the sources.
QString realFiles();

// Of one file; empty when it can't be read.
std::vector<MarkdownExample> markdownExamples(const QString& path);

// As a page is saved that was opened with it.
QByteArray savedFromMarkdown(const QString& markdown);
QByteArray savedFromHtml(const QString& html);

} // namespace corvelle
