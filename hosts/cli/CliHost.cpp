#include "CliHost.h"

#include <algorithm>
#include <cstdio>

#include "Messages.h"
#include "files/TextFile.h"

namespace cli {
namespace {

const char* IconWord(host::MsgIcon icon) {
    switch (icon) {
        case host::MsgIcon::Error:
            return "error";
        case host::MsgIcon::Exclamation:
            return "warning";
        case host::MsgIcon::Question:
        case host::MsgIcon::Information:
        case host::MsgIcon::None:
            break;
    }
    return "message";
}

// The text without the line feeds and blanks the system puts around it for a CAD command line.
std::string_view Trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \r\n");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \r\n") - first + 1);
}

// The command line of a CAD host is where the system talks to its user: here each line of
// it becomes one message on standard error.
void ShowLines(std::string_view text) {
    while (!text.empty()) {
        const auto end = text.find('\n');
        const std::string_view line = Trimmed(text.substr(0, end));
        if (!line.empty()) {
            Complain(WithTranslation(line));
        }
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
}

}  // namespace

void CliHost::Print(std::string_view text) {
    if (!quiet) {
        ShowLines(text);
    }
}

host::MsgResult CliHost::MessageBox(const host::MessageBoxRequest& request) {
    const bool question = request.buttons != host::MsgButtons::Ok;
    // A text of several lines ("...!\n\n确实要执行此操作 ?") keeps the prefix on each line.
    const std::string text = WithTranslation(Trimmed(request.text));
    std::string_view rest = text;
    auto end = rest.find('\n');
    Complainf("%s: [%s] %s", IconWord(request.icon), request.caption.c_str(),
              std::string(rest.substr(0, end)).c_str());
    while (end != std::string_view::npos) {
        rest = rest.substr(end + 1);
        end = rest.find('\n');
        if (const std::string_view line = Trimmed(rest.substr(0, end)); !line.empty()) {
            Complain(line);
        }
    }
    if (!question) {
        return host::MsgResult::Ok;
    }
    const bool okCancel = request.buttons == host::MsgButtons::OkCancel;
    if (answer == Answer::Yes) {
        Complainf("answered %s (--yes)", okCancel ? "OK" : "Yes");
        return okCancel ? host::MsgResult::Ok : host::MsgResult::Yes;
    }
    if (answer == Answer::None) {
        Complain("no answer given (pass --yes or --no): refused");
        declined = true;
    } else {
        Complainf("answered %s (--no)", okCancel ? "Cancel" : "No");
    }
    return okCancel ? host::MsgResult::Cancel : host::MsgResult::No;
}

void CliHost::SendCommandString(std::string_view text) {
    if (!text.empty()) {
        pending_.emplace_back(text);
    }
}

int CliHost::RunPendingCommands() {
    int ran = 0;
    while (!pending_.empty()) {
        const auto lines = host::CommandStringLines(pending_.front());
        pending_.pop_front();
        for (const std::string& line : lines) {
            if (commands_.Run(line)) {
                ++ran;
            }
        }
    }
    return ran;
}

host::InputStatus CliHost::GetPoint(std::string_view prompt, const cad::Point3d*,
                                    cad::Point3d& picked) {
    if (points.empty()) {
        ShowLines(prompt);
        Complain("no point given on the command line: cancelled");
        declined = true;
        return host::InputStatus::Cancel;
    }
    picked = points.front();
    points.pop_front();
    return host::InputStatus::Normal;
}

host::InputStatus CliHost::Drag(cad::Handle, std::string_view prompt, const host::DragTransform&,
                                cad::Point3d& picked) {
    return GetPoint(prompt, nullptr, picked);
}

std::string CliHost::GetVariable(std::string_view name) {
    const auto it = variables.find(files::UpperAscii(name));
    return it == variables.end() ? std::string() : it->second;
}

std::string CliHost::GetEnvironment(std::string_view name) {
    const auto it = environment.find(std::string(name));
    return it == environment.end() ? std::string() : it->second;
}

void CliHost::SetEnvironment(std::string_view name, std::string_view value) {
    environment[std::string(name)] = std::string(value);
}

bool CliHost::AddCommand(std::string_view group, std::string_view globalName,
                         std::string_view localName, int flags, host::CommandHandler handler) {
    return commands_.Add(group, globalName, localName, flags, std::move(handler));
}

void CliHost::RemoveGroup(std::string_view group) {
    commands_.RemoveGroup(group);
}

}  // namespace cli
