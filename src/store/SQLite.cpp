#include "store/SQLite.h"

#include "base/Text.h"
#include "store/StatementCounter.h"

#include <sqlite3.h>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int busyTimeoutMs = 3000;

constexpr char setUpScript[] = "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; "
                               "PRAGMA foreign_keys=ON; PRAGMA journal_size_limit=4194304;";

Failure stepFailure(sqlite3* connection)
{
    return Failure(u"step: "_s + QString::fromUtf8(sqlite3_errmsg(connection)),
        sqlite3_errcode(connection) == SQLITE_FULL ? ENOSPC : 0);
}

void ulower(sqlite3_context* context, int, sqlite3_value** arguments)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    if (!text) {
        sqlite3_result_null(context);
        return;
    }
    const QString decoded = QString::fromUtf8(text, sqlite3_value_bytes(arguments[0]));
    const QByteArray lowered = lowerCased(composed(decoded)).toUtf8();
    sqlite3_result_text(
        context, lowered.constData(), static_cast<int>(lowered.size()), SQLITE_TRANSIENT);
}

} // namespace

// ---- rows ----

// A connection stays on its owner's thread, so a value may be taken out once and asked without the
// lock that each call for a column takes.
QByteArrayView SQLRow::utf8(int column) const
{
    sqlite3_value* value = sqlite3_column_value(m_statement, column);
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return QByteArrayView(text, text ? sqlite3_value_bytes(value) : 0);
}

bool SQLRow::isNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

QString SQLRow::text(int column) const
{
    return QString::fromUtf8(utf8(column));
}

std::optional<QString> SQLRow::optionalText(int column) const
{
    return isNull(column) ? std::nullopt : std::optional(text(column));
}

qint64 SQLRow::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

std::optional<qint64> SQLRow::optionalInteger(int column) const
{
    sqlite3_value* value = sqlite3_column_value(m_statement, column);
    if (sqlite3_value_type(value) == SQLITE_NULL)
        return std::nullopt;
    return sqlite3_value_int64(value);
}

double SQLRow::real(int column) const
{
    return sqlite3_column_double(m_statement, column);
}

std::optional<double> SQLRow::date(int column) const
{
    sqlite3_value* value = sqlite3_column_value(m_statement, column);
    if (sqlite3_value_type(value) == SQLITE_NULL)
        return std::nullopt;
    return sqlite3_value_double(value);
}

