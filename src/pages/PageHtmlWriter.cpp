#include "pages/HtmlAttributes.h"
#include "pages/Json.h"
#include "pages/PageHtml.h"

#include <QList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

// In a text the quote stands for itself.
enum class HtmlPlace { Text, Attribute };

void appendEscaped(QString& out, QStringView text, HtmlPlace place)
{
    qsizetype start = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        QLatin1StringView entity;
        switch (text[at].unicode()) {
        case u'&':
            entity = "&amp;"_L1;
            break;
        case u'<':
            entity = "&lt;"_L1;
            break;
        case u'>':
            entity = "&gt;"_L1;
            break;
        case u'"':
            if (place == HtmlPlace::Attribute)
                entity = "&quot;"_L1;
            break;
        default:
            break;
        }
        if (entity.isEmpty())
            continue;
        out += text.sliced(start, at - start);
        out += entity;
        start = at + 1;
    }
    out += text.sliced(start);
}

// Whether a word can stand in a style without being more than a word.
bool isStyleWord(QStringView word)
{
    return !word.isEmpty() && std::all_of(word.begin(), word.end(),
                                  [](QChar c) { return (c >= u'a' && c <= u'z') || c == u'-'; });
}

class HtmlWriter
{
public:
    HtmlWriter(QString& out, const HtmlOptions& options)
        : m_out(out)
        , m_options(options)
    {}

    void blocks(const PageNodes& nodes)
    {
        for (const PageNode& node : nodes)
            block(node);
    }

private:
    // ---- blocks ----

    void block(const PageNode& node)
    {
        switch (node.type) {
        case Type::Paragraph:
            aligned(u"p", node);
            break;
        case Type::Heading: {
            const char16_t name[] = {
                u'h', static_cast<char16_t>(u'0' + std::clamp<int>(node.level, 1, 6))};
            aligned(QStringView(name, 2), node);
            break;
        }
        case Type::BulletList:
            inTag(u"ul", node);
            break;
        case Type::OrderedList:
            m_out += u"<ol";
            if (node.start != 1)
                attribute(u"start", QString::number(node.start));
            m_out += u'>';
            blocks(node.content);
            m_out += u"</ol>";
            break;
        case Type::ListItem:
            inTag(u"li", node);
            break;
        case Type::TaskList:
            m_out += u"<ul class=\"tiptap-task-list\" data-type=\"taskList\">";
            blocks(node.content);
            m_out += u"</ul>";
            break;
        case Type::TaskItem:
            taskItem(node);
            break;
        case Type::Blockquote:
            inTag(u"blockquote", node);
            break;
        case Type::CodeBlock:
            codeBlock(node);
            break;
        case Type::HorizontalRule:
            m_out += u"<hr>";
            break;
        case Type::Table:
            table(node);
            break;
        case Type::TableRow:
            m_out += u"<tr class=\"table__row\">";
            blocks(node.content);
            m_out += u"</tr>";
            break;
        case Type::TableHeader:
        case Type::TableCell:
            cell(node);
            break;
        case Type::Image:
            storedPicture(node);
            break;
        case Type::Embed:
            embed(node);
            break;
        case Type::Text:
        case Type::HardBreak:
        case Type::Mention:
            inlines({node});
            break;
        case Type::Other:
            wordsOf(node);
            break;
        }
    }

    void inTag(QStringView name, const PageNode& node)
    {
        m_out += u'<';
        m_out += name;
        m_out += u'>';
        blocks(node.content);
        endTag(name);
    }
    void endTag(QStringView name)
    {
        m_out += u"</";
        m_out += name;
        m_out += u'>';
    }

    void aligned(QStringView name, const PageNode& node)
    {
        m_out += u'<';
        m_out += name;
        alignment(node.name);
        m_out += u'>';
        inlines(node.content);
        endTag(name);
    }

    void taskItem(const PageNode& node)
    {
        m_out += u"<li class=\"tiptap-task-item\" data-checked=\"";
        m_out += node.checked ? u"true" : u"false";
        m_out += u"\" data-type=\"taskItem\"><label><input type=\"checkbox\"";
        if (node.checked)
            m_out += u" checked=\"checked\"";
        m_out += u"><span></span></label><div>";
        blocks(node.content);
        m_out += u"</div></li>";
    }

