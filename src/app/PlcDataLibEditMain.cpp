#include "app/PlcDataLibEditMain.h"

#include "host/Host.h"
#include "host/SuiteServices.h"
#include "libedit/DlgDbImport.h"
#include "libedit/DlgPlcDataLibEdit.h"
#include "netlib/MyFtpConnection.h"
#include "netlib/NetworkRuns.h"

CDlgPlcDataLibEdit* g_pDlgPlcDataLibEdit = nullptr;

namespace app {

// The library goes back to the server and the editing lock is released; the connection
// reports its own failures.
std::function<void()> g_checkInLibrary = [] { CMyFtpConnection().CheckInLibrary(); };
dialog::ModalRunner<CDlgDbImport> g_importRunner;

namespace {

bool EnsureEditor() {
    if (g_pDlgPlcDataLibEdit != nullptr) {
        return true;
    }
    g_pDlgPlcDataLibEdit = new CDlgPlcDataLibEdit();
    g_pDlgPlcDataLibEdit->onClosed = OnLibraryEditorClosed;
    libedit::WireImport(*g_pDlgPlcDataLibEdit, [](CDlgDbImport& import) {
        return g_importRunner && g_importRunner(import);
    });
    if (!g_pDlgPlcDataLibEdit->Create()) {
        delete g_pDlgPlcDataLibEdit;
        g_pDlgPlcDataLibEdit = nullptr;
    }
    return g_pDlgPlcDataLibEdit != nullptr;
}

}  // namespace

void CPlcDataLibEditMain::Run() {
    // An ordinary network client may draw from the library but never edit it.
    if (suite::GetCurZandrixInstallStyle() == 2) {
        host::Print("普通客户端无运行此命令的权限！\n");
        return;
    }
    host::Current().ActivateMainWindow();
    if (g_pDlgPlcDataLibEdit == nullptr && suite::GetCurZandrixInstallStyle() == 1 &&
        netlib::RunEditorServerSteps() != netlib::ServerSteps::GoOn) {
        return;  // every failure of the server steps ends the run before the editor opens
    }
    if (!EnsureEditor()) {
        return;
    }
    CDlgPlcDataLibEdit& dlg = *g_pDlgPlcDataLibEdit;
    dlg.Refresh();
    dlg.Show();
    dlg.Activate();
    if (dlg.minimized) {
        dlg.Restore();
    }
}

void OnLibraryEditorClosed(CDlgPlcDataLibEdit* dlg) {
    if (suite::GetCurZandrixInstallStyle() == 1 && g_checkInLibrary) {
        g_checkInLibrary();
    }
    if (g_pDlgPlcDataLibEdit == dlg) {
        g_pDlgPlcDataLibEdit = nullptr;
    }
    delete dlg;
}

void DestroyLibraryEditor() {
    if (g_pDlgPlcDataLibEdit != nullptr && g_pDlgPlcDataLibEdit->DestroyWindow()) {
        delete g_pDlgPlcDataLibEdit;
        g_pDlgPlcDataLibEdit = nullptr;
    }
}

}  // namespace app
