// qvplc run as a program: every row of the exit-code table from a real command, one message
// form on standard error, lib init, and the English catalogue under an English locale.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <regex>
#include <sstream>

#include "ExitCodes.h"
#include "TestPaths.h"
#include "plclib/Engine.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFile;

constexpr const char* kModule = "'Norvik Controls/NX 10/Digital input/NX1-DI16'";

struct Outcome {
    int code = -1;
    std::string out, err;
};

class ProgramTest : public testing::Test {
protected:
    testing_support::TempDir dir_;
    fs::path local = dir_ / "local";

    // Runs qvplc with the scratch local folder, the built resources and no English locale
    // unless `env` sets one.
    Outcome Qvplc(const std::string& args, const std::string& env = "") {
        const std::string command =
            "env -u LC_ALL -u LC_MESSAGES LANG=C.UTF-8 ZANDRIX_LOCAL_DIR='" + local.string() +
            "' ZANDRIX_COMMON_DIR='" + testing_support::CommonResDir().string() + "' " + env +
            " '" + (testing_support::BinaryDir() / "bin/qvplc").string() + "' " + args + " >'" +
            (dir_ / "out").string() + "' 2>'" + (dir_ / "err").string() + "'";
        const int status = std::system(command.c_str());
        Outcome run;
        run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        run.out = ReadFile(dir_ / "out");
        run.err = ReadFile(dir_ / "err");
        errors_ += run.err;
        return run;
    }
    std::string Library() const { return (local / "PLC/QvPLC.db").string(); }
    // Every line on standard error so far has the one prefix form (or continues a usage error).
    void ExpectOneMessageForm() const {
        const std::regex form("^(qvplc (lib|draw|dxf|settings|net): .+|usage: .+|Try 'qvplc .+)$");
        std::istringstream lines(errors_);
        std::string line;
        int count = 0;
        while (std::getline(lines, line)) {
            EXPECT_TRUE(std::regex_match(line, form)) << "'" << line << "'";
            ++count;
        }
        EXPECT_GE(count, 3);
    }

    std::string errors_;
};

TEST_F(ProgramTest, EveryRowOfTheExitCodeTableComesFromARealCommand) {
    Outcome run = Qvplc("--version");
    EXPECT_EQ(run.code, cli::kExitOk);
    EXPECT_TRUE(std::regex_match(run.out, std::regex("qvplc [0-9]+\\.[0-9]+( \\(.+\\))?\n")))
        << run.out;
    EXPECT_EQ(run.err, "");

    run = Qvplc("lib tree --bogus");
    EXPECT_EQ(run.code, cli::kExitUsage);
    EXPECT_EQ(run.err.substr(0, run.err.find('\n')), "qvplc lib: unknown option --bogus");
    EXPECT_EQ(Qvplc("lib tree extra").code, cli::kExitUsage);

    run = Qvplc("lib tree");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find("qvplc lib: no component library at " + Library() +
                           "; make one with 'qvplc lib init'"),
              std::string::npos)
        << run.err;
    run = Qvplc(std::string("draw ") + kModule + " --tag A1 --at 0,0 --drawing '" +
                (dir_ / "a.dxf").string() + "'");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find("qvplc draw: no component library at " + Library()), std::string::npos)
        << run.err;
    EXPECT_FALSE(fs::exists(dir_ / "a.dxf"));

    ASSERT_EQ(Qvplc("lib init --sample").code, cli::kExitOk);
    const std::string library = ReadFile(Library());
    run = Qvplc("lib init");
    EXPECT_EQ(run.code, cli::kExitFailure);
    EXPECT_NE(run.err.find("already exists; it was left as it is"), std::string::npos) << run.err;
    EXPECT_EQ(ReadFile(Library()), library);

    // One short piece holds only some of the sixteen terminals: the drawing asks for a second.
    run = Qvplc(std::string("draw ") + kModule + " --tag A1 --pieces 0,0:40,0 --drawing '" +
                (dir_ / "b.dxf").string() + "'");
    EXPECT_EQ(run.code, cli::kExitCancelled) << run.err;
    EXPECT_FALSE(fs::exists(dir_ / "b.dxf"));

    // Another program writes to the library and holds it locked meanwhile.
    const fs::path ready = dir_ / "locked";
    const std::string holder = testing_support::Python() +
                               " -c \"import sqlite3,time,pathlib; c=sqlite3.connect('" +
                               Library() +
                               "', isolation_level=None); c.execute('BEGIN EXCLUSIVE');"
                               " pathlib.Path('" +
                               ready.string() + "').touch(); time.sleep(60)\" & echo $! >'" +
                               (dir_ / "pid").string() + "'";
    ASSERT_EQ(std::system(holder.c_str()), 0);
    for (int i = 0; i < 100 && !fs::exists(ready); ++i) {
        testing_support::RunCommand("sleep 0.1");
    }
    run = Qvplc("lib tree");
    EXPECT_EQ(run.code, cli::kExitLocked) << run.err;
    EXPECT_NE(run.err.find("qvplc lib: the library " + Library() + " is in use by another program"),
              std::string::npos)
        << run.err;
    run = Qvplc(std::string("draw ") + kModule + " --tag A1 --at 0,0 --drawing '" +
                (dir_ / "c.dxf").string() + "'");
    EXPECT_EQ(run.code, cli::kExitLocked) << run.err;
    testing_support::RunCommand("kill $(cat '" + (dir_ / "pid").string() + "')");

    run = Qvplc("lib init --library '" + (dir_ / "no/such/folder/x.db").string() + "'");
    EXPECT_EQ(run.code, cli::kExitCannotWrite) << run.err;
    EXPECT_FALSE(fs::exists(dir_ / "no"));
    // A file name too long for the file system escapes the draw as a file-system error: it is
    // caught at the top, named with its reason, and the program does not abort.
    run = Qvplc(std::string("draw ") + kModule + " --tag A1 --at 0,0 --drawing '" +
                (dir_ / (std::string(300, 'y') + ".dxf")).string() + "'");
    EXPECT_EQ(run.code, cli::kExitCannotWrite) << run.err;
    EXPECT_NE(run.err.find("the file name or the path is too long"), std::string::npos) << run.err;
    ExpectOneMessageForm();
}

