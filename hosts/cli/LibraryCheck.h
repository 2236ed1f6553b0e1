// The two library problems every command words the same way and gives the same exit code:
// no library where the program looks for one, and a library another program holds locked.
#pragma once

#include <string>

namespace cli {

// True when another connection holds a lock that keeps readers out (a write in progress).
bool LibraryLocked(const std::string& path);

// After a command failed to use the library at `path`: tells the user what is wrong and what
// to do when the library is missing or locked, and returns that exit code; returns 0 (and
// says nothing) when neither is the cause.
int ExplainLibraryTrouble(const std::string& path);

}  // namespace cli
