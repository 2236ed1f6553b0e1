#include "Args.h"

#include <cstdio>

#include "ExitCodes.h"
#include "Messages.h"

namespace cli {

std::optional<std::string> ParsedArgs::Value(const std::string& name) const {
    const auto it = options.find(name);
    if (it == options.end() || it->second.empty()) {
        return std::nullopt;
    }
    return it->second.back();
}

std::vector<std::string> ParsedArgs::Values(const std::string& name) const {
    const auto it = options.find(name);
    return it == options.end() ? std::vector<std::string>{} : it->second;
}

namespace {

const OptionSpec* Find(const CommandSpec& command, const std::string& name) {
    for (const auto& option : command.options) {
        if (option.name == name) {
            return &option;
        }
    }
    return nullptr;
}

void UsageError(const CommandSpec& command, const std::string& message) {
    Complain(message);
    std::fprintf(stderr, "usage: %s\nTry '%s --help' for more.\n", command.usage.c_str(),
                 command.usage.substr(0, command.usage.find(' ', 6)).c_str());
}

}  // namespace

std::optional<ParsedArgs> Parse(const CommandSpec& command, const std::vector<std::string>& args) {
    ParsedArgs parsed;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--help" || arg == "-h") {
            parsed.help = true;
            continue;
        }
        if (arg.rfind("--", 0) != 0 || arg == "--") {
            parsed.positional.push_back(arg);
            continue;
        }
        std::string name = arg.substr(2);
        std::optional<std::string> inlineValue;
        if (const auto eq = name.find('='); eq != std::string::npos) {
            inlineValue = name.substr(eq + 1);
            name = name.substr(0, eq);
        }
        const OptionSpec* option = Find(command, name);
        if (!option) {
            UsageError(command, "unknown option --" + name);
            return std::nullopt;
        }
        auto& values = parsed.options[name];
        if (!option->repeatable && !values.empty()) {
            UsageError(command, "--" + name + " given twice");
            return std::nullopt;
        }
        if (option->valueName.empty()) {
            if (inlineValue) {
                UsageError(command, "--" + name + " takes no value");
                return std::nullopt;
            }
            values.push_back("1");
        } else if (inlineValue) {
            values.push_back(*inlineValue);
        } else if (i + 1 < args.size()) {
            values.push_back(args[++i]);
        } else {
            UsageError(command, "--" + name + " needs a value (" + option->valueName + ")");
            return std::nullopt;
        }
    }
    return parsed;
}

std::string HelpText(const CommandSpec& command) {
    std::string text = "usage: " + command.usage + "\n\n" + command.summary + "\n";
    if (!command.options.empty()) {
        text += "\nOptions:\n";
        for (const auto& option : command.options) {
            std::string left = "  --" + option.name;
            if (!option.valueName.empty()) {
                left += " " + option.valueName;
            }
            if (left.size() < 26) {
                left.resize(26, ' ');
            } else {
                left += "\n" + std::string(26, ' ');
            }
            text += left + option.help + "\n";
        }
    }
    text += "  --help                  show this text\n";
    if (!command.details.empty()) {
        text += "\n" + command.details + "\n";
    }
    text += "\n" + ExitCodesHelp();
    return text;
}

OptionSpec YesOption() {
    return {"yes", "", "answer Yes/OK to every question the command asks"};
}
OptionSpec NoOption() {
    return {"no", "", "answer No/Cancel to every question the command asks"};
}

}  // namespace cli
