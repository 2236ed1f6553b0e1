// qvplc lib import on real Access files written by the test Jet writer: a first import into
// an empty library, a second that adds only the "-" type row again, a dry run that changes
// nothing, and bad files that leave the library usable.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <sstream>

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

std::string AceTables(const std::string& typeColumn = "TABLE_NAME") {
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
    fs::path Ace(const std::string& tables, const std::string& name = "ace_plc.mdb") {
        WriteFile(dir_ / "tables.json", tables);
        const fs::path out = dir_ / name;
        const Outcome run =
            Run((testing_support::BinaryDir() / "tests/tools/jetwrite/jetwrite").string(),
                "'" + (dir_ / "tables.json").string() + "' '" + out.string() + "'");
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
    const fs::path ace = Ace(AceTables());
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

    // An imported module is drawn like any module of the library.
    fs::create_directories(dir_ / "local/PLC");
    fs::copy_file(library, dir_ / "local/PLC/QvPLC.db");
    const fs::path drawing = dir_ / "imported.dxf";
    run = Qvplc("draw '欧姆/S1/DI/OM-16' --tag A1 --at 0,0 --save-format 48 --drawing '" +
                drawing.string() + "'");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    const std::string text = ReadFile(drawing);
    EXPECT_NE(text.find("\n0.0\n"), std::string::npos);
    EXPECT_NE(text.find("输入0"), std::string::npos);

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

    const fs::path good = Ace(AceTables());
    const std::string whole = ReadFile(good);
    fs::create_directory(dir_ / "cut");
    WriteFile(dir_ / "cut/ace_plc.mdb", whole.substr(0, whole.size() / 3));
    run = Import(dir_ / "cut/ace_plc.mdb");
    EXPECT_NE(run.code, cli::kExitOk);
    EXPECT_NE(run.err.find("cut/ace_plc.mdb"), std::string::npos) << run.err;

    fs::create_directory(dir_ / "cols");
    run = Import(Ace(AceTables("TABLENAME"), "cols/ace_plc.mdb"));
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

// The terminal rows of a few thousand modules, against what mdb-export reads from the same file
// split by hand.
TEST_F(ImportProgramTest, LargeSourceMatchesMdbExport) {
    constexpr int kTypes = 100, kModules = 25, kTerms = 3;
    std::string tables =
        R"({"tables":[{"name":"PLC_MANUFACTURER","columns":[)"
        R"({"name":"MANUFACTURER","type":"text"},{"name":"SERIES","type":"text"},)"
        R"({"name":"TYPE","type":"text"},{"name":"TABLE_NAME","type":"text"}],"rows":[)";
    for (int t = 0; t < kTypes; ++t) {
        tables += std::string(t ? "," : "") + "[\"M" + std::to_string(t % 7) + "\",\"S\",\"T" +
                  std::to_string(t) + "\",\"T" + std::to_string(t) + "\"]";
    }
    tables += "]}";
    for (int t = 0; t < kTypes; ++t) {
        const std::string table = "T" + std::to_string(t);
        tables += R"(,{"name":")" + table + R"(","columns":)" + kModuleColumns + R"(,"rows":[)";
        for (int m = 0; m < kModules; ++m) {
            tables += std::string(m ? "," : "") + "[\"C" + std::to_string(m) +
                      "\",\"3\",null,\"d\",\"\"]";
        }
        tables +=
            R"(]},{"name":")" + table + R"(_data","columns":)" + kTermColumns + R"(,"rows":[)";
        for (int m = 0; m < kModules; ++m) {
            for (int q = 1; q <= kTerms; ++q) {
                const std::string attributes =
                    q == 1 ? "TERM_=X" + std::to_string(m) + ";TERMDESC_=输入 " + std::to_string(q)
                    : q == 2 ? "TERMDESC_=D;A=B;TERM_=" + std::to_string(t * m)
                             : "NOTHING=1";
                tables += std::string(m || q > 1 ? "," : "") + "[\"C" + std::to_string(m) + "\"," +
                          std::to_string(q) + ",\"" + attributes + "\"]";
            }
        }
        tables += "]}";
    }
    tables += "]}";
    const fs::path ace = Ace(tables);
    ASSERT_EQ(Import(ace).code, cli::kExitOk);

    plcdb::Connection db;
    std::string error;
    ASSERT_TRUE(db.Open(library.string(), error)) << error;
    size_t compared = 0;
    for (int t = 0; t < kTypes; t += 9) {
        const std::string table = "T" + std::to_string(t) + "_data";
        const Outcome exported =
            Run("mdb-export", "-H -d '|' -q '' '" + ace.string() + "' " + table);
        ASSERT_EQ(exported.code, 0) << exported.err;
        std::istringstream lines(exported.out);
        std::string line;
        while (std::getline(lines, line)) {
            const size_t a = line.find('|'), b = line.find('|', a + 1);
            const std::string code = line.substr(0, a), sequence = line.substr(a + 1, b - a - 1);
            const std::string attributes = line.substr(b + 1);
            auto value = [&](const std::string& key) {
                const size_t at = attributes.find(key);
                if (at == std::string::npos)
                    return std::string();
                const size_t end = attributes.find(';', at);
                return attributes.substr(at + key.size(),
                                         end == std::string::npos ? end : end - at - key.size());
            };
            auto rows = db.Query("Select TermValue,TERMDESC from " + table + " where CODE='" +
                                     code + "' and SEQUENCE=" + sequence,
                                 error);
            ASSERT_TRUE(rows && rows->RowCount() == 1) << table << " " << line;
            EXPECT_EQ(rows->Get(0, "TermValue"), value("TERM_=")) << line;
            EXPECT_EQ(rows->Get(0, "TERMDESC"), value("TERMDESC_=")) << line;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 12u * kModules * kTerms);
    auto modules = db.Query("Select * from T99", error);
    ASSERT_TRUE(modules.has_value());
    EXPECT_EQ(modules->RowCount(), static_cast<size_t>(kModules));
}

}  // namespace
