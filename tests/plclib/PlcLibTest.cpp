// CPlcLib on real library files: opening, the entry list and its load order, terminal rows,
// the lookups, renames and sequence shifts, and the refusal of values holding a quote.
#include <algorithm>
#include <filesystem>

#include "LibraryFixture.h"

namespace plclib_test {
namespace {

class PlcLibTest : public LibraryTest {
protected:
    // Two manufacturers: one with a series and two types (one without modules), one bare;
    // a second row naming the first type's table; blanks around names in PLC_MANUFACTURER.
    std::string SmallLibrary() {
        std::vector<std::string> s = {
            "INSERT INTO PLC_MANUFACTURER VALUES (' Norvik ','NX 10','Digital in','N_DI')",
            "INSERT INTO PLC_MANUFACTURER VALUES ('Norvik','NX 10','Analog','N_AI')",
            "INSERT INTO PLC_MANUFACTURER VALUES ('Bare Co','','','')",
            "INSERT INTO PLC_MANUFACTURER VALUES ('','lost','row','')",
            "INSERT INTO PLC_MANUFACTURER VALUES ('Norvik','NX 20','Again','N_DI')",
            "INSERT INTO MANUFACTURER_Simple VALUES ('Norvik','NVK')",
            "INSERT INTO N_DI VALUES ('NX-8DI',' 8 ','DI','8 inputs','24VDC')",
            "INSERT INTO N_DI VALUES ('NX-16DI','16','DI','16 inputs','24VDC')",
            "INSERT INTO N_DI_data VALUES ('NX-8DI',2,'1','I0.1','')",
            "INSERT INTO N_DI_data VALUES ('NX-8DI',1,'0','I0.0','first input')",
            "INSERT INTO N_DI_data VALUES ('NX-8DI',3,'M','0V',NULL)",
            "INSERT INTO N_DI_data VALUES ('NX-16DI',1,'0','I0.0','')",
        };
        for (const auto& t : {"N_DI", "N_AI"}) {
            for (auto& statement : TypeTables(t)) {
                s.insert(s.begin(), statement);
            }
        }
        return MakeLibrary(s);
    }

    static std::vector<std::string> Describe(const CPlcLib& lib) {
        std::vector<std::string> out;
        for (const auto& e : lib.Entries()) {
            out.push_back(e->manufacturer + "|" + e->series + "|" + e->type + "|" + e->code + "|" +
                          e->points);
        }
        return out;
    }
};

TEST_F(PlcLibTest, MissingFilePrintsOneFramedLineAndCreatesNothing) {
    CPlcLib lib;
    const auto path = (dir_ / "PLC" / "QvPLC.db").string();
    EXPECT_FALSE(lib.Open(path));
    EXPECT_EQ(host_.AllPrinted(), "\n错误：PLC元件数据库文件" + path + "不存在！\n");
    EXPECT_TRUE(host_.messages.empty());
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(lib.IsOpen());
    EXPECT_FALSE(lib.LoadLibrary());
}

TEST_F(PlcLibTest, AFileThatIsNoLibraryShowsTheDatabaseError) {
    const auto path = (dir_ / "QvPLC.db").string();
    testing_support::WriteFile(path, "Standard Jet DB, but not really");
    CPlcLib lib;
    EXPECT_FALSE(lib.Open(path));
    ASSERT_EQ(host_.messages.size(), 1u);
    EXPECT_EQ(host_.messages[0].text.rfind("执行数据库操作时出错,错误信息:", 0), 0u);
    EXPECT_NE(host_.messages[0].text.find(path), std::string::npos);
}

TEST_F(PlcLibTest, LoadLibraryKeepsRowOrderPlaceholdersAndTrimsOnlyTypeRows) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SmallLibrary()));
    ASSERT_TRUE(lib.LoadLibrary());
    const std::vector<std::string> expected = {
        "Norvik|NX 10|Digital in|NX-8DI| 8 ",
        "Norvik|NX 10|Digital in|NX-16DI|16",
        "Norvik|NX 10|Analog||",  // a type whose table has no module yet
        "Bare Co||||",            // a manufacturer with no series
        "Norvik|NX 20|Again|NX-8DI| 8 ",
        "Norvik|NX 20|Again|NX-16DI|16",
    };
    EXPECT_EQ(Describe(lib), expected);
    const auto& first = *lib.Entries()[0];
    EXPECT_EQ(first.moduleType, "DI");
    EXPECT_EQ(first.description, "8 inputs");
    EXPECT_EQ(first.rating, "24VDC");
    EXPECT_EQ(first.marker, 0);
    EXPECT_TRUE(first.terminals.empty());
    // Loading again replaces the list rather than adding to it.
    ASSERT_TRUE(lib.LoadLibrary());
    EXPECT_EQ(lib.Entries().size(), expected.size());
}

