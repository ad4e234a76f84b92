#include "interface/trash/TrashModel.h"

#include "canvas/FileWords.h"

#include <QLocale>
#include <QTimeZone>
#include <QUrl>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QString kindName(const Node& node)
{
    const QString badge = fileBadge(node.mime, node.title);
    if (node.isPicture())
        return u"Picture"_s;
    if (badge == u"XLS")
        return u"Sheet"_s;
    if (badge == u"PPT")
        return u"Deck"_s;
    if (badge == u"DOC")
        return u"Document"_s;
    if (badge == u"AUD")
        return u"Sound"_s;
    if (badge == u"VID")
        return u"Video"_s;
    return badge == u"FILE" ? u"File"_s : badge;
}

QString aboutLine(const NodeTree& tree, const Node& node)
{
    switch (node.kind) {
    case NodeKind::Folder: {
        const size_t count = tree.children(node.id).size();
        return u"Folder · "_s + (count == 0      ? u"Empty"_s
                                    : count == 1 ? u"1 item"_s
                                                 : u"%1 items"_s.arg(count));
    }
    case NodeKind::Page:
        return u"Page"_s;
    case NodeKind::Link: {
        QString host = QUrl(node.url).host();
        if (host.startsWith(u"www."))
            host = host.mid(4);
        return host.isEmpty() ? u"Website"_s : u"Website · "_s + host;
    }
    case NodeKind::File:
        break;
    }
    return node.byteSize ? kindName(node) + u" · "_s + sizeWords(*node.byteSize) : kindName(node);
}

QString dayWords(const QDateTime& at, const QDateTime& now)
{
    const QLocale english(QLocale::English, QLocale::UnitedKingdom);
    const qint64 days = at.date().daysTo(now.date());
    if (days == 0)
        return u"Today, "_s + at.toString(u"HH:mm"_s);
    if (days == 1)
        return u"Yesterday, "_s + at.toString(u"HH:mm"_s);
    const QString format = at.date().year() == now.date().year() ? u"ddd d MMM"_s : u"d MMM yyyy"_s;
    return english.toString(at.date(), format);
}

} // namespace

std::vector<TrashRow> trashRows(const NodeTree& tree, const QDateTime& now)
{
    std::vector<const Node*> nodes;
    tree.eachNode([&](const Node& node, const SeenFile&) {
        if (node.deletedAt && !tree.isInTrash(node.parentID))
            nodes.push_back(&node);
    });
    std::sort(nodes.begin(), nodes.end(), [](const Node* left, const Node* right) {
        return left->deletedAt != right->deletedAt ? left->deletedAt > right->deletedAt
                                                   : left->id < right->id;
    });
    std::vector<TrashRow> rows;
    rows.reserve(nodes.size());
    for (const Node* node : nodes) {
        const QDateTime at = QDateTime::fromMSecsSinceEpoch(
            static_cast<qint64>(*node->deletedAt * 1000), now.timeZone());
        const Node* parent = tree.node(node->parentID);
        const double days = static_cast<double>(at.secsTo(now)) / 86'400;
        rows.push_back({node->id, node->kind, node->color, node->isPicture(),
            node->title.isEmpty() ? u"Corvelle"_s : node->title, aboutLine(tree, *node),
            parent ? parent->title : u"Home"_s, dayWords(at, now),
            std::clamp(daysInTrash - static_cast<int>(std::floor(days)), 0, daysInTrash)});
    }
    return rows;
}

} // namespace corvelle
