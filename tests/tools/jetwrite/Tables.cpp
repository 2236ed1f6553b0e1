#include "Tables.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

#include "Text.h"

namespace jetwrite {
namespace {

constexpr uint32_t kMemoInline = 0x80000000;
constexpr uint32_t kMemoOnePage = 0x40000000;
constexpr size_t kMemoHeader = 12;
constexpr size_t kMaxMemoBytes = 0xFFFFFF;  // the length takes three bytes
constexpr size_t kCompressibleMemo = 1024;  // longer memos are stored uncompressed
constexpr size_t kInlineMemoMax = 1024;     // longer memos always leave the row
constexpr size_t kRowTarget = 2048;         // memos leave the row, largest first, above this
constexpr size_t kChainChunk = kMaxRowBytes - 4;
constexpr size_t kDefinitionHeader = 63;
constexpr size_t kColumnEntry = 25;
constexpr uint16_t kGeneralSortOrder = 0x0409;

struct Layout {
    struct Col {
        uint8_t type = 0;
        bool fixed = false;
        uint16_t fixedOffset = 0;
        uint16_t varIndex = 0;
        uint16_t size = 0;
    };
    std::vector<Col> cols;
    uint16_t fixedBytes = 0;
    uint16_t varCount = 0;
};

Layout MakeLayout(const TableDef& table) {
    Layout layout;
    for (const auto& column : table.columns) {
        Layout::Col col;
        col.type = column.type;
        col.fixed = column.type == kJetLong;
        if (col.fixed) {
            col.fixedOffset = layout.fixedBytes;
            col.size = 4;
            layout.fixedBytes += 4;
        } else {
            col.varIndex = layout.varCount++;
            col.size = column.type == kJetText ? static_cast<uint16_t>(2 * column.length) : 0;
        }
        layout.cols.push_back(col);
    }
    return layout;
}

bool IsLongValue(uint8_t type) {
    return type == kJetMemo || type == kJetOle;
}

struct Cell {
    bool null = true;
    std::vector<uint8_t> bytes;  // the value as stored; a memo's text
    bool outside = false;        // a memo kept on long value pages
    uint32_t pointer = 0;
    uint32_t flags = 0;
};

size_t VarBytes(const Layout::Col& col, const Cell& cell) {
    if (cell.null) {
        return 0;
    }
    if (IsLongValue(col.type)) {
        return kMemoHeader + (cell.outside ? 0 : cell.bytes.size());
    }
    return cell.bytes.size();
}

size_t RowSize(const Layout& layout, const std::vector<Cell>& cells) {
    size_t size = 2 + layout.fixedBytes + (layout.cols.size() + 7) / 8;
    if (layout.varCount) {
        size += 2 * (layout.varCount + 1) + 2;
    }
    for (size_t i = 0; i < cells.size(); ++i) {
        size += layout.cols[i].fixed ? 0 : VarBytes(layout.cols[i], cells[i]);
    }
    return size;
}

// Fixed columns first, then the variable ones, their offsets backwards from the end of the
// data, their count, and the mask of fields that are not null.
std::vector<uint8_t> AssembleRow(const Layout& layout, const std::vector<Cell>& cells) {
    std::vector<uint8_t> row;
    Append16(row, static_cast<uint32_t>(layout.cols.size()));
    row.resize(2 + layout.fixedBytes, 0);
    std::vector<uint32_t> offsets;
    for (size_t i = 0; i < cells.size(); ++i) {
        const auto& col = layout.cols[i];
        const auto& cell = cells[i];
        if (col.fixed) {
            if (!cell.null) {
                std::memcpy(&row[2 + col.fixedOffset], cell.bytes.data(), col.size);
            }
            continue;
        }
        offsets.push_back(static_cast<uint32_t>(row.size()));
        if (cell.null) {
            continue;
        }
        if (IsLongValue(col.type)) {
            Append32(row, static_cast<uint32_t>(cell.bytes.size()) | cell.flags);
            Append32(row, cell.pointer);
            Append32(row, 0);
            if (cell.outside) {
                continue;
            }
        }
        row.insert(row.end(), cell.bytes.begin(), cell.bytes.end());
    }
    if (layout.varCount) {
        Append16(row, static_cast<uint32_t>(row.size()));
        for (auto it = offsets.rbegin(); it != offsets.rend(); ++it) {
            Append16(row, *it);
        }
        Append16(row, layout.varCount);
    }
    std::vector<uint8_t> mask((layout.cols.size() + 7) / 8, 0);
    for (size_t i = 0; i < cells.size(); ++i) {
        if (!cells[i].null) {
            mask[i / 8] |= static_cast<uint8_t>(1u << (i % 8));
        }
    }
    row.insert(row.end(), mask.begin(), mask.end());
    return row;
}

// Long values of one memo column: a value that fits a page is one row on a shared page,
// a longer one a chain of rows on pages of its own, each row starting with the pointer to
// the next.
class LongValues {
public:
    explicit LongValues(PageFile& file) : file_(file), rows_(file, kLongValueOwner) {}

