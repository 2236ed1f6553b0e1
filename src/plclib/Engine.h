// The library engine: a SQLite file that answers the Access SQL the system issues, as
// written. Statements are translated on the way in (AccessSql.h); what users see of the
// Access engine is kept: text compares without regard to case, CHAR(n) refuses longer
// text, a MEMO column keeps its text as text, a null field reads as empty text.
// Nothing here shows a message: every failure comes back with the engine's own text.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace plcdb {

// Rows of a query, all fields as text.
class QueryResult {
public:
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;

    size_t RowCount() const { return rows.size(); }
    bool Empty() const { return rows.empty(); }
    // Index of a column, found without regard to case; -1 when the query has no such column.
    int Column(std::string_view name) const;
    // The field of `row` in column `name`; empty text for an unknown column.
    const std::string& Get(size_t row, std::string_view name) const;
};

class Connection;

// A query being read row by row, for loads that should not hold a whole table in memory.
class Cursor {
public:
    Cursor(Cursor&& other) noexcept;
    Cursor& operator=(Cursor&& other) noexcept;
    ~Cursor();

    // Moves to the next row; false at the end or on an error (see Error()).
    bool Next();
    const std::string& Error() const { return error_; }
    int ColumnCount() const;
    std::string ColumnName(int index) const;
    int Column(std::string_view name) const;  // without regard to case; -1 when absent
    // The field as text: null reads as empty, numbers as their decimal text.
    std::string Text(int index) const;
    std::string_view TextView(int index) const;  // valid until the next Next()

private:
    friend class Connection;
    Cursor(sqlite3_stmt* statement, sqlite3* db);
    sqlite3_stmt* statement_ = nullptr;
    sqlite3* db_ = nullptr;
    int columns_ = 0;  // asked once: every call into the engine takes its mutex
    std::string error_;
};

class Connection {
public:
    Connection() = default;
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Opens an existing library file. Fails, with the reason in `error`, when the file is
    // missing, empty, truncated or not a database.
    bool Open(const std::string& path, std::string& error);
    // Creates a new file holding the two base tables of a library (PLC_MANUFACTURER and
    // MANUFACTURER_Simple); fails when the file exists.
    bool Create(const std::string& path, std::string& error);
    bool Close(std::string& error);
    bool IsOpen() const { return db_ != nullptr; }

    // Runs one statement that returns no rows.
    bool Execute(std::string_view accessSql, std::string& error);
    // Runs a query and reads all of its rows.
    std::optional<QueryResult> Query(std::string_view accessSql, std::string& error);
    // Starts a query to be read with Cursor::Next.
    std::optional<Cursor> Select(std::string_view accessSql, std::string& error);

    // SQLite's plan for a query (EXPLAIN QUERY PLAN details, one per line).
    std::string QueryPlan(std::string_view accessSql, std::string& error);
    bool TableExists(std::string_view name);

private:
    sqlite3_stmt* Prepare(std::string_view accessSql, std::string& error);
    bool Configure(std::string& error);
    sqlite3* db_ = nullptr;
    bool walPending_ = false;  // in WAL mode until the first change switches it
};

// Equality of names and values as the engine compares text: without regard to ASCII case.
bool EqualsIgnoreCase(std::string_view a, std::string_view b);

// The statements that make a new empty library.
const std::vector<std::string>& BaseSchemaStatements();

}  // namespace plcdb
