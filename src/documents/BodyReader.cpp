#include "documents/BodyReader.h"

#include "documents/WordWords.h"
#include "platform/PictureFacts.h"

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int mostColumns = 1'000;
constexpr double widestPicture = 1'400;

bool isSet(XNode property)
{
    return property && isOn(property.attr("w:val"));
}

RunProps runProps(XNode properties, const Styles& styles)
{
    RunProps props;
    props.styleName = styles.character.value(properties.child("w:rStyle").value("w:val"));
    props.bold = isSet(properties.child("w:b"));
    props.italic = isSet(properties.child("w:i"));
    props.strike = isSet(properties.child("w:strike"));
    const auto underline = properties.child("w:u").attr("w:val");
    props.underline = underline && isOn(underline) && *underline != "none";
    props.vertical = properties.child("w:vertAlign").value("w:val");
    return props;
}

bool isTypewriterFont(const QString& name)
{
    const QString lower = name.toLower();
    for (const QStringView word :
        {u"mono"_s, u"consol"_s, u"courier"_s, u"menlo"_s, u"monaco"_s, u"code"_s})
        if (lower.contains(word))
            return true;
    return false;
}

ParagraphLook paragraphLook(XNode paragraph, XNode properties)
{
    ParagraphLook look;
    const XNode line = properties.child("w:pBdr").child("w:left");
    const QString kind = line.value("w:val");
    look.bar = line && kind != u"none" && kind != u"nil";
    const QString fill = properties.child("w:shd").value("w:fill").toUpper();
    if (fill.isNull() || fill == u"AUTO" || fill == u"FFFFFF")
        return look;
    bool hasText = false;
    for (const XNode run : paragraph.children()) {
        if (run.name() != "w:r" || !run.contains({"w:t"}))
            continue;
        hasText = true;
        if (!isTypewriterFont(run.child("w:rPr").child("w:rFonts").value("w:ascii")))
            return look;
    }
    look.code = hasText;
    return look;
}

// A cell that goes on with a merge above gives its row to the cell that began it.
void resolveMerges(DNodes& rows)
{
    std::vector<DNode::Cell*> heads; // by column of the grid; null where no merge is going on
    for (DNode& row : rows) {
        auto& cells = std::get<DNode::Row>(row.value).cells;
        DNodes kept;
        kept.reserve(cells.size()); // the heads' places must last
        size_t column = 0;
        for (DNode& node : cells) {
            auto& cell = std::get<DNode::Cell>(node.value);
            const size_t next = std::min<size_t>(column + size_t(cell.colSpan), mostColumns);
            if (heads.size() < next)
                heads.resize(next, nullptr);
            DNode::Cell* head = column < heads.size() ? heads[column] : nullptr;
            if (cell.vMerge.value_or(false) && head) {
                ++head->rowSpan;
            } else {
                const bool begins = cell.vMerge.has_value() && !*cell.vMerge;
                kept.push_back(std::move(node));
                std::fill(
                    heads.begin() + qsizetype(column), heads.begin() + qsizetype(next), nullptr);
                if (begins && column < heads.size())
                    heads[column] = &std::get<DNode::Cell>(kept.back().value);
            }
            column = next;
        }
        cells = std::move(kept);
    }
}

template<class Kind>
void keepOnly(DNodes& nodes)
{
    std::erase_if(
        nodes, [](const DNode& node) { return !std::holds_alternative<Kind>(node.value); });
}

// What can be drawn, and how large.
void measure(DocPicture& picture)
{
    static const QStringList drawn = {
        u"image/png"_s, u"image/jpeg"_s, u"image/gif"_s, u"image/webp"_s, u"image/bmp"_s};
    if (!picture.raw || !drawn.contains(picture.contentType))
        return;
    const auto size = pictureSize(*picture.raw);
    if (!size || size->isEmpty())
        return;
    const double scale = std::min(widestPicture / size->width(), 1.0);
    picture.width = std::max(1.0, std::floor(size->width() * scale));
    picture.height = std::max(1.0, std::floor(size->height() * scale));
    picture.data = picture.raw;
}

} // namespace

