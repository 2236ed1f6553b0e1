// The settings sheet and its pages, driven as the user drives them: seeding, the format page,
// the terminal settings dialog with its checks, the label and detail pages, OK and Cancel.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "SettingsFixture.h"
#include "draw/settings/PLCSettingSheetDlg.h"
#include "draw/settings/SettingsText.h"

namespace {

const std::string kReadOnlyMessage =
    "读写设置文件\\Localdataplcdrawsetting.dat出错！可能是文件设置成了只读。";

int LineCount(const std::string& text) {
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace

class SheetTest : public SettingsFixture {
protected:
    // A settings file whose format 2 uses SYMB2_S_210 with a measured length of 9.
    void WriteFormatTwoFile() {
        WriteSettings("端子B路径:" + Common() +
                      "SYMB2LIB/SYMB2_S_210.dxf\n端子B名称:SYMB2_S_210\n"
                      "端子B方向:1\n类型B宽度:15\n端子B长度:9\n元件类型:2\n");
    }
    void ExpectWarning(size_t index, const std::string& text) {
        ASSERT_LT(index, recorder.messages.size());
        EXPECT_EQ(recorder.messages[index].text, text);
        EXPECT_EQ(recorder.messages[index].caption, "Zandrix");
        EXPECT_EQ(recorder.messages[index].icon, host::MsgIcon::Exclamation);
    }
};

TEST_F(SheetTest, SeedsPagesFromTheSettingsAndFormatsFromTheFile) {
    WriteSettings("端子C名称:FromFile\n类型C宽度: 12 \n");
    PlcDrawSettings s;
    s.componentType = 3;
    s.termSymbolName = "InMemory";
    s.termSpacing = 7.25f;
    s.labelFrameNo = false;
    s.labelModuleCodePrefix = false;
    s.autoDetailModel = false;
    s.detailModelType = 1;
    CPLCSettingSheetDlg sheet(s);
    EXPECT_EQ(sheet.drawPage.selectedFormat, 3);
    EXPECT_EQ(sheet.drawPage.spacingText, "7.2");
    EXPECT_EQ(sheet.drawPage.Format(3).name, "FromFile");
    EXPECT_EQ(sheet.drawPage.Format(3).widthText, " 12 ");
    EXPECT_FALSE(sheet.labelPage.flags[CLabelSettingDlg::FrameNo]);
    EXPECT_FALSE(sheet.labelPage.flags[CLabelSettingDlg::ModuleCodePrefix]);
    EXPECT_TRUE(sheet.labelPage.flags[CLabelSettingDlg::SlotPrefix]);
    EXPECT_FALSE(sheet.bomPage.autoDetailModel);
    EXPECT_EQ(sheet.bomPage.detailModelType, 1);
    // Every click on a label box changes its flag at once.
    sheet.labelPage.OnInitDialog();
    sheet.labelPage.OnClick(CLabelSettingDlg::FrameNo);
    EXPECT_TRUE(sheet.labelPage.flags[CLabelSettingDlg::FrameNo]);
}

TEST_F(SheetTest, OkTakesTheSelectedFormatAndWritesTheFullForm) {
    WriteFormatTwoFile();
    PlcDrawSettings s;
    InitPlcDrawSettings(s);
    CPLCSettingSheetDlg sheet(s);
    sheet.drawPage.spacingText = "12.34";
    sheet.labelPage.OnInitDialog();
    sheet.labelPage.OnClick(CLabelSettingDlg::SlotNo);
    sheet.bomPage.OnInitDialog();
    sheet.bomPage.OnSelectModel(1);
    ASSERT_TRUE(sheet.OnOK());

    EXPECT_EQ(s.componentType, 2);
    EXPECT_FLOAT_EQ(s.termSpacing, 12.34f);
    EXPECT_FLOAT_EQ(s.typeWidth, 15.0f);
    EXPECT_EQ(s.termDirection, 1);
    EXPECT_EQ(s.termSymbolPath, Common() + "SYMB2LIB/SYMB2_S_210.dxf");
    EXPECT_FLOAT_EQ(s.termLength, 3.75f);  // a known symbol's length beats the measured 9
    EXPECT_FALSE(s.labelSlotNo);
    EXPECT_EQ(s.detailModelType, 1);

    const std::string written = ReadSettings();
    EXPECT_EQ(LineCount(written), 30);
    EXPECT_NE(written.find("端子B长度:9.000000\n"), std::string::npos);
    EXPECT_NE(written.find("端子间隔距离:12.3\n"), std::string::npos);
    PlcDrawSettings reread;
    InitPlcDrawSettings(reread);
    EXPECT_EQ(reread.componentType, 2);
    EXPECT_EQ(reread.termSymbolName, "SYMB2_S_210");
    EXPECT_FALSE(reread.labelSlotNo);
    EXPECT_FALSE(reread.labelModuleCodePrefix);  // missing from the first file, kept since
    EXPECT_EQ(reread.detailModelType, 1);
    EXPECT_FLOAT_EQ(reread.termLength, 9.0f);  // the file keeps the measured length
}

// The page shows what the file holds, out of range or not, and keeps it in the file; the
// settings the drawing uses get the defaults instead.
TEST_F(SheetTest, OkGivesTheDrawingDefaultsForPageValuesOutOfRange) {
    WriteSettings("元件类型:1\n端子A名称:../../x\n类型A宽度:nan\n端子A长度:-2\n端子A方向:9\n");
    PlcDrawSettings s;
    InitPlcDrawSettings(s);
    CPLCSettingSheetDlg sheet(s);
    ASSERT_TRUE(sheet.OnOK());
    EXPECT_FLOAT_EQ(s.typeWidth, 10.0f);
    EXPECT_FLOAT_EQ(s.termLength, 5.0f);
    EXPECT_EQ(s.termDirection, 2);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_KTR5");
    EXPECT_EQ(s.termSymbolPath, Common() + "SYMB2LIB/SYMB2_S_KTR5.dxf");
    EXPECT_NE(ReadSettings().find("类型A宽度:nan\n"), std::string::npos);
}

TEST_F(SheetTest, RunningTheSheetLocksTheDocumentAndCancelChangesNothing) {
    WriteSettings("元件类型:1\n");
    PlcDrawSettings s;
    InitPlcDrawSettings(s);
    const PlcDrawSettings before = s;
    const bool ok = RunPlcSettingSheet(s, [&](CPLCSettingSheetDlg& sheet) {
        EXPECT_EQ(recorder.lockDepth, 1);
        sheet.drawPage.OnClickFormat(3);
        sheet.labelPage.OnClick(CLabelSettingDlg::Manufacturer);
        return false;
    });
    EXPECT_FALSE(ok);
    EXPECT_EQ(recorder.lockDepth, 0);
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"LockDocument", "UnlockDocument"}));
    EXPECT_EQ(s.componentType, before.componentType);
    EXPECT_EQ(s.labelManufacturer, before.labelManufacturer);
    EXPECT_EQ(ReadSettings(), "元件类型:1\n");

    EXPECT_TRUE(RunPlcSettingSheet(s, [](CPLCSettingSheetDlg& sheet) {
        sheet.drawPage.OnClickFormat(3);
        return true;
    }));
    EXPECT_EQ(recorder.lockDepth, 0);
    EXPECT_EQ(s.componentType, 3);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_KTR211");
    EXPECT_EQ(LineCount(ReadSettings()), 30);
}

