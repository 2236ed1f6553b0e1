// The two draw buttons: their refusals, the symbol defaults and the request they leave for
// the drawing commands; and the location read from the current drawing's saved file.
#include <gtest/gtest.h>

#include <algorithm>

#include "DialogTestSupport.h"
#include "cad/Database.h"
#include "cad/Dxf.h"
#include "draw/DlgPlcRendal.h"

using dialog_test::DialogEnvironment;

namespace {

class DrawButtonTest : public ::testing::Test {
protected:
    void SetUp() override {
        dlg = env.OpenDialog();
        ASSERT_TRUE(dlg->SelectModulePath("Alpha", "S1", "DI", "DI-32B"));
        dlg->editTag = "A1";
    }
    void ExpectNothingRequested() {
        EXPECT_TRUE(env.host.sentCommands.empty());
        EXPECT_FALSE(dlg->drawPending);
        EXPECT_FALSE(dlg->minimized);
    }
    DialogEnvironment env;
    std::unique_ptr<CDlgPlcRendal> dlg;
};

}  // namespace

TEST_F(DrawButtonTest, FullDrawingLeavesTheRequestAndSendsTheCommand) {
    dlg->reshowPending = true;
    dlg->OnDrawFull();
    EXPECT_TRUE(env.host.messages.empty());
    ASSERT_EQ(env.host.sentCommands, (std::vector<std::string>{"(Command)\nRendalFull\n"}));
    EXPECT_TRUE(dlg->drawPending);
    EXPECT_FALSE(dlg->reshowPending);
    EXPECT_TRUE(dlg->minimized);
}

TEST_F(DrawButtonTest, DividedDrawingSendsItsOwnCommand) {
    dlg->OnDrawDivided();
    ASSERT_EQ(env.host.sentCommands, (std::vector<std::string>{"(Command)\nDivRendal\n"}));
    EXPECT_TRUE(dlg->drawPending);
}

TEST_F(DrawButtonTest, BlankOrDashTagIsRefused) {
    for (const std::string tag : {"", "   ", "-", " - "}) {
        env.host.messages.clear();
        dlg->editTag = tag;
        dlg->focus = "tree";
        dlg->OnDrawFull();
        ASSERT_EQ(env.host.MessageTexts(), (std::vector<std::string>{"请输入标号"})) << tag;
        EXPECT_EQ(env.host.messages[0].caption, "Zandrix");
        EXPECT_EQ(env.host.messages[0].icon, host::MsgIcon::Exclamation);
        EXPECT_EQ(dlg->focus, "editTag");
        EXPECT_TRUE(dlg->tagTextSelected);
        ExpectNothingRequested();
    }
    dlg->editTag = " A 1 ";  // blanks inside a real tag are fine
    dlg->OnDrawFull();
    EXPECT_TRUE(dlg->drawPending);
}

TEST_F(DrawButtonTest, NoChosenTerminalDoesNothingSilently) {
    dlg->termList.SetStateImage(0, 0);
    dlg->termList.SetStateImage(1, 3);
    dlg->termList.SetStateImage(2, 0);
    dlg->OnDrawFull();
    EXPECT_TRUE(env.host.messages.empty());
    ExpectNothingRequested();
    dlg->termList.SetStateImage(1, 2);  // icon 2 counts as chosen
    dlg->OnDrawFull();
    EXPECT_TRUE(dlg->drawPending);

    dlg->drawPending = false;
    dlg->termList.Clear();
    env.host.sentCommands.clear();
    dlg->OnDrawDivided();
    EXPECT_TRUE(env.host.sentCommands.empty());
}

