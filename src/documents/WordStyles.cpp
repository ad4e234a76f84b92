#include "documents/WordStyles.h"

namespace corvelle {

namespace {

constexpr int mostLinks = 7; // from one numbering style to the next

} // namespace

Styles Styles::of(XNode root)
{
    Styles styles;
    for (const XNode style : root.children()) {
        const QString id = style.value("w:styleId");
        const auto type = style.attr("w:type");
        if (style.name() != "w:style" || !type || id.isNull())
            continue;
        if (*type == "paragraph")
            styles.paragraph.insert(id, style.child("w:name").value("w:val"));
        else if (*type == "character")
            styles.character.insert(id, style.child("w:name").value("w:val"));
        else if (*type == "numbering")
            styles.numbering.insert(
                id, style.child("w:pPr").child("w:numPr").child("w:numId").value("w:val"));
    }
    return styles;
}

Numbering Numbering::of(XNode root, const Styles& styles)
{
    Numbering numbering;
    numbering.styles = styles;
    for (const XNode node : root.children()) {
        if (node.name() == "w:num") {
            if (node.attr("w:numId") && node.child("w:abstractNumId"))
                numbering.nums.insert(
                    node.value("w:numId"), node.child("w:abstractNumId").value("w:val"));
            continue;
        }
        if (node.name() != "w:abstractNum" || !node.attr("w:abstractNumId"))
            continue;
        Abstract abstract;
        abstract.link = node.child("w:numStyleLink").value("w:val");
        for (const XNode level : node.children()) {
            if (level.name() != "w:lvl" || !level.attr("w:ilvl"))
                continue;
            const QString number = level.value("w:ilvl");
            const bool ordered = level.child("w:numFmt").value("w:val") != u"bullet";
            const QString style = level.child("w:pStyle").value("w:val");
            abstract.levels.insert(number, {ordered, style});
            if (!style.isNull())
                numbering.byStyle.insert(style, {ordered, number.toInt()});
        }
        numbering.abstracts.insert(node.value("w:abstractNumId"), abstract);
    }
    return numbering;
}

std::optional<NumLevel> Numbering::find(const QString& numberId, const QString& level) const
{
    QString id = numberId;
    for (int depth = 0; depth <= mostLinks; ++depth) {
        const auto number = nums.constFind(id);
        if (number == nums.cend())
            return std::nullopt;
        const auto abstract = abstracts.constFind(*number);
        if (abstract == abstracts.cend())
            return std::nullopt;
        if (!abstract->levels.isEmpty() || abstract->link.isNull()) {
            const auto found = abstract->levels.constFind(level);
            if (found == abstract->levels.cend())
                return std::nullopt;
            return NumLevel{found->ordered, level.toInt()};
        }
        id = styles.numbering.value(abstract->link);
    }
    return std::nullopt;
}

std::optional<NumLevel> Numbering::ofParagraph(XNode numberProperties, const QString& styleId) const
{
    const QString level = numberProperties.child("w:ilvl").value("w:val");
    const QString number = numberProperties.child("w:numId").value("w:val");
    if (!level.isNull() && !number.isNull())
        return find(number, level);
    if (const auto found = byStyle.constFind(styleId); found != byStyle.cend())
        return *found;
    return number.isNull() ? std::nullopt : find(number, QStringLiteral("0"));
}

} // namespace corvelle
