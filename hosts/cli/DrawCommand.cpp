// qvplc draw: draws one module of the component library into a DXF drawing. It goes the way
// a user goes in the CAD host: the plug-in is loaded, PLCRENDAL opens the drawing dialog,
// the module is selected in the dialog's tree, the edits are filled, a draw button is pressed,
// and the host then runs the queued RENDALFULL or DIVRENDAL with the points of the options.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Args.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "app/PlcRendalApp.h"
#include "app/PlcRendalMain.h"
#include "cad/Dxf.h"
#include "cad/render/Render.h"
#include "draw/DlgPlcRendal.h"
#include "draw/settings/SettingsFile.h"
#include "host/SuiteServices.h"

namespace cli {

namespace {

const CommandSpec kDrawSpec{
    "qvplc draw MANUFACTURER/SERIES/TYPE/CODE --tag TAG (--at X,Y | --pieces X0,Y0:X1,Y1 ...) "
    "--drawing FILE.dxf",
    "Draws one module of the component library (local folder + PLC/QvPLC.db) into a DXF\n"
    "drawing, as the drawing dialog does: the module is selected in the library tree, its\n"
    "terminal rows are listed (all of them chosen, leads up, or left in the vertical\n"
    "orientation), the edits are filled from the options and a draw button is pressed.\n"
    "--at draws the whole module (完整绘制) with its origin at X,Y; --pieces draws it in\n"
    "pieces (分段绘制), each from a start point to an end point along the module's axis; as\n"
    "many terminals as fit between the two points go into each piece.\n"
    "The drawing is created when FILE.dxf does not exist; an existing drawing is read and the\n"
    "module is added to it, keeping everything it holds. It is written whole (a temporary\n"
    "file, then renamed) in the host's save format (--save-format). The drawing settings\n"
    "(format, terminal symbol, spacing, labels) come from LocalData/PlcDrawSetting.dat\n"
    "(see 'qvplc settings').",
    {{"tag", "TAG", "the module's tag (标号); required, not blank and not \"-\""},
     {"frame", "F", "frame number (框架号)"},
     {"slot", "S", "slot number (槽号)"},
     {"location", "L", "installation location (安装位置); default: the drawing's own"},
     {"vertical", "", "draw the module vertically (垂直): terminals on the right and left"},
     {"format", "N",
      "drawing format 1, 2 or 3 with that format's terminal from the settings (default: the "
      "format in use)"},
     {"symbol", "NAME", "terminal symbol NAME from the common folder's SYMB2LIB/NAME.dxf"},
     {"terminals", "LIST", "the terminals to draw by 端点序号, e.g. 1-8,11 (default: all)"},
     {"pattern", "ID", "direction pattern 101..106 of the terminal list's menu"},
     {"at", "X,Y", "draw the whole module with its origin at X,Y"},
     {"pieces", "X0,Y0:X1,Y1", "one piece from X0,Y0 to X1,Y1; repeat for more pieces", true},
     {"drawing", "FILE.dxf", "the drawing to create or add to"},
     {"save-format", "N",
      "the host's save format: 8 R14, 12 2000, 24 2004, 36 2007, 48 2010 (default 48)"},
     {"png", "FILE.png", "also render the finished drawing to a PNG (or .svg) picture"}},
    "Patterns (horizontal / vertical):\n"
    "  101 all up / all left         102 all down / all right\n"
    "  103 odd up, even down         104 odd down, even up\n"
    "  105 first half up, rest down  106 first half down, rest up\n"
    "(odd and even count terminals from 1, as the menu does).\n\n"
    "Examples:\n"
    "  qvplc draw 'Maker/Series A/DI/DI-16' --tag A1 --frame 0 --slot 3 \\\n"
    "      --at 100,200 --drawing cabinet.dxf --png cabinet.png\n"
    "  qvplc draw 'Maker/Series A/DI/DI-16' --tag A2 --vertical --pattern 105 \\\n"
    "      --pieces 0,0:0,-60 --pieces 50,0:50,-120 --drawing cabinet.dxf\n\n"
    "A piece shorter than twice the terminal spacing plus 5 is refused; when the module\n"
    "needs more pieces than given, nothing is written and the exit code is 4.\n"};

struct DrawRequest {
    std::string manufacturer, series, type, code;
    std::string tag, frame, slot;
    std::optional<std::string> location;
    bool vertical = false;
    int format = 0;
    std::string symbol;
    std::set<int> terminals;  // by sequence; empty = all
    int pattern = 0;
    bool divided = false;
    std::vector<cad::Point3d> points;  // in the order the drawing asks for them
    std::string drawing, png;
    std::string saveFormat = "48";
};

bool UsageError(const std::string& message) {
    std::fprintf(stderr, "qvplc draw: %s\nTry 'qvplc draw --help' for more.\n", message.c_str());
    return false;
}

bool ParsePoint(const std::string& text, cad::Point3d& point) {
    std::istringstream in(text);
    char comma = 0;
    double x = 0, y = 0;
    if (!(in >> x >> comma >> y) || comma != ',' || !(in >> std::ws).eof()) {
        return false;
    }
    point = cad::Point3d{x, y, 0};
    return true;
}

bool ParseInt(const std::string& text, int& value) {
    char* end = nullptr;
    const long parsed = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0') {
        return false;
    }
    value = static_cast<int>(parsed);
    return true;
}

// "1-8,11" -> {1..8, 11}
bool ParseTerminals(const std::string& text, std::set<int>& terminals) {
    std::istringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) {
        const auto dash = item.find('-', 1);
        int first = 0, last = 0;
        if (dash == std::string::npos) {
            if (!ParseInt(item, first)) {
                return false;
            }
            last = first;
        } else if (!ParseInt(item.substr(0, dash), first) ||
                   !ParseInt(item.substr(dash + 1), last) || last < first) {
            return false;
        }
        for (int i = first; i <= last; ++i) {
            terminals.insert(i);
        }
    }
    return !terminals.empty();
}

