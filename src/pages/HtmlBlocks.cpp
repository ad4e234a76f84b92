#include "pages/HtmlBlocks.h"

#include "pages/HtmlTokens.h"

#include <iterator>
#include <utility>

namespace corvelle {

PageNode HtmlBlocks::setKind(PageNode kind)
{
    close();
    return std::exchange(m_kind, std::move(kind));
}

void HtmlBlocks::text(QStringView raw, const HtmlLook& look)
{
    qsizetype at = 0;
    const auto skipBlanks = [&] {
        while (at < raw.size() && isHtmlBlank(raw[at]))
            ++at;
    };
    if (m_blankBefore)
        skipBlanks();
    if (at == raw.size())
        return;
    setLook(look);
    qsizetype start = at; // of what can be copied as it stands
    const auto copy = [&] {
        if (at == start)
            return;
        m_run += raw.sliced(start, at - start);
        m_blankBefore = false;
        m_hasWords = true;
    };
    while (at < raw.size()) {
        const QChar c = raw[at];
        char32_t character = 0;
        qsizetype length = 0;
        if (isHtmlBlank(c)) {
            const bool isPlain = c == u' ' && at + 1 < raw.size() && raw[at + 1] != u'&' &&
                                 !isHtmlBlank(raw[at + 1]);
            if (isPlain) {
                at += 2;
                continue;
            }
            character = u' ';
            length = 1;
        } else if (c == u'&') {
            length = htmlEntity(raw, at, &character);
        }
        if (length == 0) {
            ++at;
            continue;
        }
        copy();
        letter(character);
        at += length;
        if (m_blankBefore)
            skipBlanks();
        start = at;
    }
    copy();
}

void HtmlBlocks::letter(char32_t character)
{
    if (character <= u' ' && isHtmlBlank(QChar(static_cast<char16_t>(character)))) {
        if (!std::exchange(m_blankBefore, true))
            m_run += u' ';
        return;
    }
    m_run += QChar::fromUcs4(character);
    m_blankBefore = false;
    m_hasWords = true;
}

void HtmlBlocks::lineBreak()
{
    endRun();
    m_inlines.push_back(PageNode::of(PageNode::Type::HardBreak));
}

void HtmlBlocks::mention(PageNode mention)
{
    setLook({});
    addRun();
    m_inlines.push_back(std::move(mention));
    m_blankBefore = false;
    m_hasWords = true;
}

void HtmlBlocks::close()
{
    endRun();
    if (m_hasWords) {
        PageNode block = m_kind;
        block.content.assign(
            std::make_move_iterator(m_inlines.begin()), std::make_move_iterator(m_inlines.end()));
        m_blocks.push_back(std::move(block));
    }
    m_inlines.clear();
    m_hasWords = false;
}

void HtmlBlocks::block(PageNode block)
{
    close();
    m_blocks.push_back(std::move(block));
}

void HtmlBlocks::blocks(PageNodes blocks)
{
    close();
    m_blocks.insert(m_blocks.end(), std::make_move_iterator(blocks.begin()),
        std::make_move_iterator(blocks.end()));
}

PageNodes HtmlBlocks::take()
{
    close();
    return std::exchange(m_blocks, {});
}

bool HtmlBlocks::isEmpty()
{
    close();
    return m_blocks.empty();
}

void HtmlBlocks::setLook(const HtmlLook& look)
{
    const bool sameLink =
        look.link == m_look.link || (look.link && m_look.link && *look.link == *m_look.link);
    if (look.marks == m_look.marks && sameLink)
        return;
    addRun();
    m_look = look;
}

// The buffer goes on to gather the next one, and the node has as much room as it needs.
void HtmlBlocks::addRun()
{
    if (m_run.isEmpty())
        return;
    m_inlines.push_back(PageNode::ofText(QStringView(m_run).toString(), m_look.marks, m_look.link));
    m_run.truncate(0);
}

// Where a line ends, a blank before it is one too many.
void HtmlBlocks::endRun()
{
    if (m_run.isEmpty() && !m_inlines.empty() && m_inlines.back().type == PageNode::Type::Text) {
        m_run = std::move(m_inlines.back().text);
        m_look = {m_inlines.back().marks, m_inlines.back().link};
        m_inlines.pop_back();
    }
    if (m_run.endsWith(u' '))
        m_run.chop(1);
    addRun();
    m_blankBefore = true;
}

} // namespace corvelle
