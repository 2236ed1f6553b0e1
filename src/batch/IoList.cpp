#include "batch/IoList.h"

#include <algorithm>
#include <utility>

#include "batch/Csv.h"
#include "batch/Xlsx.h"
#include "files/TextFile.h"

namespace batch {

namespace {

struct Heading {
    Column column;
    const char* name;
    std::vector<std::string_view> aliases;
};

const std::vector<Heading>& Headings() {
    static const std::vector<Heading> headings = {
        {Column::Tag, "tag", {"tag", "位号", "标号", "设备标号"}},
        {Column::Rack, "rack", {"rack", "机架", "机架号", "框架号"}},
        {Column::Slot, "slot", {"slot", "槽号", "槽位"}},
        {Column::Module, "module", {"module", "模块", "模块型号"}},
        {Column::Channel, "channel", {"channel", "通道", "端号"}},
        {Column::Signal, "signal", {"signal", "信号", "信号描述"}},
        {Column::Address, "address", {"address", "地址"}},
        {Column::Sheet, "sheet", {"sheet", "图纸", "图号"}},
        {Column::Kind, "kind", {"kind", "信号类型"}},
    };
    return headings;
}

std::string Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t");
    return std::string(text.substr(first, last - first + 1));
}

bool IsXlsx(const std::string& path) {
    return path.size() > 5 && files::UpperAscii(path.substr(path.size() - 5)) == ".XLSX";
}

}  // namespace

const char* ColumnName(Column column) {
    return Headings()[static_cast<int>(column)].name;
}

std::optional<Column> ColumnForHeading(std::string_view heading) {
    const std::string key = files::UpperAscii(Trim(heading));
    for (const Heading& h : Headings()) {
        for (const std::string_view alias : h.aliases) {
            if (key == files::UpperAscii(alias)) {
                return h.column;
            }
        }
    }
    return std::nullopt;
}

std::string ListError::Text() const {
    std::string text = file;
    if (row > 0) {
        text += (projectLine ? ": line " : ": row ") + std::to_string(row);
    }
    if (!column.empty()) {
        text += (row > 0 ? ", " : ": ") + std::string(projectLine ? "key " : "column ") + column;
    }
    return text + ": " + message;
}

IoList ListFromCells(const std::string& file, std::vector<std::vector<std::string>> cells,
                     const std::vector<int>& rowNumbers) {
    IoList list;
    list.file = file;
    if (cells.empty()) {
        list.errors.push_back({file, 0, "", "the list is empty: it needs a heading row"});
        return list;
    }
    const int headingRow = rowNumbers.empty() ? 1 : rowNumbers[0];
    std::vector<std::optional<Column>> columnOf;
    for (const std::string& heading : cells[0]) {
        const auto column = ColumnForHeading(heading);
        if (column && list.Has(*column)) {
            list.errors.push_back(
                {file, headingRow, Trim(heading),
                 "a second heading for the column " + std::string(ColumnName(*column))});
            columnOf.emplace_back();
            continue;
        }
        if (column) {
            list.present[static_cast<int>(*column)] = true;
        }
        columnOf.push_back(column);
    }
    for (const Column required : {Column::Tag, Column::Rack, Column::Slot, Column::Module,
                                  Column::Channel, Column::Signal}) {
        if (!list.Has(required)) {
            list.errors.push_back({file, headingRow, ColumnName(required),
                                   "the heading row has no such column (required)"});
        }
    }
    list.rows.reserve(cells.size() - 1);
    for (std::size_t r = 1; r < cells.size(); ++r) {
        IoRow row;
        row.row = r < rowNumbers.size() ? rowNumbers[r] : static_cast<int>(r + 1);
        bool any = false;
        for (std::size_t c = 0; c < cells[r].size() && c < columnOf.size(); ++c) {
            if (columnOf[c]) {
                std::string& cell = cells[r][c];
                const bool padded = !cell.empty() && (cell.front() == ' ' || cell.front() == '\t' ||
                                                      cell.back() == ' ' || cell.back() == '\t');
                row[*columnOf[c]] = padded ? Trim(cell) : std::move(cell);
                any = any || !row[*columnOf[c]].empty();
            }
        }
        if (any) {
            list.rows.push_back(std::move(row));
        }
    }
    return list;
}

IoList ReadIoList(const std::string& path, const std::string& sheetName) {
    std::vector<std::vector<std::string>> cells;
    std::vector<int> rowNumbers;
    std::string bytes, error;
    if (IsXlsx(path)) {
        auto sheet = ReadXlsxSheet(path, sheetName, error);
        if (!sheet) {
            IoList list;
            list.file = path;
            list.errors.push_back({path, 0, "", error});
            return list;
        }
        return ListFromCells(path, std::move(sheet->rows), sheet->rowNumbers);
    }
    if (!files::ReadWhole(path, bytes, &error)) {
        IoList list;
        list.file = path;
        list.errors.push_back({path, 0, "", error});
        return list;
    }
    // Most lists are UTF-8 already: taken as read, without a copy.
    const std::string text = files::IsValidUtf8(bytes) ? std::move(bytes) : files::ToUtf8(bytes);
    CsvResult csv = ParseCsv(text, GuessSeparator(text));
    cells.reserve(csv.records.size());
    rowNumbers.reserve(csv.records.size());
    if (!csv.error.empty()) {
        IoList list;
        list.file = path;
        list.errors.push_back({path, 0, "", csv.error});
        return list;
    }
    for (CsvRecord& record : csv.records) {
        rowNumbers.push_back(record.line);
        cells.push_back(std::move(record.fields));
    }
    return ListFromCells(path, std::move(cells), rowNumbers);
}

}  // namespace batch
