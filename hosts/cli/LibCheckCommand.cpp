// qvplc lib check: the library's faults that no statement refused, one line each.
#include <cstdio>
#include <filesystem>
#include <string>

#include "Args.h"
#include "CliHost.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "Messages.h"
#include "host/SuiteServices.h"
#include "plclib/LibraryFaults.h"
#include "plclib/PlcLib.h"

namespace cli {

namespace {

const CommandSpec kLibCheckSpec{
    "qvplc lib check [--library FILE]",
    "Looks through the component library for faults that no statement refused: terminal\n"
    "sequences of a module used twice or missing from 1 up to the last, terminal values\n"
    "repeated within a module, texts longer than their column allows, TABLE_NAMEs whose\n"
    "tables are missing and module tables no type names, and manufacturers without a short\n"
    "name. One line per fault, 'WHERE: what is wrong', on standard output; the library is\n"
    "only read. The exit code is 1 when a fault was found, 0 when the library is clean.",
    {{"library", "FILE",
      "the library to check (default: PLC/QvPLC.db in the local installation folder)"}},
    "Examples:\n  qvplc lib check\n  qvplc lib check --library ./QvPLC.db\n"};

}  // namespace

int RunLibCheck(const Arguments& args, CliHost&) {
    const auto parsed = Parse(kLibCheckSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::fputs(HelpText(kLibCheckSpec).c_str(), stdout);
        return kExitOk;
    }
    if (!parsed->positional.empty()) {
        Complainf(
            "qvplc lib check: takes no arguments, only --library FILE\n"
            "Try 'qvplc lib check --help' for more.");
        return kExitUsage;
    }
    const std::string path = parsed->Value("library").value_or(
        suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath));
    if (!std::filesystem::is_regular_file(path)) {
        Complainf("qvplc lib check: there is no library at %s", path.c_str());
        return kExitBadInput;
    }
    std::string error;
    const auto faults = plcdb::FindLibraryFaults(path, error);
    if (!faults) {
        Complainf("qvplc lib check: cannot read the library %s: %s", path.c_str(), error.c_str());
        return kExitBadInput;
    }
    for (const auto& fault : *faults) {
        std::printf("%s: %s\n", fault.where.c_str(), fault.what.c_str());
    }
    if (faults->empty()) {
        Complainf("%s: no fault found", path.c_str());
        return kExitOk;
    }
    Complainf("%s: %zu fault(s) found", path.c_str(), faults->size());
    return kExitFailure;
}

}  // namespace cli
