#include "pages/RandomPages.h"

#include "pages/Json.h"

#include <array>

using namespace corvelle;
using Type = PageNode::Type;

PageNodes RandomPages::page()
{
    return blocks(0, false, 9);
}

QString RandomPages::words(int most)
{
    static const std::array<const char16_t*, 24> stock = {u"plan", u"Küche", u"über", u"a", u"I",
        u"été", u"日本", u"🍳", u"it’s", u"x_y", u"3*4", u"1.", u"#5", u"[note]", u"a\\b", u"<tag>",
        u"`tick`", u"50%", u"~ok~", u"“so”", u"&amp;", u"|bar|", u"https://x.org/a_b", u"!"};
    QString text;
    for (int i = below(most) + 1; i > 0; --i) {
        if (!text.isEmpty())
            text += u' ';
        text +=
            QString::fromUtf16(stock[static_cast<size_t>(below(static_cast<int>(stock.size())))]);
    }
    return text;
}

PageNodes RandomPages::inlines(bool breaks)
{
    PageNodes nodes;
    static const std::array<const char*, 4> addresses = {
        "https://example.org/", "https://example.org/a(b)c", "mailto:a@b.c", "https://x.org/a b"};
    for (int i = below(4) + 1; i > 0; --i) {
        const bool last = i == 1;
        if (m_can.breaksAnywhere ? oneIn(8) : (breaks && !last && !nodes.empty() && oneIn(8))) {
            nodes.push_back(PageNode::of(Type::HardBreak));
            continue;
        }
        // Marks begin and end on words, so pieces of text stand apart by a plain blank.
        if (!nodes.empty() && nodes.back().type != Type::HardBreak && !m_can.edgeBlanks)
            nodes.push_back(PageNode::ofText(QStringLiteral(" ")));
        if (oneIn(7)) {
            PageNode mention = PageNode::of(Type::Mention);
            mention.name = QStringLiteral("N%1").arg(below(9));
            mention.text = words(2);
            nodes.push_back(std::move(mention));
            continue;
        }
        PageNode text = PageNode::ofText(words(4));
        if (m_can.edgeBlanks && oneIn(4))
            text.text = QStringLiteral("  ") + text.text + u'\t';
        if (oneIn(2))
            text.marks = Marks::fromInt(static_cast<quint8>(below(32)));
        if (text.marks.testFlag(Mark::Code) && !m_can.codeWithMarks)
            text.marks = Mark::Code;
        if (oneIn(5)) {
            const QString href = QString::fromLatin1(addresses[static_cast<size_t>(below(4))]);
            text.link = std::make_shared<const Link>(Link{href, {}});
            if (!m_can.underlinedLinks)
                text.marks &= ~Marks(Mark::Underline);
        }
        nodes.push_back(std::move(text));
    }
    // Neighbours that are alike are one.
    PageNodes joined;
    for (PageNode& node : nodes) {
        if (!joined.empty() && node.type == Type::Text && joined.back().type == Type::Text) {
            PageNode before = joined.back();
            before.text = node.text;
            if (before == node) {
                joined.back().text += node.text;
                continue;
            }
        }
        joined.push_back(std::move(node));
    }
    return joined;
}

PageNodes RandomPages::blocks(int depth, bool inQuote, int most)
{
    PageNodes nodes;
    for (int i = below(most) + 1; i > 0; --i) {
        PageNode node = block(depth, inQuote);
        if (!m_can.neighbourLists && !nodes.empty() &&
            ((node.isList() && nodes.back().isList()) ||
                (node.type == Type::Blockquote && nodes.back().type == Type::Blockquote))) {
            nodes.push_back(PageNode::of(Type::Paragraph));
            nodes.back().content = inlines();
        }
        if (m_can.indents && oneIn(6))
            node.indent = static_cast<quint8>(below(7));
        nodes.push_back(std::move(node));
    }
    return nodes;
}

PageNode RandomPages::list(int depth, bool inQuote)
{
    static const std::array<Type, 3> types = {Type::BulletList, Type::OrderedList, Type::TaskList};
    PageNode node = PageNode::of(types[static_cast<size_t>(below(3))]);
    if (node.type == Type::OrderedList && oneIn(3))
        node.start = below(200);
    for (int i = below(4) + 1; i > 0; --i) {
        PageNode item = PageNode::of(node.type == Type::TaskList ? Type::TaskItem : Type::ListItem);
        item.checked = item.type == Type::TaskItem && oneIn(2);
        PageNode own = PageNode::of(Type::Paragraph);
        if (!m_can.emptyParagraphs || !oneIn(5))
            own.content = inlines();
        if (!m_can.listOrder || !oneIn(6))
            item.content.push_back(std::move(own));
        if (depth < 4 && oneIn(3))
            for (PageNode& each : blocks(depth + 1, inQuote, 2)) {
                if (!m_can.neighbourLists && each.type == Type::Blockquote)
                    continue;
                item.content.push_back(std::move(each));
            }
        node.content.push_back(std::move(item));
    }
    return node;
}

