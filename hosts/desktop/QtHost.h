// The host interface in the desktop program: the command line prints, message boxes are
// Qt's, points come from clicks in the drawing view or typed "X,Y", Esc cancels. Commands run
// one at a time; a command that asks for a point waits in a nested event loop, so the window
// (and the plug-in's modeless dialogs) stays alive meanwhile.
#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/CommandRegistry.h"
#include "host/Host.h"

class QEventLoop;
class QWidget;

namespace desktop {

class CommandLine;
class DesktopSettings;
class Document;
class DrawingView;

// What the host reaches of the window.
struct HostParts {
    QWidget* window = nullptr;
    CommandLine* commandLine = nullptr;
    DrawingView* view = nullptr;
    Document* document = nullptr;
    DesktopSettings* settings = nullptr;
    std::function<void()> documentChanged;  // title and view follow the drawing
};

class QtHost : public QObject, public host::IHost {
    Q_OBJECT
public:
    explicit QtHost(HostParts parts);
    ~QtHost() override;

    host::CommandRegistry& Registry() { return registry_; }
    const host::CommandRegistry& Registry() const { return registry_; }

    // One line typed into the command line: the answer to a point request, or a command
    // with its arguments. "" when it was taken, else what was wrong.
    std::string TypeLine(const std::string& line);
    // Esc: cancels the point request waiting, if any.
    void Escape();
    // The text after the command name of the command running ("ZOOM E": "E").
    const std::string& Arguments() const { return arguments_; }

    bool Busy() const { return runDepth_ > 0; }
    bool WaitingForInput() const { return inputLoop_ != nullptr; }
    bool HasPendingCommands() const { return !pending_.empty(); }

    // Message boxes: a hook (tests) answers first; in a script, queued answers (or the
    // cautious default) instead of a window. Every box is recorded.
    std::function<std::optional<host::MsgResult>(const host::MessageBoxRequest&)> messageHook;
    bool scripted = false;
    std::deque<host::MsgResult> scriptedAnswers;
    std::vector<host::MessageBoxRequest> shownMessages;
    int LockDepth() const { return lockDepth_; }

    // IHost
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
    cad::Point3d UcsToWcs(const cad::Point3d& point) override { return point; }
    std::string GetVariable(std::string_view name) override;
    std::string GetEnvironment(std::string_view name) override;
    void SetEnvironment(std::string_view name, std::string_view value) override;
    bool AddCommand(std::string_view group, std::string_view globalName, std::string_view localName,
                    int flags, host::CommandHandler handler) override;
    void RemoveGroup(std::string_view group) override;

public Q_SLOTS:
    void OnPointClicked(const cad::Point3d& world);
    // Runs the queued command strings once no command is running.
    void RunPending();

private:
    std::string RunCommand(const std::string& line);
    host::InputStatus WaitForInput(std::string_view prompt, cad::Point3d& picked);
    void Answer(host::InputStatus status, const cad::Point3d& point = {});
    void AfterCommand();

    HostParts parts_;
    host::CommandRegistry registry_;
    std::deque<std::string> pending_;
    std::string arguments_;
    int runDepth_ = 0;
    int waitDepth_ = 0;
    int lockDepth_ = 0;
    bool pendingScheduled_ = false;
    QEventLoop* inputLoop_ = nullptr;
    host::InputStatus inputStatus_ = host::InputStatus::Cancel;
    cad::Point3d inputPoint_;
};

}  // namespace desktop
