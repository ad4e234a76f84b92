#include "library/UndoJournal.h"

#include "base/Clock.h"
#include "base/Log.h"
#include "base/MainThread.h"
#include "library/VersionFiles.h"
#include "platform/FileFacts.h"

#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr size_t mostSteps = 200;
constexpr double mostAge = 2'592'000; // 30 days in seconds

} // namespace

UndoJournal::UndoJournal(UndoManager& manager, QObject* parent)
    : QObject(parent)
    , m_manager(manager)
    , m_pageHistory(m_store)
{}

UndoJournal::~UndoJournal() = default;

// ---- gathering ----

void UndoJournal::record(Change change)
{
    Q_ASSERT(onMainThread());
    if (!m_started || m_applying || m_rebuilding || !m_manager.isRegistrationEnabled() ||
        m_manager.isUndoing() || m_manager.isRedoing())
        return;
    if (m_gathering && m_manager.groupingLevel() == 0)
        closeGathering();
    if (m_gathering) {
        m_steps[*m_gathering].changes.push_back(std::move(change));
        return;
    }
    const qint64 seq = m_nextSeq++;
    m_steps[seq] = Step{{}, now(), {std::move(change)}, {}};
    m_targets[seq] = std::make_unique<Target>();
    cutRedo();
    m_done.push_back(seq);
    m_gathering = seq;
    registerStep(seq, UndoDirection::Undo);
    while (m_done.size() > mostSteps)
        forget(m_done.front());
}

void UndoJournal::setName(const QString& name)
{
    if (m_gathering && !m_applying)
        m_manager.setActionName(name);
}

void UndoJournal::setGlide()
{
    if (m_gathering && !m_applying)
        m_steps[*m_gathering].glide = true;
}

void UndoJournal::forgetGathering()
{
    if (m_gathering)
        m_forgetting.insert(*m_gathering);
}

void UndoJournal::setNotes(const QString& id, const QString& from, const QString& to)
{
    if (from.trimmed() == to.trimmed())
        return;
    record(change::Notes{id, {from, to}});
    setName(u"Edit Notes"_s);
}

void UndoJournal::registerStep(qint64 seq, UndoDirection direction)
{
    m_manager.registerUndo(
        m_targets[seq].get(), [this, seq, direction] { perform(seq, direction); });
    if (const QString& name = m_steps[seq].name; !name.isEmpty())
        m_manager.setActionName(name);
}

// A new action ends the way forward that undone steps had left open.
void UndoJournal::cutRedo()
{
    if (m_undone.empty())
        return;
    for (const qint64 seq : std::exchange(m_undone, {}))
        drop(seq);
    m_store.removeUndone();
}

void UndoJournal::groupClosed()
{
    if (m_rebuilding || m_manager.isUndoing() || m_manager.isRedoing())
        return;
    closeGathering();
}

void UndoJournal::closeGathering()
{
    if (!m_gathering) {
        if (!m_manager.canRedo())
            cutRedo();
        return;
    }
    const qint64 seq = *std::exchange(m_gathering, std::nullopt);
    const auto step = m_steps.find(seq);
    if (step == m_steps.end())
        return;
    if (m_forgetting.remove(seq)) {
        forget(seq);
        return;
    }
    step->second.name = m_manager.undoActionName();
    m_store.put(seq, step->second, false);
}

// ---- forgetting ----

void UndoJournal::drop(qint64 seq)
{
    std::erase(m_done, seq);
    std::erase(m_undone, seq);
    m_steps.erase(seq);
    if (m_gathering == seq)
        m_gathering.reset();
    if (const auto target = m_targets.find(seq); target != m_targets.end()) {
        m_manager.removeAllActions(target->second.get());
        m_targets.erase(target);
    }
}

void UndoJournal::forget(qint64 seq)
{
    if (m_applying) {
        m_lost.insert(seq);
        return;
    }
    drop(seq);
    m_store.remove({seq});
}

void UndoJournal::forgetCoworker(const QString& turn)
{
    if (m_applying)
        return;
    std::vector<qint64> found;
    for (const auto& [seq, step] : m_steps)
        if (std::find(step.changes.begin(), step.changes.end(), Change(change::Coworker{turn})) !=
            step.changes.end())
            found.push_back(seq);
    for (const qint64 seq : found)
        forget(seq);
}