TEST_F(PlcLibTest, AMissingModuleTableIsReportedAndTheRestLoads) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SmallLibrary()));
    ASSERT_TRUE(lib.Execute("Drop table N_AI"));
    EXPECT_TRUE(lib.LoadLibrary());
    ASSERT_EQ(host_.messages.size(), 1u);
    EXPECT_EQ(host_.messages[0].text, "执行数据库操作时出错,错误信息:no such table: N_AI");
    EXPECT_EQ(lib.Entries().size(), 6u);
    EXPECT_EQ(lib.Entries()[2]->type, "Analog");
    EXPECT_EQ(lib.Entries()[3]->manufacturer, "Bare Co");
}

TEST_F(PlcLibTest, AnEmptyManufacturerTableIsAFailedLoad) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SmallLibrary()));
    ASSERT_TRUE(lib.LoadLibrary());
    ASSERT_TRUE(lib.Execute("DELETE * FROM PLC_MANUFACTURER"));
    EXPECT_FALSE(lib.LoadLibrary());
    EXPECT_TRUE(lib.Entries().empty());
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "Analog"), "");
    EXPECT_EQ(host_.MessageTexts().back(), "厂家表数据为空");
}

TEST_F(PlcLibTest, TerminalsComeInEngineOrderWithNullsAsEmptyText) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SmallLibrary()));
    CPlcPartData entry("Norvik", "NX 10", "Digital in");
    ASSERT_TRUE(lib.LoadTerminals("Norvik", "NX 10", "Digital in", "NX-8DI", entry));
    ASSERT_EQ(entry.terminals.size(), 3u);
    std::vector<std::string> sequences;
    for (const auto& row : entry.terminals) {
        sequences.push_back(row->sequence);
    }
    // The engine's order is the key's order here; what matters is that nothing re-sorts
    // or drops rows, and that the fields land in their members.
    EXPECT_EQ(sequences, (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(entry.terminals[0]->termValue, "0");
    EXPECT_EQ(entry.terminals[0]->termDesc, "I0.0");
    EXPECT_EQ(entry.terminals[0]->detailTermDesc, "first input");
    EXPECT_EQ(entry.terminals[2]->detailTermDesc, "");
    // The type is found with exact case: a differently cased type finds no table.
    CPlcPartData other;
    EXPECT_FALSE(lib.LoadTerminals("Norvik", "NX 10", "digital in", "NX-8DI", other));
    EXPECT_TRUE(other.terminals.empty());
}

TEST_F(PlcLibTest, TerminalLookupUsesTheKeyIndex) {
    plcdb::Connection db;
    std::string error;
    ASSERT_TRUE(db.Open(SmallLibrary(), error)) << error;
    const std::string plan = db.QueryPlan("Select * from N_DI_data where CODE='NX-8DI'", error);
    EXPECT_NE(plan.find("SEARCH"), std::string::npos) << plan;
    EXPECT_NE(plan.find("INDEX"), std::string::npos) << plan;
    EXPECT_EQ(plan.find("SCAN"), std::string::npos) << plan;
}

TEST_F(PlcLibTest, LookupsByManufacturerSeriesAndType) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SmallLibrary()));
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "Analog"), "N_AI");
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "Nothing"), "");
    EXPECT_EQ(lib.GetShortName("norvik"), "NVK");
    EXPECT_EQ(lib.GetShortName("Bare Co"), "");
    ASSERT_TRUE(lib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('Norvik','NX 10','X','n_di')"));
    std::vector<std::string> names{"stale"};
    ASSERT_TRUE(lib.GetTableNames("Norvik", "", names));
    // The row with blanks around its name is not found by the statement; n_di repeats N_DI.
    EXPECT_EQ(names, (std::vector<std::string>{"N_AI", "N_DI"}));
    ASSERT_TRUE(lib.GetTableNames("Norvik", "NX 20", names));
    EXPECT_EQ(names, (std::vector<std::string>{"N_DI"}));
    EXPECT_TRUE(
        lib.HasSeriesOrType("SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='Norvik'", 2));
    EXPECT_FALSE(
        lib.HasSeriesOrType("SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='Bare Co'", 3));
    EXPECT_FALSE(
        lib.HasSeriesOrType("SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='None'", 2));
}

TEST_F(PlcLibTest, RenameCodeMovesModuleAndTerminals) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SmallLibrary()));
    ASSERT_TRUE(lib.RenameCode("N_DI", "NX-8DI", "NX-8DI/2"));
    auto modules = lib.Query("Select * from N_DI where CODE='NX-8DI/2'");
    auto terms = lib.Query("Select * from N_DI_data where CODE='NX-8DI/2'");
    ASSERT_TRUE(modules && terms);
    EXPECT_EQ(modules->RowCount(), 1u);
    EXPECT_EQ(terms->RowCount(), 3u);
    // A code already taken: the first statement fails and the terminals stay put.
    EXPECT_FALSE(lib.RenameCode("N_DI", "NX-16DI", "nx-8di/2"));
    EXPECT_EQ(lib.Query("Select * from N_DI_data where CODE='NX-16DI'")->RowCount(), 1u);
}

