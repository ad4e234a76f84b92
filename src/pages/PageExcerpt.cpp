#include "pages/PageExcerpt.h"

#include "base/Text.h"
#include "pages/ListNumbers.h"
#include "pages/PageDocument.h"

namespace corvelle {

namespace {

constexpr qsizetype mostUnits = 300; // of a row: no card is wider

// The words of a block, mentions by their labels, tables by their cells.
QString wordsOfBlock(const FlatText& text, const FlatText::BlockAt& block)
{
    QString words;
    text.eachRun(block.start, block.end, [&](Units, QStringView run, const CharStyleRef& style) {
        if (style && style->mention) {
            for (qsizetype i = 0; i < run.size(); ++i)
                words += style->mention->label;
        } else if (style && style->attachment) {
            if (style->attachment->kind == PageNode::Type::Table)
                words += plainText(nodeFromJson(style->attachment->node));
        } else {
            words += run;
        }
    });
    words.remove(attachmentCharacter);
    words.replace(lineBreak, u' ');
    return words;
}

bool makesRow(Block kind)
{
    return kind != Block::Divider && kind != Block::Raw;
}

} // namespace

PageExcerpt pageExcerpt(const FlatText& text, int limit)
{
    PageExcerpt excerpt;
    ListNumbers numbers;
    text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        const BlockStyle& style = block.what();
        const int number = numbers.next(style);
        const QString words = wordsOfBlock(text, block);
        excerpt.words += wordCount(words);
        if (makesRow(style.kind) && static_cast<int>(excerpt.rows.size()) < limit) {
            const QString line = words.left(mostUnits).simplified();
            if (!line.isEmpty())
                excerpt.rows.push_back(
                    {style.kind, line, style.depth, number, style.kind == Block::Done});
        }
        return true;
    });
    return excerpt;
}

PageExcerpt pageExcerpt(const QByteArray& json, int limit)
{
    return pageExcerpt(textFromJSON(json), limit);
}

} // namespace corvelle
