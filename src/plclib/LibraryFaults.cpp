#include "plclib/LibraryFaults.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <memory>
#include <regex>
#include <set>

namespace plcdb {

namespace {

struct Closer {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
using Db = std::unique_ptr<sqlite3, Closer>;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string Quoted(const std::string& name) {
    std::string out = "\"";
    for (const char c : name) {
        out += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return out + "\"";
}

// The rows of a query as text (null as empty); false with `error` when it cannot run.
bool Query(sqlite3* db, const std::string& sql, std::vector<std::vector<std::string>>& rows,
           std::string& error) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        error = sqlite3_errmsg(db);
        return false;
    }
    int status;
    while ((status = sqlite3_step(statement)) == SQLITE_ROW) {
        std::vector<std::string> row;
        for (int c = 0; c < sqlite3_column_count(statement); ++c) {
            const auto* text = sqlite3_column_text(statement, c);
            row.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
        }
        rows.push_back(std::move(row));
    }
    sqlite3_finalize(statement);
    if (status != SQLITE_DONE) {
        error = sqlite3_errmsg(db);
        return false;
    }
    return true;
}

// Characters, not bytes: the limits count what the user typed.
std::size_t Utf8Length(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

// Column -> the longest text it may hold, from the table's declaration: CHAR(n) as declared
// in Access SQL, or the length check this system's engine writes for it.
std::map<std::string, std::size_t> ColumnLimits(const std::string& createSql) {
    std::map<std::string, std::size_t> limits;
    static const std::regex check(R"re(length\("([^"]+)"\)\s*<=\s*(\d+))re", std::regex::icase);
    static const std::regex declared(R"re((\w+)\s+CHAR\s*\(\s*(\d+)\s*\))re", std::regex::icase);
    for (const std::regex* pattern : {&check, &declared}) {
        for (auto it = std::sregex_iterator(createSql.begin(), createSql.end(), *pattern);
             it != std::sregex_iterator(); ++it) {
            limits[(*it)[1].str()] = std::stoul((*it)[2].str());
        }
    }
    return limits;
}

class Checker {
public:
    Checker(sqlite3* db, std::vector<LibraryFault>& faults) : db_(db), faults_(faults) {}

    bool Run(std::string& error) {
        std::vector<std::vector<std::string>> rows;
        if (!Query(db_, "SELECT name, sql FROM sqlite_master WHERE type = 'table'", rows, error)) {
            return false;
        }
        for (const auto& row : rows) {
            tables_[Lower(row[0])] = {row[0], row[1]};
        }
        if (!tables_.count("plc_manufacturer")) {
            error = "it has no PLC_MANUFACTURER table: not a component library";
            return false;
        }
        CheckLengths("PLC_MANUFACTURER", "MANUFACTURER");
        if (tables_.count("manufacturer_simple")) {
            CheckLengths("MANUFACTURER_Simple", "MANUFACTURER");
        }
        CheckShortNames();
        std::vector<std::vector<std::string>> types;
        if (!Query(db_, "SELECT MANUFACTURER, SERIES, TYPE, TABLE_NAME FROM PLC_MANUFACTURER",
                   types, error)) {
            return false;
        }
        for (const auto& type : types) {
            CheckType(type[0] + "/" + type[1] + "/" + type[2], type[3]);
        }
        CheckUnnamedTables();
        return true;
    }

private:
    void Add(std::string where, std::string what) {
        faults_.push_back({std::move(where), std::move(what)});
    }

    // Rows of `table` whose texts are longer than their columns allow; `key` names the row.
    void CheckLengths(const std::string& table, const std::string& key,
                      const std::string& prefix = "") {
        const auto it = tables_.find(Lower(table));
        if (it == tables_.end()) {
            return;
        }
        for (const auto& [column, limit] : ColumnLimits(it->second.sql)) {
            std::vector<std::vector<std::string>> rows;
            std::string error;
            const std::string sql = "SELECT " + Quoted(key) + ", " + Quoted(column) + " FROM " +
                                    Quoted(it->second.name) + " WHERE length(" + Quoted(column) +
                                    ") > " + std::to_string(limit);
            if (!Query(db_, sql, rows, error)) {
                continue;
            }
            for (const auto& row : rows) {
                if (Utf8Length(row[1]) > limit) {
                    Add(prefix.empty() ? it->second.name + " " + row[0] : prefix + row[0],
                        column + " holds " + std::to_string(Utf8Length(row[1])) +
                            " characters, more than its " + std::to_string(limit));
                }
            }
        }
    }

    void CheckShortNames() {
        std::vector<std::vector<std::string>> rows;
        std::string error;
        const bool simple = tables_.count("manufacturer_simple") > 0;
        const std::string sql =
            simple ? "SELECT DISTINCT p.MANUFACTURER FROM PLC_MANUFACTURER p WHERE NOT EXISTS "
                     "(SELECT 1 FROM MANUFACTURER_Simple s WHERE s.MANUFACTURER = "
                     "p.MANUFACTURER COLLATE NOCASE AND trim(coalesce(s.MFG, '')) <> '')"
                   : "SELECT DISTINCT MANUFACTURER FROM PLC_MANUFACTURER";
        if (!Query(db_, sql, rows, error)) {
            return;
        }
        for (const auto& row : rows) {
            Add(row[0], "the manufacturer has no short name");
        }
    }

    void CheckType(const std::string& path, const std::string& tableName) {
        // A type made without modules names no table.
        if (tableName.empty() || tableName == "-") {
            return;
        }
        named_.insert(Lower(tableName));
        named_.insert(Lower(tableName + "_data"));
        const auto modules = tables_.find(Lower(tableName));
        const auto terms = tables_.find(Lower(tableName + "_data"));
        if (modules == tables_.end() || terms == tables_.end()) {
            Add(path, "its table " + (modules == tables_.end() ? tableName : tableName + "_data") +
                          " is missing");
            return;
        }
        CheckLengths(modules->second.name, "CODE", path + "/");
        CheckLengths(terms->second.name, "CODE", path + "/");
        std::vector<std::vector<std::string>> rows;
        std::string error;
        if (!Query(db_,
                   "SELECT CODE, SEQUENCE, TermValue FROM " + Quoted(terms->second.name) +
                       " ORDER BY CODE, SEQUENCE",
                   rows, error)) {
            Add(path, "its terminal rows cannot be read: " + error);
            return;
        }
        std::map<std::string, std::vector<const std::vector<std::string>*>> byModule;
        for (const auto& row : rows) {
            byModule[row[0]].push_back(&row);
        }
        for (const auto& [code, terminals] : byModule) {
            CheckTerminals(path + "/" + code, terminals);
        }
    }

    void CheckTerminals(const std::string& where,
                        const std::vector<const std::vector<std::string>*>& terminals) {
        std::map<long, int> sequences;
        std::map<std::string, int> values;
        for (const auto* row : terminals) {
            ++sequences[std::atol((*row)[1].c_str())];
            if (!(*row)[2].empty()) {
                ++values[Lower((*row)[2])];
            }
        }
        for (const auto& [sequence, count] : sequences) {
            if (count > 1) {
                Add(where, "terminal sequence " + std::to_string(sequence) + " is used " +
                               std::to_string(count) + " times");
            }
        }
        const long last = sequences.empty() ? 0 : sequences.rbegin()->first;
        for (long s = 1; s <= last && s <= 100000; ++s) {
            if (!sequences.count(s)) {
                Add(where, "terminal sequence " + std::to_string(s) + " is missing");
            }
        }
        for (const auto* row : terminals) {
            const std::string key = Lower((*row)[2]);
            if (!key.empty() && values[key] > 1) {
                Add(where, "terminal value '" + (*row)[2] + "' is used " +
                               std::to_string(values[key]) + " times");
                values[key] = 0;  // once per value
            }
        }
    }

    void CheckUnnamedTables() {
        for (const auto& [lower, table] : tables_) {
            if (lower == "plc_manufacturer" || lower == "manufacturer_simple" ||
                lower.rfind("sqlite_", 0) == 0 || named_.count(lower)) {
                continue;
            }
            Add(table.name, "no type names this table in TABLE_NAME");
        }
    }

    struct Table {
        std::string name, sql;
    };
    sqlite3* db_;
    std::vector<LibraryFault>& faults_;
    std::map<std::string, Table> tables_;  // by lower-case name
    std::set<std::string> named_;
};

}  // namespace

std::optional<std::vector<LibraryFault>> FindLibraryFaults(const std::string& path,
                                                           std::string& error) {
    sqlite3* raw = nullptr;
    const int opened = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
    Db db(raw);
    if (opened != SQLITE_OK) {
        error = raw ? sqlite3_errmsg(raw) : "cannot open it";
        return std::nullopt;
    }
    std::vector<LibraryFault> faults;
    Checker checker(db.get(), faults);
    if (!checker.Run(error)) {
        return std::nullopt;
    }
    return faults;
}

}  // namespace plcdb