TEST_F(PlcLibTest, ShiftSequencesUpAndDown) {
    std::vector<std::string> s = TypeTables("T");
    for (int i = 1; i <= 5; ++i) {
        s.push_back("INSERT INTO T_data VALUES ('K'," + std::to_string(i) + ",'v" +
                    std::to_string(i) + "','','')");
    }
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(MakeLibrary(s)));
    const auto values = [&] {
        std::vector<std::string> out;
        auto rows = lib.Query("Select * from T_data where CODE='K' ORDER BY SEQUENCE");
        for (size_t i = 0; rows && i < rows->RowCount(); ++i) {
            out.push_back(rows->Get(i, "SEQUENCE") + rows->Get(i, "TERMVALUE"));
        }
        return out;
    };
    ASSERT_TRUE(lib.ShiftSequences("T", "K", "3", 5, +1));
    EXPECT_EQ(values(), (std::vector<std::string>{"1v1", "2v2", "4v3", "5v4", "6v5"}));
    ASSERT_TRUE(lib.Execute("INSERT INTO T_data VALUES ('K',3,'new','','')"));
    ASSERT_TRUE(lib.Execute("DELETE * FROM T_data WHERE CODE='K' AND SEQUENCE=2"));
    ASSERT_TRUE(lib.ShiftSequences("T", "K", "2", 6, -1));
    EXPECT_EQ(values(), (std::vector<std::string>{"1v1", "2new", "3v3", "4v4", "5v5"}));
    EXPECT_FALSE(lib.ShiftSequences("T", "K", "1", 4, 2));
    EXPECT_TRUE(host_.messages.empty());
    // A missing table: the first statement fails and stops the run.
    EXPECT_FALSE(lib.ShiftSequences("None", "K", "1", 4, 1));
    EXPECT_EQ(host_.messages.size(), 1u);
}

TEST_F(PlcLibTest, AValueWithAQuoteIsRefusedAndNothingChanges) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SmallLibrary()));
    const std::string before = testing_support::ReadFile(lib.Path());
    CPlcPartData entry;
    EXPECT_FALSE(lib.LoadTerminals("Norvik", "NX 10", "Digital in", "NX'8DI", entry));
    EXPECT_FALSE(lib.RenameCode("N_DI", "NX-8DI", "NX'8"));
    EXPECT_FALSE(lib.ShiftSequences("N_DI", "NX-8DI' OR '1'='1", "1", 3, 1));
    std::vector<std::string> names;
    EXPECT_FALSE(lib.GetTableNames("Norvik' OR ''='", "", names));
    EXPECT_EQ(lib.GetShortName("O'Neil"), "");
    EXPECT_TRUE(names.empty());
    ASSERT_EQ(host_.messages.size(), 5u);
    for (const auto& text : host_.MessageTexts()) {
        EXPECT_EQ(text.rfind("执行数据库操作时出错,错误信息:", 0), 0u) << text;
        EXPECT_NE(text.find("single quote"), std::string::npos) << text;
    }
    EXPECT_EQ(testing_support::ReadFile(lib.Path()), before);
    EXPECT_TRUE(plcdb::CheckValues({"plain", "", "端子"}));
    EXPECT_FALSE(plcdb::CheckValues({"ok", "it's"}));
}

TEST_F(PlcLibTest, TableNamesFollowEveryStatementAndEveryLoad) {
    const auto path = SmallLibrary();
    CPlcLib lib, other;
    ASSERT_TRUE(lib.Open(path));
    ASSERT_TRUE(other.Open(path));
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "Analog"), "N_AI");
    // A statement of its own is seen at once, even a failed one leaves nothing stale.
    ASSERT_TRUE(lib.Execute("UPDATE PLC_MANUFACTURER SET TABLE_NAME='N_AI2' WHERE TYPE='Analog'"));
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "Analog"), "N_AI2");
    ASSERT_TRUE(
        lib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('Norvik','NX 10','New','N_NEW')"));
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "New"), "N_NEW");
    // Another connection's change is seen after the next load.
    ASSERT_TRUE(other.Execute("UPDATE PLC_MANUFACTURER SET TABLE_NAME='N_X' WHERE TYPE='New'"));
    lib.LoadLibrary();
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "New"), "N_X");
    // The first of two rows with the same three names gives the table.
    ASSERT_TRUE(lib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('Norvik','NX 10','New','N_Y')"));
    EXPECT_EQ(lib.GetTableName("Norvik", "NX 10", "New"), "N_X");
}

TEST_F(PlcLibTest, TwoInstancesOnOneFileEachSeeTheOthersChanges) {
    const auto path = SmallLibrary();
    CPlcLib editor, dialog;
    ASSERT_TRUE(editor.Open(path));
    ASSERT_TRUE(dialog.Open(path));
    ASSERT_TRUE(dialog.LoadLibrary());
    ASSERT_TRUE(editor.Execute("INSERT INTO N_AI VALUES ('NX-4AI','4','AI','4 inputs','0-10V')"));
    ASSERT_TRUE(dialog.LoadLibrary());
    ASSERT_TRUE(editor.LoadLibrary());
    EXPECT_EQ(Describe(dialog), Describe(editor));
    EXPECT_EQ(dialog.Entries()[2]->code, "NX-4AI");
    EXPECT_TRUE(editor.Close());
    EXPECT_TRUE(dialog.Execute("DELETE * FROM N_AI WHERE CODE='NX-4AI'"));
}

}  // namespace
}  // namespace plclib_test
