// qvplc lib, run as the user runs it: the built program on real library files.
#include <filesystem>

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
    const auto fixtures = testing_support::SharedFixturesDir();
    if (!fixtures.empty()) {
        const auto mdb = (fixtures / "access" / "DateTestDatabase.mdb").string();
        EXPECT_EQ(Qvplc("migrate '" + mdb + "'", &out), 3);
        EXPECT_NE(out.find("no table PLC_MANUFACTURER"), std::string::npos) << out;
        InterleavedLibrary();
        EXPECT_EQ(Qvplc("migrate '" + mdb + "'", &out), 1);
        EXPECT_NE(out.find("already exists; give --force"), std::string::npos) << out;
    }
    EXPECT_FALSE(std::filesystem::exists(dir_ / "PLC" / "QvPLC.db.part"));
    EXPECT_EQ(Qvplc("migrate", &out), 2);
}

}  // namespace
}  // namespace plclib_test
