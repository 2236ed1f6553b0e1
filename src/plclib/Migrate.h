// Converts a Windows component library (an Access file holding PLC_MANUFACTURER,
// MANUFACTURER_Simple and the module and terminal tables) into a library of this system.
// The new library is written under a temporary name in the target's folder and renamed over
// the target only when the conversion is complete: a failure never leaves half a library.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "plclib/AccessReader.h"

namespace plcdb {

struct MigrationReport {
    int manufacturers = 0;  // rows of MANUFACTURER_Simple converted
    int typeRows = 0;       // rows of PLC_MANUFACTURER converted
    int tables = 0;         // module tables created (each with its terminal table)
    int modules = 0;
    int terminals = 0;
    // One line for every row that could not be converted, and for every table named by
    // PLC_MANUFACTURER that the source does not hold.
    std::vector<std::string> problems;
};

struct MigrationOptions {
    bool force = false;  // replace an existing target
    // Called after each table with the tables done and the tables in all.
    std::function<void(size_t done, size_t total)> progress;
};

// False, with the reason in `error` and the target untouched, when the target exists and
// force is not set, when the source is no component library, or when the new library cannot
// be written. Rows that cannot be converted do not fail the run: they are reported.
bool MigrateLibrary(ITableSource& source, const std::string& target,
                    const MigrationOptions& options, MigrationReport& report, std::string& error);

}  // namespace plcdb