// ---- elements ----

const QHash<QByteArrayView, BodyReader::Handler>& BodyReader::handlers()
{
    using B = BodyReader;
    static const QHash<QByteArrayView, Handler> all = {{"w:p", &B::readParagraph},
        {"w:r", &B::readRun}, {"w:fldChar", &B::readFieldChar},
        {"w:instrText", &B::readInstruction}, {"w:t", &B::readText}, {"w:tab", &B::readTab},
        {"w:noBreakHyphen", &B::readNoBreakHyphen}, {"w:softHyphen", &B::readSoftHyphen},
        {"w:sym", &B::readSymbol}, {"w:hyperlink", &B::readHyperlink}, {"w:tbl", &B::readTable},
        {"w:tr", &B::readRow}, {"w:tc", &B::readCell},
        {"w:footnoteReference", &B::readFootnoteReference},
        {"w:endnoteReference", &B::readEndnoteReference}, {"w:br", &B::readBreak},
        {"w:bookmarkStart", &B::readBookmark}, {"mc:AlternateContent", &B::readAlternate},
        {"w:sdt", &B::readControl}, {"wp:inline", &B::readDrawing}, {"wp:anchor", &B::readDrawing},
        {"v:imagedata", &B::readImageData},
        // As if they weren't there.
        {"w:ins", &B::readChildren}, {"w:moveTo", &B::readChildren},
        {"w:smartTag", &B::readChildren}, {"w:customXml", &B::readChildren},
        {"w:fldSimple", &B::readChildren}, {"w:object", &B::readChildren},
        {"w:drawing", &B::readChildren}, {"w:pict", &B::readChildren},
        {"v:shape", &B::readChildren}, {"v:rect", &B::readChildren}, {"v:group", &B::readChildren},
        {"v:textbox", &B::readChildren}, {"w:txbxContent", &B::readChildren},
        {"w:dir", &B::readChildren}, {"w:bdo", &B::readChildren}};
    return all;
}

void BodyReader::read(XNode node, DNodes& into)
{
    if (const Handler handler = handlers().value(node.name()))
        (this->*handler)(node, into);
}

void BodyReader::readChildren(XNode node, DNodes& into)
{
    for (const XNode child : node.children())
        read(child, into);
}

void BodyReader::finish(DNodes& into)
{
    if (!m_deleted.empty())
        readInto({}, {}, into);
}

void BodyReader::addBlock(DNode block, DNodes& into)
{
    (m_isInParagraph ? m_extra : into).push_back(std::move(block));
}

// ---- paragraphs and runs ----

void BodyReader::readParagraph(XNode node, DNodes& into)
{
    const XNode properties = node.child("w:pPr");
    const XNode mark = properties.child("w:rPr");
    if (mark.child("w:del") || mark.child("w:moveFrom")) {
        for (const XNode child : node.children())
            m_deleted.push_back(child);
        return;
    }
    DNode::Paragraph paragraph;
    paragraph.styleId = properties.child("w:pStyle").value("w:val");
    paragraph.styleName = m_source.styles.paragraph.value(paragraph.styleId);
    paragraph.numbering =
        m_source.numbering.ofParagraph(properties.child("w:numPr"), paragraph.styleId);
    paragraph.look = paragraphLook(node, properties);
    readInto(std::move(paragraph), node, into);
}

void BodyReader::readInto(DNode::Paragraph paragraph, XNode node, DNodes& into)
{
    DNodes outerExtra = std::exchange(m_extra, {});
    const bool wasInParagraph = std::exchange(m_isInParagraph, true);
    for (const XNode child : std::exchange(m_deleted, {}))
        read(child, paragraph.children);
    readChildren(node, paragraph.children);
    m_isInParagraph = wasInParagraph;
    DNodes inside = std::exchange(m_extra, std::move(outerExtra));

    addBlock({std::move(paragraph)}, into);
    for (DNode& block : inside)
        addBlock(std::move(block), into);
}

