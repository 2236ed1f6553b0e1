// The runs of PLCRENDAL, RENDALFULL and DIVRENDAL around the one drawing dialog: creation,
// refresh, the turns of drawPending and reshowPending, closing and unload.
#include <gtest/gtest.h>

#include <algorithm>

#include "../draw/DialogTestSupport.h"
#include "app/PlcRendalApp.h"
#include "app/PlcRendalMain.h"
#include "cad/Database.h"
#include "draw/DlgPlcRendal.h"

using dialog_test::DialogEnvironment;

namespace {

class RendalRunsTest : public ::testing::Test {
protected:
    void TearDown() override { app::DestroyPluginDialogs(); }
    int Count(const std::string& call) const {
        return static_cast<int>(std::count(env.host.calls.begin(), env.host.calls.end(), call));
    }
    DialogEnvironment env;
    app::CPlcRendalMain run;
};

}  // namespace

TEST_F(RendalRunsTest, PlcRendalCreatesOneDialogAndRefreshesItOnEveryRun) {
    run.RunRendal();
    CDlgPlcRendal* first = g_pDlgPlcRendal;
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->visible);
    EXPECT_TRUE(first->active);
    EXPECT_TRUE(first->libLoaded);
    EXPECT_EQ(first->tree.Root()->children.size(), 3u);

    first->Minimize();
    ASSERT_TRUE(first->plcLib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('Delta','','','')"));
    run.RunRendal();
    EXPECT_EQ(g_pDlgPlcRendal, first);  // the same instance, refreshed and restored
    EXPECT_FALSE(first->minimized);
    EXPECT_EQ(first->tree.Root()->children.size(), 4u);
    EXPECT_EQ(Count("ActivateMainWindow"), 2);
}

TEST_F(RendalRunsTest, AnUnreadableLibraryLeavesNoDialog) {
    testing_support::WriteFile(env.LibraryPath(), "this is not a library");
    run.RunRendal();
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
}

TEST_F(RendalRunsTest, ReshowPendingOnlyBringsTheDialogBack) {
    run.RunRendal();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    ASSERT_NE(dlg, nullptr);
    cad::Database db;
    env.host.database = &db;
    const size_t entitiesBefore = db.Entities(db.ModelSpace()).size();
    dlg->Minimize();
    dlg->visible = false;
    dlg->drawPending = true;
    dlg->reshowPending = true;
    run.RunRendalFull();
    EXPECT_TRUE(dlg->visible);
    EXPECT_FALSE(dlg->minimized);
    EXPECT_FALSE(dlg->reshowPending);
    EXPECT_TRUE(dlg->drawPending);  // kept for the next run
    EXPECT_EQ(db.Entities(db.ModelSpace()).size(), entitiesBefore);
    EXPECT_TRUE(env.host.pointAnswers.empty());
    EXPECT_TRUE(env.host.prompts.empty());

    dlg->reshowPending = true;
    run.RunDivRendal();
    EXPECT_FALSE(dlg->reshowPending);
    EXPECT_TRUE(dlg->drawPending);
    EXPECT_TRUE(env.host.prompts.empty());
}

TEST_F(RendalRunsTest, WithoutARequestTheRunOnlyRestoresTheDialog) {
    run.RunRendal();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    dlg->Minimize();
    run.RunDivRendal();
    EXPECT_FALSE(dlg->minimized);
    EXPECT_TRUE(env.host.prompts.empty());
}

TEST_F(RendalRunsTest, ADrawRequestIsCarriedOutByTheQueuedCommandAndTheDialogComesBack) {
    if (!env.realSymbol) {
        GTEST_SKIP() << "the terminal symbols are not built";
    }
    app::CPlcRendalApp application;
    application.EntryPoint(app::AppMessage::InitApplication);
    run.RunRendal();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    ASSERT_TRUE(dlg->SelectModulePath("Alpha", "S1", "DI", "DI-32B"));
    dlg->editTag = "A1";
    cad::Database db;
    env.host.database = &db;
    const size_t before = db.Entities(db.ModelSpace()).size();
    env.host.pointAnswers.push_back({host::InputStatus::Normal, {100, 50, 0}});
    dlg->OnDrawFull();
    ASSERT_TRUE(dlg->drawPending);
    EXPECT_TRUE(dlg->minimized);

    EXPECT_GE(env.host.RunSentCommands(), 2);  // the drawing, then the dialog's return
    EXPECT_FALSE(dlg->drawPending);
    EXPECT_EQ(dlg->drawFinished, 1);
    EXPECT_GT(db.Entities(db.ModelSpace()).size(), before);
    EXPECT_FALSE(dlg->reshowPending);
    EXPECT_FALSE(dlg->minimized);
    EXPECT_TRUE(dlg->visible);

    application.EntryPoint(app::AppMessage::UnloadApplication);
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
}

