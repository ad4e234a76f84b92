#include "pages/HtmlAttributes.h"
#include "pages/HtmlBlocks.h"
#include "pages/HtmlTokens.h"
#include "pages/HtmlTree.h"
#include "pages/Json.h"
#include "pages/PageHtml.h"

#include <QList>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

constexpr QStringView alignments[] = {u"left", u"center", u"right", u"justify"};

QString knownAlignment(QStringView word, qsizetype count)
{
    const auto* const end = alignments + count;
    return std::find(alignments, end, word) == end ? QString() : word.toString();
}

QString orNull(const QString& text)
{
    return text.isEmpty() ? QString() : text;
}

QByteArray linkAttributes(const QString& href, QStringView attributes)
{
    QByteArray json;
    bool hasMore = false;
    // In the order of the names.
    for (const auto name : {"class"_L1, "href"_L1, "target"_L1, "title"_L1}) {
        const QString value = name == "href"_L1 ? href : htmlAttribute(attributes, name);
        if (value.isEmpty())
            continue;
        hasMore |= name != "href"_L1;
        json += json.isEmpty() ? "{\"" : ",\"";
        json += QByteArray(name.data(), name.size()) + "\":";
        appendJsonString(json, value);
    }
    return hasMore ? json + '}' : QByteArray();
}

// Widths of columns as they stand in an attribute, "100,0,80", as a list in JSON.
QByteArray columnWidths(const QString& text)
{
    const auto parts = QStringView(text).split(u',');
    if (text.isEmpty() || parts.size() > mostTableColumns)
        return {};
    QByteArray json;
    for (const QStringView part : parts) {
        bool valid = false;
        const int width = part.trimmed().toInt(&valid);
        if (!valid || width < 0)
            return {};
        json += (json.isEmpty() ? "[" : ",") + QByteArray::number(width);
    }
    return json + ']';
}

class Reader
{
public:
    explicit Reader(QStringView html)
        : m_tree(html)
    {}

    PageNodes page()
    {
        HtmlBlocks out;
        children(0, {}, out);
        return out.take();
    }

private:
    using Item = HtmlTree::Item;

    // As many tags as the writer needs for what is built. Where they would get too many to be read
    // again, what is in a block stands in its place.
    bool hasRoom(int tags) const
    {
        constexpr int forWords = 8; // a paragraph, a link and five marks, or a mention
        return m_tags + tags + forWords <= HtmlTree::deepest;
    }
    class Room
    {
    public:
        Room(int& used, int tags)
            : m_used(used)
            , m_tags(tags)
        {
            m_used += m_tags;
        }
        Room(const Room&) = delete;
        Room& operator=(const Room&) = delete;
        ~Room() { m_used -= m_tags; }

    private:
        int& m_used;
        const int m_tags;
    };
    static constexpr int tagsOfQuote = 1, tagsOfList = 3, tagsOfTable = 4;

    // ---- walking ----

    template<class Act>
    void eachChild(qint32 parent, Act act)
    {
        for (qint32 child = m_tree[parent].firstChild; child >= 0; child = m_tree[child].next)
            act(child, m_tree[child]);
    }

    void children(qint32 parent, const HtmlLook& look, HtmlBlocks& out)
    {
        for (qint32 child = m_tree[parent].firstChild; child >= 0; child = m_tree[child].next) {
            if (m_tree[child].tag == HtmlTag::Text)
                out.text(m_tree[child].text, look);
            else if (m_tree[child].tag == HtmlTag::Li && hasRoom(tagsOfList))
                child = looseItems(child, look, out);
            else
                element(child, look, out);
        }
    }

    PageNodes blocksIn(qint32 parent, const HtmlLook& look)
    {
        HtmlBlocks out;
        children(parent, look, out);
        return out.take();
    }