TEST_F(DrawButtonTest, MissingSymbolFileIsRefusedWithItsNameAndPath) {
    dlg->termSymbolName = "SYMB2_S_GONE";
    dlg->termSymbolPath = (env.CommonDir() / "SYMB2LIB" / "SYMB2_S_GONE.dxf").string();
    dlg->OnDrawFull();
    ASSERT_EQ(env.host.MessageTexts(),
              (std::vector<std::string>{"符号SYMB2_S_GONE对应库文件" + dlg->termSymbolPath +
                                        "已被破坏,请选择另外的符号！"}));
    EXPECT_EQ(env.host.messages[0].icon, host::MsgIcon::Exclamation);
    ExpectNothingRequested();
}

TEST_F(DrawButtonTest, EmptySymbolPathTakesTheFirstFormatDefaults) {
    dlg->termSymbolPath.clear();
    dlg->termSymbolName = "OTHER";
    dlg->componentType = 3;
    dlg->typeWidth = 22.0f;
    dlg->termDirection = 0;
    dlg->termLength = 1.0f;
    dlg->OnDrawFull();
    EXPECT_TRUE(env.host.messages.empty());
    EXPECT_EQ(std::filesystem::path(dlg->termSymbolPath), env.SymbolPath());
    EXPECT_EQ(dlg->termSymbolName, "SYMB2_S_KTR5");
    EXPECT_EQ(dlg->componentType, 1);
    EXPECT_FLOAT_EQ(dlg->typeWidth, 10.0f);
    EXPECT_EQ(dlg->termDirection, 2);
    EXPECT_FLOAT_EQ(dlg->termLength, 5.0f);
    EXPECT_TRUE(dlg->drawPending);
}

TEST(DialogLocation, ReadFromTheSavedDrawingOnlyWhenItHasAName) {
    DialogEnvironment env;
    cad::Database db;
    const cad::Handle dict = db.GetOrAddDictionary("QV_DWG_DICITIONARY");
    db.SetXRecord(dict, "QV_LOCATION_XRECORD", {{1, "+B2 控制柜"}});
    const auto folder = env.LocalDir() / "drawings";
    std::filesystem::create_directories(folder);
    cad::WriteDxfFile(db, (folder / "plan.dxf").string(), cad::DxfVersion::R2010);

    env.host.variables["dwgprefix"] = folder.string() + "/";
    env.host.variables["dwgname"] = "plan.dxf";
    env.host.variables["dwgtitled"] = "1";
    auto dlg = env.OpenDialog();
    EXPECT_EQ(dlg->editLocation, "+B2 控制柜");

    env.host.variables["dwgtitled"] = "0";
    dlg->OnRefresh();
    EXPECT_EQ(dlg->editLocation, "");

    env.host.variables["dwgtitled"] = "1";
    testing_support::WriteFile(folder / "plan.dxf", "0\nSECTION\n2\nBROKEN");
    dlg->OnRefresh();
    EXPECT_EQ(dlg->editLocation, "");
}

TEST(DialogSettings, TheSheetEditsTheDialogsOwnSettingsAndLocksTheDocument) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    ASSERT_TRUE(dlg->labelSlotNo);
    dlg->settingsSheetRunner = [](CPLCSettingSheetDlg& sheet) {
        sheet.labelPage.OnInitDialog();
        sheet.labelPage.OnClick(CLabelSettingDlg::SlotNo);
        return true;
    };
    dlg->OnSettings();
    EXPECT_FALSE(dlg->labelSlotNo);
    EXPECT_EQ(env.host.lockDepth, 0);
    EXPECT_NE(std::count(env.host.calls.begin(), env.host.calls.end(), "LockDocument"), 0);
    EXPECT_TRUE(std::filesystem::exists(env.LocalDir() / "LocalData" / "PlcDrawSetting.dat"));

    dlg->settingsSheetRunner = [](CPLCSettingSheetDlg& sheet) {
        sheet.labelPage.OnInitDialog();
        sheet.labelPage.OnClick(CLabelSettingDlg::SlotNo);
        return false;  // cancelled: nothing changes
    };
    dlg->OnSettings();
    EXPECT_FALSE(dlg->labelSlotNo);
}
