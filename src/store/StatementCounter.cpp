#include "store/StatementCounter.h"

#include "base/MainThread.h"

namespace corvelle {

namespace {

StatementCounts counts; // main thread only

} // namespace

StatementCounts mainThreadStatements()
{
    return counts;
}

void resetMainThreadStatements()
{
    counts = {};
}

void countStatement(bool readsOnly)
{
    if (onMainThread())
        ++(readsOnly ? counts.reads : counts.writes);
}

} // namespace corvelle
