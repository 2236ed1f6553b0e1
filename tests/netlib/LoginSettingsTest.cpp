// The login-settings file: the scrambling both ways and the file's round trip.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "TestPaths.h"
#include "netlib/LoginSettings.h"

using testing_support::TempDir;

TEST(LoginSettingsTest, ScramblingIsReversibleAndHidesTheText) {
    for (const std::string& plain : std::vector<std::string>{
             "", "s3cret", "团队 库/v#1", std::string(300, 'a'), std::string("\x01\xff", 2)}) {
        const std::string scrambled = netlib::Scramble(plain);
        EXPECT_EQ(scrambled.find_first_not_of("0123456789ABCDEF"), std::string::npos);
        EXPECT_EQ(netlib::Unscramble(scrambled), plain);
    }
    // The same letter scrambles differently at each position.
    EXPECT_NE(netlib::Scramble("aa").substr(0, 2), netlib::Scramble("aa").substr(2, 2));
    EXPECT_FALSE(netlib::Unscramble("ABC"));
    EXPECT_FALSE(netlib::Unscramble("ZZ"));
}

TEST(LoginSettingsTest, FileRoundTripKeepsElevenLinesPrivate) {
    TempDir dir;
    const std::string path = (dir / "LocalData/QvFTPLoginInfo.sys").string();
    netlib::LoginSettings settings;
    settings.lines[0] = "kept for other tools";
    settings.SetRoot("团队库");
    settings.SetServer("ftp.example.org");
    settings.SetPort("2121");
    settings.SetAnonymous(false);
    settings.SetUser("team");
    settings.SetPassword("pa ss\tword");
    settings.SetPassive(true);
    std::string error;
    ASSERT_TRUE(netlib::WriteLoginSettings(path, settings, &error)) << error;

    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    const std::string bytes = testing_support::ReadFile(path);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), 11);
    EXPECT_EQ(bytes.find("team"), std::string::npos);
    EXPECT_EQ(bytes.find("pa ss"), std::string::npos);

    const auto read = netlib::ReadLoginSettings(path, &error);
    ASSERT_TRUE(read) << error;
    EXPECT_EQ(read->lines, settings.lines);
    EXPECT_TRUE(read->Passive());
    EXPECT_FALSE(read->Anonymous());

    // A file made readable by others is private again after the next write.
    ::chmod(path.c_str(), 0644);
    ASSERT_TRUE(netlib::WriteLoginSettings(path, settings, &error));
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST(LoginSettingsTest, BadLineOrMissingFileIsNamed) {
    TempDir dir;
    const std::string path = (dir / "QvFTPLoginInfo.sys").string();
    std::string error;
    EXPECT_FALSE(netlib::ReadLoginSettings(path, &error));
    EXPECT_NE(error.find(path), std::string::npos);

    testing_support::WriteFile(path, netlib::Scramble("x") + "\n" + "not scrambled\n");
    EXPECT_FALSE(netlib::ReadLoginSettings(path, &error));
    EXPECT_NE(error.find("line 2"), std::string::npos);

    // Short files read their missing lines as empty: no root, no passive flag.
    testing_support::WriteFile(path, "\n" + netlib::Scramble("lib") + "\n");
    const auto read = netlib::ReadLoginSettings(path, &error);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->Root(), "lib");
    EXPECT_FALSE(read->Passive());
}
