#include "pages/PageDocument.h"

#include "base/Text.h"
#include "pages/Json.h"

#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

constexpr qsizetype mostWords = 200'000; // characters
constexpr int mostIndent = 6;

// ---- reading ----

class TextMaker
{
public:
    explicit TextMaker(MadeTables tables)
        : m_tables(tables)
    {}

    void blocks(const PageNodes& nodes, int depth, bool quoted)
    {
        for (const PageNode& node : nodes)
            block(node, depth, quoted);
    }

    FlatText take(bool closeWithParagraph)
    {
        if (closeWithParagraph && !m_endsPlain)
            m_builder.closeBlock(nullptr);
        return m_builder.take();
    }

private:
    void block(const PageNode& node, int depth, bool quoted)
    {
        const int at = depth + node.indent;
        switch (node.type) {
        case Type::Paragraph:
            emitInline(
                node.content, {quoted ? Block::Quote : Block::Paragraph, at, 1, false, {}, {}, 0});
            return;
        case Type::Heading:
            emitInline(
                node.content, {static_cast<Block>(static_cast<int>(Block::H1) + node.level - 1), at,
                                  1, quoted, {}, {}, 0});
            return;
        case Type::BulletList:
        case Type::OrderedList:
        case Type::TaskList:
            for (const PageNode& item : node.content)
                listItem(node, item, at, quoted);
            return;
        case Type::Blockquote:
            blocks(node.content, at, true);
            return;
        case Type::CodeBlock:
            m_builder.add(node.text);
            close({Block::Code, at, 1, quoted, node.name, {}, 0});
            return;
        case Type::HorizontalRule:
            close({Block::Divider, at, 1, quoted, {}, {}, 0});
            return;
        case Type::ListItem:
        case Type::TaskItem:
        case Type::TableRow:
        case Type::TableHeader:
        case Type::TableCell:
        case Type::Text:
        case Type::HardBreak:
        case Type::Mention:
        case Type::Table:
        case Type::Image:
        case Type::Embed:
        case Type::Other:
            raw(node, at, quoted);
            return;
        }
    }

    // The first paragraph is the item's own block; all else stands below it, one deeper.
    void listItem(const PageNode& list, const PageNode& item, int depth, bool quoted)
    {
        BlockStyle style{Block::Bullet, depth, 1, quoted, {}, {}, 0};
        if (list.type == Type::OrderedList) {
            style.kind = Block::Ordered;
            style.listStart = list.start;
        } else if (list.type == Type::TaskList) {
            style.kind = item.checked ? Block::Done : Block::Todo;
        }
        bool hasOwn = false;
        for (const PageNode& child : item.content) {
            if (child.type == Type::Paragraph && !hasOwn) {
                emitInline(child.content, style);
                hasOwn = true;
            } else {
                block(child, depth + 1, quoted);
            }
        }
        if (!hasOwn)
            close(style);
    }

    void raw(const PageNode& node, int depth, bool quoted)
    {
        if (m_tables == MadeTables::Kept && node.type == Type::Table && node.raw.isEmpty()) {
            attach({Type::Table, {}, std::make_shared<const PageNode>(node)});
            close({Block::Raw, depth, 1, quoted, {}, {}, 0});
            return;
        }
        const QByteArray json = node.raw.isEmpty() ? canonicalJson(node) : node.raw;
        const bool isObject =
            node.type == Type::Table || node.type == Type::Image || node.type == Type::Embed;
        if (isObject) {
            attach({node.type, json, {}});
        } else if (const QString words = plainText(node); !words.isEmpty()) {
            m_builder.add(words);
        } else {
            m_builder.add(u'[' + node.text + u']');
        }
        close({Block::Raw, depth, 1, quoted, {}, json, node.indent});
    }

    void attach(BlockAttachment object)
    {
        auto style = std::make_shared<CharStyle>();
        style->attachment = std::make_shared<const BlockAttachment>(std::move(object));
        m_builder.add(QStringView(&attachmentCharacter, 1), style);
    }

