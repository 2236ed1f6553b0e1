#include "app/PlcRendalMain.h"

#include "app/PlcDataLibEditMain.h"

#include <filesystem>

#include "draw/DlgPlcRendal.h"
#include "draw/SheetDrawing.h"
#include "host/Host.h"
#include "host/SuiteServices.h"
#include "netlib/NetworkRuns.h"
#include "plclib/PlcLib.h"

CDlgPlcRendal* g_pDlgPlcRendal = nullptr;

namespace app {

std::function<void(CDlgPlcRendal&)> g_rendalWindowCreated;

namespace {

// Shows the wait cursor for the lifetime of a run.
class WaitCursor {
public:
    WaitCursor() { host::Current().SetWaitCursor(true); }
    ~WaitCursor() { host::Current().SetWaitCursor(false); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

std::string Format(const char* format, const std::string& value) {
    std::string text(format);
    text.replace(text.find("%s"), 2, value);
    return text;
}

// Closing the dialog destroys it: the pointer goes with the object.
void ForgetDialog(CDlgPlcRendal* dlg) {
    if (g_pDlgPlcRendal == dlg) {
        g_pDlgPlcRendal = nullptr;
    }
    delete dlg;
}

// The dialog is created once, hidden; a dialog whose window cannot be created (its library
// does not open) is dropped at once.
bool EnsureDialog() {
    if (g_pDlgPlcRendal != nullptr) {
        return true;
    }
    g_pDlgPlcRendal = new CDlgPlcRendal();
    g_pDlgPlcRendal->onClosed = ForgetDialog;
    if (!g_pDlgPlcRendal->Create()) {
        delete g_pDlgPlcRendal;
        g_pDlgPlcRendal = nullptr;
        return false;
    }
    if (g_rendalWindowCreated) {
        g_rendalWindowCreated(*g_pDlgPlcRendal);
    }
    return true;
}

void ShowDialog(CDlgPlcRendal& dlg) {
    dlg.Show();
    dlg.Activate();
    if (dlg.minimized) {
        dlg.Restore();
    }
}

using SheetDraw = void (*)(CDlgPlcRendal&, cad::Database&);

// The common part of RENDALFULL and DIVRENDAL: reshow the dialog, or draw what it asked for.
void RunDrawingCommand(SheetDraw drawing) {
    WaitCursor wait;
    host::Current().ActivateMainWindow();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    if (dlg == nullptr) {
        return;
    }
    if (dlg->reshowPending) {
        ShowDialog(*dlg);
        dlg->reshowPending = false;
        return;
    }
    if (dlg->drawPending) {
        if (cad::Database* db = host::Current().WorkingDatabase()) {
            drawing(*dlg, *db);
        }
        dlg->drawPending = false;
        return;
    }
    dlg->Restore();
}

void DrawWholeSheet(CDlgPlcRendal& dlg, cad::Database& db) {
    DrawFullSheet(dlg, dlg.CurrentChoice(), db);
}
void DrawInPieces(CDlgPlcRendal& dlg, cad::Database& db) {
    DrawDivided(dlg, dlg.CurrentChoice(), db);
}

}  // namespace

std::string LibraryPath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath);
}

void CPlcRendalMain::RunRendal() {
    const int style = suite::GetCurZandrixInstallStyle();
    if (style == 1 || style == 2) {
        netlib::FetchMissingLibrary();
    }
    WaitCursor wait;
    const std::string path = LibraryPath();
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        host::ShowMessage(Format("PLC元件数据库文件%s不存在", path), "Zandrix 消息",
                          host::MsgIcon::Error);
        return;
    }
    host::Current().ActivateMainWindow();
    if (!EnsureDialog()) {
        return;
    }
    g_pDlgPlcRendal->Refresh();
    ShowDialog(*g_pDlgPlcRendal);
}

void CPlcRendalMain::RunRendalFull() {
    RunDrawingCommand(DrawWholeSheet);
}

void CPlcRendalMain::RunDivRendal() {
    RunDrawingCommand(DrawInPieces);
}

void DestroyPluginDialogs() {
    if (g_pDlgPlcRendal != nullptr && g_pDlgPlcRendal->DestroyWindow()) {
        delete g_pDlgPlcRendal;
        g_pDlgPlcRendal = nullptr;
    }
    DestroyLibraryEditor();
}

}  // namespace app
