// Reading one worksheet of an XLSX workbook as rows of text cells, the way a list is read:
// shared and inline strings as they are, numbers as their text, empty cells as empty text in
// the column their reference names.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace batch {

struct XlsxSheet {
    std::vector<std::vector<std::string>> rows;  // rows that hold a cell, in order
    std::vector<int> rowNumbers;                 // each row's number in the sheet, 1-based
};

// The sheet named `sheetName` (the first sheet when empty). Nullopt with `error` saying what
// is wrong when the file is not a readable workbook or has no such sheet.
std::optional<XlsxSheet> ReadXlsxSheet(const std::string& path, const std::string& sheetName,
                                       std::string& error);

}  // namespace batch
