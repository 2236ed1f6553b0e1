// qvplc batch and qvplc check run as programs: a list with faults draws nothing, --keep-going
// draws the rest, and check's exit code follows a changed list until --update redraws it.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "TestPaths.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFile;
using testing_support::WriteFile;

using Outcome = testing_support::ProgramOutcome;

class BatchProgramTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(Qvplc("lib init --sample").code, 0); }

    Outcome Qvplc(const std::string& args) {
        return testing_support::RunQvplc(dir_ / "local", args, dir_.Path());
    }
    std::string List(const std::string& rows) {
        WriteFile(dir_ / "io.csv", "tag;rack;slot;module;channel;signal\n" + rows);
        return "'" + (dir_ / "io.csv").string() + "'";
    }
    std::string Out() const { return "'" + (dir_ / "out").string() + "'"; }

    testing_support::TempDir dir_;
};

const std::string kDi = "Norvik Controls/NX 10/Digital input/NX1-DI16";

TEST_F(BatchProgramTest, AListWithFaultsDrawsNothingAndNamesEachRowAndColumn) {
    const std::string list = List("A1;0;1;" + kDi + ";1;Pump\nA1;0;1;" + kDi + ";99;Fan\n");
    const Outcome run = Qvplc("batch " + list + " --out " + Out());
    EXPECT_EQ(run.code, 3);
    EXPECT_NE(run.err.find("io.csv: row 3, column channel: module NX1-DI16 has no terminal '99'"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("qvplc batch: nothing was drawn"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(dir_ / "out/sheet-01.dxf"));

    const Outcome kept = Qvplc("batch " + list + " --out " + Out() + " --keep-going");
    EXPECT_EQ(kept.code, 0) << kept.err;
    EXPECT_TRUE(fs::exists(dir_ / "out/sheet-01.dxf"));
    EXPECT_NE(kept.err.find("1 list row(s) with faults were left out"), std::string::npos);
}

TEST_F(BatchProgramTest, CheckFollowsAChangedListUntilAnUpdateRedrawsIt) {
    const std::string rows = "A1;0;1;" + kDi + ";1;Pump\nA2;0;2;" + kDi + ";#2;Fan\n";
    const Outcome drawn = Qvplc("batch " + List(rows) + " --out " + Out());
    ASSERT_EQ(drawn.code, 0) << drawn.err;
    EXPECT_NE(drawn.out.find("sheet-01.dxf: A1 " + kDi + " rack 0 slot 1"), std::string::npos);
    EXPECT_EQ(ReadFile(dir_ / "out/batch-report.csv").rfind("sheet,file,tag,module", 0), 0u);
    const std::string sheet = "'" + (dir_ / "out/sheet-01.dxf").string() + "'";

    const Outcome inStep = Qvplc("check " + sheet + " --list " + List(rows));
    EXPECT_EQ(inStep.code, 0) << inStep.out << inStep.err;
    EXPECT_NE(inStep.out.find("A2 " + kDi + ": in step"), std::string::npos);

    const std::string changed = "A1;0;1;" + kDi + ";1;Pump\nA2;0;2;" + kDi + ";#2;Fan 2\n";
    const Outcome outOfStep = Qvplc("check " + sheet + " --list " + List(changed));
    EXPECT_EQ(outOfStep.code, 1);
    EXPECT_NE(outOfStep.out.find("A2 " + kDi + ": list rows changed"), std::string::npos)
        << outOfStep.out;
    EXPECT_NE(outOfStep.err.find("1 of 2 module(s) out of step"), std::string::npos);

    const Outcome again = Qvplc("batch " + List(changed) + " --out " + Out());
    EXPECT_EQ(again.code, 1);
    EXPECT_NE(again.err.find("give --update"), std::string::npos) << again.err;

    const Outcome update = Qvplc("batch " + List(changed) + " --out " + Out() + " --update");
    EXPECT_EQ(update.code, 0) << update.err;
    EXPECT_NE(update.out.find("A1 " + kDi + " rack 0 slot 1 at 20,0, 1 channels: kept"),
              std::string::npos)
        << update.out;
    EXPECT_NE(update.out.find("channels: redrawn"), std::string::npos);
    EXPECT_EQ(Qvplc("check " + sheet + " --list " + List(changed)).code, 0);
}

TEST_F(BatchProgramTest, UsageErrorsAndHelp) {
    EXPECT_EQ(Qvplc("batch " + List("")).code, 2);
    EXPECT_EQ(Qvplc("check").code, 2);
    const Outcome help = Qvplc("batch --help");
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("Examples:"), std::string::npos);
    EXPECT_EQ(Qvplc("check /nonexistent.dxf").code, 3);
}

}  // namespace
