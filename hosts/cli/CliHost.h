// The command-line host: command-line printing and message boxes go to standard error, one
// prefixed line each (standard output is for results), questions are answered by --yes / --no (and
// refused when neither was given), and points come from options, in the order the command will ask
// for them.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "host/CommandRegistry.h"
#include "host/Host.h"

namespace cli {

enum class Answer { None, Yes, No };

class CliHost : public host::IHost {
public:
    Answer answer = Answer::None;
    std::deque<cad::Point3d> points;  // answers to GetPoint and Drag, in order
    cad::Database* database = nullptr;
    bool quiet = false;  // suppress command-line printing
    // True once a question went unanswered or a point was missing: the exit code says so.
    bool declined = false;

    // Runs the command strings queued by SendCommandString through the registered commands,
    // as a CAD host does after the handler that sent them returns. Returns how many ran.
    int RunPendingCommands();

    void Print(std::string_view text) override;
    host::MsgResult MessageBox(const host::MessageBoxRequest& request) override;
    void SetWaitCursor(bool) override {}
    void ActivateMainWindow() override {}
    void LockDocument() override {}
    void UnlockDocument() override {}
    void SendCommandString(std::string_view text) override;
    cad::Database* WorkingDatabase() override { return database; }
    host::InputStatus GetPoint(std::string_view prompt, const cad::Point3d* base,
                               cad::Point3d& picked) override;
    host::InputStatus Drag(cad::Handle entity, std::string_view prompt,
                           const host::DragTransform& transform, cad::Point3d& picked) override;
    cad::Point3d UcsToWcs(const cad::Point3d& point) override { return point; }
    std::string GetVariable(std::string_view name) override;
    std::string GetEnvironment(std::string_view name) override;
    void SetEnvironment(std::string_view name, std::string_view value) override;
    bool AddCommand(std::string_view group, std::string_view globalName, std::string_view localName,
                    int flags, host::CommandHandler handler) override;
    void RemoveGroup(std::string_view group) override;

    std::map<std::string, std::string> variables;
    std::map<std::string, std::string> environment;
    const host::CommandRegistry& Commands() const { return commands_; }

private:
    host::CommandRegistry commands_;
    std::deque<std::string> pending_;
};

}  // namespace cli
