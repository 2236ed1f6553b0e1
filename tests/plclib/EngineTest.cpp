// The engine keeps what users see of the Access engine, and refuses files that are no
// library with a reason instead of failing later or crashing.
#include <filesystem>
#include <fstream>
#include <random>

#include "LibraryFixture.h"
#include "plclib/AccessSql.h"

namespace plclib_test {
namespace {

using plcdb::TranslateAccessSql;

TEST(AccessSqlTranslation, RewritesOnlyOutsideLiterals) {
    EXPECT_EQ(TranslateAccessSql("DELETE * FROM T WHERE A='DELETE * FROM x'"),
              "DELETE FROM T WHERE A='DELETE * FROM x'");
    EXPECT_EQ(TranslateAccessSql("Drop table [A B_data]"), "Drop table \"A B_data\"");
    EXPECT_EQ(TranslateAccessSql("SELECT * FROM T WHERE A='[x]' AND B=\"it's\""),
              "SELECT * FROM T WHERE A='[x]' AND B='it''s'");
    // A doubled quote inside a literal does not end it.
    EXPECT_EQ(TranslateAccessSql("DELETE * FROM T WHERE A='a'' [b]'"),
              "DELETE FROM T WHERE A='a'' [b]'");
}

class EngineTest : public LibraryTest {
protected:
    std::unique_ptr<plcdb::Connection> OpenModuleLibrary() {
        const auto path = MakeLibrary(TypeTables("M_S_T"));
        auto connection = std::make_unique<plcdb::Connection>();
        std::string error;
        EXPECT_TRUE(connection->Open(path, error)) << error;
        return connection;
    }
};

TEST_F(EngineTest, TextComparesWithoutRegardToCaseInWhereAndKeys) {
    auto holder = OpenModuleLibrary();
    auto& db = *holder;
    std::string error;
    ASSERT_TRUE(db.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('ABC','Ser','','')", error));
    auto rows = db.Query("SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='abc'", error);
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->RowCount(), 1u);
    EXPECT_EQ(rows->Get(0, "manufacturer"), "ABC");  // column names ignore case too

    ASSERT_TRUE(db.Execute("INSERT INTO M_S_T VALUES ('SM-16DI','16','DI','','')", error));
    EXPECT_FALSE(db.Execute("INSERT INTO m_s_t VALUES ('sm-16di','8','DI','','')", error));
    EXPECT_NE(error.find("UNIQUE"), std::string::npos) << error;
}

TEST_F(EngineTest, CharColumnsRefuseLongerTextAndCountCharactersNotBytes) {
    auto holder = OpenModuleLibrary();
    auto& db = *holder;
    std::string error;
    const std::string sixtyOne(61, 'x');
    EXPECT_FALSE(
        db.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('" + sixtyOne + "','','','')", error));
    EXPECT_NE(error.find("MANUFACTURER: text longer than 60 characters"), std::string::npos)
        << error;
    std::string sixtyHan;
    for (int i = 0; i < 60; ++i) {
        sixtyHan += "端";  // three bytes each
    }
    EXPECT_TRUE(
        db.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('" + sixtyHan + "','','','')", error))
        << error;
    EXPECT_FALSE(db.Execute("UPDATE PLC_MANUFACTURER SET SERIES='" + sixtyOne + "'", error));
}

TEST_F(EngineTest, MemoKeepsTextAndNullsReadAsEmpty) {
    auto holder = OpenModuleLibrary();
    auto& db = *holder;
    std::string error;
    ASSERT_TRUE(db.Execute("INSERT INTO M_S_T_data VALUES ('K',1,'0012','0.50','0012')", error))
        << error;
    ASSERT_TRUE(db.Execute("INSERT INTO M_S_T_data (CODE,SEQUENCE) VALUES ('K','2')", error))
        << error;
    auto rows = db.Query("Select * from M_S_T_data where CODE='k'", error);
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->RowCount(), 2u);
    EXPECT_EQ(rows->Get(0, "TERMVALUE"), "0012");
    EXPECT_EQ(rows->Get(0, "TERMDESC"), "0.50");
    EXPECT_EQ(rows->Get(0, "DETAILTERMDESC"), "0012");
    EXPECT_EQ(rows->Get(1, "SEQUENCE"), "2");  // an int column keeps a number
    EXPECT_EQ(rows->Get(1, "DETAILTERMDESC"), "");
    auto typed = db.Query("SELECT typeof(SEQUENCE) AS T FROM M_S_T_data", error);
    ASSERT_TRUE(typed);
    EXPECT_EQ(typed->Get(1, "T"), "integer");
}

TEST_F(EngineTest, InlinePrimaryKeysAndBracketedNames) {
    auto holder = OpenModuleLibrary();
    auto& db = *holder;
    std::string error;
    ASSERT_TRUE(
        db.Execute("Create TABLE [Inline Key] (CODE CHAR(10) NOT NULL PRIMARY KEY, N int)", error))
        << error;
    ASSERT_TRUE(db.Execute("INSERT INTO [Inline Key] VALUES ('ab', 1)", error)) << error;
    EXPECT_FALSE(db.Execute("INSERT INTO [inline key] VALUES ('AB', 2)", error));
    EXPECT_FALSE(db.Execute("INSERT INTO [Inline Key] VALUES ('abcdefghijk', 3)", error));
    ASSERT_TRUE(db.Execute("Drop table [Inline Key]", error)) << error;
    EXPECT_FALSE(db.TableExists("Inline Key"));
}

TEST_F(EngineTest, RefusesMoreThanOneStatementAtOnce) {
    auto holder = OpenModuleLibrary();
    auto& db = *holder;
    std::string error;
    EXPECT_FALSE(db.Execute("DELETE * FROM PLC_MANUFACTURER; Drop table M_S_T", error));
    EXPECT_TRUE(db.TableExists("M_S_T"));
    EXPECT_TRUE(db.Execute("DELETE * FROM PLC_MANUFACTURER;", error)) << error;
}

// The file travels whole (FTP, copies): a library left in WAL mode by another tool is put
// back to the rollback journal before the first change, so that no committed change stays in
// a -wal file; reading it changes nothing, not even its journal mode.
TEST_F(EngineTest, ReadingKeepsAWalLibraryAsItIsAndTheFirstChangeRestoresTheJournal) {
    const auto path = MakeLibrary(TypeTables("M_S_T"));
    std::string error;
    {
        plcdb::Connection db;
        ASSERT_TRUE(db.Open(path, error)) << error;
        auto mode = db.Query("PRAGMA journal_mode=WAL", error);
        ASSERT_TRUE(mode);
        ASSERT_EQ(mode->rows.at(0).at(0), "wal");
    }
    const std::string bytes = testing_support::ReadFile(path);
    {
        plcdb::Connection db;
        ASSERT_TRUE(db.Open(path, error)) << error;
        ASSERT_TRUE(db.Query("SELECT * FROM PLC_MANUFACTURER", error)) << error;
        ASSERT_TRUE(db.Execute("SELECT count(*) FROM M_S_T", error)) << error;
        auto mode = db.Query("PRAGMA journal_mode", error);
        ASSERT_TRUE(mode);
        EXPECT_EQ(mode->rows.at(0).at(0), "wal");
    }
    EXPECT_EQ(testing_support::ReadFile(path), bytes) << "reading changed the library";

    plcdb::Connection db;
    ASSERT_TRUE(db.Open(path, error)) << error;
    ASSERT_TRUE(db.Execute("BEGIN", error)) << error;
    ASSERT_TRUE(db.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('A','','','')", error)) << error;
    ASSERT_TRUE(db.Execute("COMMIT", error)) << error;
    auto mode = db.Query("PRAGMA journal_mode", error);
    ASSERT_TRUE(mode);
    EXPECT_EQ(mode->rows.at(0).at(0), "delete");
    EXPECT_FALSE(std::filesystem::exists(path + "-wal"));
}

// Files that are no library: each is refused on open with a reason naming the file.
TEST_F(EngineTest, RefusesFilesThatAreNoLibrary) {
    const auto good = MakeLibrary(TypeTables("M_S_T"));
    std::string bytes = testing_support::ReadFile(good);
    std::mt19937 random(7);
    std::string noise(4096, '\0');
    for (auto& c : noise) {
        c = static_cast<char>(random());
    }
    struct Case {
        const char* name;
        std::string content;
        const char* reason;
    } cases[] = {
        {"empty.db", "", "is empty"},
        {"noise.db", noise, "not a library database"},
        {"short.db", "SQLite", "too short"},
        {"truncated.db", bytes.substr(0, bytes.size() / 2), "is truncated"},
    };
    for (const auto& c : cases) {
        const auto path = (dir_ / c.name).string();
        testing_support::WriteFile(path, c.content);
        plcdb::Connection db;
        std::string error;
        EXPECT_FALSE(db.Open(path, error)) << c.name;
        EXPECT_NE(error.find(c.reason), std::string::npos) << c.name << ": " << error;
        EXPECT_NE(error.find(c.name), std::string::npos) << error;
        EXPECT_FALSE(db.IsOpen());
    }
}

// A header that looks right over pages that are garbage: the engine's own message.
TEST_F(EngineTest, CorruptPagesGiveTheEngineMessage) {
    const auto path = MakeLibrary(TypeTables("M_S_T"));
    std::string bytes = testing_support::ReadFile(path);
    ASSERT_GT(bytes.size(), 4096u);
    for (size_t i = 100; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(0xA5);
    }
    testing_support::WriteFile(path, bytes);
    plcdb::Connection db;
    std::string error;
    const bool opened = db.Open(path, error);
    if (opened) {  // the schema page may still parse; then the first query reports it
        EXPECT_FALSE(db.Query("Select * from PLC_MANUFACTURER", error));
    }
    EXPECT_NE(error.find("malformed"), std::string::npos) << error;
}

}  // namespace
}  // namespace plclib_test
