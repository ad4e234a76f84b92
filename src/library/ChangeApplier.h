// How the owner of a kind of change takes it back for the undo journal, which knows no owner.
#pragma once

#include "library/Change.h"

namespace corvelle {

// The verdict on a change before anything is applied.
struct LookFine
{
    Change change; // narrowed to what can still be applied
};
struct LookChanged
{
    QString message; // what stands otherwise now, as a sentence
};
struct LookGone
{};
using Look = std::variant<LookFine, LookChanged, LookGone>;

class ChangeApplier
{
public:
    virtual ~ChangeApplier() = default;

    // Compares what the change left behind with what stands now. The ids in `touched` aren't
    // compared: a change of the same step that is applied before explains their state.
    virtual Look look(
        const Change& change, UndoDirection direction, const QSet<QString>& touched) const = 0;

    // Applies it and gives it as it has to be kept. None when it failed: the owner has told the
    // person why, and the step ends.
    virtual std::optional<Change> apply(const Change& change, UndoDirection direction) = 0;
};

} // namespace corvelle
