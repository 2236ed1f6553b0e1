// The editor as a user meets it: menus per node level, sub-dialog checks, status texts,
// sorting, find, the draw and import buttons, the document lock, and the command that
// creates the one editor.
#include <filesystem>

#include "EditorTestSupport.h"
#include "app/PlcDataLibEditMain.h"
#include "files/TextFile.h"

using namespace libedit;

namespace libedit_test {
namespace {

using Texts = std::vector<std::string>;

std::vector<int> Ids(const std::vector<MenuEntry>& entries) {
    std::vector<int> ids;
    for (const auto& entry : entries) {
        ids.push_back(entry.id);
    }
    return ids;
}

TEST_F(EditorTest, TreeMenuKeepsTheEntriesOfTheClickedLevel) {
    using V = std::vector<int>;
    EXPECT_EQ(Ids(dlg->OnTreeRightClick(dlg->tree.Root())), (V{kCmdNewManufacturer}));
    const auto manufacturer = dlg->OnTreeRightClick(dlg->FindPath({"Alpha"}));
    EXPECT_EQ(manufacturer, (std::vector<MenuEntry>{{kCmdDeleteManufacturer, "删除"},
                                                    {kCmdRenameManufacturer, "重命名"},
                                                    {kCmdChangeShortName, "修改厂家简称"},
                                                    {kCmdNewSeries, "新建系列"}}));
    EXPECT_EQ(dlg->tree.Selected(), dlg->FindPath({"Alpha"}));  // the click selected it
    EXPECT_EQ(Ids(dlg->OnTreeRightClick(dlg->FindPath({"Alpha", "S1"}))),
              (V{kCmdDeleteSeries, kCmdRenameSeries, kCmdNewType}));
    EXPECT_EQ(dlg->TreeMenu()[2].text, "新建类型");
    EXPECT_EQ(Ids(dlg->OnTreeRightClick(dlg->FindPath({"Alpha", "S1", "DI"}))),
              (V{kCmdDeleteType, kCmdRenameType, kCmdNewModule}));
    EXPECT_EQ(dlg->TreeMenu()[2].text, "新建模块");
    EXPECT_EQ(Ids(dlg->OnTreeRightClick(dlg->FindPath({"Alpha", "S1", "DI", "DI-16A"}))),
              (V{kCmdDeleteModule, kCmdRenameModule}));
    // A command of another level does nothing.
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdNewSeries));
    EXPECT_TRUE(log.empty() || Changes().empty());
}

TEST_F(EditorTest, ListMenusFollowTheSelection) {
    EXPECT_TRUE(dlg->ModuleListMenu().empty());
    EXPECT_TRUE(dlg->TermListMenu().empty());  // no module rows: nothing to append to
    Select("Alpha/S1/DI");
    EXPECT_TRUE(dlg->ModuleListMenu().empty());
    EXPECT_EQ(Ids(dlg->TermListMenu()), (std::vector<int>{kCmdAppendTerm}));
    dlg->SelectModuleRow(0);
    EXPECT_EQ(dlg->ModuleListMenu(), (std::vector<MenuEntry>{{kCmdChangeModule, "模块参数修改"}}));
    dlg->SelectTermRows({2});
    EXPECT_EQ(dlg->TermListMenu(), (std::vector<MenuEntry>{{kCmdInsertTerm, "插入端点"},
                                                           {kCmdAppendTerm, "追加端点"},
                                                           {kCmdDeleteTerms, "删除端点"},
                                                           {kCmdChangeTerm, "修改端点"},
                                                           {kCmdReorderTerms, "序号调整"}}));
    dlg->SelectTermRows({2, 3});
    const auto several = dlg->TermListMenu();
    EXPECT_TRUE(several[0].greyed);
    EXPECT_FALSE(several[1].greyed);
    EXPECT_FALSE(several[2].greyed);
    EXPECT_TRUE(several[3].greyed);
}

TEST_F(EditorTest, StatusTextsAndColumns) {
    EXPECT_EQ(dlg->moduleList.Columns().size(), 5u);
    // u = 600 / 10 = 60: 2.5u 1.5u u 3u 2u and 2u 1.5u 2.5u 12u.
    std::vector<int> widths;
    for (const auto& column : dlg->moduleList.Columns()) {
        widths.push_back(column.width);
    }
    for (const auto& column : dlg->termList.Columns()) {
        widths.push_back(column.width);
    }
    EXPECT_EQ(widths, (std::vector<int>{150, 90, 60, 180, 120, 120, 90, 150, 720}));
    EXPECT_EQ(dlg->termList.Columns()[3].caption, "端点详细描述");

    dlg->SelectTreeNode(dlg->tree.Root());
    EXPECT_EQ(dlg->statusText, "PLC");
    Select("Alpha");
    EXPECT_EQ(dlg->statusText, "厂家名:Alpha 厂家简称:ALP");
    Select("Beta");
    EXPECT_EQ(dlg->statusText, "厂家名:Beta 厂家简称:无");
    Select("Alpha/S1/DI");
    EXPECT_EQ(dlg->statusText, "厂家:Alpha 系列:S1 系列类型:DI");
    EXPECT_EQ(dlg->moduleList.Count(), 2);
    dlg->SelectModuleRow(1);
    EXPECT_EQ(dlg->statusText, "厂家:Alpha 系列:S1 系列类型:DI 模块代号:DI-32B");
    EXPECT_EQ(dlg->termList.Count(), 3);
}