    void element(qint32 index, const HtmlLook& outer, HtmlBlocks& out)
    {
        const Item& item = m_tree[index];
        switch (item.tag) {
        case HtmlTag::Br:
            out.lineBreak();
            return;
        case HtmlTag::Hr:
            out.block(PageNode::of(Type::HorizontalRule));
            return;
        case HtmlTag::Img:
            picture(item, out);
            return;
        case HtmlTag::Input:
        case HtmlTag::OtherVoid:
            return;
        case HtmlTag::WordList:
            wordList(index, outer, out);
            return;
        case HtmlTag::Pre:
            out.block(codeBlock(index));
            return;
        default:
            break;
        }
        const QString style = htmlStyle(item.text);
        if (m_inListParagraph && style.contains(u"mso-list:ignore"))
            return;
        const HtmlLook look = lookIn(item, style, outer);
        if (isHeading(item.tag)) {
            PageNode kind =
                PageNode::heading(static_cast<int>(item.tag) - static_cast<int>(HtmlTag::H1) + 1);
            kind.name = knownAlignment(styleWord(style, u"text-align"), 4);
            words(index, look, std::move(kind), out);
            return;
        }
        switch (item.tag) {
        case HtmlTag::P:
            paragraph(index, style, look, out);
            break;
        case HtmlTag::Ul:
        case HtmlTag::Ol:
            if (hasRoom(tagsOfList))
                out.blocks(list(index, look));
            else
                inItsPlace(index, look, out);
            break;
        case HtmlTag::Li:
            out.close();
            children(index, look, out);
            out.close();
            break;
        case HtmlTag::Blockquote:
            quote(index, look, out);
            break;
        case HtmlTag::Table:
            table(index, look, out);
            break;
        case HtmlTag::A:
            anchor(index, look, out);
            break;
        case HtmlTag::Span:
            span(index, look, out);
            break;
        default:
            if (isBlock(item.tag))
                out.close();
            children(index, look, out);
            if (isBlock(item.tag))
                out.close();
        }
    }

    void words(qint32 index, const HtmlLook& look, PageNode kind, HtmlBlocks& out)
    {
        PageNode before = out.setKind(std::move(kind));
        children(index, look, out);
        out.setKind(std::move(before));
    }

    void paragraph(qint32 index, const QString& style, const HtmlLook& look, HtmlBlocks& out)
    {
        if (out.isInHeading()) {
            out.close();
            children(index, look, out);
            out.close();
            return;
        }
        PageNode kind = PageNode::of(Type::Paragraph);
        kind.name = knownAlignment(styleWord(style, u"text-align"), 4);
        words(index, look, std::move(kind), out);
    }

    // Where there is no room for a block around what is in it. Straight into what is being built:
    // on the way up through many such levels it would be moved at each.
    void inItsPlace(qint32 index, const HtmlLook& look, HtmlBlocks& out)
    {
        words(index, look, PageNode::of(Type::Paragraph), out);
    }

    void quote(qint32 index, const HtmlLook& look, HtmlBlocks& out)
    {
        if (!hasRoom(tagsOfQuote)) {
            inItsPlace(index, look, out);
            return;
        }
        const Room room(m_tags, tagsOfQuote);
        PageNodes content = blocksIn(index, look);
        if (!content.empty()) {
            PageNode quote = PageNode::of(Type::Blockquote);
            quote.content = std::move(content);
            out.block(std::move(quote));
        } else {
            out.close();
        }
    }

    // ---- inline ----

    static HtmlLook lookIn(const Item& item, const QString& style, const HtmlLook& outer)
    {
        HtmlLook look = outer;
        switch (item.tag) {
        case HtmlTag::B:
        case HtmlTag::Strong:
            if (!style.contains(u"font-weight:normal") && !style.contains(u"font-weight:400"))
                look.marks |= Mark::Bold;
            break;
        case HtmlTag::I:
        case HtmlTag::Em:
            if (!style.contains(u"font-style:normal"))
                look.marks |= Mark::Italic;
            break;
        case HtmlTag::S:
        case HtmlTag::Strike:
        case HtmlTag::Del:
            look.marks |= Mark::Strike;
            break;
        case HtmlTag::U:
            look.marks |= Mark::Underline;
            break;
        case HtmlTag::Code:
        case HtmlTag::Kbd:
        case HtmlTag::Samp:
        case HtmlTag::Tt:
            look.marks |= Mark::Code;
            break;
        default:
            break;
        }
        if (style.isEmpty())
            return look;
        if (isBold(style))
            look.marks |= Mark::Bold;
        if (style.contains(u"font-style:italic"))
            look.marks |= Mark::Italic;
        if (style.contains(u"line-through"))
            look.marks |= Mark::Strike;
        return look;
    }

