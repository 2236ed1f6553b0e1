// qvplc-desktop run as a program, offscreen: scripts, screenshots, exit codes and --help.
#include <gtest/gtest.h>

#include <filesystem>

#include "TestPaths.h"

using namespace testing_support;

namespace {

class DesktopProgram : public ::testing::Test {
protected:
    DesktopProgram()
        : localEnv("ZANDRIX_LOCAL_DIR", local.Path().string()),
          commonEnv("ZANDRIX_COMMON_DIR", CommonResDir().string()),
          settingsEnv("QVPLC_DESKTOP_SETTINGS", (local / "desktop.conf").string()) {
        std::filesystem::create_directories(local / "PLC");
        std::filesystem::copy_file(BinaryDir() / "local" / "PLC" / "QvPLC.db",
                                   local / "PLC" / "QvPLC.db");
    }
    int Run(const std::string& arguments, std::string* output) {
        return RunCommand("QT_QPA_PLATFORM=offscreen '" +
                              (BinaryDir() / "bin" / "qvplc-desktop").string() + "' " + arguments +
                              " 2>&1",
                          output);
    }
    std::string Script(const std::string& lines) {
        const auto path = local / "script.txt";
        WriteFile(path, lines);
        return path.string();
    }
    TempDir local;
    ScopedEnv localEnv, commonEnv, settingsEnv;
};

}  // namespace

TEST_F(DesktopProgram, AScriptSavesADrawingAndTheScreenshotShowsTheWindow) {
    const std::string drawing = (local / "out.dxf").string();
    const std::string shot = (local / "shot.png").string();
    std::string output;
    const int code =
        Run("--commands '" + Script("# a comment\n\nPLCRENDAL\nZOOM E\nSAVEAS " + drawing + "\n") +
                "' --screenshot '" + shot + "' --quit",
            &output);
    EXPECT_EQ(code, 0) << output;
    EXPECT_TRUE(std::filesystem::exists(drawing)) << output;
    ASSERT_TRUE(std::filesystem::exists(shot)) << output;
    EXPECT_EQ(ReadFile(shot).substr(1, 3), "PNG");
    EXPECT_NE(ReadFile(local / "desktop.conf").find("recent=" + drawing), std::string::npos);
}

TEST_F(DesktopProgram, AFailingLineIsNamedAndTheExitCodeSaysSo) {
    std::string output;
    const std::string script = Script("PLCRENDAL\n\nNOSUCHCOMMAND\nZOOM E\n");
    EXPECT_EQ(Run("--commands '" + script + "' --quit", &output), 1);
    EXPECT_NE(output.find(script + " line 3: NOSUCHCOMMAND: unknown command 'NOSUCHCOMMAND'"),
              std::string::npos)
        << output;
    // A point given when none was asked for is a failure too.
    EXPECT_EQ(Run("--commands '" + Script("answer maybe\n") + "' --quit", &output), 1);
    EXPECT_NE(output.find("line 1: answer maybe: answer takes yes, no, ok or cancel"),
              std::string::npos)
        << output;
}

TEST_F(DesktopProgram, AMissingPlugInIsNamedWithTheReason) {
    std::string output;
    const std::string fake = (local / "fake.so").string();
    WriteFile(fake, "nothing");
    EXPECT_EQ(RunCommand("QVPLC_PLUGIN='" + fake + "' QT_QPA_PLATFORM=offscreen '" +
                             (BinaryDir() / "bin" / "qvplc-desktop").string() + "' --screenshot '" +
                             (local / "s.png").string() + "' --quit 2>&1",
                         &output),
              1);
    EXPECT_NE(output.find("cannot load the plug-in " + fake + ": "), std::string::npos) << output;
}

TEST_F(DesktopProgram, HelpTeachesTheCommandsAndTheScriptLines) {
    std::string output;
    EXPECT_EQ(Run("--help", &output), 0);
    for (const char* part :
         {"PLCRENDAL", "--commands SCRIPT", "--screenshot OUT.png", "ZOOM E", "X,Y", "Esc"}) {
        EXPECT_NE(output.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(Run("--bogus", &output), 2);
    EXPECT_NE(output.find("unknown option '--bogus'"), std::string::npos) << output;
}
