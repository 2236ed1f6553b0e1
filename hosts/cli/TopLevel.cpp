#include "TopLevel.h"

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>

#include "Commands.h"
#include "ExitCodes.h"
#include "Messages.h"

#ifndef QV_VERSION
#define QV_VERSION "unknown"
#endif
#ifndef QV_GIT_DESCRIBE
#define QV_GIT_DESCRIBE ""
#endif

namespace cli {
namespace {

void PrintUsage(FILE* out) {
    std::fprintf(out,
                 "usage: qvplc <group> <command> [options]\n"
                 "       qvplc --help | --version\n\n"
                 "Draws PLC I/O modules from the component library into DXF drawings, and\n"
                 "reads, converts and renders the library and the drawings.\n\n"
                 "Groups:\n");
    for (const auto& group : Groups()) {
        std::fprintf(out, "  %-10s %s\n", group.name, group.summary);
    }
    std::fprintf(
        out,
        "\nEvery command takes --help. Folders come from the environment:\n"
        "  ZANDRIX_LOCAL_DIR    local installation folder (PLC/QvPLC.db, LocalData/)\n"
        "  ZANDRIX_COMMON_DIR   common resource folder (SYMB2LIB/, Data/)\n"
        "  ZANDRIX_INSTALL_STYLE  0 single workstation, 1 or 2 network client\n"
        "  ZANDRIX_HOST_NAME    the host name written into editing locks (default: the\n"
        "                       machine's)\n"
        "A new user makes a library with 'qvplc lib init' (or 'qvplc lib init --sample').\n"
        "Messages go to standard error as 'qvplc GROUP: ...'; under an English locale\n"
        "(LANG, LC_MESSAGES or LC_ALL starting with \"en\") the system's messages are\n"
        "followed by an English translation.\n\n%s",
        ExitCodesHelp().c_str());
}

int FileSystemExitCode(const std::error_code& code) {
    if (code == std::errc::resource_unavailable_try_again ||
        code == std::errc::device_or_resource_busy) {
        return ExitCodeFor(FileTrouble::InUse);
    }
    return ExitCodeFor(FileTrouble::CannotWrite);
}

int RunGroup(int argc, char** argv) {
    const std::string name = argv[1];
    for (const auto& group : Groups()) {
        if (name == group.name) {
            SetCommandGroup(group.name);
            CliHost cliHost;
            host::ScopedHost scope(cliHost);
            return group.run(Arguments(argv + 2, argv + argc), cliHost);
        }
    }
    if (name.rfind('-', 0) == 0) {
        Complainf("unknown option '%s'", name.c_str());
    } else {
        Complainf("unknown group '%s'", name.c_str());
    }
    std::fputc('\n', stderr);
    PrintUsage(stderr);
    return kExitUsage;
}

}  // namespace

std::string VersionText() {
    std::string text = std::string("qvplc ") + QV_VERSION;
    if (std::strlen(QV_GIT_DESCRIBE) > 0) {
        text += std::string(" (") + QV_GIT_DESCRIBE + ")";
    }
    return text;
}

int Guarded(const std::function<int()>& command) {
    // The file layer's own errors are caught before std::exception and mapped through the
    // one exit-code table.
    try {
        return command();
    } catch (const files::FileError& e) {
        Complainf("%s", e.what());
        return ExitCodeFor(e);
    } catch (const std::filesystem::filesystem_error& e) {
        const std::string path = e.path1().empty() ? std::string() : e.path1().string() + ": ";
        Complainf("%s%s", path.c_str(), e.code().message().c_str());
        return FileSystemExitCode(e.code());
    } catch (const std::bad_alloc&) {
        Complain("internal error: out of memory");
    } catch (const std::exception& e) {
        Complainf("internal error: %s", e.what());
    } catch (...) {
        Complain("internal error: an unknown exception");
    }
    return kExitInternal;
}

int Main(int argc, char** argv) {
    std::setlocale(LC_ALL, "C");  // numbers are read and written with a '.' always
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        PrintUsage(argc < 2 ? stderr : stdout);
        return argc < 2 ? kExitUsage : kExitOk;
    }
    if (std::strcmp(argv[1], "--version") == 0) {
        std::printf("%s\n", VersionText().c_str());
        return kExitOk;
    }
    return Guarded([&] { return RunGroup(argc, argv); });
}

}  // namespace cli
