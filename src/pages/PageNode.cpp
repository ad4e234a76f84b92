#include "pages/PageNode.h"

#include "pages/Json.h"

#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

// By the order of the types.
constexpr std::array<const char*, 19> typeNames = {"paragraph", "heading", "bulletList",
    "orderedList", "taskList", "listItem", "taskItem", "blockquote", "codeBlock", "horizontalRule",
    "table", "tableRow", "tableHeader", "tableCell", "image", "embed", "text", "hardBreak",
    "mention"};

Type typeOf(QByteArrayView name)
{
    const auto found = std::find(typeNames.begin(), typeNames.end(), name);
    return found == typeNames.end() ? Type::Other : static_cast<Type>(found - typeNames.begin());
}

bool isRaw(Type type)
{
    return type == Type::Table || type == Type::Image || type == Type::Embed || type == Type::Other;
}

QString orNone(const JsonValue& value)
{
    return value.isString() ? value.string() : QString();
}

// ---- words ----

QStringView separatorIn(Type type)
{
    switch (type) {
    case Type::TableRow:
        return u"\t";
    case Type::TableCell:
    case Type::TableHeader:
        return u" ";
    case Type::Table:
    case Type::BulletList:
    case Type::OrderedList:
    case Type::TaskList:
        return u"\n";
    default:
        return {};
    }
}

QString plainTextOf(const JsonValue& node)
{
    if (const JsonValue text = node["text"]; text.isString())
        return text.string();
    const JsonValue type = node["type"];
    const QStringView separator =
        type.utf8() == "doc" ? QStringView(u"\n") : separatorIn(typeOf(type.utf8()));
    QString words;
    bool first = true;
    const JsonValue content = node["content"];
    if (!content.isArray())
        return words;
    for (JsonValue child = content.firstChild(); child.exists(); child = child.next()) {
        if (!std::exchange(first, false))
            words += separator;
        words += plainTextOf(child);
    }
    return words;
}

// ---- reading ----

struct TreeReader
{
    PageNodes content(const JsonValue& node)
    {
        PageNodes nodes;
        const JsonValue content = node["content"];
        if (!content.isArray())
            return nodes;
        for (JsonValue child = content.firstChild(); child.exists(); child = child.next())
            nodes.push_back(block(child));
        return nodes;
    }

    PageNode block(const JsonValue& node)
    {
        const JsonValue typeName = node["type"], attrs = node["attrs"];
        PageNode result = PageNode::of(typeName.isString() ? typeOf(typeName.utf8()) : Type::Other);
        if (result.isInline())
            result.type = Type::Other; // out of its place
        if (isRaw(result.type)) {
            if (result.type == Type::Other)
                result.text = orNone(typeName);
            result.raw = node.canonical();
        }
        result.indent = static_cast<quint8>(attrs["indent"].integer(0, 0, 6));
        switch (result.type) {
        case Type::Heading:
            result.level = static_cast<quint8>(attrs["level"].integer(1, 1, 6));
            [[fallthrough]];
        case Type::Paragraph:
            result.name = orNone(attrs["textAlign"]);
            result.content = inlines(node);
            break;
        case Type::CodeBlock:
            result.name = orNone(attrs["language"]);
            for (JsonValue child = node["content"].firstChild(); child.exists();
                 child = child.next())
                result.text += orNone(child["text"]);
            break;
        case Type::OrderedList:
            result.start = attrs["start"].integer(1, 0, 999'999'999);
            result.content = content(node);
            break;
        case Type::TaskItem:
            result.checked = attrs["checked"].isTrue();
            result.content = content(node);
            break;
        case Type::TableHeader:
        case Type::TableCell:
            result.cell = cell(attrs);
            result.content = content(node);
            break;
        case Type::BulletList:
        case Type::TaskList:
        case Type::ListItem:
        case Type::Blockquote:
        case Type::TableRow:
            result.content = content(node);
            break;
        default:
            break;
        }
        return result;
    }

