#include "Commands.h"

namespace cli {

int RunSettings(const Arguments& args, CliHost& host);  // SettingsCommands.cpp

const std::vector<CommandGroup>& Groups() {
    static const std::vector<CommandGroup> groups = {
        {"settings", "show and change the drawing settings", RunSettings},
    };
    return groups;
}

}  // namespace cli
