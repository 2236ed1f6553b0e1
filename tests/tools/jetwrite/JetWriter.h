// Writes Access 2000 (Jet 4) database files for tests and bug reports: user tables with
// text, memo and long integer columns, listed in the system catalogue so that any reader
// finds them. No indexes, relationships, queries or properties are written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace jetwrite {

enum class ColumnType { Text, Memo, Long };

struct Column {
    std::string name;
    ColumnType type = ColumnType::Text;
    int length = 255;  // characters a text column holds (1..255); ignored otherwise
};

// A field as text: UTF-8 for text and memo columns, a decimal whole number for long
// columns; no value is a null field.
using Field = std::optional<std::string>;

struct Table {
    std::string name;
    std::vector<Column> columns;
    std::vector<std::vector<Field>> rows;
};

struct Database {
    std::vector<Table> tables;
};

struct WriteOptions {
    // Write texts in the compressed form where it is shorter (otherwise always UTF-16LE).
    bool compressText = true;
    // Give every table a page-indirect usage map, as big tables have, even when small.
    bool indirectMaps = false;
};

struct WriteSummary {
    size_t pages = 0;
    size_t rows = 0;
};

// Writes `db` to `path` (through a temporary file beside it: a failure leaves no file).
// False, with what was wrong and where in `error`, for a database that cannot be written.
bool WriteDatabase(const Database& db, const std::string& path, const WriteOptions& options,
                   std::string& error, WriteSummary* summary = nullptr);

// Checks `db` without writing; the messages are those of WriteDatabase.
bool CheckDatabase(const Database& db, std::string& error);

}  // namespace jetwrite
