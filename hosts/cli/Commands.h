// The subcommand groups of qvplc. Each group parses its own options (Args.h) into a plain
// request and runs it through the same plug-in code the desktop host uses.
#pragma once

#include <string>
#include <vector>

#include "CliHost.h"

namespace cli {

using Arguments = std::vector<std::string>;

struct CommandGroup {
    const char* name;
    const char* summary;
    int (*run)(const Arguments& args, CliHost& host);
};

// Groups are registered in Commands.cpp; each lives in its own file.
const std::vector<CommandGroup>& Groups();

// qvplc lib import (LibImportCommand.cpp); ARGS are those after "import".
int RunLibImport(const Arguments& args, CliHost& host);
int RunLibCheck(const Arguments& args, CliHost& host);  // LibCheckCommand.cpp

}  // namespace cli
