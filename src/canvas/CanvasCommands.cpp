#include "canvas/CanvasCommands.h"

#include "base/MainThread.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qsizetype longestTitle = 80; // characters of a first line that becomes the title
constexpr int mostLinksAtOnce = 50;

QString hostOf(const QString& url)
{
    const QString host = QUrl(url).host();
    return host.startsWith(u"www.") ? host.mid(4) : host;
}

} // namespace

DroppedText droppedText(const QString& text)
{
    static const QRegularExpression address(u"\\bhttps?://[^\\s<>\"“”]+"_s,
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    DroppedText result;
    for (auto matches = address.globalMatch(text);
         matches.hasNext() && result.links.size() < mostLinksAtOnce;) {
        QString link = matches.next().captured();
        while (!link.isEmpty() && QStringView(u".,;:!?)]}'").contains(link.back()))
            link.chop(1);
        if (QUrl url(link); url.isValid() && !url.host().isEmpty())
            result.links.push_back(link);
    }
    if (!result.links.empty())
        return result;
    QString rest = text.trimmed();
    if (rest.isEmpty())
        return result;
    rest.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    QStringList lines = rest.split(u'\n');
    if (const QString first = lines.front().trimmed(); first.size() <= longestTitle) {
        result.title = first;
        lines.removeFirst();
    }
    if (const QString body = lines.join(u'\n').trimmed(); !body.isEmpty())
        for (const QString& line : body.split(u'\n'))
            result.lines.push_back(line);
    return result;
}

QString pageOfLines(const std::vector<QString>& lines)
{
    QJsonArray content;
    for (const QString& line : lines) {
        QJsonObject paragraph{{u"type"_s, u"paragraph"_s}};
        if (!line.trimmed().isEmpty())
            paragraph[u"content"_s] =
                QJsonArray{QJsonObject{{u"type"_s, u"text"_s}, {u"text"_s, line}}};
        content.append(paragraph);
    }
    if (content.isEmpty())
        content.append(QJsonObject{{u"type"_s, u"paragraph"_s}});
    return QString::fromUtf8(
        QJsonDocument(QJsonObject{{u"type"_s, u"doc"_s}, {u"content"_s, content}})
            .toJson(QJsonDocument::Compact));
}

CanvasCommands::CanvasCommands(CanvasModel& model, Edits& edits, UndoManager& manager,
    Duplicates& duplicates, AddFiles& addFiles, PageSaves& pageSaves, QObject* parent)
    : QObject(parent)
    , m_model(model)
    , m_library(model.library())
    , m_edits(edits)
    , m_manager(manager)
    , m_duplicates(duplicates)
    , m_addFiles(addFiles)
    , m_pageSaves(pageSaves)
{
    connect(&duplicates, &Duplicates::duplicated, this, &CanvasCommands::show);
    connect(&addFiles, &AddFiles::added, this, &CanvasCommands::show);
    connect(&addFiles, &AddFiles::alreadyHere, this, [this](const std::vector<QString>& ids) {
        if (const Node* first = m_library.node(ids.front()); first->parentID != m_model.folderID())
            m_model.open(first->parentID);
        show(ids);
    });
}

// ---- making ----

QPointF CanvasCommands::middle() const
{
    return QPointF(m_model.camera().x, m_model.camera().y);
}

std::vector<QString> CanvasCommands::selected() const
{
    std::vector<QString> ids;
    for (const PlacedCard& card : m_model.cards())
        if (m_model.selection().contains(card.key))
            ids.push_back(card.key);
    return ids;
}

QPointF CanvasCommands::spotFor(NodeKind kind, QPointF point) const
{
    std::vector<QRectF> taken;
    for (const PlacedCard& card : m_model.cards())
        taken.push_back(card.rect());
    const QSizeF size = cardSize(CardShape{kind, false, 0, 0});
    return freeSpot(
        point, QSizeF(size.width() + freeSpotMargin, size.height() + freeSpotMargin), taken);
}

QString CanvasCommands::make(NodeKind kind, const QString& url, const QString& title, QPointF point)
{
    Edits::Wish wish;
    wish.kind = kind;
    wish.title = title;
    wish.url = url;
    wish.parent = m_model.folderID();
    wish.point = spotFor(kind, point);
    const QString id = m_edits.make(wish);
    if (!id.isEmpty())
        show({id});
    return id;
}

void CanvasCommands::makeFolder(QPointF point)
{
    m_model.startRenaming(make(NodeKind::Folder, {}, {}, point));
}

void CanvasCommands::makePage(QPointF point)
{
    m_model.startRenaming(make(NodeKind::Page, {}, {}, point));
}

void CanvasCommands::makeLink(const QString& url, QPointF point)
{
    make(NodeKind::Link, url, hostOf(url), point);
}

// Selects the cards that are on this canvas and brings them into view.
void CanvasCommands::show(const std::vector<QString>& ids)
{
    const QSet<QString> keys(ids.begin(), ids.end());
    m_model.select(keys);
    if (const auto camera = m_model.bringIntoView(m_model.selection()))
        emit m_model.glideWanted(*camera);
}

// ---- changing ----

void CanvasCommands::rename(const QString& id, const QString& title)
{
    m_edits.rename(id, title);
}

void CanvasCommands::trash(const std::vector<QString>& ids)
{
    const auto went = m_edits.trash(ids);
    if (went.empty())
        return;
    const Node* first = m_library.node(went.front());
    const QString title = first->title.isEmpty() ? u"Corvelle"_s : first->title;
    emit told(went.size() == 1 ? u"“%1” moved to Trash"_s.arg(title)
                               : u"%1 items moved to Trash"_s.arg(went.size()),
        u"Move to Trash"_s);
}

void CanvasCommands::putBack(const std::vector<QString>& ids)
{
    const auto came = m_edits.restore(ids);
    if (came.empty())
        return;
    const Node* first = m_library.node(came.front());
    const QString title = first->title.isEmpty() ? u"Corvelle"_s : first->title;
    emit told(
        came.size() == 1 ? u"“%1” put back"_s.arg(title) : u"%1 items put back"_s.arg(came.size()),
        u"Put Back"_s);
}

void CanvasCommands::duplicate(const std::vector<QString>& ids)
{
    m_duplicates.duplicate(ids);
}

void CanvasCommands::setColor(const std::vector<QString>& ids, NodeColor color)
{
    m_edits.setColor(ids, color);
}

// ---- dragging ----

void CanvasCommands::place(const std::map<QString, QPointF>& points)
{
    m_edits.savePositions(points);
}

void CanvasCommands::moveInto(const std::vector<QString>& ids, const QString& folder)
{
    NextFreePlace places;
    for (const QString& id : m_library.children(folder))
        places.include(
            QPointF(m_library.node(id)->x, m_library.node(id)->y), cardSize(*m_library.node(id)));
    std::vector<Edits::Target> items;
    for (const QString& id : ids)
        items.push_back({id, places.next()});
    m_edits.move(items, folder);
}

void CanvasCommands::moveUp(const std::vector<QString>& ids, const QString& folder)
{
    // The folder on that canvas in which the cards have been, however deep.
    const auto above = m_library.tree().ancestors(m_model.folderID());
    const auto from = std::find_if(above.begin(), above.end(),
        [&](const QString& id) { return m_library.node(id)->parentID == folder; });
    QPointF point = middle();
    if (from != above.end()) {
        const Node& card = *m_library.node(*from);
        point = besideCard(QPointF(card.x, card.y), cardSize(card));
    }
    m_edits.moveTo(ids, folder, point);
}

// ---- from outside ----

void CanvasCommands::addUrls(const QList<QUrl>& urls, const QString& intoFolder, QPointF point)
{
    QStringList files;
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            files.append(url.toLocalFile());
        else if (url.scheme() == u"http" || url.scheme() == u"https")
            makeLink(url.toString(), point);
    }
    if (files.isEmpty())
        return;
    m_addFiles.add(files, intoFolder.isEmpty() ? m_model.folderID() : intoFolder,
        intoFolder.isEmpty() ? point : QPointF(0, 160));
}

void CanvasCommands::addText(const QString& text, QPointF point)
{
    const DroppedText dropped = droppedText(text);
    for (const QString& link : dropped.links)
        makeLink(link, point);
    if (!dropped.links.empty() || dropped.isNothing())
        return;
    const QString id = make(NodeKind::Page, {}, dropped.title, point);
    if (id.isEmpty() || dropped.lines.empty())
        return;
    QStringList words;
    for (const QString& line : dropped.lines)
        words.append(line);
    if (auto saved = m_pageSaves.saveNow(id, pageOfLines(dropped.lines), words.join(u'\n')); !saved)
        m_library.fail(u"Couldn’t make the page. Try again."_s);
}

// ---- undo ----

void CanvasCommands::undo()
{
    m_manager.undo();
}

void CanvasCommands::redo()
{
    m_manager.redo();
}

} // namespace corvelle
