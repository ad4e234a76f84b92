// Gathers blocks from a stream of texts, breaks and blocks, as a browser would lay them out.
//
// Texts between two blocks become one paragraph. Each run of blanks is one space, and none stands
// at a block's ends or beside a break; a paragraph or heading with nothing in it but breaks is
// dropped.
#pragma once

#include "pages/PageNode.h"

namespace corvelle {

// What a text inherits from the elements around it.
struct HtmlLook
{
    Marks marks;
    std::shared_ptr<const Link> link;
};

class HtmlBlocks
{
public:
    // The paragraph or heading that texts become from now on; the one before, to be put back.
    PageNode setKind(PageNode kind);
    bool isInHeading() const { return m_kind.type == PageNode::Type::Heading; }

    void text(QStringView raw, const HtmlLook& look); // entities and all
    void lineBreak();
    void mention(PageNode mention);

    void close(); // texts from here on begin a block
    void block(PageNode block);
    void blocks(PageNodes blocks);

    // Closes.
    PageNodes take();
    bool isEmpty();

private:
    void letter(char32_t character);
    void setLook(const HtmlLook& look);
    void addRun();
    void endRun();

    PageNodes m_blocks;
    PageNode m_kind = PageNode::of(PageNode::Type::Paragraph);
    PageNodes m_inlines;
    QString m_run; // what follows them, of one look
    HtmlLook m_look;
    bool m_blankBefore = true; // so a blank here is one too many
    bool m_hasWords = false;
};

} // namespace corvelle