TEST_F(SheetTest, ReadOnlyFileIsSilentlyKeptWhileTheSettingsChange) {
    WriteSettings("元件类型:1\n");
    ::chmod(SettingFile().c_str(), 0444);
    PlcDrawSettings s;
    InitPlcDrawSettings(s);
    CPLCSettingSheetDlg sheet(s);
    sheet.drawPage.OnClickFormat(2);
    EXPECT_FALSE(sheet.OnOK());
    EXPECT_EQ(s.componentType, 2);
    EXPECT_TRUE(recorder.messages.empty());
    EXPECT_EQ(ReadSettings(), "元件类型:1\n");
}

TEST_F(SheetTest, FormatPageShowsOnlyTheSelectedFormat) {
    CDrawSettingDlg page;
    page.selectedFormat = 2;
    page.OnInitDialog();
    EXPECT_EQ(page.checkedRadio, 2);
    EXPECT_EQ(page.termButtonEnabled, (std::array<bool, 3>{false, true, false}));
    EXPECT_EQ(page.previewPath, Common() + "Data/PLCType_B.dxf");
    page.OnClickFormat(3);
    EXPECT_EQ(page.termButtonEnabled, (std::array<bool, 3>{false, false, true}));
    EXPECT_EQ(page.previewPath, Common() + "Data/PLCType_C.dxf");
    page.OnClickFormat(4);
    EXPECT_EQ(page.selectedFormat, 3);

    bool ran = false;
    EXPECT_FALSE(page.OnTermSetting(1, [&](CDlgDrawSet&) { return ran = true; }));
    EXPECT_FALSE(ran);  // the disabled button opens nothing
}