    static bool isBold(QStringView style)
    {
        constexpr QStringView property = u"font-weight:";
        for (qsizetype at = 0; (at = style.indexOf(property, at)) >= 0;) {
            at += property.size();
            const QStringView weight = style.sliced(at);
            if (weight.startsWith(u"bold") ||
                (weight.size() >= 3 && weight[0] >= u'5' && weight[0] <= u'9' &&
                    weight.sliced(1).startsWith(u"00")))
                return true;
        }
        return false;
    }

    void anchor(qint32 index, const HtmlLook& outer, HtmlBlocks& out)
    {
        const QStringView attributes = m_tree[index].text;
        const QString href = htmlAttribute(attributes, "href"_L1).trimmed();
        if (!htmlAttribute(attributes, "data-embed"_L1).isNull()) {
            out.block(embed(index, isScriptAddress(href) ? QString() : href));
            return;
        }
        if (const QStringView id = itemIdOf(href); !id.isEmpty()) {
            QString label = wordsIn(index);
            if (label.startsWith(u'@'))
                label.remove(0, 1);
            out.mention(mentionNode(id.toString(), label));
            return;
        }
        HtmlLook look = outer;
        if (!href.isEmpty() && !isScriptAddress(href))
            look.link = std::make_shared<const Link>(Link{href, linkAttributes(href, attributes)});
        children(index, look, out);
    }

    void span(qint32 index, const HtmlLook& look, HtmlBlocks& out)
    {
        const QStringView attributes = m_tree[index].text;
        if (!attributes.isEmpty() && htmlAttribute(attributes, "data-type"_L1) == u"mention") {
            if (const QString id = htmlAttribute(attributes, "data-id"_L1); !id.isEmpty()) {
                const QString label = htmlAttribute(attributes, "data-label"_L1);
                out.mention(mentionNode(id, label.isEmpty() ? wordsIn(index) : label));
                return;
            }
        }
        children(index, look, out);
    }

    static PageNode mentionNode(const QString& id, const QString& label)
    {
        PageNode mention = PageNode::of(Type::Mention);
        mention.name = id;
        mention.text = label.isEmpty() ? u"item"_s : label;
        return mention;
    }

    PageNode embed(qint32 index, const QString& href)
    {
        const auto value = [&](QLatin1StringView name) {
            return orNull(htmlAttribute(m_tree[index].text, name));
        };
        return embedNode({value("data-id"_L1), value("data-kind"_L1), orNull(wordsIn(index)),
            value("data-icon"_L1), orNull(href)});
    }

    static void picture(const Item& item, HtmlBlocks& out)
    {
        const QString src = htmlAttribute(item.text, "src"_L1).trimmed();
        if (src.isEmpty() || isScriptAddress(src))
            return;
        out.block(pictureNode({src, orNull(htmlAttribute(item.text, "alt"_L1)),
            orNull(htmlAttribute(item.text, "title"_L1))}));
    }

    // The words in an element, on one line.
    QString wordsIn(qint32 index)
    {
        QString raw;
        const auto gather = [&](auto& self, qint32 parent) -> void {
            eachChild(parent, [&](qint32 child, const Item& item) {
                if (item.tag == HtmlTag::Text)
                    raw += item.text;
                else if (item.tag == HtmlTag::Br || isBlock(item.tag))
                    raw += u' ';
                self(self, child);
            });
        };
        gather(gather, index);
        const QString text = htmlDecoded(raw);
        QString words;
        for (const QChar c : text) {
            const bool blank = isHtmlBlank(c);
            if (!blank || (!words.isEmpty() && !words.endsWith(u' ')))
                words += blank ? QChar(u' ') : c;
        }
        if (words.endsWith(u' '))
            words.chop(1);
        return words;
    }

    // ---- code ----

    PageNode codeBlock(qint32 index)
    {
        PageNode code = PageNode::of(Type::CodeBlock);
        code.name = languageOf(m_tree[index]);
        bool first = true;
        eachChild(index, [&](qint32 child, const Item& item) {
            if (code.name.isEmpty() && item.tag == HtmlTag::Code)
                code.name = languageOf(item);
            QStringView text = item.text;
            if (std::exchange(first, false) && item.tag == HtmlTag::Text)
                text = text.sliced(text.startsWith(u"\r\n") ? 2 : text.startsWith(u'\n') ? 1 : 0);
            codeIn(child, item.tag == HtmlTag::Text ? text : QStringView(), code.text);
        });
        m_lineEnds = false;
        return code;
    }

