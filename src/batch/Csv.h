// Delimited text as a spreadsheet program writes it: fields separated by commas or
// semicolons, a field in double quotes may hold the separator, line breaks and doubled
// quotes. Each record keeps the line it starts on, so that errors can point at it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace batch {

struct CsvRecord {
    int line = 0;  // 1-based line of the file where the record starts
    std::vector<std::string> fields;
};

struct CsvResult {
    std::vector<CsvRecord> records;
    std::string error;  // empty when the text was read whole; else what and where
};

// The separator of the first line: ';' when it holds more semicolons than commas outside
// quotes, else ','.
char GuessSeparator(std::string_view text);

// Splits UTF-8 text into records. Blank lines are skipped; a byte-order mark is dropped. An
// unterminated quoted field ends the text with an error naming the line it opened on.
CsvResult ParseCsv(std::string_view text, char separator);

}  // namespace batch
