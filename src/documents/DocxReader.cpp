#include "documents/DocxReader.h"

#include "documents/DocFlattening.h"

#include <QSet>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// The parts of one Word file.
struct WordParts
{
    BodyReader::Source source;
    Relationships rels;
    XTree main;

    // The children of this are the body.
    XNode body() const
    {
        const XNode root = main.root();
        const XNode body = root.child("w:body");
        return body ? body : root;
    }

    // A part by the type of its relationship, else by its usual name.
    QString partOf(const QString& word) const
    {
        const QString folder = source.base.isEmpty() ? QString() : source.base + u'/';
        const Relationship* found = rels.firstOfType(word);
        return found ? resolvedTarget(source.base, found->target) : folder + word + u".xml"_s;
    }
};

std::optional<WordParts> wordParts(const ZipArchive& zip, Pictures pictures)
{
    const Relationships packageRels = Relationships::of(zip, {});
    const Relationship* main = packageRels.firstOfType(u"officeDocument");
    if (!main)
        return std::nullopt;
    const QString part = main->target.startsWith(u'/') ? main->target.sliced(1) : main->target;
    auto tree = XNode::parse(zip.source(part));
    if (!tree)
        return std::nullopt;

    WordParts parts;
    parts.main = std::move(*tree);
    parts.rels = Relationships::of(zip, part);
    parts.source.zip = zip;
    parts.source.base = folderOf(part);
    parts.source.pictures = pictures;
    parts.source.types = ContentTypes::of(zip);
    if (const auto styles = XNode::parse(zip.source(parts.partOf(u"styles"_s))))
        parts.source.styles = Styles::of(styles->root());
    if (const auto numbering = XNode::parse(zip.source(parts.partOf(u"numbering"_s))))
        parts.source.numbering = Numbering::of(numbering->root(), parts.source.styles);
    return parts;
}

// ---- notes ----

// The notes of one kind, each read when it is asked for.
class NotePart
{
public:
    NotePart(WordParts& parts, const QString& singular)
        : m_source(parts.source)
    {
        const QString part = parts.partOf(singular + u's');
        auto tree = XNode::parse(parts.source.zip.source(part));
        if (!tree)
            return;
        m_tree = std::move(*tree);
        m_rels = Relationships::of(parts.source.zip, part);
        const QByteArray element = "w:" + singular.toUtf8();
        for (const XNode note : m_tree.root().children()) {
            const QString type = note.value("w:type");
            const bool isSeparator = type == u"separator" || type == u"continuationSeparator" ||
                                     type == u"continuationNotice";
            if (note.name() == element && !isSeparator && note.attr("w:id"))
                m_notes.insert(singular + u':' + note.value("w:id"), note);
        }
    }
    NotePart(const NotePart&) = delete;
    NotePart& operator=(const NotePart&) = delete;

    const QHash<QString, XNode>& notes() const { return m_notes; }

    std::optional<DNodes> read(const QString& key) const
    {
        const auto found = m_notes.constFind(key);
        if (found == m_notes.cend())
            return std::nullopt;
        BodyReader reader(m_source, m_rels);
        DNodes nodes;
        for (const XNode child : found->children())
            reader.read(child, nodes);
        reader.finish(nodes);
        return nodes;
    }

private:
    BodyReader::Source& m_source;
    XTree m_tree;
    Relationships m_rels;
    QHash<QString, XNode> m_notes; // by key; nodes of m_tree
};

// ---- what the nodes leave out ----

// Equations and charts below an element.
void scan(XNode node, DocxReader::Opened& into)
{
    if (into.equations && into.charts)
        return;
    const QByteArrayView name = node.name();
    if (name == "m:oMath" || name == "m:oMathPara") {
        into.equations = true;
    } else if (name == "a:graphicData" && !node.value("uri").endsWith(u"/picture") &&
               !node.contains({"pic:pic"})) {
        into.charts = true;
    }
    XNode parent = node;
    if (name == "mc:AlternateContent") {
        const XNode fallback = node.child("mc:Fallback");
        parent = fallback ? fallback : node.child("mc:Choice");
    }
    for (const XNode child : parent.children())
        scan(child, into);
}

