#include "LibraryCheck.h"

#include <sqlite3.h>

#include <filesystem>

#include "ExitCodes.h"
#include "Messages.h"

namespace cli {

bool LibraryLocked(const std::string& path) {
    sqlite3* db = nullptr;
    bool locked = false;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_busy_timeout(db, 0);
        const int rc =
            sqlite3_exec(db, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
        locked = rc == SQLITE_BUSY || rc == SQLITE_LOCKED;
    }
    sqlite3_close(db);
    return locked;
}

int ExplainLibraryTrouble(const std::string& path) {
    std::error_code ec;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, ec))) {
        Complainf(
            "no component library at %s; make one with 'qvplc lib init' (empty) or "
            "'qvplc lib init --sample' (the sample library)",
            path.c_str());
        return kExitBadInput;
    }
    // A FIFO or device would block the probe below; the library layer has named it already.
    if (!std::filesystem::is_regular_file(path, ec)) {
        return kExitBadInput;
    }
    if (LibraryLocked(path)) {
        Complainf("the library %s is in use by another program; try again when it is done",
                  path.c_str());
        return kExitLocked;
    }
    return kExitOk;
}

}  // namespace cli
