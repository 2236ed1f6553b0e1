// The editing commands, each a short series of the user's clicks in the library editor.
#include "LibEditCommands.h"

#include <cstdio>

#include "ExitCodes.h"
#include "LibEditArgs.h"
#include "LibEditHelp.h"
#include "host/SuiteServices.h"
#include "libedit/DlgPlcDataLibEdit.h"
#include "plclib/LibrarySql.h"

namespace cli {
namespace {

using libedit::FillAndOk;

// Selects the node of `names` as a click in the tree does; a missing name is bad input.
StepResult Select(EditSession& session, const Names& names) {
    CDlgPlcDataLibEdit& dlg = session.Editor();
    if (dlg.SelectPath(names)) {
        return {};
    }
    for (size_t n = 1; n <= names.size(); ++n) {
        const Names prefix(names.begin(), names.begin() + static_cast<long>(n));
        if (dlg.FindPath(prefix) == nullptr) {
            return {kExitBadInput,
                    Sprintf("the library %s has no %s '%s'", session.Library().c_str(),
                            kLevelWords[n - 1], Join(prefix).c_str())};
        }
    }
    return {kExitBadInput,
            Sprintf("'%s' cannot be selected in the library editor", Join(names).c_str())};
}

// The end of a menu command: a refused question is a cancel, anything else a failure (the
// editor has shown its message).
StepResult Outcome(EditSession& session, bool done) {
    if (done) {
        return {};
    }
    return {session.host.declined ? kExitCancelled : kExitFailure, ""};
}

// Selects a module and the terminal row of `sequence` in its list.
StepResult SelectTermRow(EditSession& session, const std::string& module,
                         const std::string& sequence, int& row) {
    if (StepResult selected = Select(session, SplitNames(module, 4)); selected.code != kExitOk) {
        return selected;
    }
    row = session.Editor().FindTermRow(sequence);
    if (row < 0) {
        return {kExitBadInput,
                Sprintf("module %s has no terminal row %s", module.c_str(), sequence.c_str())};
    }
    return {};
}

void SetIfGiven(const ParsedArgs& args, const char* option, std::string& field) {
    if (auto value = args.Value(option)) {
        field = *value;
    }
}

StepResult NewManufacturer(EditSession& session, const ParsedArgs& args) {
    if (StepResult selected = Select(session, {}); selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.newManufacturerRunner = FillAndOk<CDlgNewManufacturer>([args](CDlgNewManufacturer& d) {
        d.fullName = args.positional[0];
        SetIfGiven(args, "short", d.shortName);
    });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdNewManufacturer));
}

StepResult NewSeries(EditSession& session, const ParsedArgs& args) {
    if (StepResult selected = Select(session, {args.positional[0]}); selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.newSeriesRunner = FillAndOk<CDlgNewSeries>(
        [name = args.positional[1]](CDlgNewSeries& d) { d.seriesName = name; });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdNewSeries));
}

StepResult NewType(EditSession& session, const ParsedArgs& args) {
    if (StepResult selected = Select(session, SplitNames(args.positional[0], 2));
        selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.newSeriesStyleRunner = FillAndOk<CDlgNewSeriesStyle>(
        [name = args.positional[1]](CDlgNewSeriesStyle& d) { d.typeName = name; });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdNewType));
}

StepResult NewModule(EditSession& session, const ParsedArgs& args) {
    if (StepResult selected = Select(session, SplitNames(args.positional[0], 3));
        selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.newModuleRunner = FillAndOk<CDlgNewModule>([args](CDlgNewModule& d) {
        d.code = args.positional[1];
        SetIfGiven(args, "points", d.points);
        SetIfGiven(args, "type", d.moduleType);
        SetIfGiven(args, "description", d.description);
        SetIfGiven(args, "rating", d.rating);
    });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdNewModule));
}

StepResult Rename(EditSession& session, const ParsedArgs& args) {
    const Names names = SplitNames(args.positional[0], 4);
    if (StepResult selected = Select(session, names); selected.code != kExitOk) {
        return selected;
    }
    constexpr int kRenames[] = {libedit::kCmdRenameManufacturer, libedit::kCmdRenameSeries,
                                libedit::kCmdRenameType, libedit::kCmdRenameModule};
    CDlgPlcDataLibEdit& dlg = session.Editor();
    if (!dlg.OnMenuCommand(kRenames[names.size() - 1])) {
        return Outcome(session, false);
    }
    return Outcome(session, dlg.EndLabelEdit(args.positional[1]));
}

