// The working form of a page: one text of UTF-16 units in which every block ends in a newline.
//
// The newline carries what the block is; runs of characters carry what they are. U+2028 is a line
// break inside a block, U+FFFC an attachment or a mention. How things are drawn is never in it.
//
// A value: copies share everything, an edit costs O(log n), and any thread may read a copy.
#pragma once

#include "pages/PageNode.h"

#include <QStringView>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace corvelle {

using Units = qsizetype; // places and lengths, in UTF-16 units

constexpr QChar lineBreak(0x2028);
constexpr QChar attachmentCharacter(0xFFFC);

enum class Block : quint8 {
    Paragraph,
    H1,
    H2,
    H3,
    H4,
    H5,
    H6,
    Bullet,
    Ordered,
    Todo,
    Done,
    Quote,
    Code,
    Divider,
    Raw
};
constexpr bool isListKind(Block kind)
{
    return kind >= Block::Bullet && kind <= Block::Done;
}
constexpr bool isHeading(Block kind)
{
    return kind >= Block::H1 && kind <= Block::H6;
}

// What a block is. Shared by its copies; compare by value.
struct BlockStyle
{
    Block kind = Block::Paragraph;
    int depth = 0;
    int listStart = 1;    // Ordered: the same on every item of the list
    bool inQuote = false; // of kinds other than Quote, which are quoted by kind
    QString language;     // Code
    QByteArray raw;       // Raw: the node's canonical JSON
    int rawIndent = 0;    // Raw: how much of the depth that JSON tells by itself

    bool isQuoted() const { return inQuote || kind == Block::Quote; }
    bool operator==(const BlockStyle&) const = default;
};
using BlockStyleRef = std::shared_ptr<const BlockStyle>; // null stands for the plain paragraph

struct Mention
{
    QString id, label;
    bool operator==(const Mention&) const = default;
};

// A block that stands for itself behind one U+FFFC.
struct BlockAttachment
{
    PageNode::Type kind = PageNode::Type::Image; // Table, Image or Embed
    QByteArray node;                             // canonical JSON
    // A table of a document that is only read, in place of the JSON.
    std::shared_ptr<const PageNode> made;
    bool operator==(const BlockAttachment&) const = default;
};

PageNode nodeOf(const BlockAttachment& attachment);

// What a run of characters is.
struct CharStyle
{
    Marks marks;
    std::shared_ptr<const Link> link;
    std::shared_ptr<const Mention> mention;
    std::shared_ptr<const BlockAttachment> attachment;

    bool operator==(const CharStyle& other) const;
};
using CharStyleRef = std::shared_ptr<const CharStyle>; // null stands for plain

class FlatText
{
public:
    FlatText() = default;
    explicit FlatText(QStringView text, CharStyleRef style = {}); // without newlines

    Units length() const;
    bool isEmpty() const { return length() == 0; }

    // Blocks are counted by their newlines; characters behind the last one are a block as well, and
    // the empty text is one empty paragraph.
    qsizetype blockCount() const;
    struct BlockAt
    {
        qsizetype index = 0;
        Units start = 0, end = 0; // the newline stands at the end
        BlockStyleRef style;
        Units length() const { return end - start; }
        const BlockStyle& what() const;
    };
    BlockAt block(qsizetype index) const; // O(log n), as the next
    BlockAt blockAt(Units place) const;   // a place behind all belongs to the last block

    QString text(Units from, Units to) const;
    QString text() const { return text(0, length()); }
    QChar at(Units place) const;
    CharStyleRef styleAt(Units place) const;

    // Calls with pieces of one style, in order; a style may go on in the next piece.
    using RunVisitor = std::function<void(Units at, QStringView text, const CharStyleRef& style)>;
    void eachRun(Units from, Units to, const RunVisitor& visit) const;
    // All blocks from `first` on, in O(1) each, until the visitor gives false.
    void eachBlock(qsizetype first, const std::function<bool(const BlockAt&)>& visit) const;

    FlatText slice(Units from, Units to) const;
    void replace(Units from, Units to, const FlatText& with);
    // The same characters in another style; newlines keep theirs.
    void setStyle(
        Units from, Units to, const std::function<CharStyleRef(const CharStyleRef&)>& change);
    void setBlockStyle(qsizetype index, BlockStyleRef style);

    bool operator==(const FlatText& other) const;

    struct Tree; // its own
    using TreeRef = std::shared_ptr<const Tree>;

private:
    friend class FlatTextBuilder;
    explicit FlatText(TreeRef root)
        : m_root(std::move(root))
    {}

    TreeRef m_root;
};

// Makes a text from its beginning to its end, in linear time.
class FlatTextBuilder
{
public:
    FlatTextBuilder();
    ~FlatTextBuilder();

    // Line ends in the text become U+2028.
    void add(QStringView text, const CharStyleRef& style = {});
    void closeBlock(const BlockStyleRef& style);
    bool isEmpty() const;
    FlatText take();

private:
    struct Leaves;
    std::unique_ptr<Leaves> m_leaves;
};

// A change of a text as a value, told against the text before it.
struct Edit
{
    struct Step
    {
        Units at = 0, removed = 0;
        FlatText inserted;
        bool restyles = false; // the same characters
        bool operator==(const Step&) const = default;
    };
    std::vector<Step> steps; // ascending, without overlap

    bool isEmpty() const { return steps.empty(); }
};

FlatText applied(const Edit& edit, FlatText before);
Edit inverted(const Edit& edit, const FlatText& before);
// One edit that does what the two do in turn.
Edit composed(const Edit& first, const Edit& then);

// On which side of a text that is inserted exactly there a place stays.
enum class Bias { Before, After };
// A place in removed text goes to where that was; a change of style moves nothing.
Units mapped(Units place, const Edit& edit, Bias bias);

} // namespace corvelle