    // Lines that are elements of their own are lines.
    void codeIn(qint32 index, QStringView text, QString& code)
    {
        const Item& item = m_tree[index];
        if (item.tag == HtmlTag::Text) {
            if (text.isEmpty())
                return;
            if (std::exchange(m_lineEnds, false) && !code.isEmpty())
                code += u'\n';
            code += htmlDecoded(text).replace("\r\n"_L1, "\n"_L1).replace(u'\r', u'\n');
            return;
        }
        if (item.tag == HtmlTag::Br) {
            code += u'\n';
            return;
        }
        const auto endLine = [&] { m_lineEnds = !code.isEmpty() && !code.endsWith(u'\n'); };
        if (isBlock(item.tag))
            endLine();
        eachChild(index, [&](qint32 child, const Item& inner) { codeIn(child, inner.text, code); });
        if (isBlock(item.tag))
            endLine();
    }

    static QString languageOf(const Item& item)
    {
        constexpr QStringView prefix = u"language-";
        const QString classes = htmlAttribute(item.text, "class"_L1);
        qsizetype at = 0;
        while (at < classes.size()) {
            qsizetype end = at;
            while (end < classes.size() && !isHtmlBlank(classes[end]))
                ++end;
            const QStringView word = QStringView(classes).sliced(at, end - at);
            if (word.startsWith(prefix))
                return orNull(word.sliced(prefix.size()).toString());
            at = end + 1;
        }
        return {};
    }

    // ---- lists ----

    // A list on its way: what stands in it outside of its items becomes an item as well.
    struct ListSoFar
    {
        PageNode list;
        HtmlBlocks stray;
        bool fits = true;

        void add(PageNodes content, bool checked = false)
        {
            PageNode item =
                PageNode::of(list.type == Type::TaskList ? Type::TaskItem : Type::ListItem);
            item.checked = checked;
            item.content = std::move(content);
            list.content.push_back(std::move(item));
        }
        void addStray()
        {
            if (PageNodes blocks = stray.take(); !blocks.empty())
                add(std::move(blocks));
        }
        PageNodes take()
        {
            addStray();
            PageNodes result;
            for (PageNode& item : list.content) {
                PageNodes& content = item.content;
                if (!fits)
                    std::move(content.begin(), content.end(), std::back_inserter(result));
                else if (content.empty() || content.front().type != Type::Paragraph)
                    content.insert(content.begin(), PageNode::of(Type::Paragraph));
            }
            if (fits && !list.content.empty())
                result.push_back(std::move(list));
            return result;
        }
    };

    PageNodes list(qint32 index, const HtmlLook& look)
    {
        const Item& item = m_tree[index];
        const bool isTasks =
            htmlAttribute(item.text, "data-type"_L1) == u"taskList" || allBeginWithBox(index);
        const Type type = isTasks                   ? Type::TaskList
                          : item.tag == HtmlTag::Ol ? Type::OrderedList
                                                    : Type::BulletList;
        const Room room(m_tags, tagsOfList);
        ListSoFar soFar{PageNode::of(type), {}};
        if (type == Type::OrderedList)
            soFar.list.start = htmlNumber(item.text, "start"_L1, 1, 0, 999'999'999);
        listChildren(index, look, soFar);
        return soFar.take();
    }

    void listChildren(qint32 parent, const HtmlLook& outer, ListSoFar& soFar)
    {
        eachChild(parent, [&](qint32 child, const Item& item) {
            const auto look = [&] { return lookIn(item, htmlStyle(item.text), outer); };
            switch (item.tag) {
            case HtmlTag::Text:
                soFar.stray.text(item.text, outer);
                break;
            case HtmlTag::Li:
                soFar.addStray();
                soFar.add(
                    blocksIn(child, look()), soFar.list.type == Type::TaskList && isChecked(child));
                break;
            case HtmlTag::Ul:
            case HtmlTag::Ol: {
                soFar.addStray();
                PageNodes nested =
                    hasRoom(tagsOfList) ? list(child, look()) : blocksIn(child, look());
                if (soFar.list.content.empty() && !nested.empty())
                    soFar.add({});
                for (PageNode& node : nested)
                    soFar.list.content.back().content.push_back(std::move(node));
                break;
            }
            case HtmlTag::OtherBlock:
                soFar.stray.close();
                listChildren(child, look(), soFar);
                soFar.stray.close();
                break;
            default:
                element(child, outer, soFar.stray);
            }
        });
    }