    void Store(Cell& cell) {
        cell.outside = true;
        if (cell.bytes.size() <= kMaxRowBytes) {
            cell.pointer = rows_.Add(cell.bytes);
            cell.flags = kMemoOnePage;
            return;
        }
        const size_t count = (cell.bytes.size() + kChainChunk - 1) / kChainChunk;
        std::vector<RowPage> pages;
        pages.reserve(count);
        for (size_t k = 0; k < count; ++k) {
            pages.emplace_back(file_, kLongValueOwner);
            rows_.Adopt(pages.back().Number());
        }
        for (size_t k = 0; k < count; ++k) {
            std::vector<uint8_t> row;
            Append32(row, k + 1 < count ? pages[k + 1].NextPointer() : 0);
            const size_t from = k * kChainChunk;
            const size_t to = std::min(cell.bytes.size(), from + kChainChunk);
            row.insert(row.end(), cell.bytes.begin() + from, cell.bytes.begin() + to);
            const uint32_t pointer = pages[k].Add(row);
            if (k == 0) {
                cell.pointer = pointer;
            }
        }
        cell.flags = 0;
    }

    const std::vector<uint32_t>& Pages() const { return rows_.Pages(); }

private:
    PageFile& file_;
    RowPages rows_;
};

class TableWriter {
public:
    TableWriter(PageFile& file, RowPages& mapRows, const TableDef& table,
                const WriteOptions& options)
        : file_(file),
          mapRows_(mapRows),
          table_(table),
          options_(options),
          layout_(MakeLayout(table)) {
        for (const auto& column : table.columns) {
            if (column.type == kJetMemo) {
                longValues_.emplace_back(file);
            }
        }
    }

    bool WriteRows(uint32_t definitionPage, std::string& error) {
        RowPages data(file_, definitionPage);
        const auto& rows = *table_.rows;
        for (size_t r = 0; r < rows.size(); ++r) {
            std::vector<Cell> cells(layout_.cols.size());
            for (size_t c = 0; c < cells.size(); ++c) {
                if (!Encode(rows[r][c], c, cells[c], error)) {
                    return Fail(r, c, error);
                }
            }
            if (!MoveMemos(cells, r, error)) {
                return false;
            }
            data.Add(AssembleRow(layout_, cells));
        }
        dataPages_ = data.Pages();
        return true;
    }

    void WriteDefinition(uint32_t definitionPage) {
        std::vector<uint8_t> def(kDefinitionHeader, 0);
        Put32(&def[16], static_cast<uint32_t>(table_.rows->size()));
        def[40] = table_.system ? 0x53 : 0x4E;
        const auto columns = static_cast<uint32_t>(layout_.cols.size());
        Put16(&def[41], columns);
        Put16(&def[43], layout_.varCount);
        Put16(&def[45], columns);
        Put32(&def[55], mapRows_.Add(UsageMap(file_, dataPages_, options_.indirectMaps)));
        Put32(&def[59], mapRows_.Add(UsageMap(file_, {}, false)));
        for (uint32_t i = 0; i < columns; ++i) {
            AppendColumn(def, i);
        }
        for (const auto& column : table_.columns) {
            std::u16string name;
            Utf8ToUtf16(column.name, name);
            Append16(def, static_cast<uint32_t>(2 * name.size()));
            for (const char16_t unit : name) {
                Append16(def, unit);
            }
        }
        size_t memo = 0;
        for (uint32_t i = 0; i < columns; ++i) {
            if (table_.columns[i].type == kJetMemo) {
                const auto& pages = longValues_[memo++].Pages();
                Append16(def, i);
                Append32(def, mapRows_.Add(UsageMap(file_, Sorted(pages), options_.indirectMaps)));
                Append32(def, mapRows_.Add(UsageMap(file_, {}, false)));
            }
        }
        Append16(def, 0xFFFF);
        Put32(&def[8], static_cast<uint32_t>(def.size() - 8));
        SpreadOverPages(def, definitionPage);
    }

private:
    bool Fail(size_t row, size_t column, std::string& error) const {
        error = "table \"" + table_.name + "\", row " + std::to_string(row + 1) + ", column \"" +
                table_.columns[column].name + "\": " + error;
        return false;
    }

