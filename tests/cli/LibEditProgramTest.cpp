// qvplc lib's editing commands run as a program on a copy of the sample library: each
// command's change, the refusals that keep the file as it was (an unanswered question, an
// unknown name, a quote, a bad order), scripts, and a module made on the command line drawn.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "ExitCodes.h"
#include "LibEditCommands.h"
#include "TestPaths.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFile;

constexpr const char* kMaker = "Acme Automation";
constexpr const char* kModule = "'Acme Automation/AX 100/S7-300 A/AX-DI8'";

struct Outcome {
    int code = -1;
    std::string out, err;
};

class LibEditProgramTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(Qvplc("lib init --sample").code, cli::kExitOk); }

    // Runs qvplc on the scratch local folder; `input` becomes its standard input.
    Outcome Qvplc(const std::string& args, const std::string& input = "",
                  const std::string& env = "") {
        testing_support::WriteFile(dir_ / "in", input);
        const std::string command =
            "env -u LC_ALL -u LC_MESSAGES LANG=C.UTF-8 ZANDRIX_LOCAL_DIR='" + local.string() +
            "' ZANDRIX_COMMON_DIR='" + testing_support::CommonResDir().string() + "' " + env +
            " '" + (testing_support::BinaryDir() / "bin/qvplc").string() + "' " + args + " <'" +
            (dir_ / "in").string() + "' >'" + (dir_ / "out").string() + "' 2>'" +
            (dir_ / "err").string() + "'";
        const int status = std::system(command.c_str());
        Outcome run;
        run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        run.out = ReadFile(dir_ / "out");
        run.err = ReadFile(dir_ / "err");
        return run;
    }
    void Ok(const std::string& args) {
        const Outcome run = Qvplc(args);
        EXPECT_EQ(run.code, cli::kExitOk) << args << "\n" << run.err;
    }
    // The terminal rows `lib show` prints, one "sequence value desc detail" line each.
    std::string Rows(const std::string& module = kModule) {
        const Outcome run = Qvplc("lib show " + module);
        EXPECT_EQ(run.code, cli::kExitOk) << run.err;
        const auto header = run.out.find("端点序号");
        return header == std::string::npos ? "" : run.out.substr(run.out.find('\n', header) + 1);
    }
    std::string Parameters(const std::string& module = kModule) {
        const std::string out = Qvplc("lib show " + module).out;
        return out.substr(out.find("通道数"), out.find("\n\n") - out.find("通道数"));
    }
    std::string Library() const { return (local / "PLC/QvPLC.db").string(); }
    // A new module of `rows` terminal rows valued 1..rows with descriptions D1..Drows.
    void MakeModule(int rows) {
        Ok(std::string("lib new-manufacturer '") + kMaker + "' --short ACME");
        Ok(std::string("lib new-series '") + kMaker + "' 'AX 100'");
        Ok(std::string("lib new-type '") + kMaker + "/AX 100' 'S7-300 A'");
        Ok(std::string("lib new-module '") + kMaker +
           "/AX 100/S7-300 A' AX-DI8 --points 8 --type DI --description 'eight inputs'");
        for (int i = 1; i <= rows; ++i) {
            Ok(std::string("lib term append ") + kModule + " --value " + std::to_string(i) +
               " --desc D" + std::to_string(i));
        }
    }

    testing_support::TempDir dir_;
    fs::path local = dir_ / "local";
};