// ---- undo and redo ----

void UndoJournal::perform(qint64 seq, UndoDirection direction)
{
    const bool undoing = direction == UndoDirection::Undo;
    const UndoDirection opposite = undoing ? UndoDirection::Redo : UndoDirection::Undo;
    if (m_rebuilding) {
        registerStep(seq, opposite);
        return;
    }
    const auto found = m_steps.find(seq);
    if (found == m_steps.end())
        return;
    if (undoing)
        std::erase(m_done, seq);
    else
        std::erase(m_undone, seq);
    std::vector<std::optional<Change>> kept;
    QString problem;
    if (!lookAt(found->second, direction, kept, problem)) {
        refuse(seq, direction, problem);
        return;
    }
    m_applying = true;
    emit applyBegins(found->second.glide.value_or(false));
    const bool whole = applyAll(kept, direction);
    m_applying = false;
    emit applyEnds();

    Step& step = m_steps[seq];
    step.changes.clear();
    for (auto& change : kept)
        if (change)
            step.changes.push_back(std::move(*change));
    const bool isCoworkers = std::any_of(step.changes.begin(), step.changes.end(),
        [](const Change& c) { return std::holds_alternative<change::Coworker>(c); });
    if (m_lost.remove(seq) || !whole || step.changes.empty() || (undoing && isCoworkers)) {
        forget(seq);
        return;
    }
    registerStep(seq, opposite);
    if (undoing)
        m_undone.push_back(seq);
    else
        m_done.push_back(seq);
    m_store.put(seq, step, undoing);
}

// Looks at the changes in the order in which they will be applied. False with the reason when the
// step can't be.
bool UndoJournal::lookAt(const Step& step, UndoDirection direction,
    std::vector<std::optional<Change>>& kept, QString& problem) const
{
    const size_t count = step.changes.size();
    kept.assign(count, std::nullopt);
    QSet<QString> touched;
    bool any = false;
    for (size_t i = 0; i < count; ++i) {
        const size_t index = direction == UndoDirection::Undo ? count - 1 - i : i;
        const Change& change = step.changes[index];
        const ChangeApplier* applier = m_appliers[change.index()];
        Look look = applier ? applier->look(change, direction, touched) : Look(LookGone{});
        if (auto* changed = std::get_if<LookChanged>(&look)) {
            problem = changed->message;
            return false;
        }
        if (auto* fine = std::get_if<LookFine>(&look)) {
            touched.unite(touchedIds(fine->change));
            kept[index] = std::move(fine->change);
            any = true;
        }
    }
    if (!any)
        problem = u"What it changed was deleted for good."_s;
    return any;
}

// What could be applied stays in `kept`, with its new values. False when one couldn't.
bool UndoJournal::applyAll(std::vector<std::optional<Change>>& kept, UndoDirection direction)
{
    bool whole = true;
    for (size_t i = 0; i < kept.size(); ++i) {
        auto& change = kept[direction == UndoDirection::Undo ? kept.size() - 1 - i : i];
        if (!change)
            continue;
        change = m_appliers[change->index()]->apply(*change, direction);
        whole &= change.has_value();
    }
    return whole;
}

void UndoJournal::refuse(qint64 seq, UndoDirection direction, const QString& reason)
{
    const QString name = m_steps[seq].name;
    const bool undoing = direction == UndoDirection::Undo;
    logLine(u"undo journal: %1 of step %2 %3 skipped: %4"_s.arg(
        undoing ? u"undo"_s : u"redo"_s, QString::number(seq), name, reason));
    forget(seq);
    emit refused((undoing ? u"Couldn’t undo "_s : u"Couldn’t redo "_s) + name, reason);
}

// ---- start and quit ----

void UndoJournal::start(const Opening& opening)
{
    Q_ASSERT(onMainThread());
    if (opening.isToolServer || m_started)
        return;
    m_store.open(opening.databasePath);
    m_manager.setLevels(mostSteps);
    std::vector<qint64> dropped;
    readRows(dropped);
    tidyVersions(opening, dropped);
    m_store.remove(dropped);
    m_started = true;
    rebuild();
    connect(&m_manager, &UndoManager::groupClosed, this, &UndoJournal::groupClosed);
    if (!m_steps.empty())
        logLine(u"undo journal: %1 steps to undo, %2 to redo"_s.arg(m_done.size())
                    .arg(m_undone.size()));
}

