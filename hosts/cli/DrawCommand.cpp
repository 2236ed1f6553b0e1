// qvplc draw: draws one module of the component library into a DXF drawing. It goes the way
// a user goes in the CAD host: the plug-in is loaded, PLCRENDAL opens the drawing dialog,
// the module is selected in the dialog's tree, the edits are filled, a draw button is pressed,
// and the host then runs the queued RENDALFULL or DIVRENDAL with the points of the options.
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdarg>
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
#include "FileErrors.h"
#include "LibraryCheck.h"
#include "NetStep.h"
#include "app/PlcRendalApp.h"
#include "app/PlcRendalMain.h"
#include "cad/Dxf.h"
#include "cad/Limits.h"
#include "cad/render/Render.h"
#include "draw/DlgPlcRendal.h"
#include "draw/ModuleParts.h"
#include "draw/settings/SettingRanges.h"
#include "draw/settings/SettingsFile.h"
#include "files/AtomicFile.h"
#include "files/UpdateLock.h"
#include "host/SuiteServices.h"
#include "plclib/PlcLib.h"

namespace cli {

namespace {

const CommandSpec kDrawSpec{
    "qvplc draw MANUFACTURER/SERIES/TYPE/CODE --tag TAG (--at X,Y | --pieces X0,Y0:X1,Y1 "
    "[--pieces X0,Y0:X1,Y1]...) --drawing FILE.dxf",
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
     {"terminals", "LIST",
      "the terminals to draw by 端点序号, e.g. 1-8,11 (default: all); every number and range "
      "must lie within the module's terminals"},
     {"pattern", "ID", "direction pattern 101..106 of the terminal list's menu"},
     {"at", "X,Y", "draw the whole module with its origin at X,Y"},
     {"pieces", "X0,Y0:X1,Y1",
      "one piece from X0,Y0 to X1,Y1; repeat the option for each further piece", true},
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
    "Coordinates are finite numbers at most 1e100 from zero. A piece must be longer than\n"
    "twice the terminal spacing plus 5 along the module's axis (X, or down -Y when vertical);\n"
    "a piece of length L holds (L - spacing) / spacing terminals per side. When the module\n"
    "needs more pieces than given, nothing is written, the message says how many more, and\n"
    "the exit code is 4.\n"};

struct DrawRequest {
    std::string manufacturer, series, type, code;
    std::string tag, frame, slot;
    std::optional<std::string> location;
    bool vertical = false;
    int format = 0;
    std::string symbol;
    std::vector<std::pair<int, int>> terminals;  // ranges of sequence numbers; empty = all
    std::string terminalsText;
    int pattern = 0;
    bool divided = false;
    std::vector<cad::Point3d> points;     // in the order the drawing asks for them
    std::vector<std::string> piecesText;  // each --pieces as given
    std::string drawing, png;
    std::string saveFormat = "48";
};

bool UsageError(const std::string& message) {
    std::fprintf(stderr, "qvplc draw: %s\nTry 'qvplc draw --help' for more.\n", message.c_str());
    return false;
}

// A usage error from one message text with printf fields.
[[gnu::format(printf, 1, 2)]] bool UsageErrorF(const char* format, ...) {
    char message[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(message, sizeof message, format, args);
    va_end(args);
    return UsageError(message);
}

// A whole text as one number (strtod's forms, "inf", "nan" and overflowing ones included, so
// that they can be refused by range rather than by form).
bool ParseNumber(std::string text, double& value) {
    const auto first = text.find_first_not_of(" \t");
    const auto last = text.find_last_not_of(" \t");
    text = first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
    const char* begin = text.c_str();
    char* end = nullptr;
    value = std::strtod(begin, &end);
    return !text.empty() && end == begin + text.size();
}

// X,Y with both numbers in the drawing's coordinate range; `outOfRange` tells a point of
// numbers outside it from text that is no point.
bool ParsePoint(const std::string& text, cad::Point3d& point, bool& outOfRange) {
    outOfRange = false;
    const auto comma = text.find(',');
    double x = 0, y = 0;
    if (comma == std::string::npos || !ParseNumber(text.substr(0, comma), x) ||
        !ParseNumber(text.substr(comma + 1), y)) {
        return false;
    }
    if (!cad::InCoordinateRange(x) || !cad::InCoordinateRange(y)) {
        outOfRange = true;
        return false;
    }
    point = cad::Point3d{x, y, 0};
    return true;
}

bool ParseInt(const std::string& text, int& value) {
    char* end = nullptr;
    errno = 0;
    const long parsed = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE || parsed < INT_MIN || parsed > INT_MAX) {
        return false;
    }
    value = static_cast<int>(parsed);
    return true;
}

// "1-8,11" -> ranges {1, 8}, {11, 11}; kept as ranges so that a huge range costs nothing.
bool ParseTerminals(const std::string& text, std::vector<std::pair<int, int>>& terminals) {
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
        terminals.emplace_back(first, last);
    }
    return !terminals.empty();
}

bool Chosen(const std::vector<std::pair<int, int>>& ranges, int sequence) {
    for (const auto& [first, last] : ranges) {
        if (sequence >= first && sequence <= last) {
            return true;
        }
    }
    return false;
}

// The first number of a range that names no terminal of the module, if any. Linear in the
// module's rows whatever the range's size.
std::optional<long long> FirstMissing(const std::set<int>& sequences, int first, int last) {
    long long expected = first;
    for (auto it = sequences.lower_bound(first); it != sequences.end() && *it <= last; ++it) {
        if (*it != expected) {
            return expected;
        }
        ++expected;
    }
    return expected <= last ? std::optional<long long>(expected) : std::nullopt;
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
        bool outOfRange = false;
        if (!ParsePoint(*at, point, outOfRange)) {
            if (outOfRange) {
                return UsageErrorF(
                    "--at %s: coordinates must be finite and at most 1e100 from zero", at->c_str());
            }
            return UsageError("--at takes X,Y, not '" + *at + "'");
        }
        request.points.push_back(point);
        return true;
    }
    request.divided = true;
    for (const std::string& piece : args.Values("pieces")) {
        const auto colon = piece.find(':');
        cad::Point3d start, end;
        bool startOut = false, endOut = false;
        if (colon == std::string::npos || !ParsePoint(piece.substr(0, colon), start, startOut) ||
            !ParsePoint(piece.substr(colon + 1), end, endOut)) {
            if (startOut || endOut) {
                return UsageErrorF(
                    "--pieces %s: coordinates must be finite and at most 1e100 from zero",
                    piece.c_str());
            }
            return UsageError("--pieces takes X0,Y0:X1,Y1, not '" + piece + "'");
        }
        request.points.push_back(start);
        request.points.push_back(end);
        request.piecesText.push_back(piece);
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
    if (const std::set<std::string> formats = {"8", "12", "24", "36", "48"};
        !formats.count(request.saveFormat)) {
        return UsageErrorF("--save-format takes 8, 12, 24, 36 or 48, not '%s'",
                           request.saveFormat.c_str());
    }
    if (args.Has("symbol") && !drawsettings::IsPlainSymbolName(request.symbol)) {
        return UsageErrorF("--symbol takes the name of a symbol in SYMB2LIB, without '/', not '%s'",
                           request.symbol.c_str());
    }
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
    if (const auto list = args.Value("terminals"); list) {
        request.terminalsText = *list;
        if (!ParseTerminals(*list, request.terminals)) {
            return UsageError("--terminals takes sequence numbers and ranges like 1-8,11, not '" +
                              *list + "'");
        }
    }
    return ParsePlacement(args, request);
}

// Reads the drawing to add to, or makes a new one. Null after a reported error.
std::unique_ptr<cad::Database> OpenDrawing(const std::string& path) {
    if (!files::Identify(path).exists) {
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
    std::error_code ec;
    const std::filesystem::path file = std::filesystem::absolute(path, ec);
    host.variables["DWGPREFIX"] = (file.parent_path() / "").string();
    host.variables["DWGNAME"] = file.filename().string();
    host.variables["DWGTITLED"] = std::to_string(std::filesystem::exists(file, ec) ? 1 : 0);
}

// Takes a drawing format with its own terminal from the settings file, as choosing it on the
// settings sheet does.
void UseFormat(CDlgPlcRendal& dlg, int format) {
    const auto lines = drawsettings::ReadSettingLines();
    const auto terminals = drawsettings::LoadFormatTerminals(lines ? &*lines : nullptr);
    drawsettings::FormatTerminal terminal = terminals[format - 1];
    drawsettings::CheckFormatTerminal(terminal, format);
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
        const bool chosen = request.terminals.empty() || Chosen(request.terminals, sequence);
        dlg.termList.SetStateImage(row, chosen ? kMarkOn : kMarkOff);
        seen.insert(sequence);
    }
    // A number or range naming a terminal the module does not have is refused, so that a
    // typing slip never draws a module short of what was asked.
    for (const auto& [first, last] : request.terminals) {
        if (const auto missing = FirstMissing(seen, first, last)) {
            const int lowest = seen.empty() ? 0 : *seen.begin();
            const int highest = seen.empty() ? 0 : *seen.rbegin();
            std::fprintf(stderr,
                         "qvplc draw: --terminals %s: module %s has no terminal with sequence "
                         "%lld (its terminals are numbered %d to %d)\n",
                         request.terminalsText.c_str(), request.code.c_str(), *missing, lowest,
                         highest);
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

// `before` is the drawing as it was read: the save is refused when it changed meanwhile.
bool SaveDrawing(const cad::Database& db, const DrawRequest& request,
                 const files::Identity& before) {
    const cad::DxfVersion version = cad::VersionForSaveFormat(request.saveFormat);
    files::WriteOptions options;
    options.expected = before;
    try {
        cad::WriteDxfFile(db, request.drawing, version, options);
    } catch (const files::FileError&) {
        throw;
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

// A piece's length along the module's axis: X, or down -Y on a vertical module.
double PieceLength(const CDlgPlcRendal& dlg, const cad::Point3d& start, const cad::Point3d& end) {
    return dlg.orientation != 0 ? start.y - end.y : end.x - start.x;
}

// Terminal places per side in a piece of `length`, as the divided drawing counts them.
long long PiecePlaces(double length, double spacing) {
    const double k = std::floor((length - spacing) / spacing);
    return k < 1 ? 0 : static_cast<long long>(std::min(k, 1e15));
}

// Every piece must be long enough to hold a terminal; the drawing would ask for another end
// point otherwise. False after a usage error naming the piece.
bool CheckPieceLengths(const CDlgPlcRendal& dlg, const DrawRequest& request) {
    const double p = dlg.termSpacing, minimum = 2.0 * p + 5.0;
    for (std::size_t i = 0; i + 1 < request.points.size(); i += 2) {
        const double length = PieceLength(dlg, request.points[i], request.points[i + 1]);
        if (!(length > minimum)) {
            const std::string piece = request.piecesText[i / 2];
            return UsageErrorF(
                "--pieces %s: piece %zu is %g long along the module's axis (%s); it must be "
                "longer than %g, twice the terminal spacing %g plus 5",
                piece.c_str(), i / 2 + 1, length, dlg.orientation != 0 ? "down -Y" : "along X",
                minimum, p);
        }
    }
    return true;
}

// Says how many pieces the module needs when the given ones ran out before its terminals.
void ReportMissingPieces(const CDlgPlcRendal& dlg, const DrawRequest& request) {
    const draw::TermLists lists = draw::CollectDividedTerminals(dlg.CurrentChoice());
    const long long longest =
        static_cast<long long>(std::max(lists.first.size(), lists.second.size()));
    const std::size_t given = request.points.size() / 2;
    long long held = 0, last = 0;
    for (std::size_t i = 0; i + 1 < request.points.size(); i += 2) {
        last = PiecePlaces(PieceLength(dlg, request.points[i], request.points[i + 1]),
                           dlg.termSpacing);
        held += last;
    }
    const long long remaining = std::max(longest - held, 1LL);
    const long long more = last > 0 ? (remaining + last - 1) / last : 1;
    std::fprintf(
        stderr,
        "qvplc draw: module %s has %lld terminals on its longer side and the "
        "pieces given (%zu) hold %lld; pieces as long as the last one hold %lld each, so it "
        "needs %lld more, %lld in all. Give one --pieces option per piece: --pieces "
        "X0,Y0:X1,Y1 --pieces X0,Y0:X1,Y1 ...; nothing was written\n",
        request.code.c_str(), longest, given, held, last, more,
        static_cast<long long>(given) + more);
}

// The files the command reads besides the drawing: the library, the settings and the
// symbols it may draw with (the one named, or those of the formats in the settings).
std::vector<std::string> OtherInputs(const DrawRequest& request) {
    std::vector<std::string> inputs = {
        suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath),
        PlcDrawSettingFilePath()};
    const auto lines = drawsettings::ReadSettingLines();
    for (const auto& terminal : drawsettings::LoadFormatTerminals(lines ? &*lines : nullptr)) {
        inputs.push_back(drawsettings::SymbolPathFor(terminal.name));
    }
    if (!request.symbol.empty()) {
        inputs.push_back(suite::PathJoin(suite::GetZandrixCommonResInstallPath(),
                                         "SYMB2LIB/" + request.symbol + ".dxf"));
    }
    return inputs;
}

// Refuses, before anything is drawn or written, outputs that are inputs too or that cannot
// be written. FileError says which and why.
void CheckOutputs(const DrawRequest& request) {
    const auto inputs = OtherInputs(request);
    files::RefuseNonRegular(request.drawing);
    for (const std::string& input : inputs) {
        files::RefuseSameFile(request.drawing, input);
    }
    files::CheckWritable(request.drawing);
    if (request.png.empty()) {
        return;
    }
    files::RefuseSameFile(request.png, request.drawing);
    for (const std::string& input : inputs) {
        files::RefuseSameFile(request.png, input);
    }
    files::CheckWritable(request.png);
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
    if (dlg == nullptr) {
        if (const int code = ExplainLibraryTrouble(app::LibraryPath()); code != kExitOk) {
            exitCode = code;
        }
    } else if (FillDialog(*dlg, request)) {
        if (request.divided && !CheckPieceLengths(*dlg, request)) {
            plugin.EntryPoint(app::AppMessage::UnloadApplication);
            host.database = nullptr;
            return kExitUsage;
        }
        host.points.assign(request.points.begin(), request.points.end());
        request.divided ? dlg->OnDrawDivided() : dlg->OnDrawFull();
        if (dlg->drawPending) {
            host.RunPendingCommands();
            exitCode = dlg->drawFinished ? kExitOk : kExitFailure;
        }
    }
    if (host.declined) {
        if (request.divided && dlg != nullptr) {
            ReportMissingPieces(*dlg, request);
        } else {
            std::fprintf(stderr,
                         "qvplc draw: the drawing asked for more points than the options "
                         "give; nothing was written\n");
        }
        exitCode = kExitCancelled;
    }
    plugin.EntryPoint(app::AppMessage::UnloadApplication);
    host.database = nullptr;
    return exitCode;
}

// Reads, draws and writes under the drawing's update lock, so that two draws into one file
// never lose a module; the exit code. FileError for a file that cannot be used.
int DrawAndSave(const DrawRequest& request, CliHost& host) {
    CheckOutputs(request);
    const files::UpdateLock lock(request.drawing);
    const files::Identity before = files::Identify(request.drawing);
    auto db = OpenDrawing(request.drawing);
    if (!db) {
        return kExitBadInput;
    }
    DescribeDrawing(host, request.drawing);
    const int exitCode = DrawThroughDialog(request, host, *db);
    if (exitCode != kExitOk) {
        return exitCode;
    }
    return SaveDrawing(*db, request, before) ? kExitOk : kExitCannotWrite;
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
        for (std::size_t i = 1; i < parsed->positional.size(); ++i) {
            if (parsed->positional[i].find(':') != std::string::npos) {
                UsageErrorF(
                    "'%s' looks like a piece: each piece takes its own option, "
                    "--pieces X0,Y0:X1,Y1 --pieces X0,Y0:X1,Y1 ...",
                    parsed->positional[i].c_str());
                return kExitUsage;
            }
        }
        UsageError("name exactly one module: MANUFACTURER/SERIES/TYPE/CODE");
        return kExitUsage;
    }
    if (!SplitModule(parsed->positional[0], request) || !ParseOptions(*parsed, request)) {
        return kExitUsage;
    }
    RunDrawingNetworkStep();
    try {
        return DrawAndSave(request, host);
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc draw", e);
    }
}

}  // namespace cli
