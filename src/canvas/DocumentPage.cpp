#include "canvas/DocumentPage.h"

#include "base/Overloaded.h"
#include "documents/DocLinks.h"
#include "pages/PageDocument.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

constexpr QChar backSign = u'↑', emptyBox = u'☐', checkedBox = u'☑';
const QString pictureMissing = u"This picture is in the original file"_s;

Marks marksOf(const DocMarks& marks)
{
    Marks result;
    const std::pair<bool, Mark> all[] = {{marks.bold, Mark::Bold}, {marks.italic, Mark::Italic},
        {marks.strike, Mark::Strike}, {marks.underline, Mark::Underline}, {marks.code, Mark::Code},
        {marks.sup, Mark::Superscript}, {marks.sub, Mark::Subscript}, {marks.faint, Mark::Faint}};
    for (const auto& [has, mark] : all)
        result.setFlag(mark, has);
    return result;
}

BlockStyle styleOf(Block kind, int depth, bool quoted)
{
    BlockStyle style;
    style.kind = kind;
    style.depth = depth;
    style.inQuote = quoted;
    return style;
}

// The number of a note that these words refer to; 0 for other words.
int referenceIn(QStringView words)
{
    return words.startsWith(u'[') && words.endsWith(u']') ? words.sliced(1).chopped(1).toInt() : 0;
}

// Raised words with each reference apart: references that touch, or touch other raised words, are
// one text.
QStringList withReferencesApart(const QString& words)
{
    QStringList parts;
    qsizetype done = 0;
    for (qsizetype at = words.indexOf(u'['); at >= 0; at = words.indexOf(u'[', at + 1)) {
        const qsizetype end = words.indexOf(u']', at);
        if (end < 0)
            break;
        if (referenceIn(QStringView(words).sliced(at, end + 1 - at)) <= 0)
            continue;
        if (at > done)
            parts.append(words.sliced(done, at - done));
        parts.append(words.sliced(at, end + 1 - at));
        done = end + 1;
    }
    if (done < words.size())
        parts.append(words.sliced(done));
    return parts;
}

// Whether it ends in the sign that leads back to where it is referred to.
const DocBlock::Item* noteIn(const DocBlock& block)
{
    const auto* item = std::get_if<DocBlock::Item>(&block.value);
    if (!item || item->inlines.empty())
        return nullptr;
    const auto* last = std::get_if<DocInline::Text>(&item->inlines.back().value);
    return last && last->text == backSign && last->marks.link == u"#" ? item : nullptr;
}

// The words of all that has the same link as the inline at `at`, around it.
QString linkWords(const DocInlines& inlines, size_t at)
{
    const auto linkAt = [&](size_t i) {
        const auto* text = std::get_if<DocInline::Text>(&inlines[i].value);
        return text ? text->marks.link : QString();
    };
    const QString link = linkAt(at);
    size_t from = at, to = at + 1;
    while (from > 0 && linkAt(from - 1) == link)
        --from;
    while (to < inlines.size() && linkAt(to) == link)
        ++to;
    QString words;
    for (size_t i = from; i < to; ++i)
        words += std::get<DocInline::Text>(inlines[i].value).text;
    return words;
}

} // namespace

class DocumentPage::Maker
{
public:
    explicit Maker(DocumentPage& page)
        : m_page(page)
    {}

    void addAll(const DocBlocks& blocks)
    {
        for (size_t i = 0; i < blocks.size(); ++i)
            if (const auto* note = noteIn(blocks[i]);
                note && !m_page.m_notes.contains(note->number))
                m_page.m_notes.insert(note->number, i);
        const auto firstNote = std::min_element(m_page.m_notes.cbegin(), m_page.m_notes.cend());
        for (m_row = 0; m_row < blocks.size(); ++m_row) {
            if (firstNote != m_page.m_notes.cend() && *firstNote == m_row && m_row > 0)
                close(styleOf(Block::Divider, 0, false));
            m_page.m_places.push_back(m_blocks);
            add(blocks[m_row], false);
        }
        m_page.m_text = m_text.take();
    }

private:
    // The page of a cell, whose pictures are the document's.
    Maker(DocumentPage& page, size_t row)
        : m_page(page)
        , m_row(row)
    {}

