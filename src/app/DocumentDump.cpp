#include "app/DocumentDump.h"

#include "documents/DocDump.h"
#include "documents/DocumentText.h"
#include "documents/DocxReader.h"

#include <QFileInfo>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

void print(const DocBlock& block)
{
    const QByteArray lines = dumpOf(block);
    std::fwrite(lines.constData(), 1, static_cast<size_t>(lines.size()), stdout);
}

} // namespace

std::optional<int> dumpAsked(const QStringList& arguments)
{
    const qsizetype at = arguments.indexOf(u"--docx-dump"_s);
    if (at < 0 || at + 1 >= arguments.size())
        return std::nullopt;
    const QString path = arguments[at + 1];
    if (QFileInfo(path).suffix().toLower() == u"docx") {
        if (DocxReader::eachBlock(ZipArchive::ofFile(path), print))
            return 0;
        std::fputs("Couldn’t read this document\n", stderr);
        return 1;
    }
    for (const DocBlock& block : DocumentText::preview(path))
        print(block);
    return 0;
}

} // namespace corvelle