    void codeBlock(const PageNode& node)
    {
        m_out += u"<pre><code";
        if (!node.name.isEmpty())
            attribute(u"class", u"language-"_s + node.name);
        m_out += u'>';
        appendEscaped(m_out, node.text, HtmlPlace::Text);
        m_out += u"</code></pre>";
    }

    void storedPicture(const PageNode& node)
    {
        PagePicture it = pictureOf(node);
        if (isScriptAddress(it.src))
            return;
        if (m_options.picture)
            if (const QString own = m_options.picture(it.src); !own.isEmpty())
                it.src = own;
        picture(it);
    }
    void picture(const PagePicture& it)
    {
        m_out += u"<img class=\"rounded-lg max-w-full h-auto\"";
        attribute(u"src", it.src);
        attribute(u"alt", it.alt);
        if (!it.title.isEmpty())
            attribute(u"title", it.title);
        m_out += u'>';
    }

    void embed(const PageNode& node)
    {
        const PageEmbed it = embedOf(node);
        if (m_options.sketch)
            if (const QString src = m_options.sketch(it); !src.isEmpty()) {
                picture({src, u"Sketch"_s, {}});
                return;
            }
        m_out += u"<a data-embed=\"\"";
        attributeIfSet(u"data-id", it.id);
        attributeIfSet(u"data-kind", it.kind);
        attributeIfSet(u"data-icon", it.icon);
        if (!isScriptAddress(it.href))
            attributeIfSet(u"href", it.href);
        m_out += u'>';
        appendEscaped(m_out, it.label, HtmlPlace::Text);
        m_out += u"</a>";
    }

    // Of a block of an unknown type.
    void wordsOf(const PageNode& node)
    {
        const QString words = plainText(node);
        if (words.isEmpty())
            return;
        m_out += u"<p>";
        bool first = true;
        for (const QStringView line : QStringView(words).split(u'\n')) {
            if (!std::exchange(first, false))
                m_out += u"<br>";
            appendEscaped(m_out, line, HtmlPlace::Text);
        }
        m_out += u"</p>";
    }

    // ---- tables ----

    static constexpr int unsetWidth = 25, widestColumn = 100'000;

    // Of the columns under a cell; 0 where none is set.
    static std::vector<int> widthsOf(const Cell& cell)
    {
        const auto count = static_cast<size_t>(std::clamp(cell.colspan, 1, mostTableColumns));
        std::vector<int> widths(count, 0);
        const auto json = JsonTree::parse(cell.colwidth);
        if (!json || !json->root().isArray())
            return widths;
        JsonValue width = json->root().firstChild();
        for (size_t i = 0; i < count && width.exists(); ++i, width = width.next())
            widths[i] = width.integer(0, 0, widestColumn);
        return widths;
    }

    void table(const PageNode& node)
    {
        const PageNodes rows = node.raw.isEmpty() ? PageNodes() : tableRows(node);
        const PageNodes& content = node.raw.isEmpty() ? node.content : rows;
        std::vector<int> widths;
        if (!content.empty())
            for (const PageNode& cell : content.front().content) {
                const std::vector<int> own = widthsOf(cell.cell ? *cell.cell : Cell());
                widths.insert(widths.end(), own.begin(), own.end());
                if (widths.size() >= size_t(mostTableColumns))
                    break;
            }
        widths.resize(std::min(widths.size(), size_t(mostTableColumns)));
        columns(widths);
        blocks(content);
        m_out += u"</tbody></table>";
    }

    void columns(const std::vector<int>& widths)
    {
        const bool allSet = std::find(widths.begin(), widths.end(), 0) == widths.end();
        int sum = 0;
        for (const int width : widths)
            sum += width > 0 ? width : unsetWidth;
        m_out += u"<table class=\"table__content tiptap-table\" style=\"";
        m_out += allSet && !widths.empty() ? u"width: " : u"min-width: ";
        m_out += QString::number(sum) + u"px;\"><colgroup>"_s;
        for (const int width : widths) {
            m_out += width > 0 ? u"<col style=\"width: " : u"<col style=\"min-width: ";
            m_out += QString::number(width > 0 ? width : unsetWidth) + u"px;\">"_s;
        }
        m_out += u"</colgroup><tbody>";
    }

