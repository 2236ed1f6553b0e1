#include <gtest/gtest.h>

#include <filesystem>

#include "RecordingHost.h"
#include "TestPaths.h"
#include "app/CommandTable.h"
#include "app/PlcDataLibEditMain.h"
#include "app/PlcRendalApp.h"
#include "app/PlcRendalMain.h"

using namespace testing_support;

namespace {

struct FrameFixture : ::testing::Test {
    RecordingHost recorder;
    host::ScopedHost scope{recorder};
    TempDir local;
    ScopedEnv localEnv{"ZANDRIX_LOCAL_DIR", local.Path().string()};
    ScopedEnv styleEnv{"ZANDRIX_INSTALL_STYLE", "0"};
};

}  // namespace

TEST_F(FrameFixture, InitialiseRegistersTheFourCommandsInTheirTwoGroups) {
    app::CPlcRendalApp application;
    EXPECT_TRUE(application.IsUnloadable());
    EXPECT_TRUE(application.IsMdiAware());
    ASSERT_EQ(application.EntryPoint(app::AppMessage::InitApplication), app::AppResult::Ok);
    ASSERT_EQ(recorder.commands.Commands().size(), 4u);
    const std::pair<const char*, const char*> expected[] = {{"QvPlcRendal", "PlcDataLibEdit"},
                                                            {"QvPlcRendal", "RENDALFULL"},
                                                            {"QvPlcRendal", "DIVRENDAL"},
                                                            {"QVPLCRENDAL", "PLCRENDAL"}};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(recorder.commands.Commands()[i].group, expected[i].first);
        EXPECT_EQ(recorder.commands.Commands()[i].globalName, expected[i].second);
        EXPECT_EQ(recorder.commands.Commands()[i].localName, expected[i].second);
        EXPECT_EQ(recorder.commands.Commands()[i].flags, 1);
    }
}

TEST_F(FrameFixture, UnloadRemovesEachGroupOnceInTableOrder) {
    app::CPlcRendalApp application;
    application.EntryPoint(app::AppMessage::InitApplication);
    recorder.calls.clear();
    application.EntryPoint(app::AppMessage::UnloadApplication);
    EXPECT_TRUE(recorder.commands.Empty());
    EXPECT_EQ(std::count(recorder.calls.begin(), recorder.calls.end(), "RemoveGroup"), 2);
}

TEST_F(FrameFixture, TheTableHasNoUiContextAndNoResourceIds) {
    for (const auto& entry : app::CommandTable()) {
        EXPECT_EQ(entry.uiContext, nullptr);
        EXPECT_EQ(entry.localNameId, app::kNoResourceId);
        EXPECT_NE(entry.handler, nullptr);
    }
}

TEST_F(FrameFixture, AnOrdinaryNetworkClientMayNotEditTheLibrary) {
    ScopedEnv style("ZANDRIX_INSTALL_STYLE", "2");
    app::CPlcDataLibEditMain run;
    run.Run();
    EXPECT_EQ(recorder.AllPrinted(), "普通客户端无运行此命令的权限！\n");
    EXPECT_TRUE(recorder.messages.empty());
    EXPECT_EQ(std::count(recorder.calls.begin(), recorder.calls.end(), "ActivateMainWindow"), 0);
}

TEST_F(FrameFixture, PlcRendalWithoutALibraryNamesTheMissingFile) {
    app::CPlcRendalMain run;
    run.RunRendal();
    ASSERT_EQ(recorder.messages.size(), 1u);
    const auto path = (local.Path() / "PLC/QvPLC.db").string();
    EXPECT_EQ(recorder.messages[0].text, "PLC元件数据库文件" + path + "不存在");
    EXPECT_EQ(recorder.messages[0].caption, "Zandrix 消息");
    EXPECT_EQ(recorder.messages[0].icon, host::MsgIcon::Error);
}

TEST_F(FrameFixture, DrawingCommandsBeforeTheDialogExistsDoNothing) {
    app::CPlcRendalMain run;
    run.RunRendalFull();
    run.RunDivRendal();
    EXPECT_TRUE(recorder.messages.empty());
    EXPECT_TRUE(recorder.printed.empty());
}