void BodyReader::readRun(XNode node, DNodes& into)
{
    DNode::Run run{runProps(node.child("w:rPr"), m_source.styles), {}};
    for (const XNode child : node.children()) {
        DNodes found;
        read(child, found);
        if (found.empty())
            continue;
        // A field may begin or end inside of a run: each child for itself.
        if (const QString target = fieldLink(); !target.isNull())
            run.children.push_back({DNode::Hyperlink{target, std::move(found)}});
        else
            std::move(found.begin(), found.end(), std::back_inserter(run.children));
    }
    if (!run.children.empty())
        into.push_back({std::move(run)});
}

void BodyReader::readText(XNode node, DNodes& into)
{
    into.push_back({DNode::Text{node.allText()}});
}

void BodyReader::readTab(XNode, DNodes& into)
{
    into.push_back({DNode::Tab{}});
}

void BodyReader::readNoBreakHyphen(XNode, DNodes& into)
{
    into.push_back({DNode::Text{QString(QChar(0x2011))}});
}

void BodyReader::readSoftHyphen(XNode, DNodes& into)
{
    into.push_back({DNode::Text{QString(QChar(QChar::SoftHyphen))}});
}

void BodyReader::readSymbol(XNode node, DNodes& into)
{
    const QString text = symbolText(node.value("w:font"), node.value("w:char"));
    if (!text.isEmpty())
        into.push_back({DNode::Text{text}});
}

void BodyReader::readHyperlink(XNode node, DNodes& into)
{
    DNodes children;
    readChildren(node, children);
    const QString anchor = node.value("w:anchor");
    QString target = anchor.isNull() ? QString() : u'#' + anchor;
    if (const Relationship* outside = m_rels.find(node.value("r:id")))
        target = anchor.isNull() ? outside->target : outside->target.section(u'#', 0, 0) + target;
    if (target.isNull())
        std::move(children.begin(), children.end(), std::back_inserter(into));
    else
        into.push_back({DNode::Hyperlink{target, std::move(children)}});
}

void BodyReader::readFootnoteReference(XNode node, DNodes& into)
{
    into.push_back({DNode::NoteRef{u"footnote:"_s + node.value("w:id")}});
}

void BodyReader::readEndnoteReference(XNode node, DNodes& into)
{
    into.push_back({DNode::NoteRef{u"endnote:"_s + node.value("w:id")}});
}

void BodyReader::readBreak(XNode node, DNodes& into)
{
    const auto type = node.attr("w:type");
    if (!type || *type == "textWrapping")
        into.push_back({DNode::LineBreak{}});
}

void BodyReader::readBookmark(XNode node, DNodes& into)
{
    if (node.value("w:name") != u"_GoBack")
        into.push_back({DNode::Bookmark{}});
}

void BodyReader::readAlternate(XNode node, DNodes& into)
{
    readChildren(node.child("mc:Fallback"), into);
}

void BodyReader::readControl(XNode node, DNodes& into)
{
    if (const XNode box = node.child("w:sdtPr").child("wordml:checkbox")) {
        const XNode checked = box.child("wordml:checked");
        into.push_back({DNode::Checkbox{checked && isOn(checked.attr("wordml:val"))}});
        return;
    }
    readChildren(node.child("w:sdtContent"), into);
}

// ---- fields ----

QString BodyReader::fieldLink() const
{
    const int link = m_fields.empty() ? -1 : m_fields.back().link;
    return link < 0 ? QString() : m_fields[size_t(link)].target;
}

void BodyReader::classify(Field& field)
{
    if (const auto target = hyperlinkTarget(field.instr)) {
        field.kind = Field::Kind::Hyperlink;
        field.target = target->isNull() ? u""_s : *target;
        field.link = int(&field - m_fields.data());
    } else if (field.instr.contains(u"FORMCHECKBOX")) {
        const XNode box = field.begin.child("w:ffData").child("w:checkBox");
        const XNode checked = box.child("w:checked");
        field.kind = Field::Kind::Checkbox;
        field.checked = isSet(checked ? checked : box.child("w:default"));
    } else {
        field.kind = Field::Kind::Other;
    }
}

