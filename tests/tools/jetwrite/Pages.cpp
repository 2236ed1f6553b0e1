#include "Pages.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

namespace jetwrite {

void Put16(uint8_t* at, uint32_t value) {
    at[0] = static_cast<uint8_t>(value);
    at[1] = static_cast<uint8_t>(value >> 8);
}

void Put32(uint8_t* at, uint32_t value) {
    Put16(at, value & 0xFFFF);
    Put16(at + 2, value >> 16);
}

void Append16(std::vector<uint8_t>& out, uint32_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8));
}

void Append32(std::vector<uint8_t>& out, uint32_t value) {
    Append16(out, value & 0xFFFF);
    Append16(out, value >> 16);
}

PageFile::PageFile() = default;

uint32_t PageFile::Allocate() {
    pages_.emplace_back().fill(0);
    return Count() - 1;
}

bool PageFile::Save(const std::string& path, std::string& error) const {
    const std::string part = path + ".part";
    std::FILE* out = std::fopen(part.c_str(), "wb");
    if (!out) {
        error = "cannot write " + part + ": " + std::strerror(errno);
        return false;
    }
    bool ok = true;
    for (const auto& page : pages_) {
        ok = ok && std::fwrite(page.data(), 1, page.size(), out) == page.size();
    }
    ok = (std::fclose(out) == 0) && ok;
    std::error_code ec;
    if (ok) {
        std::filesystem::rename(part, path, ec);
    }
    if (!ok || ec) {
        error = "cannot write " + path + ": " + (ec ? ec.message() : std::strerror(errno));
        std::filesystem::remove(part, ec);
        return false;
    }
    return true;
}

RowPage::RowPage(PageFile& file, uint32_t owner) : file_(file), page_(file.Allocate()) {
    uint8_t* page = file_.At(page_);
    page[0] = 0x01;
    page[1] = 0x01;
    Put16(page + 2, kPageSize - kRowPageHeader);
    Put32(page + 4, owner);
}

bool RowPage::Fits(size_t bytes) const {
    return rows_ < kMaxRowsPerPage && kRowPageHeader + 2 * (rows_ + 1) + bytes <= top_;
}

uint32_t RowPage::Add(const std::vector<uint8_t>& row) {
    uint8_t* page = file_.At(page_);
    top_ -= row.size();
    std::memcpy(page + top_, row.data(), row.size());
    const uint32_t pointer = NextPointer();
    Put16(page + kRowPageHeader + 2 * rows_, static_cast<uint32_t>(top_));
    ++rows_;
    Put16(page + 12, static_cast<uint32_t>(rows_));
    Put16(page + 2, static_cast<uint32_t>(top_ - kRowPageHeader - 2 * rows_));
    return pointer;
}

uint32_t RowPages::Add(const std::vector<uint8_t>& row) {
    if (!current_ || !current_->Fits(row.size())) {
        current_.emplace(file_, owner_);
        pages_.push_back(current_->Number());
    }
    return current_->Add(row);
}

namespace {

constexpr size_t kMapRowBytes = 64;
constexpr uint32_t kInlineBits = (kMapRowBytes - 5) * 8;

void SetBit(uint8_t* bits, uint32_t n) {
    bits[n / 8] |= static_cast<uint8_t>(1u << (n % 8));
}

uint32_t MapPage(PageFile& file, std::vector<uint32_t>& mapPages, uint32_t index) {
    if (mapPages.size() <= index) {
        mapPages.resize(index + 1, 0);
    }
    if (!mapPages[index]) {
        mapPages[index] = file.Allocate();
    }
    uint8_t* page = file.At(mapPages[index]);
    page[0] = 0x05;
    page[1] = 0x01;
    return mapPages[index];
}

}  // namespace

std::vector<uint8_t> UsageMap(PageFile& file, const std::vector<uint32_t>& pages, bool indirect,
                              std::vector<uint32_t> mapPages) {
    std::vector<uint8_t> row(kMapRowBytes, 0);
    if (!indirect && (pages.empty() || pages.back() - pages.front() < kInlineBits)) {
        const uint32_t start = pages.empty() ? 0 : pages.front();
        Put32(&row[1], start);
        for (const uint32_t page : pages) {
            SetBit(&row[5], page - start);
        }
        return row;
    }
    row[0] = 0x01;
    for (const uint32_t page : pages) {
        if (page >= kMaxPages) {
            continue;  // past what a map can name: the writer refuses such a file
        }
        const uint32_t map = MapPage(file, mapPages, page / kMapBitsPerPage);
        SetBit(file.At(map) + 4, page % kMapBitsPerPage);
    }
    for (size_t i = 0; i < mapPages.size(); ++i) {
        if (mapPages[i]) {
            MapPage(file, mapPages, static_cast<uint32_t>(i));
            Put32(&row[1 + 4 * i], mapPages[i]);
        }
    }
    return row;
}

void WriteFileMap(PageFile& file, bool indirect) {
    std::vector<uint32_t> mapPages;
    if (indirect || file.Count() > kInlineBits) {
        // The map pages are pages of the file too: allocate them first, then map them all.
        indirect = true;
        while (mapPages.size() < (file.Count() - 1) / kMapBitsPerPage + 1) {
            mapPages.push_back(file.Allocate());
        }
    }
    std::vector<uint32_t> all(file.Count());
    for (uint32_t i = 0; i < all.size(); ++i) {
        all[i] = i;
    }
    uint8_t* page = file.At(1);
    page[0] = 0x01;
    page[1] = 0x01;
    const auto row = UsageMap(file, all, indirect, mapPages);
    Put16(page + 12, 1);
    Put16(page + kRowPageHeader, static_cast<uint32_t>(kPageSize - row.size()));
    Put16(page + 2, static_cast<uint32_t>(kPageSize - row.size() - kRowPageHeader - 2));
    std::memcpy(page + kPageSize - row.size(), row.data(), row.size());
}

namespace {

// The settings part of the header page is scrambled with RC4 under a fixed key.
void Rc4(const uint8_t* key, size_t keyLength, uint8_t* data, size_t length) {
    uint8_t state[256];
    for (int i = 0; i < 256; ++i) {
        state[i] = static_cast<uint8_t>(i);
    }
    for (int i = 0, j = 0; i < 256; ++i) {
        j = (j + state[i] + key[i % keyLength]) & 0xFF;
        std::swap(state[i], state[j]);
    }
    for (size_t n = 0, i = 0, j = 0; n < length; ++n) {
        i = (i + 1) & 0xFF;
        j = (j + state[i]) & 0xFF;
        std::swap(state[i], state[j]);
        data[n] ^= state[(state[i] + state[j]) & 0xFF];
    }
}

}  // namespace

void WriteHeaderPage(uint8_t* page) {
    static const char kSignature[] = "\0\1\0\0Standard Jet DB";
    std::memcpy(page, kSignature, sizeof(kSignature));  // with the name's terminating zero
    Put32(page + 0x14, 1);                              // Jet 4
    Put16(page + 0x3C, 1252);                           // code page
    Put32(page + 0x3E, 0);                              // no key: pages are stored plain
    Put32(page + 0x6E, 0x0409);                         // the general sort order
    const double created = 36526.0;                     // 2000-01-01: files are reproducible
    std::memcpy(page + 0x72, &created, sizeof(created));
    static const uint8_t kKey[] = {0xC7, 0xDA, 0x39, 0x6B};
    Rc4(kKey, sizeof(kKey), page + 0x18, 128);
}

}  // namespace jetwrite