TEST_F(RendalRunsTest, ACancelledPlacementDrawsNothingAndStillBringsTheDialogBack) {
    if (!env.realSymbol) {
        GTEST_SKIP() << "the terminal symbols are not built";
    }
    app::CPlcRendalApp application;
    application.EntryPoint(app::AppMessage::InitApplication);
    run.RunRendal();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    ASSERT_TRUE(dlg->SelectModulePath("Alpha", "S1", "DI", "DI-32B"));
    dlg->editTag = "A1";
    cad::Database db;
    env.host.database = &db;
    dlg->OnDrawDivided();  // no point scripted: the placement is cancelled
    env.host.RunSentCommands();
    EXPECT_FALSE(dlg->drawPending);
    EXPECT_EQ(dlg->drawFinished, 0);
    EXPECT_FALSE(dlg->minimized);
    EXPECT_NE(env.host.AllPrinted().find("选择插入点错误!"), std::string::npos);
}

TEST_F(RendalRunsTest, ClosingDestroysTheDialogAndTheNextRunCreatesANewOne) {
    run.RunRendal();
    ASSERT_NE(g_pDlgPlcRendal, nullptr);
    ASSERT_TRUE(g_pDlgPlcRendal->SelectModulePath("Alpha", "S2", "AI", "AI-08"));
    g_pDlgPlcRendal->OnClose();
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
    run.RunRendalFull();  // no dialog: nothing happens
    EXPECT_TRUE(env.host.messages.empty());

    run.RunRendal();
    ASSERT_NE(g_pDlgPlcRendal, nullptr);
    ASSERT_NE(g_pDlgPlcRendal->tree.Selected(), nullptr);
    EXPECT_EQ(g_pDlgPlcRendal->tree.Selected()->text, "AI-08");  // the saved selection
}

TEST_F(RendalRunsTest, UnloadDestroysTheDialog) {
    run.RunRendal();
    ASSERT_NE(g_pDlgPlcRendal, nullptr);
    app::CPlcRendalApp application;
    application.EntryPoint(app::AppMessage::UnloadApplication);
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
    app::DestroyPluginDialogs();  // a second unload has nothing left to destroy
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
}

TEST_F(RendalRunsTest, ANetworkClientWithoutALocalCopyMarksItsCopyOutOfDate) {
    testing_support::ScopedEnv style("ZANDRIX_INSTALL_STYLE", "2");
    const auto stamp = env.LocalDir() / "PLC" / "QvPLC.tim";
    testing_support::WriteFile(stamp, "2026-01-01 00:00:00\n");
    run.RunRendal();  // the local copy is there: the stamp stays
    EXPECT_TRUE(std::filesystem::exists(stamp));
    app::DestroyPluginDialogs();

    std::filesystem::remove(env.LibraryPath());
    run.RunRendal();
    EXPECT_FALSE(std::filesystem::exists(stamp));
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
    ASSERT_EQ(env.host.messages.size(), 1u);
    EXPECT_EQ(env.host.messages[0].caption, "Zandrix 消息");
}

TEST_F(RendalRunsTest, TheWindowHookSeesEachNewDialogOnceBeforeItsTreeIsBuilt) {
    std::vector<CDlgPlcRendal*> seen;
    std::vector<int> nodesWhenSeen;
    app::g_rendalWindowCreated = [&](CDlgPlcRendal& dlg) {
        seen.push_back(&dlg);
        nodesWhenSeen.push_back(dlg.tree.Count());
        EXPECT_TRUE(dlg.windowCreated);
        EXPECT_FALSE(dlg.visible);
    };
    run.RunRendal();
    run.RunRendal();  // the same dialog: not announced again
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0], g_pDlgPlcRendal);
    EXPECT_EQ(nodesWhenSeen[0], 0);
    g_pDlgPlcRendal->OnClose();
    run.RunRendal();
    EXPECT_EQ(seen.size(), 2u);

    // A library that does not open makes no window and announces nothing.
    app::DestroyPluginDialogs();
    testing_support::WriteFile(env.LibraryPath(), "this is not a library");
    run.RunRendal();
    EXPECT_EQ(seen.size(), 2u);
    app::g_rendalWindowCreated = nullptr;
}
