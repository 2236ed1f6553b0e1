// qvplc draw end to end: the built program draws into real DXF files, which Debian's ezdxf
// then reads independently.
#include <gtest/gtest.h>

#include "DialogTestSupport.h"

using dialog_test::DialogEnvironment;
using testing_support::ReadFile;
using testing_support::RunCommand;
using testing_support::WriteFile;

namespace {

const char* kModule = "Alpha/S1/DI/DI-16A";  // 7 terminals

class DrawCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!env.realSymbol) {
            GTEST_SKIP() << "the terminal symbols are not built";
        }
        drawing = (env.LocalDir() / "cabinet.dxf").string();
    }
    int Draw(const std::string& options, std::string* output = nullptr) {
        const std::string qvplc = (testing_support::BinaryDir() / "bin" / "qvplc").string();
        return RunCommand(qvplc + " draw " + options, output ? output : &lastOutput);
    }
    // Counts what ezdxf finds in the model space: "<inserts of the symbol> <mtexts with TAG>".
    std::string Census(const std::string& tag, const std::string& symbol = "SYMB2_S_KTR5") {
        const std::string script =
            "import ezdxf,sys\n"
            "doc=ezdxf.readfile(sys.argv[1])\n"
            "msp=doc.modelspace()\n"
            "ins=[e for e in msp if e.dxftype()=='INSERT' and e.dxf.name==sys.argv[3]]\n"
            "tags=[e for e in msp if e.dxftype()=='MTEXT' and e.text==sys.argv[2]]\n"
            "print(len(ins), len(tags))\n";
        const auto scriptPath = env.LocalDir() / "census.py";
        WriteFile(scriptPath, script);
        std::string output;
        const int status = RunCommand(testing_support::Python() + " " + scriptPath.string() + " " +
                                          drawing + " " + tag + " " + symbol,
                                      &output);
        EXPECT_EQ(status, 0) << output;
        return output.substr(0, output.find('\n'));
    }
    DialogEnvironment env;
    std::string drawing;
    std::string lastOutput;
};

}  // namespace

TEST_F(DrawCommandTest, CreatesTheDrawingAndAddsToItWithoutLosingAnything) {
    ASSERT_EQ(Draw(std::string("'") + kModule + "' --tag A1 --at 0,0 --drawing " + drawing), 0)
        << lastOutput;
    EXPECT_EQ(Census("A1"), "7 1");
    ASSERT_EQ(Draw(std::string("'") + kModule + "' --tag A2 --terminals 1-2,5 --at 200,0 " +
                   "--drawing " + drawing),
              0)
        << lastOutput;
    EXPECT_EQ(Census("A1"), "10 1");
    EXPECT_EQ(Census("A2"), "10 1");
}

TEST_F(DrawCommandTest, DividedDrawingTakesItsPiecesFromTheOptions) {
    // p = 10: the first piece holds (60 - 10) / 10 = 5 places, the second the other two.
    ASSERT_EQ(Draw(std::string("'") + kModule + "' --tag A3 --pieces 0,0:60,0 " +
                   "--pieces 0,-50:40,-50 --drawing " + drawing),
              0)
        << lastOutput;
    EXPECT_EQ(Census("A3"), "7 1");
}

TEST_F(DrawCommandTest, FormatOptionTakesThatFormatsOwnTerminal) {
    if (!std::filesystem::exists(env.CommonDir() / "SYMB2LIB" / "SYMB2_S_KTR211.dxf")) {
        std::filesystem::copy_file(
            testing_support::CommonResDir() / "SYMB2LIB" / "SYMB2_S_KTR211.dxf",
            env.CommonDir() / "SYMB2LIB" / "SYMB2_S_KTR211.dxf");
    }
    ASSERT_EQ(Draw(std::string("'") + kModule + "' --tag A4 --format 3 --terminals 1-4 " +
                   "--at 0,0 --drawing " + drawing),
              0)
        << lastOutput;
    EXPECT_EQ(Census("A4", "SYMB2_S_KTR211"), "4 1");
    EXPECT_EQ(Census("A4"), "0 1");
}

