// The writer's own checks: its reader of table descriptions, the text forms it stores, the
// files it refuses to write, and two things mdbtools' programs cannot show: null fields
// apart from empty texts, and a table far larger than the read-back script writes.
#include <gtest/gtest.h>
#include <mdbtools.h>

#include <filesystem>
#include <memory>

#include "JetWriter.h"
#include "Json.h"
#include "TableDescription.h"
#include "TestPaths.h"
#include "Text.h"

namespace jetwrite_test {
namespace {

using jetwrite::ColumnType;

std::string LoadError(const std::string& json) {
    jetwrite::Database db;
    std::string error;
    EXPECT_FALSE(jetwrite::LoadDescription(json, db, error)) << json;
    return error;
}

TEST(JetWriteDescriptionTest, ReadsADescriptionWithEveryKindOfField) {
    const std::string json = R"({"tables": [
        {"name": "T", "columns": [{"name": "A", "type": "text", "length": 60},
                                  {"name": "B", "type": "memo"}, {"name": "C", "type": "long"}],
         "rows": [["\u4e2d\ud83d\ude00\n", null, -3], [null, "x", null]]},
        {"name": "Empty", "columns": [{"name": "A", "type": "text"}]}]})";
    jetwrite::Database db;
    std::string error;
    ASSERT_TRUE(jetwrite::LoadDescription(json, db, error)) << error;
    ASSERT_EQ(db.tables.size(), 2u);
    const auto& t = db.tables[0];
    EXPECT_EQ(t.columns[0].length, 60);
    EXPECT_EQ(t.columns[1].type, ColumnType::Memo);
    EXPECT_EQ(t.columns[2].type, ColumnType::Long);
    EXPECT_EQ(db.tables[1].columns[0].length, 255);
    ASSERT_EQ(t.rows.size(), 2u);
    EXPECT_EQ(t.rows[0][0], "中\xF0\x9F\x98\x80\n");
    EXPECT_FALSE(t.rows[0][1].has_value());
    EXPECT_EQ(t.rows[0][2], "-3");
    EXPECT_EQ(t.rows[1][1], "x");
    EXPECT_TRUE(db.tables[1].rows.empty());
}

TEST(JetWriteDescriptionTest, MalformedJsonIsNamedByLineAndColumn) {
    struct Case {
        const char* json;
        const char* error;
    } cases[] = {
        {"{\"tables\": [1,]}", "line 1, column 15: unexpected character; expected a value"},
        {"{\"tables\": []", "line 1, column 14: expected ',' or '}' in an object"},
        {"{\"tables\": [], \"tables\": []}", "line 1, column 16: the key \"tables\" appears twice"},
        {"{\n  \"a\": \"x\ty\"}", "line 2, column 10: a control character inside a string"},
        {"{\"a\": \"\\q\"}", "line 1, column 9: unknown escape in a string"},
        {"{\"a\": \"\\ud800\"}", "a high surrogate without its low surrogate"},
        {"{\"a\": 012}", "line 1, column 8: a number does not start with 0"},
        {"{\"a\": tru}", "line 1, column 7: unknown word"},
        {"{\"a\": 1} x", "line 1, column 10: unexpected text after the document"},
        {"\"中文\" 1", "line 1, column 6: unexpected text"},  // columns count characters
        {"", "line 1, column 1: the text ends where a value was expected"},
        {"{\"a\": \"abc", "the text ends inside a string"},
    };
    for (const auto& c : cases) {
        jetwrite::JsonValue value;
        std::string error;
        EXPECT_FALSE(jetwrite::ParseJson(c.json, value, error)) << c.json;
        EXPECT_NE(error.find(c.error), std::string::npos) << c.json << " gave " << error;
    }
    jetwrite::JsonValue deep;
    std::string error;
    EXPECT_FALSE(jetwrite::ParseJson(std::string(100, '[') + std::string(100, ']'), deep, error));
    EXPECT_NE(error.find("nested too deeply"), std::string::npos) << error;
}

