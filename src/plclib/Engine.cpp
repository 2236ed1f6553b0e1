#include "plclib/Engine.h"

#include <sqlite3.h>

#include <array>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "files/FileIdentity.h"
#include "plclib/AccessSql.h"

namespace plcdb {
namespace {

constexpr int kBusyTimeoutMs = 5000;

std::uint32_t BigEndian(const unsigned char* bytes, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        value = (value << 8) | bytes[i];
    }
    return value;
}

// Checks the file header before SQLite sees the file: SQLite takes an empty file for an
// empty database and notices a truncated one only when it reads a missing page.
bool CheckHeader(const std::string& path, std::string& error) {
    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    if (ec) {
        error = "cannot read " + path + ": " + ec.message();
        return false;
    }
    if (size == 0) {
        error = path + " is empty, not a library database";
        return false;
    }
    std::array<unsigned char, 100> header{};
    std::ifstream in(path, std::ios::binary);
    if (!in.read(reinterpret_cast<char*>(header.data()), header.size())) {
        error =
            path + " is too short to be a library database (" + std::to_string(size) + " bytes)";
        return false;
    }
    static const char kMagic[] = "SQLite format 3";
    if (!std::equal(kMagic, kMagic + sizeof kMagic, header.begin())) {
        error = path + " is not a library database (unknown file format)";
        return false;
    }
    std::uint32_t pageSize = BigEndian(&header[16], 2);
    if (pageSize == 1) {
        pageSize = 65536;
    }
    const std::uint32_t pages = BigEndian(&header[28], 4);
    const bool pagesValid = BigEndian(&header[24], 4) == BigEndian(&header[92], 4);
    if (pagesValid && pages > 0 && size < std::uint64_t{pages} * pageSize) {
        error = path + " is truncated: " + std::to_string(size) + " bytes of " +
                std::to_string(std::uint64_t{pages} * pageSize);
        return false;
    }
    return true;
}

std::string ErrorText(sqlite3* db) {
    return db ? sqlite3_errmsg(db) : "out of memory";
}

bool OnlyBlanks(const char* text) {
    for (; text && *text; ++text) {
        if (!std::isspace(static_cast<unsigned char>(*text)) && *text != ';') {
            return false;
        }
    }
    return true;
}

}  // namespace

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

const std::vector<std::string>& BaseSchemaStatements() {
    static const std::vector<std::string> statements = {
        "Create TABLE PLC_MANUFACTURER(MANUFACTURER CHAR(60),SERIES CHAR(60),TYPE CHAR(60),"
        "TABLE_NAME CHAR(60))",
        "Create TABLE MANUFACTURER_Simple(MANUFACTURER CHAR(60),MFG CHAR(60))",
    };
    return statements;
}

// --- QueryResult -------------------------------------------------------------------------