    void emitInline(const PageNodes& nodes, const BlockStyle& style)
    {
        for (const PageNode& node : nodes)
            inlineNode(node);
        close(style);
    }

    void inlineNode(const PageNode& node)
    {
        switch (node.type) {
        case Type::Text:
            m_builder.add(node.text, styleOf(node));
            return;
        case Type::HardBreak:
            m_builder.add(QStringView(&lineBreak, 1));
            return;
        case Type::Mention: {
            auto style = std::make_shared<CharStyle>();
            style->mention = std::make_shared<const Mention>(Mention{node.name, node.text});
            m_builder.add(QStringView(&attachmentCharacter, 1), style);
            return;
        }
        default:
            m_builder.add(plainText(node));
        }
    }

    // Few styles stand in a page, each many times.
    CharStyleRef styleOf(const PageNode& node)
    {
        if (!node.marks && !node.link)
            return nullptr;
        if (node.link) {
            auto style = std::make_shared<CharStyle>();
            style->marks = node.marks;
            style->link = node.link;
            return style;
        }
        CharStyleRef& known = m_styles[node.marks.toInt()];
        if (!known) {
            auto style = std::make_shared<CharStyle>();
            style->marks = node.marks;
            known = style;
        }
        return known;
    }

    void close(const BlockStyle& style)
    {
        static const BlockStyle plain;
        m_endsPlain = style == plain;
        if (m_endsPlain)
            m_builder.closeBlock(nullptr);
        else if (m_last && *m_last == style)
            m_builder.closeBlock(m_last);
        else
            m_builder.closeBlock(m_last = std::make_shared<const BlockStyle>(style));
    }

    const MadeTables m_tables;
    FlatTextBuilder m_builder;
    bool m_endsPlain = false;
    BlockStyleRef m_last;
    std::map<quint8, CharStyleRef> m_styles;
};

// ---- writing ----

// One block on its way to a node.
struct Para
{
    const BlockStyle* style = nullptr;
    Block kind = Block::Paragraph;
    int depth = 0; // of the place in the tree where it belongs
    Units from = 0, to = 0;
    QByteArray raw;                       // Raw
    Type attachment = Type::Other;        // Table, Image, Embed: one stands in the text
    std::shared_ptr<const PageNode> made; // in place of what is raw

    bool hasAttachment() const { return attachment != Type::Other; }
};

class NodeMaker
{
public:
    explicit NodeMaker(const FlatText& text)
        : m_text(text)
    {
        m_styles.reserve(static_cast<size_t>(text.blockCount()));
        text.eachBlock(0, [&](const FlatText::BlockAt& block) {
            m_styles.push_back(block.style);
            split(block);
            return true;
        });
    }

    PageNodes take()
    {
        PageNodes nodes;
        build(0, false, m_paras.size(), nodes);
        return nodes;
    }

private:
    // A block attachment in the middle of other text stands for itself.
    void split(const FlatText::BlockAt& block)
    {
        Para whole;
        whole.style = &block.what();
        whole.kind = whole.style->kind;
        // What isn't ours tells its indent itself, and so again wherever it is put.
        whole.depth = std::max(whole.style->depth - whole.style->rawIndent, 0);
        whole.from = block.start;
        whole.to = block.end;
        whole.raw = whole.style->raw;
        struct Found
        {
            Units at;
            std::shared_ptr<const BlockAttachment> attachment;
        };
        std::vector<Found> inside;
        m_text.eachRun(
            block.start, block.end, [&](Units at, QStringView piece, const CharStyleRef& style) {
                if (!style || !style->attachment)
                    return;
                for (qsizetype i = 0; i < piece.size(); ++i) {
                    if (piece[i] != attachmentCharacter)
                        continue;
                    if (whole.kind == Block::Raw && at + i == block.start) {
                        whole.attachment = style->attachment->kind;
                        whole.made = style->attachment->made;
                    } else {
                        inside.push_back({at + i, style->attachment});
                    }
                }
            });
        if (inside.empty()) {
            m_paras.push_back(whole);
            return;
        }
        Para part = whole;
        Units at = whole.from;
        for (const Found& found : inside) {
            part.from = at;
            part.to = found.at;
            if (part.from < part.to)
                m_paras.push_back(part);
            Para object = whole;
            object.kind = Block::Raw;
            object.raw = found.attachment->node;
            object.attachment = found.attachment->kind;
            object.made = found.attachment->made;
            object.from = found.at;
            object.to = at = found.at + 1;
            m_paras.push_back(object);
            part.kind = Block::Paragraph;
            part.raw.clear();
            part.attachment = Type::Other;
            part.made.reset();
        }
        part.from = at;
        part.to = whole.to;
        if (part.from < part.to)
            m_paras.push_back(part);
    }

