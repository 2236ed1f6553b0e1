// The drawing dialog's view: user actions on its widgets reach the dialog's methods, and the
// dialog's state changes show in the widgets.
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTreeWidget>

#include <memory>

#include "ViewTestSupport.h"
#include "draw/DlgPlcRendal.h"
#include "ui/Pictures.h"
#include "ui/PlcRendalView.h"
#include "ui/Views.h"

namespace ui_test {
namespace {

using Texts = std::vector<std::string>;

class PlcRendalViewTest : public ViewTest {
protected:
    // Clicks Alpha/S1/DI and then its module DI-16A in the tree widget.
    void ClickDi16a() {
        QTreeWidget* tree = view->Tree();
        QTreeWidgetItem* type =
            Child(tree, Child(tree, Child(tree, Child(tree, nullptr, "PLC"), "Alpha"), "S1"), "DI");
        ASSERT_NE(type, nullptr);
        tree->setCurrentItem(type);
        QTreeWidgetItem* module = Child(tree, tree->currentItem(), "DI-16A");
        ASSERT_NE(module, nullptr);
        tree->setCurrentItem(module);
    }
    QAction* MenuAction(QMenu& menu, const std::string& text) {
        for (QAction* action : menu.actions()) {
            if (action->text().toStdString() == text) {
                return action;
            }
        }
        return nullptr;
    }
};

TEST_F(PlcRendalViewTest, PlcRendalShowsTheViewWithTheLibraryTree) {
    ASSERT_NE(OpenView(), nullptr);
    EXPECT_TRUE(view->isVisible());
    EXPECT_EQ(view->windowTitle().toStdString(), "PLC元器件参数化绘制");
    QTreeWidgetItem* root = Child(view->Tree(), nullptr, "PLC");
    ASSERT_NE(root, nullptr);
    ASSERT_EQ(root->childCount(), 3);
    EXPECT_EQ(root->child(0)->text(0).toStdString(), "Alpha");
    EXPECT_EQ(root->child(2)->text(0).toStdString(), "Gamma");
    EXPECT_EQ(ColumnTexts(view->TermList(), 0), Texts{});
    EXPECT_EQ(view->TermList()->headerItem()->text(4).toStdString(), "连线端点方向");
    EXPECT_TRUE(view->HorizontalRadio()->isChecked());
    EXPECT_TRUE(view->MatchRadio(0)->isChecked());
}

TEST_F(PlcRendalViewTest, ClickingTreeItemsSelectsTheModuleInTheDialog) {
    ASSERT_NE(OpenView(), nullptr);
    QTreeWidget* tree = view->Tree();
    QTreeWidgetItem* type =
        Child(tree, Child(tree, Child(tree, Child(tree, nullptr, "PLC"), "Alpha"), "S1"), "DI");
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->childCount(), 0);  // the modules come with the first selection
    tree->setCurrentItem(type);
    ASSERT_NE(Dlg().tree.Selected(), nullptr);
    EXPECT_EQ(Dlg().tree.Selected()->text, "DI");
    EXPECT_EQ(ColumnTexts(view->ModuleList(), 0), (Texts{"DI-16A", "DI-32B"}));
    EXPECT_EQ(type->childCount(), 2);
    EXPECT_EQ(view->Edit("shortname")->text().toStdString(), "ALP");

    ClickDi16a();
    EXPECT_EQ(Dlg().editModuleCode, "DI-16A");
    EXPECT_EQ(view->Edit("code")->text().toStdString(), "DI-16A");
    EXPECT_EQ(view->Edit("desc")->text().toStdString(), "数字量输入");
    EXPECT_EQ(ColumnTexts(view->TermList(), 0), (Texts{"1", "2", "3", "4", "5", "6", "7"}));
    EXPECT_EQ(Checks(view->TermList()), std::vector<bool>(7, true));
    EXPECT_EQ(ColumnTexts(view->TermList(), 4), Texts(7, "向上"));