StepResult Delete(EditSession& session, const ParsedArgs& args) {
    const Names names = SplitNames(args.positional[0], 4);
    if (StepResult selected = Select(session, names); selected.code != kExitOk) {
        return selected;
    }
    constexpr int kDeletes[] = {libedit::kCmdDeleteManufacturer, libedit::kCmdDeleteSeries,
                                libedit::kCmdDeleteType, libedit::kCmdDeleteModule};
    return Outcome(session, session.Editor().OnMenuCommand(kDeletes[names.size() - 1]));
}

StepResult SetShort(EditSession& session, const ParsedArgs& args) {
    if (StepResult selected = Select(session, {args.positional[0]}); selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.newManufacturerRunner = FillAndOk<CDlgNewManufacturer>(
        [name = args.positional[1]](CDlgNewManufacturer& d) { d.shortName = name; });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdChangeShortName));
}

StepResult SetModule(EditSession& session, const ParsedArgs& args) {
    // Selecting the module's node lists its row, selected, as a click on it does.
    if (StepResult selected = Select(session, SplitNames(args.positional[0], 4));
        selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.changeModuleRunner = FillAndOk<CDlgChangeModule>([args](CDlgChangeModule& d) {
        SetIfGiven(args, "points", d.points);
        SetIfGiven(args, "type", d.moduleType);
        SetIfGiven(args, "description", d.description);
        SetIfGiven(args, "rating", d.rating);
    });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdChangeModule));
}

StepResult Find(EditSession& session, const ParsedArgs& args) {
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.editFind = args.positional[0];
    if (!dlg.OnFind()) {
        if (session.host.declined) {
            return {kExitCancelled,
                    "the search reached the end of the tree; --yes goes on from "
                    "the top"};
        }
        return {kExitFailure, Sprintf("no name in the library %s contains '%s'",
                                      session.Library().c_str(), args.positional[0].c_str())};
    }
    const dialog::LastSelection found = dialog::PathOf(dlg.tree.Selected());
    Names names;
    for (const std::string* name : {&found.manufacturer, &found.series, &found.type, &found.code}) {
        if (!name->empty()) {
            names.push_back(*name);
        }
    }
    std::printf("%s\n", Join(names).c_str());
    return {};
}

StepResult TermAppend(EditSession& session, const ParsedArgs& args) {
    if (StepResult selected = Select(session, SplitNames(args.positional[0], 4));
        selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.newTermInfoRunner = FillAndOk<CDlgNewTermInfo>([args](CDlgNewTermInfo& d) {
        SetIfGiven(args, "value", d.termValue);
        SetIfGiven(args, "desc", d.termDesc);
        SetIfGiven(args, "detail", d.detailTermDesc);
    });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdAppendTerm));
}

StepResult TermInsert(EditSession& session, const ParsedArgs& args) {
    int row = -1;
    if (StepResult selected =
            SelectTermRow(session, args.positional[0], *Sequence(*args.Value("before")), row);
        selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.SelectTermRows({row});
    dlg.newTermInfoRunner = FillAndOk<CDlgNewTermInfo>([args](CDlgNewTermInfo& d) {
        SetIfGiven(args, "value", d.termValue);
        SetIfGiven(args, "desc", d.termDesc);
        SetIfGiven(args, "detail", d.detailTermDesc);
    });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdInsertTerm));
}

StepResult TermDelete(EditSession& session, const ParsedArgs& args) {
    std::vector<int> rows;
    for (size_t i = 1; i < args.positional.size(); ++i) {
        int row = -1;
        if (StepResult selected =
                SelectTermRow(session, args.positional[0], *Sequence(args.positional[i]), row);
            selected.code != kExitOk) {
            return selected;
        }
        rows.push_back(row);
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.SelectTermRows(rows);
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdDeleteTerms));
}

StepResult TermChange(EditSession& session, const ParsedArgs& args) {
    int row = -1;
    if (StepResult selected =
            SelectTermRow(session, args.positional[0], *Sequence(args.positional[1]), row);
        selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.SelectTermRows({row});
    dlg.changeTermDataRunner = FillAndOk<CDlgChangeTermData>([args](CDlgChangeTermData& d) {
        SetIfGiven(args, "value", d.termValue);
        SetIfGiven(args, "desc", d.termDesc);
        SetIfGiven(args, "detail", d.detailTermDesc);
    });
    return Outcome(session, dlg.OnMenuCommand(libedit::kCmdChangeTerm));
}

std::string CurrentSequences(const CDlgPlcDataLibEdit& dlg) {
    std::string list;
    for (int row = 0; row < dlg.termList.Count(); ++row) {
        list += (row ? "," : "") + dlg.termList.Text(row, libedit::kTermSequence);
    }
    return list;
}

StepResult TermReorder(EditSession& session, const ParsedArgs& args) {
    const std::string& module = args.positional[0];
    if (StepResult selected = Select(session, SplitNames(module, 4)); selected.code != kExitOk) {
        return selected;
    }
    CDlgPlcDataLibEdit& dlg = session.Editor();
    if (dlg.termList.Count() == 0) {
        return {kExitFailure, Sprintf("module %s has no terminal rows to reorder", module.c_str())};
    }
    // The ordering dialog opens on a selected row.
    dlg.SelectTermRows({0});
    const Names order = *SequenceList(*args.Value("order"));
    bool orderRefused = false;
    dlg.termOrderRunner = [order, &orderRefused](CDlgTermOrder& d) {
        orderRefused = !d.SetOrder(order);
        return !orderRefused && d.OnOK();
    };
    const bool done = dlg.OnMenuCommand(libedit::kCmdReorderTerms);
    dlg.termOrderRunner = nullptr;
    if (orderRefused) {
        return {kExitUsage, Sprintf("--order %s must name each current row of %s exactly once; "
                                    "its rows are %s",
                                    args.Value("order")->c_str(), module.c_str(),
                                    CurrentSequences(dlg).c_str())};
    }
    return Outcome(session, done);
}

}  // namespace

