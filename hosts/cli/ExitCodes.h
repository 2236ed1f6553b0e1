// Exit codes of qvplc: one table, the same meaning in every command.
#pragma once

#include <string>

#include "files/FileError.h"

namespace cli {

inline constexpr int kExitOk = 0;           // the command did what was asked
inline constexpr int kExitFailure = 1;      // it ran and failed; the reason was reported
inline constexpr int kExitUsage = 2;        // wrong command, option or argument
inline constexpr int kExitBadInput = 3;     // an input is missing, unreadable or malformed
inline constexpr int kExitCancelled = 4;    // a question or a point was declined or not answered
inline constexpr int kExitLocked = 5;       // the library or a file is in use by another program
inline constexpr int kExitChanged = 6;      // a file changed on disk after it was read
inline constexpr int kExitCannotWrite = 7;  // a file or folder cannot be written or reached
inline constexpr int kExitNoServer = 8;     // the library server cannot be reached or logged in to
inline constexpr int kExitRevoked = 9;      // another host took the editing lock: nothing was sent
inline constexpr int kExitInternal = 70;    // a fault in qvplc itself

struct ExitCodeRow {
    int code;
    const char* meaning;
};

// Every row, in order; --help, the manual page and README list these.
const ExitCodeRow* ExitCodeTable(size_t& rows);
// "Exit codes:\n  0  success\n ..." for --help.
std::string ExitCodesHelp();

// What went wrong with a file, as far as the exit code goes. The file layer's error kinds
// are mapped onto these in one place (ExitCodeFor), and every command reports through it.
enum class FileTrouble {
    InUse,          // another program holds its lock
    ChangedOnDisk,  // changed since it was read; nothing was written
    Unreadable,     // missing, not a regular file, malformed
    CannotWrite,    // permission, read-only file or folder, missing folder, name too long
};
int ExitCodeFor(FileTrouble trouble);
// The file layer's error kinds, through FileTrouble. An output that is also an input is a
// usage error.
int ExitCodeFor(const files::FileError& error);

}  // namespace cli
