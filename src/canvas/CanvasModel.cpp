#include "canvas/CanvasModel.h"

#include "base/MainThread.h"
#include "base/Text.h"
#include "canvas/Viewer.h"

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

constexpr double zoomInCommit = 1.1;
constexpr double zoomOutCommit = 0.8;
constexpr size_t mostPeeks = 3;

double finite(double coordinate)
{
    return std::isfinite(coordinate) ? coordinate : 0;
}

std::vector<QRectF> rects(const std::vector<PlacedCard>& cards)
{
    std::vector<QRectF> result;
    result.reserve(cards.size());
    for (const PlacedCard& card : cards)
        result.push_back(card.rect());
    return result;
}

} // namespace

CanvasModel::CanvasModel(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
{
    connect(&library, &Library::treeChanged, this, &CanvasModel::takeTreeChange);
    placeCards();
}

// ---- where we are ----

void CanvasModel::open(const QString& folderID)
{
    Q_ASSERT(onMainThread());
    const NavPlace place{NavPlace::Kind::Folder, folderID};
    if (place == m_history.current() || !exists(place))
        return;
    m_history.record(place);
    goTo(place);
}

void CanvasModel::openOver(const QString& id)
{
    const Node* node = m_library.node(id);
    if (!node || viewerOf(*node) == Viewer::None)
        return;
    const NavPlace place{
        node->kind == NodeKind::Page ? NavPlace::Kind::Page : NavPlace::Kind::File, id};
    if (place == m_history.current() || !exists(place))
        return;
    m_history.record(place);
    goTo(place);
}

void CanvasModel::closeOver()
{
    if (!m_openedID.isEmpty())
        open(m_folderID);
}

bool CanvasModel::exists(const NavPlace& place) const
{
    if (place.id.isEmpty())
        return place.kind == NavPlace::Kind::Folder;
    const Node* node = m_library.node(place.id);
    return node && !m_library.isInTrash(place.id) &&
           (place.kind == NavPlace::Kind::Folder) == (node->kind == NodeKind::Folder);
}

void CanvasModel::goTo(const NavPlace& place)
{
    const bool folder = place.kind == NavPlace::Kind::Folder;
    const QString where = folder ? place.id : m_library.node(place.id)->parentID;
    // From one page to another of the same folder the sheet stays.
    if (folder || where != m_folderID)
        setOpened({});
    if (where != m_folderID)
        enter(where);
    if (!folder)
        setOpened(place.id);
}

void CanvasModel::setOpened(const QString& id)
{
    if (id == m_openedID)
        return;
    m_openedID = id;
    endRenaming();
    emit openedChanged();
}

void CanvasModel::goBack()
{
    if (const auto place = m_history.back([this](const NavPlace& to) { return exists(to); }))
        goTo(*place);
}

void CanvasModel::goForward()
{
    if (const auto place = m_history.forward([this](const NavPlace& to) { return exists(to); }))
        goTo(*place);
}

void CanvasModel::goUp()
{
    if (!m_openedID.isEmpty())
        closeOver();
    else if (const Node* folder = m_library.node(m_folderID))
        open(folder->parentID);
}

void CanvasModel::enter(QString folderID)
{
    m_cameras.insert(m_folderID, m_camera);
    // The folder that we come out of keeps the focus, so that Return goes back into it.
    const Node* left = m_library.node(m_folderID);
    m_focus = left && left->parentID == folderID ? left->id : QString();
    m_folderID = std::move(folderID);
    m_selection.clear();
    endRenaming();
    m_needsCamera = true;
    placeCards();
    emit folderChanged();
    emit cardsChanged();
    emit selectionChanged();
    placeFirstCamera();
}

// ---- camera ----

void CanvasModel::setViewport(QSizeF size)
{
    if (size == m_viewport)
        return;
    m_viewport = size;
    placeFirstCamera();
    cull(true);
    emit cameraChanged();
}

void CanvasModel::placeFirstCamera()
{
    if (!m_needsCamera || m_viewport.isEmpty())
        return;
    m_needsCamera = false;
    const auto cards = rects(m_cards);
    const auto known = m_cameras.constFind(m_folderID);
    setCamera(known != m_cameras.cend() ? showingSomeCard(*known, cards, m_viewport)
                                        : firstCamera(cards, m_viewport));
}

void CanvasModel::moveCamera(const Camera& camera)
{
    const Camera next{finite(camera.x), finite(camera.y), clampedZoom(camera.zoom)};
    if (next == m_camera)
        return;
    m_camera = next;
    const double ratio = m_camera.zoom / m_drawnZoom;
    if (ratio > zoomInCommit || ratio < zoomOutCommit)
        m_drawnZoom = m_camera.zoom;
    cull();
    emit cameraChanged();
}

void CanvasModel::setCamera(const Camera& camera)
{
    m_camera = {finite(camera.x), finite(camera.y), clampedZoom(camera.zoom)};
    m_drawnZoom = m_camera.zoom;
    cull();
    emit cameraChanged();
}

void CanvasModel::rest()
{
    if (isAtRest())
        return;
    m_drawnZoom = m_camera.zoom;
    emit cameraChanged();
}

void CanvasModel::cull(bool always)
{
    if (m_viewport.isEmpty())
        return;
    const QRectF next = culledRect(m_cull, visibleRect(m_camera, m_viewport));
    if (next == m_cull && !always)
        return;
    m_cull = next;
    m_mounted = m_grid.meeting(m_cull);
}

// ---- cards ----

PlacedCard CanvasModel::placed(const Node& node) const
{
    return {node.id, QPointF(finite(node.x), finite(node.y)), cardSize(node)};
}

void CanvasModel::putCard(int index)
{
    m_grid.put(index, m_cards[static_cast<size_t>(index)].rect());
}

void CanvasModel::placeCards()
{
    const auto& children = m_library.children(m_folderID);
    m_cards.clear();
    m_indexes.clear();
    m_grid.clear();
    m_cards.reserve(children.size());
    m_grid.reserve(children.size());
    for (const QString& id : children) {
        m_indexes.insert(id, static_cast<int>(m_cards.size()));
        m_cards.push_back(placed(*m_library.node(id)));
        putCard(static_cast<int>(m_cards.size()) - 1);
    }
    cull(true);
}

// Takes in cards that came at the end or changed in place. False when the order is another one:
// then the list is made anew.
bool CanvasModel::patchCards(const TreeChange& change)
{
    if (change.everything)
        return false;
    std::vector<const Node*> fresh;
    for (const QString& id : change.nodes) {
        const Node* node = m_library.node(id);
        const bool here = node && node->isLive() && node->parentID == m_folderID;
        const auto index = m_indexes.constFind(id);
        if (index == m_indexes.cend()) {
            if (here)
                fresh.push_back(node);
            continue;
        }
        if (!here)
            return false;
        m_cards[static_cast<size_t>(*index)] = placed(*node);
        putCard(*index);
    }
    std::sort(fresh.begin(), fresh.end(), [](const Node* left, const Node* right) {
        const int order = compareByCodePoints(left->position, right->position);
        return order != 0 ? order < 0 : left->id < right->id;
    });
    const auto& children = m_library.children(m_folderID);
    if (children.size() != m_cards.size() + fresh.size())
        return false;
    for (const Node* node : fresh) {
        const size_t index = m_cards.size();
        if (children[index] != node->id)
            return false;
        m_indexes.insert(node->id, static_cast<int>(index));
        m_cards.push_back(placed(*node));
        putCard(static_cast<int>(index));
    }
    return true;
}

void CanvasModel::takeTreeChange(const TreeChange& change)
{
    if (!m_folderID.isEmpty() && (!m_library.node(m_folderID) || m_library.isInTrash(m_folderID))) {
        m_history.record({}); // the open folder is gone
        setOpened({});
        enter({});
        return;
    }
    if (!m_openedID.isEmpty()) {
        const Node* opened = m_library.node(m_openedID);
        if (!opened || m_library.isInTrash(m_openedID))
            closeOver();
        else if (opened->parentID != m_folderID)
            enter(opened->parentID); // it was moved, and lies over its own folder
    }
    const bool concernsUs = change.everything || change.parents.contains(m_folderID);
    if (concernsUs) {
        const bool wasEmpty = m_cards.empty();
        if (!patchCards(change))
            placeCards();
        else
            cull(true);
        const auto gone = [this](const QString& key) { return !m_indexes.contains(key); };
        if (std::any_of(m_selection.begin(), m_selection.end(), gone) ||
            (!m_focus.isEmpty() && gone(m_focus))) {
            m_selection.removeIf(gone);
            if (gone(m_focus))
                m_focus.clear();
            emit selectionChanged();
        }
        if (!m_renaming.isEmpty() && gone(m_renaming))
            endRenaming();
        emit cardsChanged();
        if (wasEmpty && !m_cards.empty()) {
            m_needsCamera = true;
            m_cameras.remove(m_folderID);
            placeFirstCamera();
        }
    }
    QSet<QString> stale;
    for (const QString& id : change.everything ? QSet<QString>() : change.nodes + change.parents)
        if (m_indexes.contains(id))
            stale.insert(id);
    if (change.everything)
        for (const PlacedCard& card : m_cards)
            stale.insert(card.key);
    if (!stale.isEmpty())
        emit facesChanged(stale);
}

const PlacedCard* CanvasModel::card(const QString& key) const
{
    const auto index = m_indexes.constFind(key);
    return index == m_indexes.cend() ? nullptr : &m_cards[static_cast<size_t>(*index)];
}

QString CanvasModel::cardAt(QPointF screen, const QSet<QString>& except) const
{
    const QPointF point = toCanvas(screen, m_camera, m_viewport);
    QString found;
    bool foundSelected = false;
    for (const int index : m_grid.meeting(QRectF(point - QPointF(0.5, 0.5), QSizeF(1, 1)))) {
        const PlacedCard& card = m_cards[static_cast<size_t>(index)];
        if (!card.rect().contains(point) || except.contains(card.key))
            continue;
        const bool selected = m_selection.contains(card.key);
        if (selected || !foundSelected) {
            found = card.key;
            foundSelected |= selected;
        }
    }
    return found;
}

int CanvasModel::childCount(const QString& folder) const
{
    return static_cast<int>(m_library.children(folder).size());
}

std::vector<FolderPeek> CanvasModel::peeks(const QString& folder) const
{
    std::vector<FolderPeek> result;
    for (const QString& id : m_library.children(folder)) {
        if (result.size() == mostPeeks)
            break;
        const Node& child = *m_library.node(id);
        result.push_back({id, child.kind, child.color, child.mime, child.title,
            child.path.isNull() ? QString() : m_library.filePath(child)});
    }
    return result;
}

// ---- selection ----

void CanvasModel::select(const QSet<QString>& keys)
{
    QSet<QString> known = keys;
    known.removeIf([this](const QString& key) { return !m_indexes.contains(key); });
    const QString focus = known.size() == 1 ? *known.begin() : m_focus;
    if (known == m_selection && focus == m_focus)
        return;
    m_selection = known;
    m_focus = focus;
    emit selectionChanged();
}

void CanvasModel::click(const QString& key, bool toggle)
{
    if (!m_indexes.contains(key)) {
        if (!toggle)
            select({});
        return;
    }
    QSet<QString> keys = toggle ? m_selection : QSet<QString>();
    if (toggle && keys.contains(key))
        keys.remove(key);
    else
        keys.insert(key);
    m_focus = key;
    select(keys);
    emit selectionChanged();
}

void CanvasModel::selectAll()
{
    select(QSet<QString>(m_indexes.keyBegin(), m_indexes.keyEnd()));
}

void CanvasModel::moveSelection(Direction direction, bool extend)
{
    if (m_cards.empty())
        return;
    const PlacedCard* from = nullptr;
    if (m_selection.contains(m_focus) || (m_selection.isEmpty() && !m_focus.isEmpty()))
        from = card(m_focus);
    else if (!m_selection.isEmpty())
        from = card(*m_selection.begin());
    const PlacedCard* best = from ? nullptr : &m_cards.front();
    double bestScore = 0;
    for (const PlacedCard& other : m_cards) {
        if (!from || other.key == from->key)
            continue;
        const QPointF d = other.centre - from->centre;
        double along = 0, across = 0;
        switch (direction) {
        case Direction::Right:
            along = d.x();
            across = d.y();
            break;
        case Direction::Left:
            along = -d.x();
            across = d.y();
            break;
        case Direction::Down:
            along = d.y();
            across = d.x();
            break;
        case Direction::Up:
            along = -d.y();
            across = d.x();
            break;
        }
        const double score = along + 2 * std::abs(across);
        if (along > 1 && (!best || score < bestScore)) {
            best = &other;
            bestScore = score;
        }
    }
    if (!best)
        return;
    m_focus = best->key;
    select(extend ? m_selection + QSet<QString>{best->key} : QSet<QString>{best->key});
    if (const auto camera = bringIntoView({best->key}))
        emit glideWanted(*camera);
}

std::optional<Camera> CanvasModel::bringIntoView(const QSet<QString>& keys) const
{
    std::vector<QRectF> wanted;
    for (const QString& key : keys)
        if (const PlacedCard* found = card(key))
            wanted.push_back(found->rect());
    if (wanted.empty() || m_viewport.isEmpty())
        return std::nullopt;
    QRectF box = wanted.front();
    for (const QRectF& rect : wanted)
        box |= rect;
    const QRectF onScreen = toScreen(box, m_camera, m_viewport);
    const QRectF safe = QRectF(QPointF(0, 0), m_viewport).adjusted(24, 72, -24, -72);
    if (safe.contains(onScreen))
        return std::nullopt;
    if (onScreen.width() <= safe.width() && onScreen.height() <= safe.height())
        return Camera{box.center().x(), box.center().y(), m_camera.zoom};
    return fitted(wanted, m_viewport);
}

void CanvasModel::startRenaming(const QString& key)
{
    if (!card(key) || key == m_renaming)
        return;
    if (const auto camera = bringIntoView({key}))
        setCamera(*camera);
    m_renaming = key;
    emit renamingChanged();
}

void CanvasModel::endRenaming()
{
    if (m_renaming.isEmpty())
        return;
    m_renaming.clear();
    emit renamingChanged();
}

void CanvasModel::openCard(const QString& key)
{
    const Node* node = m_library.node(key);
    if (!node)
        return;
    if (node->kind == NodeKind::Folder)
        open(key);
    else if (m_library.isMissing(key))
        emit missingOpened(key);
    else if (viewerOf(*node) != Viewer::None)
        openOver(key);
    else
        emit openItem(key);
}

} // namespace corvelle
