#include "library/UndoManager.h"

#include "base/MainThread.h"

#include <algorithm>

namespace corvelle {

void UndoManager::beginGroup()
{
    Q_ASSERT(onMainThread());
    ++m_level;
}

void UndoManager::endGroup()
{
    Q_ASSERT(m_level > 0);
    if (--m_level > 0)
        return;
    m_eventGroup = false;
    Group closed = std::exchange(m_open, {});
    if (!closed.actions.empty()) {
        auto& stack = m_running == Running::Undo ? m_redo : m_undo;
        stack.push_back(std::move(closed));
        if (stack.size() > m_levels)
            stack.erase(stack.begin());
    }
    emit groupClosed();
    emit changed();
}

void UndoManager::closeEventGroup()
{
    if (m_eventGroup && m_level == 1)
        endGroup();
}

void UndoManager::registerUndo(const void* target, Action action)
{
    Q_ASSERT(onMainThread());
    if (!isRegistrationEnabled())
        return;
    if (m_running == Running::None)
        m_redo.clear();
    const bool alone = m_level == 0;
    if (alone) {
        beginGroup();
        if (m_groupsByEvent) {
            m_eventGroup = true;
            QMetaObject::invokeMethod(
                this,
                [this, turn = ++m_eventTurn] {
                    if (turn == m_eventTurn)
                        closeEventGroup();
                },
                Qt::QueuedConnection);
        }
    }
    m_open.actions.push_back({target, std::move(action)});
    if (alone && !m_groupsByEvent)
        endGroup();
    else
        emit changed();
}

void UndoManager::setActionName(const QString& name)
{
    if (m_level > 0)
        m_open.name = name;
    else if (!m_undo.empty())
        m_undo.back().name = name;
    emit changed();
}

void UndoManager::removeAllActions(const void* target)
{
    const auto isHis = [target](const Registration& r) { return r.target == target; };
    std::erase_if(m_open.actions, isHis);
    for (auto* stack : {&m_undo, &m_redo}) {
        for (Group& group : *stack)
            std::erase_if(group.actions, isHis);
        std::erase_if(*stack, [](const Group& group) { return group.actions.empty(); });
    }
    emit changed();
}

QString UndoManager::undoActionName() const
{
    if (!m_open.actions.empty())
        return m_open.name;
    return m_undo.empty() ? QString() : m_undo.back().name;
}

void UndoManager::undo()
{
    closeEventGroup();
    run(Running::Undo, m_undo);
}

void UndoManager::redo()
{
    closeEventGroup();
    run(Running::Redo, m_redo);
}

// The group leaves its stack first: an action may remove others, also of this group.
void UndoManager::run(Running running, std::vector<Group>& stack)
{
    Q_ASSERT(onMainThread());
    if (m_running != Running::None || m_level > 0 || stack.empty())
        return;
    const Group group = std::move(stack.back());
    stack.pop_back();
    m_running = running;
    beginGroup();
    m_open.name = group.name;
    for (auto each = group.actions.rbegin(); each != group.actions.rend(); ++each)
        each->action();
    endGroup();
    m_running = Running::None;
    emit changed();
}

std::vector<QString> UndoManager::undoNames() const
{
    std::vector<QString> names;
    if (!m_open.actions.empty())
        names.push_back(m_open.name);
    for (auto group = m_undo.rbegin(); group != m_undo.rend(); ++group)
        names.push_back(group->name);
    return names;
}

std::vector<QString> UndoManager::redoNames() const
{
    std::vector<QString> names;
    for (auto group = m_redo.rbegin(); group != m_redo.rend(); ++group)
        names.push_back(group->name);
    return names;
}

} // namespace corvelle
