// Reading Access files (.mdb, .accdb) with libmdb: table names, columns and rows as text.
// Used to bring a Windows component library, or another program's PLC database, into a
// library of this system. Nothing here writes an Access file.
#pragma once

#include <string>
#include <vector>

#include "plclib/Engine.h"

namespace plcdb {

// Tables read whole, fields as text (a null field reads as empty text).
class ITableSource {
public:
    virtual ~ITableSource() = default;
    // The user tables, in the file's catalogue order.
    virtual std::vector<std::string> TableNames() = 0;
    // Reads table `name` (found without regard to case) into `out`.
    virtual bool ReadTable(const std::string& name, QueryResult& out, std::string& error) = 0;
};

class AccessReader : public ITableSource {
public:
    AccessReader() = default;
    ~AccessReader() override;
    AccessReader(const AccessReader&) = delete;
    AccessReader& operator=(const AccessReader&) = delete;

    // Fails, with the reason in `error`, for a missing, empty or malformed file.
    bool Open(const std::string& path, std::string& error);
    void Close();

    std::vector<std::string> TableNames() override;
    bool ReadTable(const std::string& name, QueryResult& out, std::string& error) override;

private:
    struct Handle;
    Handle* handle_ = nullptr;
    std::string path_;
};

}  // namespace plcdb