TEST_F(EditorTest, SubDialogChecks) {
    CDlgNewManufacturer manufacturer;
    manufacturer.existingManufacturers = {"Alpha"};
    manufacturer.fullName = "   ";
    EXPECT_FALSE(manufacturer.OnOK());
    manufacturer.fullName = " ALPHA ";
    EXPECT_FALSE(manufacturer.OnOK());
    EXPECT_TRUE(manufacturer.fullName.empty());
    manufacturer.fullName = " Omega ";
    EXPECT_TRUE(manufacturer.OnOK());
    EXPECT_EQ(manufacturer.fullName, "Omega");
    ASSERT_EQ(env.host.messages.size(), 2u);
    EXPECT_EQ(env.host.messages[0].text, "厂家全称不能为空！请重新输入");
    EXPECT_EQ(env.host.messages[1].text, "厂家 ALPHA 已经存在,请重新操作!");
    for (const auto& message : env.host.messages) {
        EXPECT_EQ(message.caption, "Zandrix 消息");
        EXPECT_EQ(message.icon, host::MsgIcon::Exclamation);
    }
    CDlgNewManufacturer shortName;
    shortName.SetEditMode("Alpha", "ALP");
    EXPECT_EQ(shortName.caption, "修改厂家简称");
    EXPECT_TRUE(shortName.OnOK());
    EXPECT_FALSE(shortName.ShortNameChanged());

    env.host.messages.clear();
    CDlgNewSeries series;
    series.seriesName = " \t";
    EXPECT_FALSE(series.OnOK());
    CDlgNewModule module;
    module.code = " ";
    module.points = " 8 ";
    EXPECT_FALSE(module.OnOK());
    EXPECT_EQ(module.points, "8");
    EXPECT_EQ(env.host.MessageTexts(),
              (Texts{"系列名不能为空！请重新输入", "模块代码名称不能为空！请重新输入"}));

    CDlgTermOrder order;
    order.rows = {{"1", "a"}, {"2", "b"}, {"3", "c"}};
    order.selected = 0;
    EXPECT_FALSE(order.MoveUp());
    EXPECT_TRUE(order.MoveDown());
    EXPECT_TRUE(order.MoveDown());
    EXPECT_FALSE(order.MoveDown());
    EXPECT_EQ(order.rows[2][1], "a");
    EXPECT_FALSE(order.SetOrder({"1", "1", "2"}));
    EXPECT_FALSE(order.SetOrder({"1", "2"}));
    EXPECT_TRUE(order.SetOrder({"1", "3", "2"}));  // rows named by their sequence cells
    EXPECT_EQ(order.rows[0][1], "a");
    EXPECT_EQ(order.rows[1][1], "c");
}

TEST_F(EditorTest, ARefusedDialogStaysOpenUntilTheUserCancels) {
    Select("Alpha");
    int attempts = 0;
    dlg->newSeriesRunner = [&](CDlgNewSeries& d) {
        d.seriesName = "";
        ++attempts;
        return d.OnOK();  // refused: the runner gives up, as a user pressing Cancel
    };
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdNewSeries));
    EXPECT_EQ(attempts, 1);
    EXPECT_TRUE(Changes().empty());
    dlg->newSeriesRunner = nullptr;  // no runner: cancelled
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdNewSeries));
    EXPECT_TRUE(Changes().empty());
}

TEST_F(EditorTest, DuplicatesAreRefusedWithTheirMessages) {
    EXPECT_FALSE(NewSeries("Alpha", "s1"));
    EXPECT_FALSE(NewType("Alpha/S1", "di"));
    EXPECT_FALSE(NewModule("Alpha/S1/DI", "di-16a"));
    EXPECT_EQ(
        env.host.MessageTexts(),
        (Texts{"厂家 Alpha 的系列 s1 已经存在,请重新新建该厂家系列!",
               "厂家 Alpha 的系列 S1的系列类型 di \n已经存在,请重新操作!", "该模块已经存在!"}));
    for (const auto& message : env.host.messages) {
        EXPECT_EQ(message.caption, "Zandrix");
    }
    EXPECT_TRUE(Changes().empty());
}

