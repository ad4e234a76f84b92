// One open SQLite connection, its statements and its transactions.
//
// A connection belongs to the thread or queue of its owner; moving it moves that ownership. All
// connections of all subsystems and of both processes are set up the same way: write-ahead log, a
// busy time-out of three seconds, and the scalar function `ulower`. Nothing throws: a failure is a
// Result with the text of the case, "open: …", "prepare: … — SQL" or "step: …".
#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <type_traits>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace corvelle {

// What can be bound to a parameter. A time is a double: seconds since 1970.
class SQLValue
{
public:
    SQLValue(std::nullptr_t) {}
    SQLValue(QString text)
        : m_value(std::move(text))
    {}
    SQLValue(const char* text)
        : m_value(QString::fromUtf8(text))
    {}
    SQLValue(QByteArray bytes)
        : m_value(std::move(bytes))
    {}
    SQLValue(double real)
        : m_value(real)
    {}
    template<class Integer>
    requires std::is_integral_v<Integer> SQLValue(Integer integer)
        : m_value(static_cast<qint64>(integer))
    {}
    // None binds NULL.
    template<class T>
    SQLValue(const std::optional<T>& value)
    {
        if (value)
            m_value = SQLValue(*value).m_value;
    }

private:
    friend class SQLStatement;
    std::variant<std::monostate, QString, QByteArray, double, qint64> m_value;
};

// An empty text as SQL’s NULL.
inline SQLValue textOrNull(const QString& text)
{
    return text.isEmpty() ? SQLValue(nullptr) : SQLValue(text);
}

// The row that a statement stands on. Columns count from 0. Valid until the next step.
class SQLRow
{
public:
    QString text(int column) const;                        // NULL gives the empty text
    std::optional<QString> optionalText(int column) const; // bad UTF-8 is repaired
    qint64 integer(int column) const;                      // NULL gives 0
    std::optional<qint64> optionalInteger(int column) const;
    double real(int column) const; // NULL gives 0
    std::optional<double> date(int column) const;
    std::optional<QByteArray> bytes(int column) const; // zero length gives empty bytes
    // The column's UTF-8 bytes in place, for readers of very many rows. Valid until the next step.
    QByteArrayView utf8(int column) const;
    bool isNull(int column) const;

private:
    friend class SQLStatement;
    explicit SQLRow(sqlite3_stmt* statement)
        : m_statement(statement)
    {}
    sqlite3_stmt* m_statement;
};

// One prepared statement. It may not outlive its connection's use; it is finalized when it goes.
class SQLStatement
{
public:
    // Resets the statement, clears its bindings and binds from position 1 in list order.
    void bind(std::initializer_list<SQLValue> values)
    {
        bind(std::span(values.begin(), values.size()));
    }
    void bind(std::span<const SQLValue> values);

    // True for a row, false when done.
    Result<bool> step();

    // Binds and steps until done.
    Result<void> run(std::initializer_list<SQLValue> values);

    SQLRow row() const { return SQLRow(m_statement.get()); }

private:
    friend class SQLite;
    struct Finalize
    {
        void operator()(sqlite3_stmt* statement) const;
    };
    SQLStatement(sqlite3* connection, sqlite3_stmt* statement)
        : m_connection(connection)
        , m_statement(statement)
    {}
    sqlite3* m_connection;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

class SQLite
{
public:
    // Opens or creates the database and sets the connection up. `inspect` sees the connection
    // before anything that could write to the file; its failure ends the opening.
    using Inspect = std::function<Result<void>(SQLite&)>;
    static Result<SQLite> open(const QString& path, const Inspect& inspect = {});

    // Runs a script of statements without parameters.
    Result<void> execute(const QByteArray& sql);

    Result<SQLStatement> prepare(const QByteArray& sql);
    Result<void> run(const QByteArray& sql, std::initializer_list<SQLValue> values = {});

    // Calls `read` on each row.
    Result<void> each(const QByteArray& sql, std::initializer_list<SQLValue> values,
        const std::function<void(const SQLRow&)>& read);

    // Collects what `read` makes of each row, in row order.
    template<class Read>
    auto query(const QByteArray& sql, std::initializer_list<SQLValue> values, Read read)
        -> Result<std::vector<decltype(read(std::declval<const SQLRow&>()))>>
    {
        std::vector<decltype(read(std::declval<const SQLRow&>()))> rows;
        if (auto done = each(sql, values, [&](const SQLRow& row) { rows.push_back(read(row)); });
            !done)
            return done.failure();
        return rows;
    }

    // BEGIN IMMEDIATE, the body, COMMIT; on the first failure ROLLBACK, and that failure. Inside an
    // open transaction the body joins it: nothing is committed before the outer one is, and there
    // are no savepoints.
    Result<void> transaction(const std::function<Result<void>()>& body);

    bool hasTable(const QByteArray& name);

    // Called now and then while a statement runs, on its thread; it may not use the connection.
    // None takes it away.
    void setTick(std::function<void()> tick);

    // Ends a running statement from another thread.
    void interrupt();

    sqlite3* handle() const { return m_handle.get(); }

private:
    struct Close
    {
        void operator()(sqlite3* handle) const;
    };
    SQLite() = default;
    Result<void> setUp();

    std::unique_ptr<std::function<void()>> m_tick; // at a place of its own: the handle points to it
    std::unique_ptr<sqlite3, Close> m_handle;
};

} // namespace corvelle