std::optional<QByteArray> SQLRow::bytes(int column) const
{
    if (isNull(column))
        return std::nullopt;
    const void* data = sqlite3_column_blob(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    return size == 0 ? QByteArray("") : QByteArray(static_cast<const char*>(data), size);
}

// ---- statements ----

void SQLStatement::Finalize::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

void SQLStatement::bind(std::span<const SQLValue> values)
{
    sqlite3_stmt* statement = m_statement.get();
    countStatement(sqlite3_stmt_readonly(statement));
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    int position = 0;
    for (const SQLValue& value : values) {
        ++position;
        if (const auto* text = std::get_if<QString>(&value.m_value)) {
            const QByteArray utf8 = text->toUtf8();
            sqlite3_bind_text64(statement, position, utf8.constData(),
                static_cast<sqlite3_uint64>(utf8.size()), SQLITE_TRANSIENT, SQLITE_UTF8);
        } else if (const auto* bytes = std::get_if<QByteArray>(&value.m_value)) {
            if (bytes->isEmpty())
                sqlite3_bind_zeroblob(statement, position, 0);
            else
                sqlite3_bind_blob64(statement, position, bytes->constData(),
                    static_cast<sqlite3_uint64>(bytes->size()), SQLITE_TRANSIENT);
        } else if (const auto* real = std::get_if<double>(&value.m_value)) {
            sqlite3_bind_double(statement, position, *real);
        } else if (const auto* integer = std::get_if<qint64>(&value.m_value)) {
            sqlite3_bind_int64(statement, position, *integer);
        }
    }
}

Result<bool> SQLStatement::step()
{
    switch (sqlite3_step(m_statement.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        return stepFailure(m_connection);
    }
}

Result<void> SQLStatement::run(std::initializer_list<SQLValue> values)
{
    bind(values);
    while (true) {
        const auto stepped = step();
        if (!stepped)
            return stepped.failure();
        if (!*stepped)
            break;
    }
    sqlite3_reset(m_statement.get());
    return {};
}

// ---- connection ----

void SQLite::Close::operator()(sqlite3* handle) const
{
    sqlite3_close_v2(handle);
}

Result<SQLite> SQLite::open(const QString& path, const Inspect& inspect)
{
    SQLite connection;
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(path.toUtf8().constData(), &handle,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    connection.m_handle.reset(handle);
    if (code != SQLITE_OK)
        return Failure(u"open: "_s +
                       QString::fromUtf8(handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code)));
    sqlite3_busy_timeout(handle, busyTimeoutMs);
    if (inspect)
        if (const auto fine = inspect(connection); !fine)
            return fine.failure();
    if (const auto done = connection.setUp(); !done)
        return done.failure();
    return connection;
}

Result<void> SQLite::setUp()
{
    if (auto done = execute(setUpScript); !done)
        return done;
    const int code = sqlite3_create_function_v2(m_handle.get(), "ulower", 1,
        SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, ulower, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        return stepFailure(m_handle.get());
    return {};
}

Result<void> SQLite::execute(const QByteArray& sql)
{
    char* message = nullptr;
    if (sqlite3_exec(m_handle.get(), sql.constData(), nullptr, nullptr, &message) == SQLITE_OK)
        return {};
    const QString told = QString::fromUtf8(message ? message : sqlite3_errmsg(m_handle.get()));
    sqlite3_free(message);
    return Failure(u"step: "_s + told, sqlite3_errcode(m_handle.get()) == SQLITE_FULL ? ENOSPC : 0);
}

Result<SQLStatement> SQLite::prepare(const QByteArray& sql)
{
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v2(
        m_handle.get(), sql.constData(), static_cast<int>(sql.size()), &statement, nullptr);
    if (code != SQLITE_OK)
        return Failure(u"prepare: "_s + QString::fromUtf8(sqlite3_errmsg(m_handle.get())) +
                       u" — "_s + QString::fromUtf8(sql));
    return SQLStatement(m_handle.get(), statement);
}

Result<void> SQLite::run(const QByteArray& sql, std::initializer_list<SQLValue> values)
{
    auto statement = prepare(sql);
    if (!statement)
        return statement.failure();
    return statement->run(values);
}

Result<void> SQLite::each(const QByteArray& sql, std::initializer_list<SQLValue> values,
    const std::function<void(const SQLRow&)>& read)
{
    auto statement = prepare(sql);
    if (!statement)
        return statement.failure();
    statement->bind(values);
    while (true) {
        const auto row = statement->step();
        if (!row)
            return row.failure();
        if (!*row)
            return {};
        read(statement->row());
    }
}

Result<void> SQLite::transaction(const std::function<Result<void>()>& body)
{
    if (!sqlite3_get_autocommit(m_handle.get()))
        return body();
    if (auto begun = execute("BEGIN IMMEDIATE"); !begun)
        return begun;
    auto done = body();
    if (done)
        done = execute("COMMIT");
    // A failing statement may have rolled the transaction back by itself; the rollback's own
    // failure tells nothing.
    if (!done)
        (void)execute("ROLLBACK");
    return done;
}

bool SQLite::hasTable(const QByteArray& name)
{
    bool found = false;
    const auto asked = each("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?",
        {QString::fromUtf8(name)}, [&](const SQLRow&) { found = true; });
    return asked && found;
}

void SQLite::setTick(std::function<void()> tick)
{
    constexpr int instructions = 20'000; // a millisecond or two
    m_tick = tick ? std::make_unique<std::function<void()>>(std::move(tick)) : nullptr;
    sqlite3_progress_handler(
        m_handle.get(), m_tick ? instructions : 0,
        [](void* told) {
            (*static_cast<std::function<void()>*>(told))();
            return 0;
        },
        m_tick.get());
}

void SQLite::interrupt()
{
    sqlite3_interrupt(m_handle.get());
}

} // namespace corvelle
