// The top of qvplc: picks the group, and is the one place where anything that escapes a
// command is caught and turned into a message and an exit code. The program never aborts.
#pragma once

#include <functional>
#include <string>

namespace cli {

int Main(int argc, char** argv);

// Runs `command`; a file-system error that escapes it is reported with its path and reason
// (kExitCannotWrite or kExitLocked), anything else as an internal error (kExitInternal).
int Guarded(const std::function<int()>& command);

// "qvplc 0.1 (git describe)" for --version.
std::string VersionText();

}  // namespace cli
