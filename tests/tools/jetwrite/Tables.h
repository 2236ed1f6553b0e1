// A table as it is laid out in the file: its definition pages, data pages and long value
// pages. The catalogue is written through the same code as the user tables.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "JetWriter.h"
#include "Pages.h"

namespace jetwrite {

constexpr uint8_t kJetLong = 0x04;
constexpr uint8_t kJetText = 0x0A;
constexpr uint8_t kJetOle = 0x0B;  // only ever null here
constexpr uint8_t kJetMemo = 0x0C;
constexpr uint32_t kCatalogPage = 2;

struct ColumnDef {
    std::string name;
    uint8_t type = kJetText;
    int length = 0;  // characters, for text
};

struct TableDef {
    std::string name;
    bool system = false;
    std::vector<ColumnDef> columns;
    const std::vector<std::vector<Field>>* rows = nullptr;
};

// Writes the table's rows and its definition, which starts on page `definitionPage`
// (allocated already). False, naming the table, row and column, for a field that cannot be
// written.
// Usage maps go to `mapRows`.
bool WriteTable(PageFile& file, RowPages& mapRows, const TableDef& table, uint32_t definitionPage,
                const WriteOptions& options, std::string& error);

}  // namespace jetwrite
