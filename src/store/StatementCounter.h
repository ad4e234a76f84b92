#pragma once

#include <QtGlobal>

namespace corvelle {

// How many statements the main thread ran itself: it should be few, and the test driver watches it.
struct StatementCounts
{
    qint64 reads = 0, writes = 0;
};

StatementCounts mainThreadStatements();
void resetMainThreadStatements();

// Called by the statements themselves, on any thread; counts those of the main one.
void countStatement(bool readsOnly);

} // namespace corvelle
