#include <gtest/gtest.h>

#include <memory>

#include "host/CommandRegistry.h"

using host::CommandRegistry;

namespace {

// The plug-in's two groups: names that differ only in case are two groups.
CommandRegistry PluginLike(int& runs) {
    CommandRegistry registry;
    EXPECT_TRUE(
        registry.Add("QvPlcRendal", "PlcDataLibEdit", "PlcDataLibEdit", 1, [&] { ++runs; }));
    EXPECT_TRUE(registry.Add("QvPlcRendal", "RENDALFULL", "RENDALFULL", 1, [&] { runs += 10; }));
    EXPECT_TRUE(registry.Add("QVPLCRENDAL", "PLCRENDAL", "PLCRENDAL", 1, [&] { runs += 100; }));
    return registry;
}

}  // namespace

TEST(CommandRegistry, FindsByEitherNameIgnoringCaseAndRunsTheHandler) {
    CommandRegistry registry;
    int runs = 0;
    ASSERT_TRUE(registry.Add("G", "ZOOM", "ZOOMEN", 0, [&] { ++runs; }));
    ASSERT_NE(registry.Find("zoom"), nullptr);
    ASSERT_NE(registry.Find("ZoomEn"), nullptr);
    EXPECT_EQ(registry.Find("ZoomEn")->globalName, "ZOOM");
    EXPECT_EQ(registry.Find("ZOO"), nullptr);
    EXPECT_EQ(registry.Find("ZOOMX"), nullptr);
    EXPECT_TRUE(registry.Run("zOoM"));
    EXPECT_FALSE(registry.Run("(Command)"));
    EXPECT_EQ(runs, 1);
}

TEST(CommandRegistry, RefusesATakenNameAndKeepsTheFirstHandler) {
    int runs = 0;
    CommandRegistry registry = PluginLike(runs);
    EXPECT_FALSE(registry.Add("Other", "rendalfull", "X", 1, [&] { runs = -1; }));
    EXPECT_FALSE(registry.Add("Other", "X", "plcrendal", 1, [&] { runs = -1; }));
    EXPECT_FALSE(registry.Add("Other", "", "Y", 1, [] {}));
    EXPECT_FALSE(registry.Add("Other", "Y", "Y", 1, nullptr));
    EXPECT_EQ(registry.Names(),
              (std::vector<std::string>{"PlcDataLibEdit", "RENDALFULL", "PLCRENDAL"}));
    registry.Run("RendalFull");
    EXPECT_EQ(runs, 10);
}

TEST(CommandRegistry, RemovingAGroupLeavesTheGroupThatDiffersOnlyInCase) {
    int runs = 0;
    CommandRegistry registry = PluginLike(runs);
    EXPECT_EQ(registry.RemoveGroup("QvPlcRendal"), 2);
    EXPECT_EQ(registry.Names(), std::vector<std::string>{"PLCRENDAL"});
    EXPECT_EQ(registry.RemoveGroup("QvPlcRendal"), 0);
    EXPECT_EQ(registry.RemoveGroup("QVPLCRENDAL"), 1);
    EXPECT_TRUE(registry.Empty());
    // A removed name may be registered again, as after a reload.
    EXPECT_TRUE(registry.Add("QVPLCRENDAL", "PLCRENDAL", "PLCRENDAL", 1, [] {}));
}

TEST(CommandRegistry, AHandlerMayRemoveItsOwnGroupWhileItRuns) {
    CommandRegistry registry;
    auto state = std::make_shared<int>(0);
    ASSERT_TRUE(registry.Add("G", "UNLOAD", "", 0, [&registry, state] {
        registry.RemoveGroup("G");
        // The captured state must still be alive after the stored handler went.
        *state += 1;
    }));
    EXPECT_EQ(registry.Find("unload")->localName, "UNLOAD");
    EXPECT_TRUE(registry.Run("UNLOAD"));
    EXPECT_EQ(*state, 1);
    EXPECT_TRUE(registry.Empty());
}

TEST(CommandRegistry, CommandStringsSplitIntoTypedLines) {
    EXPECT_EQ(host::CommandStringLines("(Command)\nRendalFull\n"),
              (std::vector<std::string>{"(Command)", "RendalFull"}));
    EXPECT_EQ(host::CommandStringLines("A\r\n\n  \nB"), (std::vector<std::string>{"A", "B"}));
    EXPECT_TRUE(host::CommandStringLines("").empty());
}