TEST_F(ProgramTest, MessagesGoToStandardErrorAndResultsToStandardOutput) {
    ASSERT_EQ(Qvplc("lib init --sample").code, cli::kExitOk);
    // A message box of the system (no tag) and its command-line printing.
    Outcome run = Qvplc(std::string("draw ") + kModule + " --tag '' --at 0,0 --drawing '" +
                        (dir_ / "a.dxf").string() + "'");
    EXPECT_NE(run.code, cli::kExitOk);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("qvplc draw: warning: [Zandrix] 请输入标号\n"), std::string::npos)
        << run.err;
    run = Qvplc(std::string("draw ") + kModule + " --tag A1 --at 0,0 --drawing '" +
                (dir_ / "a.dxf").string() + "'");
    EXPECT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_EQ(run.out, "");
    run = Qvplc("lib tree");
    EXPECT_EQ(run.code, cli::kExitOk);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out.substr(0, 22), "PLC\n  Norvik Controls\n");
    run = Qvplc("dxf info '" + (dir_ / "missing.dxf").string() + "'");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_EQ(run.out, "");
    run = Qvplc("settings set termSpacing");
    EXPECT_EQ(run.code, cli::kExitUsage);
    run = Qvplc("--bogus");
    EXPECT_EQ(run.code, cli::kExitUsage);
    EXPECT_EQ(run.err.substr(0, run.err.find('\n')), "qvplc: unknown option '--bogus'");
    errors_.clear();  // the top-level usage text follows that one
    Qvplc("lib show x");
    Qvplc(std::string("draw ") + kModule + " --tag '' --at 0,0 --drawing '" +
          (dir_ / "b.dxf").string() + "'");
    Qvplc("dxf convert a b --version 9");
    ExpectOneMessageForm();
}

