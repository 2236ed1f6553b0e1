#include "Commands.h"

namespace cli {

int RunSettings(const Arguments& args, CliHost& host);  // SettingsCommands.cpp
int RunLib(const Arguments& args, CliHost& host);  // LibCommands.cpp

const std::vector<CommandGroup>& Groups() {
    static const std::vector<CommandGroup> groups = {
        {"settings", "show and change the drawing settings", RunSettings},
        {"lib", "read the component library, convert a Windows library", RunLib},
    };
    return groups;
}

}  // namespace cli