bool SplitModule(const std::string& path, DrawRequest& request) {
    std::vector<std::string> parts;
    std::istringstream in(path);
    std::string part;
    while (std::getline(in, part, '/')) {
        parts.push_back(part);
    }
    if (parts.size() != 4 || parts[0].empty() || parts[3].empty()) {
        return UsageError("the module is named MANUFACTURER/SERIES/TYPE/CODE, not '" + path + "'");
    }
    request.manufacturer = parts[0];
    request.series = parts[1];
    request.type = parts[2];
    request.code = parts[3];
    return true;
}

bool ParsePlacement(const ParsedArgs& args, DrawRequest& request) {
    if (args.Has("at") == args.Has("pieces")) {
        return UsageError("give either --at X,Y or one or more --pieces X0,Y0:X1,Y1");
    }
    if (const auto at = args.Value("at")) {
        cad::Point3d point;
        if (!ParsePoint(*at, point)) {
            return UsageError("--at takes X,Y, not '" + *at + "'");
        }
        request.points.push_back(point);
        return true;
    }
    request.divided = true;
    for (const std::string& piece : args.Values("pieces")) {
        const auto colon = piece.find(':');
        cad::Point3d start, end;
        if (colon == std::string::npos || !ParsePoint(piece.substr(0, colon), start) ||
            !ParsePoint(piece.substr(colon + 1), end)) {
            return UsageError("--pieces takes X0,Y0:X1,Y1, not '" + piece + "'");
        }
        request.points.push_back(start);
        request.points.push_back(end);
    }
    return true;
}

