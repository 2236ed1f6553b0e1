// qvplc batch: an I/O list drawn as a set of drawings, one per sheet, each module drawn by
// the drawing dialog as 'qvplc draw' draws it; with --update only the modules whose library
// rows or list rows changed are drawn again. qvplc check: which modules of drawings are out
// of step with the library (and a list).

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "Args.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "FileErrors.h"
#include "LibraryCheck.h"
#include "Messages.h"
#include "NetStep.h"
#include "ProgressBar.h"
#include "app/PlcRendalMain.h"
#include "batch/Check.h"
#include "batch/DrawingSet.h"
#include "cad/Dxf.h"
#include "files/AtomicFile.h"
#include "files/FileIdentity.h"

namespace cli {

namespace {

const CommandSpec kBatchSpec{
    "qvplc batch IOLIST --out DIR [--project FILE] [--sheet NAME] [--keep-going] [--update]",
    "Draws the modules of an I/O list (CSV or XLSX) into a set of DXF drawings, one per\n"
    "sheet, in DIR. The list has a heading row naming the columns tag, rack, slot, module\n"
    "(MANUFACTURER/SERIES/TYPE/CODE), channel (a terminal value, or # and the terminal's\n"
    "sequence), signal and optionally address, sheet and kind (DI, DO, AI, AO), in any\n"
    "order; the Chinese headings 位号/标号, 机架, 槽号, 模块, 通道/端号, 信号, 地址, 图纸/图号\n"
    "and 信号类型 are taken as well. Each tag is one module. It is drawn whole, as the\n"
    "drawing dialog draws it (all terminals, leads up), with its tag as the device label, the\n"
    "rack and slot as frame and slot numbers, and each listed channel's address and signal\n"
    "as the terminal's description and detailed description. Addresses not given in the list\n"
    "are counted from the project file's rules. Every drawn module records the library rows\n"
    "and list rows it was drawn from, so that 'qvplc check' finds what changed since.\n"
    "A list with faults draws nothing: every fault is reported with its row and column.\n"
    "Drawings that exist already are only brought up to date, with --update.\n"
    "What was drawn where is printed and written to DIR/batch-report.csv.",
    {{"out", "DIR", "the folder of the drawings (made when missing); required"},
     {"project", "FILE",
      "the project file: address forms and starts, sheets, grid, sheet frame (see below)"},
     {"sheet", "NAME", "the worksheet of an XLSX list (default: the first)"},
     {"keep-going", "", "draw what the list's good rows give, leaving out rows with faults"},
     {"update", "",
      "draw again, in place, only the modules out of step with the library or the list, and "
      "add the modules new to the list; everything else in the drawings stays"},
     {"save-format", "N",
      "the host's save format: 8 R14, 12 2000, 24 2004, 36 2007, 48 2010 (default 48)"}},
    "Project file: lines 'key = value', '#' starts a comment:\n"
    "  form = bit | iec | counter     I0.0 | %IX0.0 | X000, DI001 (default bit)\n"
    "  base = 8 | 10 | 16             counter digits (default 10); digits = 3\n"
    "  start.DI = 0                   first address of a kind (DI, DO, AI, AO); in the bit\n"
    "                                 and iec forms bytes, in the counter form its base\n"
    "  slot.0.3 = 8                   the module in rack 0, slot 3 starts at 8\n"
    "  prefix.DI = I                  prefixes (defaults: I Q IW QW / %IX %QX %IW %QW /\n"
    "                                 X Y AI AO)\n"
    "  kind.RTD = AI                  a module signal type counted as a kind\n"
    "  reserve = points | listed      a module takes addresses for all its points or only\n"
    "                                 for its listed channels (default points)\n"
    "  spare = 备用                   a signal text marking a spare channel (also SPARE and\n"
    "                                 an empty signal): it keeps its address, no signal\n"
    "  address.field = description | detail   where the address goes (default description)\n"
    "  sheet.modules = 8              modules per sheet when the list has no sheet column\n"
    "  grid.columns = 4  grid.dx = 0  grid.dy = 100   the module grid (dx 0: from the modules)\n"
    "  frame = frame.dxf              every sheet starts as a copy of this drawing\n"
    "Addresses run through the modules in rack and slot order, each kind by itself; a\n"
    "channel's place is its place among the module's listed channels in terminal order.\n"
    "Digital channels count bits (I0.7 is followed by I1.0), analog channels 16-bit words\n"
    "(IW0, IW2, ...), the counter form whole numbers in its base (X007, X010).\n\n"
    "Examples:\n"
    "  qvplc batch res/sample/batch/iolist.csv --project res/sample/batch/project.ini \\\n"
    "      --out sheets\n"
    "  qvplc batch iolist.xlsx --sheet IO --out sheets --keep-going\n"
    "  qvplc batch iolist.csv --project project.ini --out sheets --update\n"};

const CommandSpec kCheckSpec{
    "qvplc check DRAWING.dxf... [--list IOLIST [--project FILE] [--sheet NAME]]",
    "Lists the modules of the drawings drawn by 'qvplc batch' whose rows in the component\n"
    "library changed since they were drawn, and with --list those whose rows in the I/O list\n"
    "changed (or whose tag the list no longer has). One line per module on standard output:\n"
    "DRAWING: TAG MODULE: what changed, or 'in step'. The exit code is 1 when a module is out\n"
    "of step; 'qvplc batch IOLIST --update --out DIR' draws those again.",
    {{"list", "IOLIST", "the I/O list the drawings were drawn from"},
     {"project", "FILE", "the project file the list was drawn with"},
     {"sheet", "NAME", "the worksheet of an XLSX list"}},
    "Examples:\n"
    "  qvplc check sheets/*.dxf\n"
    "  qvplc check sheets/*.dxf --list iolist.csv --project project.ini\n"};

bool UsageError(const char* command, const std::string& message) {
    std::fprintf(stderr, "qvplc %s: %s\nTry 'qvplc %s --help' for more.\n", command,
                 message.c_str(), command);
    return false;
}

// The project file's rules, or the defaults; false after its faults were reported.
bool LoadProject(const ParsedArgs& args, batch::Project& project) {
    const auto path = args.Value("project");
    if (!path) {
        return true;
    }
    std::vector<batch::ListError> errors;
    project = batch::ReadProject(*path, errors);
    for (const batch::ListError& error : errors) {
        Complain(error.Text());
    }
    return errors.empty();
}

// Opens the library through the drawing dialog; the exit code when it cannot be opened.
int OpenLibrary(batch::ModuleDrawer& drawer) {
    if (drawer.Open()) {
        return kExitOk;
    }
    const int code = ExplainLibraryTrouble(app::LibraryPath());
    return code != kExitOk ? code : kExitFailure;
}

void PrintEntries(const std::vector<batch::DrawnEntry>& entries) {
    for (const batch::DrawnEntry& e : entries) {
        std::printf("%s: %s %s rack %s slot %s at %g,%g, %zu channels: %s\n", e.file.c_str(),
                    e.tag.c_str(), e.module.c_str(), e.rack.c_str(), e.slot.c_str(), e.origin.x,
                    e.origin.y, e.channels, batch::ActionName(e.action));
    }
}

// A drawing of the set may hold what was added by hand since: it is brought up to date with
// --update, never replaced. True when no sheet of the plan exists yet.
bool RefuseExistingSheets(const batch::Plan& plan, const std::string& out) {
    std::size_t existing = 0;
    for (const batch::PlannedSheet& sheet : plan.sheets) {
        const std::string path = (std::filesystem::path(out) / sheet.fileName).string();
        if (files::Identify(path).exists) {
            Complainf("%s exists already", path.c_str());
            ++existing;
        }
    }
    if (existing > 0) {
        Complainf(
            "nothing was drawn: give --update to bring the %zu existing drawing(s) up to "
            "date, or remove them to draw them afresh",
            existing);
    }
    return existing == 0;
}

int RunBatchList(const ParsedArgs& args, CliHost& host) {
    batch::Project project;
    if (!LoadProject(args, project)) {
        return kExitBadInput;
    }
    const std::string listPath = args.positional[0];
    batch::ModuleDrawer drawer;
    if (const int code = OpenLibrary(drawer); code != kExitOk) {
        return code;
    }
    // The list's rows are needed only until the plan is made.
    bool listFaults = false;
    const batch::Plan plan = [&] {
        const batch::IoList list = batch::ReadIoList(listPath, args.Value("sheet").value_or(""));
        listFaults = !list.errors.empty();
        return batch::MakePlan(list, project, drawer.Lookup());
    }();
    for (const batch::ListError& error : plan.errors) {
        Complain(error.Text());
    }
    const bool keepGoing = args.Has("keep-going");
    if (!plan.errors.empty() && (!keepGoing || listFaults)) {
        Complainf("nothing was drawn: the list has %zu fault(s)%s", plan.errors.size(),
                  listFaults ? "" : "; fix them, or give --keep-going to draw the rest");
        return kExitBadInput;
    }
    const std::string out = args.Value("out").value_or("");
    if (!args.Has("update") && !RefuseExistingSheets(plan, out)) {
        return kExitFailure;
    }
    std::filesystem::create_directories(out);
    batch::SetOptions options;
    options.outDir = out;
    options.listFile = listPath;
    options.update = args.Has("update");
    options.saveFormat = args.Value("save-format").value_or("48");
    ProgressBar bar;
    options.progress = [&bar](std::size_t done, std::size_t total) {
        const int percent = total == 0 ? 100 : static_cast<int>(done * 100 / total);
        if (bar.Show(percent)) {
            Complainf("batch %d%%", percent);
        }
    };
    const batch::SetResult result = batch::DrawSet(drawer, plan, project, options);
    PrintEntries(result.entries);
    const std::string report = (std::filesystem::path(out) / "batch-report.csv").string();
    files::WriteFile(report, batch::ReportCsv(result.entries));
    for (const std::string& error : result.errors) {
        Complain(error);
    }
    Complainf("%zu module(s) on %zu sheet(s); %zu drawing(s) written; report: %s",
              plan.ModuleCount(), plan.sheets.size(), result.written.size(), report.c_str());
    if (!plan.errors.empty()) {
        Complainf("%zu list row(s) with faults were left out", plan.errors.size());
    }
    return result.errors.empty() ? kExitOk : kExitFailure;
}

int RunCheckDrawings(const ParsedArgs& args, CliHost& host) {
    batch::ModuleDrawer drawer;
    if (const int code = OpenLibrary(drawer); code != kExitOk) {
        return code;
    }
    std::optional<batch::Plan> plan;
    if (const auto listPath = args.Value("list")) {
        batch::Project project;
        if (!LoadProject(args, project)) {
            return kExitBadInput;
        }
        const auto list = batch::ReadIoList(*listPath, args.Value("sheet").value_or(""));
        plan = batch::MakePlan(list, project, drawer.Lookup());
        for (const batch::ListError& error : plan->errors) {
            Complain(error.Text());
        }
        if (!list.errors.empty()) {
            return kExitBadInput;
        }
    }
    std::size_t modules = 0, outOfStep = 0;
    int exitCode = kExitOk;
    for (const std::string& path : args.positional) {
        std::string error;
        const auto db = cad::TryReadDxfFile(path, error);
        if (!db) {
            Complainf("cannot read the drawing %s: %s", path.c_str(), error.c_str());
            exitCode = kExitBadInput;
            continue;
        }
        for (const batch::CheckedModule& c :
             batch::CheckDrawing(path, *db, drawer.Lookup(), plan ? &*plan : nullptr)) {
            ++modules;
            outOfStep += c.OutOfStep() ? 1 : 0;
            std::printf("%s: %s %s: %s\n", path.c_str(), c.source.tag.c_str(),
                        c.source.module.c_str(), c.Reasons().c_str());
        }
    }
    Complainf("%zu of %zu module(s) out of step", outOfStep, modules);
    if (exitCode != kExitOk) {
        return exitCode;
    }
    return outOfStep > 0 ? kExitFailure : kExitOk;
}

}  // namespace

int RunBatch(const Arguments& args, CliHost& host) {
    const auto parsed = Parse(kBatchSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::fputs(HelpText(kBatchSpec).c_str(), stdout);
        return kExitOk;
    }
    if (parsed->positional.size() != 1) {
        UsageError("batch", "name exactly one I/O list");
        return kExitUsage;
    }
    if (!parsed->Has("out")) {
        UsageError("batch", "--out DIR is required");
        return kExitUsage;
    }
    const std::string format = parsed->Value("save-format").value_or("48");
    if (format != "8" && format != "12" && format != "24" && format != "36" && format != "48") {
        UsageError("batch", "--save-format takes 8, 12, 24, 36 or 48, not '" + format + "'");
        return kExitUsage;
    }
    if (const std::string out = *parsed->Value("out");
        std::filesystem::exists(out) && !std::filesystem::is_directory(out)) {
        Complainf("--out %s: that is a file, not a folder", out.c_str());
        return kExitCannotWrite;
    }
    RunDrawingNetworkStep();
    try {
        return RunBatchList(*parsed, host);
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc batch", e);
    }
}

int RunCheck(const Arguments& args, CliHost& host) {
    const auto parsed = Parse(kCheckSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::fputs(HelpText(kCheckSpec).c_str(), stdout);
        return kExitOk;
    }
    if (parsed->positional.empty()) {
        UsageError("check", "name one or more drawings");
        return kExitUsage;
    }
    RunDrawingNetworkStep();
    return RunCheckDrawings(*parsed, host);
}

}  // namespace cli
