// qvplc lib import: fills the library from another CAD's PLC database (ace_plc.mdb) through
// the same import the library editor runs, and says what it added and what it passed over.

#include <cstdio>
#include <filesystem>
#include <string>

#include "Args.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "LibraryCheck.h"
#include "Messages.h"
#include "ProgressBar.h"
#include "host/SuiteServices.h"
#include "libedit/DlgDbImport.h"
#include "plclib/PlcLib.h"

namespace cli {
namespace {

const CommandSpec kImportSpec{
    "qvplc lib import PATH [--yes] [--dry-run] [--library FILE]",
    "Adds to the component library what the PLC database of another CAD's electrical add-on\n"
    "(an Access file that must be named ace_plc.mdb) holds and the library lacks:\n"
    "manufacturers, series, types, modules and terminal rows. Nothing in the library is\n"
    "changed or deleted; a module already there keeps its values. The terminal number and\n"
    "description are taken from TERM_= and TERMDESC_= of each row's ATTRIBUTES. A type\n"
    "whose table name holds '-' is not recognised by a later import and is added again.\n"
    "Rows added before a failure stay. The report on standard output lists what was added\n"
    "and what was skipped, and why; --dry-run prints it without changing anything.",
    {YesOption(),
     NoOption(),
     {"dry-run", "", "report what would be added and change nothing"},
     {"library", "FILE",
      "the library to fill (default: PLC/QvPLC.db in the local installation folder)"}},
    "Examples:\n  qvplc lib import /mnt/cad/PLC/ace_plc.mdb --dry-run\n"
    "  qvplc lib import /mnt/cad/PLC/ace_plc.mdb --yes --library ./QvPLC.db"};

// The import's progress as a whole percent of its range, while its dialog shows.
void ShowProgress(ProgressBar& bar, const CDlgImportProgress& progress) {
    if (!progress.Visible()) {
        return;
    }
    const int span = progress.Upper() - progress.Lower();
    const int percent = span <= 0 ? 100 : (progress.Pos() - progress.Lower()) * 100 / span;
    if (bar.Show(percent)) {
        Complainf("import %d%%", percent);
    }
}

std::string TargetPath(const ParsedArgs& args) {
    if (auto path = args.Value("library")) {
        return *path;
    }
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath);
}

int Import(const ParsedArgs& args, CliHost& host) {
    const std::string source = args.positional[0];
    std::error_code ec;
    if (!std::filesystem::is_regular_file(source, ec)) {
        Complainf("%s: no such file", source.c_str());
        return kExitBadInput;
    }
    host.answer = args.Has("yes") ? Answer::Yes : args.Has("no") ? Answer::No : Answer::None;
    const std::string target = TargetPath(args);
    CPlcLib lib;
    if (!lib.Open(target)) {
        const int code = ExplainLibraryTrouble(target);
        return code != kExitOk ? code : kExitBadInput;
    }
    CDlgDbImport dlg(lib);
    dlg.OnInitDialog();
    dlg.OnBrowse(source);
    dlg.dryRun = args.Has("dry-run");
    dlg.askConfirmation = !dlg.dryRun;  // a dry run writes nothing, so asks nothing
    dlg.pauseAfterDone = nullptr;
    bool done = false;
    {
        ProgressBar bar;
        dlg.progress.onChange = [&bar](const CDlgImportProgress& p) { ShowProgress(bar, p); };
        done = dlg.OnOK();
    }
    std::printf("%s", libedit::FormatReport(dlg.report, dlg.dryRun).c_str());
    lib.Close();
    if (done) {
        return kExitOk;
    }
    if (host.declined) {
        return kExitCancelled;
    }
    if (dlg.failure.empty() || dlg.failure == "导入数据库中数据库连接出现错误!" ||
        dlg.failure == "数据库ace_plc.mdb中的PLC_MANUFACTURER表为空!") {
        return kExitBadInput;  // the wrong file, or a source that cannot be read
    }
    return kExitFailure;
}

}  // namespace

int RunLibImport(const Arguments& args, CliHost& host) {
    auto parsed = Parse(kImportSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::printf("%s", HelpText(kImportSpec).c_str());
        return kExitOk;
    }
    if (parsed->positional.size() != 1) {
        Complainf("import takes 1 argument\nusage: %s", kImportSpec.usage.c_str());
        return kExitUsage;
    }
    return Import(*parsed, host);
}

}  // namespace cli