TEST(JetWriteDescriptionTest, DescriptionsThatSayTheWrongThingAreNamedByPath) {
    const std::string head = R"({"tables": [{"name": "T", "columns": [)";
    struct Case {
        std::string json;
        const char* error;
    } cases[] = {
        {"[]", "line 1, column 1: the description must be an object"},
        {R"({"tables": [], "extra": 1})", "the description has an unknown key \"extra\""},
        {R"({"table": []})", "the description has an unknown key \"table\""},
        {head + R"({"name": "A", "type": "date"}]}]})", "tables[0].columns[0].type must be"},
        {head + R"({"name": "A", "type": "memo", "length": 9}]}]})",
         "tables[0].columns[0].length is only for text columns"},
        {head + R"({"name": "A", "type": "text", "length": 256}]}]})",
         "length must be a whole number from 1 to 255"},
        {head + R"({"type": "text"}]}]})", "tables[0].columns[0] needs \"name\""},
        {head + R"({"name": "A", "type": "long"}], "rows": [["7"]]}]})",
         "tables[0].rows[0][0] must be a whole number or null"},
        {head + R"({"name": "A", "type": "long"}], "rows": [[1.5]]}]})",
         "must be a whole number or null"},
        {head + R"({"name": "A", "type": "text"}], "rows": [[7]]}]})",
         "tables[0].rows[0][0] must be a string or null"},
        {head + "{\"name\": \"A\", \"type\": \"text\"}],\n \"rows\": [[\"a\", \"b\"]]}]}",
         "line 2, column 11: tables[0].rows[0] has 2 fields for 1 columns"},
    };
    for (const auto& c : cases) {
        const std::string error = LoadError(c.json);
        EXPECT_NE(error.find(c.error), std::string::npos) << c.json << " gave " << error;
    }
}

std::vector<uint8_t> Stored(const std::u16string& text, bool compress) {
    std::vector<uint8_t> out;
    EXPECT_TRUE(jetwrite::EncodeText(text, compress, out));
    return out;
}

