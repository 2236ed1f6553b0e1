// qvplc lib: the component library on the command line. `tree` and `show` read it the way the
// dialogs do; `migrate` converts a Windows library (Access file) into this system's; `init`
// makes a new one where the program looks for it. The editing commands (LibEditCommands.h)
// change it through the library editor.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "Args.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "FileErrors.h"
#include "LibEditCommands.h"
#include "LibraryCheck.h"
#include "NetStep.h"
#include "dialog/LibraryTree.h"
#include "files/AtomicFile.h"
#include "host/SuiteServices.h"
#include "plclib/LibrarySql.h"
#include "plclib/Migrate.h"
#include "plclib/PlcLib.h"

namespace cli {
namespace {

OptionSpec LibraryOption() {
    return {"library", "FILE",
            "the library to read (default: PLC/QvPLC.db in the local installation folder)"};
}

const CommandSpec kTreeSpec{
    "qvplc lib tree [--library FILE]",
    "Prints the component library as the tree of the drawing dialog and the library editor:\n"
    "manufacturers in the order they first appear, then their series, types and module\n"
    "codes, one level of indent each. A manufacturer, series or type without children is\n"
    "printed alone.",
    {LibraryOption()},
    "Example:\n  qvplc lib tree --library ./QvPLC.db"};

const CommandSpec kShowSpec{
    "qvplc lib show MANUFACTURER/SERIES/TYPE/CODE [--library FILE]",
    "Prints one module: its parameters, then its terminal rows (sequence, terminal number,\n"
    "description, detailed description) separated by tabs, in the library's order. The\n"
    "names are matched as stored (case counts); the code is everything after the third '/'.",
    {LibraryOption()},
    "Example:\n  qvplc lib show 'Norvik Controls/NX 10/Digital input/NX1-DI16'"};

const CommandSpec kMigrateSpec{
    "qvplc lib migrate OLD.mdb [--force] [--library FILE]",
    "Converts a component library of the Windows suite (an Access .mdb or .accdb file with\n"
    "PLC_MANUFACTURER, MANUFACTURER_Simple and the module tables) into PLC/QvPLC.db of the\n"
    "local installation folder. An existing library is kept unless --force is given. The new\n"
    "library is written under a temporary name and renamed when complete. Every row that\n"
    "cannot be converted (a value with a single quote, a text longer than its column, a\n"
    "sequence that is no number, a duplicate key) is listed on standard error.",
    {{"force", "", "replace an existing library"},
     {"library", "FILE", "write this library instead of the one in the local folder"}},
    "Example:\n  qvplc lib migrate /mnt/win/Zandrix/PLC/QvPLC.mdb --force"};

const CommandSpec kInitSpec{
    "qvplc lib init [--sample] [--library FILE]",
    "Makes a new component library where the program looks for one: PLC/QvPLC.db in the\n"
    "local installation folder (both folders are made when missing). Without --sample the\n"
    "library is empty: it holds the two tables every library has (PLC_MANUFACTURER and\n"
    "MANUFACTURER_Simple). With --sample it holds the bundled sample library\n"
    "(sample/QvPLC.sql of the common resource folder). An existing library is never\n"
    "replaced; the new one is built under a temporary name and put in place when complete.",
    {{"sample", "", "fill the new library with the bundled sample library"},
     {"library", "FILE", "make this file instead (its folder must exist)"}},
    "Examples:\n  qvplc lib init --sample\n  qvplc lib init --library ./empty.db"};

std::string LibraryPath(const ParsedArgs& args) {
    if (auto path = args.Value("library")) {
        return *path;
    }
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath);
}

// Opens and loads the library; the exit code on failure (the reason was reported).
int Load(const ParsedArgs& args, CPlcLib& lib) {
    const std::string path = LibraryPath(args);
    if (!lib.Open(path)) {
        const int code = ExplainLibraryTrouble(path);
        return code != kExitOk ? code : kExitBadInput;
    }
    if (!lib.LoadLibrary()) {
        if (const int code = ExplainLibraryTrouble(path); code != kExitOk) {
            return code;
        }
        std::fprintf(stderr, "qvplc lib: the library %s holds no manufacturer\n", path.c_str());
        return kExitFailure;
    }
    return kExitOk;
}

void PrintLevel(const dialog::TreeNode& node, int depth) {
    std::printf("%*s%s\n", depth * 2, "", node.text.c_str());
    for (const auto& child : node.children) {
        PrintLevel(*child, depth + 1);
    }
}

int RunTree(const ParsedArgs& args) {
    if (!args.Has("library")) {
        RunDrawingNetworkStep();
    }
    CPlcLib lib;
    if (int code = Load(args, lib); code != kExitOk) {
        return code;
    }
    dialog::TreeModel tree;
    dialog::FillLibraryTree(tree, lib.Entries());
    dialog::FillAllModules(tree, lib.Entries());
    PrintLevel(*tree.Root(), 0);
    return kExitOk;
}

int RunShow(const ParsedArgs& args) {
    const std::string& key = args.positional[0];
    std::vector<std::string> parts;
    size_t start = 0;
    for (int i = 0; i < 3; ++i) {
        const size_t slash = key.find('/', start);
        if (slash == std::string::npos) {
            std::fprintf(stderr, "qvplc lib: '%s' is not MANUFACTURER/SERIES/TYPE/CODE\n",
                         key.c_str());
            return kExitUsage;
        }
        parts.push_back(key.substr(start, slash - start));
        start = slash + 1;
    }
    parts.push_back(key.substr(start));
    CPlcLib lib;
    if (int code = Load(args, lib); code != kExitOk) {
        return code;
    }
    auto* found = plcdb::FindModule(lib.Entries(), parts[0], parts[1], parts[2], parts[3]);
    if (!found) {
        std::fprintf(stderr, "qvplc lib: the library %s has no module %s\n", lib.Path().c_str(),
                     key.c_str());
        return kExitFailure;
    }
    auto entry = found->Clone();
    if (!lib.LoadTerminals(parts[0], parts[1], parts[2], parts[3], *entry)) {
        return kExitFailure;
    }
    const std::string shortName = lib.GetShortName(entry->manufacturer);
    std::printf("厂家: %s%s\n系列: %s\n系列类型: %s\n", entry->manufacturer.c_str(),
                shortName.empty() ? "" : (" (" + shortName + ")").c_str(), entry->series.c_str(),
                entry->type.c_str());
    std::printf("模块代号: %s\n通道数: %s\n类型: %s\n描述: %s\n额定值: %s\n\n", entry->code.c_str(),
                entry->points.c_str(), entry->moduleType.c_str(), entry->description.c_str(),
                entry->rating.c_str());
    std::printf("端点序号\t端号\t端点描述\t端点详细描述\n");
    for (const auto& row : entry->terminals) {
        std::printf("%s\t%s\t%s\t%s\n", row->sequence.c_str(), row->termValue.c_str(),
                    row->termDesc.c_str(), row->detailTermDesc.c_str());
    }
    return kExitOk;
}

void DrawProgress(size_t done, size_t total) {
    constexpr size_t kWidth = 30;
    const size_t filled = total ? done * kWidth / total : kWidth;
    std::fprintf(stderr, "\r[%s%s] %zu/%zu tables", std::string(filled, '#').c_str(),
                 std::string(kWidth - filled, '-').c_str(), done, total);
    if (done == total) {
        std::fputc('\n', stderr);
    }
}

int RunMigrate(const ParsedArgs& args) {
    const std::string source = args.positional[0];
    const std::string target = LibraryPath(args);
    try {
        if (!args.Has("library")) {
            // PLC/ under the local folder is the suite's own folder; a named one is not.
            std::error_code ec;
            std::filesystem::create_directories(files::FolderOf(target), ec);
        }
        files::RefuseNonRegular(source);
        files::RefuseSameFile(target, source);
        files::CheckWritable(target);
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc lib migrate", e);
    }
    plcdb::AccessReader reader;
    std::string error;
    if (!reader.Open(source, error)) {
        std::fprintf(stderr, "qvplc lib: %s\n", error.c_str());
        return kExitBadInput;
    }
    plcdb::MigrationOptions options;
    options.force = args.Has("force");
    options.progress = DrawProgress;
    plcdb::MigrationReport report;
    if (!plcdb::MigrateLibrary(reader, target, options, report, error)) {
        std::fprintf(stderr, "qvplc lib: %s\n", error.c_str());
        return error.find("no component library") != std::string::npos ? kExitBadInput
                                                                       : kExitFailure;
    }
    for (const auto& problem : report.problems) {
        std::fprintf(stderr, "qvplc lib: not converted: %s\n", problem.c_str());
    }
    std::printf(
        "%s: %d manufacturers, %d type rows, %d module tables, %d modules, "
        "%d terminal rows; %zu problems\n",
        target.c_str(), report.manufacturers, report.typeRows, report.tables, report.modules,
        report.terminals, report.problems.size());
    return kExitOk;
}

// Makes the folders of the default library; a --library file's folder must exist.
bool MakeLibraryFolder(const ParsedArgs& args, const std::string& target) {
    if (args.Has("library")) {
        return true;
    }
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(target).parent_path(), ec);
    if (ec) {
        std::fprintf(stderr, "qvplc lib: cannot make the folder %s: %s\n",
                     std::filesystem::path(target).parent_path().c_str(), ec.message().c_str());
        return false;
    }
    return true;
}

