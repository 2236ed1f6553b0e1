#include "Commands.h"

namespace cli {

int RunDxf(const Arguments& args, CliHost& host);       // DxfCommands.cpp
int RunDraw(const Arguments& args, CliHost& host);      // DrawCommand.cpp
int RunSettings(const Arguments& args, CliHost& host);  // SettingsCommands.cpp
int RunLib(const Arguments& args, CliHost& host);       // LibCommands.cpp
int RunNet(const Arguments& args, CliHost& host);       // NetCommands.cpp

const std::vector<CommandGroup>& Groups() {
    static const std::vector<CommandGroup> groups = {
        {"dxf", "read, convert and render DXF drawings", RunDxf},
        {"draw", "draw a library module into a DXF drawing", RunDraw},
        {"settings", "show and change the drawing settings", RunSettings},
        {"lib", "make a library, read and edit it, convert a Windows library", RunLib},
        {"net", "share the library over FTP: login, status, checkout, checkin", RunNet},
    };
    return groups;
}

}  // namespace cli