    // Selecting a row of the module list reloads the terminals of that row's module.
    view->ModuleList()->setCurrentItem(view->ModuleList()->topLevelItem(0));
    EXPECT_EQ(Dlg().termList.Count(), 7);
}

TEST_F(PlcRendalViewTest, CheckBoxesChangeTheMarksAsTheDialogDecides) {
    ASSERT_NE(OpenView(), nullptr);
    ClickDi16a();
    QTreeWidget* list = view->TermList();
    list->topLevelItem(2)->setCheckState(0, Qt::Unchecked);
    EXPECT_EQ(Dlg().termList.StateImage(2), kMarkOff);
    EXPECT_EQ(Dlg().termList.SelectedRows(), std::vector<int>{2});
    list->topLevelItem(2)->setCheckState(0, Qt::Checked);
    EXPECT_EQ(Dlg().termList.StateImage(2), kMarkOn);

    // State image 2 is left alone by clicks: the box snaps back to the dialog's mark.
    Dlg().termList.SetStateImage(5, 2);
    EXPECT_EQ(list->topLevelItem(5)->checkState(0), Qt::Checked);
    list->topLevelItem(5)->setCheckState(0, Qt::Unchecked);
    EXPECT_EQ(Dlg().termList.StateImage(5), 2);
    EXPECT_EQ(list->topLevelItem(5)->checkState(0), Qt::Checked);
}

TEST_F(PlcRendalViewTest, ThePopUpMenuFollowsTheOrientationAndSetsThePattern) {
    ASSERT_NE(OpenView(), nullptr);
    ClickDi16a();
    std::unique_ptr<QMenu> menu(view->MakeTermMenu());
    ASSERT_EQ(menu->actions().size(), 7);
    QAction* half = MenuAction(*menu, "前半部分向上,后面向下");
    ASSERT_NE(half, nullptr);
    half->trigger();
    EXPECT_EQ(Dlg().termDirChoice, 4);
    const Texts halves = {"向上", "向上", "向上", "向上", "     向下", "     向下", "     向下"};
    EXPECT_EQ(ColumnTexts(view->TermList(), 4), halves);

    // Flip of the selected rows, through the same menu.
    view->TermList()->clearSelection();
    view->TermList()->topLevelItem(0)->setSelected(true);
    view->TermList()->topLevelItem(6)->setSelected(true);
    ASSERT_NE(MenuAction(*menu, "改变端点连接方向"), nullptr);
    MenuAction(*menu, "改变端点连接方向")->trigger();
    EXPECT_EQ(Dlg().termList.Text(0, kColDirection), "     向下");
    EXPECT_EQ(ColumnTexts(view->TermList(), 4)[6], "向上");

    // 垂直: the pattern is applied again with the vertical sides, and the menu names them.
    view->VerticalRadio()->click();
    EXPECT_EQ(Dlg().orientation, 1);
    EXPECT_EQ(ColumnTexts(view->TermList(), 4)[0], "向左");
    EXPECT_EQ(ColumnTexts(view->TermList(), 4)[6], "     向右");
    std::unique_ptr<QMenu> vertical(view->MakeTermMenu());
    EXPECT_NE(MenuAction(*vertical, "全部向左"), nullptr);
    EXPECT_EQ(MenuAction(*vertical, "全部向上"), nullptr);
}

TEST_F(PlcRendalViewTest, DrawMinimisesTheViewAndQueuesTheCommandThroughTheHost) {
    ASSERT_NE(OpenView(), nullptr);
    ClickDi16a();
    view->Edit("tag")->setText("-");
    view->Button("draw")->click();
    EXPECT_EQ(env.host.MessageTexts(), Texts{"请输入标号"});
    EXPECT_EQ(view->Edit("tag")->selectedText().toStdString(), "-");
    EXPECT_FALSE(view->isMinimized());
    EXPECT_TRUE(env.host.sentCommands.empty());

    view->Edit("tag")->setText("K1");
    view->Edit("frame")->setText("R2");
    EXPECT_EQ(Dlg().editTag, "K1");
    view->Button("divided")->click();
    EXPECT_TRUE(view->isMinimized());
    EXPECT_TRUE(Dlg().drawPending);
    EXPECT_EQ(env.host.sentCommands, Texts{"(Command)\nDivRendal\n"});
    EXPECT_EQ(Dlg().CurrentChoice().frameNo, "R2");

    // The drawing command brings the dialog, and so the view, back.
    Dlg().drawPending = false;
    run.RunRendalFull();
    EXPECT_FALSE(view->isMinimized());
    EXPECT_TRUE(view->isVisible());
}

TEST_F(PlcRendalViewTest, ChangesMadeByTheDialogShowInTheWidgets) {
    ASSERT_NE(OpenView(), nullptr);
    ASSERT_TRUE(Dlg().SelectModulePath("Alpha", "S2", "AI", "AI-08"));
    Settle();  // the edits follow once the event loop runs
    ASSERT_NE(view->Tree()->currentItem(), nullptr);
    EXPECT_EQ(view->Tree()->currentItem()->text(0).toStdString(), "AI-08");
    EXPECT_TRUE(view->Tree()->currentItem()->parent()->isExpanded());
    EXPECT_EQ(ColumnTexts(view->ModuleList(), 0), Texts{"AI-08"});
    EXPECT_EQ(view->Edit("code")->text().toStdString(), "AI-08");
    EXPECT_EQ(ColumnTexts(view->TermList(), 1), (Texts{"11", "12"}));

    Dlg().OnVertical();
    Settle();
    EXPECT_TRUE(view->VerticalRadio()->isChecked());
    Dlg().Minimize();
    EXPECT_TRUE(view->isMinimized());
    Dlg().Restore();
    EXPECT_FALSE(view->isMinimized());

    // A library grown meanwhile shows after 刷新.
    ASSERT_TRUE(Dlg().plcLib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('Delta','','','')"));
    view->Button("refresh")->click();
    EXPECT_NE(Child(view->Tree(), Child(view->Tree(), nullptr, "PLC"), "Delta"), nullptr);
}

TEST_F(PlcRendalViewTest, ClosingTheWindowClosesTheDialogUnlessADrawingRuns) {
    ASSERT_NE(OpenView(), nullptr);
    Dlg().drawBusy = true;
    view->close();
    Settle();
    ASSERT_NE(g_pDlgPlcRendal, nullptr);
    ASSERT_FALSE(view.isNull());

    Dlg().drawBusy = false;
    view->close();
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
    Settle();
    EXPECT_TRUE(view.isNull());

    // The next PLCRENDAL gets a new dialog and a new view.
    ASSERT_NE(OpenView(), nullptr);
    EXPECT_EQ(view->Dialog(), g_pDlgPlcRendal);
}

TEST_F(PlcRendalViewTest, RemovingTheViewsLeavesTheDialogWorking) {
    ASSERT_NE(OpenView(), nullptr);
    ui::RemoveViews();
    Settle();
    EXPECT_TRUE(view.isNull());
    // The dialog's controls change without a view to follow them.
    ASSERT_TRUE(Dlg().SelectModulePath("Alpha", "S1", "DO", "DO-16"));
    EXPECT_EQ(Dlg().termList.Count(), 2);
    Dlg().OnSettings();  // no runner left behind: the sheet counts as cancelled
    app::CPlcRendalMain().RunRendal();
    EXPECT_EQ(ui::PlcRendalView::Current(), nullptr);
}

TEST_F(PlcRendalViewTest, PicturesOfDrawingsHaveInkAndUnreadableFilesNone) {
    if (!env.realSymbol) {
        GTEST_SKIP() << "the terminal symbols are not built";
    }
    const QImage picture = ui::DrawingPicture(env.SymbolPath().string(), QSize(64, 64));
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.size(), QSize(64, 64));
    EXPECT_TRUE(ui::HasInk(picture));
    EXPECT_TRUE(ui::DrawingPicture((env.LocalDir() / "none.dxf").string(), QSize(64, 64)).isNull());
    QImage blank(8, 8, QImage::Format_RGB32);
    blank.fill(Qt::white);
    EXPECT_FALSE(ui::HasInk(blank));
}

}  // namespace
}  // namespace ui_test

