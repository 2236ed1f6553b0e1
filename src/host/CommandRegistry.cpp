#include "host/CommandRegistry.h"

#include <algorithm>

namespace host {
namespace {

char Fold(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool Taken(const RegisteredCommand& command, std::string_view name) {
    return SameCommandName(command.globalName, name) || SameCommandName(command.localName, name);
}

}  // namespace

bool SameCommandName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                              [](char x, char y) { return Fold(x) == Fold(y); });
}

bool CommandRegistry::Add(std::string_view group, std::string_view globalName,
                          std::string_view localName, int flags, CommandHandler handler) {
    if (globalName.empty() || !handler) {
        return false;
    }
    const std::string_view local = localName.empty() ? globalName : localName;
    for (const auto& command : commands_) {
        if (Taken(command, globalName) || Taken(command, local)) {
            return false;
        }
    }
    commands_.push_back({std::string(group), std::string(globalName), std::string(local), flags,
                         std::move(handler)});
    return true;
}

int CommandRegistry::RemoveGroup(std::string_view group) {
    return static_cast<int>(
        std::erase_if(commands_, [&](const RegisteredCommand& c) { return c.group == group; }));
}

const RegisteredCommand* CommandRegistry::Find(std::string_view name) const {
    const auto it = std::find_if(commands_.begin(), commands_.end(),
                                 [&](const RegisteredCommand& c) { return Taken(c, name); });
    return it == commands_.end() ? nullptr : &*it;
}

bool CommandRegistry::Run(std::string_view name) const {
    const RegisteredCommand* command = Find(name);
    if (command == nullptr) {
        return false;
    }
    // A copy: the handler may remove its own group and with it the stored one.
    const CommandHandler handler = command->handler;
    handler();
    return true;
}

std::vector<std::string> CommandRegistry::Names() const {
    std::vector<std::string> names;
    for (const auto& command : commands_) {
        names.push_back(command.globalName);
    }
    return names;
}

std::vector<std::string> CommandStringLines(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const auto end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (line.find_first_not_of(' ') != std::string_view::npos) {
            lines.emplace_back(line);
        }
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
    return lines;
}

}  // namespace host
