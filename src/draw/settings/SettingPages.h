// The three pages of the settings sheet: drawing format and terminal symbols, labels, and
// the bill-of-materials detail.
#pragma once

#include <array>
#include <string>

#include "draw/settings/DlgDrawSet.h"
#include "dialog/ModalRunner.h"
#include "draw/settings/SettingsFile.h"

// Page 绘制设置: the drawing format (格式1..格式3) and each format's terminal settings.
class CDrawSettingDlg {
public:
    static constexpr const char* kTitle = "绘制设置";

    // Reads every format's values from the settings file (defaults where it has none).
    CDrawSettingDlg();

    int selectedFormat = 1;  // 1..3
    std::string spacingText = "10.0";
    drawsettings::FormatTerminals formats;

    // Control state.
    int checkedRadio = 1;
    std::array<bool, drawsettings::kFormatCount> termButtonEnabled = {true, false, false};
    std::string previewPath;

    drawsettings::FormatTerminal& Format(int format) { return formats[Index(format)]; }
    const drawsettings::FormatTerminal& Format(int format) const { return formats[Index(format)]; }

    // Showing the page.
    void OnInitDialog();
    // A click on radio 格式N.
    void OnClickFormat(int format);
    // The sub-dialog seeded with format `format`'s values and the page's spacing.
    CDlgDrawSet MakeDrawSet(int format) const;
    // Takes the sub-dialog's values back after its OK.
    void TakeDrawSet(int format, const CDlgDrawSet& dialog);
    // Button 端子设置 of format `format` (only the selected format's button is enabled).
    // True when the sub-dialog was closed with OK.
    bool OnTermSetting(int format, const dialog::ModalRunner<CDlgDrawSet>& runDialog);

private:
    static int Index(int format);
    void ShowFormat();
};

// Page 标注设置: which labels are written and which get a Chinese caption.
class CLabelSettingDlg {
public:
    static constexpr const char* kTitle = "标注设置";

    enum Box {
        Manufacturer,
        ModuleDesc,
        ModuleCode,
        FrameNo,
        SlotNo,
        ManufacturerPrefix,
        ModuleDescPrefix,
        ModuleCodePrefix,
        FramePrefix,
        SlotPrefix,
        kBoxCount
    };
    static constexpr std::array<const char*, kBoxCount> kBoxTexts = {
        "厂家简称", "模块描述", "模块代号", "框架号", "槽号",
        "厂家",     "模块描述", "模块代号", "框架号", "槽号"};
    static constexpr const char* kGroupLabels = "是否标注";
    static constexpr const char* kGroupPrefixes = "是否添加汉字文字前缀";

    // The five 是否标注 flags start true; the captions start false until seeded.
    std::array<bool, kBoxCount> flags = {true,  true,  true,  true,  true,
                                         false, false, false, false, false};
    std::array<bool, kBoxCount> checked = {};

    void OnInitDialog();    // every box from its flag
    void OnClick(Box box);  // the box flips and its flag follows at once

    // The flags to and from the settings members.
    void SeedFrom(const PlcDrawSettings& settings);
    void CopyTo(PlcDrawSettings& settings) const;
};

// Page 明细设置: how the detail of the drawn module is filled in.
class CSymbBomSettingDlg {
public:
    static constexpr const char* kTitle = "明细设置";
    static constexpr const char* kNameEntry = "模块描述";
    static constexpr std::array<const char*, 2> kModelEntries = {"模块代号", "厂家简称 模块代号"};

    bool autoDetail = true;
    bool autoDetailModel = true;
    int detailModelType = 0;

    // Control state.
    bool autoDetailChecked = false;
    bool autoDetailModelChecked = false;
    bool nameListEnabled = false;
    int nameListSelection = 0;  // its single entry is always selected
    bool modelListEnabled = false;
    int modelListSelection = -1;
    int focus = -1;  // 0 the first check box

    void OnInitDialog();
    void OnClickAutoDetail();
    void OnClickAutoDetailModel();
    void OnSelectModel(int index);

private:
    void EnableLists();
};