    bool isQuoted(const Para& para) const { return para.style->isQuoted(); }

    // How deep a block can be told to stand: what is deeper than an indent can say comes up.
    int depthAt(size_t index, int base) const
    {
        return std::min(m_paras[index].depth, base + mostIndent);
    }

    // Appends the nodes of the blocks up to `end` that are at least as deep as `base`. Inside a
    // quote all count as not quoted.
    void build(int base, bool inQuote, size_t end, PageNodes& out)
    {
        while (m_at < end && m_paras[m_at].depth >= base) {
            const Para& para = m_paras[m_at];
            const size_t mark = out.size();
            const int depth = depthAt(m_at, base);
            if (!inQuote && isQuoted(para))
                quote(depth, end, out);
            else if (isListKind(para.kind))
                list(base, inQuote, end, out);
            else
                single(out);
            for (size_t i = mark; i < out.size(); ++i)
                if (out[i].raw.isEmpty())
                    out[i].indent = static_cast<quint8>(depth - base);
        }
    }

    void quote(int depth, size_t end, PageNodes& out)
    {
        size_t last = m_at;
        while (last < end && isQuoted(m_paras[last]) && m_paras[last].depth >= depth)
            ++last;
        PageNode node = PageNode::of(Type::Blockquote);
        build(depth, true, last, node.content);
        if (node.content.empty())
            node.content.push_back(PageNode::of(Type::Paragraph));
        out.push_back(std::move(node));
    }

    static Type listType(Block kind)
    {
        return kind == Block::Bullet    ? Type::BulletList
               : kind == Block::Ordered ? Type::OrderedList
                                        : Type::TaskList;
    }

    void list(int base, bool inQuote, size_t end, PageNodes& out)
    {
        const Para& first = m_paras[m_at];
        const int depth = depthAt(m_at, base);
        PageNode node = PageNode::of(listType(first.kind));
        if (node.type == Type::OrderedList)
            node.start = first.style->listStart;
        while (m_at < end) {
            const Para& para = m_paras[m_at];
            if (depthAt(m_at, base) != depth || !isListKind(para.kind) ||
                listType(para.kind) != node.type || (!inQuote && isQuoted(para)))
                break;
            ++m_at;
            PageNode item =
                PageNode::of(node.type == Type::TaskList ? Type::TaskItem : Type::ListItem);
            item.checked = para.kind == Block::Done;
            item.content.push_back(PageNode::of(Type::Paragraph));
            item.content.front().content = inlineNodes(m_text, para.from, para.to);
            if (m_at < end && depthAt(m_at, base) > depth)
                build(depth + 1, inQuote, end, item.content);
            node.content.push_back(std::move(item));
        }
        out.push_back(std::move(node));
    }

    void single(PageNodes& out)
    {
        const Para& para = m_paras[m_at++];
        switch (para.kind) {
        case Block::Raw:
            raw(para, out);
            return;
        case Block::Divider:
            out.push_back(PageNode::of(Type::HorizontalRule));
            return;
        case Block::Code: {
            PageNode node = PageNode::of(Type::CodeBlock);
            node.text = m_text.text(para.from, para.to).replace(lineBreak, u'\n');
            node.name = para.style->language;
            out.push_back(std::move(node));
            return;
        }
        default: {
            PageNode node = isHeading(para.kind)
                                ? PageNode::heading(
                                      static_cast<int>(para.kind) - static_cast<int>(Block::H1) + 1)
                                : PageNode::of(Type::Paragraph);
            node.content = inlineNodes(m_text, para.from, para.to);
            out.push_back(std::move(node));
        }
        }
    }

