// A host for tests: records every call and answers from a script. Questions without a
// scripted answer are answered with Cancel/No, and points without one with Cancel, so a
// test that forgets to script an answer sees the cautious path, never a silent success.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "host/CommandRegistry.h"
#include "host/Host.h"

namespace testing_support {

struct PointAnswer {
    host::InputStatus status = host::InputStatus::Normal;
    cad::Point3d point;
};

using host::RegisteredCommand;

class RecordingHost : public host::IHost {
public:
    // What was recorded.
    std::vector<std::string> printed;
    std::vector<host::MessageBoxRequest> messages;
    std::vector<std::string> sentCommands;
    std::vector<std::string> prompts;
    std::vector<std::string> calls;  // every call by name, in order
    host::CommandRegistry commands;
    int lockDepth = 0;
    bool waitCursor = false;

    // What it answers.
    std::deque<host::MsgResult> messageAnswers;
    std::deque<PointAnswer> pointAnswers;
    std::map<std::string, std::string> variables;
    std::map<std::string, std::string> environment;
    cad::Database* database = nullptr;
    cad::Ucs ucs;

    std::string AllPrinted() const;
    // Texts of the message boxes shown, in order.
    std::vector<std::string> MessageTexts() const;
    // Runs the queued command strings the way a CAD host's command line does: each line
    // naming a registered command runs its handler. Returns how many handlers ran.
    int RunSentCommands();

    void Print(std::string_view text) override;
    host::MsgResult MessageBox(const host::MessageBoxRequest& request) override;
    void SetWaitCursor(bool on) override;
    void ActivateMainWindow() override;
    void LockDocument() override;
    void UnlockDocument() override;
    void SendCommandString(std::string_view text) override;
    cad::Database* WorkingDatabase() override;
    host::InputStatus GetPoint(std::string_view prompt, const cad::Point3d* base,
                               cad::Point3d& picked) override;
    host::InputStatus Drag(cad::Handle entity, std::string_view prompt,
                           const host::DragTransform& transform, cad::Point3d& picked) override;
    cad::Point3d UcsToWcs(const cad::Point3d& point) override;
    std::string GetVariable(std::string_view name) override;
    std::string GetEnvironment(std::string_view name) override;
    void SetEnvironment(std::string_view name, std::string_view value) override;
    bool AddCommand(std::string_view group, std::string_view globalName, std::string_view localName,
                    int flags, host::CommandHandler handler) override;
    void RemoveGroup(std::string_view group) override;

    // The last transform applied by Drag, for checks of drag placement.
    cad::Matrix3d lastDragTransform;

private:
    size_t sentRun_ = 0;
};

}  // namespace testing_support
