#include "draw/settings/PLCSettingSheetDlg.h"

#include "draw/settings/SettingRanges.h"
#include "draw/settings/SettingsFile.h"
#include "draw/settings/SettingsText.h"
#include "host/Host.h"

namespace {

// Keeps the current document locked while the sheet is open, whichever way it closes.
class DocumentLock {
public:
    DocumentLock() { host::Current().LockDocument(); }
    ~DocumentLock() { host::Current().UnlockDocument(); }
    DocumentLock(const DocumentLock&) = delete;
    DocumentLock& operator=(const DocumentLock&) = delete;
};

// A value the sheet takes from a page, or the setting's default when it lies outside the
// setting's range (the page shows what the file holds; loading the file warns about it).
template <class T>
T InRangeOr(const char* key, double value) {
    const drawsettings::SettingRange& range = *drawsettings::FindSettingRange(key);
    return static_cast<T>(drawsettings::InSettingRange(range, value) ? value : range.fallback);
}

}  // namespace

float FixedTermLength(std::string_view symbolName, float measured) {
    if (symbolName == "SYMB2_S_01" || symbolName == "SYMB2_S_02" || symbolName == "SYMB2_S_03" ||
        symbolName == "SYMB2_S_04") {
        return 5.0f;
    }
    if (symbolName == "SYMB2_S_20" || symbolName == "SYMB2_S_210") {
        return 3.75f;
    }
    return measured;
}

CPLCSettingSheetDlg::CPLCSettingSheetDlg(PlcDrawSettings& settings) : settings_(settings) {
    drawPage.selectedFormat = settings.componentType;
    drawPage.spacingText = drawsettings::FormatFixed(settings.termSpacing, 1);
    labelPage.SeedFrom(settings);
    bomPage.autoDetail = settings.autoDetail;
    bomPage.autoDetailModel = settings.autoDetailModel;
    bomPage.detailModelType = settings.detailModelType;
}

bool CPLCSettingSheetDlg::OnOK() {
    PlcDrawSettings& s = settings_;
    s.termSpacing = InRangeOr<float>("termSpacing", drawsettings::ParseReal(drawPage.spacingText));
    s.componentType = drawPage.selectedFormat;
    const drawsettings::FormatTerminal& terminal = drawPage.Format(s.componentType);
    s.typeWidth = InRangeOr<float>("typeWidth", drawsettings::ParseReal(terminal.widthText));
    // A name that would lead out of SYMB2LIB gives the format's own symbol.
    s.termSymbolName = drawsettings::IsPlainSymbolName(terminal.name)
                           ? terminal.name
                           : drawsettings::DefaultFormatTerminal(s.componentType).name;
    s.termDirection = InRangeOr<int>("termDirection", terminal.direction);
    // The path is rebuilt from the name: the symbol always comes from the library folder.
    s.termSymbolPath = drawsettings::SymbolPathFor(s.termSymbolName);
    s.termLength =
        FixedTermLength(s.termSymbolName, InRangeOr<float>("termLength", terminal.length));
    labelPage.CopyTo(s);
    s.autoDetail = bomPage.autoDetail;
    s.autoDetailModel = bomPage.autoDetailModel;
    s.detailModelType = bomPage.detailModelType;
    // A settings file that cannot be written is not reported from here.
    return drawsettings::WriteSettingsFile(PlcDrawSettingFilePath(),
                                           drawsettings::FullFormText(drawPage.formats, s));
}

bool RunPlcSettingSheet(PlcDrawSettings& settings, const dialog::ModalRunner<CPLCSettingSheetDlg>& runSheet,
                        bool* fileWritten) {
    DocumentLock lock;
    CPLCSettingSheetDlg sheet(settings);
    if (fileWritten) {
        *fileWritten = false;
    }
    if (!runSheet || !runSheet(sheet)) {
        return false;
    }
    const bool written = sheet.OnOK();
    if (fileWritten) {
        *fileWritten = written;
    }
    return true;
}