bool ParseOptions(const ParsedArgs& args, DrawRequest& request) {
    request.tag = args.Value("tag").value_or("");
    request.frame = args.Value("frame").value_or("");
    request.slot = args.Value("slot").value_or("");
    request.location = args.Value("location");
    request.vertical = args.Has("vertical");
    request.symbol = args.Value("symbol").value_or("");
    request.drawing = args.Value("drawing").value_or("");
    request.png = args.Value("png").value_or("");
    request.saveFormat = args.Value("save-format").value_or("48");
    if (!args.Has("tag")) {
        return UsageError("--tag is required");
    }
    if (request.drawing.empty()) {
        return UsageError("--drawing FILE.dxf is required");
    }
    if (const auto format = args.Value("format");
        format &&
        (!ParseInt(*format, request.format) || request.format < 1 || request.format > 3)) {
        return UsageError("--format takes 1, 2 or 3, not '" + *format + "'");
    }
    if (const auto pattern = args.Value("pattern");
        pattern && (!ParseInt(*pattern, request.pattern) || request.pattern < kMenuAllFirst ||
                    request.pattern > kMenuHalfSecond)) {
        return UsageError("--pattern takes 101 to 106, not '" + *pattern + "'");
    }
    if (const auto list = args.Value("terminals");
        list && !ParseTerminals(*list, request.terminals)) {
        return UsageError("--terminals takes sequence numbers and ranges like 1-8,11, not '" +
                          *list + "'");
    }
    return ParsePlacement(args, request);
}

// Reads the drawing to add to, or makes a new one. Null after a reported error.
std::unique_ptr<cad::Database> OpenDrawing(const std::string& path) {
    if (!std::filesystem::exists(path)) {
        return std::make_unique<cad::Database>();
    }
    std::string error;
    auto db = cad::TryReadDxfFile(path, error);
    if (!db) {
        std::fprintf(stderr, "qvplc draw: cannot read the drawing %s: %s\n", path.c_str(),
                     error.c_str());
    }
    return db;
}

// The host variables of the drawing, as a CAD host has them for an open file.
void DescribeDrawing(CliHost& host, const std::string& path) {
    const std::filesystem::path file = std::filesystem::absolute(path);
    host.variables["DWGPREFIX"] = (file.parent_path() / "").string();
    host.variables["DWGNAME"] = file.filename().string();
    host.variables["DWGTITLED"] = std::to_string(std::filesystem::exists(file) ? 1 : 0);
}

// Takes a drawing format with its own terminal from the settings file, as choosing it on the
// settings sheet does.
void UseFormat(CDlgPlcRendal& dlg, int format) {
    const auto lines = drawsettings::ReadSettingLines();
    const auto terminals = drawsettings::LoadFormatTerminals(lines ? &*lines : nullptr);
    const drawsettings::FormatTerminal& terminal = terminals[format - 1];
    dlg.componentType = format;
    dlg.termSymbolName = terminal.name;
    dlg.termSymbolPath = drawsettings::SymbolPathFor(terminal.name);
    dlg.termDirection = terminal.direction;
    dlg.typeWidth = std::strtof(terminal.widthText.c_str(), nullptr);
    dlg.termLength = FixedTermLength(terminal.name, terminal.length);
}

// Fills the dialog from the request the way a user would. False after a reported error.
bool FillDialog(CDlgPlcRendal& dlg, const DrawRequest& request) {
    if (!dlg.SelectModulePath(request.manufacturer, request.series, request.type, request.code)) {
        std::fprintf(stderr, "qvplc draw: the library has no module %s/%s/%s/%s\n",
                     request.manufacturer.c_str(), request.series.c_str(), request.type.c_str(),
                     request.code.c_str());
        return false;
    }
    if (request.vertical) {
        dlg.OnVertical();
    }
    if (request.pattern != 0) {
        dlg.OnTermMenuCommand(request.pattern);
    }
    std::set<int> seen;
    for (int row = 0; row < dlg.termList.Count(); ++row) {
        int sequence = 0;
        ParseInt(dlg.termList.Text(row, kColSequence), sequence);
        const bool chosen = request.terminals.empty() || request.terminals.count(sequence) > 0;
        dlg.termList.SetStateImage(row, chosen ? kMarkOn : kMarkOff);
        seen.insert(sequence);
    }
    for (int wanted : request.terminals) {
        if (seen.count(wanted) == 0) {
            std::fprintf(stderr, "qvplc draw: module %s has no terminal with sequence %d\n",
                         request.code.c_str(), wanted);
            return false;
        }
    }
    if (request.format != 0) {
        UseFormat(dlg, request.format);
    }
    if (!request.symbol.empty()) {
        dlg.termSymbolName = request.symbol;
        dlg.termSymbolPath = suite::PathJoin(suite::GetZandrixCommonResInstallPath(),
                                             "SYMB2LIB/" + request.symbol + ".dxf");
    }
    dlg.editTag = request.tag;
    dlg.editFrameNo = request.frame;
    dlg.editSlotNo = request.slot;
    if (request.location) {
        dlg.editLocation = *request.location;
    }
    return true;
}