TEST_F(EditorTest, CommandsAskForTheirSelection) {
    Select("Alpha/S1/DI");
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdChangeModule));
    dlg->SelectModuleRow(0);
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdDeleteTerms));
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdChangeTerm));
    dlg->SelectTermRows({0, 1});
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdChangeTerm));
    EXPECT_EQ(env.host.MessageTexts(),
              (Texts{"请选择模块进行修改！", "请选择要删除的端点信息！", "请选择端点进行修改！",
                     "只能选择一个端点进行修改！"}));
    // A cancelled confirmation deletes nothing.
    env.host.messageAnswers.push_back(host::MsgResult::Cancel);
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdDeleteTerms));
    EXPECT_TRUE(Changes().empty());
    EXPECT_EQ(dlg->termList.Count(), 7);
}

TEST_F(EditorTest, EveryCommandRunsInsideTheDocumentLock) {
    Select("Alpha/S1/DI");
    int depthInDialog = -1;
    dlg->newModuleRunner = [&](CDlgNewModule& d) {
        depthInDialog = env.host.lockDepth;
        d.code = "L1";
        return d.OnOK();
    };
    ASSERT_TRUE(dlg->OnMenuCommand(kCmdNewModule));
    EXPECT_EQ(depthInDialog, 1);
    EXPECT_EQ(env.host.lockDepth, 0);
    EXPECT_EQ(dlg->focus, "tree");
    dlg->SelectModuleRow(0);
    dlg->changeModuleRunner = FillAndOk<CDlgChangeModule>(nullptr);
    dlg->OnModuleListDoubleClick();
    EXPECT_EQ(dlg->focus, "moduleList");
    EXPECT_EQ(env.host.lockDepth, 0);
}

TEST_F(EditorTest, DoubleClicksChangeTheRow) {
    Select("Alpha/S1/DI/DI-32B");
    dlg->SelectTermRows({1});
    dlg->changeTermDataRunner = FillAndOk<CDlgChangeTermData>([](auto& d) {
        EXPECT_EQ(d.sequence, "2");
        d.termDesc = "changed";
    });
    dlg->OnTermListDoubleClick();
    EXPECT_EQ(dlg->termList.Text(1, kTermDesc), "changed");
    EXPECT_EQ(dlg->focus, "termList");
    EXPECT_EQ(Db("SELECT TERMDESC FROM Alpha_S1_DI_data WHERE CODE='DI-32B' AND SEQUENCE=2")
                  .rows.at(0)
                  .at(0),
              "changed");
}

TEST_F(EditorTest, HeaderClicksSortAndToggle) {
    Select("Alpha/S1/DI/DI-16A");
    EXPECT_EQ(dlg->sortColumn, -1);
    dlg->OnTermHeaderClick(kTermSequence);  // ascending first
    EXPECT_TRUE(dlg->sortAscending);
    dlg->OnTermHeaderClick(kTermSequence);  // the same column toggles
    EXPECT_FALSE(dlg->sortAscending);
    EXPECT_EQ(dlg->termList.Text(0, kTermSequence), "7");
    EXPECT_EQ(dlg->termList.Text(6, kTermSequence), "1");
    dlg->OnTermHeaderClick(kTermDetail);  // another column starts ascending
    EXPECT_TRUE(dlg->sortAscending);
    EXPECT_EQ(dlg->sortColumn, kTermDetail);
    EXPECT_EQ(dlg->termList.Text(0, kTermDetail), "通道1");
    // Ten sorts before nine as a number, not as text.
    Select("Alpha/S1/DI/DI-32B");
    for (int i = 0; i < 7; ++i) {
        ASSERT_TRUE(AppendTerm("v" + std::to_string(i)));
    }
    dlg->OnTermHeaderClick(kTermSequence);
    dlg->OnTermHeaderClick(kTermSequence);
    EXPECT_EQ(dlg->termList.Text(0, kTermSequence), "10");
}

