// CPlcLib: the access layer to the component library PLC/QvPLC.db. Every reader and writer of
// the library goes through it; it holds one connection and the entry list loaded from it.
// Failures are reported to the user through the host (a database error as
// "执行数据库操作时出错,错误信息:%s" with the engine's message) and the operation returns false.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "plclib/Engine.h"
#include "plclib/PlcRecords.h"

namespace plcdb {

// The message shown for a statement the engine refused; %s is the engine's text.
inline constexpr const char* kDatabaseErrorFormat = "执行数据库操作时出错,错误信息:%s";

// The caption of the layer's plain message boxes.
inline constexpr const char* kMessageCaption = "Zandrix";

// Shows a database error through the host.
void ReportDatabaseError(std::string_view engineMessage);

// Values are spliced between single quotes as typed, so a value holding a quote would end
// its literal early. Such a value is refused before any statement is built: the database
// error is shown, naming the value, and the result is false. Every code path that splices a
// user's text into a statement checks it here first.
bool CheckValues(std::initializer_list<std::string_view> values);
// The same test without a message.
bool HasQuote(std::string_view value);

// The entry of module (manufacturer, series, type, code), compared as stored; null if none.
const CPlcPartData* FindModule(const std::vector<std::unique_ptr<CPlcPartData>>& entries,
                               std::string_view manufacturer, std::string_view series,
                               std::string_view type, std::string_view code);

// The relative path of the library in the local installation folder.
inline constexpr const char* kLibraryRelativePath = "PLC/QvPLC.db";

}  // namespace plcdb

class CPlcLib {
public:
    using EntryList = std::vector<std::unique_ptr<CPlcPartData>>;

    CPlcLib();
    virtual ~CPlcLib();
    CPlcLib(const CPlcLib&) = delete;
    CPlcLib& operator=(const CPlcLib&) = delete;

    // Opens the library at `path`. A missing file prints
    // "\n错误：PLC元件数据库文件<path>不存在！\n" on the command line; a file that is not a
    // library shows the database error. Opening again closes the previous connection first.
    bool Open(const std::string& path);
    bool Close();
    bool IsOpen() const;
    const std::string& Path() const { return path_; }

    // Replaces the entry list from PLC_MANUFACTURER and the module tables, in the engine's
    // row order. False for an empty or unreadable PLC_MANUFACTURER (the list is then empty).
    // A type row whose module table cannot be read is reported, appears as a type without
    // modules, and the rest of the library still loads.
    bool LoadLibrary();
    // Appends the terminal rows of module `code` to `entry.terminals`, in the engine's order.
    bool LoadTerminals(const std::string& manufacturer, const std::string& series,
                       const std::string& type, const std::string& code, CPlcPartData& entry);

    // Receives every statement run through Execute and Query (and so RenameCode and
    // ShiftSequences), as issued in Access SQL, with whether it succeeded.
    using StatementObserver = std::function<void(const std::string& statement, bool succeeded)>;
    void SetStatementObserver(StatementObserver observer) { observer_ = std::move(observer); }

    // Runs one statement that returns no rows; true when the engine raised no error.
    bool Execute(const std::string& statement);
    // Runs a query; the rows, or nullopt after the error was shown.
    std::optional<plcdb::QueryResult> Query(const std::string& statement);
    // True when `query` returns a first row whose SERIES (selector 2) or TYPE (selector 3)
    // is not empty.
    bool HasSeriesOrType(const std::string& query, int selector);

    // TABLE_NAME of the row with exactly these three values (case counts), or empty.
    std::string GetTableName(const std::string& manufacturer, const std::string& series,
                             const std::string& type);
    // The distinct TABLE_NAMEs of a manufacturer, and of one series when `series` is not
    // empty, in row order; names that differ only in case are listed once.
    bool GetTableNames(const std::string& manufacturer, const std::string& series,
                       std::vector<std::string>& names);
    // MFG of the manufacturer's MANUFACTURER_Simple row, or empty.
    std::string GetShortName(const std::string& manufacturer);

    // Renames a module code in module table `table` and then in `table`_data.
    bool RenameCode(const std::string& table, const std::string& oldCode,
                    const std::string& newCode);
    // Moves the terminal rows of `code` one place: direction +1 moves the rows
    // fromSequence..lastSequence up (highest first), -1 moves fromSequence+1..lastSequence
    // down. Any other direction fails without a statement.
    bool ShiftSequences(const std::string& table, const std::string& code,
                        const std::string& fromSequence, int lastSequence, int direction);

    // The entry list of the last load. The editor appends and removes entries directly.
    const EntryList& Entries() const { return entries_; }
    EntryList& Entries() { return entries_; }

private:
    bool EnsureOpen();
    bool AppendModules(const std::string& manufacturer, const std::string& series,
                       const std::string& type, const std::string& table);

    std::unique_ptr<plcdb::Connection> connection_;
    std::string path_;
    EntryList entries_;
    StatementObserver observer_;
    // The TABLE_NAME of each (manufacturer, series, type) as one full read of
    // PLC_MANUFACTURER found it (the first row wins). Every selection of a module asks for
    // its table, so the read is kept until a statement may have changed the table.
    std::unordered_map<std::string, std::string> tableNames_;
    bool tableNamesRead_ = false;
    bool ReadTableNames();
    void ForgetTableNames() {
        tableNames_.clear();
        tableNamesRead_ = false;
    }
};
