// Everything the plug-in asks of the program that loads it goes through IHost: the command
// line, message boxes, the wait cursor, the current document and interactive input. A CAD
// host, the command-line host and the recording test host each implement it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "cad/Geometry.h"
#include "cad/Handle.h"

namespace cad {
class Database;
}

namespace host {

enum class MsgIcon { None, Error, Exclamation, Question, Information };
enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MsgResult { Ok, Cancel, Yes, No };

// Outcome of an interactive input request, as CAD hosts report it.
enum class InputStatus { Normal, Cancel, None, Error };

struct MessageBoxRequest {
    std::string text;
    std::string caption;
    MsgIcon icon = MsgIcon::None;
    MsgButtons buttons = MsgButtons::Ok;
};

using CommandHandler = std::function<void()>;

// Maps the cursor point (world coordinates) to the transform applied to the dragged
// selection for that frame.
using DragTransform = std::function<cad::Matrix3d(const cad::Point3d& cursor)>;

class IHost {
public:
    virtual ~IHost() = default;

    // Command line and messages.
    virtual void Print(std::string_view text) = 0;
    virtual MsgResult MessageBox(const MessageBoxRequest& request) = 0;
    virtual void SetWaitCursor(bool on) = 0;
    virtual void ActivateMainWindow() = 0;

    // Document: the host locks the current document while a modal sheet edits it.
    virtual void LockDocument() = 0;
    virtual void UnlockDocument() = 0;
    // Queues text to be executed as typed input in the current document after the caller
    // returns, as a CAD host does with its document manager.
    virtual void SendCommandString(std::string_view text) = 0;
    // The current drawing; null when no drawing is open.
    virtual cad::Database* WorkingDatabase() = 0;

    // Interactive input. `base`, when given, draws a rubber band from it.
    virtual InputStatus GetPoint(std::string_view prompt, const cad::Point3d* base,
                                 cad::Point3d& picked) = 0;
    // Drags `entity` under `transform` until a point is picked or the user cancels.
    virtual InputStatus Drag(cad::Handle entity, std::string_view prompt,
                             const DragTransform& transform, cad::Point3d& picked) = 0;
    virtual cad::Point3d UcsToWcs(const cad::Point3d& point) = 0;

    // Host variables (dwgprefix, dwgname, dwgtitled) and environment settings
    // (DefaultFormatForSave). An unknown name reads as empty text.
    virtual std::string GetVariable(std::string_view name) = 0;
    virtual std::string GetEnvironment(std::string_view name) = 0;
    virtual void SetEnvironment(std::string_view name, std::string_view value) = 0;

    // The registered-commands service.
    virtual bool AddCommand(std::string_view group, std::string_view globalName,
                            std::string_view localName, int flags, CommandHandler handler) = 0;
    virtual void RemoveGroup(std::string_view group) = 0;
};

// The host that loaded the plug-in. Until one is installed, a host that writes messages to
// standard error and answers every question with Cancel or No stands in.
IHost& Current();
void Install(IHost* host);

// Installs a host for the lifetime of the guard and puts the previous one back.
class ScopedHost {
public:
    explicit ScopedHost(IHost& host);
    ~ScopedHost();
    ScopedHost(const ScopedHost&) = delete;
    ScopedHost& operator=(const ScopedHost&) = delete;

private:
    IHost* previous_;
};

// Shorthands for the plug-in's messages.
MsgResult ShowMessage(std::string_view text, std::string_view caption, MsgIcon icon,
                      MsgButtons buttons = MsgButtons::Ok);
void Print(std::string_view text);

}  // namespace host
