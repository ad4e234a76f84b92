#include "library/Change.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <array>
#include <cmath>
#include <type_traits>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// In the order of the variant.
constexpr std::array<QLatin1StringView, std::variant_size_v<Change>> words = {"made"_L1,
    "trashed"_L1, "restored"_L1, "renamed"_L1, "colored"_L1, "moved"_L1, "placed"_L1, "fans"_L1,
    "fileEdit"_L1, "finderVersion"_L1, "coworker"_L1, "notes"_L1};

// ---- writing ----

QJsonValue written(const QString& text)
{
    return text;
}
QJsonValue written(double number)
{
    return number;
}
QJsonValue written(const QJsonValue& value)
{
    return value;
}
QJsonValue written(const QPointF& point)
{
    return QJsonArray{point.x(), point.y()};
}
QJsonValue written(const Place& place)
{
    QJsonObject json{{u"x"_s, place.x}, {u"y"_s, place.y}, {u"position"_s, place.position}};
    if (!place.parent.isEmpty())
        json[u"parent"_s] = place.parent;
    return json;
}
template<class T>
QJsonValue written(const Pair<T>& pair)
{
    QJsonObject json;
    if (const QJsonValue from = written(pair.from); !from.isNull())
        json[u"from"_s] = from;
    if (const QJsonValue to = written(pair.to); !to.isNull())
        json[u"to"_s] = to;
    return json;
}
template<class T>
QJsonValue written(const std::map<QString, T>& map)
{
    QJsonObject json;
    for (const auto& [id, value] : map)
        json[id] = written(value);
    return json;
}
QJsonValue written(const std::vector<QString>& texts)
{
    QJsonArray json;
    for (const QString& text : texts)
        json.append(text);
    return json;
}

// ---- reading ----

bool read(const QJsonValue& json, QString& text)
{
    text = json.toString();
    return json.isString();
}
bool read(const QJsonValue& json, double& number)
{
    number = json.toDouble();
    return json.isDouble() && std::isfinite(number);
}
bool read(const QJsonValue& json, QJsonValue& value)
{
    value = json.isUndefined() ? QJsonValue() : json;
    return true;
}
bool read(const QJsonValue& json, QPointF& point)
{
    const QJsonArray pair = json.toArray();
    double x = 0, y = 0;
    if (pair.size() != 2 || !read(pair[0], x) || !read(pair[1], y))
        return false;
    point = QPointF(x, y);
    return true;
}
bool read(const QJsonValue& json, Place& place)
{
    const QJsonObject object = json.toObject();
    const QJsonValue parent = object[u"parent"];
    if (!parent.isUndefined() && !parent.isNull() && !read(parent, place.parent))
        return false;
    return read(object[u"x"], place.x) && read(object[u"y"], place.y) &&
           read(object[u"position"], place.position);
}
template<class T>
bool read(const QJsonValue& json, Pair<T>& pair)
{
    const QJsonObject object = json.toObject();
    return json.isObject() && read(object[u"from"], pair.from) && read(object[u"to"], pair.to);
}
template<class T>
bool read(const QJsonValue& json, std::map<QString, T>& map)
{
    if (!json.isObject())
        return false;
    const QJsonObject object = json.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        if (!read(entry.value(), map[entry.key()]))
            return false;
    return true;
}
bool read(const QJsonValue& json, std::vector<QString>& texts)
{
    if (!json.isArray())
        return false;
    for (const QJsonValue& value : json.toArray())
        if (!read(value, texts.emplace_back()))
            return false;
    return true;
}

// ---- the fields of each case ----

// Calls `field` with the key and the member of each field, until one says no.
template<class Case, class Field>
bool eachField(Case& c, Field field)
{
    using Plain = std::remove_const_t<Case>;
    if constexpr (std::is_same_v<Plain, change::Made>)
        return field("_0", c.ids);
    else if constexpr (std::is_same_v<Plain, change::Trashed>)
        return field("_0", c.times);
    else if constexpr (std::is_same_v<Plain, change::Restored>)
        return field("_0", c.times) && field("parents", c.parents);
    else if constexpr (std::is_same_v<Plain, change::Renamed>)
        return field("_0", c.id) && field("_1", c.title);
    else if constexpr (std::is_same_v<Plain, change::Colored>)
        return field("_0", c.colors);
    else if constexpr (std::is_same_v<Plain, change::Moved>)
        return field("_0", c.places);
    else if constexpr (std::is_same_v<Plain, change::Placed>)
        return field("_0", c.points);
    else if constexpr (std::is_same_v<Plain, change::Fans>)
        return field("_0", c.fans);
    else if constexpr (std::is_same_v<Plain, change::FileEdit>)
        return field("_0", c.id) && field("version", c.version) && field("stamp", c.stamp);
    else if constexpr (std::is_same_v<Plain, change::FinderVersion>)
        return field("_0", c.id) && field("copy", c.copy) && field("original", c.original) &&
               field("bookmark", c.bookmark) && field("title", c.title);
    else if constexpr (std::is_same_v<Plain, change::Coworker>)
        return field("_0", c.turn);
    else
        return field("_0", c.id) && field("_1", c.text);
}

