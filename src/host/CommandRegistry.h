// The registered-commands service of a host: commands added by group, found by the name a
// user types, removed group by group. Every host (command line, desktop, tests) keeps its
// commands in one of these, so they all refuse and find commands the same way.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/Host.h"

namespace host {

struct RegisteredCommand {
    std::string group;
    std::string globalName;
    std::string localName;
    int flags = 0;
    CommandHandler handler;
};

class CommandRegistry {
public:
    // False, with nothing added, when the name is empty, there is no handler, or the global
    // or local name is already taken by a registered command (names compare without regard
    // to case, as users type them): a CAD host refuses a duplicate key the same way.
    bool Add(std::string_view group, std::string_view globalName, std::string_view localName,
             int flags, CommandHandler handler);
    // Group names are compared exactly: "QvPlcRendal" and "QVPLCRENDAL" are two groups.
    // Returns how many commands went.
    int RemoveGroup(std::string_view group);

    // The command whose global or local name is `name`, ignoring case; null when none.
    const RegisteredCommand* Find(std::string_view name) const;
    // Runs the command named `name`; false when there is none. The handler may add or
    // remove commands (an unload from inside a command) without harm.
    bool Run(std::string_view name) const;

    // Global names in the order they were added.
    std::vector<std::string> Names() const;
    const std::vector<RegisteredCommand>& Commands() const { return commands_; }
    bool Empty() const { return commands_.empty(); }

private:
    std::vector<RegisteredCommand> commands_;
};

// True when two command names are the same to a user typing them (ASCII case folded).
bool SameCommandName(std::string_view a, std::string_view b);

// The lines of a command string sent to the current document, blank lines dropped:
// "(Command)\nRendalFull\n" gives "(Command)" and "RendalFull".
std::vector<std::string> CommandStringLines(std::string_view text);

// The empty command call that cancels a command in progress.
inline constexpr std::string_view kCancelCommandLine = "(Command)";

}  // namespace host