    void raw(const Para& para, PageNodes& out)
    {
        Type type = para.attachment;
        bool isLost = para.raw.isEmpty() && !para.made;
        if (!para.hasAttachment() && !isLost) {
            const PageNode parsed = nodeFromJson(para.raw);
            type = parsed.type;
            isLost = type == Type::Table || type == Type::Image ||
                     (type == Type::Other && parsed.text.isEmpty());
        }
        if (!isLost) {
            PageNode node = para.made ? *para.made : PageNode::of(type);
            node.raw = para.raw;
            out.push_back(std::move(node));
        }
        if (!isLost && !para.hasAttachment())
            return;
        // What was typed beside the object, or what is left where it was deleted.
        PageNode beside = PageNode::of(Type::Paragraph);
        beside.content = inlineNodes(m_text, para.from, para.to);
        if (!beside.content.empty())
            out.push_back(std::move(beside));
    }

    const FlatText& m_text;
    std::vector<BlockStyleRef> m_styles; // keeps them
    std::vector<Para> m_paras;
    size_t m_at = 0;
};

QString onOneLine(QString text)
{
    for (QChar& c : text)
        if (c == u'\n' || c == u'\r' || c == lineBreak || c == QChar::ParagraphSeparator)
            c = u' ';
    return text.remove(attachmentCharacter);
}

void addText(PageNodes& nodes, QString text, Marks marks, const std::shared_ptr<const Link>& link)
{
    if (text.isEmpty())
        return;
    if (!nodes.empty()) {
        PageNode& last = nodes.back();
        if (last.type == Type::Text && last.marks == marks &&
            (last.link == link || (last.link && link && *last.link == *link))) {
            last.text += text;
            return;
        }
    }
    nodes.push_back(PageNode::ofText(std::move(text), marks, link));
}

// ---- words ----

QString wordsOf(const JsonValue& node)
{
    if (const JsonValue text = node["text"]; text.isString())
        return text.string();
    const QByteArrayView type = node["type"].utf8();
    if (type == "hardBreak")
        return u"\n"_s;
    if (type == "mention") {
        const JsonValue attrs = node["attrs"];
        return attrs[attrs["label"].isString() ? "label" : "title"].string();
    }
    const JsonValue content = node["content"];
    bool onlyInline = true;
    std::vector<QString> parts;
    if (content.isArray())
        for (JsonValue child = content.firstChild(); child.exists(); child = child.next()) {
            const QByteArrayView kind = child["type"].utf8();
            onlyInline &= kind == "text" || kind == "mention" || kind == "hardBreak";
            parts.push_back(wordsOf(child));
        }
    QString words;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0 && !onlyInline)
            words += u'\n';
        words += parts[i];
    }
    return words;
}

QString wordsOf(const PageNode& node)
{
    if (!node.raw.isEmpty()) {
        const auto tree = JsonTree::parse(node.raw);
        return tree ? wordsOf(tree->root()) : QString();
    }
    switch (node.type) {
    case Type::Text:
    case Type::CodeBlock:
    case Type::Mention:
        return node.text;
    case Type::HardBreak:
        return u"\n"_s;
    default:
        break;
    }
    const bool onlyInline = std::all_of(node.content.begin(), node.content.end(),
        [](const PageNode& child) { return child.isInline(); });
    QString words;
    for (size_t i = 0; i < node.content.size(); ++i) {
        if (i > 0 && !onlyInline)
            words += u'\n';
        words += wordsOf(node.content[i]);
    }
    return words;
}

} // namespace

// ---- settings ----

PageSettings pageSettings(const QByteArray& attrs)
{
    PageSettings settings;
    const auto tree = JsonTree::parse(attrs);
    if (!tree)
        return settings;
    const JsonValue root = tree->root();
    if (root["font"].utf8() == "serif")
        settings.font = PageSettings::Font::Serif;
    else if (root["font"].utf8() == "mono")
        settings.font = PageSettings::Font::Mono;
    settings.smallText = root["smallText"].isTrue();
    settings.fullWidth = root["fullWidth"].isTrue();
    settings.locked = root["locked"].isTrue();
    settings.cover = root["cover"].string();
    return settings;
}