int RunInit(const ParsedArgs& args) {
    const std::string target = LibraryPath(args);
    std::error_code ec;
    if (std::filesystem::exists(std::filesystem::symlink_status(target, ec))) {
        std::fprintf(stderr,
                     "qvplc lib: %s already exists; it was left as it is (remove it first to "
                     "make a new one)\n",
                     target.c_str());
        return kExitFailure;
    }
    std::ifstream sample;
    const std::string source =
        suite::PathJoin(suite::GetZandrixCommonResInstallPath(), "sample/QvPLC.sql");
    if (args.Has("sample")) {
        sample.open(source);
        if (!sample) {
            std::fprintf(stderr, "qvplc lib: cannot read the sample library %s\n", source.c_str());
            return kExitBadInput;
        }
    }
    if (!MakeLibraryFolder(args, target)) {
        return kExitCannotWrite;
    }
    std::string error;
    int statements = 0;
    const auto result = plcdb::CreateLibraryFile(target, args.Has("sample") ? &sample : nullptr,
                                                 source, error, statements);
    if (result != plcdb::CreateResult::Created) {
        std::fprintf(stderr, "qvplc lib: cannot make the library: %s\n", error.c_str());
        return result == plcdb::CreateResult::BadStatement ? kExitBadInput : kExitCannotWrite;
    }
    if (args.Has("sample")) {
        std::printf("%s: the sample library (%d statements)\n", target.c_str(), statements);
    } else {
        std::printf("%s: an empty library\n", target.c_str());
    }
    return kExitOk;
}

