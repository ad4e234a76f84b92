#include "documents/Package.h"

#include "documents/XNode.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QString extensionOf(const QString& part)
{
    const QString name = part.sliced(part.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot < 0 ? QString() : name.sliced(dot + 1).toLower();
}

QString pictureType(const QString& extension)
{
    static const QHash<QString, QString> types = {{u"png"_s, u"image/png"_s},
        {u"gif"_s, u"image/gif"_s}, {u"jpeg"_s, u"image/jpeg"_s}, {u"jpg"_s, u"image/jpeg"_s},
        {u"tif"_s, u"image/tiff"_s}, {u"tiff"_s, u"image/tiff"_s}, {u"bmp"_s, u"image/bmp"_s},
        {u"webp"_s, u"image/webp"_s}};
    return types.value(extension);
}

} // namespace

Relationships Relationships::of(const ZipArchive& zip, const QString& part)
{
    Relationships found;
    const QString folder = folderOf(part);
    const QString name = (folder.isEmpty() ? QString() : folder + u'/') + u"_rels/"_s +
                         part.sliced(part.lastIndexOf(u'/') + 1) + u".rels"_s;
    const auto tree = XNode::parse(zip.source(name));
    if (!tree)
        return found;
    for (const XNode node : tree->root().children()) {
        if (node.name() != "relationships:Relationship" || !node.attr("Id") || !node.attr("Target"))
            continue;
        found.m_byId.insert(node.value("Id"), static_cast<qsizetype>(found.m_all.size()));
        found.m_all.push_back({node.value("Target"), node.value("Type")});
    }
    return found;
}

const Relationship* Relationships::find(const QString& id) const
{
    const auto found = m_byId.constFind(id);
    return found == m_byId.cend() ? nullptr : &m_all[static_cast<size_t>(*found)];
}

const Relationship* Relationships::firstOfType(QStringView word) const
{
    for (const Relationship& each : m_all)
        if (each.type.endsWith(word) && each.type.chopped(word.size()).endsWith(u'/'))
            return &each;
    return nullptr;
}

ContentTypes ContentTypes::of(const ZipArchive& zip)
{
    ContentTypes types;
    const auto tree = XNode::parse(zip.source(u"[Content_Types].xml"_s));
    if (!tree)
        return types;
    for (const XNode node : tree->root().children()) {
        if (node.name() == "content-types:Default")
            types.m_defaults.insert(node.value("Extension").toLower(), node.value("ContentType"));
        else if (node.name() == "content-types:Override")
            types.m_overrides.insert(node.value("PartName"), node.value("ContentType"));
    }
    return types;
}

QString ContentTypes::typeOf(const QString& part) const
{
    if (const auto found = m_overrides.constFind(u'/' + part); found != m_overrides.cend())
        return *found;
    const QString extension = extensionOf(part);
    if (const auto found = m_defaults.constFind(extension); found != m_defaults.cend())
        return *found;
    return pictureType(extension);
}

QString folderOf(const QString& part)
{
    return part.first(std::max<qsizetype>(0, part.lastIndexOf(u'/')));
}

QString resolvedTarget(const QString& folder, const QString& target)
{
    QStringList steps;
    if (!target.startsWith(u'/'))
        steps = folder.split(u'/', Qt::SkipEmptyParts);
    for (const QString& step : target.split(u'/', Qt::SkipEmptyParts)) {
        if (step == u".."_s) {
            if (!steps.isEmpty())
                steps.removeLast();
        } else if (step != u"."_s) {
            steps.append(step);
        }
    }
    return steps.join(u'/');
}

} // namespace corvelle
