// qvplc lib, run as the user runs it: the built program on real library files.
#include <filesystem>

#include "JetWriter.h"
#include "LibraryFixture.h"

namespace plclib_test {
namespace {

class LibCommandsTest : public LibraryTest {
protected:
    int Qvplc(const std::string& arguments, std::string* output) {
        const std::string program = (testing_support::BinaryDir() / "bin" / "qvplc").string();
        return testing_support::RunCommand(
            "ZANDRIX_LOCAL_DIR='" + dir_.Path().string() + "' " + program + " lib " + arguments,
            output);
    }
    std::string InterleavedLibrary() {
        std::vector<std::string> s = {
            "INSERT INTO PLC_MANUFACTURER VALUES ('Beta','B1','DI','B_DI')",
            "INSERT INTO PLC_MANUFACTURER VALUES ('Alpha','','','')",
            "INSERT INTO PLC_MANUFACTURER VALUES ('Beta','B2','AO','B_AO')",
            "INSERT INTO MANUFACTURER_Simple VALUES ('Beta','BT')",
            "INSERT INTO B_DI VALUES ('B-8DI','8','DI','8 inputs','24VDC')",
            "INSERT INTO B_DI_data VALUES ('B-8DI',1,'1','I0.0','input 0')",
            "INSERT INTO B_DI_data VALUES ('B-8DI',2,'2','M','common')",
        };
        for (const char* t : {"B_DI", "B_AO"}) {
            auto tables = TypeTables(t);
            s.insert(s.begin(), tables.begin(), tables.end());
        }
        std::filesystem::create_directories(dir_ / "PLC");
        return MakeLibrary(s, "PLC/QvPLC.db");
    }
};

TEST_F(LibCommandsTest, TreeAndShowReadTheLocalLibrary) {
    InterleavedLibrary();
    std::string out;
    ASSERT_EQ(Qvplc("tree", &out), 0) << out;
    EXPECT_EQ(out, "PLC\n  Beta\n    B1\n      DI\n        B-8DI\n    B2\n      AO\n  Alpha\n");
    ASSERT_EQ(Qvplc("show 'Beta/B1/DI/B-8DI'", &out), 0) << out;
    EXPECT_NE(out.find("厂家: Beta (BT)\n"), std::string::npos) << out;
    EXPECT_NE(out.find("模块代号: B-8DI\n通道数: 8\n"), std::string::npos) << out;
    EXPECT_NE(out.find("1\t1\tI0.0\tinput 0\n2\t2\tM\tcommon\n"), std::string::npos) << out;
    EXPECT_EQ(Qvplc("show 'Beta/B1/DI/B-9DI'", &out), 1);
    EXPECT_NE(out.find("has no module Beta/B1/DI/B-9DI"), std::string::npos) << out;
    EXPECT_EQ(Qvplc("show Beta/B1", &out), 2);
    EXPECT_EQ(Qvplc("tree --bogus", &out), 2);
    ASSERT_EQ(Qvplc("show --help", &out), 0);
    EXPECT_NE(out.find("usage: qvplc lib show"), std::string::npos);
}

TEST_F(LibCommandsTest, MissingOrBrokenLibrariesAreBadInput) {
    std::string out;
    EXPECT_EQ(Qvplc("tree", &out), 3);
    EXPECT_NE(
        out.find("错误：PLC元件数据库文件" + (dir_ / "PLC" / "QvPLC.db").string() + "不存在！"),
        std::string::npos)
        << out;
    testing_support::WriteFile(dir_ / "junk.db", std::string(5000, 'j'));
    EXPECT_EQ(Qvplc("tree --library '" + (dir_ / "junk.db").string() + "'", &out), 3);
    EXPECT_NE(out.find("执行数据库操作时出错,错误信息:"), std::string::npos) << out;
}

TEST_F(LibCommandsTest, MigrateRefusesWhatItCannotConvert) {
    std::string out;
    testing_support::WriteFile(dir_ / "junk.mdb", std::string(5000, 'j'));
    EXPECT_EQ(Qvplc("migrate '" + (dir_ / "junk.mdb").string() + "'", &out), 3);
    EXPECT_NE(out.find("not an Access database"), std::string::npos) << out;
    // An Access file that holds no component library: a generated one, and one made by
    // Access itself where it is kept beside the project.
    const auto other = (dir_ / "other.mdb").string();
    std::string error;
    ASSERT_TRUE(jetwrite::WriteDatabase(
        {{{"DateTest", {{"IDCol", jetwrite::ColumnType::Long}}, {{"1"}}}}}, other, {}, error))
        << error;
    std::vector<std::string> files = {other};
    if (const auto fixtures = testing_support::SharedFixturesDir(); !fixtures.empty()) {
        files.push_back((fixtures / "access" / "DateTestDatabase.mdb").string());
    }
    for (const auto& mdb : files) {
        std::filesystem::remove_all(dir_ / "PLC");
        EXPECT_EQ(Qvplc("migrate '" + mdb + "'", &out), 3);
        EXPECT_NE(out.find("no table PLC_MANUFACTURER"), std::string::npos) << out;
        InterleavedLibrary();
        EXPECT_EQ(Qvplc("migrate '" + mdb + "'", &out), 1);
        EXPECT_NE(out.find("already exists; give --force"), std::string::npos) << out;
    }
    EXPECT_FALSE(std::filesystem::exists(dir_ / "PLC" / "QvPLC.db.part"));
    EXPECT_EQ(Qvplc("migrate", &out), 2);
}

// A Windows library as the Windows editor leaves it: the two base tables, and a module
// table and a terminal table per type, every text column 60 characters long.
jetwrite::Table TextTable(const std::string& name, const std::vector<std::string>& columns) {
    jetwrite::Table table{name, {}, {}};
    for (const auto& column : columns) {
        table.columns.push_back({column, jetwrite::ColumnType::Text, 60});
    }
    return table;
}

jetwrite::Table TerminalTable(const std::string& name) {
    jetwrite::Table table =
        TextTable(name + "_data", {"CODE", "SEQUENCE", "TermValue", "TERMDESC"});
    table.columns[1].type = jetwrite::ColumnType::Long;
    table.columns.push_back({"DETAILTERMDESC", jetwrite::ColumnType::Memo});
    return table;
}

void AddModule(jetwrite::Database& db, size_t type, const std::string& code, int points,
               const std::string& what) {
    auto& modules = db.tables[2 + 2 * type];
    auto& terminals = db.tables[3 + 2 * type];
    modules.rows.push_back({code, std::to_string(points),
                            modules.name.substr(modules.name.size() - 2),
                            what + " " + std::to_string(points) + "点", std::nullopt});
    for (int n = 1; n <= points + 1; ++n) {
        const bool common = n > points;
        terminals.rows.push_back({code, std::to_string(n), common ? "M" : std::to_string(n - 1),
                                  common ? "公共端" : "输入 I0." + std::to_string(n - 1),
                                  n == 1 ? jetwrite::Field(std::string(3000, 'd')) : std::nullopt});
    }
}

jetwrite::Database WindowsLibrary() {
    jetwrite::Database db;
    auto plc = TextTable("PLC_MANUFACTURER", {"MANUFACTURER", "SERIES", "TYPE", "TABLE_NAME"});
    plc.rows = {{"西门子", "S7-300", "DI", "SIE_300_DI"},
                {"西门子", "S7-300", "DO", "SIE_300_DO"},
                {"三菱电机", "", std::nullopt, std::nullopt},
                {"Allen-Bradley", "1756", "AI", "AB_1756_AI"}};
    auto simple = TextTable("MANUFACTURER_Simple", {"MANUFACTURER", "MFG"});
    simple.rows = {{"西门子", "SIE"}, {"三菱电机", std::nullopt}, {"Allen-Bradley", "AB"}};
    db.tables = {plc, simple};
    for (const char* type : {"SIE_300_DI", "SIE_300_DO", "AB_1756_AI"}) {
        db.tables.push_back(TextTable(type, {"CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"}));
        db.tables.push_back(TerminalTable(type));
    }
    AddModule(db, 0, "6ES7 321-1BH02-0AA0", 16, "数字量输入");
    AddModule(db, 0, "6ES7 321-1BL00-0AA0", 32, "数字量输入");
    AddModule(db, 1, "6ES7 322-1BH01-0AA0", 16, "数字量输出");
    AddModule(db, 2, "1756-IF8", 8, "Analog input");
    return db;
}

std::vector<std::vector<std::string>> AsRead(const jetwrite::Table& table) {
    std::vector<std::vector<std::string>> rows;
    for (const auto& row : table.rows) {
        auto& out = rows.emplace_back();
        for (const auto& field : row) {
            out.push_back(field.value_or(""));
        }
    }
    return rows;
}

TEST_F(LibCommandsTest, MigrateConvertsAWindowsLibraryFileRowForRow) {
    auto source = WindowsLibrary();
    // A quote cannot be spliced into a statement: this row is reported, the rest converted.
    source.tables[3].rows.push_back({"6ES7 321-1BH02-0AA0", "99", "Q", "it's", std::nullopt});
    const auto mdb = (dir_ / "QvPLC.mdb").string();
    std::string error;
    ASSERT_TRUE(jetwrite::WriteDatabase(source, mdb, {}, error)) << error;
    source.tables[3].rows.pop_back();

    std::string out;
    ASSERT_EQ(Qvplc("migrate '" + mdb + "'", &out), 0) << out;
    EXPECT_NE(out.find("3 manufacturers, 4 type rows, 3 module tables, 4 modules, "
                       "76 terminal rows; 1 problems"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("not converted: table SIE_300_DI_data, row 51: the value \"it's\""),
              std::string::npos)
        << out;

    plcdb::Connection db;
    ASSERT_TRUE(db.Open((dir_ / "PLC" / "QvPLC.db").string(), error)) << error;
    for (const auto& table : source.tables) {
        const auto rows = db.Query("Select * from " + table.name, error);
        ASSERT_TRUE(rows) << table.name << ": " << error;
        EXPECT_EQ(rows->rows, AsRead(table)) << table.name;
        ASSERT_EQ(rows->columns.size(), table.columns.size()) << table.name;
        for (size_t c = 0; c < table.columns.size(); ++c) {
            EXPECT_TRUE(plcdb::EqualsIgnoreCase(rows->columns[c], table.columns[c].name));
        }
    }
    db.Close(error);

    ASSERT_EQ(Qvplc("tree", &out), 0) << out;
    EXPECT_EQ(out,
              "PLC\n  西门子\n    S7-300\n      DI\n        6ES7 321-1BH02-0AA0\n"
              "        6ES7 321-1BL00-0AA0\n      DO\n        6ES7 322-1BH01-0AA0\n"
              "  三菱电机\n  Allen-Bradley\n    1756\n      AI\n        1756-IF8\n");
    ASSERT_EQ(Qvplc("show '西门子/S7-300/DI/6ES7 321-1BH02-0AA0'", &out), 0) << out;
    EXPECT_NE(out.find("厂家: 西门子 (SIE)\n"), std::string::npos) << out;
    EXPECT_NE(out.find("通道数: 16\n"), std::string::npos) << out;
    EXPECT_NE(out.find("1\t0\t输入 I0.0\t" + std::string(3000, 'd') + "\n2\t1\t输入 I0.1\t\n"),
              std::string::npos)
        << out.substr(0, 400);
    EXPECT_NE(out.find("17\tM\t公共端\t\n"), std::string::npos) << out;
}

}  // namespace
}  // namespace plclib_test
