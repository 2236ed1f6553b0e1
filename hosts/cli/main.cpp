// qvplc: the command-line host of the PLC drawing plug-in.
#include <clocale>
#include <cstdio>
#include <cstring>
#include <string>

#include "Commands.h"
#include "ExitCodes.h"

namespace {

void PrintUsage(FILE* out) {
    std::fprintf(out,
                 "usage: qvplc <group> <command> [options]\n\n"
                 "Draws PLC I/O modules from the component library into DXF drawings, and\n"
                 "reads, converts and renders the library and the drawings.\n\n"
                 "Groups:\n");
    for (const auto& group : cli::Groups()) {
        std::fprintf(out, "  %-10s %s\n", group.name, group.summary);
    }
    std::fprintf(out,
                 "\nEvery command takes --help. Folders come from the environment:\n"
                 "  ZANDRIX_LOCAL_DIR    local installation folder (PLC/QvPLC.db, LocalData/)\n"
                 "  ZANDRIX_COMMON_DIR   common resource folder (SYMB2LIB/, Data/)\n"
                 "  ZANDRIX_INSTALL_STYLE  0 single workstation, 1 or 2 network client\n\n%s",
                 cli::kExitCodesHelp);
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "C");  // numbers are read and written with a '.' always
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        PrintUsage(argc < 2 ? stderr : stdout);
        return argc < 2 ? cli::kExitUsage : cli::kExitOk;
    }
    const std::string name = argv[1];
    for (const auto& group : cli::Groups()) {
        if (name == group.name) {
            cli::CliHost cliHost;
            host::ScopedHost scope(cliHost);
            return group.run(cli::Arguments(argv + 2, argv + argc), cliHost);
        }
    }
    std::fprintf(stderr, "qvplc: unknown group '%s'\n\n", name.c_str());
    PrintUsage(stderr);
    return cli::kExitUsage;
}
