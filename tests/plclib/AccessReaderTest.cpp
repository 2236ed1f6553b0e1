// The Access reader on Access 2000 files written by the test writer (and on a real file
// where one is kept beside the project), and on files that only pretend to be one.
#include <filesystem>
#include <random>

#include "JetWriter.h"
#include "LibraryFixture.h"
#include "plclib/AccessReader.h"

namespace plclib_test {
namespace {

using jetwrite::ColumnType;

// A file made by Access itself, kept outside the repository: an extra check where present.
std::filesystem::path RealFile() {
    const auto dir = testing_support::SharedFixturesDir();
    const auto path = dir.empty() ? dir : dir / "access" / "DateTestDatabase.mdb";
    return !path.empty() && std::filesystem::exists(path) ? path : std::filesystem::path();
}

// Longer than the reader's first buffers: it must still come back whole.
std::string LongMemo() {
    std::string text;
    for (int i = 0; text.size() < 100000; ++i) {
        text += "第" + std::to_string(i) + "行 line\r\n";
    }
    return text;
}

// Two tables: every kind of column the reader meets, with nulls, Chinese text, a memo on
// several long value pages and enough rows for many data pages.
std::filesystem::path GeneratedFile(const testing_support::TempDir& dir) {
    jetwrite::Table mixed{"Mixed",
                          {{"IDCol", ColumnType::Long},
                           {"LongTextCol", ColumnType::Memo},
                           {"ShortTextCol", ColumnType::Text, 60}},
                          {{"1", "Hello", "Year 1999"},
                           {"-7", "New line\r\nin field", std::nullopt},
                           {std::nullopt, LongMemo(), "西门子 S7-300"},
                           {"2147483647", std::nullopt, ""}}};
    for (int i = 4; i < 3000; ++i) {
        mixed.rows.push_back({std::to_string(i + 1), "备注 " + std::to_string(i), "row"});
    }
    jetwrite::Table other{"第二表", {{"A", ColumnType::Text, 10}}, {{"x"}}};
    const auto path = dir / "generated.mdb";
    std::string error;
    EXPECT_TRUE(jetwrite::WriteDatabase({{mixed, other}}, path.string(), {}, error)) << error;
    return path;
}

TEST(AccessReaderTest, ReadsTablesColumnsAndRows) {
    testing_support::TempDir dir;
    plcdb::AccessReader reader;
    std::string error;
    ASSERT_TRUE(reader.Open(GeneratedFile(dir).string(), error)) << error;
    EXPECT_EQ(reader.TableNames(), (std::vector<std::string>{"Mixed", "第二表"}));
    plcdb::QueryResult table;
    ASSERT_TRUE(reader.ReadTable("MIXED", table, error)) << error;
    EXPECT_EQ(table.columns, (std::vector<std::string>{"IDCol", "LongTextCol", "ShortTextCol"}));
    ASSERT_EQ(table.RowCount(), 3000u);
    const std::vector<std::vector<std::string>> head = {{"1", "Hello", "Year 1999"},
                                                        {"-7", "New line\r\nin field", ""},
                                                        {"", LongMemo(), "西门子 S7-300"},
                                                        {"2147483647", "", ""},
                                                        {"5", "备注 4", "row"}};
    for (size_t i = 0; i < head.size(); ++i) {
        EXPECT_EQ(table.rows[i], head[i]) << "row " << i;
    }
    EXPECT_EQ(table.rows.back(), (std::vector<std::string>{"3000", "备注 2999", "row"}));
    ASSERT_TRUE(reader.ReadTable("第二表", table, error)) << error;
    EXPECT_EQ(table.rows, (std::vector<std::vector<std::string>>{{"x"}}));
    EXPECT_FALSE(reader.ReadTable("PLC_MANUFACTURER", table, error));
    EXPECT_NE(error.find("has no table PLC_MANUFACTURER"), std::string::npos) << error;

    if (RealFile().empty()) {
        return;
    }
    ASSERT_TRUE(reader.Open(RealFile().string(), error)) << error;
    EXPECT_EQ(reader.TableNames(), (std::vector<std::string>{"DateTest"}));
    ASSERT_TRUE(reader.ReadTable("datetest", table, error)) << error;
    EXPECT_EQ(table.columns, (std::vector<std::string>{"IDCol", "DateTimeCol", "DateCol", "TimeCol",
                                                       "LongTextCol", "ShortTextCol"}));
    ASSERT_EQ(table.RowCount(), 6u);
    for (size_t i = 0; i < table.RowCount(); ++i) {
        EXPECT_EQ(table.Get(i, "IDCol"), std::to_string(i + 1));
    }
    EXPECT_EQ(table.Get(0, "LongTextCol"), "Hello");  // a memo column
    EXPECT_EQ(table.Get(1, "LongTextCol"), "Year 9999");
    EXPECT_EQ(table.Get(1, "ShortTextCol"), "Year 1999");
    EXPECT_EQ(table.Get(5, "LongTextCol"), "New line\r\nin field");
    EXPECT_EQ(table.Get(0, "DateCol").substr(0, 10), "2021-12-02");
}

TEST(AccessReaderTest, RefusesFilesThatAreNoAccessDatabase) {
    testing_support::TempDir dir;
    std::mt19937 random(11);
    std::string noise(8192, '\0');
    for (auto& c : noise) {
        c = static_cast<char>(random());
    }
    std::string fake = std::string("\0\1\0\0Standard Jet DB", 19) + noise;
    struct Case {
        const char* name;
        std::string content;
        const char* reason;
    } cases[] = {
        {"empty.mdb", "", "not an Access database"},
        {"noise.mdb", noise, "not an Access database"},
        {"text.mdb", std::string(4096, 'x'), "not an Access database"},
        {"fake.mdb", fake, ""},
    };
    for (const auto& c : cases) {
        const auto path = (dir / c.name).string();
        testing_support::WriteFile(path, c.content);
        plcdb::AccessReader reader;
        std::string error;
        EXPECT_FALSE(reader.Open(path, error)) << c.name;
        EXPECT_NE(error.find(c.reason), std::string::npos) << error;
        EXPECT_NE(error.find(c.name), std::string::npos) << error;
        EXPECT_TRUE(reader.TableNames().empty());
    }
    plcdb::AccessReader reader;
    std::string error;
    EXPECT_FALSE(reader.Open((dir / "missing.mdb").string(), error));
    EXPECT_NE(error.find("does not exist"), std::string::npos);
}

// A cut file fails with an error or reads fewer rows; it never crashes the reader.
void ReadCutCopies(const std::filesystem::path& file, size_t rows) {
    testing_support::TempDir dir;
    const std::string bytes = testing_support::ReadFile(file);
    for (size_t keep : {size_t{4096}, size_t{3 * 4096}, bytes.size() / 2, bytes.size() - 4096}) {
        const auto path = (dir / "cut.mdb").string();
        testing_support::WriteFile(path, bytes.substr(0, keep));
        plcdb::AccessReader reader;
        std::string error;
        if (reader.Open(path, error)) {  // the catalogue may survive; the rows then fail
            plcdb::QueryResult table;
            for (const auto& name : reader.TableNames()) {
                error.clear();
                if (reader.ReadTable(name, table, error)) {
                    EXPECT_LE(table.RowCount(), rows) << keep;
                } else {
                    EXPECT_FALSE(error.empty());
                }
            }
        } else {
            EXPECT_NE(error.find("cut.mdb"), std::string::npos) << error;
        }
    }
}

TEST(AccessReaderTest, ATruncatedFileFailsCleanly) {
    testing_support::TempDir dir;
    ReadCutCopies(GeneratedFile(dir), 3000);
    if (!RealFile().empty()) {
        ReadCutCopies(RealFile(), 6);
    }
}

}  // namespace
}  // namespace plclib_test