void UndoJournal::readRows(std::vector<qint64>& dropped)
{
    const double cutoff = now() - mostAge;
    m_store.write([cutoff](SQLite& connection) -> Result<void> {
        if (auto done = connection.run("DELETE FROM undo_journal WHERE at < ?", {cutoff}); !done)
            return done;
        return connection.run("DELETE FROM page_history WHERE at < ?", {cutoff});
    });
    m_store.read([&](SQLite& connection) {
        const auto asked = connection.each(
            "SELECT seq, undone, step FROM undo_journal ORDER BY seq", {}, [&](const SQLRow& row) {
                const qint64 seq = row.integer(0);
                m_nextSeq = std::max(m_nextSeq, seq + 1);
                auto step = stepFromJson(row.utf8(2).toByteArray());
                if (!step) {
                    dropped.push_back(seq);
                    return;
                }
                m_steps[seq] = std::move(*step);
                if (row.integer(1) == 0)
                    m_done.push_back(seq);
                else
                    m_undone.insert(m_undone.begin(), seq);
            });
        if (!asked)
            logLine(u"undo journal: "_s + asked.failure().sentence());
    });
    // A redo branch that was cut off, when the program ended before its rows went.
    const bool wasCut = !m_done.empty() && std::any_of(m_undone.begin(), m_undone.end(),
                                               [&](qint64 seq) { return seq < m_done.back(); });
    if (wasCut)
        for (const qint64 seq : std::vector(m_undone)) {
            drop(seq);
            dropped.push_back(seq);
        }
    while (m_done.size() > mostSteps) {
        dropped.push_back(m_done.front());
        drop(m_done.front());
    }
}

void UndoJournal::tidyVersions(const Opening& opening, std::vector<qint64>& dropped)
{
    std::vector<StepFiles> newestFirst;
    for (const qint64 seq : m_undone)
        newestFirst.push_back({seq, true, versionPaths(m_steps[seq], opening.shownPath)});
    for (auto seq = m_done.rbegin(); seq != m_done.rend(); ++seq)
        newestFirst.push_back({*seq, false, versionPaths(m_steps[*seq], opening.shownPath)});
    std::vector<QString> needed;
    const auto bytesOf = [&](const QString& path) -> qint64 {
        const QString at = findVersion(opening.root, path);
        const auto facts = at.isNull() ? std::nullopt : fileFacts(QFile::encodeName(at));
        return facts ? facts->size : 0;
    };
    for (const qint64 seq :
        stepsOverLimit(newestFirst, bytesOf, opening.mostVersionBytes, needed)) {
        drop(seq);
        dropped.push_back(seq);
    }
    parkVersions(opening.root, needed);
}

// Registers each step as it came, then takes those back that were undone: while rebuilding that
// only puts them on the other stack.
void UndoJournal::rebuild()
{
    m_rebuilding = true;
    const bool byEvent = m_manager.groupsByEvent();
    m_manager.setGroupsByEvent(false);
    const auto push = [this](qint64 seq) {
        m_targets[seq] = std::make_unique<Target>();
        m_manager.beginGroup();
        registerStep(seq, UndoDirection::Undo);
        m_manager.endGroup();
    };
    for (const qint64 seq : m_done)
        push(seq);
    for (auto seq = m_undone.rbegin(); seq != m_undone.rend(); ++seq)
        push(*seq);
    for (size_t i = 0; i < m_undone.size(); ++i)
        m_manager.undo();
    m_manager.setGroupsByEvent(byEvent);
    m_rebuilding = false;
}

void UndoJournal::quit()
{
    Q_ASSERT(onMainThread());
    if (m_gathering && !m_forgetting.contains(*m_gathering)) {
        Step& step = m_steps[*m_gathering];
        step.name = m_manager.undoActionName();
        m_store.put(*m_gathering, step, false);
    } else if (m_gathering) {
        forget(*m_gathering);
    }
    m_gathering.reset();
    m_started = false;
    m_store.drain();
}

} // namespace corvelle
