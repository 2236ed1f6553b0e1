// qvplc report: the terminal plan, the I/O list and the bill of materials of a set of
// drawings, read from what the drawings hold.
#include <cstdio>
#include <string>

#include "Args.h"
#include "CliHost.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "FileErrors.h"
#include "Messages.h"
#include "batch/Report.h"
#include "cad/Dxf.h"
#include "files/FileError.h"

namespace cli {

namespace {

const CommandSpec kReportSpec{
    "qvplc report terminals|io|bom DRAWING.dxf... [--format csv|xlsx] [--out FILE]",
    "Makes a report from drawings, so that it shows what was really drawn. 'terminals' lists\n"
    "each module's terminals with their numbers and descriptions; 'io' lists every channel\n"
    "with its tag, module, address, signal text and kind (for modules drawn by 'qvplc batch';\n"
    "a module drawn by hand shows its description as the signal); 'bom' counts the modules by\n"
    "code, from the drawing's parts list and the modules' own records. Modules are found by\n"
    "their device labels and the links between their texts and symbols. CSV is written as\n"
    "UTF-8 with a byte-order mark, so that spreadsheet programs read Chinese texts right.",
    {{"format", "csv|xlsx", "the report's format (default: by the --out extension, else csv)"},
     {"out", "FILE",
      "write the report here (whole or not at all); default: standard output, "
      "CSV only"}},
    "Examples:\n"
    "  qvplc report terminals sheets/*.dxf\n"
    "  qvplc report io sheets/*.dxf --out io.xlsx\n"
    "  qvplc report bom sheets/*.dxf --format csv --out bom.csv\n"};

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

int RunReport(const Arguments& args, CliHost&) {
    const auto parsed = Parse(kReportSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::fputs(HelpText(kReportSpec).c_str(), stdout);
        return kExitOk;
    }
    if (parsed->positional.size() < 2) {
        Complainf(
            "qvplc report: name the report (terminals, io or bom) and at least one "
            "drawing\nTry 'qvplc report --help' for more.");
        return kExitUsage;
    }
    const auto kind = batch::ReportKindNamed(parsed->positional[0]);
    if (!kind) {
        Complainf("qvplc report: unknown report '%s'; it is terminals, io or bom",
                  parsed->positional[0].c_str());
        return kExitUsage;
    }
    const std::string out = parsed->Value("out").value_or("");
    const std::string format =
        parsed->Value("format").value_or(EndsWith(out, ".xlsx") ? "xlsx" : "csv");
    if (format != "csv" && format != "xlsx") {
        Complainf("qvplc report: --format takes csv or xlsx, not '%s'", format.c_str());
        return kExitUsage;
    }
    if (format == "xlsx" && out.empty()) {
        Complainf("qvplc report: an XLSX report needs --out FILE");
        return kExitUsage;
    }
    std::vector<batch::DrawnModuleInfo> modules;
    for (std::size_t i = 1; i < parsed->positional.size(); ++i) {
        const std::string& path = parsed->positional[i];
        std::string error;
        const auto db = cad::TryReadDxfFile(path, error);
        if (!db) {
            Complainf("cannot read the drawing %s: %s", path.c_str(), error.c_str());
            return kExitBadInput;
        }
        auto found = batch::ModulesOfDrawing(*db, path);
        if (found.empty()) {
            Complainf("%s: no drawn module found (no device label linked to its terminals)",
                      path.c_str());
        }
        modules.insert(modules.end(), found.begin(), found.end());
    }
    const batch::ReportTable table = batch::MakeReport(*kind, modules);
    try {
        if (out.empty()) {
            std::fputs(batch::CsvText(table).c_str() + 3, stdout);  // no byte-order mark on a pipe
        } else if (format == "csv") {
            batch::WriteCsvReport(table, out);
        } else if (std::string error; !batch::WriteXlsxReport(table, out, error)) {
            Complainf("cannot write the report %s: %s", out.c_str(), error.c_str());
            return kExitCannotWrite;
        }
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc report", e);
    }
    if (!out.empty()) {
        Complainf("%zu row(s) from %zu module(s) written to %s", table.rows.size(), modules.size(),
                  out.c_str());
    }
    return kExitOk;
}

}  // namespace cli
