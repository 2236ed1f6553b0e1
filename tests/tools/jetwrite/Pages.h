// The page level of a Jet 4 file: 4 KiB pages, pages of numbered rows, usage maps and the
// header page.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace jetwrite {

constexpr size_t kPageSize = 4096;
constexpr size_t kRowPageHeader = 14;    // type, flag, free space, owner, unused, row count
constexpr size_t kMaxRowsPerPage = 255;  // a row pointer keeps the row number in one byte
constexpr size_t kMaxRowBytes = kPageSize - kRowPageHeader - 2;
// Long value pages carry this word where data pages name their table.
constexpr uint32_t kLongValueOwner = 0x4C41564C;  // "LVAL"
// Pages an indirect usage map can name: 15 map pages of 4092 bytes of bits each.
constexpr uint32_t kMapBitsPerPage = (kPageSize - 4) * 8;
constexpr uint32_t kMaxPages = 15 * kMapBitsPerPage;

void Put16(uint8_t* at, uint32_t value);
void Put32(uint8_t* at, uint32_t value);
void Append16(std::vector<uint8_t>& out, uint32_t value);
void Append32(std::vector<uint8_t>& out, uint32_t value);

class PageFile {
public:
    PageFile();
    uint32_t Allocate();  // a new zeroed page at the end
    uint8_t* At(uint32_t page) { return pages_[page].data(); }
    uint32_t Count() const { return static_cast<uint32_t>(pages_.size()); }
    bool Save(const std::string& path, std::string& error) const;

private:
    std::deque<std::array<uint8_t, kPageSize>> pages_;
};

// One page of rows found by number: the rows fill the page from its end, their offsets
// follow the header.
class RowPage {
public:
    RowPage(PageFile& file, uint32_t owner);
    bool Fits(size_t bytes) const;
    // The pointer (page << 8 | row) of the row added.
    uint32_t Add(const std::vector<uint8_t>& row);
    uint32_t Number() const { return page_; }
    uint32_t NextPointer() const { return page_ << 8 | static_cast<uint32_t>(rows_); }

private:
    PageFile& file_;
    uint32_t page_;
    size_t rows_ = 0;
    size_t top_ = kPageSize;
};

// Rows of one owner on as many pages as they need, filled in order.
class RowPages {
public:
    RowPages(PageFile& file, uint32_t owner) : file_(file), owner_(owner) {}
    uint32_t Add(const std::vector<uint8_t>& row);
    // Pages that no later row will share, taken into the list of this owner's pages.
    void Adopt(uint32_t page) { pages_.push_back(page); }
    const std::vector<uint32_t>& Pages() const { return pages_; }

private:
    PageFile& file_;
    uint32_t owner_;
    std::optional<RowPage> current_;
    std::vector<uint32_t> pages_;
};

// The usage map row naming `pages` (ascending): the bits inline when the pages lie close
// together and `indirect` is not asked for, otherwise on map pages allocated here (or taken
// from `mapPages`, one per 32736 pages, zero where none was allocated yet).
std::vector<uint8_t> UsageMap(PageFile& file, const std::vector<uint32_t>& pages, bool indirect,
                              std::vector<uint32_t> mapPages = {});

// Page 1: the map of every page in the file, written when all other pages are.
void WriteFileMap(PageFile& file, bool indirect);

// Page 0: the format signature, version and the database settings.
void WriteHeaderPage(uint8_t* page);

}  // namespace jetwrite
