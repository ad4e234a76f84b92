// Reading a library's tree, against the bare read of the same rows. The library is the one in
// CORVELLE_BENCH_DATABASE.

#include "library/SnapshotReader.h"

#include "Items.h"

#include <sqlite3.h>

#include <memory>
#include <optional>

using namespace corvelle;

namespace {

constexpr char allColumns[] =
    "SELECT id, space_id, parent_id, kind, title, icon, color, x, y, position, path, created_at, "
    "updated_at, deleted_at, mime, byte_size, width, height, url, file_id, file_modified FROM "
    "nodes";

std::optional<SQLite> givenDatabase(benchmark::State& state)
{
    auto connection = SQLite::open(qEnvironmentVariable("CORVELLE_BENCH_DATABASE"));
    if (!connection || !connection->hasTable("nodes")) {
        state.SkipWithError("CORVELLE_BENCH_DATABASE names no library's database");
        return std::nullopt;
    }
    return std::move(*connection);
}

void readAndApply(benchmark::State& state, TextLife life)
{
    auto connection = givenDatabase(state);
    if (!connection)
        return;
    qsizetype nodes = 0;
    for (auto _ : state) {
        auto tree = std::make_unique<NodeTree>();
        auto snapshot = readSnapshot(*connection, life);
        tree->apply(std::move(*snapshot));
        nodes = tree->size();
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
    workedThrough(state, static_cast<size_t>(nodes));
}

void bareRead(benchmark::State& state)
{
    auto connection = givenDatabase(state);
    if (!connection)
        return;
    size_t rows = 0;
    for (auto _ : state) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(connection->handle(), allColumns, -1, &statement, nullptr);
        for (rows = 0; sqlite3_step(statement) == SQLITE_ROW; ++rows)
            for (int column = 0; column < 21; ++column) {
                sqlite3_value* value = sqlite3_column_value(statement, column);
                if (sqlite3_value_type(value) == SQLITE_TEXT)
                    benchmark::DoNotOptimize(sqlite3_value_text(value));
                else
                    benchmark::DoNotOptimize(sqlite3_value_double(value));
            }
        sqlite3_finalize(statement);
    }
    workedThrough(state, rows);
}

} // namespace

// Few iterations: texts that live as long as the process are never given back.
BENCHMARK_CAPTURE(readAndApply, process, TextLife::Process)->Iterations(4);
BENCHMARK_CAPTURE(readAndApply, own, TextLife::Own)->Iterations(4);
BENCHMARK(bareRead)->Iterations(4);
