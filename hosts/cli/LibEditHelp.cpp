// The --help of the editing commands: what each does in the editor, its options, examples.
#include "LibEditHelp.h"

namespace cli {
namespace {

OptionSpec EditLibraryOption() {
    return {"library", "FILE",
            "the library to edit (default: PLC/QvPLC.db in the local installation folder)"};
}

std::vector<OptionSpec> Common(std::vector<OptionSpec> options) {
    options.push_back(EditLibraryOption());
    options.push_back(YesOption());
    return options;
}

std::vector<OptionSpec> ModuleOptions(const char* keep) {
    return Common({{"points", "P", std::string("number of points (通道数)") + keep},
                   {"type", "T", std::string("module type (类型), e.g. DI") + keep},
                   {"description", "D", std::string("description (描述)") + keep},
                   {"rating", "R", std::string("rating (额定值)") + keep}});
}

std::vector<OptionSpec> TermOptions(const char* keep, bool valueRequired) {
    return Common({{"value", "V",
                    std::string("terminal number (端号)") + (valueRequired ? "; required" : keep)},
                   {"desc", "D", std::string("terminal description (端点描述)") + keep},
                   {"detail", "X", std::string("detailed description (端点详细描述)") + keep}});
}

const char* kEditingNotes =
    "The change is made through the library editor, as a user makes it: the node is\n"
    "selected in the tree, the menu command chosen, the sub-dialog filled and OK pressed.\n"
    "Its checks and messages apply; its questions are answered OK with --yes and refused\n"
    "without it. The change is written to the library at once; closing the editor keeps the\n"
    "selection in LocalData/PlcLibEdit.dat. A name that is not in the library is an error\n"
    "(exit 3). Names are matched as stored (case counts); in a module path the code is\n"
    "everything after the third '/'.";

std::string Details(const char* examples) {
    return std::string(kEditingNotes) + "\n\n" + examples;
}

}  // namespace

const CommandSpec kNewManufacturerSpec{
    "qvplc lib new-manufacturer NAME [--short S] [--library FILE]",
    "Adds a manufacturer (新建厂家) with its full name NAME and, optionally, its short name.\n"
    "A manufacturer of the same name (case does not count) is refused.",
    Common({{"short", "S", "the short name (厂家简称); default: none"}}),
    Details("Example:\n  qvplc lib new-manufacturer 'Acme Automation' --short ACME")};

const CommandSpec kNewSeriesSpec{
    "qvplc lib new-series MANUFACTURER NAME [--library FILE]",
    "Adds a series NAME under MANUFACTURER.", Common({}),
    Details("Example:\n  qvplc lib new-series 'Acme Automation' 'AX 100'")};

const CommandSpec kNewTypeSpec{
    "qvplc lib new-type MANUFACTURER/SERIES NAME [--library FILE]",
    "Adds a type (系列类型) NAME under a series, with its module table and terminal table.",
    Common({}), Details("Example:\n  qvplc lib new-type 'Acme Automation/AX 100' 'Digital input'")};

const CommandSpec kNewModuleSpec{
    "qvplc lib new-module MANUFACTURER/SERIES/TYPE CODE [--points P] [--type T] "
    "[--description D] [--rating R] [--library FILE]",
    "Adds a module CODE (模块代号) to a type, without terminal rows (add them with\n"
    "'qvplc lib term append'). A module of the same code in the type is refused.",
    ModuleOptions("; default: empty"),
    Details("Example:\n"
            "  qvplc lib new-module 'Acme Automation/AX 100/Digital input' AX-DI8 \\\n"
            "      --points 8 --type DI --description '8 digital inputs' --rating '24VDC'")};

const CommandSpec kRenameSpec{
    "qvplc lib rename PATH NEWNAME [--library FILE]",
    "Renames what PATH names: a manufacturer (M), a series (M/S), a type (M/S/T) or a module\n"
    "(M/S/T/CODE), as editing its label in the tree does. NEWNAME is the new last part.",
    Common({}),
    Details("Examples:\n"
            "  qvplc lib rename 'Acme Automation' 'Acme Controls'\n"
            "  qvplc lib rename 'Acme Controls/AX 100/Digital input/AX-DI8' AX-DI8B")};

const CommandSpec kDeleteSpec{
    "qvplc lib delete PATH --yes [--library FILE]",
    "Deletes what PATH names (M, M/S, M/S/T or M/S/T/CODE) with everything under it: its\n"
    "series, types, module tables, modules and terminal rows. The editor asks first; --yes\n"
    "answers OK, without it nothing is deleted (exit 4).",
    Common({}), Details("Example:\n  qvplc lib delete 'Acme Controls/AX 100/Digital input' --yes")};

const CommandSpec kSetShortSpec{"qvplc lib set-short MANUFACTURER SHORT [--library FILE]",
                                "Changes a manufacturer's short name (修改厂家简称).", Common({}),
                                Details("Example:\n  qvplc lib set-short 'Acme Controls' ACM")};

const CommandSpec kSetModuleSpec{
    "qvplc lib set-module MANUFACTURER/SERIES/TYPE/CODE [--points P] [--type T] "
    "[--description D] [--rating R] [--library FILE]",
    "Changes a module's parameters; the options not given keep the module's current values.\n"
    "The code itself changes with 'qvplc lib rename'.",
    ModuleOptions("; default: unchanged"),
    Details("Example:\n"
            "  qvplc lib set-module 'Acme Controls/AX 100/Digital input/AX-DI8' --rating '24VDC "
            "5mA'")};

const CommandSpec kFindSpec{
    "qvplc lib find TEXT [--yes] [--library FILE]",
    "Finds the next manufacturer, series, type or module whose name contains TEXT (case does\n"
    "not count), after the node selected last, and prints its path. At the end of the tree\n"
    "the editor asks whether to go on from the top: --yes answers Yes. Run again, it finds\n"
    "the next one. Nothing found: exit 1.",
    Common({}), Details("Example:\n  qvplc lib find di16 --yes")};

const CommandSpec kTermAppendSpec{
    "qvplc lib term append MANUFACTURER/SERIES/TYPE/CODE --value V [--desc D] [--detail X] "
    "[--library FILE]",
    "Adds a terminal row after the module's last one (添加端点信息); its sequence (端点序号) is\n"
    "the number of rows plus one.",
    TermOptions("; default: empty", true),
    Details("Example:\n"
            "  qvplc lib term append 'Acme Controls/AX 100/Digital input/AX-DI8' --value 1 \\\n"
            "      --desc I0.0 --detail 'input 0'")};

const CommandSpec kTermInsertSpec{
    "qvplc lib term insert MANUFACTURER/SERIES/TYPE/CODE --before SEQ --value V [--desc D] "
    "[--detail X] [--library FILE]",
    "Inserts a terminal row before the row of sequence SEQ (插入端点信息): the new row takes\n"
    "SEQ and the rows from SEQ on move one down.",
    [] {
        auto options = TermOptions("; default: empty", true);
        options.insert(options.begin(),
                       {"before", "SEQ", "the sequence of the row to insert before"});
        return options;
    }(),
    Details("Example:\n"
            "  qvplc lib term insert 'Acme Controls/AX 100/Digital input/AX-DI8' --before 1 \\\n"
            "      --value 0V --desc M")};

const CommandSpec kTermDeleteSpec{
    "qvplc lib term delete MANUFACTURER/SERIES/TYPE/CODE SEQ [SEQ...] --yes [--library FILE]",
    "Deletes the terminal rows of the sequences given; the rows after each move up, so the\n"
    "sequences stay 1, 2, 3, ... The editor asks first: --yes answers OK.",
    Common({}),
    Details("Example (rows 2 and 3 of the list as it is now):\n"
            "  qvplc lib term delete 'Acme Controls/AX 100/Digital input/AX-DI8' 2 3 --yes")};

const CommandSpec kTermChangeSpec{
    "qvplc lib term change MANUFACTURER/SERIES/TYPE/CODE SEQ [--value V] [--desc D] "
    "[--detail X] [--library FILE]",
    "Changes the terminal row of sequence SEQ; the options not given keep its current\n"
    "contents.",
    TermOptions("; default: unchanged", false),
    Details("Example:\n"
            "  qvplc lib term change 'Acme Controls/AX 100/Digital input/AX-DI8' 2 --desc I0.1")};

const CommandSpec kTermReorderSpec{
    "qvplc lib term reorder MANUFACTURER/SERIES/TYPE/CODE --order SEQ,SEQ,... [--library FILE]",
    "Puts the module's terminal rows in a new order, as the ordering dialog does: --order\n"
    "lists the current rows by sequence in their new order, each exactly once; the first one\n"
    "named becomes sequence 1, and so on.",
    [] {
        auto options = Common({});
        options.insert(options.begin(),
                       {"order", "SEQ,SEQ,...", "every current row's sequence, in the new order"});
        return options;
    }(),
    Details("Example (three rows, the last one first):\n"
            "  qvplc lib term reorder 'Acme Controls/AX 100/Digital input/AX-DI8' --order 3,1,2")};

const CommandSpec kEditScriptSpec{
    "qvplc lib edit [SCRIPT|-] [--yes] [--library FILE]",
    "Runs many editing commands in one editor session: the library is opened once, each\n"
    "line's change is made through the editor, and the editor is closed once (which gives\n"
    "the library back to the server in network style 1). SCRIPT (or standard input, for '-'\n"
    "or none) holds one command per line, written as after 'qvplc lib': new-manufacturer,\n"
    "new-series, new-type, new-module, rename, delete, set-short, set-module, find and\n"
    "term append/insert/delete/change/reorder. Words are split as a shell splits them ('...'\n"
    "and \"...\" quote names with blanks, \\ escapes one character); blank lines and '#'\n"
    "comments are skipped. Every line is read and checked first: a script with a usage error\n"
    "changes nothing. The run stops at the first line that fails, naming it (\"line N: ...\");\n"
    "the lines before it stay done. --yes answers the questions of every line; a line may\n"
    "also carry its own --yes, but not --library.",
    Common({}),
    "Example:\n"
    "  qvplc lib edit --yes <<'EOF'\n"
    "  new-manufacturer 'Acme Automation' --short ACME\n"
    "  new-series 'Acme Automation' 'AX 100'\n"
    "  new-type 'Acme Automation/AX 100' 'Digital input'\n"
    "  new-module 'Acme Automation/AX 100/Digital input' AX-DI8 --points 8 --type DI\n"
    "  term append 'Acme Automation/AX 100/Digital input/AX-DI8' --value 1 --desc I0.0\n"
    "  term append 'Acme Automation/AX 100/Digital input/AX-DI8' --value 2 --desc I0.1\n"
    "  EOF"};

}  // namespace cli
