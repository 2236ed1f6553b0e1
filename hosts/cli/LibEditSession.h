// One run of the library editor for the command line: the plug-in is loaded, the editor
// command opens the editor on the library, the steps click through it, and closing it writes
// the last selection and gives the library back, exactly as a user's session would.
#pragma once

#include <string>

#include "CliHost.h"
#include "app/PlcRendalApp.h"

class CDlgPlcDataLibEdit;

namespace cli {

class EditSession {
public:
    explicit EditSession(CliHost& host) : host(host) {}
    ~EditSession();
    EditSession(const EditSession&) = delete;
    EditSession& operator=(const EditSession&) = delete;

    // Opens the editor on `library`; `named` when the user named that file rather than the
    // one of the local folder. The exit code; on failure the reason was reported.
    int Open(const std::string& library, bool named);
    CDlgPlcDataLibEdit& Editor() { return *editor_; }
    const std::string& Library() const { return library_; }
    // Closes the editor as its close button does and unloads the plug-in.
    void Close();

    CliHost& host;

private:
    app::CPlcRendalApp plugin_;
    bool loaded_ = false;
    CDlgPlcDataLibEdit* editor_ = nullptr;
    std::string library_;
};

}  // namespace cli