struct Subcommand {
    const char* name;
    const CommandSpec* command;
    size_t positional;
    int (*run)(const ParsedArgs& args);
};

const Subcommand kSubcommands[] = {
    {"tree", &kTreeSpec, 0, RunTree},
    {"show", &kShowSpec, 1, RunShow},
    {"migrate", &kMigrateSpec, 1, RunMigrate},
    {"init", &kInitSpec, 0, RunInit},
};

void PrintGroupUsage(FILE* out) {
    std::fprintf(out,
                 "usage: qvplc lib <command> [options]\n\nThe component library.\n\n"
                 "Commands:\n"
                 "  tree      print manufacturer > series > type > module\n"
                 "  show      print one module and its terminal rows\n"
                 "  migrate   convert a Windows library (.mdb) into PLC/QvPLC.db\n"
                 "  init      make a new library (empty, or --sample) in PLC/QvPLC.db\n"
                 "  check     list the library's faults: sequences, repeated terminals, lengths,\n"
                 "            tables and TABLE_NAMEs, short names\n\n"
                 "Editing, through the library editor:\n"
                 "  new-manufacturer  add a manufacturer\n"
                 "  new-series        add a series to a manufacturer\n"
                 "  new-type          add a type to a series\n"
                 "  new-module        add a module to a type\n"
                 "  rename            rename a manufacturer, series, type or module\n"
                 "  delete            delete one with everything under it\n"
                 "  set-short         change a manufacturer's short name\n"
                 "  set-module        change a module's parameters\n"
                 "  find              print the next node whose name contains a text\n"
                 "  term append|insert|delete|change|reorder\n"
                 "                    change a module's terminal rows\n"
                 "  edit              run a script of editing commands in one session\n\n"
                 "Every command takes --help.\n");
}

}  // namespace

int RunLib(const Arguments& args, CliHost& host) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h") {
        PrintGroupUsage(args.empty() ? stderr : stdout);
        return args.empty() ? kExitUsage : kExitOk;
    }
    if (args[0] == "import")
        return RunLibImport(Arguments(args.begin() + 1, args.end()), host);
    if (args[0] == "check") {
        return RunLibCheck(Arguments(args.begin() + 1, args.end()), host);
    }
    if (args[0] == "edit") {
        return RunEditScript(Arguments(args.begin() + 1, args.end()), host);
    }
    size_t used = 0;
    if (const EditCommand* command = FindEditCommand(args, used)) {
        return RunEditCommand(*command,
                              Arguments(args.begin() + static_cast<long>(used), args.end()), host);
    }
    if (args[0] == "term") {
        std::fprintf(stderr,
                     "qvplc lib: 'lib term' takes append, insert, delete, change or reorder\n"
                     "usage: qvplc lib term <command> MANUFACTURER/SERIES/TYPE/CODE ...\n");
        return kExitUsage;
    }
    for (const auto& sub : kSubcommands) {
        if (args[0] != sub.name) {
            continue;
        }
        auto parsed = Parse(*sub.command, Arguments(args.begin() + 1, args.end()));
        if (!parsed) {
            return kExitUsage;
        }
        if (parsed->help) {
            std::printf("%s", HelpText(*sub.command).c_str());
            return kExitOk;
        }
        if (parsed->positional.size() != sub.positional) {
            std::fprintf(stderr, "qvplc lib: %s takes %zu argument%s\nusage: %s\n", sub.name,
                         sub.positional, sub.positional == 1 ? "" : "s",
                         sub.command->usage.c_str());
            return kExitUsage;
        }
        return sub.run(*parsed);
    }
    std::fprintf(stderr, "qvplc lib: unknown command 'lib %s'\n\n", args[0].c_str());
    PrintGroupUsage(stderr);
    return kExitUsage;
}

}  // namespace cli
