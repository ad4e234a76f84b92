#include "pages/MarkdownExamples.h"

#include "pages/PageDocument.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace corvelle {

namespace {

// HTML closes the last line of code with a newline; a page has one only between lines.
void dropLastNewlines(PageNodes& nodes)
{
    for (PageNode& node : nodes) {
        if (node.type == PageNode::Type::CodeBlock && node.text.endsWith(u'\n'))
            node.text.chop(1);
        dropLastNewlines(node.content);
    }
}

QDir sourceFolder()
{
    return QFileInfo(QString::fromUtf8(__FILE__)).dir();
}

} // namespace

QString realFiles()
{
    return QDir::cleanPath(
        qEnvironmentVariable("CORVELLE_SHARED", sourceFolder().filePath("../../../shared")) +
        "/corpus");
}

std::vector<MarkdownExample> markdownExamples(const QString& source)
{
    QFile file(realFiles() + "/md-spec/" + source + ".examples.json");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    std::vector<MarkdownExample> examples;
    for (const QJsonValue& value : QJsonDocument::fromJson(file.readAll()).array())
        examples.push_back({value["example"].toInt(), value["section"].toString(),
            value["markdown"].toString(), value["html"].toString()});
    return examples;
}

QByteArray savedFromMarkdown(const QString& markdown)
{
    return docFromText(textFromNodes(PageMarkdown::docFromMarkdown(markdown)));
}

QByteArray savedFromHtml(const QString& html)
{
    PageNodes nodes = PageHTML::nodes(html);
    dropLastNewlines(nodes);
    if (nodes.empty())
        nodes.push_back(PageNode::of(PageNode::Type::Paragraph));
    return docFromText(textFromNodes(nodes));
}

} // namespace corvelle