bool showsSomething(XNode root)
{
    return root.contains({"w:drawing", "w:pict"}) || !root.allText().trimmed().isEmpty();
}

bool hasHeaders(const WordParts& parts)
{
    QSet<QString> seen;
    for (const Relationship& rel : parts.rels.all()) {
        if (!rel.type.endsWith(u"/header") && !rel.type.endsWith(u"/footer"))
            continue;
        const QString part = resolvedTarget(parts.source.base, rel.target);
        if (seen.contains(part))
            continue;
        seen.insert(part);
        const auto tree = XNode::parse(parts.source.zip.source(part));
        if (tree && showsSomething(tree->root()))
            return true;
    }
    return false;
}

bool hasComments(const WordParts& parts)
{
    const auto tree = XNode::parse(parts.source.zip.source(parts.partOf(u"comments"_s)));
    return tree && tree->root().contains({"w:comment"});
}

// ---- blocks ----

void makeBlocks(WordParts& parts, const std::function<void(DocBlocks&)>& take)
{
    DocFlattening flattening;
    BodyReader reader(parts.source, parts.rels);
    DNodes nodes;
    DocBlocks blocks;
    const auto flush = [&] {
        for (const DNode& node : nodes)
            flattening.add(node, blocks);
        nodes.clear();
        take(blocks);
    };
    for (const XNode child : parts.body().children()) {
        reader.read(child, nodes);
        flush();
    }
    reader.finish(nodes);
    flush();

    std::optional<NotePart> footnotes, endnotes;
    flattening.addNotes(
        [&](const QString& key) {
            auto& part = key.startsWith(u"footnote:") ? footnotes : endnotes;
            if (!part)
                part.emplace(parts, key.section(u':', 0, 0));
            return part->read(key);
        },
        blocks);
    take(blocks);
}

} // namespace

std::optional<DocxReader::Opened> DocxReader::open(const ZipArchive& zip)
{
    auto parts = wordParts(zip, Pictures::Read);
    if (!parts)
        return std::nullopt;
    Opened opened;
    opened.styles = parts->source.styles;
    BodyReader reader(parts->source, parts->rels);
    for (const XNode child : parts->body().children()) {
        reader.read(child, opened.nodes);
        scan(child, opened);
    }
    reader.finish(opened.nodes);
    for (const QString& singular : {u"footnote"_s, u"endnote"_s}) {
        const NotePart part(*parts, singular);
        for (auto note = part.notes().cbegin(); note != part.notes().cend(); ++note) {
            opened.notes.insert(note.key(), part.read(note.key()).value_or(DNodes()));
            scan(*note, opened);
        }
    }
    opened.headers = hasHeaders(*parts);
    opened.comments = hasComments(*parts);
    opened.tracked = parts->main.root().contains(
        {"w:ins", "w:del", "w:moveFrom", "w:moveTo", "w:rPrChange", "w:pPrChange"});
    return opened;
}

std::optional<DocxReader::Opened> DocxReader::open(const QString& path)
{
    return open(ZipArchive::ofFile(path));
}

std::optional<DocBlocks> DocxReader::blocks(const ZipArchive& zip, Pictures pictures)
{
    auto parts = wordParts(zip, pictures);
    if (!parts)
        return std::nullopt;
    DocBlocks all;
    makeBlocks(*parts, [&](DocBlocks& blocks) {
        std::move(blocks.begin(), blocks.end(), std::back_inserter(all));
        blocks.clear();
    });
    return all;
}

std::optional<DocBlocks> DocxReader::blocks(const QString& path, Pictures pictures)
{
    return blocks(ZipArchive::ofFile(path), pictures);
}

bool DocxReader::eachBlock(const ZipArchive& zip, const Each& each)
{
    auto parts = wordParts(zip, Pictures::Skipped);
    if (!parts)
        return false;
    makeBlocks(*parts, [&](DocBlocks& blocks) {
        for (const DocBlock& block : blocks)
            each(block);
        blocks.clear();
    });
    return true;
}

std::optional<QString> DocxReader::text(const ZipArchive& zip)
{
    QString text;
    const bool isRead =
        eachBlock(zip, [&](const DocBlock& block) { text += plainText(block) + u"\n\n"_s; });
    return isRead ? std::optional(text) : std::nullopt;
}

} // namespace corvelle
