// The drawing dialog's buttons: refresh, settings, the two draw buttons and close, and the
// location read from the current drawing's saved file.
#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "cad/Dxf.h"
#include "draw/DlgPlcRendal.h"
#include "host/Host.h"
#include "host/SuiteServices.h"

namespace {

// The suite keeps a drawing's installation location in this dictionary entry. The
// dictionary's spelling belongs to the drawing format and must stay as it is.
constexpr const char* kLocationDictionary = "QV_DWG_DICITIONARY";
constexpr const char* kLocationRecord = "QV_LOCATION_XRECORD";

// The location stored in a saved drawing; empty when the drawing was never saved under a
// name, cannot be read, or holds none.
std::string ReadDrawingLocation(const std::string& path, bool titled) {
    std::error_code ec;
    if (!titled || path.empty() || !std::filesystem::is_regular_file(path, ec)) {
        return {};
    }
    std::string error;
    const auto db = cad::TryReadDxfFile(path, error);
    if (!db) {
        return {};
    }
    const cad::Handle dict = db->FindDictionary(kLocationDictionary);
    if (dict == cad::kNullHandle) {
        return {};
    }
    const cad::XRecord* record = db->FindXRecord(dict, kLocationRecord);
    if (record == nullptr) {
        return {};
    }
    std::string value = record->Value(1);
    if (value.empty() && !record->data.empty()) {
        value = record->data.front().value;
    }
    return value;
}

std::string WithoutBlanks(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

std::string Format2(const char* format, const std::string& a, const std::string& b) {
    const int size = std::snprintf(nullptr, 0, format, a.c_str(), b.c_str());
    std::string text(static_cast<size_t>(std::max(size, 0)) + 1, '\0');
    std::snprintf(text.data(), text.size(), format, a.c_str(), b.c_str());
    text.resize(static_cast<size_t>(std::max(size, 0)));
    return text;
}

}  // namespace

void CDlgPlcRendal::FillLocation() {
    host::IHost& h = host::Current();
    const std::string path = h.GetVariable("dwgprefix") + h.GetVariable("dwgname");
    const std::string titled = h.GetVariable("dwgtitled");
    editLocation = ReadDrawingLocation(path, !titled.empty() && titled != "0");
}

void CDlgPlcRendal::SaveLastSelection() {
    if (!dialog::WriteLastSelection(lastSelection)) {
        host::Print("\n无法写入文件" + dialog::LastSelectionPath() + "\n");
    }
}

void CDlgPlcRendal::OnMatchMode(int mode) {
    matchMode = mode == 1 ? 1 : 0;
}

void CDlgPlcRendal::OnRefresh() {
    SaveLastSelection();
    BuildTree();
    FillLocation();
}

void CDlgPlcRendal::OnSettings() {
    const dialog::ModalRunner<CPLCSettingSheetDlg> cancelled = [](CPLCSettingSheetDlg&) {
        return false;
    };
    RunPlcSettingSheet(*this, settingsSheetRunner ? settingsSheetRunner : cancelled);
}

bool CDlgPlcRendal::PrepareDraw() {
    if (termList.Count() == 0) {
        return false;
    }
    bool anyChosen = false;
    for (int i = 0; i < termList.Count() && !anyChosen; ++i) {
        anyChosen = IsMarked(termList.StateImage(i));
    }
    if (!anyChosen) {
        return false;
    }
    const std::string tag = WithoutBlanks(editTag);
    if (tag.empty() || tag == "-") {
        host::ShowMessage("请输入标号", "Zandrix", host::MsgIcon::Exclamation);
        focus = "editTag";
        tagTextSelected = true;
        return false;
    }
    if (termSymbolPath.empty()) {
        termSymbolPath =
            suite::PathJoin(suite::GetZandrixCommonResInstallPath(), "SYMB2LIB/SYMB2_S_KTR5.dxf");
        termSymbolName = "SYMB2_S_KTR5";
        typeWidth = 10.0f;
        termDirection = 2;
        termLength = 5.0f;
        componentType = 1;
    }
    std::error_code ec;
    if (!std::filesystem::is_regular_file(termSymbolPath, ec)) {
        host::ShowMessage(Format2("符号%s对应库文件%s已被破坏,请选择另外的符号！", termSymbolName,
                                  termSymbolPath),
                          "Zandrix", host::MsgIcon::Exclamation);
        return false;
    }
    return true;
}

void CDlgPlcRendal::RequestDraw(std::string_view command) {
    reshowPending = false;
    Minimize();
    host::Current().SendCommandString(command);
    drawPending = true;
}

void CDlgPlcRendal::OnDrawFull() {
    if (PrepareDraw()) {
        RequestDraw("(Command)\nRendalFull\n");
    }
}

void CDlgPlcRendal::OnDrawDivided() {
    if (PrepareDraw()) {
        RequestDraw("(Command)\nDivRendal\n");
    }
}

void CDlgPlcRendal::OnClose() {
    if (drawBusy) {
        return;
    }
    SaveLastSelection();
    DestroyWindow();
    if (onClosed) {
        // The owner deletes this object here; nothing of it may be used afterwards.
        auto closed = onClosed;
        closed(this);
    }
}