QByteArray withSettings(const QByteArray& attrs, const PageSettings& settings)
{
    std::map<QByteArray, QByteArray> members;
    const auto tree = JsonTree::parse(attrs);
    if (tree)
        for (JsonValue each = tree->root().firstChild(); each.exists(); each = each.next())
            members[each.key().toByteArray()] = each.canonical();
    const auto flag = [](bool set) { return QByteArray(set ? "true" : "null"); };
    using Font = PageSettings::Font;
    members["font"] = settings.font == Font::Serif  ? "\"serif\""
                      : settings.font == Font::Mono ? "\"mono\""
                                                    : "null";
    members["smallText"] = flag(settings.smallText);
    members["fullWidth"] = flag(settings.fullWidth);
    members["locked"] = flag(settings.locked);
    QByteArray cover = "null";
    if (!settings.cover.isEmpty()) {
        cover.clear();
        appendJsonString(cover, settings.cover);
    }
    members["cover"] = cover;
    QByteArray json = "{";
    for (const auto& [key, value] : members) {
        if (json.size() > 1)
            json += ',';
        appendJsonString(json, QByteArrayView(key));
        json += ':' + value;
    }
    return json + '}';
}

// ---- both ways ----

FlatText textFromNodes(const PageNodes& nodes, bool closeWithParagraph, MadeTables tables)
{
    TextMaker maker(tables);
    maker.blocks(nodes, 0, false);
    return maker.take(closeWithParagraph);
}

FlatText textFromJSON(const QByteArray& json)
{
    const auto page = pageTree(json);
    return textFromNodes(page ? page->content : PageNodes());
}

PageNodes inlineNodes(const FlatText& text, Units from, Units to)
{
    PageNodes nodes;
    text.eachRun(from, to, [&](Units, QStringView piece, const CharStyleRef& style) {
        if (style && style->mention) {
            const Mention& mention = *style->mention;
            for (qsizetype i = 0; i < piece.size(); ++i) {
                if (mention.id.isEmpty()) {
                    addText(nodes, onOneLine(mention.label), {}, {});
                    continue;
                }
                PageNode node = PageNode::of(Type::Mention);
                node.name = mention.id;
                node.text = mention.label;
                nodes.push_back(std::move(node));
            }
            return;
        }
        Marks marks = style ? style->marks : Marks();
        const auto link = style ? style->link : nullptr;
        if (link)
            marks &= ~Marks(Mark::Underline);
        while (!piece.isEmpty()) {
            const qsizetype end = piece.indexOf(lineBreak);
            addText(nodes,
                (end < 0 ? piece : piece.left(end)).toString().remove(attachmentCharacter), marks,
                link);
            if (end < 0)
                return;
            nodes.push_back(PageNode::of(Type::HardBreak));
            piece = piece.mid(end + 1);
        }
    });
    return nodes;
}

PageNodes nodesFromText(const FlatText& text)
{
    return NodeMaker(text).take();
}

QByteArray docFromText(const FlatText& text, const QByteArray& attrs, const MentionSource& mentions)
{
    return pageJson(nodesFromText(text), attrs, mentions);
}

QByteArray docAttrs(const QByteArray& json)
{
    const auto tree = JsonTree::parse(json);
    const JsonValue attrs = tree ? tree->root()["attrs"] : JsonValue();
    return attrs.isObject() ? attrs.canonical() : QByteArray();
}

QString allWords(const PageNodes& nodes)
{
    QString words;
    for (const PageNode& node : nodes) {
        if (&node != &nodes.front())
            words += u'\n';
        words += wordsOf(node);
    }
    return words;
}

QString pageWords(const PageNodes& nodes)
{
    return firstCharacters(allWords(nodes), mostWords).toString();
}

QString pageWords(const QByteArray& json)
{
    const auto page = pageTree(json);
    return page ? pageWords(page->content) : QString();
}

} // namespace corvelle
