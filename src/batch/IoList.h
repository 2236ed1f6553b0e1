// The I/O list: one row per channel, with the device tag, rack, slot, module
// (MANUFACTURER/SERIES/TYPE/CODE), channel, signal text and optionally the address, the
// sheet and the signal kind. Columns are found by their heading, in any order; each has
// English and Chinese headings:
//
//   tag      tag, 位号, 标号, 设备标号          channel  channel, 通道, 端号
//   rack     rack, 机架, 机架号, 框架号         signal   signal, 信号, 信号描述
//   slot     slot, 槽号, 槽位                   address  address, 地址             (optional)
//   module   module, 模块, 模块型号             sheet    sheet, 图纸, 图号          (optional)
//                                               kind     kind, 信号类型             (optional)
//
// A channel is a terminal value of the module ("3", "L+") or '#' and its sequence ("#3").
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace batch {

enum class Column { Tag, Rack, Slot, Module, Channel, Signal, Address, Sheet, Kind };
inline constexpr int kColumnCount = 9;

// The English name of a column, as messages name it.
const char* ColumnName(Column column);
// The column a heading names (English or Chinese, ASCII case ignored, blanks around it
// ignored), if any.
std::optional<Column> ColumnForHeading(std::string_view heading);

struct IoRow {
    int row = 0;  // row number in the file (CSV: line; XLSX: sheet row), 1-based
    std::array<std::string, kColumnCount> cells;

    const std::string& operator[](Column c) const { return cells[static_cast<int>(c)]; }
    std::string& operator[](Column c) { return cells[static_cast<int>(c)]; }
};

// One fault of the list, pointing at its row and column.
struct ListError {
    std::string file;
    int row = 0;         // 0: the file as a whole
    std::string column;  // empty when the whole row is meant
    std::string message;
    bool projectLine = false;  // a line and key of a project file, not a row and column

    // "FILE: row N, column C: message", or "FILE: line N, key K: message" for a project
    // file (parts left out when not known).
    std::string Text() const;
};

struct IoList {
    std::string file;
    std::vector<IoRow> rows;
    std::array<bool, kColumnCount> present{};  // which columns the heading row names
    std::vector<ListError> errors;             // faults of the file and its heading

    bool Has(Column c) const { return present[static_cast<int>(c)]; }
};

// Builds the list from rows of cells, the first being the heading row. `rowNumbers` gives
// each row's number in the file. Missing required columns, unknown and repeated headings
// are errors.
IoList ListFromCells(const std::string& file, std::vector<std::vector<std::string>> cells,
                     const std::vector<int>& rowNumbers);

// Reads a CSV (UTF-8, or GB18030 as the Windows suite writes it; comma or semicolon) or an
// XLSX list (the sheet named `sheetName`, or the first). A file that cannot be read is an
// error of the list.
IoList ReadIoList(const std::string& path, const std::string& sheetName = "");

}  // namespace batch
