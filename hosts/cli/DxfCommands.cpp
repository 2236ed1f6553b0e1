// qvplc dxf: information about a DXF drawing, conversion between versions, and pictures.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "Args.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "FileErrors.h"
#include "cad/Dxf.h"
#include "cad/Expansion.h"
#include "cad/render/Render.h"
#include "files/AtomicFile.h"

namespace cli {

namespace {

const CommandSpec kInfoSpec{
    "qvplc dxf info IN.dxf",
    "Prints what a DXF drawing holds: its version and code page, the entities of the model\n"
    "space counted by kind, the layers, the blocks with their entity counts, and the\n"
    "applications whose extended data the entities carry.",
    {},
    "Example:\n  qvplc dxf info share/zandrix/SYMB2LIB/SYMB2_S_KTR5.dxf"};

const CommandSpec kConvertSpec{
    "qvplc dxf convert IN.dxf OUT.dxf --version R14|2000|2004|2007|2010",
    "Reads a DXF drawing and writes it again in another version. Everything the drawing\n"
    "holds is kept, also entities and objects this program does not draw itself. Texts are\n"
    "written as the version requires: UTF-8 from 2007 on, the drawing's code page before.",
    {{"version", "V", "the version to write: R14, 2000, 2004, 2007 or 2010"}},
    "Before R2000 application names may not hold blanks: an R14 file gets '_' in their\n"
    "place.\n\nExample:\n  qvplc dxf convert PlcDraw.dxf PlcDraw-r14.dxf --version R14"};

const CommandSpec kRenderSpec{
    "qvplc dxf render IN.dxf OUT.png|OUT.svg [--width PX] [--block NAME]",
    "Draws the model space of a DXF drawing, or one block of it, into a PNG or SVG picture\n"
    "that shows all of it. Chinese texts are drawn with a CJK font (WenQuanYi Micro Hei).\n"
    "Invisible entities and entities on layers that are off or frozen are left out.",
    {{"width", "PX", "width of the picture in pixels (16 to 20000; default 1200)"},
     {"block", "NAME", "draw the definition of block NAME instead of the model space"},
     {"dark", "", "draw on a black background (default: white)"}},
    "Examples:\n"
    "  qvplc dxf render Temp/PlcDraw.dxf module.png --width 1600\n"
    "  qvplc dxf render drawing.dxf symbol.svg --block SYMB2_S_KTR5"};

const char* kGroupHelp =
    "usage: qvplc dxf <command> [options]\n\n"
    "Commands:\n"
    "  info     what a drawing holds: version, code page, entities, layers, blocks\n"
    "  convert  write a drawing in another DXF version\n"
    "  render   draw a drawing or one of its blocks into a PNG or SVG picture\n\n"
    "Every command takes --help.\n";

// Reads the drawing; on failure reports it with file and line and returns null.
std::unique_ptr<cad::Database> Load(const std::string& path) {
    try {
        return cad::ReadDxfFile(path);
    } catch (const cad::DxfError& e) {
        if (e.Line() > 0) {
            std::fprintf(stderr, "qvplc dxf: %s:%ld: %s\n", e.File().c_str(), e.Line(),
                         e.Problem().c_str());
        } else {
            std::fprintf(stderr, "qvplc dxf: %s: %s\n", e.File().c_str(), e.Problem().c_str());
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "qvplc dxf: %s: %s\n", path.c_str(), e.what());
    }
    return nullptr;
}

std::optional<ParsedArgs> ParseWithHelp(const CommandSpec& command, const Arguments& args,
                                        size_t positionals, int& exitCode) {
    auto parsed = Parse(command, args);
    if (!parsed) {
        exitCode = kExitUsage;
        return std::nullopt;
    }
    if (parsed->help) {
        std::fputs(HelpText(command).c_str(), stdout);
        exitCode = kExitOk;
        return std::nullopt;
    }
    if (parsed->positional.size() != positionals) {
        std::fprintf(stderr, "qvplc dxf: expected %zu file name(s)\nusage: %s\n", positionals,
                     command.usage.c_str());
        exitCode = kExitUsage;
        return std::nullopt;
    }
    return parsed;
}

std::string Join(const std::set<std::string>& names) {
    std::string out;
    for (const auto& n : names) {
        out += (out.empty() ? "" : ", ") + n;
    }
    return out.empty() ? "(none)" : out;
}

void PrintInfo(const cad::Database& db, const std::string& path) {
    std::printf("file: %s\n", path.c_str());
    std::printf("version: %s\n", db.HeaderString("$ACADVER").c_str());
    const std::string codePage = db.HeaderString("$DWGCODEPAGE");
    std::printf("code page: %s\n", codePage.empty() ? "(not given)" : codePage.c_str());
    std::map<std::string, int> kinds;
    const auto modelEntities = db.Entities(db.ModelSpace());
    for (const cad::Entity* e : modelEntities) {
        ++kinds[e->TypeName()];
    }
    std::printf("model space: %zu entities\n", modelEntities.size());
    for (const auto& [kind, count] : kinds) {
        std::printf("  %-12s %d\n", kind.c_str(), count);
    }
    std::set<std::string> layers;
    std::map<std::string, size_t> blocks;
    std::map<std::string, int> apps;
    db.ForEachObject([&](const cad::DbObject& object) {
        if (object.erased) {
            return;
        }
        if (const auto* layer = dynamic_cast<const cad::LayerRecord*>(&object)) {
            layers.insert(layer->name + (layer->color < 0 ? " (off)" : ""));
        } else if (const auto* block = dynamic_cast<const cad::BlockRecord*>(&object)) {
            if (!block->IsLayout()) {
                blocks[block->name] = db.Entities(block->handle).size();
            }
        } else if (const auto* entity = dynamic_cast<const cad::Entity*>(&object)) {
            for (const auto& group : entity->xdata) {
                ++apps[db.AppName(group.app)];
            }
        }
    });
    std::printf("layers: %s\n", Join(layers).c_str());
    std::printf("blocks: %zu\n", blocks.size());
    for (const auto& [name, count] : blocks) {
        std::printf("  %s (%zu %s)\n", name.c_str(), count, count == 1 ? "entity" : "entities");
    }
    std::printf("extended data: %zu applications\n", apps.size());
    for (const auto& [name, count] : apps) {
        std::printf("  %s on %d %s\n", name.c_str(), count, count == 1 ? "entity" : "entities");
    }
    std::printf("repairs made while reading: %zu\n", db.Repairs().size());
    for (const auto& repair : db.Repairs()) {
        std::printf("  %s\n", repair.c_str());
    }
}

int RunInfo(const Arguments& args) {
    int exitCode = kExitOk;
    const auto parsed = ParseWithHelp(kInfoSpec, args, 1, exitCode);
    if (!parsed) {
        return exitCode;
    }
    const auto db = Load(parsed->positional[0]);
    if (!db) {
        return kExitBadInput;
    }
    PrintInfo(*db, parsed->positional[0]);
    return kExitOk;
}

std::optional<cad::DxfVersion> ParseVersion(std::string text) {
    if (!text.empty() && (text[0] == 'R' || text[0] == 'r')) {
        text = text.substr(1);
    }
    static const std::map<std::string, cad::DxfVersion> versions = {
        {"14", cad::DxfVersion::R14},
        {"2000", cad::DxfVersion::R2000},
        {"2004", cad::DxfVersion::R2004},
        {"2007", cad::DxfVersion::R2007},
        {"2010", cad::DxfVersion::R2010}};
    const auto it = versions.find(text);
    return it == versions.end() ? std::nullopt : std::optional(it->second);
}

int RunConvert(const Arguments& args) {
    int exitCode = kExitOk;
    const auto parsed = ParseWithHelp(kConvertSpec, args, 2, exitCode);
    if (!parsed) {
        return exitCode;
    }
    const auto versionText = parsed->Value("version");
    const auto version = versionText ? ParseVersion(*versionText) : std::nullopt;
    if (!version) {
        std::fprintf(stderr, "qvplc dxf: --version must be R14, 2000, 2004, 2007 or 2010%s\n",
                     versionText ? (", not '" + *versionText + "'").c_str() : "");
        return kExitUsage;
    }
    try {
        files::RefuseSameFile(parsed->positional[1], parsed->positional[0]);
        files::CheckWritable(parsed->positional[1]);
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc dxf convert", e);
    }
    const auto db = Load(parsed->positional[0]);
    if (!db) {
        return kExitBadInput;
    }
    try {
        cad::WriteDxfFile(*db, parsed->positional[1], *version);
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc dxf convert", e);
    } catch (const cad::DxfError& e) {
        // The drawing read cannot be written as it is (its audit names what): bad input.
        std::fprintf(stderr, "qvplc dxf: %s\n", e.what());
        return kExitBadInput;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "qvplc dxf: %s: %s\n", parsed->positional[1].c_str(), e.what());
        return kExitCannotWrite;
    }
    return kExitOk;
}

int RunRender(const Arguments& args) {
    int exitCode = kExitOk;
    const auto parsed = ParseWithHelp(kRenderSpec, args, 2, exitCode);
    if (!parsed) {
        return exitCode;
    }
    cad::render::RenderOptions options;
    if (const auto width = parsed->Value("width")) {
        char* end = nullptr;
        const long px = std::strtol(width->c_str(), &end, 10);
        if (width->empty() || *end != '\0' || px < 16 || px > 20000) {
            std::fprintf(stderr,
                         "qvplc dxf: --width must be a whole number of pixels from 16 to "
                         "20000, not '%s'\n",
                         width->c_str());
            return kExitUsage;
        }
        options.picture.widthPx = static_cast<int>(px);
    }
    cad::render::PictureFormat format;
    if (!cad::render::FormatFromPath(parsed->positional[1], format)) {
        std::fprintf(stderr, "qvplc dxf: '%s': the picture must be named .png or .svg\n",
                     parsed->positional[1].c_str());
        return kExitUsage;
    }
    options.block = parsed->Value("block").value_or("");
    if (parsed->Has("dark")) {
        options.picture.background = {0, 0, 0};
    }
    try {
        files::RefuseSameFile(parsed->positional[1], parsed->positional[0]);
        files::CheckWritable(parsed->positional[1]);
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc dxf render", e);
    }
    const auto db = Load(parsed->positional[0]);
    if (!db) {
        return kExitBadInput;
    }
    if (!options.block.empty() && db->FindBlock(options.block) == cad::kNullHandle) {
        std::fprintf(stderr, "qvplc dxf: %s: the drawing has no block named '%s'\n",
                     parsed->positional[0].c_str(), options.block.c_str());
        return kExitUsage;
    }
    std::string error;
    // A drawing whose blocks contain themselves, or expand past any bound, is malformed input.
    const cad::Handle space =
        options.block.empty() ? db->ModelSpace() : db->FindBlock(options.block);
    if (!cad::CheckExpansion(*db, space, error)) {
        std::fprintf(stderr, "qvplc dxf: %s: %s\n", parsed->positional[0].c_str(), error.c_str());
        return kExitBadInput;
    }
    cad::render::WalkCounts counts;
    if (!cad::render::RenderToFile(*db, parsed->positional[1], options, error, &counts)) {
        std::fprintf(stderr, "qvplc dxf: %s\n", error.c_str());
        return kExitFailure;
    }
    std::printf(
        "%s: %d entities drawn, %d left out (hidden, on layers that are off, or of "
        "kinds not drawn)\n",
        parsed->positional[1].c_str(), counts.drawn, counts.skipped);
    return kExitOk;
}

}  // namespace

int RunDxf(const Arguments& args, CliHost&) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h") {
        std::fputs(kGroupHelp, args.empty() ? stderr : stdout);
        return args.empty() ? kExitUsage : kExitOk;
    }
    const Arguments rest(args.begin() + 1, args.end());
    if (args[0] == "info") {
        return RunInfo(rest);
    }
    if (args[0] == "convert") {
        return RunConvert(rest);
    }
    if (args[0] == "render") {
        return RunRender(rest);
    }
    std::fprintf(stderr, "qvplc dxf: unknown command 'dxf %s'\n\n%s", args[0].c_str(), kGroupHelp);
    return kExitUsage;
}

}  // namespace cli