TEST_F(ProgramTest, LibInitMakesAnEmptyOrSampleLibraryAndNeverReplacesOne) {
    Outcome run = Qvplc("lib init");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_EQ(run.out, Library() + ": an empty library\n");
    {
        plcdb::Connection db;
        std::string error;
        ASSERT_TRUE(db.Open(Library(), error)) << error;
        EXPECT_TRUE(db.TableExists("PLC_MANUFACTURER"));
        EXPECT_TRUE(db.TableExists("MANUFACTURER_Simple"));
        const auto rows = db.Query("Select * from PLC_MANUFACTURER", error);
        ASSERT_TRUE(rows) << error;
        EXPECT_TRUE(rows->rows.empty());
    }
    run = Qvplc("lib tree");
    EXPECT_EQ(run.code, cli::kExitFailure);
    EXPECT_NE(run.err.find("holds no manufacturer"), std::string::npos) << run.err;
    EXPECT_EQ(Qvplc("lib init --sample").code, cli::kExitFailure);

    // A broken sample is bad input, and leaves neither a library nor a temporary file.
    const fs::path common = dir_ / "common";
    fs::create_directories(common / "sample");
    testing_support::WriteFile(common / "sample/QvPLC.sql",
                               "-- two statements\nINSERT INTO MANUFACTURER_Simple VALUES "
                               "('A','B')\nINSERT INTO nowhere VALUES (1)\n");
    local = dir_ / "second";
    run = Qvplc("lib init --sample", "ZANDRIX_COMMON_DIR='" + common.string() + "'");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find("QvPLC.sql:3"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(Library()));
    EXPECT_FALSE(fs::exists(Library() + ".part"));

    run = Qvplc("lib init --sample");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_NE(run.out.find(": the sample library ("), std::string::npos) << run.out;
    run = Qvplc("lib show 'Norvik Controls/NX 10/Digital input/NX1-DI8'");
    EXPECT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_NE(run.out.find("9\t9\t1M\t"), std::string::npos) << run.out;
}

// Pieces 40 long, one below the other.
std::string Pieces(size_t count) {
    std::string options;
    for (size_t i = 0; i < count; ++i) {
        const std::string y = std::to_string(-50 * static_cast<int>(i));
        options += " --pieces 0," + y + ":40," + y;
    }
    return options;
}

TEST_F(ProgramTest, TooFewPiecesAreCountedAndTheCountIsRight) {
    ASSERT_EQ(Qvplc("lib init --sample").code, cli::kExitOk);
    const std::string draw =
        std::string("draw ") + kModule + " --tag A1 --drawing '" + (dir_ / "a.dxf").string() + "'";
    Outcome run = Qvplc(draw + Pieces(1));
    EXPECT_EQ(run.code, cli::kExitCancelled);
    std::smatch match;
    ASSERT_TRUE(std::regex_search(run.err, match,
                                  std::regex("so it needs [0-9]+ more, ([0-9]+) in all\\. Give one "
                                             "--pieces option per piece")))
        << run.err;
    const size_t needed = std::stoul(match[1]);
    ASSERT_GT(needed, 1u);
    run = Qvplc(draw + Pieces(needed - 1));
    EXPECT_EQ(run.code, cli::kExitCancelled);
    EXPECT_NE(run.err.find(", " + std::to_string(needed) + " in all"), std::string::npos)
        << run.err;
    EXPECT_FALSE(fs::exists(dir_ / "a.dxf"));
    run = Qvplc(draw + Pieces(needed));
    EXPECT_EQ(run.code, cli::kExitOk) << run.err;

    run = Qvplc(draw + " --pieces 0,0:10,0");
    EXPECT_EQ(run.code, cli::kExitUsage);
    EXPECT_NE(run.err.find("it must be longer than 25"), std::string::npos) << run.err;
}

TEST_F(ProgramTest, AnEnglishLocaleShowsTheTranslationNextToTheSystemsText) {
    const std::string original = "错误：PLC元件数据库文件" + Library() + "不存在！";
    const std::string english =
        " (Error: the PLC component library file " + Library() + " does not exist!)";
    Outcome run = Qvplc("lib tree", "LANG=en_US.UTF-8");
    EXPECT_NE(run.err.find("qvplc lib: " + original + english + "\n"), std::string::npos)
        << run.err;
    run = Qvplc("lib tree", "LANG=zh_CN.UTF-8");
    EXPECT_NE(run.err.find("qvplc lib: " + original + "\n"), std::string::npos) << run.err;
    run = Qvplc("lib tree", "LANG=en_US.UTF-8 LC_ALL=C");
    EXPECT_EQ(run.err.find("(Error:"), std::string::npos) << run.err;

    ASSERT_EQ(Qvplc("lib init --sample").code, cli::kExitOk);
    run = Qvplc(std::string("draw ") + kModule + " --tag '' --at 0,0 --drawing '" +
                    (dir_ / "a.dxf").string() + "'",
                "LC_MESSAGES=en_GB.UTF-8");
    EXPECT_NE(run.err.find("qvplc draw: warning: [Zandrix] 请输入标号 (Please enter a tag)\n"),
              std::string::npos)
        << run.err;
}

}  // namespace