    bool Encode(const Field& field, size_t c, Cell& cell, std::string& error) const {
        const auto& column = table_.columns[c];
        cell.null = !field.has_value();
        if (cell.null) {
            return true;
        }
        const std::string& value = *field;
        if (column.type == kJetLong) {
            int32_t number = 0;
            const auto [end, ec] =
                std::from_chars(value.data(), value.data() + value.size(), number);
            if (ec != std::errc() || end != value.data() + value.size() || value.empty()) {
                error = "\"" + value + "\" is not a whole number from -2147483648 to 2147483647";
                return false;
            }
            Append32(cell.bytes, static_cast<uint32_t>(number));
            return true;
        }
        if (column.type == kJetOle) {
            error = "only null can be written to this column";
            return false;
        }
        std::u16string wide;
        if (!Utf8ToUtf16(value, wide)) {
            error = "the text is not valid UTF-8";
            return false;
        }
        const bool text = column.type == kJetText;
        if (text && wide.size() > static_cast<size_t>(column.length)) {
            error = "the text has " + std::to_string(wide.size()) +
                    " characters; the column holds " + std::to_string(column.length);
            return false;
        }
        const bool compress = options_.compressText && (text || wide.size() <= kCompressibleMemo);
        if (!EncodeText(wide, compress, cell.bytes)) {
            error = "a text that starts with U+FEFF cannot hold a character ending in a zero byte";
            return false;
        }
        if (cell.bytes.size() > kMaxMemoBytes) {
            error = "the memo is longer than 16 MB";
            return false;
        }
        return true;
    }

    // Long memos go to long value pages; shorter ones too, largest first, while the row is
    // too long to share its page with others.
    bool MoveMemos(std::vector<Cell>& cells, size_t row, std::string& error) {
        std::vector<size_t> memos;
        for (size_t c = 0; c < cells.size(); ++c) {
            if (table_.columns[c].type == kJetMemo && !cells[c].null) {
                memos.push_back(c);
                cells[c].flags = kMemoInline;
                if (cells[c].bytes.size() > kInlineMemoMax) {
                    cells[c].outside = true;
                }
            }
        }
        while (RowSize(layout_, cells) > kRowTarget) {
            size_t largest = cells.size();
            for (const size_t c : memos) {
                if (!cells[c].outside && (largest == cells.size() ||
                                          cells[c].bytes.size() > cells[largest].bytes.size())) {
                    largest = c;
                }
            }
            if (largest == cells.size()) {
                break;
            }
            cells[largest].outside = true;
        }
        const size_t size = RowSize(layout_, cells);
        if (size > kMaxRowBytes) {
            error = "table \"" + table_.name + "\", row " + std::to_string(row + 1) +
                    ": the row takes " + std::to_string(size) + " bytes, more than a page holds (" +
                    std::to_string(kMaxRowBytes) + ")";
            return false;
        }
        for (const size_t c : memos) {
            if (cells[c].outside) {
                longValues_[MemoIndex(c)].Store(cells[c]);
            }
        }
        return true;
    }

    size_t MemoIndex(size_t column) const {
        size_t index = 0;
        for (size_t c = 0; c < column; ++c) {
            index += table_.columns[c].type == kJetMemo ? 1 : 0;
        }
        return index;
    }

    void AppendColumn(std::vector<uint8_t>& def, uint32_t i) const {
        const auto& col = layout_.cols[i];
        uint8_t entry[kColumnEntry] = {};
        entry[0] = col.type;
        Put16(entry + 5, i);
        Put16(entry + 7, col.fixed ? 0 : col.varIndex);
        Put16(entry + 9, i);
        const bool text = col.type == kJetText || col.type == kJetMemo;
        Put16(entry + 11, text ? kGeneralSortOrder : 0);
        entry[15] = static_cast<uint8_t>((col.fixed ? 0x01 : 0) | 0x02);  // all may be null
        entry[16] = (text && options_.compressText) ? 0x01 : 0;
        Put16(entry + 21, col.fixed ? col.fixedOffset : 0);
        Put16(entry + 23, col.size);
        def.insert(def.end(), entry, entry + kColumnEntry);
    }

    static std::vector<uint32_t> Sorted(std::vector<uint32_t> pages) {
        std::sort(pages.begin(), pages.end());
        return pages;
    }

    // A definition longer than a page goes on in further pages, each naming the next.
    void SpreadOverPages(const std::vector<uint8_t>& def, uint32_t first) {
        uint32_t page = first;
        size_t from = 8;
        while (true) {
            const size_t take = std::min(def.size() - from, kPageSize - 8);
            uint8_t* at = file_.At(page);
            at[0] = 0x02;
            at[1] = 0x01;
            std::memcpy(at + 8, def.data() + from, take);
            Put16(at + 2, static_cast<uint32_t>(kPageSize - 8 - take));
            from += take;
            if (from >= def.size()) {
                return;
            }
            const uint32_t next = file_.Allocate();
            Put32(file_.At(page) + 4, next);
            page = next;
        }
    }

    PageFile& file_;
    RowPages& mapRows_;
    const TableDef& table_;
    const WriteOptions& options_;
    Layout layout_;
    std::vector<LongValues> longValues_;
    std::vector<uint32_t> dataPages_;
};

}  // namespace

bool WriteTable(PageFile& file, RowPages& mapRows, const TableDef& table, uint32_t definitionPage,
                const WriteOptions& options, std::string& error) {
    TableWriter writer(file, mapRows, table, options);
    if (!writer.WriteRows(definitionPage, error)) {
        return false;
    }
    writer.WriteDefinition(definitionPage);
    return true;
}

}  // namespace jetwrite
