// The tree of a page: what its stored JSON, Markdown and HTML are read into and written from.
//
// Values; a node owns its children. Whoever builds a tree bounds its depth.
#pragma once

#include <QByteArray>
#include <QFlags>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace corvelle {

// In the order in which they are written. The last three stand in documents that are only read, and
// in no page.
enum class Mark : quint8 {
    Bold = 1,
    Italic = 2,
    Strike = 4,
    Underline = 8,
    Code = 16,
    Superscript = 32,
    Subscript = 64,
    Faint = 128
};
Q_DECLARE_FLAGS(Marks, Mark)
Q_DECLARE_OPERATORS_FOR_FLAGS(Marks)

struct Link
{
    QString href;
    QByteArray attrs; // all the link came with, as canonical JSON; empty for one that was made here
    bool operator==(const Link&) const = default;
};

// Of a table's cell.
struct Cell
{
    int colspan = 1, rowspan = 1;
    QByteArray colwidth; // canonical JSON, as it came; empty when there is none
    QString align;       // "left", "center", "right"
    bool operator==(const Cell&) const = default;
};

struct PageNode
{
    enum class Type : quint8 {
        Paragraph,
        Heading,
        BulletList,
        OrderedList,
        TaskList,
        ListItem,
        TaskItem,
        Blockquote,
        CodeBlock,
        HorizontalRule,
        Table,
        TableRow,
        TableHeader,
        TableCell,
        Image,
        Embed,
        Text,
        HardBreak,
        Mention,
        Other
    };

    Type type = Type::Paragraph;
    Marks marks;                      // Text
    quint8 level = 0;                 // Heading: 1...6
    quint8 indent = 0;                // a block: 0...6
    bool checked = false;             // TaskItem
    int start = 1;                    // OrderedList
    QString text;                     // Text, CodeBlock; Mention: the label; Other: the type's name
    QString name;                     // CodeBlock: the language; Mention: the id;
                                      // Paragraph, Heading: the alignment, which isn't stored
    std::shared_ptr<const Link> link; // Text
    std::shared_ptr<const Cell> cell; // TableHeader, TableCell; null for the plain one
    QByteArray raw;                   // Table, Image, Embed, Other: the node's canonical JSON. A
                                      // table that was made here has content in its place
    std::vector<PageNode> content;

    static PageNode of(Type type) { return {type, {}, 0, 0, false, 1, {}, {}, {}, {}, {}, {}}; }
    static PageNode ofText(QString text, Marks marks = {}, std::shared_ptr<const Link> link = {});
    static PageNode heading(int level); // clamped to 1...6

    bool isInline() const
    {
        return type == Type::Text || type == Type::HardBreak || type == Type::Mention;
    }
    bool isList() const
    {
        return type == Type::BulletList || type == Type::OrderedList || type == Type::TaskList;
    }
    // By value, links and cells too.
    bool operator==(const PageNode& other) const;
};

using PageNodes = std::vector<PageNode>;

// More columns of a table aren't read, written or shown one by one.
inline constexpr int mostTableColumns = 1'000;

// A picture's attributes, and an embedded item's; from and to the canonical JSON of the node.
struct PagePicture
{
    QString src, alt, title; // null where absent
};
PagePicture pictureOf(const PageNode& node);
PageNode pictureNode(const PagePicture& picture);

struct PageEmbed
{
    QString id, kind, label, icon, href; // null where absent
};
PageEmbed embedOf(const PageNode& node);
PageNode embedNode(const PageEmbed& embed);

// What a mention says of its item besides its label, as the item is now.
struct MentionFacts
{
    QString kind = QStringLiteral("page"); // "folder", "file", "page" or "link"
    QString icon, color, href;             // null where absent
};
// By the item's id.
using MentionSource = std::function<MentionFacts(const QString& id)>;

// The words of a node, as a raw block shows them: cells stand apart by blanks, rows' cells by tabs,
// rows, items and blocks by newlines.
QString plainText(const PageNode& node);

// ---- the stored form ----

// A page as it is stored.
struct PageTree
{
    PageNodes content;
    QByteArray attrs; // the page's own attributes as canonical JSON; empty when there are none
};

// None for what isn't a page: no JSON, or no object at its root.
std::optional<PageTree> pageTree(const QByteArray& json);
// Of one node.
PageNode nodeFromJson(const QByteArray& json);

// The rows of a table, from its content or its JSON.
PageNodes tableRows(const PageNode& table);

// Raw blocks are written as they stand, byte for byte.
QByteArray pageJson(
    const PageNodes& content, const QByteArray& attrs = {}, const MentionSource& mentions = {});
// Of one node, with sorted keys.
QByteArray canonicalJson(const PageNode& node, const MentionSource& mentions = {});

} // namespace corvelle