const std::vector<EditCommand>& EditCommands() {
    static const std::vector<EditCommand> commands = {
        {"new-manufacturer", &kNewManufacturerSpec, 1, 1, NoCheck, NewManufacturer},
        {"new-series", &kNewSeriesSpec, 2, 2, NoCheck, NewSeries},
        {"new-type", &kNewTypeSpec, 2, 2, CheckSeries, NewType},
        {"new-module", &kNewModuleSpec, 2, 2, CheckType, NewModule},
        {"rename", &kRenameSpec, 2, 2, CheckAnyPath, Rename},
        {"delete", &kDeleteSpec, 1, 1, CheckAnyPath, Delete},
        {"set-short", &kSetShortSpec, 2, 2, NoCheck, SetShort},
        {"set-module", &kSetModuleSpec, 1, 1, CheckModule, SetModule},
        {"find", &kFindSpec, 1, 1, CheckFind, Find},
        {"term append", &kTermAppendSpec, 1, 1, CheckValueGiven, TermAppend},
        {"term insert", &kTermInsertSpec, 1, 1, CheckInsert, TermInsert},
        {"term delete", &kTermDeleteSpec, 2, SIZE_MAX, CheckSequences, TermDelete},
        {"term change", &kTermChangeSpec, 2, 2, CheckSequences, TermChange},
        {"term reorder", &kTermReorderSpec, 1, 1, CheckReorder, TermReorder},
    };
    return commands;
}

const EditCommand* FindEditCommand(const Arguments& words, size_t& used) {
    if (words.empty()) {
        return nullptr;
    }
    const std::string name = words[0] == "term" && words.size() > 1 ? "term " + words[1] : words[0];
    for (const EditCommand& command : EditCommands()) {
        if (name == command.name) {
            used = name.find(' ') == std::string::npos ? 1 : 2;
            return &command;
        }
    }
    return nullptr;
}

std::string EditedLibrary(const ParsedArgs& args) {
    if (auto path = args.Value("library")) {
        return *path;
    }
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath);
}

std::optional<ParsedArgs> ParseEditArgs(const EditCommand& command, const Arguments& words,
                                        std::string& error) {
    auto parsed = Parse(*command.form, words);
    if (!parsed) {
        error.clear();  // Parse has said what was wrong
        return std::nullopt;
    }
    if (parsed->help) {
        return parsed;
    }
    const size_t count = parsed->positional.size();
    if (count < command.minArgs || count > command.maxArgs) {
        const char* usage = command.form->usage.c_str();
        if (command.maxArgs == 1) {
            error = Sprintf("%s takes one argument; usage: %s", command.name, usage);
        } else if (command.minArgs == command.maxArgs) {
            error = Sprintf("%s takes two arguments; usage: %s", command.name, usage);
        } else {
            error = Sprintf("%s takes a module and one or more sequence numbers; usage: %s",
                            command.name, usage);
        }
        return std::nullopt;
    }
    if (auto problem = command.check(*parsed)) {
        error = *problem;
        return std::nullopt;
    }
    return parsed;
}

StepResult RunStep(const EditCommand& command, EditSession& session, const ParsedArgs& args) {
    StepResult result = command.run(session, args);
    // The runners hold this step's values; the next step sets its own.
    CDlgPlcDataLibEdit& dlg = session.Editor();
    dlg.newManufacturerRunner = nullptr;
    dlg.newSeriesRunner = nullptr;
    dlg.newSeriesStyleRunner = nullptr;
    dlg.newModuleRunner = nullptr;
    dlg.newTermInfoRunner = nullptr;
    dlg.changeModuleRunner = nullptr;
    dlg.changeTermDataRunner = nullptr;
    dlg.termOrderRunner = nullptr;
    return result;
}

}  // namespace cli