TEST_F(DrawCommandTest, TooFewPiecesWriteNothingAndSayHowManyAreNeeded) {
    // 7 terminals, all up; a piece 40 long holds (40 - 10) / 10 = 3: 3 pieces in all.
    EXPECT_EQ(
        Draw(std::string("'") + kModule + "' --tag A3 --pieces 0,0:40,0 --drawing " + drawing), 4)
        << lastOutput;
    EXPECT_NE(lastOutput.find("module DI-16A has 7 terminals on its longer side and the pieces "
                              "given (1) hold 3; pieces as long as the last one hold 3 each, so "
                              "it needs 2 more, 3 in all. Give one --pieces option per piece: "
                              "--pieces X0,Y0:X1,Y1 --pieces X0,Y0:X1,Y1 ..."),
              std::string::npos)
        << lastOutput;
    EXPECT_FALSE(std::filesystem::exists(drawing));
    // Pieces given as several values of one option, and a piece too short to hold a terminal.
    EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag A3 --pieces 0,0:40,0 50,0:90,0 " +
                   "--drawing " + drawing),
              2);
    EXPECT_NE(lastOutput.find("'50,0:90,0' looks like a piece: each piece takes its own option"),
              std::string::npos)
        << lastOutput;
    EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag A3 --pieces 0,0:60,0 " +
                   "--pieces 0,-50:25,-50 --drawing " + drawing),
              2);
    EXPECT_NE(lastOutput.find("--pieces 0,-50:25,-50: piece 2 is 25 long along the module's axis "
                              "(along X); it must be longer than 25"),
              std::string::npos)
        << lastOutput;
    EXPECT_FALSE(std::filesystem::exists(drawing));
}

// Values outside what a drawing can hold are usage errors before anything is read or
// written; a huge terminal range costs no more than a small one.
TEST_F(DrawCommandTest, OutOfRangeOptionsAreUsageErrorsNamingTheValue) {
    const std::string module = std::string("'") + kModule + "' --tag A1 --drawing " + drawing;
    const struct {
        std::string options;
        int exitCode;
        std::string named;
    } cases[] = {
        {"--at 1e300,0", 2, "--at 1e300,0: coordinates must be finite and at most 1e100"},
        {"--at 0,1e309", 2, "--at 0,1e309: coordinates must be finite"},
        {"--at nan,0", 2, "--at nan,0: coordinates"},
        {"--pieces 0,0:-inf,0", 2, "--pieces 0,0:-inf,0: coordinates"},
        {"--at 0,0 --save-format 9", 2, "--save-format takes 8, 12, 24, 36 or 48, not '9'"},
        {"--at 0,0 --save-format 480", 2, "not '480'"},
        {"--at 0,0 --symbol ../x", 2, "--symbol takes the name of a symbol in SYMB2LIB"},
        {"--at 0,0 --symbol /etc/passwd", 2, "not '/etc/passwd'"},
        {"--at 0,0 --symbol ..", 2, "not '..'"},
        {"--at 0,0 --terminals 1-99999999999", 2, "--terminals takes sequence numbers"},
        {"--at 0,0 --terminals 1-2147483647", 1,
         "--terminals 1-2147483647: module DI-16A has no terminal with sequence 8 (its "
         "terminals are numbered 1 to 7)"},
        {"--at 0,0 --terminals 3,5-2147483647", 1, "sequence 8"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Draw(module + " " + c.options), c.exitCode) << c.options << "\n" << lastOutput;
        EXPECT_NE(lastOutput.find(c.named), std::string::npos) << c.options << "\n" << lastOutput;
    }
    EXPECT_FALSE(std::filesystem::exists(drawing));
    // The edges of the ranges are drawn.
    ASSERT_EQ(Draw(module + " --at 1e100,-1e100 --save-format 8"), 0) << lastOutput;
    EXPECT_EQ(Census("A1"), "7 1");
}

TEST_F(DrawCommandTest, MalformedDrawingIsReportedAndLeftUntouched) {
    const std::string broken = "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nnot-a-number\n";
    WriteFile(drawing, broken);
    EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag A1 --at 0,0 --drawing " + drawing), 3);
    EXPECT_NE(lastOutput.find(drawing), std::string::npos) << lastOutput;
    EXPECT_EQ(ReadFile(drawing), broken);
}

