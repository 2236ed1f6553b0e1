#include "draw/settings/SettingPages.h"

// ---- CDrawSettingDlg

CDrawSettingDlg::CDrawSettingDlg() {
    const auto lines = drawsettings::ReadSettingLines();
    formats = drawsettings::LoadFormatTerminals(lines ? &*lines : nullptr);
}

int CDrawSettingDlg::Index(int format) {
    return (format >= 1 && format <= drawsettings::kFormatCount) ? format - 1 : 0;
}

void CDrawSettingDlg::ShowFormat() {
    checkedRadio = selectedFormat;
    for (int i = 0; i < drawsettings::kFormatCount; ++i) {
        termButtonEnabled[i] = (i == Index(selectedFormat));
    }
    previewPath = drawsettings::FormatPreviewPath(selectedFormat);
}

void CDrawSettingDlg::OnInitDialog() {
    ShowFormat();
}

void CDrawSettingDlg::OnClickFormat(int format) {
    if (format < 1 || format > drawsettings::kFormatCount) {
        return;
    }
    selectedFormat = format;
    ShowFormat();
}

CDlgDrawSet CDrawSettingDlg::MakeDrawSet(int format) const {
    const drawsettings::FormatTerminal& terminal = Format(format);
    CDlgDrawSet dialog;
    dialog.termLength = terminal.length;
    dialog.termDirection = terminal.direction;
    dialog.termName = terminal.name;
    dialog.widthText = terminal.widthText;
    dialog.termPath = terminal.path;
    dialog.spacingText = spacingText;
    return dialog;
}

void CDrawSettingDlg::TakeDrawSet(int format, const CDlgDrawSet& dialog) {
    drawsettings::FormatTerminal& terminal = Format(format);
    terminal.widthText = dialog.widthText;
    terminal.name = dialog.termName;
    terminal.direction = dialog.termDirection;
    terminal.length = dialog.termLength;
    terminal.path = dialog.termPath;
    // One spacing serves all three formats.
    spacingText = dialog.spacingText;
}

bool CDrawSettingDlg::OnTermSetting(int format, const dialog::ModalRunner<CDlgDrawSet>& runDialog) {
    if (format < 1 || format > drawsettings::kFormatCount || !termButtonEnabled[Index(format)]) {
        return false;
    }
    CDlgDrawSet dialog = MakeDrawSet(format);
    if (!runDialog || !runDialog(dialog)) {
        return false;
    }
    TakeDrawSet(format, dialog);
    return true;
}

// ---- CLabelSettingDlg

void CLabelSettingDlg::OnInitDialog() {
    checked = flags;
}

void CLabelSettingDlg::OnClick(Box box) {
    if (box < 0 || box >= kBoxCount) {
        return;
    }
    checked[box] = !checked[box];
    flags[box] = checked[box];
}

void CLabelSettingDlg::SeedFrom(const PlcDrawSettings& s) {
    flags = {s.labelManufacturer,     s.labelModuleDesc,       s.labelModuleCode,
             s.labelFrameNo,          s.labelSlotNo,           s.labelManufacturerPrefix,
             s.labelModuleDescPrefix, s.labelModuleCodePrefix, s.labelFramePrefix,
             s.labelSlotPrefix};
}

void CLabelSettingDlg::CopyTo(PlcDrawSettings& s) const {
    s.labelManufacturer = flags[Manufacturer];
    s.labelModuleDesc = flags[ModuleDesc];
    s.labelModuleCode = flags[ModuleCode];
    s.labelFrameNo = flags[FrameNo];
    s.labelSlotNo = flags[SlotNo];
    s.labelManufacturerPrefix = flags[ManufacturerPrefix];
    s.labelModuleDescPrefix = flags[ModuleDescPrefix];
    s.labelModuleCodePrefix = flags[ModuleCodePrefix];
    s.labelFramePrefix = flags[FramePrefix];
    s.labelSlotPrefix = flags[SlotPrefix];
}

// ---- CSymbBomSettingDlg

void CSymbBomSettingDlg::EnableLists() {
    nameListEnabled = autoDetailChecked;
    modelListEnabled = autoDetailModelChecked;
}

void CSymbBomSettingDlg::OnInitDialog() {
    autoDetailChecked = autoDetail;
    autoDetailModelChecked = autoDetailModel;
    nameListSelection = 0;
    modelListSelection = (detailModelType == 0 || detailModelType == 1) ? detailModelType : -1;
    EnableLists();
    focus = 0;
}

void CSymbBomSettingDlg::OnClickAutoDetail() {
    autoDetailChecked = !autoDetailChecked;
    autoDetail = autoDetailChecked;
    EnableLists();
}

void CSymbBomSettingDlg::OnClickAutoDetailModel() {
    autoDetailModelChecked = !autoDetailModelChecked;
    autoDetailModel = autoDetailModelChecked;
    EnableLists();
}

void CSymbBomSettingDlg::OnSelectModel(int index) {
    if (index == 0 || index == 1) {
        modelListSelection = index;
        detailModelType = index;
    }
}