TEST_F(LibEditProgramTest, TreeCommandsChangeTheLibraryThroughTheEditor) {
    MakeModule(0);
    Outcome run = Qvplc("lib tree");
    EXPECT_NE(run.out.find("  Acme Automation\n    AX 100\n      S7-300 A\n        AX-DI8\n"),
              std::string::npos)
        << run.out;
    // The type's tables are named from its path with blanks and '-' made '_'.
    run = Qvplc("lib show " + std::string(kModule));
    EXPECT_NE(run.out.find("厂家: Acme Automation (ACME)"), std::string::npos) << run.out;
    EXPECT_EQ(Parameters(), "通道数: 8\n类型: DI\n描述: eight inputs\n额定值: ");

    // Only the options given change.
    Ok(std::string("lib set-module ") + kModule + " --rating '24VDC 4mA'");
    EXPECT_EQ(Parameters(), "通道数: 8\n类型: DI\n描述: eight inputs\n额定值: 24VDC 4mA");
    Ok(std::string("lib set-short '") + kMaker + "' AC");
    EXPECT_NE(Qvplc("lib show " + std::string(kModule)).out.find("(AC)"), std::string::npos);

    // A duplicate manufacturer is refused by the sub-dialog, whatever its case.
    const std::string before = ReadFile(Library());
    run = Qvplc("lib new-manufacturer 'ACME automation'");
    EXPECT_EQ(run.code, cli::kExitFailure);
    EXPECT_NE(run.err.find("厂家 ACME automation 已经存在,请重新操作!"), std::string::npos)
        << run.err;
    EXPECT_EQ(ReadFile(Library()), before);

    Ok(std::string("lib rename ") + kModule + " AX-DI8B");
    Ok(std::string("lib rename '") + kMaker + "' 'Acme Controls'");
    run = Qvplc("lib tree");
    EXPECT_NE(run.out.find("  Acme Controls\n    AX 100\n      S7-300 A\n        AX-DI8B\n"),
              std::string::npos)
        << run.out;

    // Find prints the path of the node found; past the last match it needs --yes to wrap.
    run = Qvplc("lib find ax-di8");
    EXPECT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_EQ(run.out, "Acme Controls/AX 100/S7-300 A/AX-DI8B\n");
    run = Qvplc("lib find ax-di8");
    EXPECT_EQ(run.code, cli::kExitCancelled) << run.err;
    EXPECT_NE(run.err.find("搜索已达尾端，是否从头开始？"), std::string::npos) << run.err;
    run = Qvplc("lib find ax-di8 --yes");
    EXPECT_EQ(run.out, "Acme Controls/AX 100/S7-300 A/AX-DI8B\n");
    EXPECT_EQ(Qvplc("lib find 'no such name' --yes").code, cli::kExitFailure);

    // Delete asks first: without --yes nothing changes.
    const std::string kept = ReadFile(Library());
    run = Qvplc("lib delete 'Acme Controls/AX 100'");
    EXPECT_EQ(run.code, cli::kExitCancelled);
    EXPECT_NE(run.err.find("no answer given"), std::string::npos) << run.err;
    EXPECT_EQ(ReadFile(Library()), kept);
    // The question has two lines; each keeps the prefix.
    EXPECT_NE(run.err.find("\nqvplc lib: 确实要执行此操作 ?\n"), std::string::npos) << run.err;
    std::istringstream lines(run.err);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(line.rfind("qvplc lib: ", 0), 0u) << line;
    }
    Ok("lib delete 'Acme Controls/AX 100' --yes");
    run = Qvplc("lib tree");
    EXPECT_NE(run.out.find("  Acme Controls\n"), std::string::npos);
    EXPECT_EQ(run.out.find("AX 100"), std::string::npos) << run.out;
}

TEST_F(LibEditProgramTest, TerminalRowsAreChosenBySequence) {
    MakeModule(5);
    EXPECT_EQ(Rows(), "1\t1\tD1\t\n2\t2\tD2\t\n3\t3\tD3\t\n4\t4\tD4\t\n5\t5\tD5\t\n");
    Ok(std::string("lib term insert ") + kModule + " --before 1 --value 0V --desc M");
    EXPECT_EQ(Rows(), "1\t0V\tM\t\n2\t1\tD1\t\n3\t2\tD2\t\n4\t3\tD3\t\n5\t4\tD4\t\n6\t5\tD5\t\n");

    const std::string before = ReadFile(Library());
    EXPECT_EQ(Qvplc(std::string("lib term delete ") + kModule + " 2 3").code, cli::kExitCancelled);
    EXPECT_EQ(ReadFile(Library()), before);
    Ok(std::string("lib term delete ") + kModule + " 2 3 --yes");
    EXPECT_EQ(Rows(), "1\t0V\tM\t\n2\t3\tD3\t\n3\t4\tD4\t\n4\t5\tD5\t\n");

    // The options not given keep the row's contents.
    Ok(std::string("lib term change ") + kModule + " 2 --detail 'third input'");
    EXPECT_EQ(Rows(), "1\t0V\tM\t\n2\t3\tD3\tthird input\n3\t4\tD4\t\n4\t5\tD5\t\n");
    Ok(std::string("lib term reorder ") + kModule + " --order 4,1,3,2");
    EXPECT_EQ(Rows(), "1\t5\tD5\t\n2\t0V\tM\t\n3\t4\tD4\t\n4\t3\tD3\tthird input\n");

    // Refusals leave the file as it was.
    const std::string kept = ReadFile(Library());
    for (const char* order : {"1,2,3", "1,2,3,3", "1,2,3,4,5", "1,2,3,9"}) {
        const Outcome run = Qvplc(std::string("lib term reorder ") + kModule + " --order " + order);
        EXPECT_EQ(run.code, cli::kExitUsage) << order;
        EXPECT_NE(run.err.find("must name each current row"), std::string::npos) << run.err;
    }
    EXPECT_EQ(Qvplc(std::string("lib term reorder ") + kModule + " --order 1,x").code,
              cli::kExitUsage);
    Outcome run = Qvplc(std::string("lib term change ") + kModule + " 9 --value 1");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find("has no terminal row 9"), std::string::npos) << run.err;
    EXPECT_EQ(Qvplc(std::string("lib term delete ") + kModule + " 2 9 --yes").code,
              cli::kExitBadInput);
    run = Qvplc(std::string("lib term append ") + kModule + " --value 1 --desc \"it's\"");
    EXPECT_EQ(run.code, cli::kExitFailure);
    EXPECT_NE(run.err.find("single quote"), std::string::npos) << run.err;
    EXPECT_EQ(Qvplc(std::string("lib term insert ") + kModule + " --before 1").code,
              cli::kExitUsage);
    EXPECT_EQ(ReadFile(Library()), kept);
}