struct Writer
{
    QJsonObject& json;

    template<class T>
    bool operator()(const char* key, const T& value) const
    {
        json[QLatin1StringView(key)] = written(value);
        return true;
    }
    bool operator()(const char* key, const std::map<QString, QString>& value) const
    {
        if (!value.empty())
            json[QLatin1StringView(key)] = written(value);
        return true;
    }
    bool operator()(const char* key, const std::optional<double>& value) const
    {
        if (value)
            json[QLatin1StringView(key)] = *value;
        return true;
    }
    bool operator()(const char* key, const std::optional<QByteArray>& value) const
    {
        if (value)
            json[QLatin1StringView(key)] = QString::fromLatin1(value->toBase64());
        return true;
    }
};

struct Reader
{
    const QJsonObject json;

    template<class T>
    bool operator()(const char* key, T& value) const
    {
        return read(json[QLatin1StringView(key)], value);
    }
    bool operator()(const char* key, std::map<QString, QString>& value) const
    {
        const QJsonValue stored = json[QLatin1StringView(key)];
        return stored.isUndefined() || read(stored, value);
    }
    bool operator()(const char* key, std::optional<double>& value) const
    {
        const QJsonValue stored = json[QLatin1StringView(key)];
        return stored.isUndefined() || stored.isNull() || read(stored, value.emplace());
    }
    bool operator()(const char* key, std::optional<QByteArray>& value) const
    {
        const QJsonValue stored = json[QLatin1StringView(key)];
        if (stored.isUndefined() || stored.isNull())
            return true;
        auto bytes = QByteArray::fromBase64Encoding(
            stored.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
        if (!bytes || !stored.isString())
            return false;
        value = *bytes;
        return true;
    }
};

template<size_t Index = 0>
std::optional<Change> readCase(size_t index, const QJsonObject& payload)
{
    if constexpr (Index < std::variant_size_v<Change>) {
        if (index != Index)
            return readCase<Index + 1>(index, payload);
        std::variant_alternative_t<Index, Change> read;
        if (!eachField(read, Reader{payload}))
            return std::nullopt;
        return read;
    } else {
        return std::nullopt;
    }
}

template<class Map>
QSet<QString> keys(const Map& map, const QString& prefix = {})
{
    QSet<QString> ids;
    for (const auto& [id, value] : map)
        ids.insert(prefix + id);
    return ids;
}

} // namespace

QJsonObject toJson(const Change& change)
{
    QJsonObject payload;
    std::visit([&](const auto& c) { eachField(c, Writer{payload}); }, change);
    return {{words[change.index()], payload}};
}

std::optional<Change> changeFromJson(const QJsonObject& json)
{
    if (json.size() != 1 || !json.begin().value().isObject())
        return std::nullopt;
    for (size_t i = 0; i < words.size(); ++i)
        if (json.begin().key() == words[i])
            return readCase(i, json.begin().value().toObject());
    return std::nullopt;
}

QByteArray stepToJson(const Step& step)
{
    QJsonArray changes;
    for (const Change& change : step.changes)
        changes.append(toJson(change));
    QJsonObject json{{u"name"_s, step.name}, {u"at"_s, step.at}, {u"changes"_s, changes}};
    if (step.glide)
        json[u"glide"_s] = *step.glide;
    return QJsonDocument(json).toJson(QJsonDocument::Compact);
}

std::optional<Step> stepFromJson(const QByteArray& bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    const QJsonObject json = document.object();
    Step step;
    if (!document.isObject() || !read(json[u"name"], step.name) || !read(json[u"at"], step.at) ||
        !json[u"changes"].isArray())
        return std::nullopt;
    for (const QJsonValue& value : json[u"changes"].toArray()) {
        auto change = changeFromJson(value.toObject());
        if (!change)
            return std::nullopt;
        step.changes.push_back(std::move(*change));
    }
    if (step.changes.empty())
        return std::nullopt;
    if (json[u"glide"].isBool())
        step.glide = json[u"glide"].toBool();
    return step;
}

QSet<QString> touchedIds(const Change& change)
{
    return std::visit(
        [](const auto& c) -> QSet<QString> {
            using Case = std::decay_t<decltype(c)>;
            if constexpr (std::is_same_v<Case, change::Made>)
                return QSet<QString>(c.ids.begin(), c.ids.end());
            else if constexpr (requires { c.times; })
                return keys(c.times);
            else if constexpr (requires { c.colors; })
                return keys(c.colors);
            else if constexpr (requires { c.places; })
                return keys(c.places);
            else if constexpr (requires { c.points; })
                return keys(c.points);
            else if constexpr (requires { c.fans; })
                return keys(c.fans, u"fan:"_s);
            else if constexpr (requires { c.id; })
                return {c.id};
            else
                return {};
        },
        change);
}

} // namespace corvelle
