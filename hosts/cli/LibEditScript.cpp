// One editing command in a session of its own, and `lib edit`: a script of them in one.
#include <cstdio>
#include <fstream>
#include <iostream>

#include "ExitCodes.h"
#include "LibEditCommands.h"
#include "LibEditHelp.h"
#include "Messages.h"

namespace cli {
namespace {

// A word of the line beginning at `at`; false when a quote is left open.
bool ReadWord(const std::string& line, size_t& at, std::string& word) {
    while (at < line.size() && line[at] != ' ' && line[at] != '\t') {
        const char c = line[at++];
        if (c == '\\' && at < line.size()) {
            word += line[at++];
        } else if (c == '\'') {
            const size_t close = line.find('\'', at);
            if (close == std::string::npos) {
                return false;
            }
            word += line.substr(at, close - at);
            at = close + 1;
        } else if (c == '"') {
            while (at < line.size() && line[at] != '"') {
                if (line[at] == '\\' && at + 1 < line.size() &&
                    (line[at + 1] == '"' || line[at + 1] == '\\')) {
                    ++at;
                }
                word += line[at++];
            }
            if (at == line.size()) {
                return false;
            }
            ++at;
        } else {
            word += c;
        }
    }
    return true;
}

struct ScriptStep {
    int line = 0;
    std::string text;
    const EditCommand* command = nullptr;
    ParsedArgs args;
};

// Reads and checks every line; false after a reported usage error.
bool ReadScript(std::istream& in, std::vector<ScriptStep>& steps) {
    std::string text;
    for (int line = 1; std::getline(in, text); ++line) {
        if (!text.empty() && text.back() == '\r') {
            text.pop_back();
        }
        std::string error;
        const auto words = SplitScriptLine(text, error);
        if (!words) {
            Complainf("line %d: %s", line, error.c_str());
            return false;
        }
        if (words->empty()) {
            continue;
        }
        size_t used = 0;
        const EditCommand* command = FindEditCommand(*words, used);
        if (command == nullptr) {
            Complainf("line %d: '%s' is no editing command (see 'qvplc lib edit --help')", line,
                      (*words)[0].c_str());
            return false;
        }
        auto args = ParseEditArgs(*command, Arguments(words->begin() + used, words->end()), error);
        if (args && (args->help || args->Has("library"))) {
            error = args->help ? "--help cannot stand in a script"
                               : "--library belongs on the 'qvplc lib edit' command line";
            args.reset();
        }
        if (!args) {
            Complainf("line %d: %s", line, error.empty() ? "usage error" : error.c_str());
            return false;
        }
        steps.push_back({line, text, command, *args});
    }
    return true;
}

// Reports a failed step: `what` is the command, or the script's line `line` (from 1).
int Report(const StepResult& result, const std::string& what, int line = 0) {
    if (line == 0 && !result.error.empty()) {
        Complain(result.error);
    } else if (line == 0) {
        Complainf("'%s' did not complete", what.c_str());
    } else if (!result.error.empty()) {
        Complainf("line %d: %s", line, result.error.c_str());
    } else {
        Complainf("line %d: '%s' did not complete", line, what.c_str());
    }
    return result.code;
}

}  // namespace

std::optional<Arguments> SplitScriptLine(const std::string& line, std::string& error) {
    Arguments words;
    size_t at = 0;
    while (true) {
        at = line.find_first_not_of(" \t", at);
        if (at == std::string::npos || line[at] == '#') {
            return words;
        }
        std::string word;
        if (!ReadWord(line, at, word)) {
            error = "a quote is not closed";
            return std::nullopt;
        }
        words.push_back(std::move(word));
    }
}

const CommandSpec& EditScriptSpec() {
    return kEditScriptSpec;
}

int RunEditCommand(const EditCommand& command, const Arguments& words, CliHost& host) {
    std::string error;
    const auto args = ParseEditArgs(command, words, error);
    if (!args) {
        if (!error.empty()) {
            Complain(error);
        }
        return kExitUsage;
    }
    if (args->help) {
        std::fputs(HelpText(*command.form).c_str(), stdout);
        return kExitOk;
    }
    host.answer = args->Has("yes") ? Answer::Yes : Answer::None;
    EditSession session(host);
    if (const int opened = session.Open(EditedLibrary(*args), args->Has("library"));
        opened != kExitOk) {
        return opened;
    }
    const StepResult result = RunStep(command, session, *args);
    session.Close();
    return result.code == kExitOk ? kExitOk : Report(result, std::string("lib ") + command.name);
}

int RunEditScript(const Arguments& words, CliHost& host) {
    const auto args = Parse(kEditScriptSpec, words);
    if (!args) {
        return kExitUsage;
    }
    if (args->help) {
        std::fputs(HelpText(kEditScriptSpec).c_str(), stdout);
        return kExitOk;
    }
    if (args->positional.size() > 1) {
        Complain("edit takes one script (or '-' for standard input)");
        return kExitUsage;
    }
    const std::string source = args->positional.empty() ? "-" : args->positional[0];
    std::ifstream file;
    if (source != "-") {
        file.open(source);
        if (!file) {
            Complainf("cannot read the script %s", source.c_str());
            return kExitBadInput;
        }
    }
    std::vector<ScriptStep> steps;
    if (!ReadScript(source == "-" ? std::cin : file, steps)) {
        return kExitUsage;
    }
    EditSession session(host);
    if (const int opened = session.Open(EditedLibrary(*args), args->Has("library"));
        opened != kExitOk) {
        return opened;
    }
    const Answer answer = args->Has("yes") ? Answer::Yes : Answer::None;
    for (const ScriptStep& step : steps) {
        host.answer = step.args.Has("yes") ? Answer::Yes : answer;
        const StepResult result = RunStep(*step.command, session, step.args);
        if (result.code != kExitOk) {
            session.Close();
            return Report(result, step.text, step.line);
        }
    }
    session.Close();
    return kExitOk;
}

}  // namespace cli
