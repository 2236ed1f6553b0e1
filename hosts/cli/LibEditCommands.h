// The editing commands of `qvplc lib`: each one clicks through the library editor the way a
// user does (select the node or the rows, choose the menu command, fill the sub-dialog and
// press OK), so the editor's own checks, messages and questions all apply.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Args.h"
#include "Commands.h"
#include "LibEditSession.h"

namespace cli {

// What became of one step: the exit code and, on failure, the error to report.
struct StepResult {
    int code = 0;
    std::string error;
};

struct EditCommand {
    const char* name;  // "new-module", "term insert"
    const CommandSpec* form;
    size_t minArgs, maxArgs;
    // Checks the arguments before anything is opened (a usage error, or nullopt when fine).
    std::optional<std::string> (*check)(const ParsedArgs& args);
    StepResult (*run)(EditSession& session, const ParsedArgs& args);
};

const std::vector<EditCommand>& EditCommands();
// The command that `words` begins with ("rename", or "term" and "append"); null when none.
// `used` is set to the number of words its name takes.
const EditCommand* FindEditCommand(const Arguments& words, size_t& used);
// Parses and checks the words after the command's name. A usage error gives nullopt with
// `error` holding it, or empty when the option parser has printed it already.
std::optional<ParsedArgs> ParseEditArgs(const EditCommand& command, const Arguments& words,
                                        std::string& error);

// Runs one step in an open session; the editor's sub-dialog runners are cleared after it.
StepResult RunStep(const EditCommand& command, EditSession& session, const ParsedArgs& args);

// `qvplc lib <editing command> ...` in an editor session of its own.
int RunEditCommand(const EditCommand& command, const Arguments& words, CliHost& host);
// `qvplc lib edit [SCRIPT|-]`.
int RunEditScript(const Arguments& words, CliHost& host);
const CommandSpec& EditScriptSpec();

// A script line split into words as a shell splits them: blanks separate words, '...' keeps
// everything, "..." keeps everything but \" and \\, a backslash outside quotes keeps the next
// character, and '#' at the start of a word begins a comment. Nullopt with `error` set when a
// quote is left open.
std::optional<Arguments> SplitScriptLine(const std::string& line, std::string& error);

// The library a command edits: --library or the local folder's.
std::string EditedLibrary(const ParsedArgs& args);

}  // namespace cli
