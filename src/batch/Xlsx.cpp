#include "batch/Xlsx.h"

#include <zip.h>

#include <pugixml.hpp>

#include <memory>

namespace batch {

namespace {

// No part of a list is near this; a larger one is a damaged or hostile file.
constexpr zip_uint64_t kMaxPartBytes = 512ull << 20;
constexpr int kMaxColumns = 16384;  // XFD, the widest a sheet can be

struct ZipCloser {
    void operator()(zip_t* zip) const { zip_discard(zip); }
};
using Zip = std::unique_ptr<zip_t, ZipCloser>;

// One part of the package; nullopt when it is not there or cannot be read.
std::optional<std::string> ReadPart(zip_t* zip, const std::string& name, std::string& error) {
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat(zip, name.c_str(), 0, &stat) != 0) {
        return std::nullopt;
    }
    if ((stat.valid & ZIP_STAT_SIZE) == 0 || stat.size > kMaxPartBytes) {
        error = "part " + name + " is too large";
        return std::nullopt;
    }
    zip_file_t* file = zip_fopen(zip, name.c_str(), 0);
    if (file == nullptr) {
        error = "part " + name + " cannot be read: " + zip_strerror(zip);
        return std::nullopt;
    }
    std::string bytes(stat.size, '\0');
    const zip_int64_t got = zip_fread(file, bytes.data(), stat.size);
    zip_fclose(file);
    if (got < 0 || static_cast<zip_uint64_t>(got) != stat.size) {
        error = "part " + name + " is damaged";
        return std::nullopt;
    }
    return bytes;
}

bool ParseXml(const std::string& bytes, pugi::xml_document& doc, const std::string& name,
              std::string& error) {
    const pugi::xml_parse_result result = doc.load_buffer(bytes.data(), bytes.size());
    if (!result) {
        error = "part " + name + " is not well-formed XML (" + result.description() + ")";
        return false;
    }
    return true;
}

// The text of a string item: its <t>, or its runs' <t>s joined.
std::string ItemText(const pugi::xml_node& item) {
    if (const auto t = item.child("t")) {
        return t.text().get();
    }
    std::string text;
    for (const auto& run : item.children("r")) {
        text += run.child("t").text().get();
    }
    return text;
}

// "BC12" -> column 54 (0-based); -1 when the reference has no column letters.
int ColumnOf(const char* reference) {
    int column = 0, letters = 0;
    for (const char* p = reference; *p >= 'A' && *p <= 'Z'; ++p, ++letters) {
        column = column * 26 + (*p - 'A' + 1);
        if (column > kMaxColumns) {
            return -1;
        }
    }
    return letters == 0 ? -1 : column - 1;
}

// A number as the user sees it: "3", not "3.0".
std::string NumberText(std::string value) {
    if (value.size() > 2 && value.ends_with(".0")) {
        value.resize(value.size() - 2);
    }
    return value;
}

// The worksheet part of the sheet named `sheetName` (or the first).
std::optional<std::string> SheetPart(zip_t* zip, const std::string& sheetName, std::string& error) {
    pugi::xml_document workbook, rels;
    const auto workbookXml = ReadPart(zip, "xl/workbook.xml", error);
    if (!workbookXml) {
        if (error.empty()) {
            error = "not an XLSX workbook (it has no xl/workbook.xml)";
        }
        return std::nullopt;
    }
    if (!ParseXml(*workbookXml, workbook, "xl/workbook.xml", error)) {
        return std::nullopt;
    }
    std::string id;
    std::vector<std::string> names;
    for (const auto& sheet : workbook.child("workbook").child("sheets").children("sheet")) {
        names.push_back(sheet.attribute("name").value());
        if (sheetName.empty() || names.back() == sheetName) {
            id = sheet.attribute("r:id").value();
            break;
        }
    }
    if (id.empty()) {
        error = sheetName.empty() ? "the workbook has no sheet"
                                  : "the workbook has no sheet named \"" + sheetName + "\"";
        return std::nullopt;
    }
    const auto relsXml = ReadPart(zip, "xl/_rels/workbook.xml.rels", error);
    if (!relsXml || !ParseXml(*relsXml, rels, "xl/_rels/workbook.xml.rels", error)) {
        if (error.empty()) {
            error = "the workbook has no xl/_rels/workbook.xml.rels";
        }
        return std::nullopt;
    }
    for (const auto& rel : rels.child("Relationships").children("Relationship")) {
        if (id == rel.attribute("Id").value()) {
            const std::string target = rel.attribute("Target").value();
            return target.starts_with("/") ? target.substr(1) : "xl/" + target;
        }
    }
    error = "the workbook does not say where its sheet is";
    return std::nullopt;
}

std::optional<std::vector<std::string>> SharedStrings(zip_t* zip, std::string& error) {
    std::vector<std::string> strings;
    const auto xml = ReadPart(zip, "xl/sharedStrings.xml", error);
    if (!xml) {
        return error.empty() ? std::optional(strings) : std::nullopt;
    }
    pugi::xml_document doc;
    if (!ParseXml(*xml, doc, "xl/sharedStrings.xml", error)) {
        return std::nullopt;
    }
    for (const auto& item : doc.child("sst").children("si")) {
        strings.push_back(ItemText(item));
    }
    return strings;
}

// The text a cell shows; false when it names a shared string that is not there.
bool CellText(const pugi::xml_node& cell, const std::vector<std::string>& shared,
              std::string& text) {
    const std::string type = cell.attribute("t").value();
    const char* value = cell.child("v").text().get();
    if (type == "s") {
        const unsigned long index = std::strtoul(value, nullptr, 10);
        if (index >= shared.size()) {
            return false;
        }
        text = shared[index];
    } else if (type == "inlineStr") {
        text = ItemText(cell.child("is"));
    } else if (type == "b") {
        text = std::string(value) == "1" ? "TRUE" : "FALSE";
    } else if (type == "str" || type == "e") {
        text = value;
    } else {
        text = NumberText(value);
    }
    return true;
}

}  // namespace

