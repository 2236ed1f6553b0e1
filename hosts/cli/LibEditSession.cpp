#include "LibEditSession.h"

#include "ExitCodes.h"
#include "LibraryCheck.h"
#include "Messages.h"
#include "app/PlcDataLibEditMain.h"
#include "host/SuiteServices.h"
#include "libedit/DlgPlcDataLibEdit.h"

namespace cli {
namespace {

// The editor command creates its editor on the local folder's library; for another file the
// editor is made beforehand, and the command then finds it and only refreshes and shows it.
bool PrepareNamedEditor(const std::string& library) {
    auto* dlg = new CDlgPlcDataLibEdit();
    dlg->libPath = library;
    dlg->onClosed = app::OnLibraryEditorClosed;
    if (!dlg->Create()) {
        delete dlg;
        return false;
    }
    g_pDlgPlcDataLibEdit = dlg;
    return true;
}

int Trouble(const std::string& library) {
    const int code = ExplainLibraryTrouble(library);
    if (code != kExitOk) {
        return code;
    }
    Complainf("the library editor could not be opened on %s", library.c_str());
    return kExitFailure;
}

}  // namespace

EditSession::~EditSession() {
    Close();
}

int EditSession::Open(const std::string& library, bool named) {
    library_ = library;
    plugin_.EntryPoint(app::AppMessage::InitApplication);
    loaded_ = true;
    if (named && !PrepareNamedEditor(library)) {
        return Trouble(library);
    }
    host.SendCommandString("PlcDataLibEdit\n");
    host.RunPendingCommands();
    editor_ = g_pDlgPlcDataLibEdit;
    if (editor_ == nullptr) {
        // An ordinary network client is refused by the command itself, which said so.
        return suite::GetCurZandrixInstallStyle() == 2 ? kExitFailure : Trouble(library);
    }
    if (!editor_->visible) {
        // The command refused to show the editor made beforehand; it said why.
        Close();
        return kExitFailure;
    }
    return kExitOk;
}

void EditSession::Close() {
    if (editor_ != nullptr) {
        CDlgPlcDataLibEdit* closing = editor_;
        editor_ = nullptr;
        closing->OnClose();
    }
    if (loaded_) {
        plugin_.EntryPoint(app::AppMessage::UnloadApplication);
        loaded_ = false;
    }
}

}  // namespace cli