TEST_F(SheetTest, TerminalSettingsMeasureTheSymbolAndIgnoreTheDirectionList) {
    const std::string down = WriteSymbolDrawing(commonDir / "SYMB2LIB/Down.dxf", 0, -4);
    WriteSettings("端子A路径:" + down + "\n端子A名称:Down\n端子A方向:2\n端子A长度:1\n");
    CDrawSettingDlg page;
    page.spacingText = "8.0";
    page.OnInitDialog();
    const bool ok = page.OnTermSetting(1, [&](CDlgDrawSet& dialog) {
        EXPECT_EQ(dialog.termName, "Down");
        EXPECT_EQ(dialog.termDirection, 2);
        EXPECT_EQ(dialog.spacingText, "8.0");
        dialog.OnInitDialog();
        EXPECT_EQ(dialog.termDirection, 1);
        EXPECT_EQ(dialog.directionSelection, 1);
        EXPECT_EQ(std::string(CDlgDrawSet::kDirectionTexts[1]), "向下");
        EXPECT_EQ(dialog.previewPath, down);
        dialog.OnSelectDirection(3);  // the user picks 向左
        dialog.widthText = " 1 2 ";
        dialog.spacingText = "6.5";
        return dialog.OnOK();
    });
    ASSERT_TRUE(ok);
    const auto& a = page.Format(1);
    EXPECT_EQ(a.direction, 1);
    EXPECT_NEAR(a.length, 5.0f, 1e-4);
    EXPECT_EQ(a.widthText, "12");
    EXPECT_EQ(page.spacingText, "6.5");
    EXPECT_EQ(ReadSettings(), down + "\nDown\n1\n12\n5.000000\n");
}

TEST_F(SheetTest, ChoosingASymbolReplacesAndMeasuresIt) {
    WriteSymbolDrawing(commonDir / "SYMB2LIB/Left.dxf", -4, 0);
    const std::string up = WriteSymbolDrawing(commonDir / "SYMB2LIB/Up.dxf", 0, 4);
    CDlgDrawSet dialog;
    dialog.termName = "Left";
    dialog.termPath = Common() + "SYMB2LIB/Left.dxf";
    dialog.OnInitDialog();
    EXPECT_EQ(dialog.termDirection, 3);
    EXPECT_FALSE(dialog.OnChooseSymbol([](CDlgSelectDz& chooser) {
        chooser.OnInitDialog();
        return false;
    }));
    EXPECT_EQ(dialog.termName, "Left");
    EXPECT_TRUE(dialog.OnChooseSymbol([](CDlgSelectDz& chooser) {
        chooser.OnInitDialog();
        chooser.OnClickCell(1);  // sorted: Left, Up
        return chooser.OnOK();
    }));
    EXPECT_EQ(dialog.termName, "Up");
    EXPECT_EQ(dialog.termPath, up);
    EXPECT_EQ(dialog.termDirection, 0);
    EXPECT_EQ(dialog.directionSelection, 0);
    EXPECT_EQ(dialog.previewPath, up);
}