PageNode RandomPages::table()
{
    PageNode table = PageNode::of(Type::Table);
    const int columns = below(4) + 1;
    std::array<const char16_t*, 4> alignments = {u"", u"left", u"center", u"right"};
    std::vector<QString> align;
    for (int i = 0; i < columns; ++i)
        align.push_back(QString::fromUtf16(alignments[static_cast<size_t>(below(4))]));
    for (int r = below(3) + 1, first = r; r > 0; --r) {
        PageNode row = PageNode::of(Type::TableRow);
        for (int c = 0; c < columns; ++c) {
            PageNode cell = PageNode::of(r == first ? Type::TableHeader : Type::TableCell);
            Cell facts;
            facts.align = align[static_cast<size_t>(c)];
            if (m_can.spans && oneIn(5))
                facts.colspan = below(3) + 1;
            if (facts != Cell())
                cell.cell = std::make_shared<const Cell>(facts);
            cell.content.push_back(PageNode::of(Type::Paragraph));
            if (!oneIn(4))
                cell.content.back().content = inlines();
            row.content.push_back(std::move(cell));
        }
        table.content.push_back(std::move(row));
    }
    return table;
}

PageNode RandomPages::raw()
{
    PageNode node = PageNode::of(Type::Other);
    node.text = QStringLiteral("callout%1").arg(below(3));
    node.raw = "{\"attrs\":{\"n\":" + QByteArray::number(++m_count) +
               ".50,\"tone\":\"s\\\"and\"},\"content\":[{\"content\":[{\"text\":";
    appendJsonString(node.raw, words(3));
    node.raw +=
        ",\"type\":\"text\"}],\"type\":\"paragraph\"}],\"type\":\"" + node.text.toUtf8() + "\"}";
    return node;
}

PageNode RandomPages::block(int depth, bool inQuote)
{
    PageNode node = PageNode::of(Type::Paragraph);
    switch (below(12)) {
    case 0:
    case 1:
        if (depth < 5)
            return list(depth, inQuote);
        break;
    case 2:
        node = PageNode::heading(below(6) + 1);
        node.content = inlines(false);
        return node;
    case 3:
        if (depth < 5 && (!inQuote || m_can.nestedQuotes)) {
            node.type = Type::Blockquote;
            node.content = blocks(depth + 1, true, 3);
            return node;
        }
        break;
    case 4:
        node.type = Type::CodeBlock;
        node.text = below(5) ? words(5) + QStringLiteral("\n  ````\n\n") + words(2) : QString();
        node.name = oneIn(2) ? QStringLiteral("python") : QString();
        return node;
    case 5:
        node.type = Type::HorizontalRule;
        return node;
    case 6:
        return table();
    case 7:
        if (m_can.objects) {
            if (oneIn(2))
                return pictureNode({QStringLiteral("data:image/png;base64,AAAA"), words(1), {}});
            return embedNode({QStringLiteral("N7"), QStringLiteral("page"), words(2), {}, {}});
        }
        break;
    case 8:
        if (m_can.unknown)
            return raw();
        break;
    default:
        break;
    }
    if (!m_can.emptyParagraphs || !oneIn(6))
        node.content = inlines();
    return node;
}

QString RandomPages::damagedValue()
{
    static const std::array<const char16_t*, 14> values = {u"null", u"true", u"-1", u"1e400", u"99",
        u"\"\"", u"\"x\\ny\"", u"[]", u"{}", u"[1,[2,{}]]", u"{\"type\":\"text\"}",
        u"{\"type\":\"listItem\"}", u"\"\\u2028\\ufffc\"", u"{\"b\":1,\"a\":2,\"b\":3}"};
    return QString::fromUtf16(values[static_cast<size_t>(below(static_cast<int>(values.size())))]);
}

QByteArray RandomPages::json()
{
    QByteArray json = pageJson(page());
    if (!m_can.damaged)
        return json;
    // Values of the text are exchanged for others that are JSON too.
    for (int i = below(6); i > 0; --i) {
        const qsizetype from = json.indexOf("\":", below(static_cast<int>(json.size())));
        if (from < 0)
            continue;
        const qsizetype begin = from + 2;
        qsizetype end = begin, open = 0;
        bool inString = false;
        for (; end < json.size(); ++end) {
            const char c = json[end];
            if (inString) {
                if (c == '\\')
                    ++end;
                else if (c == '"')
                    inString = false;
                continue;
            }
            if (c == '"')
                inString = true;
            else if (c == '{' || c == '[')
                ++open;
            else if ((c == '}' || c == ']') && --open < 0)
                break;
            else if (c == ',' && open == 0)
                break;
        }
        json.replace(begin, end - begin, damagedValue().toUtf8());
    }
    return json;
}