    static std::shared_ptr<const Cell> cell(const JsonValue& attrs)
    {
        Cell cell;
        cell.colspan = attrs["colspan"].integer(1, 1, 1'000);
        cell.rowspan = attrs["rowspan"].integer(1, 1, 1'000);
        cell.align = orNone(attrs["align"]);
        if (const JsonValue width = attrs["colwidth"]; width.isArray())
            cell.colwidth = width.canonical();
        return cell == Cell() ? nullptr : std::make_shared<const Cell>(std::move(cell));
    }

    PageNodes inlines(const JsonValue& node)
    {
        PageNodes nodes;
        const JsonValue content = node["content"];
        if (!content.isArray())
            return nodes;
        for (JsonValue child = content.firstChild(); child.exists(); child = child.next()) {
            const JsonValue typeName = child["type"];
            switch (typeName.isString() ? typeOf(typeName.utf8()) : Type::Other) {
            case Type::Text:
                addText(nodes, child);
                break;
            case Type::HardBreak:
                nodes.push_back(PageNode::of(Type::HardBreak));
                break;
            case Type::Mention:
                nodes.push_back(mention(child["attrs"]));
                break;
            default:
                if (QString words = plainTextOf(child); !words.isEmpty())
                    nodes.push_back(PageNode::ofText(std::move(words)));
            }
        }
        return nodes;
    }

    static PageNode mention(const JsonValue& attrs)
    {
        PageNode node = PageNode::of(Type::Mention);
        node.name = orNone(attrs["id"]);
        for (const char* key : {"label", "title"})
            if (node.text.isEmpty())
                node.text = orNone(attrs[key]);
        if (node.text.isEmpty())
            node.text = u"item"_s;
        return node;
    }

    void addText(PageNodes& nodes, const JsonValue& node)
    {
        PageNode text = PageNode::ofText(orNone(node["text"]));
        if (text.text.isEmpty())
            return;
        for (JsonValue mark = node["marks"].firstChild(); mark.exists(); mark = mark.next()) {
            const QByteArrayView name = mark["type"].utf8();
            if (name == "bold")
                text.marks |= Mark::Bold;
            else if (name == "italic")
                text.marks |= Mark::Italic;
            else if (name == "strike")
                text.marks |= Mark::Strike;
            else if (name == "underline")
                text.marks |= Mark::Underline;
            else if (name == "code")
                text.marks |= Mark::Code;
            else if (name == "link")
                text.link = link(mark["attrs"]);
        }
        nodes.push_back(std::move(text));
    }

    // Neighbours share a link of the same attributes.
    std::shared_ptr<const Link> link(const JsonValue& attrs)
    {
        Link link{orNone(attrs["href"]), attrs.isObject() ? attrs.canonical() : QByteArray("{}")};
        if (!lastLink || *lastLink != link)
            lastLink = std::make_shared<const Link>(std::move(link));
        return lastLink;
    }

    std::shared_ptr<const Link> lastLink;
};

// ---- writing ----

class TreeWriter
{
public:
    TreeWriter(QByteArray& out, const MentionSource& mentions, bool sorted)
        : m_out(out)
        , m_mentions(mentions)
        , m_sorted(sorted)
    {}

    void blocks(const PageNodes& nodes)
    {
        m_out += '[';
        bool first = true;
        for (const PageNode& node : nodes) {
            if (!std::exchange(first, false))
                m_out += ',';
            block(node);
        }
        m_out += ']';
    }

    void block(const PageNode& node)
    {
        if (!node.raw.isEmpty()) {
            m_out += node.raw;
            return;
        }
        if (node.isInline()) {
            inlineNode(node);
            return;
        }
        const QByteArray attrs = attrsOf(node);
        const auto content = [&] {
            if (node.type == Type::CodeBlock) {
                if (node.text.isEmpty())
                    return;
                member("content");
                m_out += "[{\"text\":";
                appendJsonString(m_out, node.text);
                m_out += ",\"type\":\"text\"}]";
            } else if (!node.content.empty()) {
                member("content");
                blocks(node.content);
            }
        };
        object([&] {
            if (!m_sorted)
                type(node.type);
            if (!attrs.isEmpty()) {
                member("attrs");
                m_out += attrs;
            }
            content();
            if (m_sorted)
                type(node.type);
        });
    }

private:
    template<class Members>
    void object(Members members)
    {
        m_out += '{';
        members();
        m_out += '}';
    }
    void member(const char* key)
    {
        if (m_out.back() != '{')
            m_out += ',';
        m_out += '"';
        m_out += key;
        m_out += "\":";
    }
    void stringMember(const char* key, const QString& value)
    {
        member(key);
        if (value.isNull())
            m_out += "null";
        else
            appendJsonString(m_out, value);
    }
    void type(Type type)
    {
        member("type");
        m_out += '"';
        m_out += typeNames[static_cast<size_t>(type)];
        m_out += '"';
    }

    // With the braces; empty when there are none. Keys are in order.
    QByteArray attrsOf(const PageNode& node)
    {
        QByteArray attrs;
        const auto add = [&](const char* key, const QByteArray& value) {
            attrs += attrs.isEmpty() ? '{' : ',';
            attrs += QByteArray("\"") + key + "\":" + value;
        };
        if (node.type == Type::TaskItem)
            add("checked", node.checked ? "true" : "false");
        if (node.type == Type::TableCell || node.type == Type::TableHeader) {
            const Cell plain, &cell = node.cell ? *node.cell : plain;
            if (!cell.align.isEmpty()) {
                QByteArray align;
                appendJsonString(align, cell.align);
                add("align", align);
            }
            add("colspan", QByteArray::number(cell.colspan));
            if (!cell.colwidth.isEmpty())
                add("colwidth", cell.colwidth);
            add("rowspan", QByteArray::number(cell.rowspan));
        }
        if (node.indent > 0)
            add("indent", QByteArray::number(node.indent));
        if (node.type == Type::CodeBlock && !node.name.isEmpty()) {
            QByteArray language;
            appendJsonString(language, node.name);
            add("language", language);
        }
        if (node.type == Type::Heading)
            add("level", QByteArray::number(node.level));
        if (node.type == Type::OrderedList && node.start != 1)
            add("start", QByteArray::number(node.start));
        if (!attrs.isEmpty())
            attrs += '}';
        return attrs;
    }

    void inlineNode(const PageNode& node)
    {
        if (node.type == Type::Mention) {
            mention(node);
            return;
        }
        object([&] {
            if (!m_sorted)
                type(node.type);
            if (node.type == Type::Text) {
                const auto marks = [&] {
                    if (node.marks || node.link) {
                        member("marks");
                        this->marks(node);
                    }
                };
                if (m_sorted)
                    marks();
                stringMember("text", node.text.isNull() ? u""_s : node.text);
                if (!m_sorted)
                    marks();
            }
            if (m_sorted)
                type(node.type);
        });
    }

    void marks(const PageNode& node)
    {
        m_out += '[';
        const auto add = [&](const char* name, const QByteArray& attrs = {}) {
            if (m_out.back() != '[')
                m_out += ',';
            m_out += '{';
            if (m_sorted && !attrs.isEmpty())
                m_out += "\"attrs\":" + attrs + ',';
            m_out += QByteArray("\"type\":\"") + name + '"';
            if (!m_sorted && !attrs.isEmpty())
                m_out += ",\"attrs\":" + attrs;
            m_out += '}';
        };
        if (node.marks & Mark::Bold)
            add("bold");
        if (node.marks & Mark::Italic)
            add("italic");
        if (node.marks & Mark::Strike)
            add("strike");
        if (node.marks & Mark::Underline)
            add("underline");
        if (node.marks & Mark::Code)
            add("code");
        if (node.link)
            add("link", linkAttrs(*node.link));
        m_out += ']';
    }

    static QByteArray linkAttrs(const Link& link)
    {
        if (!link.attrs.isEmpty())
            return link.attrs == "{}" ? QByteArray() : link.attrs;
        QByteArray attrs = "{\"class\":\"text-accent-blue underline underline-offset-2\",\"href\":";
        appendJsonString(attrs, link.href);
        return attrs +
               ",\"rel\":\"noopener noreferrer nofollow\",\"target\":\"_blank\",\"title\":null}";
    }

    void mention(const PageNode& node)
    {
        const MentionFacts facts = m_mentions ? m_mentions(node.name) : MentionFacts();
        object([&] {
            if (!m_sorted)
                type(node.type);
            member("attrs");
            object([&] {
                stringMember("color", facts.color);
                stringMember("href", facts.href);
                stringMember("icon", facts.icon);
                stringMember("id", node.name);
                stringMember("kind", facts.kind);
                stringMember("label", node.text);
                stringMember("mentionSuggestionChar", u"@"_s);
            });
            if (m_sorted)
                type(node.type);
        });
    }

    QByteArray& m_out;
    const MentionSource& m_mentions;
    const bool m_sorted;
};

QByteArray attrsJson(std::initializer_list<std::pair<const char*, QString>> attrs, const char* type)
{
    QByteArray json = "{\"attrs\":{";
    for (const auto& [key, value] : attrs) {
        if (json.back() != '{')
            json += ',';
        json += QByteArray("\"") + key + "\":";
        if (value.isNull())
            json += "null";
        else
            appendJsonString(json, value);
    }
    return json + "},\"type\":\"" + type + "\"}";
}

} // namespace

PageNode PageNode::ofText(QString text, Marks marks, std::shared_ptr<const Link> link)
{
    PageNode node = of(Type::Text);
    node.text = std::move(text);
    node.marks = marks;
    node.link = std::move(link);
    return node;
}

PageNode PageNode::heading(int level)
{
    PageNode node = of(Type::Heading);
    node.level = static_cast<quint8>(std::clamp(level, 1, 6));
    return node;
}

bool PageNode::operator==(const PageNode& other) const
{
    const auto same = [](const auto& left, const auto& right) {
        return left == right || (left && right && *left == *right);
    };
    return type == other.type && marks == other.marks && level == other.level &&
           indent == other.indent && checked == other.checked && start == other.start &&
           text == other.text && name == other.name && same(link, other.link) &&
           same(cell, other.cell) && raw == other.raw && content == other.content;
}

PagePicture pictureOf(const PageNode& node)
{
    const auto tree = JsonTree::parse(node.raw);
    const JsonValue attrs = tree ? tree->root()["attrs"] : JsonValue();
    return {orNone(attrs["src"]), orNone(attrs["alt"]), orNone(attrs["title"])};
}

PageNode pictureNode(const PagePicture& picture)
{
    PageNode node = PageNode::of(Type::Image);
    node.raw =
        attrsJson({{"alt", picture.alt}, {"src", picture.src}, {"title", picture.title}}, "image");
    return node;
}

PageEmbed embedOf(const PageNode& node)
{
    const auto tree = JsonTree::parse(node.raw);
    const JsonValue attrs = tree ? tree->root()["attrs"] : JsonValue();
    return {orNone(attrs["id"]), orNone(attrs["kind"]), orNone(attrs["label"]),
        orNone(attrs["icon"]), orNone(attrs["href"])};
}

PageNode embedNode(const PageEmbed& embed)
{
    PageNode node = PageNode::of(Type::Embed);
    node.raw = attrsJson({{"href", embed.href}, {"icon", embed.icon}, {"id", embed.id},
                             {"kind", embed.kind}, {"label", embed.label}},
        "embed");
    return node;
}

QString plainText(const PageNode& node)
{
    if (!node.raw.isEmpty()) {
        const auto tree = JsonTree::parse(node.raw);
        return tree ? plainTextOf(tree->root()) : QString();
    }
    if (node.type == Type::Text || node.type == Type::CodeBlock)
        return node.text;
    QString words;
    bool first = true;
    for (const PageNode& child : node.content) {
        if (!std::exchange(first, false))
            words += separatorIn(node.type);
        words += plainText(child);
    }
    return words;
}

// ---- the stored form ----

std::optional<PageTree> pageTree(const QByteArray& json)
{
    const auto tree = JsonTree::parse(json);
    if (!tree || !tree->root().isObject())
        return std::nullopt;
    PageTree page;
    page.content = TreeReader().content(tree->root());
    if (const JsonValue attrs = tree->root()["attrs"]; attrs.isObject())
        page.attrs = attrs.canonical();
    return page;
}

PageNode nodeFromJson(const QByteArray& json)
{
    const auto tree = JsonTree::parse(json);
    return tree ? TreeReader().block(tree->root()) : PageNode::of(Type::Other);
}

PageNodes tableRows(const PageNode& table)
{
    if (table.raw.isEmpty())
        return table.content;
    const auto tree = JsonTree::parse(table.raw);
    return tree ? TreeReader().content(tree->root()) : PageNodes();
}

QByteArray pageJson(
    const PageNodes& content, const QByteArray& attrs, const MentionSource& mentions)
{
    QByteArray json = "{\"type\":\"doc\"";
    if (!attrs.isEmpty())
        json += ",\"attrs\":" + attrs;
    json += ",\"content\":";
    if (content.empty())
        json += "[{\"type\":\"paragraph\"}]";
    else
        TreeWriter(json, mentions, false).blocks(content);
    return json + '}';
}

QByteArray canonicalJson(const PageNode& node, const MentionSource& mentions)
{
    QByteArray json;
    TreeWriter(json, mentions, true).block(node);
    return json;
}

} // namespace corvelle
