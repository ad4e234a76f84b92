// What SQLite itself takes to read or write the rows of a library's nodes: the limit that our own
// reading and bringing in are measured against. Prints milliseconds.
//
//   bench_bare read DATABASE          every column of every row, in a process of its own
//   bench_bare insert FROM TO         the rows of FROM into the same tables and indexes in the new
//   file TO

#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr char columns[] =
    "id, space_id, parent_id, kind, title, icon, color, x, y, position, path, created_at, "
    "updated_at, deleted_at, mime, byte_size, width, height, url, file_id, file_modified";
constexpr int columnCount = 21;
constexpr int rowsPerTransaction = 400;

double nowMs()
{
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

[[noreturn]] void fail(const char* what, sqlite3* connection)
{
    std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(connection));
    std::exit(1);
}

sqlite3* opened(const char* path)
{
    sqlite3* connection = nullptr;
    if (sqlite3_open(path, &connection) != SQLITE_OK)
        fail("open", connection);
    return connection;
}

sqlite3_stmt* prepared(sqlite3* connection, const std::string& sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
        fail(sql.c_str(), connection);
    return statement;
}

void execute(sqlite3* connection, const std::string& sql)
{
    if (sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(sql.c_str(), connection);
}

int read(const char* path)
{
    const double start = nowMs();
    sqlite3* connection = opened(path);
    sqlite3_stmt* rows = prepared(connection, std::string("SELECT ") + columns + " FROM nodes");
    long count = 0;
    size_t touched = 0; // so that no column is read for nothing
    while (sqlite3_step(rows) == SQLITE_ROW) {
        for (int i = 0; i < columnCount; ++i) {
            sqlite3_value* value = sqlite3_column_value(rows, i);
            switch (sqlite3_value_type(value)) {
            case SQLITE_INTEGER:
                touched += static_cast<size_t>(sqlite3_value_int64(value));
                break;
            case SQLITE_FLOAT:
                touched += sqlite3_value_double(value) > 0;
                break;
            case SQLITE_NULL:
                break;
            default:
                touched +=
                    sqlite3_value_text(value)[0] + static_cast<size_t>(sqlite3_value_bytes(value));
            }
        }
        ++count;
    }
    sqlite3_finalize(rows);
    sqlite3_close(connection);
    std::printf("%.3f\n", nowMs() - start);
    std::fprintf(stderr, "%ld rows, %zu\n", count, touched);
    return 0;
}

// The definitions of the tables and indexes, without those that SQLite makes itself.
std::vector<std::string> schemaOf(sqlite3* connection)
{
    std::vector<std::string> result;
    sqlite3_stmt* rows = prepared(connection, "SELECT sql FROM sqlite_master WHERE sql NOT NULL "
                                              "AND tbl_name = 'nodes' ORDER BY type DESC");
    while (sqlite3_step(rows) == SQLITE_ROW)
        result.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(rows, 0)));
    sqlite3_finalize(rows);
    return result;
}

using Row = std::vector<sqlite3_value*>;

std::vector<Row> rowsOf(sqlite3* connection)
{
    std::vector<Row> result;
    sqlite3_stmt* rows =
        prepared(connection, std::string("SELECT ") + columns + " FROM nodes ORDER BY rowid");
    while (sqlite3_step(rows) == SQLITE_ROW) {
        Row& row = result.emplace_back();
        for (int i = 0; i < columnCount; ++i)
            row.push_back(sqlite3_value_dup(sqlite3_column_value(rows, i)));
    }
    sqlite3_finalize(rows);
    return result;
}

int insert(const char* from, const char* to)
{
    sqlite3* source = opened(from);
    const std::vector<std::string> schema = schemaOf(source);
    const std::vector<Row> rows = rowsOf(source);
    sqlite3_close(source);
    std::remove(to);

    const double start = nowMs();
    sqlite3* target = opened(to);
    execute(target,
        "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA journal_size_limit=4194304;");
    for (const std::string& sql : schema)
        execute(target, sql);
    std::string marks = "?";
    for (int i = 1; i < columnCount; ++i)
        marks += ", ?";
    sqlite3_stmt* statement =
        prepared(target, std::string("INSERT INTO nodes (") + columns + ") VALUES (" + marks + ")");
    for (size_t i = 0; i < rows.size(); ++i) {
        if (i % rowsPerTransaction == 0)
            execute(target, i == 0 ? "BEGIN IMMEDIATE" : "COMMIT; BEGIN IMMEDIATE");
        for (int column = 0; column < columnCount; ++column)
            sqlite3_bind_value(statement, column + 1, rows[i][static_cast<size_t>(column)]);
        if (sqlite3_step(statement) != SQLITE_DONE)
            fail("insert", target);
        sqlite3_reset(statement);
    }
    execute(target, "COMMIT");
    sqlite3_finalize(statement);
    sqlite3_close(target);
    std::printf("%.3f\n", nowMs() - start);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "read") == 0)
        return read(argv[2]);
    if (argc == 4 && std::strcmp(argv[1], "insert") == 0)
        return insert(argv[2], argv[3]);
    std::fprintf(stderr, "bench_bare read DATABASE | insert FROM TO\n");
    return 2;
}
