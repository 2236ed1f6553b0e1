#include "Commands.h"

namespace cli {

int RunDxf(const Arguments& args, CliHost& host);       // DxfCommands.cpp
int RunDraw(const Arguments& args, CliHost& host);      // DrawCommand.cpp
int RunSettings(const Arguments& args, CliHost& host);  // SettingsCommands.cpp
int RunLib(const Arguments& args, CliHost& host);       // LibCommands.cpp
int RunNet(const Arguments& args, CliHost& host);       // NetCommands.cpp
int RunBatch(const Arguments& args, CliHost& host);     // BatchCommand.cpp
int RunCheck(const Arguments& args, CliHost& host);     // BatchCommand.cpp
int RunReport(const Arguments& args, CliHost& host);    // ReportCommand.cpp

const std::vector<CommandGroup>& Groups() {
    static const std::vector<CommandGroup> groups = {
        {"dxf", "read, convert and render DXF drawings", RunDxf},
        {"draw", "draw a library module into a DXF drawing", RunDraw},
        {"settings", "show and change the drawing settings", RunSettings},
        {"lib", "make a library, read and edit it, convert a Windows library", RunLib},
        {"net", "share the library over FTP: login, status, checkout, checkin", RunNet},
        {"batch", "draw an I/O list as a set of drawings, or bring the set up to date", RunBatch},
        {"check", "list the drawn modules out of step with the library or the I/O list", RunCheck},
        {"report", "terminal plan, I/O list or bill of materials of drawings, as CSV or XLSX",
         RunReport},
    };
    return groups;
}

}  // namespace cli
