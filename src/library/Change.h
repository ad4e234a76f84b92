// What a step of undo changed, as data: enough to check it against the library as it stands, to
// take it back and to do it again, also after a restart.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QPointF>
#include <QSet>
#include <QString>

#include <map>
#include <optional>
#include <variant>
#include <vector>

namespace corvelle {

template<class T>
struct Pair
{
    T from, to;

    bool operator==(const Pair&) const = default;
};

// Where a card lies.
struct Place
{
    QString parent; // null at the top
    double x = 0, y = 0;
    QString position;

    bool operator==(const Place&) const = default;
};

namespace change {

struct Made
{
    std::vector<QString> ids;
    bool operator==(const Made&) const = default;
};
struct Trashed // into the Trash at that time, seconds since 1970
{
    std::map<QString, double> times;
    bool operator==(const Trashed&) const = default;
};
struct Restored // back from the Trash, where they had gone at that time
{
    std::map<QString, double> times;
    std::map<QString, QString> parents; // of those that came to the top, for want of their folder
    bool operator==(const Restored&) const = default;
};
struct Renamed
{
    QString id;
    Pair<QString> title;
    bool operator==(const Renamed&) const = default;
};
struct Colored
{
    std::map<QString, Pair<QString>> colors; // words
    bool operator==(const Colored&) const = default;
};
struct Moved // to another parent
{
    std::map<QString, Pair<Place>> places;
    bool operator==(const Moved&) const = default;
};
struct Placed // elsewhere on the same canvas
{
    std::map<QString, Pair<QPointF>> points;
    bool operator==(const Placed&) const = default;
};
struct Fans // as their owner stores them; null for none
{
    std::map<QString, Pair<QJsonValue>> fans;
    bool operator==(const Fans&) const = default;
};
struct FileEdit
{
    QString id;
    QString version;             // where the earlier contents lie, relative to the root
    std::optional<double> stamp; // the file's modification time after the edit
    bool operator==(const FileEdit&) const = default;
};
struct FinderVersion // a card that showed an edited copy went back to the outside file
{
    QString id, copy, original;
    std::optional<QByteArray> bookmark;
    QString title;
    bool operator==(const FinderVersion&) const = default;
};
struct Coworker // all that one turn changed
{
    QString turn;
    bool operator==(const Coworker&) const = default;
};
struct Notes
{
    QString id;
    Pair<QString> text;
    bool operator==(const Notes&) const = default;
};

} // namespace change

using Change = std::variant<change::Made, change::Trashed, change::Restored, change::Renamed,
    change::Colored, change::Moved, change::Placed, change::Fans, change::FileEdit,
    change::FinderVersion, change::Coworker, change::Notes>;

enum class UndoDirection { Undo, Redo };

// What the person did in one go.
struct Step
{
    QString name;
    double at = 0; // seconds since 1970
    std::vector<Change> changes;
    std::optional<bool> glide; // the cards move there when it is taken back

    bool operator==(const Step&) const = default;
};

// An object with the single key of the case.
QJsonObject toJson(const Change& change);
std::optional<Change> changeFromJson(const QJsonObject& json);

QByteArray stepToJson(const Step& step);
// None for a damaged one: a step that lost a part of itself must not be taken back.
std::optional<Step> stepFromJson(const QByteArray& json);

// The ids that a change is about; a fan counts as "fan:" + its id.
QSet<QString> touchedIds(const Change& change);

} // namespace corvelle