namespace ui_test {
namespace {

TEST_F(PlcRendalViewTest, ADialogDeletedWithItsWindowStandingTakesItsViewAlong) {
    auto* dlg = new CDlgPlcRendal();
    ASSERT_TRUE(dlg->Create());
    QPointer<ui::PlcRendalView> own = new ui::PlcRendalView(*dlg);
    dlg->Refresh();
    EXPECT_EQ(own->Tree()->topLevelItemCount(), 1);
    delete dlg;
    ASSERT_FALSE(own.isNull());
    EXPECT_EQ(own->Dialog(), nullptr);
    EXPECT_EQ(ui::PlcRendalView::Current(), nullptr);
    Settle();
    EXPECT_TRUE(own.isNull());
}

TEST_F(PlcRendalViewTest, EnterNeitherClosesTheDialogNorPressesAButton) {
    ASSERT_NE(OpenView(), nullptr);
    ClickDi16a();
    view->Edit("tag")->setText("K1");
    QTest::keyClick(view->Edit("tag"), Qt::Key_Return);
    QTest::keyClick(view->Edit("tag"), Qt::Key_Escape);
    Settle();
    EXPECT_TRUE(env.host.sentCommands.empty());
    ASSERT_NE(g_pDlgPlcRendal, nullptr);
    EXPECT_TRUE(view->isVisible());
}

}  // namespace
}  // namespace ui_test
