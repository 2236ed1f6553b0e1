// qvplc lib import on real Access files written by the test Jet writer: a first import into
// an empty library, a second that adds only the "-" type row again, a dry run that changes
// nothing, and bad files that leave the library usable.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>

#include "ExitCodes.h"
#include "TestPaths.h"
#include "plclib/Engine.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFile;
using testing_support::WriteFile;

const char* const kModuleColumns =
    R"([{"name":"CODE","type":"text"},{"name":"POINTS","type":"text"},)"
    R"({"name":"TYPE","type":"text"},{"name":"DESCRIPTION","type":"text"},)"
    R"({"name":"RATING","type":"text"}])";
const char* const kTermColumns =
    R"([{"name":"Code","type":"text"},{"name":"SEQUENCE","type":"long"},)"
    R"({"name":"ATTRIBUTES","type":"memo"}])";

std::string AceSpec(const std::string& typeColumn = "TABLE_NAME") {
    return std::string(R"({"tables":[{"name":"PLC_MANUFACTURER","columns":[)") +
           R"({"name":"MANUFACTURER","type":"text"},{"name":"SERIES","type":"text"},)" +
           R"({"name":"TYPE","type":"text"},{"name":")" + typeColumn +
           R"(","type":"text"}],"rows":[["Delta","D9","IO","Delta-IO"],["欧姆","S1","DI","OM_DI"]]},)" +
           R"({"name":"Delta-IO","columns":)" + kModuleColumns +
           R"(,"rows":[["D-1","2","IO","mixed",null]]},)" +
           R"({"name":"Delta-IO_data","columns":)" + kTermColumns +
           R"(,"rows":[["D-1",1,"TERM_=X1;TERMDESC_=Input 1;"],["D-1",2,null]]},)" +
           R"({"name":"OM_DI","columns":)" + kModuleColumns +
           R"(,"rows":[["OM-16","16","DI","输入",""]]},)" + R"({"name":"OM_DI_data","columns":)" +
           kTermColumns + R"(,"rows":[["OM-16",1,"A=1;TERM_=0.0;TERMDESC_=输入0"]]}]})";
}

struct Outcome {
    int code = -1;
    std::string out, err;
};

class ImportProgramTest : public testing::Test {
protected:
    testing_support::TempDir dir_;
    fs::path library = dir_ / "lib.db";

    Outcome Run(const std::string& program, const std::string& args) {
        const std::string command =
            "env -u LC_ALL -u LC_MESSAGES LANG=C.UTF-8 ZANDRIX_LOCAL_DIR='" +
            (dir_ / "local").string() + "' '" + program + "' " + args + " >'" +
            (dir_ / "out").string() + "' 2>'" + (dir_ / "err").string() + "'";
        const int status = std::system(command.c_str());
        Outcome run;
        run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        run.out = ReadFile(dir_ / "out");
        run.err = ReadFile(dir_ / "err");
        return run;
    }
    Outcome Qvplc(const std::string& args) {
        return Run((testing_support::BinaryDir() / "bin/qvplc").string(), args);
    }
    fs::path Ace(const std::string& spec, const std::string& name = "ace_plc.mdb") {
        WriteFile(dir_ / "spec.json", spec);
        const fs::path out = dir_ / name;
        const Outcome run =
            Run((testing_support::BinaryDir() / "tests/tools/jetwrite/jetwrite").string(),
                "'" + (dir_ / "spec.json").string() + "' '" + out.string() + "'");
        EXPECT_EQ(run.code, 0) << run.err;
        return out;
    }
    void SetUp() override {
        ASSERT_EQ(Qvplc("lib init --library '" + library.string() + "'").code, 0);
    }
    Outcome Import(const fs::path& ace, const std::string& options = "--yes") {
        return Qvplc("lib import '" + ace.string() + "' " + options + " --library '" +
                     library.string() + "'");
    }
    size_t Count(const std::string& sql) {
        plcdb::Connection db;
        std::string error;
        EXPECT_TRUE(db.Open(library.string(), error)) << error;
        auto rows = db.Query(sql, error);
        EXPECT_TRUE(rows.has_value()) << error;
        return rows ? rows->RowCount() : 0;
    }
};

TEST_F(ImportProgramTest, FillsAnEmptyLibraryThenAddsOnlyTheDashTypeAgain) {
    const fs::path ace = Ace(AceSpec());
    const std::string before = ReadFile(library);
    Outcome run = Import(ace, "--dry-run");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_NE(run.out.find("would add 3 terminal rows"), std::string::npos) << run.out;
    EXPECT_EQ(ReadFile(library), before);

    run = Import(ace);
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_NE(run.out.find("added 2 modules\n  Delta_IO: D-1\n  OM_DI: OM-16\n"), std::string::npos)
        << run.out;
    EXPECT_NE(run.err.find("import 100%"), std::string::npos);
    EXPECT_EQ(Count("Select * from OM_DI_data where CODE='OM-16' and TermValue='0.0' and "
                    "TERMDESC='输入0'"),
              1u);
    EXPECT_EQ(Count("Select * from Delta_IO_data where TermValue='X1' and TERMDESC='Input 1'"), 1u);
    EXPECT_EQ(Count("Select * from Delta_IO_data where TermValue='' and TERMDESC=''"), 1u);

    run = Import(ace);
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_NE(run.out.find("added 1 type rows\n  Delta / D9 / IO (Delta-IO)\n"), std::string::npos);
    EXPECT_NE(run.out.find("added 0 modules\nadded 0 terminal rows\n"), std::string::npos);
    EXPECT_EQ(Count("Select * from PLC_MANUFACTURER"), 3u);
    EXPECT_EQ(Count("Select * from MANUFACTURER_Simple"), 2u);
}

TEST_F(ImportProgramTest, BadFilesAreNamedAndTheLibraryStaysUsable) {
    WriteFile(dir_ / "ace_plc.mdb", "this is not an Access file\n");
    Outcome run = Import(dir_ / "ace_plc.mdb");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find(dir_.Path().string() + "/ace_plc.mdb: "), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("导入数据库中数据库连接出现错误!"), std::string::npos);

    const fs::path good = Ace(AceSpec());
    const std::string whole = ReadFile(good);
    fs::create_directory(dir_ / "cut");
    WriteFile(dir_ / "cut/ace_plc.mdb", whole.substr(0, whole.size() / 3));
    run = Import(dir_ / "cut/ace_plc.mdb");
    EXPECT_NE(run.code, cli::kExitOk);
    EXPECT_NE(run.err.find("cut/ace_plc.mdb"), std::string::npos) << run.err;

    fs::create_directory(dir_ / "cols");
    run = Import(Ace(AceSpec("TABLENAME"), "cols/ace_plc.mdb"));
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find("PLC_MANUFACTURER has no column TABLE_NAME"), std::string::npos);

    fs::copy_file(good, dir_ / "plc.mdb");
    run = Import(dir_ / "plc.mdb");
    EXPECT_EQ(run.code, cli::kExitBadInput);
    EXPECT_NE(run.err.find("请正确选择源PLC元件数据库文件(QvPlc.mdb)！"), std::string::npos);

    EXPECT_EQ(Import(dir_ / "missing/ace_plc.mdb").code, cli::kExitBadInput);
    EXPECT_EQ(Count("Select * from PLC_MANUFACTURER"), 0u);
    EXPECT_EQ(Qvplc("lib import --help").code, cli::kExitOk);
    EXPECT_NE(Qvplc("lib import --help").out.find("Example"), std::string::npos);
}

}  // namespace
