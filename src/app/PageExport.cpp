#include "app/PageExport.h"

#include "base/Text.h"
#include "pages/PageDocument.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qint64 mostExportBytes = 256LL << 20;

} // namespace

QByteArray exportedPage(const PageTree& page, const QString& title, const QString& format,
    const MentionSource& mentions)
{
    if (format == u"html")
        return PageHTML::file(page, title, {mentions, {}, {}}).toUtf8();
    if (format == u"md")
        return PageMarkdown::markdownFromDoc(page.content, PageMarkdown::Pictures::Kept).toUtf8();
    if (format == u"words")
        return QByteArray::number(wordCount(pageWords(page.content))) + '\n';
    return {};
}

std::optional<QByteArray> exportAsked(const QStringList& arguments)
{
    const qsizetype at = arguments.indexOf(u"--export"_s);
    if (at < 0 || at + 2 >= arguments.size())
        return std::nullopt;
    QString path = arguments[at + 1];
    if (path == u"~" || path.startsWith(u"~/"))
        path.replace(0, 1, QDir::homePath());
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > mostExportBytes)
        return std::nullopt;
    const auto page = pageTree(file.readAll());
    if (!page)
        return std::nullopt;
    return exportedPage(*page, QFileInfo(path).completeBaseName(), arguments[at + 2], {});
}

} // namespace corvelle
