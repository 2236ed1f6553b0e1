// The settings sheet, the terminal settings and the symbol chooser: their widgets drive the
// plain dialogs, and "dialog sheet" lines reach them through the drawing dialog's 设置.
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabWidget>

#include <filesystem>

#include "ViewTestSupport.h"
#include "draw/DlgPlcRendal.h"
#include "draw/settings/DlgSelectDz.h"
#include "draw/settings/PLCSettingSheetDlg.h"
#include "ui/ModalScript.h"
#include "ui/Pictures.h"
#include "ui/SettingsViews.h"
#include "ui/SymbolChooserView.h"
#include "ui/Views.h"

namespace ui_test {
namespace {

namespace fs = std::filesystem;
using ui::RunDialogLine;

class SettingsViewsTest : public ViewTest {
protected:
    void SetUp() override {
        ViewTest::SetUp();
        ui::ClearModalLines();
        // The built symbols and preview drawings, as an installation has them.
        const fs::path built = testing_support::CommonResDir();
        builtResources = fs::is_directory(built / "SYMB2LIB") && fs::is_directory(built / "Data");
        if (builtResources) {
            for (const char* folder : {"SYMB2LIB", "Data"}) {
                fs::copy(built / folder, env.CommonDir() / folder,
                         fs::copy_options::recursive | fs::copy_options::overwrite_existing);
            }
        }
    }
    void TearDown() override {
        ui::ClearModalLines();
        ViewTest::TearDown();
    }
    std::string SettingsFile() const {
        return testing_support::ReadFile(env.LocalDir() / "LocalData" / "PlcDrawSetting.dat");
    }
    bool builtResources = false;
};

TEST_F(SettingsViewsTest, TheSheetsWidgetsShowAndChangeItsPages) {
    PlcDrawSettings settings;
    InitPlcDrawSettings(settings);
    settings.labelSlotNo = false;
    settings.detailModelType = 1;
    CPLCSettingSheetDlg sheet(settings);
    ui::SettingsSheetView view(sheet);
    EXPECT_EQ(view.windowTitle().toStdString(), "设置");
    ASSERT_EQ(view.Pages()->count(), 3);
    EXPECT_EQ(view.Pages()->tabText(2).toStdString(), "明细设置");
    EXPECT_TRUE(view.FormatRadio(1)->isChecked());
    EXPECT_TRUE(view.TermButton(1)->isEnabled());
    EXPECT_FALSE(view.TermButton(2)->isEnabled());
    EXPECT_FALSE(view.LabelBox(CLabelSettingDlg::SlotNo)->isChecked());
    EXPECT_TRUE(view.LabelBox(CLabelSettingDlg::FrameNo)->isChecked());
    EXPECT_EQ(view.ModelList()->currentRow(), 1);

    view.FormatRadio(3)->click();
    EXPECT_EQ(sheet.drawPage.selectedFormat, 3);
    EXPECT_TRUE(view.TermButton(3)->isEnabled());
    EXPECT_FALSE(view.TermButton(1)->isEnabled());
    if (builtResources) {
        EXPECT_TRUE(ui::HasInk(view.FormatPreview()->pixmap().toImage()));
    }

    view.LabelBox(CLabelSettingDlg::FrameNo)->click();
    EXPECT_FALSE(sheet.labelPage.flags[CLabelSettingDlg::FrameNo]);
    view.AutoDetailModelBox()->click();
    EXPECT_FALSE(sheet.bomPage.autoDetailModel);
    EXPECT_FALSE(view.ModelList()->isEnabled());
    view.AutoDetailModelBox()->click();
    EXPECT_TRUE(view.ModelList()->isEnabled());
    view.ModelList()->setCurrentRow(0);
    EXPECT_EQ(sheet.bomPage.detailModelType, 0);
    // The settings change only with the sheet's OK, which its run applies afterwards.
    EXPECT_FALSE(settings.labelFrameNo == false);
}

TEST_F(SettingsViewsTest, SheetLinesAreKeptUntilSettingsOpensTheSheet) {
    ASSERT_NE(OpenView(), nullptr);
    EXPECT_EQ(RunDialogLine("dialog sheet format 2"), "");
    EXPECT_EQ(RunDialogLine("dialog sheet label frame off"), "");
    EXPECT_EQ(RunDialogLine("dialog sheet prefix code on"), "");
    EXPECT_EQ(RunDialogLine("dialog sheet detailmodel off"), "");
    EXPECT_EQ(Dlg().componentType, 1);  // nothing happens before the sheet opens
    EXPECT_EQ(RunDialogLine("dialog sheet ok"), "");
    EXPECT_EQ(RunDialogLine("dialog press settings"), "");
    EXPECT_EQ(Dlg().componentType, 2);
    EXPECT_FALSE(Dlg().labelFrameNo);
    EXPECT_TRUE(Dlg().labelModuleCodePrefix);
    EXPECT_FALSE(Dlg().autoDetailModel);
    EXPECT_NE(SettingsFile().find("元件类型:2\n"), std::string::npos);
    EXPECT_EQ(env.host.lockDepth, 0);  // the document was locked only while the sheet ran

    // A sheet the lines do not close is cancelled: nothing changes.
    EXPECT_EQ(RunDialogLine("dialog sheet label slot off"), "");
    EXPECT_EQ(RunDialogLine("dialog press settings"), "");
    EXPECT_TRUE(Dlg().labelSlotNo);
    // And pressing 设置 with no lines does not wait for anyone.
    EXPECT_EQ(RunDialogLine("dialog press settings"), "");
}

TEST_F(SettingsViewsTest, TerminalsLinesChooseTheSymbolThroughTheChooser) {
    if (!builtResources) {
        GTEST_SKIP() << "the terminal symbols are not built";
    }
    ASSERT_NE(OpenView(), nullptr);
    EXPECT_EQ(RunDialogLine("dialog sheet terminals symbol SYMB2_S_210 width 12 spacing 7.5"), "");
    EXPECT_EQ(RunDialogLine("dialog sheet ok"), "");
    EXPECT_EQ(RunDialogLine("dialog press settings"), "");
    EXPECT_EQ(Dlg().termSymbolName, "SYMB2_S_210");
    EXPECT_FLOAT_EQ(Dlg().termLength, 3.75f);
    EXPECT_FLOAT_EQ(Dlg().typeWidth, 12.0f);
    EXPECT_FLOAT_EQ(Dlg().termSpacing, 7.5f);
    EXPECT_TRUE(env.host.messages.empty());
}

TEST_F(SettingsViewsTest, RefusedOrUnknownSheetLinesSayWhyAndChangeNothing) {
    ASSERT_NE(OpenView(), nullptr);
    EXPECT_EQ(RunDialogLine("dialog sheet label colour off"),
              "label needs manufacturer, desc, code, frame or slot and on or off, as in: dialog "
              "sheet label frame off");
    EXPECT_EQ(RunDialogLine("dialog sheet format 4"), "unknown sheet line: format 4");
    EXPECT_EQ(RunDialogLine("dialog sheet terminals colour red"),
              "terminals takes symbol NAME, width TEXT and spacing TEXT, not colour");

    const float widthBefore = Dlg().typeWidth;
    EXPECT_EQ(RunDialogLine("dialog sheet terminals width -3"), "");
    EXPECT_EQ(RunDialogLine("dialog sheet ok"), "");
    EXPECT_EQ(RunDialogLine("dialog press settings"), "the terminal settings refused OK");
    EXPECT_EQ(env.host.MessageTexts(), std::vector<std::string>{"外框宽度应为正实数!"});
    EXPECT_FLOAT_EQ(Dlg().typeWidth, widthBefore);

    if (builtResources) {
        EXPECT_EQ(RunDialogLine("dialog sheet terminals symbol NOPE"), "");
        EXPECT_EQ(RunDialogLine("dialog press settings"),
                  "no terminal symbol NOPE in the symbol library");
        EXPECT_EQ(Dlg().termSymbolName, "SYMB2_S_KTR5");
    }
    EXPECT_EQ(RunDialogLine("dialog sheet detailmodel off"), "");
    EXPECT_EQ(RunDialogLine("dialog sheet model 1"), "");
    EXPECT_EQ(RunDialogLine("dialog sheet ok"), "");
    EXPECT_EQ(RunDialogLine("dialog press settings"),
              "the detail model list is disabled: tick it first with dialog sheet detailmodel on");
    EXPECT_TRUE(Dlg().autoDetailModel);  // the sheet was cancelled
}

TEST_F(SettingsViewsTest, TheChoosersCellsShowTheSymbolsPageByPage) {
    if (!builtResources) {
        GTEST_SKIP() << "the terminal symbols are not built";
    }
    CDlgSelectDz chooser;
    chooser.OnInitDialog();
    const int count = static_cast<int>(chooser.symbols.size());
    ASSERT_GT(count, CDlgSelectDz::kCellsPerPage);
    ui::SymbolChooserView view(chooser);
    EXPECT_EQ(view.PageCountLabel()->text().toStdString(), chooser.pageCountLabel);
    EXPECT_EQ(view.CurrentPageLabel()->text().toStdString(), "第1页");
    for (int cell = 0; cell < CDlgSelectDz::kCellsPerPage; ++cell) {
        const QImage picture =
            view.Cell(cell)->icon().pixmap(ui::SymbolChooserView::kCellPx).toImage();
        EXPECT_TRUE(ui::HasInk(picture)) << chooser.symbols[cell].blockName;
    }

    // Nothing picked: OK is refused with the chooser's message.
    view.OkButton()->click();
    EXPECT_NE(view.result(), QDialog::Accepted);
    EXPECT_EQ(env.host.MessageTexts(), std::vector<std::string>{"没有二次符号被选中！"});

    view.Pages()->setValue(2);
    EXPECT_EQ(chooser.scrollPos, 2);
    EXPECT_EQ(view.CurrentPageLabel()->text().toStdString(), "第2页");
    const int onLastPage = count - CDlgSelectDz::kCellsPerPage;
    EXPECT_TRUE(view.Cell(onLastPage)->icon().isNull());  // past the end: an empty cell
    view.Cell(1)->click();
    EXPECT_EQ(chooser.picked, CDlgSelectDz::kCellsPerPage + 1);
    EXPECT_TRUE(view.Cell(1)->isChecked());
    view.OkButton()->click();
    EXPECT_EQ(view.result(), QDialog::Accepted);
    EXPECT_EQ(chooser.chosenName, chooser.symbols[CDlgSelectDz::kCellsPerPage + 1].blockName);
}

}  // namespace
}  // namespace ui_test