void BodyReader::readFieldChar(XNode node, DNodes& into)
{
    const auto type = node.attr("w:fldCharType");
    if (!type)
        return;
    if (*type == "begin") {
        Field field;
        field.begin = node;
        field.link = m_fields.empty() ? -1 : m_fields.back().link;
        m_fields.push_back(std::move(field));
        return;
    }
    if (m_fields.empty() || (*type != "separate" && *type != "end"))
        return;
    if (m_fields.back().kind == Field::Kind::Begin)
        classify(m_fields.back());
    if (*type == "separate")
        return;
    const Field field = std::move(m_fields.back());
    m_fields.pop_back();
    if (field.kind == Field::Kind::Checkbox)
        into.push_back({DNode::Checkbox{field.checked}});
}

void BodyReader::readInstruction(XNode node, DNodes&)
{
    if (!m_fields.empty() && m_fields.back().kind == Field::Kind::Begin)
        m_fields.back().instr += node.allText();
}

// ---- pictures ----

void BodyReader::readDrawing(XNode node, DNodes& into)
{
    const XNode about = node.child("wp:docPr");
    QString alt = about.value("descr").trimmed();
    if (alt.isEmpty())
        alt = about.value("title").trimmed();
    const Relationship* link = m_rels.find(about.child("a:hlinkClick").value("r:id"));
    for (const XNode graphic : node.descendants("a:graphic")) {
        const XNode blip =
            graphic.child("a:graphicData").child("pic:pic").child("pic:blipFill").child("a:blip");
        if (!blip)
            continue;
        const QString id = blip.attr("r:embed") ? blip.value("r:embed") : blip.value("r:link");
        const auto found = picture(id);
        found->alt = alt.isEmpty() ? QString() : alt;
        found->link = link ? link->target : QString();
        into.push_back({found});
    }
}

void BodyReader::readImageData(XNode node, DNodes& into)
{
    if (node.attr("r:id"))
        into.push_back({picture(node.value("r:id"))});
}

DNode::Picture BodyReader::picture(const QString& relationship)
{
    const Relationship* rel = m_rels.find(relationship);
    if (!rel)
        return std::make_shared<DocPicture>();
    const QString part = resolvedTarget(m_source.base, rel->target);
    auto found = m_source.readPictures.find(part);
    if (found == m_source.readPictures.end()) {
        DocPicture read;
        read.contentType = m_source.types.typeOf(part);
        if (m_source.pictures == Pictures::Read) {
            read.raw = m_source.zip.read(part);
            measure(read);
        }
        found = m_source.readPictures.insert(part, read);
    }
    return std::make_shared<DocPicture>(*found);
}

// ---- tables ----

void BodyReader::readTable(XNode node, DNodes& into)
{
    DNode::Table table;
    readChildren(node, table.rows);
    keepOnly<DNode::Row>(table.rows);
    resolveMerges(table.rows);
    addBlock({std::move(table)}, into);
}

void BodyReader::readRow(XNode node, DNodes& into)
{
    const XNode properties = node.child("w:trPr");
    if (properties.child("w:del"))
        return;
    DNode::Row row{bool(properties.child("w:tblHeader")), {}};
    readChildren(node, row.cells);
    keepOnly<DNode::Cell>(row.cells);
    into.push_back({std::move(row)});
}

void BodyReader::readCell(XNode node, DNodes& into)
{
    const XNode properties = node.child("w:tcPr");
    DNode::Cell cell;
    const int span = properties.child("w:gridSpan").value("w:val").toInt();
    cell.colSpan = span == 0 ? 1 : std::clamp(span, 1, mostColumns);
    if (const XNode merge = properties.child("w:vMerge")) {
        const auto kind = merge.attr("w:val");
        cell.vMerge = !kind || *kind == "continue";
    }
    const bool wasInParagraph = std::exchange(m_isInParagraph, false);
    readChildren(node, cell.children);
    finish(cell.children);
    m_isInParagraph = wasInParagraph;
    into.push_back({std::move(cell)});
}

} // namespace corvelle