int QueryResult::Column(std::string_view name) const {
    for (size_t i = 0; i < columns.size(); ++i) {
        if (EqualsIgnoreCase(columns[i], name)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

const std::string& QueryResult::Get(size_t row, std::string_view name) const {
    static const std::string empty;
    const int column = Column(name);
    if (column < 0 || row >= rows.size()) {
        return empty;
    }
    return rows[row][static_cast<size_t>(column)];
}

// --- Cursor ------------------------------------------------------------------------------

Cursor::Cursor(sqlite3_stmt* statement, sqlite3* db)
    : statement_(statement), db_(db), columns_(sqlite3_column_count(statement)) {}

Cursor::Cursor(Cursor&& other) noexcept
    : statement_(other.statement_),
      db_(other.db_),
      columns_(other.columns_),
      error_(std::move(other.error_)) {
    other.statement_ = nullptr;
}

Cursor& Cursor::operator=(Cursor&& other) noexcept {
    if (this != &other) {
        sqlite3_finalize(statement_);
        statement_ = other.statement_;
        db_ = other.db_;
        columns_ = other.columns_;
        error_ = std::move(other.error_);
        other.statement_ = nullptr;
    }
    return *this;
}

Cursor::~Cursor() {
    sqlite3_finalize(statement_);
}

bool Cursor::Next() {
    if (!statement_) {
        return false;
    }
    const int rc = sqlite3_step(statement_);
    if (rc == SQLITE_ROW) {
        return true;
    }
    if (rc != SQLITE_DONE) {
        error_ = ErrorText(db_);
    }
    sqlite3_finalize(statement_);
    statement_ = nullptr;
    return false;
}

int Cursor::ColumnCount() const {
    return statement_ ? sqlite3_column_count(statement_) : 0;
}

std::string Cursor::ColumnName(int index) const {
    const char* name = statement_ ? sqlite3_column_name(statement_, index) : nullptr;
    return name ? name : "";
}

int Cursor::Column(std::string_view name) const {
    for (int i = 0; i < ColumnCount(); ++i) {
        if (EqualsIgnoreCase(ColumnName(i), name)) {
            return i;
        }
    }
    return -1;
}

std::string_view Cursor::TextView(int index) const {
    if (!statement_ || index < 0 || index >= ColumnCount()) {
        return {};
    }
    // Library text holds no NUL, so the length is found without a second engine call.
    const auto* text = sqlite3_column_text(statement_, index);
    return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

std::string Cursor::Text(int index) const {
    return std::string(TextView(index));
}

// --- Connection --------------------------------------------------------------------------

Connection::~Connection() {
    std::string ignored;
    Close(ignored);
}

bool Connection::Open(const std::string& path, std::string& error) {
    Close(error);
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        error = path + " does not exist";
        return false;
    }
    try {
        files::RefuseNonRegular(path);  // a FIFO would block the header check for ever
    } catch (const files::FileError& e) {
        error = e.what();
        return false;
    }
    if (!CheckHeader(path, error)) {
        return false;
    }
    if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        error = ErrorText(db_);
        sqlite3_close(db_);
        db_ = nullptr;
        return false;
    }
    return Configure(error);
}

bool Connection::Create(const std::string& path, std::string& error) {
    Close(error);
    std::error_code ec;
    if (std::filesystem::exists(path, ec)) {
        error = path + " already exists";
        return false;
    }
    if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
        SQLITE_OK) {
        error = ErrorText(db_);
        sqlite3_close(db_);
        db_ = nullptr;
        return false;
    }
    if (!Configure(error)) {
        return false;
    }
    for (const auto& statement : BaseSchemaStatements()) {
        if (!Execute(statement, error)) {
            return false;
        }
    }
    return true;
}

// Reads the schema once, so that a file SQLite cannot use fails here and not at the first
// query. A library in WAL mode is switched back to the rollback journal (the file travels
// whole and must be complete alone), but only before the first change: reading changes no
// byte of the file.
bool Connection::Configure(std::string& error) {
    sqlite3_busy_timeout(db_, kBusyTimeoutMs);
    sqlite3_extended_result_codes(db_, 0);
    auto mode = Query("PRAGMA journal_mode", error);
    const bool ok = mode && !mode->Empty() && Execute("SELECT count(*) FROM sqlite_master", error);
    walPending_ = ok && EqualsIgnoreCase(mode->rows[0][0], "wal");
    if (!ok) {
        if (error.empty()) {
            error = "the journal mode of the file cannot be read";
        }
        sqlite3_close(db_);
        db_ = nullptr;
    }
    return ok;
}

bool Connection::Close(std::string& error) {
    if (!db_) {
        return true;
    }
    if (sqlite3_close(db_) != SQLITE_OK) {
        error = ErrorText(db_);
        sqlite3_close_v2(db_);  // released once the last statement is finalised
        db_ = nullptr;
        return false;
    }
    db_ = nullptr;
    return true;
}

sqlite3_stmt* Connection::Prepare(std::string_view accessSql, std::string& error) {
    if (!db_) {
        error = "the library is not open";
        return nullptr;
    }
    const std::string sql = TranslateAccessSql(accessSql);
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db_, sql.c_str(), static_cast<int>(sql.size() + 1), &statement, &tail) !=
        SQLITE_OK) {
        error = ErrorText(db_);
        return nullptr;
    }
    if (!statement) {
        error = "empty statement";
        return nullptr;
    }
    if (!OnlyBlanks(tail)) {
        sqlite3_finalize(statement);
        error = "only one statement can be run at a time";
        return nullptr;
    }
    return statement;
}

bool Connection::Execute(std::string_view accessSql, std::string& error) {
    sqlite3_stmt* statement = Prepare(accessSql, error);
    if (!statement) {
        return false;
    }
    // A transaction is begun to write; the journal mode cannot change inside it.
    const bool begins =
        EqualsIgnoreCase(std::string_view(sqlite3_sql(statement)).substr(0, 5), "BEGIN");
    if (walPending_ && (begins || !sqlite3_stmt_readonly(statement))) {
        walPending_ = false;
        if (!Execute("PRAGMA journal_mode=DELETE", error)) {
            sqlite3_finalize(statement);
            return false;
        }
    }
    int rc = SQLITE_ROW;
    while (rc == SQLITE_ROW) {
        rc = sqlite3_step(statement);
    }
    if (rc != SQLITE_DONE) {
        error = ErrorText(db_);
    }
    sqlite3_finalize(statement);
    return rc == SQLITE_DONE;
}

std::optional<Cursor> Connection::Select(std::string_view accessSql, std::string& error) {
    sqlite3_stmt* statement = Prepare(accessSql, error);
    if (!statement) {
        return std::nullopt;
    }
    return Cursor(statement, db_);
}

std::optional<QueryResult> Connection::Query(std::string_view accessSql, std::string& error) {
    auto cursor = Select(accessSql, error);
    if (!cursor) {
        return std::nullopt;
    }
    QueryResult result;
    const int columns = cursor->ColumnCount();
    for (int i = 0; i < columns; ++i) {
        result.columns.push_back(cursor->ColumnName(i));
    }
    while (cursor->Next()) {
        auto& row = result.rows.emplace_back();
        row.reserve(static_cast<size_t>(columns));
        for (int i = 0; i < columns; ++i) {
            row.push_back(cursor->Text(i));
        }
    }
    if (!cursor->Error().empty()) {
        error = cursor->Error();
        return std::nullopt;
    }
    return result;
}

std::string Connection::QueryPlan(std::string_view accessSql, std::string& error) {
    auto result = Query("EXPLAIN QUERY PLAN " + std::string(accessSql), error);
    std::string plan;
    if (result) {
        for (size_t i = 0; i < result->RowCount(); ++i) {
            plan += result->Get(i, "detail") + "\n";
        }
    }
    return plan;
}

bool Connection::TableExists(std::string_view name) {
    if (name.find('\'') != std::string_view::npos) {
        return false;  // no table of this library can be named so
    }
    std::string error;
    auto result = Query("SELECT name FROM sqlite_master WHERE type='table' AND name='" +
                            std::string(name) + "' COLLATE NOCASE",
                        error);
    return result && !result->Empty();
}

}  // namespace plcdb