bool SaveDrawing(const cad::Database& db, const DrawRequest& request) {
    const cad::DxfVersion version = cad::VersionForSaveFormat(request.saveFormat);
    try {
        cad::WriteDxfFile(db, request.drawing, version);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "qvplc draw: cannot write %s: %s\n", request.drawing.c_str(),
                     e.what());
        return false;
    }
    if (const std::string note = cad::VersionChange(db, version); !note.empty()) {
        std::fprintf(stderr, "qvplc draw: %s: %s\n", request.drawing.c_str(), note.c_str());
    }
    if (!request.png.empty()) {
        std::string error;
        if (!cad::render::RenderToFile(db, request.png, {}, error)) {
            std::fprintf(stderr, "qvplc draw: cannot render %s: %s\n", request.png.c_str(),
                         error.c_str());
            return false;
        }
    }
    return true;
}

// Loads the plug-in, draws through the dialog and the queued command; the exit code.
int DrawThroughDialog(const DrawRequest& request, CliHost& host, cad::Database& db) {
    app::CPlcRendalApp plugin;
    plugin.EntryPoint(app::AppMessage::InitApplication);
    host.database = &db;
    host.SetEnvironment("DefaultFormatForSave", request.saveFormat);
    app::CPlcRendalMain().RunRendal();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    int exitCode = kExitFailure;
    if (dlg != nullptr && FillDialog(*dlg, request)) {
        host.points.assign(request.points.begin(), request.points.end());
        request.divided ? dlg->OnDrawDivided() : dlg->OnDrawFull();
        if (dlg->drawPending) {
            host.RunPendingCommands();
            exitCode = dlg->drawFinished ? kExitOk : kExitFailure;
        }
    }
    if (host.declined) {
        std::fprintf(stderr,
                     "qvplc draw: the drawing asked for more points than the options "
                     "give; nothing was written\n");
        exitCode = kExitCancelled;
    }
    plugin.EntryPoint(app::AppMessage::UnloadApplication);
    host.database = nullptr;
    return exitCode;
}

}  // namespace

int RunDraw(const Arguments& args, CliHost& host) {
    const auto parsed = Parse(kDrawSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::fputs(HelpText(kDrawSpec).c_str(), stdout);
        return kExitOk;
    }
    DrawRequest request;
    if (parsed->positional.size() != 1) {
        UsageError("name exactly one module: MANUFACTURER/SERIES/TYPE/CODE");
        return kExitUsage;
    }
    if (!SplitModule(parsed->positional[0], request) || !ParseOptions(*parsed, request)) {
        return kExitUsage;
    }
    auto db = OpenDrawing(request.drawing);
    if (!db) {
        return kExitBadInput;
    }
    DescribeDrawing(host, request.drawing);
    const int exitCode = DrawThroughDialog(request, host, *db);
    if (exitCode != kExitOk) {
        return exitCode;
    }
    return SaveDrawing(*db, request) ? kExitOk : kExitFailure;
}

}  // namespace cli
