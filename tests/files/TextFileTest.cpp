#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "TestPaths.h"
#include "files/TextFile.h"

using namespace testing_support;

TEST(TextFile, ReadsLinesWithLfOrCrLfEnds) {
    TempDir dir;
    WriteFile(dir / "a.txt", "one\r\ntwo\nthree");
    const auto lines = files::ReadLines((dir / "a.txt").string());
    ASSERT_TRUE(lines);
    EXPECT_EQ(*lines, (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_FALSE(files::ReadLines((dir / "missing.txt").string()));
}

TEST(TextFile, FilesOfTheWindowsSuiteAreReadAsGb18030) {
    TempDir dir;
    // "端子A名称:" in GB18030 with a CR LF end.
    WriteFile(dir / "gb.dat",
              "\xB6\xCB\xD7\xD3"
              "A"
              "\xC3\xFB\xB3\xC6:X\r\n");
    const auto lines = files::ReadLines((dir / "gb.dat").string());
    ASSERT_TRUE(lines);
    ASSERT_EQ(lines->size(), 1u);
    EXPECT_EQ((*lines)[0], "端子A名称:X");
}

TEST(TextFile, Utf8IsValidatedStrictly) {
    EXPECT_TRUE(files::IsValidUtf8("abc 端子"));
    EXPECT_FALSE(files::IsValidUtf8("\xE7\xAB"));  // truncated sequence
    EXPECT_FALSE(files::IsValidUtf8("\xC0\xAF"));  // overlong
    EXPECT_FALSE(files::IsValidUtf8("a\xFF"));
}

TEST(TextFile, WriteWholeReplacesTheFileAndLeavesNoTemporary) {
    TempDir dir;
    std::filesystem::create_directory(dir / "sub");
    const auto path = (dir / "sub/s.dat").string();
    ASSERT_TRUE(files::WriteWhole(path, "first\n"));
    ASSERT_TRUE(files::WriteWhole(path, "second\n"));
    EXPECT_EQ(ReadFile(path), "second\n");
    int files = 0;
    for (const auto& e : std::filesystem::directory_iterator(dir / "sub")) {
        (void)e;
        ++files;
    }
    EXPECT_EQ(files, 1);
}

TEST(TextFile, AReadOnlyFileIsRefusedAndKeptIntact) {
    TempDir dir;
    const auto path = (dir / "ro.dat").string();
    WriteFile(path, "original\n");
    chmod(path.c_str(), 0444);
    std::string error;
    EXPECT_FALSE(files::WriteWhole(path, "new\n", &error));
    EXPECT_NE(error.find("read-only"), std::string::npos) << error;
    EXPECT_EQ(ReadFile(path), "original\n");
    int files = 0;
    for (const auto& e : std::filesystem::directory_iterator(dir.Path())) {
        (void)e;
        ++files;
    }
    EXPECT_EQ(files, 1);
}