TEST_F(DrawCommandTest, RefusalsOfTheDialogAndBadOptionsNameTheProblem) {
    EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag ' - ' --at 0,0 --drawing " + drawing), 1);
    EXPECT_NE(lastOutput.find("请输入标号"), std::string::npos) << lastOutput;
    EXPECT_EQ(
        Draw(std::string("'") + kModule + "' --tag A1 --terminals 9 --at 0,0 --drawing " + drawing),
        1);
    EXPECT_NE(lastOutput.find("sequence 9"), std::string::npos) << lastOutput;
    EXPECT_EQ(Draw("Alpha/S1/DI/NOPE --tag A1 --at 0,0 --drawing " + drawing), 1);
    EXPECT_NE(lastOutput.find("Alpha/S1/DI/NOPE"), std::string::npos) << lastOutput;
    EXPECT_FALSE(std::filesystem::exists(drawing));

    EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag A1 --at 0,0 --pieces 0,0:9,9 " +
                   "--drawing " + drawing),
              2);
    EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag A1 --at '0;0' --drawing " + drawing), 2);
    EXPECT_NE(lastOutput.find("0;0"), std::string::npos) << lastOutput;
    EXPECT_EQ(
        Draw(std::string("'") + kModule + "' --tag A1 --pattern 107 --at 0,0 --drawing " + drawing),
        2);
    EXPECT_EQ(Draw("Alpha/S1/DI-16A --tag A1 --at 0,0 --drawing " + drawing), 2);
}

// Two draws into one drawing at once: each reads, adds and writes the whole file, so without
// the update lock one module is lost. Either both are in the file or one draw was refused
// saying why; a module is never lost silently.
TEST_F(DrawCommandTest, ConcurrentDrawsIntoOneDrawingLoseNoModule) {
    ASSERT_EQ(Draw(std::string("'") + kModule + "' --tag BASE --at 0,0 --drawing " + drawing), 0)
        << lastOutput;
    const std::string qvplc = (testing_support::BinaryDir() / "bin" / "qvplc").string();
    for (int trial = 1; trial <= 4; ++trial) {
        const std::string t = std::to_string(trial);
        const std::string one = qvplc + " draw '" + kModule + "' --tag X" + t + " --at 0," + t +
                                "00 --drawing " + drawing + " 2>" + drawing + ".x.err";
        const std::string two = qvplc + " draw '" + kModule + "' --tag Y" + t + " --at 300," + t +
                                "00 --drawing " + drawing + " 2>" + drawing + ".y.err";
        std::string output;
        ASSERT_EQ(RunCommand("(" + one + "; echo $? >" + drawing + ".x.rc) & (" + two +
                                 "; echo $? >" + drawing + ".y.rc) & wait",
                             &output),
                  0)
            << output;
        for (const char* side : {"x", "y"}) {
            const std::string tag = std::string(side == std::string("x") ? "X" : "Y") + t;
            if (ReadFile(drawing + "." + side + ".rc") == "0\n") {
                EXPECT_EQ(Census(tag), Census(tag).substr(0, Census(tag).find(' ')) + " 1")
                    << tag << " is missing";
            } else {
                const std::string error = ReadFile(drawing + "." + side + ".err");
                EXPECT_TRUE(error.find("changed on disk") != std::string::npos ||
                            error.find("another process") != std::string::npos)
                    << error;
            }
        }
    }
    EXPECT_EQ(Census("BASE").substr(Census("BASE").find(' ')), " 1");
}

// An output that is also an input is refused before anything is written, however it is
// spelled; so are outputs that cannot be written.
TEST_F(DrawCommandTest, OutputsThatAreInputsOrUnwritableAreRefusedFirst) {
    ASSERT_EQ(Draw(std::string("'") + kModule + "' --tag A1 --at 0,0 --drawing " + drawing), 0)
        << lastOutput;
    const std::string before = ReadFile(drawing);
    const auto folder = std::filesystem::path(drawing).parent_path();
    std::filesystem::create_symlink(drawing, folder / "alias.png");
    for (const std::string& png : {drawing, (folder / "." / "cabinet.dxf").string(),
                                   (folder / "alias.png").string(), env.LibraryPath().string()}) {
        EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag A2 --at 0,0 --drawing " + drawing +
                       " --png " + png),
                  2)
            << png;
        EXPECT_NE(lastOutput.find("also an input"), std::string::npos) << lastOutput;
        EXPECT_EQ(ReadFile(drawing), before) << png;
    }
    const std::string fresh = (folder / "fresh.dxf").string();
    EXPECT_EQ(Draw(std::string("'") + kModule + "' --tag A2 --at 0,0 --drawing " + fresh +
                   " --png " + (folder / "nowhere/p.png").string()),
              3);
    EXPECT_NE(lastOutput.find("does not exist"), std::string::npos) << lastOutput;
    EXPECT_FALSE(std::filesystem::exists(fresh));
    EXPECT_FALSE(std::filesystem::exists(folder / "nowhere"));
}