TEST(JetWriteTextTest, CompressesOnlyWhereItIsShorterAndReadable) {
    using Bytes = std::vector<uint8_t>;
    EXPECT_EQ(Stored(u"Abc", true), (Bytes{0xFF, 0xFE, 'A', 'b', 'c'}));
    EXPECT_EQ(Stored(u"Abc", false), (Bytes{'A', 0, 'b', 0, 'c', 0}));
    EXPECT_EQ(Stored(u"Ab", true), (Bytes{'A', 0, 'b', 0}));  // not shorter
    // Switching to two bytes a character and back costs a zero byte each time.
    EXPECT_EQ(Stored(u"abc\u4e2ddef", true),
              (Bytes{0xFF, 0xFE, 'a', 'b', 'c', 0, 0x2D, 0x4E, 0, 'd', 'e', 'f'}));
    EXPECT_EQ(Stored(u"\u4e2d\u6587", true), (Bytes{0x2D, 0x4E, 0x87, 0x65}));  // not shorter
    EXPECT_EQ(Stored(u"a\u0100b", true), (Bytes{'a', 0, 0, 1, 'b', 0}));        // low byte zero
    EXPECT_EQ(Stored(u"", true), Bytes{});
    // A leading U+FEFF would read as the compressed form's marker: it is always compressed.
    EXPECT_EQ(Stored(u"\ufeffa", false), (Bytes{0xFF, 0xFE, 0, 0xFF, 0xFE, 0, 'a'}));
    std::vector<uint8_t> out;
    EXPECT_FALSE(jetwrite::EncodeText(u"\ufeff\u0100", true, out));

    std::u16string wide;
    EXPECT_TRUE(jetwrite::Utf8ToUtf16("a\xC3\xBF\xE4\xB8\xAD\xF0\x9F\x98\x80", wide));
    EXPECT_EQ(wide, u"a\u00ff\u4e2d\U0001F600");
    for (const char* bad : {"\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                            "\xE4\xB8", "\x80", "a\xFF"}) {
        EXPECT_FALSE(jetwrite::Utf8ToUtf16(bad, wide)) << bad;
    }
}

jetwrite::Table TextTable(const std::string& name, std::vector<jetwrite::Field> values,
                          int length = 255) {
    jetwrite::Table table{name, {{"A", ColumnType::Text, length}}, {}};
    for (auto& value : values) {
        table.rows.push_back({std::move(value)});
    }
    return table;
}

TEST(JetWriteTest, RefusesWhatItCannotWriteAndLeavesNoFile) {
    testing_support::TempDir dir;
    const std::string path = (dir / "out.mdb").string();
    jetwrite::Table wideRow{"Wide", {}, {{}}};
    for (int i = 0; i < 9; ++i) {
        wideRow.columns.push_back({"C" + std::to_string(i), ColumnType::Text, 255});
        std::string wide;
        for (int k = 0; k < 255; ++k) {
            wide += "中";  // two bytes stored, compressed or not
        }
        wideRow.rows[0].push_back(wide);
    }
    jetwrite::Table longs{"L", {{"N", ColumnType::Long, 0}}, {{"12"}, {"2147483648"}}};
    jetwrite::Table sameColumns{"S", {{"Code", ColumnType::Text}, {"CODE", ColumnType::Memo}}, {}};
    struct Case {
        std::vector<jetwrite::Table> tables;
        const char* error;
    } cases[] = {
        {{TextTable("T", {"ok", "toolong"}, 5)},
         "table \"T\", row 2, column \"A\": the text has 7 characters; the column holds 5"},
        {{TextTable("T", {"bad \xFF utf-8"})}, "row 1, column \"A\": the text is not valid UTF-8"},
        {{TextTable("T", {"\xEF\xBB\xBF\xC4\x80"})}, "starts with U+FEFF"},
        {{longs}, "table \"L\", row 2, column \"N\": \"2147483648\" is not a whole number"},
        {{TextTable("Tab", {}), TextTable("TAB", {})}, "two tables are named \"TAB\""},
        {{TextTable("MSysAccessStorage", {})}, "is kept for system tables"},
        {{TextTable("a.b", {})}, "must not hold control characters, '.'"},
        {{TextTable(std::string(65, 'n'), {})}, "must have 1 to 64 characters"},
        {{TextTable("T", {}, 0)}, "the length of column \"A\" of table \"T\" must be 1 to 255"},
        {{sameColumns}, "table \"S\" has two columns named \"CODE\""},
        {{jetwrite::Table{"NoColumns", {}, {}}}, "must have 1 to 255 columns"},
        {{jetwrite::Table{"Short", {{"A", ColumnType::Long}}, {{}}}},
         "table \"Short\", row 1: 0 fields for 1 columns"},
        {{wideRow}, "table \"Wide\", row 1: the row takes 4616 bytes, more than a page holds"},
    };
    for (const auto& c : cases) {
        std::string error;
        EXPECT_FALSE(jetwrite::WriteDatabase({c.tables}, path, {}, error)) << c.error;
        EXPECT_NE(error.find(c.error), std::string::npos) << error;
        EXPECT_FALSE(std::filesystem::exists(path));
        EXPECT_FALSE(std::filesystem::exists(path + ".part"));
    }
    std::string error;
    EXPECT_FALSE(jetwrite::WriteDatabase({}, (dir / "no" / "such" / "x.mdb").string(), {}, error));
    EXPECT_NE(error.find("cannot write"), std::string::npos) << error;
}

// Opens a written file with libmdb and walks one table with its rows cracked into fields.
class MdbFile {
public:
    explicit MdbFile(const std::string& path) : mdb_(mdb_open(path.c_str(), MDB_NOFLAGS)) {
        EXPECT_TRUE(mdb_ && mdb_read_catalog(mdb_, MDB_TABLE)) << path;
    }
    ~MdbFile() {
        if (table_) {
            mdb_free_tabledef(table_);
        }
        mdb_close(mdb_);
    }
    MdbTableDef* Table(const char* name) {
        table_ = mdb_read_table_by_name(mdb_, const_cast<char*>(name), MDB_TABLE);
        EXPECT_TRUE(table_ && mdb_read_columns(table_)) << name;
        mdb_rewind_table(table_);
        return table_;
    }
    // The null flags of the row mdb_fetch_row read last.
    std::vector<bool> Nulls() {
        int start = 0;
        size_t size = 0;
        EXPECT_EQ(mdb_find_row(mdb_, table_->cur_row - 1, &start, &size), 0);
        std::vector<MdbField> fields(table_->num_cols);
        EXPECT_EQ(mdb_crack_row(table_, start & 0x1FFF, size, fields.data()),
                  static_cast<int>(table_->num_cols));
        std::vector<bool> nulls;
        for (const auto& field : fields) {
            nulls.push_back(field.is_null != 0);
        }
        return nulls;
    }

private:
    MdbHandle* mdb_;
    MdbTableDef* table_ = nullptr;
};

TEST(JetWriteTest, NullFieldsStayApartFromEmptyTexts) {
    testing_support::TempDir dir;
    const std::string path = (dir / "nulls.mdb").string();
    jetwrite::Table table{
        "N",
        {{"T", ColumnType::Text}, {"M", ColumnType::Memo}, {"L", ColumnType::Long}},
        {{"", "", "0"}, {std::nullopt, std::nullopt, std::nullopt}, {"", std::nullopt, "5"}}};
    std::string error;
    ASSERT_TRUE(jetwrite::WriteDatabase({{table}}, path, {}, error)) << error;
    MdbFile file(path);
    MdbTableDef* t = file.Table("N");
    ASSERT_TRUE(t);
    std::vector<std::vector<bool>> nulls;
    while (mdb_fetch_row(t)) {
        nulls.push_back(file.Nulls());
    }
    EXPECT_EQ(nulls, (std::vector<std::vector<bool>>{
                         {false, false, false}, {true, true, true}, {false, true, false}}));
}

TEST(JetWriteTest, WritesAndReadsBackATableOf320000Rows) {
    testing_support::TempDir dir;
    const std::string path = (dir / "big.mdb").string();
    jetwrite::Table table{"T_data",
                          {{"Code", ColumnType::Text, 60},
                           {"SEQUENCE", ColumnType::Long},
                           {"ATTRIBUTES", ColumnType::Memo}},
                          {}};
    constexpr int kRows = 320000;
    table.rows.reserve(kRows);
    for (int i = 0; i < kRows; ++i) {
        table.rows.push_back({"M" + std::to_string(i / 16), std::to_string(i % 16 + 1),
                              "TERM_=X" + std::to_string(i % 16) + ";TERMDESC_=输入;"});
    }
    std::string error;
    jetwrite::WriteSummary summary;
    ASSERT_TRUE(jetwrite::WriteDatabase({{table}}, path, {}, error, &summary)) << error;
    EXPECT_EQ(summary.rows, size_t{kRows});
    EXPECT_GT(summary.pages, 3000u);  // far beyond what an inline usage map names
    EXPECT_EQ(std::filesystem::file_size(path), summary.pages * 4096);

    MdbFile file(path);
    MdbTableDef* t = file.Table("T_data");
    ASSERT_TRUE(t);
    EXPECT_EQ(t->num_rows, static_cast<unsigned>(kRows));
    std::vector<char> code(256), sequence(256), attributes(256);
    mdb_bind_column(t, 1, code.data(), nullptr);
    mdb_bind_column(t, 2, sequence.data(), nullptr);
    mdb_bind_column(t, 3, attributes.data(), nullptr);
    int rows = 0;
    int wrong = 0;
    while (mdb_fetch_row(t)) {
        const auto& want = table.rows[rows++];
        wrong += (*want[0] != code.data() || *want[1] != sequence.data() ||
                  *want[2] != attributes.data());
    }
    EXPECT_EQ(rows, kRows);
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace jetwrite_test