TEST_F(SheetTest, TerminalSettingsChecksStopAtTheFirstFailure) {
    const std::string path = TouchSymbol("SYMB2_S_01");
    WriteSettings("元件类型:1\n");
    CDlgDrawSet dialog;
    dialog.termName = "SYMB2_S_01";
    dialog.termPath = path;
    dialog.spacingText = "abc";

    dialog.widthText = "   ";
    EXPECT_FALSE(dialog.OnOK());
    ExpectWarning(0, "请输入外框宽度!");
    dialog.widthText = "-5";
    EXPECT_FALSE(dialog.OnOK());
    ExpectWarning(1, "外框宽度应为正实数!");
    dialog.widthText = "1 0";
    EXPECT_FALSE(dialog.OnOK());
    ExpectWarning(2, "端子间隔应为实数!");
    EXPECT_EQ(dialog.widthText, "10");
    dialog.spacingText = " 7.5 ";
    dialog.termPath = Common() + "SYMB2LIB/Gone.dxf";
    EXPECT_FALSE(dialog.OnOK());
    ExpectWarning(
        3, "符号SYMB2_S_01对应库文件" + Common() + "SYMB2LIB/Gone.dxf已被破坏,请选择另外的符号！");
    EXPECT_EQ(ReadSettings(), "元件类型:1\n");  // nothing written by a refused OK

    // The symbol file exists but is no drawing: nothing is measured, the given values stay.
    dialog.termPath = path;
    dialog.termDirection = 3;
    dialog.termLength = 2.5f;
    dialog.OnInitDialog();
    EXPECT_EQ(dialog.termDirection, 3);
    EXPECT_EQ(dialog.directionSelection, 3);
    EXPECT_TRUE(dialog.OnOK());
    EXPECT_EQ(recorder.messages.size(), 4u);
    EXPECT_EQ(ReadSettings(), path + "\nSYMB2_S_01\n3\n10\n2.500000\n");
}

TEST_F(SheetTest, TerminalSettingsReportAReadOnlyFileAndStayOpen) {
    const std::string path = TouchSymbol("SYMB2_S_02");
    WriteSettings("元件类型:2\n");
    ::chmod(SettingFile().c_str(), 0444);
    CDlgDrawSet dialog;
    dialog.termName = "SYMB2_S_02";
    dialog.termPath = path;
    dialog.widthText = "10";
    EXPECT_FALSE(dialog.OnOK());
    ExpectWarning(0, kReadOnlyMessage);
    EXPECT_EQ(ReadSettings(), "元件类型:2\n");
}

TEST_F(SheetTest, CancelAfterTerminalSettingsLeavesTheShortForm) {
    const std::string right = WriteSymbolDrawing(commonDir / "SYMB2LIB/R.dxf", 4, 0);
    WriteSettings("元件类型:2\n标注厂家:FALSE\n");
    PlcDrawSettings s;
    InitPlcDrawSettings(s);
    EXPECT_FALSE(RunPlcSettingSheet(s, [&](CPLCSettingSheetDlg& sheet) {
        sheet.drawPage.OnInitDialog();
        sheet.drawPage.OnTermSetting(2, [&](CDlgDrawSet& dialog) {
            dialog.OnInitDialog();
            dialog.TakeSymbol(right, "R");
            dialog.widthText = "10";
            return dialog.OnOK();
        });
        return false;
    }));
    EXPECT_EQ(LineCount(ReadSettings()), 5);
    PlcDrawSettings reread;
    InitPlcDrawSettings(reread);
    EXPECT_EQ(reread.componentType, 1);
    EXPECT_TRUE(reread.labelManufacturer);  // the stored FALSE is gone with the full form
    EXPECT_FALSE(reread.labelModuleCodePrefix);
}

TEST_F(SheetTest, DetailPageEnablesItsListsWithTheirBoxes) {
    CSymbBomSettingDlg page;
    page.autoDetail = false;
    page.autoDetailModel = true;
    page.detailModelType = 1;
    page.OnInitDialog();
    EXPECT_FALSE(page.nameListEnabled);
    EXPECT_TRUE(page.modelListEnabled);
    EXPECT_EQ(page.modelListSelection, 1);
    EXPECT_EQ(page.focus, 0);
    page.OnClickAutoDetail();
    page.OnClickAutoDetailModel();
    EXPECT_TRUE(page.autoDetail && page.nameListEnabled);
    EXPECT_FALSE(page.autoDetailModel || page.modelListEnabled);
    page.OnSelectModel(0);
    EXPECT_EQ(page.detailModelType, 0);
    page.OnSelectModel(2);
    EXPECT_EQ(page.detailModelType, 0);

    page.detailModelType = 5;
    page.OnInitDialog();
    EXPECT_EQ(page.modelListSelection, -1);
}