    // Items outside of a list make one: what was copied from the middle of a list looks so. Gives
    // the last of them.
    qint32 looseItems(qint32 first, const HtmlLook& outer, HtmlBlocks& out)
    {
        const Room room(m_tags, tagsOfList);
        ListSoFar soFar{PageNode::of(Type::BulletList), {}};
        qint32 last = first;
        for (qint32 child = first; child >= 0; child = m_tree[child].next) {
            const Item& item = m_tree[child];
            if (item.tag == HtmlTag::Li) {
                const HtmlLook look = lookIn(item, htmlStyle(item.text), outer);
                soFar.add(blocksIn(child, look));
                last = child;
            } else if (item.tag != HtmlTag::Text || !isHtmlBlank(item.text)) {
                break;
            }
        }
        out.blocks(soFar.take());
        return last;
    }

    enum class Beginning { Nothing, Box, Other };

    // What an element begins with, its lists and tables aside, and the box when it is one.
    Beginning beginning(qint32 parent, qint32* box)
    {
        for (qint32 child = m_tree[parent].firstChild; child >= 0; child = m_tree[child].next) {
            const Item& item = m_tree[child];
            if (item.tag == HtmlTag::Text) {
                if (!isHtmlBlank(item.text))
                    return Beginning::Other;
            } else if (item.tag == HtmlTag::Input) {
                if (htmlAttribute(item.text, "type"_L1).compare(u"checkbox", Qt::CaseInsensitive))
                    continue;
                *box = child;
                return Beginning::Box;
            } else if (item.tag == HtmlTag::OtherVoid) {
                continue;
            } else if (item.tag == HtmlTag::Ul || item.tag == HtmlTag::Ol ||
                       item.tag == HtmlTag::Table || item.tag == HtmlTag::Li || isVoid(item.tag)) {
                return Beginning::Other;
            } else if (const Beginning inner = beginning(child, box); inner != Beginning::Nothing) {
                return inner;
            }
        }
        return Beginning::Nothing;
    }

    bool allBeginWithBox(qint32 list)
    {
        bool any = false;
        for (qint32 child = m_tree[list].firstChild; child >= 0; child = m_tree[child].next) {
            qint32 box = -1;
            if (m_tree[child].tag != HtmlTag::Li)
                continue;
            if (beginning(child, &box) != Beginning::Box)
                return false;
            any = true;
        }
        return any;
    }

    bool isChecked(qint32 listItem)
    {
        qint32 box = -1;
        return htmlAttribute(m_tree[listItem].text, "data-checked"_L1) == u"true" ||
               (beginning(listItem, &box) == Beginning::Box &&
                   !htmlAttribute(m_tree[box].text, "checked"_L1).isNull());
    }

    // ---- lists of office programs ----

    struct WordItem
    {
        int level = 0;
        bool ordered = false;
        int start = 1;
        PageNodes content;
    };

    void wordList(qint32 index, const HtmlLook& outer, HtmlBlocks& out)
    {
        std::vector<WordItem> items;
        eachChild(index, [&](qint32 child, const Item& item) {
            QString marker = m_tree.listMarker(child);
            if (marker.isEmpty())
                marker = ignoredText(child);
            const bool before = std::exchange(m_inListParagraph, true);
            items.push_back({item.listLevel, isNumber(marker), startOf(marker),
                blocksIn(child, lookIn(item, htmlStyle(item.text), outer))});
            m_inListParagraph = before;
        });
        out.close();
        size_t at = 0;
        while (at < items.size())
            out.blocks(nested(items, at));
    }

    // One list from there on, with those that are deeper inside its items.
    PageNodes nested(std::vector<WordItem>& items, size_t& at)
    {
        const WordItem& first = items[at];
        const bool fits = hasRoom(tagsOfList);
        const Room room(m_tags, fits ? tagsOfList : 0);
        ListSoFar soFar{
            PageNode::of(first.ordered ? Type::OrderedList : Type::BulletList), {}, fits};
        soFar.list.start = first.start;
        const int level = first.level;
        const bool ordered = first.ordered;
        while (at < items.size() && items[at].level >= level) {
            if (items[at].level > level) {
                PageNodes deeper = nested(items, at);
                PageNodes& content = soFar.list.content.back().content;
                std::move(deeper.begin(), deeper.end(), std::back_inserter(content));
            } else if (items[at].ordered == ordered) {
                soFar.add(std::move(items[at++].content));
            } else {
                break;
            }
        }
        return soFar.take();
    }

