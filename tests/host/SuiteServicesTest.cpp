#include <gtest/gtest.h>

#include "TestPaths.h"
#include "host/SuiteServices.h"

using testing_support::ScopedEnv;

TEST(PathJoin, KeepsExactlyOneSeparatorAtTheSeam) {
    EXPECT_EQ(suite::PathJoin("/a/b", "c/d"), "/a/b/c/d");
    EXPECT_EQ(suite::PathJoin("/a/b/", "c"), "/a/b/c");
    EXPECT_EQ(suite::PathJoin("/a/b", "/c"), "/a/b/c");
    EXPECT_EQ(suite::PathJoin("/a/b/", "/c"), "/a/b/c");
    // Only the seam is touched: doubled separators inside a part stay.
    EXPECT_EQ(suite::PathJoin("/a//", "//c"), "/a///c");
    EXPECT_EQ(suite::PathJoin("", "c"), "c");
    EXPECT_EQ(suite::PathJoin("/a/", ""), "/a/");
}

TEST(SuiteServices, FoldersComeFromTheEnvironmentWithOneTrailingSeparator) {
    ScopedEnv local("ZANDRIX_LOCAL_DIR", "/srv/zandrix");
    ScopedEnv common("ZANDRIX_COMMON_DIR", "/opt/common/");
    EXPECT_EQ(suite::GetZandrixLocalInstallPath(), "/srv/zandrix/");
    EXPECT_EQ(suite::GetZandrixCommonResInstallPath(), "/opt/common/");
}

TEST(SuiteServices, DefaultsWhenNothingIsSet) {
    ScopedEnv style("ZANDRIX_INSTALL_STYLE", "");
    ScopedEnv local("ZANDRIX_LOCAL_DIR", "");
    ScopedEnv xdg("XDG_DATA_HOME", "/home/u/.data");
    EXPECT_EQ(suite::GetCurZandrixInstallStyle(), 0);
    EXPECT_EQ(suite::GetZandrixLocalInstallPath(), "/home/u/.data/zandrix/");
}

TEST(SuiteServices, InstallStyleAcceptsOnlyTheThreeKnownValues) {
    for (const auto& [text, expected] : {std::pair{"1", 1}, {"2", 2}, {"0", 0}, {"7", 0},
                                         {"network", 0}}) {
        ScopedEnv style("ZANDRIX_INSTALL_STYLE", text);
        EXPECT_EQ(suite::GetCurZandrixInstallStyle(), expected) << text;
    }
}

TEST(SuiteServices, NativePathTurnsTheSystemsBackslashesIntoSlashes) {
    EXPECT_EQ(suite::NativePath("LocalData\\PlcDrawSetting.dat"), "LocalData/PlcDrawSetting.dat");
}
