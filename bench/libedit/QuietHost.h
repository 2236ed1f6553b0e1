// A host for the editor benchmarks: every question is answered with OK, and only plain
// messages (a failure the benchmark should not hide) are printed, named by the program.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "host/Host.h"

namespace bench {

class QuietHost final : public host::IHost {
public:
    explicit QuietHost(const char* program) : program_(program) {}
    void Print(std::string_view) override {}
    host::MsgResult MessageBox(const host::MessageBoxRequest& request) override {
        if (request.buttons == host::MsgButtons::Ok) {
            std::fprintf(stderr, "%s: %s\n", program_, request.text.c_str());
        }
        return host::MsgResult::Ok;
    }
    void SetWaitCursor(bool) override {}
    void ActivateMainWindow() override {}
    void LockDocument() override {}
    void UnlockDocument() override {}
    void SendCommandString(std::string_view) override {}
    cad::Database* WorkingDatabase() override { return nullptr; }
    host::InputStatus GetPoint(std::string_view, const cad::Point3d*, cad::Point3d&) override {
        return host::InputStatus::Cancel;
    }
    host::InputStatus Drag(cad::Handle, std::string_view, const host::DragTransform&,
                           cad::Point3d&) override {
        return host::InputStatus::Cancel;
    }
    cad::Point3d UcsToWcs(const cad::Point3d& point) override { return point; }
    std::string GetVariable(std::string_view) override { return {}; }
    std::string GetEnvironment(std::string_view) override { return {}; }
    void SetEnvironment(std::string_view, std::string_view) override {}
    bool AddCommand(std::string_view, std::string_view, std::string_view, int,
                    host::CommandHandler) override {
        return true;
    }
    void RemoveGroup(std::string_view) override {}

private:
    const char* program_;
};

}  // namespace bench