    void cell(const PageNode& node)
    {
        const Cell plain, &it = node.cell ? *node.cell : plain;
        const bool heads = node.type == Type::TableHeader;
        m_out += heads ? u"<th class=\"table__column\"" : u"<td class=\"table__cell\"";
        attribute(u"colspan", QString::number(it.colspan));
        attribute(u"rowspan", QString::number(it.rowspan));
        if (const QString widths = columnWidths(it.colwidth); !widths.isEmpty())
            attribute(u"colwidth", widths);
        alignment(it.align);
        m_out += u'>';
        blocks(node.content);
        endTag(heads ? u"th" : u"td");
    }

    static QString columnWidths(const QByteArray& list)
    {
        QString widths;
        const auto json = JsonTree::parse(list);
        if (!json || !json->root().isArray())
            return widths;
        for (JsonValue one = json->root().firstChild(); one.exists(); one = one.next()) {
            if (!widths.isEmpty())
                widths += u',';
            widths += QString::number(one.integer(0, 0, widestColumn));
        }
        return widths;
    }

    // ---- inline ----

    void inlines(const PageNodes& nodes)
    {
        for (const PageNode& node : nodes) {
            if (node.type == Type::Text) {
                setLook(node.marks, node.link.get());
                appendEscaped(m_out, node.text, HtmlPlace::Text);
                continue;
            }
            setLook({}, nullptr);
            if (node.type == Type::HardBreak)
                m_out += u"<br>";
            else if (node.type == Type::Mention)
                mention(node);
        }
        setLook({}, nullptr);
    }

    struct MarkTag
    {
        Mark mark;
        QStringView name;
    };
    // The first outermost, inside of the link.
    static constexpr MarkTag markTags[] = {{Mark::Bold, u"strong"}, {Mark::Italic, u"em"},
        {Mark::Strike, u"s"}, {Mark::Code, u"code"}, {Mark::Underline, u"u"}};

    // Closes and opens as few marks as will do.
    void setLook(Marks marks, const Link* link)
    {
        if (link && (link->href.isEmpty() || isScriptAddress(link->href)))
            link = nullptr;
        const bool sameLink = link == m_link || (link && m_link && *link == *m_link);
        size_t kept = 0;
        if (sameLink)
            while (kept < std::size(markTags) &&
                   marks.testFlag(markTags[kept].mark) == m_marks.testFlag(markTags[kept].mark))
                ++kept;
        for (size_t i = std::size(markTags); i > kept; --i)
            if (m_marks & markTags[i - 1].mark)
                endTag(markTags[i - 1].name);
        if (!sameLink) {
            if (m_link)
                m_out += u"</a>";
            if (link)
                startLink(*link);
            m_link = link;
        }
        for (size_t i = kept; i < std::size(markTags); ++i)
            if (marks & markTags[i].mark) {
                m_out += u'<';
                m_out += markTags[i].name;
                m_out += u'>';
            }
        m_marks = marks;
    }

    void startLink(const Link& link)
    {
        m_out += u"<a";
        attribute(u"href", link.href);
        if (!link.attrs.isEmpty()) {
            const auto json = JsonTree::parse(link.attrs);
            for (const char* name : {"target", "class", "title"})
                if (const JsonValue value = json ? json->root()[name] : JsonValue();
                    value.isString())
                    attributeIfSet(QString::fromLatin1(name), value.string());
        }
        m_out += u'>';
    }

