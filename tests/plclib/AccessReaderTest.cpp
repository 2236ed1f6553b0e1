// The Access reader on a real Access 2000 file, and on files that only pretend to be one.
#include <filesystem>
#include <random>

#include "LibraryFixture.h"
#include "plclib/AccessReader.h"

namespace plclib_test {
namespace {

std::filesystem::path DateTestFile() {
    const auto dir = testing_support::SharedFixturesDir();
    return dir.empty() ? dir : dir / "access" / "DateTestDatabase.mdb";
}

#define REQUIRE_FIXTURE()                                                                   \
    if (DateTestFile().empty() || !std::filesystem::exists(DateTestFile())) {               \
        GTEST_SKIP() << "fixture access/DateTestDatabase.mdb not found beside the project"; \
    }

TEST(AccessReaderTest, ReadsTablesColumnsAndRowsOfARealFile) {
    REQUIRE_FIXTURE();
    plcdb::AccessReader reader;
    std::string error;
    ASSERT_TRUE(reader.Open(DateTestFile().string(), error)) << error;
    EXPECT_EQ(reader.TableNames(), (std::vector<std::string>{"DateTest"}));
    plcdb::QueryResult table;
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
    EXPECT_FALSE(reader.ReadTable("PLC_MANUFACTURER", table, error));
    EXPECT_NE(error.find("has no table PLC_MANUFACTURER"), std::string::npos) << error;
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

TEST(AccessReaderTest, ATruncatedFileFailsCleanly) {
    REQUIRE_FIXTURE();
    testing_support::TempDir dir;
    const std::string bytes = testing_support::ReadFile(DateTestFile());
    for (size_t keep : {size_t{4096}, bytes.size() / 2, bytes.size() - 4096}) {
        const auto path = (dir / "cut.mdb").string();
        testing_support::WriteFile(path, bytes.substr(0, keep));
        plcdb::AccessReader reader;
        std::string error;
        if (reader.Open(path, error)) {  // the catalogue may survive; the rows then fail
            plcdb::QueryResult table;
            for (const auto& name : reader.TableNames()) {
                error.clear();
                if (reader.ReadTable(name, table, error)) {
                    EXPECT_LE(table.RowCount(), 6u);
                } else {
                    EXPECT_FALSE(error.empty());
                }
            }
        } else {
            EXPECT_NE(error.find("cut.mdb"), std::string::npos) << error;
        }
    }
}

}  // namespace
}  // namespace plclib_test
