#include "app/NodeJson.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QJsonValue orNull(const QString& text)
{
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

template<class T>
QJsonValue orNull(const std::optional<T>& value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

} // namespace

QJsonObject nodeJson(const Node& node, const SeenFile& seen, bool inTrash)
{
    // An identifier uses all 64 bits, which a JSON number doesn't hold.
    const QJsonValue fileID =
        seen.fileID ? QJsonValue(QString::number(*seen.fileID)) : QJsonValue();
    return {
        {u"id"_s, node.id},
        {u"spaceID"_s, node.spaceID},
        {u"parentID"_s, node.parentID.isEmpty() ? QJsonValue() : QJsonValue(node.parentID)},
        {u"kind"_s, word(node.kind)},
        {u"title"_s, node.title},
        {u"icon"_s, orNull(node.icon)},
        {u"color"_s, word(node.color)},
        {u"x"_s, node.x},
        {u"y"_s, node.y},
        {u"position"_s, node.position},
        {u"path"_s, orNull(node.path)},
        {u"createdAt"_s, node.createdAt},
        {u"updatedAt"_s, node.updatedAt},
        {u"deletedAt"_s, orNull(node.deletedAt)},
        {u"mime"_s, orNull(node.mime)},
        {u"byteSize"_s, orNull(node.byteSize)},
        {u"width"_s, orNull(node.width)},
        {u"height"_s, orNull(node.height)},
        {u"url"_s, orNull(node.url)},
        {u"fileID"_s, fileID},
        {u"fileModified"_s, orNull(seen.modified)},
        {u"inTrash"_s, inTrash},
    };
}

} // namespace corvelle
