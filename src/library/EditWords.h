// How the failures of edits are told.
#pragma once

#include "base/Result.h"

namespace corvelle {

// What stands behind "Couldn’t rename “Taxes”" and the like.
QString reasonText(const Failure& failure);

// Counts what failed of several items, and tells it as one sentence: "Couldn’t move “Taxes”. Try
// again." or "Couldn’t move 3 items. Try again.".
class FailureCount
{
public:
    void add(const QString& title, const Failure& failure)
    {
        if (m_count++ == 0) {
            m_title = title;
            m_reason = reasonText(failure);
        }
    }
    int count() const { return m_count; }
    const QString& title() const { return m_title; }
    const QString& reason() const { return m_reason; }

private:
    int m_count = 0;
    QString m_title, m_reason; // of the first
};

} // namespace corvelle
