// Option parsing shared by every subcommand: declared options, --help, clear usage errors.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct OptionSpec {
    std::string name;       // without the leading "--"
    std::string valueName;  // empty for a flag
    std::string help;
    bool repeatable = false;
};

struct ParsedArgs {
    std::vector<std::string> positional;
    std::map<std::string, std::vector<std::string>> options;
    bool help = false;

    bool Has(const std::string& name) const { return options.count(name) > 0; }
    std::optional<std::string> Value(const std::string& name) const;
    std::vector<std::string> Values(const std::string& name) const;
};

struct CommandSpec {
    std::string usage;    // e.g. "qvplc lib show M/S/T/CODE"
    std::string summary;  // one paragraph that teaches what the command does
    std::vector<OptionSpec> options;
    std::string details;  // examples and notes, printed after the options
};

// Parses `args` against `command`. On a usage error prints it with a hint and returns nullopt.
std::optional<ParsedArgs> Parse(const CommandSpec& command, const std::vector<std::string>& args);
std::string HelpText(const CommandSpec& command);

// Options every command that may ask a question accepts.
OptionSpec YesOption();
OptionSpec NoOption();

}  // namespace cli