    // The marker in a paragraph without the comments around it.
    QString ignoredText(qint32 parent)
    {
        QString text;
        eachChild(parent, [&](qint32 child, const Item& item) {
            if (!text.isEmpty() || item.tag == HtmlTag::Text)
                return;
            text = htmlStyle(item.text).contains(u"mso-list:ignore") ? wordsIn(child).trimmed()
                                                                     : ignoredText(child);
        });
        return text;
    }

    static bool isNumber(QStringView marker)
    {
        const qsizetype length = marker.size() - 1;
        if (length < 1 || length > 6 || (marker.back() != u'.' && marker.back() != u')'))
            return false;
        return std::all_of(marker.begin(), marker.end() - 1,
            [](QChar c) { return c.unicode() < 0x80 && c.isLetterOrNumber(); });
    }
    static int startOf(QStringView marker)
    {
        bool valid = false;
        const int number = isNumber(marker) ? marker.chopped(1).toInt(&valid) : 1;
        return valid ? number : 1;
    }

    // ---- tables ----

    struct TableSoFar
    {
        PageNode table = PageNode::of(Type::Table);
        PageNode row = PageNode::of(Type::TableRow);
        HtmlBlocks before; // what stands in it outside of its cells

        void endRow()
        {
            if (!row.content.empty())
                table.content.push_back(std::exchange(row, PageNode::of(Type::TableRow)));
        }
    };

    void table(qint32 index, const HtmlLook& look, HtmlBlocks& out)
    {
        if (!hasRoom(tagsOfTable)) {
            inItsPlace(index, look, out);
            return;
        }
        const Room room(m_tags, tagsOfTable);
        TableSoFar soFar;
        tableChildren(index, look, soFar);
        soFar.endRow();
        out.blocks(soFar.before.take());
        if (!soFar.table.content.empty())
            out.block(std::move(soFar.table));
    }

    void tableChildren(qint32 parent, const HtmlLook& outer, TableSoFar& soFar)
    {
        eachChild(parent, [&](qint32 child, const Item& item) {
            const auto look = [&] { return lookIn(item, htmlStyle(item.text), outer); };
            switch (item.tag) {
            case HtmlTag::Text:
                soFar.before.text(item.text, outer);
                break;
            case HtmlTag::Tr:
                soFar.endRow();
                tableChildren(child, look(), soFar);
                soFar.endRow();
                break;
            case HtmlTag::Th:
            case HtmlTag::Td:
                soFar.row.content.push_back(cell(child, outer));
                break;
            case HtmlTag::None:
            case HtmlTag::OtherBlock:
                soFar.before.close();
                tableChildren(child, look(), soFar);
                soFar.before.close();
                break;
            default:
                element(child, outer, soFar.before);
            }
        });
    }

    PageNode cell(qint32 index, const HtmlLook& outer)
    {
        const Item& item = m_tree[index];
        const QString style = htmlStyle(item.text);
        PageNode node = PageNode::of(item.tag == HtmlTag::Th ? Type::TableHeader : Type::TableCell);
        Cell cell;
        cell.colspan = htmlNumber(item.text, "colspan"_L1, 1, 1, 1'000);
        cell.rowspan = htmlNumber(item.text, "rowspan"_L1, 1, 1, 1'000);
        cell.align = knownAlignment(styleWord(style, u"text-align"), 3);
        if (cell.align.isEmpty())
            cell.align =
                knownAlignment(htmlAttribute(item.text, "align"_L1).trimmed().toLower(), 3);
        cell.colwidth = columnWidths(htmlAttribute(item.text, "colwidth"_L1));
        if (cell != Cell())
            node.cell = std::make_shared<const Cell>(std::move(cell));
        node.content = blocksIn(index, lookIn(item, style, outer));
        if (node.content.empty())
            node.content.push_back(PageNode::of(Type::Paragraph));
        return node;
    }

    const HtmlTree m_tree;
    int m_tags = 0; // that the writer has open around what is being built
    bool m_inListParagraph = false;
    bool m_lineEnds = false; // before the next text of the code
};

} // namespace

PageNodes PageHTML::nodes(const QString& html)
{
    return Reader(html).page();
}

} // namespace corvelle