std::optional<XlsxSheet> ReadXlsxSheet(const std::string& path, const std::string& sheetName,
                                       std::string& error) {
    error.clear();
    int code = 0;
    Zip zip(zip_open(path.c_str(), ZIP_RDONLY, &code));
    if (!zip) {
        zip_error_t zerr;
        zip_error_init_with_code(&zerr, code);
        error = code == ZIP_ER_NOZIP ? std::string("not an XLSX workbook (not a ZIP package)")
                                     : std::string(zip_error_strerror(&zerr));
        zip_error_fini(&zerr);
        return std::nullopt;
    }
    const auto part = SheetPart(zip.get(), sheetName, error);
    const auto shared = part ? SharedStrings(zip.get(), error) : std::nullopt;
    if (!part || !shared) {
        return std::nullopt;
    }
    const auto xml = ReadPart(zip.get(), *part, error);
    pugi::xml_document doc;
    if (!xml || !ParseXml(*xml, doc, *part, error)) {
        if (error.empty()) {
            error = "the sheet's part " + *part + " is missing";
        }
        return std::nullopt;
    }
    XlsxSheet sheet;
    int lastRow = 0;
    for (const auto& row : doc.child("worksheet").child("sheetData").children("row")) {
        const int number = row.attribute("r").as_int(lastRow + 1);
        lastRow = number;
        std::vector<std::string> cells;
        for (const auto& cell : row.children("c")) {
            const char* reference = cell.attribute("r").value();
            const int column = *reference ? ColumnOf(reference) : static_cast<int>(cells.size());
            if (column < 0) {
                error =
                    "row " + std::to_string(number) + ": bad cell reference \"" + reference + "\"";
                return std::nullopt;
            }
            std::string text;
            if (!CellText(cell, *shared, text)) {
                error =
                    std::string("cell ") + reference + " names a shared string that is not there";
                return std::nullopt;
            }
            if (static_cast<int>(cells.size()) <= column) {
                cells.resize(column + 1);
            }
            cells[column] = std::move(text);
        }
        sheet.rows.push_back(std::move(cells));
        sheet.rowNumbers.push_back(number);
    }
    return sheet;
}

}  // namespace batch