TEST_F(EditorTest, FindWalksOnAndWrapsAroundOnYes) {
    dlg->editFind = "b";
    ASSERT_TRUE(dlg->OnFind());
    EXPECT_EQ(dlg->tree.Selected()->text, "DI-32B");
    ASSERT_TRUE(dlg->OnFind());
    EXPECT_EQ(dlg->tree.Selected()->text, "Beta");
    ASSERT_TRUE(dlg->OnFind());
    EXPECT_EQ(dlg->tree.Selected()->text, "B1");
    ASSERT_TRUE(dlg->OnFind());
    EXPECT_EQ(dlg->tree.Selected()->text, "B2");
    // Nothing after B2: the question, answered No, leaves the selection.
    EXPECT_FALSE(dlg->OnFind());
    ASSERT_EQ(env.host.messages.size(), 1u);
    EXPECT_EQ(env.host.messages[0].text, "搜索已达尾端，是否从头开始？");
    EXPECT_EQ(env.host.messages[0].caption, "Zandrix");
    EXPECT_EQ(env.host.messages[0].buttons, host::MsgButtons::YesNo);
    EXPECT_EQ(dlg->tree.Selected()->text, "B2");
    env.host.messageAnswers.push_back(host::MsgResult::Yes);
    ASSERT_TRUE(dlg->OnFind());
    EXPECT_EQ(dlg->tree.Selected()->text, "DI-32B");
}

TEST_F(EditorTest, DrawButtonRefusesAnEmptyTypeAndHandsOverOtherwise) {
    ASSERT_TRUE(NewType("Beta/B2", "Empty"));
    Select("Beta/B2/Empty");
    EXPECT_FALSE(dlg->OnDraw());
    EXPECT_EQ(env.host.MessageTexts().back(), "当前选中的项中没有可以绘制的数据！");
    EXPECT_TRUE(env.host.sentCommands.empty());
    EXPECT_TRUE(dlg->plcLib.IsOpen());

    Select("Alpha/S1/DI/DI-16A");
    bool closed = false;
    dlg->onClosed = [&](CDlgPlcDataLibEdit*) { closed = true; };
    EXPECT_TRUE(dlg->OnDraw());
    EXPECT_TRUE(closed);
    EXPECT_EQ(env.host.sentCommands, (Texts{"(Command)\nPlcRendal\n"}));
    EXPECT_FALSE(dlg->plcLib.IsOpen());
    EXPECT_EQ(testing_support::ReadFile(env.LastSelectionFile()), "Alpha\nS1\nDI\nDI-16A\n");
}

TEST_F(EditorTest, ImportReloadsTheLibraryOnlyOnOk) {
    // The importer writes through its own connection; the editor sees it after OK.
    const auto import = [&] {
        std::string error;
        plcdb::Connection other;
        EXPECT_TRUE(other.Open(env.LibraryPath().string(), error));
        EXPECT_TRUE(
            other.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('Imported','','','')", error));
        other.Close(error);
    };
    dlg->onImport = [&] {
        import();
        return false;
    };
    dlg->OnImport();
    EXPECT_EQ(dlg->FindPath({"Imported"}), nullptr);
    dlg->onImport = [] { return true; };
    dlg->OnImport();
    EXPECT_NE(dlg->FindPath({"Imported"}), nullptr);
}

TEST_F(EditorTest, TheCommandCreatesOneEditorAndClosingForgetsIt) {
    dlg.reset();
    ASSERT_EQ(g_pDlgPlcDataLibEdit, nullptr);
    app::CPlcDataLibEditMain run;
    run.Run();
    ASSERT_NE(g_pDlgPlcDataLibEdit, nullptr);
    CDlgPlcDataLibEdit* first = g_pDlgPlcDataLibEdit;
    EXPECT_TRUE(first->visible);
    EXPECT_TRUE(first->active);
    first->Minimize();
    run.Run();
    EXPECT_EQ(g_pDlgPlcDataLibEdit, first);
    EXPECT_FALSE(first->minimized);

    int checkIns = 0;
    const auto serverCheckIn = app::g_checkInLibrary;
    app::g_checkInLibrary = [&] { ++checkIns; };
    first->OnClose();  // single workstation: nothing to give back
    EXPECT_EQ(g_pDlgPlcDataLibEdit, nullptr);
    EXPECT_EQ(checkIns, 0);

    run.Run();
    ASSERT_NE(g_pDlgPlcDataLibEdit, nullptr);
    {
        // A network client with editing rights gives the library back when it closes.
        testing_support::ScopedEnv network("ZANDRIX_INSTALL_STYLE", "1");
        g_pDlgPlcDataLibEdit->OnClose();
        EXPECT_EQ(checkIns, 1);
        EXPECT_EQ(g_pDlgPlcDataLibEdit, nullptr);
        // Without a reachable server its editor does not open at all.
        run.Run();
        EXPECT_EQ(g_pDlgPlcDataLibEdit, nullptr);
    }
    app::g_checkInLibrary = serverCheckIn;

    run.Run();
    app::DestroyLibraryEditor();
    EXPECT_EQ(g_pDlgPlcDataLibEdit, nullptr);
}

}  // namespace
}  // namespace libedit_test