    void mention(const PageNode& node)
    {
        if (node.name.isEmpty()) {
            appendEscaped(m_out, node.text, HtmlPlace::Text);
            return;
        }
        const MentionFacts facts =
            m_options.mentions ? m_options.mentions(node.name) : MentionFacts();
        m_out += u"<span class=\"mention\" data-type=\"mention\"";
        attribute(u"data-id", node.name);
        attributeIfSet(u"data-label", node.text);
        attributeIfSet(u"data-kind", facts.kind);
        attributeIfSet(u"data-icon", facts.icon);
        attributeIfSet(u"data-color", facts.color);
        if (!isScriptAddress(facts.href))
            attributeIfSet(u"data-href", facts.href);
        attribute(u"data-mention-suggestion-char", u"@");
        m_out += u'>';
        appendEscaped(m_out, node.text, HtmlPlace::Text);
        m_out += u"</span>";
    }

    // ---- attributes ----

    void attribute(QStringView name, QStringView value)
    {
        m_out += u' ';
        m_out += name;
        m_out += u"=\"";
        appendEscaped(m_out, value, HtmlPlace::Attribute);
        m_out += u'"';
    }
    void attributeIfSet(QStringView name, QStringView value)
    {
        if (!value.isEmpty())
            attribute(name, value);
    }
    void alignment(const QString& word)
    {
        if (isStyleWord(word))
            attribute(u"style", u"text-align: "_s + word + u';');
    }

    QString& m_out;
    const HtmlOptions& m_options;
    Marks m_marks; // that are open
    const Link* m_link = nullptr;
};

QStringView fontFamily(const QByteArray& attrs)
{
    const auto json = JsonTree::parse(attrs);
    const QByteArrayView font = json ? json->root()["font"].utf8() : QByteArrayView();
    if (font == "serif")
        return u"ui-serif, Georgia, 'Noto Serif', 'Times New Roman', serif";
    if (font == "mono")
        return u"ui-monospace, 'SF Mono', Menlo, monospace";
    return u"-apple-system, BlinkMacSystemFont, 'Segoe UI', Inter, sans-serif";
}

constexpr QStringView beforeTitle =
    u"<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";

constexpr QStringView restOfStyle =
    u"; color: #1d1d1f; max-width: 720px; margin: 64px auto; padding: 0 24px; }\n"
    "h1 { font-size: 2.2em; line-height: 1.15; letter-spacing: -0.02em; }\n"
    "table { border-collapse: collapse; width: 100%; margin: 12px 0; }\n"
    "th, td { border: 1px solid #e3e3e8; padding: 8px 12px; text-align: left; "
    "vertical-align: top; }\n"
    "th { background: #f4f4f7; font-weight: 500; }\n"
    "td p, th p, li p { margin: 0; }\n"
    "pre { background: #f5f5f7; padding: 14px; border-radius: 12px; overflow: auto; "
    "font: 13px/1.6 ui-monospace, Menlo, monospace; }\n"
    "code { font-family: ui-monospace, Menlo, monospace; }\n"
    "blockquote { border-left: 3px solid #d1d1d6; margin: 8px 0; padding-left: 16px; "
    "color: #555; }\n"
    "ul[data-type=\"taskList\"] { list-style: none; padding-left: 0; }\n"
    "ul[data-type=\"taskList\"] li { display: flex; gap: 8px; }\n"
    "img { max-width: 100%; border-radius: 12px; }\n"
    "a { color: #007bff; }\n"
    "hr { border: 0; border-top: 1px solid #e3e3e8; }\n"
    "</style>\n</head>\n<body>\n<h1>";

} // namespace

QString PageHTML::html(const PageNodes& blocks, const HtmlOptions& options)
{
    QString out;
    HtmlWriter(out, options).blocks(blocks);
    return out;
}

QString PageHTML::file(const PageTree& page, const QString& title, const HtmlOptions& options)
{
    QString out = beforeTitle.toString();
    appendEscaped(out, title, HtmlPlace::Text);
    out += u"</title>\n<style>\nbody { font: 16px/1.65 ";
    out += fontFamily(page.attrs);
    out += restOfStyle;
    appendEscaped(out, title, HtmlPlace::Text);
    out += u"</h1>\n";
    HtmlWriter(out, options).blocks(page.content);
    return out + u"\n</body>\n</html>\n"_s;
}

} // namespace corvelle
