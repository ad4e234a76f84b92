// The scripted channel's verbs that change the library.
#include "app/Application.h"
#include "app/NodeJson.h"
#include "app/TestDriver.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

std::vector<QString> ids(const QJsonObject& arguments)
{
    std::vector<QString> result;
    for (const QJsonValue& id : arguments[u"ids"].toArray())
        result.push_back(id.toString());
    return result;
}

QPointF point(const QJsonObject& arguments)
{
    return QPointF(arguments[u"x"].toDouble(), arguments[u"y"].toDouble());
}

bool isKind(const QString& text)
{
    return text == word(nodeKind(text));
}

QJsonArray names(const std::vector<QString>& list)
{
    QJsonArray json;
    for (const QString& name : list)
        json.append(name);
    return json;
}

} // namespace

void TestDriver::addEditVerbs()
{
    Edits& edits = m_application.edits();
    const auto done = [] { return Answer{QJsonObject(), {}}; };

    m_verbs[u"make"_s] = [this](const QJsonObject& a) { return make(a); };
    m_verbs[u"rename"_s] = [&edits](const QJsonObject& a) {
        return Answer{edits.rename(a[u"id"].toString(), a[u"title"].toString()), {}};
    };
    m_verbs[u"move"_s] = [this](const QJsonObject& a) { return move(a); };
    m_verbs[u"place"_s] = [this](const QJsonObject& a) { return place(a); };
    m_verbs[u"color"_s] = [&edits, done](const QJsonObject& a) {
        const QString color = a[u"color"].toString();
        if (word(nodeColor(color)) != color)
            return Answer{{}, u"There is no such colour."_s};
        edits.setColor(ids(a), nodeColor(color));
        return done();
    };
    m_verbs[u"icon"_s] = [&edits, done](const QJsonObject& a) {
        edits.setIcon(a[u"id"].toString(), a[u"icon"].toString());
        return done();
    };
    m_verbs[u"trash"_s] = [&edits, done](const QJsonObject& a) {
        edits.trash(ids(a));
        return done();
    };
    m_verbs[u"restore"_s] = [&edits, done](const QJsonObject& a) {
        edits.restore(ids(a));
        return done();
    };
    m_verbs[u"delete"_s] = [&edits, done](const QJsonObject& a) {
        edits.deleteForGood(ids(a));
        return done();
    };
    m_verbs[u"duplicate"_s] = [this, done](const QJsonObject& a) {
        m_application.duplicates().duplicate(ids(a));
        return done();
    };
    m_verbs[u"add"_s] = [this, done](const QJsonObject& a) {
        QStringList paths;
        for (const QJsonValue& path : a[u"paths"].toArray())
            paths.append(path.toString());
        m_application.addFiles().add(paths, a[u"parent"].toString(), point(a));
        return done();
    };
    m_verbs[u"undo"_s] = [this](const QJsonObject&) { return undo(false); };
    m_verbs[u"redo"_s] = [this](const QJsonObject&) { return undo(true); };
    m_verbs[u"steps"_s] = [this](const QJsonObject&) {
        const UndoManager& manager = m_application.undoManager();
        return Answer{QJsonObject{{u"undo"_s, names(manager.undoNames())},
                          {u"redo"_s, names(manager.redoNames())}},
            {}};
    };
}

TestDriver::Answer TestDriver::make(const QJsonObject& arguments)
{
    const QString kind = arguments[u"kind"].toString();
    if (!isKind(kind) || kind == word(NodeKind::File))
        return {{}, u"A folder, a page or a link can be made."_s};
    Edits::Wish wish;
    wish.kind = nodeKind(kind);
    wish.title = arguments[u"title"].toString();
    wish.parent = arguments[u"parent"].toString();
    wish.point = point(arguments);
    wish.url = arguments[u"url"].toString();
    if (const QString color = arguments[u"color"].toString(); !color.isEmpty())
        wish.color = nodeColor(color);
    const QString id = m_application.edits().make(wish);
    const Library& library = m_application.library();
    if (id.isEmpty())
        return {{}, library.lastFailure()};
    return {nodeJson(*library.node(id), library.tree().seen(id), false), {}};
}

TestDriver::Answer TestDriver::move(const QJsonObject& arguments)
{
    m_application.edits().moveTo(ids(arguments), arguments[u"parent"].toString(), point(arguments));
    return {QJsonObject(), {}};
}

TestDriver::Answer TestDriver::place(const QJsonObject& arguments)
{
    std::map<QString, QPointF> points;
    const QJsonObject positions = arguments[u"positions"].toObject();
    for (auto entry = positions.begin(); entry != positions.end(); ++entry)
        points[entry.key()] =
            QPointF(entry.value().toArray()[0].toDouble(), entry.value().toArray()[1].toDouble());
    m_application.edits().savePositions(points);
    return {QJsonObject(), {}};
}

TestDriver::Answer TestDriver::undo(bool redoes)
{
    UndoManager& manager = m_application.undoManager();
    if (redoes ? !manager.canRedo() : !manager.canUndo())
        return {QJsonValue(), {}};
    const QString name = redoes ? manager.redoActionName() : manager.undoActionName();
    if (redoes)
        manager.redo();
    else
        manager.undo();
    return {name, {}};
}

} // namespace corvelle