    void close(BlockStyle style)
    {
        ++m_blocks;
        m_text.closeBlock(style == BlockStyle() ? BlockStyleRef()
                                                : std::make_shared<BlockStyle>(std::move(style)));
    }

    void add(const DocBlock& block, bool quoted)
    {
        const auto style = [&](Block kind, int depth = 0) { return styleOf(kind, depth, quoted); };
        std::visit(
            Overloaded{
                [&](const DocBlock::Paragraph& paragraph) {
                    const auto kind = static_cast<Block>(
                        static_cast<int>(Block::Paragraph) + std::clamp(paragraph.level, 0, 6));
                    addInlines(paragraph.inlines,
                        style(quoted && kind == Block::Paragraph ? Block::Quote : kind));
                },
                [&](const DocBlock::Item& item) {
                    BlockStyle made =
                        style(item.ordered ? Block::Ordered : Block::Bullet, item.depth);
                    made.listStart = item.number;
                    addInlines(item.inlines, std::move(made));
                },
                [&](const DocBlock::Task& task) {
                    addInlines(
                        task.inlines, style(task.checked ? Block::Done : Block::Todo, task.depth));
                },
                [&](const DocBlock::Continuation& more) {
                    addInlines(more.inlines, style(Block::Paragraph, more.depth + 1));
                },
                [&](const DocBlock::Table& table) { addTable(table, quoted); },
                [&](const DocBlock::Pre& pre) { addWords(pre.text, {}, style(Block::Code)); },
                [&](const DocBlock::Code& code) { addWords(code.text, {}, style(Block::Code)); },
                [&](const DocBlock::Aside& aside) {
                    addWords(aside.text, Mark::Faint, style(Block::Paragraph));
                },
                [&](const DocBlock::Quote& quote) {
                    for (const DocBlock& inner : quote.blocks)
                        add(inner, true);
                },
                [&](const DocBlock::Section&) {
                    if (m_blocks > 0)
                        close(style(Block::Divider));
                },
                [&](const DocBlock::Rule&) { close(style(Block::Divider)); },
            },
            block.value);
    }

    void addWords(const QString& words, Marks marks, BlockStyle style)
    {
        addRun(words, marks, {});
        close(std::move(style));
    }

    void addRun(const QString& words, Marks marks, const QString& link)
    {
        if (!marks && link.isNull()) {
            m_text.add(words);
            return;
        }
        auto style = std::make_shared<CharStyle>();
        style->marks = marks;
        if (!link.isNull())
            style->link = std::make_shared<const Link>(Link{link, {}});
        m_text.add(words, style);
    }

    void addInlines(const DocInlines& inlines, const BlockStyle& style)
    {
        bool isOpen = false;
        for (size_t i = 0; i < inlines.size(); ++i)
            std::visit(Overloaded{
                           [&](const DocInline::Text&) {
                               addText(inlines, i);
                               isOpen = true;
                           },
                           [&](const DocInline::Checkbox& box) {
                               addRun(box.checked ? checkedBox : emptyBox, {}, {});
                               isOpen = true;
                           },
                           [&](const DocInline::LineBreak&) {
                               m_text.add(QStringView(&lineBreak, 1));
                               isOpen = true;
                           },
                           [&](const DocInline::Picture& picture) {
                               if (std::exchange(isOpen, false))
                                   close(style);
                               addPicture(picture, style);
                           },
                       },
                inlines[i].value);
        if (isOpen || inlines.empty())
            close(style);
    }

    void addText(const DocInlines& inlines, size_t at)
    {
        const auto& text = std::get<DocInline::Text>(inlines[at].value);
        const Marks marks = marksOf(text.marks);
        if (!text.marks.sup || !text.marks.link.isNull()) {
            addRun(text.text, marks, linkOf(inlines, at));
            return;
        }
        for (const QString& part : withReferencesApart(text.text)) {
            const int number = referenceIn(part);
            const bool leads = number > 0 && m_page.m_notes.contains(number);
            if (leads && !m_page.m_references.contains(number))
                m_page.m_references.insert(number, m_row);
            addRun(part, marks, leads ? u'#' + part : QString());
        }
    }

