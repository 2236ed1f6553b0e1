#include "JetWriter.h"

#include <algorithm>
#include <charconv>

#include "Pages.h"
#include "Tables.h"
#include "Text.h"

namespace jetwrite {
namespace {

constexpr size_t kMaxNameLength = 64;
constexpr size_t kMaxColumns = 255;

std::string Fold(const std::string& name) {
    std::string folded = name;
    for (char& c : folded) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return folded;
}

// Names follow the engine's rules for object names.
bool CheckName(const std::string& name, const std::string& what, std::string& error) {
    std::u16string wide;
    if (!Utf8ToUtf16(name, wide)) {
        error = what + " is not valid UTF-8";
        return false;
    }
    if (wide.empty() || wide.size() > kMaxNameLength) {
        error = what + " must have 1 to 64 characters";
        return false;
    }
    if (wide[0] == u' ') {
        error = what + " must not start with a blank";
        return false;
    }
    for (const char16_t c : wide) {
        if (c < 0x20 || c == u'.' || c == u'!' || c == u'`' || c == u'[' || c == u']') {
            error = what + " must not hold control characters, '.', '!', '`', '[' or ']'";
            return false;
        }
    }
    return true;
}

bool CheckTable(const Table& table, std::string& error) {
    const std::string what = "table \"" + table.name + "\"";
    if (!CheckName(table.name, "the name of " + what, error)) {
        return false;
    }
    if (Fold(table.name).rfind("msys", 0) == 0) {
        error = "the name of " + what + " is kept for system tables (MSys...)";
        return false;
    }
    if (table.columns.empty() || table.columns.size() > kMaxColumns) {
        error = what + " must have 1 to 255 columns";
        return false;
    }
    std::vector<std::string> seen;
    for (const auto& column : table.columns) {
        const std::string which = "column \"" + column.name + "\" of " + what;
        if (!CheckName(column.name, "the name of " + which, error)) {
            return false;
        }
        if (std::find(seen.begin(), seen.end(), Fold(column.name)) != seen.end()) {
            error = what + " has two columns named \"" + column.name + "\"";
            return false;
        }
        seen.push_back(Fold(column.name));
        if (column.type == ColumnType::Text && (column.length < 1 || column.length > 255)) {
            error = "the length of " + which + " must be 1 to 255 characters";
            return false;
        }
    }
    for (size_t r = 0; r < table.rows.size(); ++r) {
        if (table.rows[r].size() != table.columns.size()) {
            error = what + ", row " + std::to_string(r + 1) + ": " +
                    std::to_string(table.rows[r].size()) + " fields for " +
                    std::to_string(table.columns.size()) + " columns";
            return false;
        }
    }
    return true;
}

}  // namespace

bool CheckDatabase(const Database& db, std::string& error) {
    std::vector<std::string> seen;
    for (const auto& table : db.tables) {
        if (!CheckTable(table, error)) {
            return false;
        }
        if (std::find(seen.begin(), seen.end(), Fold(table.name)) != seen.end()) {
            error = "two tables are named \"" + table.name + "\"";
            return false;
        }
        seen.push_back(Fold(table.name));
    }
    return true;
}

namespace {

// The catalogue: one row per table, the catalogue's own first.
constexpr uint32_t kTablesContainer = 0x0F000001;
constexpr uint32_t kSystemObject = 0x80000002;

TableDef CatalogDef(const Database& db, uint32_t firstTablePage,
                    std::vector<std::vector<Field>>& rows) {
    auto row = [&](uint32_t page, const std::string& name, uint32_t flags) {
        rows.push_back({std::to_string(page),
                        std::to_string(static_cast<int32_t>(kTablesContainer)), name, "1",
                        std::to_string(static_cast<int32_t>(flags)), std::nullopt});
    };
    row(kCatalogPage, "MSysObjects", kSystemObject);
    for (size_t i = 0; i < db.tables.size(); ++i) {
        row(firstTablePage + static_cast<uint32_t>(i), db.tables[i].name, 0);
    }
    TableDef def;
    def.name = "MSysObjects";
    def.system = true;
    def.columns = {{"Id", kJetLong, 0},   {"ParentId", kJetLong, 0}, {"Name", kJetText, 128},
                   {"Type", kJetLong, 0}, {"Flags", kJetLong, 0},    {"LvProp", kJetOle, 0}};
    def.rows = &rows;
    return def;
}

TableDef UserDef(const Table& table) {
    TableDef def;
    def.name = table.name;
    for (const auto& column : table.columns) {
        switch (column.type) {
            case ColumnType::Text:
                def.columns.push_back({column.name, kJetText, column.length});
                break;
            case ColumnType::Memo:
                def.columns.push_back({column.name, kJetMemo, 0});
                break;
            case ColumnType::Long:
                def.columns.push_back({column.name, kJetLong, 0});
                break;
        }
    }
    def.rows = &table.rows;
    return def;
}

}  // namespace

bool WriteDatabase(const Database& db, const std::string& path, const WriteOptions& options,
                   std::string& error, WriteSummary* summary) {
    if (!CheckDatabase(db, error)) {
        return false;
    }
    PageFile file;
    file.Allocate();  // the header page
    file.Allocate();  // the map of all pages
    const uint32_t catalog = file.Allocate();
    const uint32_t firstTable = catalog + 1;
    for (size_t i = 0; i < db.tables.size(); ++i) {
        file.Allocate();  // each table's definition starts on a page known to the catalogue
    }
    RowPages mapRows(file, 0);
    std::vector<std::vector<Field>> catalogRows;
    if (!WriteTable(file, mapRows, CatalogDef(db, firstTable, catalogRows), catalog, options,
                    error)) {
        return false;
    }
    size_t rows = 0;
    for (size_t i = 0; i < db.tables.size(); ++i) {
        const uint32_t page = firstTable + static_cast<uint32_t>(i);
        if (!WriteTable(file, mapRows, UserDef(db.tables[i]), page, options, error)) {
            return false;
        }
        rows += db.tables[i].rows.size();
    }
    if (file.Count() + 16 > kMaxPages) {
        error = "the database would be larger than an Access file can be (2 GB)";
        return false;
    }
    WriteFileMap(file, options.indirectMaps);
    WriteHeaderPage(file.At(0));
    if (summary) {
        summary->pages = file.Count();
        summary->rows = rows;
    }
    return file.Save(path, error);
}

}  // namespace jetwrite
