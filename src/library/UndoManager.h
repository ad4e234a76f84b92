// The order of what can be undone and done again: a stack of named groups of actions for each.
//
// On the main thread. What is registered while an action of undo runs belongs to the redo of it,
// and the other way round. With groupsByEvent the first registration opens a group, and the next
// turn of the event loop closes it, so that all that one gesture changes is one step.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

namespace corvelle {

class UndoManager : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void()>;

    using QObject::QObject;

    void setLevels(size_t most) { m_levels = most; }

    bool groupsByEvent() const { return m_groupsByEvent; }
    void setGroupsByEvent(bool groups) { m_groupsByEvent = groups; }

    // Groups nest; only the outermost is a step.
    void beginGroup();
    void endGroup();
    int groupingLevel() const { return m_level; }
    // Ends the group of this event now; nothing when none is open.
    void closeEventGroup();

    void disableRegistration() { ++m_disabled; }
    void enableRegistration() { --m_disabled; }
    bool isRegistrationEnabled() const { return m_disabled == 0; }

    // `target` stands for whoever registers; it is never called or read. A registration that is no
    // undo or redo itself empties the redo stack.
    void registerUndo(const void* target, Action action);
    // The name of the open group, else of the newest one.
    void setActionName(const QString& name);
    void removeAllActions(const void* target);

    bool canUndo() const { return !m_open.actions.empty() || !m_undo.empty(); }
    bool canRedo() const { return !m_redo.empty(); }
    QString undoActionName() const;
    QString redoActionName() const { return m_redo.empty() ? QString() : m_redo.back().name; }
    void undo();
    void redo();
    bool isUndoing() const { return m_running == Running::Undo; }
    bool isRedoing() const { return m_running == Running::Redo; }

    // The names of all groups, the next to be taken first.
    std::vector<QString> undoNames() const;
    std::vector<QString> redoNames() const;

signals:
    void groupClosed();
    // The stacks or their names.
    void changed();

private:
    enum class Running { None, Undo, Redo };

    struct Registration
    {
        const void* target;
        Action action;
    };
    struct Group
    {
        QString name;
        std::vector<Registration> actions;
    };

    void run(Running running, std::vector<Group>& stack);

    std::vector<Group> m_undo, m_redo; // the newest last
    Group m_open;
    int m_level = 0;
    bool m_eventGroup = false; // the open group is one of an event
    int m_eventTurn = 0;
    bool m_groupsByEvent = true;
    int m_disabled = 0;
    size_t m_levels = 200;
    Running m_running = Running::None;
};

} // namespace corvelle
