#include "plclib/AccessReader.h"

#include <mdbtools.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <memory>

namespace plcdb {
namespace {

// Every Jet and ACE file starts with this page signature and a format name.
bool LooksLikeAccess(const std::string& path, std::string& error) {
    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    if (ec) {
        error = "cannot read " + path + ": " + ec.message();
        return false;
    }
    constexpr size_t kJet3Page = 2048;
    if (size < kJet3Page) {
        error = path + " is not an Access database (" + std::to_string(size) + " bytes)";
        return false;
    }
    std::array<char, 32> head{};
    std::ifstream in(path, std::ios::binary);
    in.read(head.data(), head.size());
    const std::string_view text(head.data(), head.size());
    const bool jet =
        text.substr(0, 4) == std::string_view("\0\1\0\0", 4) &&
        (text.substr(4, 15) == "Standard Jet DB" || text.substr(4, 15) == "Standard ACE DB");
    if (!jet) {
        error = path + " is not an Access database (unknown file format)";
        return false;
    }
    return true;
}

constexpr size_t kBindSize = 65536;
// A memo holds at most 16 MB of UTF-16, which is at most 24 MB of UTF-8.
constexpr size_t kMaxBindSize = kBindSize * 8 * 8 * 8;
// The longest UTF-8 character: a field this close to its buffer's end may have been cut.
constexpr size_t kLongestCharacter = 4;

// Reads every row of `table` with buffers of `bindSize` bytes; false when a field may have
// been cut at its buffer's end.
bool ReadRows(MdbHandle* mdb, MdbTableDef* table, size_t bindSize, QueryResult& out) {
    out = QueryResult{};
    mdb_set_bind_size(mdb, bindSize);
    mdb_rewind_table(table);
    const unsigned columns = table->num_cols;
    std::vector<std::vector<char>> buffers(columns, std::vector<char>(bindSize + 1));
    std::vector<int> lengths(columns);
    for (unsigned i = 0; i < columns; ++i) {
        auto* column = static_cast<MdbColumn*>(g_ptr_array_index(table->columns, i));
        out.columns.emplace_back(column->name);
        mdb_bind_column(table, static_cast<int>(i + 1), buffers[i].data(), &lengths[i]);
    }
    while (mdb_fetch_row(table)) {
        auto& row = out.rows.emplace_back();
        for (unsigned i = 0; i < columns; ++i) {
            const size_t length = lengths[i] > 0 ? static_cast<size_t>(lengths[i]) : 0;
            if (length + kLongestCharacter >= bindSize) {
                return false;
            }
            row.emplace_back(buffers[i].data(), length);
        }
    }
    return true;
}

}  // namespace

struct AccessReader::Handle {
    MdbHandle* mdb = nullptr;
};

AccessReader::~AccessReader() {
    Close();
}

bool AccessReader::Open(const std::string& path, std::string& error) {
    Close();
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        error = path + " does not exist";
        return false;
    }
    if (!LooksLikeAccess(path, error)) {
        return false;
    }
    MdbHandle* mdb = mdb_open(path.c_str(), MDB_NOFLAGS);
    if (!mdb) {
        error = path + " cannot be read as an Access database";
        return false;
    }
    if (!mdb_read_catalog(mdb, MDB_ANY)) {
        mdb_close(mdb);
        error = path + ": the table catalogue cannot be read (damaged file?)";
        return false;
    }
    mdb_set_bind_size(mdb, kBindSize);
    mdb_set_date_fmt(mdb, "%Y-%m-%d %H:%M:%S");
    handle_ = new Handle{mdb};
    path_ = path;
    return true;
}

void AccessReader::Close() {
    if (handle_) {
        mdb_close(handle_->mdb);
        delete handle_;
        handle_ = nullptr;
    }
}

std::vector<std::string> AccessReader::TableNames() {
    std::vector<std::string> names;
    if (!handle_) {
        return names;
    }
    MdbHandle* mdb = handle_->mdb;
    for (unsigned i = 0; i < mdb->num_catalog; ++i) {
        auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb->catalog, i));
        if (entry->object_type == MDB_TABLE && !mdb_is_system_table(entry)) {
            names.emplace_back(entry->object_name);
        }
    }
    return names;
}

bool AccessReader::ReadTable(const std::string& name, QueryResult& out, std::string& error) {
    out = QueryResult{};
    if (!handle_) {
        error = "no Access file is open";
        return false;
    }
    MdbHandle* mdb = handle_->mdb;
    MdbCatalogEntry* found = nullptr;
    for (unsigned i = 0; i < mdb->num_catalog && !found; ++i) {
        auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb->catalog, i));
        if (entry->object_type == MDB_TABLE && EqualsIgnoreCase(entry->object_name, name)) {
            found = entry;
        }
    }
    if (!found) {
        error = path_ + " has no table " + name;
        return false;
    }
    std::unique_ptr<MdbTableDef, void (*)(MdbTableDef*)> table(mdb_read_table(found),
                                                               mdb_free_tabledef);
    if (!table || !mdb_read_columns(table.get())) {
        error = path_ + ": table " + name + " cannot be read (damaged file?)";
        return false;
    }
    // libmdb cuts a field at its buffer without saying so: a field that fills the buffer
    // may have been cut, so the table is read again with larger buffers.
    for (size_t bindSize = kBindSize;; bindSize *= 8) {
        if (ReadRows(mdb, table.get(), bindSize, out)) {
            mdb_set_bind_size(mdb, kBindSize);
            return true;
        }
        if (bindSize >= kMaxBindSize) {
            mdb_set_bind_size(mdb, kBindSize);
            error = path_ + ": table " + name + " holds a field longer than " +
                    std::to_string(kMaxBindSize / (1024 * 1024)) +
                    " MB, which cannot be read whole";
            out = QueryResult{};
            return false;
        }
    }
}

}  // namespace plcdb