TEST_F(LibEditProgramTest, UnknownNamesAreBadInputNamingTheMissingLevel) {
    MakeModule(1);
    const std::string before = ReadFile(Library());
    const std::pair<const char*, const char*> cases[] = {
        {"lib delete 'Nobody' --yes", "has no manufacturer 'Nobody'"},
        {"lib new-type 'Acme Automation/AX 9' T", "has no series 'Acme Automation/AX 9'"},
        {"lib new-module 'Acme Automation/AX 100/T' C", "has no type 'Acme Automation/AX 100/T'"},
        {"lib term append 'Acme Automation/AX 100/S7-300 A/NONE' --value 1",
         "has no module 'Acme Automation/AX 100/S7-300 A/NONE'"},
        {"lib set-short Nobody X", "has no manufacturer 'Nobody'"},
    };
    for (const auto& [args, message] : cases) {
        const Outcome run = Qvplc(args);
        EXPECT_EQ(run.code, cli::kExitBadInput) << args;
        EXPECT_NE(run.err.find(message), std::string::npos) << args << "\n" << run.err;
    }
    // A path of the wrong depth is a usage error, found before the library is opened.
    EXPECT_EQ(Qvplc("lib new-module 'Acme Automation/AX 100' C").code, cli::kExitUsage);
    EXPECT_EQ(Qvplc("lib set-module 'Acme Automation//S7-300 A/AX-DI8'").code, cli::kExitUsage);
    EXPECT_EQ(Qvplc("lib term bogus x").code, cli::kExitUsage);
    EXPECT_EQ(ReadFile(Library()), before);
    EXPECT_EQ(Qvplc("lib delete Nobody --library '" + (dir_ / "none.db").string() + "'").code,
              cli::kExitBadInput);
}

TEST_F(LibEditProgramTest, NamedLibraryIsEditedAndTheLocalOneLeftAlone) {
    const fs::path copy = dir_ / "copy.db";
    fs::copy_file(Library(), copy);
    const std::string local = ReadFile(Library());
    Ok("lib new-manufacturer 'Copy Only' --library '" + copy.string() + "'");
    EXPECT_NE(Qvplc("lib tree --library '" + copy.string() + "'").out.find("  Copy Only\n"),
              std::string::npos);
    EXPECT_EQ(ReadFile(Library()), local);

    // An ordinary network client may not edit, neither library.
    const std::string copied = ReadFile(copy);
    for (const std::string& library : {std::string(), " --library '" + copy.string() + "'"}) {
        const Outcome run =
            Qvplc("lib new-manufacturer Refused" + library, "", "ZANDRIX_INSTALL_STYLE=2");
        EXPECT_EQ(run.code, cli::kExitFailure);
        EXPECT_EQ(run.err, "qvplc lib: 普通客户端无运行此命令的权限！\n");
    }
    EXPECT_EQ(ReadFile(Library()), local);
    EXPECT_EQ(ReadFile(copy), copied);
}

