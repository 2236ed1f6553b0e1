// The settings sheet (设置): pages 绘制设置, 标注设置 and 明细设置, no Apply button. It edits
// the drawing dialog's settings; OK takes the pages' values into them and rewrites the
// settings file in its full form, Cancel leaves everything as it was.
#pragma once

#include <array>
#include <string_view>

#include "dialog/ModalRunner.h"
#include "draw/settings/PlcDrawSettings.h"
#include "draw/settings/SettingPages.h"

class CPLCSettingSheetDlg {
public:
    static constexpr const char* kCaption = "设置";
    static constexpr bool kHasApplyButton = false;
    static constexpr std::array<const char*, 3> kPageTitles = {
        CDrawSettingDlg::kTitle, CLabelSettingDlg::kTitle, CSymbBomSettingDlg::kTitle};

    // Builds the pages (the format page reads its per-format values from the settings file)
    // and seeds them from `settings`.
    explicit CPLCSettingSheetDlg(PlcDrawSettings& settings);

    CDrawSettingDlg drawPage;
    CLabelSettingDlg labelPage;
    CSymbBomSettingDlg bomPage;

    // Takes the pages' values into the settings and writes the full settings file. The
    // settings keep their new values even when the file cannot be written; the result says
    // whether it was.
    bool OnOK();

private:
    PlcDrawSettings& settings_;
};

// The lead length of the known library symbols, which no measure overrides: 5.0 for
// SYMB2_S_01..04, 3.75 for SYMB2_S_20 and SYMB2_S_210; `measured` for any other symbol.
float FixedTermLength(std::string_view symbolName, float measured);

// Button 设置 of the drawing dialog: with the current document locked, shows the sheet
// through `runSheet`, which returns true when the user closed it with OK; the sheet's OK is
// then applied. True when the sheet was closed with OK; `fileWritten`, when given, says
// whether the settings file was rewritten.
bool RunPlcSettingSheet(PlcDrawSettings& settings, const dialog::ModalRunner<CPLCSettingSheetDlg>& runSheet,
                        bool* fileWritten = nullptr);
