// How the library's own changes are checked against what stands now, taken back and done again.
#pragma once

#include "library/ChangeApplier.h"
#include "library/UndoJournal.h"

namespace corvelle {

class Edits;

class EditAppliers : public ChangeApplier
{
public:
    explicit EditAppliers(Edits& edits)
        : m_edits(edits)
    {}

    // Nodes made, trashed, put back, renamed, coloured, moved and placed.
    void registerAt(UndoJournal& journal);

    Look look(
        const Change& change, UndoDirection direction, const QSet<QString>& touched) const override;
    std::optional<Change> apply(const Change& change, UndoDirection direction) override;

private:
    Edits& m_edits;
};

} // namespace corvelle
