#include "RecordingHost.h"

namespace testing_support {
std::string RecordingHost::AllPrinted() const {
    std::string all;
    for (const auto& p : printed) {
        all += p;
    }
    return all;
}

std::vector<std::string> RecordingHost::MessageTexts() const {
    std::vector<std::string> texts;
    for (const auto& m : messages) {
        texts.push_back(m.text);
    }
    return texts;
}

int RecordingHost::RunSentCommands() {
    int ran = 0;
    while (sentRun_ < sentCommands.size()) {
        for (const std::string& line : host::CommandStringLines(sentCommands[sentRun_++])) {
            if (commands.Run(line)) {
                ++ran;
            }
        }
    }
    return ran;
}

void RecordingHost::Print(std::string_view text) {
    calls.push_back("Print");
    printed.emplace_back(text);
}

host::MsgResult RecordingHost::MessageBox(const host::MessageBoxRequest& request) {
    calls.push_back("MessageBox");
    messages.push_back(request);
    if (!messageAnswers.empty()) {
        const auto answer = messageAnswers.front();
        messageAnswers.pop_front();
        return answer;
    }
    switch (request.buttons) {
        case host::MsgButtons::Ok:
            return host::MsgResult::Ok;
        case host::MsgButtons::OkCancel:
            return host::MsgResult::Cancel;
        default:
            return host::MsgResult::No;
    }
}

void RecordingHost::SetWaitCursor(bool on) {
    calls.push_back(on ? "WaitCursorOn" : "WaitCursorOff");
    waitCursor = on;
}

void RecordingHost::ActivateMainWindow() {
    calls.push_back("ActivateMainWindow");
}

void RecordingHost::LockDocument() {
    calls.push_back("LockDocument");
    ++lockDepth;
}

void RecordingHost::UnlockDocument() {
    calls.push_back("UnlockDocument");
    --lockDepth;
}

void RecordingHost::SendCommandString(std::string_view text) {
    calls.push_back("SendCommandString");
    if (!text.empty()) {
        sentCommands.emplace_back(text);
    }
}

cad::Database* RecordingHost::WorkingDatabase() {
    return database;
}

host::InputStatus RecordingHost::GetPoint(std::string_view prompt, const cad::Point3d*,
                                          cad::Point3d& picked) {
    calls.push_back("GetPoint");
    prompts.emplace_back(prompt);
    if (pointAnswers.empty()) {
        return host::InputStatus::Cancel;
    }
    const auto answer = pointAnswers.front();
    pointAnswers.pop_front();
    picked = answer.point;
    return answer.status;
}

host::InputStatus RecordingHost::Drag(cad::Handle, std::string_view prompt,
                                      const host::DragTransform& transform, cad::Point3d& picked) {
    calls.push_back("Drag");
    prompts.emplace_back(prompt);
    if (pointAnswers.empty()) {
        return host::InputStatus::Cancel;
    }
    const auto answer = pointAnswers.front();
    pointAnswers.pop_front();
    picked = answer.point;
    if (answer.status == host::InputStatus::Normal && transform) {
        lastDragTransform = transform(UcsToWcs(answer.point));
    }
    return answer.status;
}

cad::Point3d RecordingHost::UcsToWcs(const cad::Point3d& point) {
    return ucs.ToWorld(point);
}

std::string RecordingHost::GetVariable(std::string_view name) {
    const auto it = variables.find(std::string(name));
    return it == variables.end() ? std::string() : it->second;
}

std::string RecordingHost::GetEnvironment(std::string_view name) {
    const auto it = environment.find(std::string(name));
    return it == environment.end() ? std::string() : it->second;
}

void RecordingHost::SetEnvironment(std::string_view name, std::string_view value) {
    calls.push_back("SetEnvironment");
    environment[std::string(name)] = std::string(value);
}

bool RecordingHost::AddCommand(std::string_view group, std::string_view globalName,
                               std::string_view localName, int flags,
                               host::CommandHandler handler) {
    calls.push_back("AddCommand");
    return commands.Add(group, globalName, localName, flags, std::move(handler));
}

void RecordingHost::RemoveGroup(std::string_view group) {
    calls.push_back("RemoveGroup");
    commands.RemoveGroup(group);
}

}  // namespace testing_support
