// Script lines acting on the drawing dialog's view.
#include <QLineEdit>
#include <QTreeWidget>

#include "ViewTestSupport.h"
#include "draw/DlgPlcRendal.h"
#include "ui/DialogLines.h"
#include "ui/PlcRendalView.h"
#include "ui/Views.h"

namespace ui_test {
namespace {

using Texts = std::vector<std::string>;
using ui::RunDialogLine;

class DialogLinesTest : public ViewTest {};

TEST_F(DialogLinesTest, ALineScriptDrivesTheDialogLikeTheMouse) {
    ASSERT_NE(OpenView(), nullptr);
    EXPECT_EQ(RunDialogLine("dialog select Alpha/S1/DI/DI-16A"), "");
    EXPECT_EQ(Dlg().editModuleCode, "DI-16A");
    EXPECT_EQ(RunDialogLine("dialog mark 2 off"), "");
    EXPECT_EQ(RunDialogLine("dialog mark 2 off"), "");  // already off: stays off
    EXPECT_EQ(RunDialogLine("dialog mark 6 off"), "");
    EXPECT_EQ(Dlg().termList.StateImage(1), kMarkOff);
    EXPECT_EQ(Dlg().termList.StateImage(5), kMarkOff);
    EXPECT_EQ(RunDialogLine("dialog pattern 3"), "");
    EXPECT_EQ(Dlg().termList.Text(1, kColDirection), "     向下");
    EXPECT_EQ(RunDialogLine("dialog flip 1 2"), "");
    EXPECT_EQ(Dlg().termList.Text(0, kColDirection), "     向下");
    EXPECT_EQ(Dlg().termList.Text(1, kColDirection), "向上");
    EXPECT_EQ(RunDialogLine("dialog set tag  K 7 "), "");
    EXPECT_EQ(Dlg().editTag, "K 7");
    EXPECT_EQ(RunDialogLine("dialog set location"), "");
    EXPECT_EQ(Dlg().editLocation, "");
    EXPECT_EQ(RunDialogLine("dialog orientation vertical"), "");
    EXPECT_EQ(Dlg().termList.Text(0, kColDirection), "向左");  // the pattern again, flips gone
    EXPECT_EQ(RunDialogLine("dialog press draw"), "");
    EXPECT_EQ(env.host.sentCommands, Texts{"(Command)\nRendalFull\n"});
    EXPECT_TRUE(view->isMinimized());
    const auto choice = Dlg().CurrentChoice();
    ASSERT_EQ(choice.terminals.size(), 7u);
    EXPECT_FALSE(choice.terminals[1].marked);
    EXPECT_TRUE(choice.terminals[2].marked);
    EXPECT_EQ(choice.tag, "K 7");
}

TEST_F(DialogLinesTest, SearchAndModuleRowsGoThroughTheirWidgets) {
    ASSERT_NE(OpenView(), nullptr);
    EXPECT_EQ(RunDialogLine("dialog match contains"), "");
    EXPECT_EQ(Dlg().matchMode, 1);
    EXPECT_EQ(RunDialogLine("dialog search 08"), "");
    ASSERT_NE(Dlg().tree.Selected(), nullptr);
    EXPECT_EQ(Dlg().tree.Selected()->text, "DO-08X");
    EXPECT_EQ(RunDialogLine("dialog select Alpha/S1/DO"), "");
    EXPECT_EQ(RunDialogLine("dialog module DO-16"), "");
    EXPECT_EQ(Dlg().editModuleCode, "DO-16");
    EXPECT_EQ(RunDialogLine("select PLC"), "");  // the word "dialog" may be left out
    EXPECT_EQ(Dlg().tree.Selected()->Level(), 0);
    EXPECT_EQ(RunDialogLine("dialog press close"), "");
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
    EXPECT_EQ(RunDialogLine("dialog press refresh"),
              "no drawing dialog is open: run PLCRENDAL first");
}

TEST_F(DialogLinesTest, BadLinesSayWhatWasWrongAndChangeNothing) {
    EXPECT_EQ(RunDialogLine("dialog press draw"), "no drawing dialog is open: run PLCRENDAL first");
    ASSERT_NE(OpenView(), nullptr);
    ASSERT_EQ(RunDialogLine("dialog select Alpha/S1/DI/DI-16A"), "");
    EXPECT_EQ(RunDialogLine("dialog select Alpha/S9/DI"), "no tree node Alpha/S9/DI");
    EXPECT_EQ(RunDialogLine("dialog select Alpha/S1/DI/NOPE/X"), "no tree node Alpha/S1/DI/NOPE/X");
    EXPECT_EQ(RunDialogLine("dialog module NOPE"), "no module NOPE in the module list");
    EXPECT_EQ(RunDialogLine("dialog mark 99 on"), "no terminal 99 in the terminal list");
    EXPECT_EQ(RunDialogLine("dialog mark 2 maybe"),
              "mark needs a terminal number and on or off, as in: dialog mark 3 off");
    EXPECT_EQ(RunDialogLine("dialog pattern 7"), "pattern must be a number from 1 to 6: 7");
    EXPECT_EQ(RunDialogLine("dialog flip 1 42"), "no terminal 42 in the terminal list");
    EXPECT_EQ(RunDialogLine("dialog set colour red").substr(0, 20), "unknown field colour");
    EXPECT_EQ(RunDialogLine("dialog press nothing").substr(0, 22), "unknown button nothing");
    EXPECT_EQ(RunDialogLine("dialog orientation up"),
              "orientation must be horizontal or vertical: up");
    EXPECT_EQ(RunDialogLine("dialog frobnicate now"), "unknown dialog line: dialog frobnicate now");
    EXPECT_NE(RunDialogLine("dialog").find("dialog select"), std::string::npos);
    // None of them touched the dialog.
    EXPECT_EQ(Dlg().editModuleCode, "DI-16A");
    EXPECT_EQ(Dlg().termList.StateImage(1), kMarkOn);
    EXPECT_EQ(Dlg().termDirChoice, 0);
    EXPECT_TRUE(env.host.sentCommands.empty());
}

TEST(DialogLineWords, TheLastWordTakesTheRestOfTheLine) {
    EXPECT_EQ(ui::SplitWords("  set  tag  A B  ", 3), (Texts{"set", "tag", "A B"}));
    EXPECT_EQ(ui::SplitWords("flip 1 2 3", 10), (Texts{"flip", "1", "2", "3"}));
    EXPECT_EQ(ui::SplitWords("   ", 3), Texts{});
    EXPECT_EQ(ui::FormatMessage("no module %s here", "X/Y"), "no module X/Y here");
}

}  // namespace
}  // namespace ui_test
