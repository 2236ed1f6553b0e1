#include "host/Host.h"

#include <cstdio>

namespace host {
namespace {

// Stands in before a host is installed: a library call that reports never goes unheard,
// and no question is ever answered with consent.
class StderrHost final : public IHost {
public:
    void Print(std::string_view text) override {
        std::fwrite(text.data(), 1, text.size(), stderr);
    }
    MsgResult MessageBox(const MessageBoxRequest& request) override {
        std::fprintf(stderr, "%s: %s\n", request.caption.c_str(), request.text.c_str());
        switch (request.buttons) {
            case MsgButtons::Ok:
                return MsgResult::Ok;
            case MsgButtons::OkCancel:
                return MsgResult::Cancel;
            default:
                return MsgResult::No;
        }
    }
    void SetWaitCursor(bool) override {}
    void ActivateMainWindow() override {}
    void LockDocument() override {}
    void UnlockDocument() override {}
    void SendCommandString(std::string_view) override {}
    cad::Database* WorkingDatabase() override { return nullptr; }
    InputStatus GetPoint(std::string_view, const cad::Point3d*, cad::Point3d&) override {
        return InputStatus::Cancel;
    }
    InputStatus Drag(cad::Handle, std::string_view, const DragTransform&,
                     cad::Point3d&) override {
        return InputStatus::Cancel;
    }
    cad::Point3d UcsToWcs(const cad::Point3d& point) override { return point; }
    std::string GetVariable(std::string_view) override { return {}; }
    std::string GetEnvironment(std::string_view) override { return {}; }
    void SetEnvironment(std::string_view, std::string_view) override {}
    bool AddCommand(std::string_view, std::string_view, std::string_view, int,
                    CommandHandler) override {
        return false;
    }
    void RemoveGroup(std::string_view) override {}
};

StderrHost fallbackHost;
IHost* currentHost = nullptr;

}  // namespace

IHost& Current() { return currentHost ? *currentHost : fallbackHost; }

void Install(IHost* host) { currentHost = host; }

ScopedHost::ScopedHost(IHost& host) : previous_(currentHost) { currentHost = &host; }

ScopedHost::~ScopedHost() { currentHost = previous_; }

MsgResult ShowMessage(std::string_view text, std::string_view caption, MsgIcon icon,
                      MsgButtons buttons) {
    return Current().MessageBox({std::string(text), std::string(caption), icon, buttons});
}

void Print(std::string_view text) { Current().Print(text); }

}  // namespace host