TEST_F(LibEditProgramTest, ScriptRunsUntilTheFirstFailingLineAndNamesIt) {
    const std::string script =
        "# a module with blanks and quotes in its names\n"
        "new-manufacturer \"Beta Co\" --short 'B C'\n"
        "\n"
        "new-series 'Beta Co' 'B 1'   # the first series\n"
        "new-type 'Beta Co/B 1' Digital\\ input\n"
        "new-module 'Beta Co/B 1/Digital input' B-8\n"
        "term append 'Beta Co/B 1/Digital input/B-8' --value 1 --desc 'first one'\n"
        "term delete 'Beta Co/B 1/Digital input/B-8' 1\n"
        "term append 'Beta Co/B 1/Digital input/B-8' --value 2\n";
    fs::path file = dir_ / "edit.txt";
    testing_support::WriteFile(file, script);
    // The delete's question is refused without --yes: the run stops there.
    Outcome run = Qvplc("lib edit '" + file.string() + "'");
    EXPECT_EQ(run.code, cli::kExitCancelled);
    EXPECT_NE(run.err.find("qvplc lib: line 8: 'term delete 'Beta Co/B 1/Digital input/B-8' 1' "
                           "did not complete"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(Rows("'Beta Co/B 1/Digital input/B-8'"), "1\t1\tfirst one\t\n");

    // From standard input, a line with its own --yes: a failure on a later line keeps what
    // came before.
    run = Qvplc("lib edit",
                "term delete 'Beta Co/B 1/Digital input/B-8' 1 --yes\n"
                "term append 'Beta Co/B 1/Digital input/B-8' --value 7\n"
                "rename 'Beta Co/B 9' X\n"
                "term append 'Beta Co/B 1/Digital input/B-8' --value 8\n");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find("qvplc lib: line 3: the library " + Library() +
                           " has no series 'Beta Co/B 9'"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(Rows("'Beta Co/B 1/Digital input/B-8'"), "1\t7\t\t\n");
    // --yes on the command line answers every line's questions.
    EXPECT_EQ(Qvplc("lib edit --yes", "term delete 'Beta Co/B 1/Digital input/B-8' 1\n").code,
              cli::kExitOk);
    EXPECT_EQ(Rows("'Beta Co/B 1/Digital input/B-8'"), "");

    // A line that cannot be read stops the script before anything is changed.
    const std::string before = ReadFile(Library());
    for (const char* bad : {"term append 'Beta Co/B 1/Digital input/B-8' --value 'open\n",
                            "term append 'Beta Co/B 1/Digital input/B-8'\n",
                            "new-series 'Beta Co' X --library other.db\n", "frobnicate x\n"}) {
        run = Qvplc("lib edit -", std::string("new-series 'Beta Co' 'B 2'\n") + bad);
        EXPECT_EQ(run.code, cli::kExitUsage) << bad;
        EXPECT_NE(run.err.find("qvplc lib: line 2: "), std::string::npos) << bad << run.err;
    }
    EXPECT_EQ(ReadFile(Library()), before);
}

TEST_F(LibEditProgramTest, ModuleMadeOnTheCommandLineIsDrawn) {
    MakeModule(3);
    const fs::path drawing = dir_ / "new.dxf";
    const Outcome run = Qvplc(std::string("draw ") + kModule + " --tag K1 --at 0,0 --drawing '" +
                              drawing.string() + "'");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    // ezdxf reads the drawing: a terminal symbol and the two texts of each row, in order.
    const fs::path census = dir_ / "census.py";
    testing_support::WriteFile(
        census,
        "import ezdxf,sys\n"
        "msp=ezdxf.readfile(sys.argv[1]).modelspace()\n"
        "print(sum(1 for e in msp if e.dxftype()=='INSERT' and e.dxf.name=='SYMB2_S_KTR5'))\n"
        "print(' '.join(e.dxf.text for e in msp if e.dxftype()=='TEXT'))\n");
    std::string output;
    ASSERT_EQ(testing_support::RunCommand(testing_support::Python() + " '" + census.string() +
                                              "' '" + drawing.string() + "'",
                                          &output),
              0)
        << output;
    EXPECT_EQ(output, "3\n1 D1 2 D2 3 D3\n");
}

TEST(ScriptLineTest, SplitsWordsAsAShellDoes) {
    std::string error;
    using Words = cli::Arguments;
    EXPECT_EQ(*cli::SplitScriptLine("  rename 'A B/C' \"D \\\"E\\\"\"\tF\\ G  ", error),
              (Words{"rename", "A B/C", "D \"E\"", "F G"}));
    EXPECT_EQ(*cli::SplitScriptLine("find x#y # the rest 'is' ignored", error),
              (Words{"find", "x#y"}));
    EXPECT_EQ(*cli::SplitScriptLine("a'b'\"c\"d ''", error), (Words{"abcd", ""}));
    EXPECT_EQ(*cli::SplitScriptLine("   # only a comment", error), Words{});
    EXPECT_FALSE(cli::SplitScriptLine("rename 'A B", error));
    EXPECT_EQ(error, "a quote is not closed");
    EXPECT_FALSE(cli::SplitScriptLine("rename \"A\\\"", error));
}

}  // namespace