    // Links inside the document go by their words, and back from notes by their numbers.
    QString linkOf(const DocInlines& inlines, size_t at)
    {
        const auto& text = std::get<DocInline::Text>(inlines[at].value);
        if (!text.marks.link.startsWith(u'#'))
            return text.marks.link;
        const auto* note = noteIn(m_page.m_blocks[m_row]);
        if (note && at + 1 == inlines.size() && text.text == backSign)
            return u'#' + text.text + QString::number(note->number);
        return u'#' + linkWords(inlines, at);
    }

    void addPicture(const DocInline::Picture& picture, const BlockStyle& around)
    {
        PagePicture told;
        told.alt = picture->alt;
        if (picture->data) {
            told.src = m_page.m_pictureName + QString::number(m_page.m_pictures.size());
            m_page.m_pictures.push_back(picture);
        } else {
            told.alt = pictureMissing;
        }
        addObject(
            {Type::Image, canonicalJson(pictureNode(told)), {}}, around.depth, around.inQuote);
    }

    void addObject(BlockAttachment object, int depth, bool quoted)
    {
        BlockStyle block = styleOf(Block::Raw, depth, quoted);
        block.raw = object.node;
        auto style = std::make_shared<CharStyle>();
        style->attachment = std::make_shared<const BlockAttachment>(std::move(object));
        m_text.add(QStringView(&attachmentCharacter, 1), style);
        close(std::move(block));
    }

    void addTable(const DocBlock::Table& table, bool quoted)
    {
        if (table.rows.empty())
            return;
        auto made = std::make_shared<PageNode>(PageNode::of(Type::Table));
        for (const DocRow& row : table.rows) {
            PageNode& shown = made->content.emplace_back(PageNode::of(Type::TableRow));
            for (const DocCell& cell : row.cells) {
                PageNode& place = shown.content.emplace_back(
                    PageNode::of(row.header ? Type::TableHeader : Type::TableCell));
                if (cell.colSpan > 1 || cell.rowSpan > 1)
                    place.cell = std::make_shared<const Cell>(
                        Cell{std::max(1, cell.colSpan), std::max(1, cell.rowSpan), {}, {}});
                Maker inside(m_page, m_row);
                for (const DocBlock& block : cell.blocks)
                    inside.add(block, false);
                place.content = nodesFromText(inside.m_text.take());
            }
        }
        addObject({Type::Table, {}, std::move(made)}, 0, quoted);
    }

    DocumentPage& m_page;
    size_t m_row = 0;
    qsizetype m_blocks = 0;
    FlatTextBuilder m_text;
};

DocumentPage::DocumentPage(DocBlocks blocks, const QString& name)
    : m_blocks(std::move(blocks))
    , m_pictureName(u"picture:"_s + name + u'/')
{
    Maker(*this).addAll(m_blocks);
}

QByteArray DocumentPage::picture(const QString& src) const
{
    if (!src.startsWith(m_pictureName))
        return {};
    bool isNumber = false;
    const size_t number = QStringView(src).sliced(m_pictureName.size()).toULongLong(&isNumber);
    return isNumber && number < m_pictures.size() ? m_pictures[number]->data.value_or(QByteArray())
                                                  : QByteArray();
}

std::optional<Units> DocumentPage::placeOf(const QString& href) const
{
    const QString words = href.sliced(std::min<qsizetype>(1, href.size()));
    std::optional<size_t> row;
    if (words.startsWith(backSign)) {
        const auto found = m_references.constFind(QStringView(words).sliced(1).toInt());
        if (found != m_references.cend())
            row = *found;
    } else if (words.startsWith(u'[') && words.endsWith(u']')) {
        const auto found = m_notes.constFind(QStringView(words).sliced(1).chopped(1).toInt());
        if (found != m_notes.cend())
            row = *found;
    }
    if (!row)
        row = rowOfLink(m_blocks, words);
    if (!row || *row >= m_places.size())
        return std::nullopt;
    return m_text.block(std::min(m_places[*row], m_text.blockCount() - 1)).start;
}

FlatText documentNote(const QString& heading, const QString& words)
{
    FlatTextBuilder builder;
    auto bold = std::make_shared<CharStyle>();
    bold->marks = Mark::Bold;
    builder.add(heading, bold);
    builder.closeBlock({});
    if (!words.isEmpty()) {
        auto faint = std::make_shared<CharStyle>();
        faint->marks = Mark::Faint;
        builder.add(words, faint);
        builder.closeBlock({});
    }
    return builder.take();
}

} // namespace corvelle
