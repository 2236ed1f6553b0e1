// The import from another CAD's PLC database into a real scratch library. The source is a
// set of tables in memory behind the same interface the Access reader implements; the
// end-to-end tests with Access files live with the command line.
#include <gtest/gtest.h>

#include <map>

#include "EditorTestSupport.h"
#include "libedit/DlgDbImport.h"
#include "plclib/Engine.h"
#include "plclib/PlcLib.h"

namespace {

using plcdb::QueryResult;

class MemorySource : public plcdb::ITableSource {
public:
    std::map<std::string, QueryResult> tables;
    std::vector<std::string> TableNames() override {
        std::vector<std::string> names;
        for (const auto& entry : tables) {
            names.push_back(entry.first);
        }
        return names;
    }
    bool ReadTable(const std::string& name, QueryResult& out, std::string& error) override {
        for (const auto& entry : tables) {
            if (plcdb::EqualsIgnoreCase(entry.first, name)) {
                out = entry.second;
                return true;
            }
        }
        error = "no table " + name;
        return false;
    }
};

QueryResult Table(std::vector<std::string> columns, std::vector<std::vector<std::string>> rows) {
    QueryResult result;
    result.columns = std::move(columns);
    result.rows = std::move(rows);
    return result;
}

// Alpha's S1/DI (present in the library, with one new module) and a new maker with a type
// whose table name holds a "-".
MemorySource AceSource() {
    MemorySource source;
    source.tables["PLC_MANUFACTURER"] =
        Table({"MANUFACTURER", "SERIES", "TYPE", "TABLE_NAME"},
              {{"Alpha", "S1", "DI", "Alpha_S1_DI"}, {"Delta", "D9", "IO", "Delta-IO"}});
    source.tables["Alpha_S1_DI"] =
        Table({"CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"},
              {{"DI-16A", "99", "DI", "other points", ""}, {"DI-NEW", "4", "DI", "new", "24V"}});
    source.tables["Alpha_S1_DI_data"] =
        Table({"Code", "SEQUENCE", "ATTRIBUTES"}, {{"DI-NEW", "1", "TERM_=X1;TERMDESC_=Input 1;"},
                                                   {"DI-NEW", "2", "TERMDESC_=Common;TERM_=COM"},
                                                   {"DI-NEW", "3", ""}});
    source.tables["Delta-IO"] = Table({"CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"},
                                      {{"D-1", "2", "IO", "mixed", ""}});
    source.tables["Delta-IO_data"] =
        Table({"Code", "SEQUENCE", "ATTRIBUTES"}, {{"D-1", "1", "A=1;TERM_=Q0"}});
    return source;
}

class ImportTest : public ::testing::Test {
public:
    void SetUp() override {
        ASSERT_TRUE(lib.Open(env.LibraryPath().string()));
        source = AceSource();
    }

    // Runs OK on a fresh import dialog over `source`, answering the confirmation with OK.
    bool RunImport(const std::string& path = "/data/ACE_PLC.MDB", bool dryRun = false) {
        dlg = std::make_unique<CDlgDbImport>(lib);
        dlg->OnInitDialog();
        dlg->OnBrowse(path);
        dlg->dryRun = dryRun;
        dlg->pauseAfterDone = [] {};
        dlg->openSource = [this](const std::string& opened, std::string&) {
            openedPath = opened;
            return std::make_unique<MemorySource>(source);
        };
        dlg->progress.onChange = [this](const CDlgImportProgress& p) {
            progressLog.push_back(std::to_string(p.Lower()) + ".." + std::to_string(p.Upper()) +
                                  "@" + std::to_string(p.Pos()) + " " + p.Text());
        };
        env.host.messageAnswers.push_back(host::MsgResult::Ok);
        return dlg->OnOK();
    }

    QueryResult Db(const std::string& sql) {
        plcdb::Connection db;
        std::string error;
        EXPECT_TRUE(db.Open(env.LibraryPath().string(), error)) << error;
        auto rows = db.Query(sql, error);
        EXPECT_TRUE(rows.has_value()) << sql << ": " << error;
        return rows.value_or(QueryResult{});
    }

    std::vector<std::string> Column(const std::string& sql, const std::string& column) {
        QueryResult rows = Db(sql);
        std::vector<std::string> values;
        for (size_t row = 0; row < rows.RowCount(); ++row) {
            values.push_back(rows.Get(row, column));
        }
        return values;
    }

    dialog_test::DialogEnvironment env;
    CPlcLib lib;
    MemorySource source;
    std::unique_ptr<CDlgDbImport> dlg;
    std::string openedPath;
    std::vector<std::string> progressLog;
};

TEST(ImportAttributes, TermAndDescriptionUpToTheNextSemicolon) {
    EXPECT_EQ(libedit::AttributeValue("TERM_=X1;TERMDESC_=Input 1;", "TERM_="), "X1");
    EXPECT_EQ(libedit::AttributeValue("TERM_=X1;TERMDESC_=Input 1;", "TERMDESC_="), "Input 1");
    EXPECT_EQ(libedit::AttributeValue("A=1;TERM_=rest of it", "TERM_="), "rest of it");
    EXPECT_EQ(libedit::AttributeValue("A=1;", "TERMDESC_="), "");
    EXPECT_EQ(libedit::AttributeValue("", "TERM_="), "");
}

TEST_F(ImportTest, AnotherFileNameIsRefusedBeforeAnythingIsOpened) {
    EXPECT_FALSE(RunImport("/data/plc.mdb"));
    EXPECT_TRUE(openedPath.empty());
    ASSERT_EQ(env.host.MessageTexts().size(), 1u);
    EXPECT_EQ(env.host.MessageTexts()[0], "请正确选择源PLC元件数据库文件(QvPlc.mdb)！");
    EXPECT_EQ(env.host.messages[0].caption, "Zandrix 消息");
    EXPECT_TRUE(dlg->visible);
}

TEST_F(ImportTest, CancelledConfirmationOpensNothing) {
    dlg = std::make_unique<CDlgDbImport>(lib);
    dlg->OnInitDialog();
    EXPECT_EQ(dlg->sourcePath, "D:\\ZANDRIX_IEC\\PLC\\ace_plc.mdb");
    EXPECT_EQ(dlg->targetPath, env.LibraryPath().string());
    dlg->openSource = [this](const std::string& opened, std::string&) {
        openedPath = opened;
        return std::make_unique<MemorySource>(source);
    };
    EXPECT_FALSE(dlg->OnOK());  // the host answers Cancel
    EXPECT_EQ(env.host.MessageTexts(),
              std::vector<std::string>{"数据库导入需要一段时间，确定进行导入吗？"});
    EXPECT_TRUE(openedPath.empty());
}

TEST_F(ImportTest, AddsWhatIsMissingAndKeepsWhatIsThere) {
    ASSERT_TRUE(RunImport());
    EXPECT_EQ(openedPath, "/data/ACE_PLC.MDB");
    EXPECT_FALSE(dlg->visible);
    // The module present with other points keeps the library's values.
    EXPECT_NE(Column("Select POINTS from Alpha_S1_DI where CODE='DI-16A'", "POINTS"),
              std::vector<std::string>{"99"});
    EXPECT_EQ(Column("Select DESCRIPTION from Alpha_S1_DI where CODE='DI-NEW'", "DESCRIPTION"),
              std::vector<std::string>{"new"});
    EXPECT_EQ(Column("Select TermValue from Alpha_S1_DI_data where CODE='DI-NEW' order by "
                     "SEQUENCE",
                     "TermValue"),
              (std::vector<std::string>{"X1", "COM", ""}));
    EXPECT_EQ(Column("Select TERMDESC from Alpha_S1_DI_data where CODE='DI-NEW' order by "
                     "SEQUENCE",
                     "TERMDESC"),
              (std::vector<std::string>{"Input 1", "Common", ""}));
    // The new type keeps the source's spelling; its tables take the "_" one.
    EXPECT_EQ(
        Column("Select TABLE_NAME from PLC_MANUFACTURER where MANUFACTURER='Delta'", "TABLE_NAME"),
        std::vector<std::string>{"Delta-IO"});
    EXPECT_EQ(Column("Select TermValue from Delta_IO_data", "TermValue"),
              std::vector<std::string>{"Q0"});
    EXPECT_EQ(Column("Select MFG from MANUFACTURER_Simple where MANUFACTURER='Delta'", "MFG"),
              std::vector<std::string>{""});
    // Report.
    const libedit::ImportReport& report = dlg->report;
    EXPECT_EQ(report.manufacturers, std::vector<std::string>{"Delta"});
    EXPECT_EQ(report.tables, std::vector<std::string>{"Delta_IO"});
    EXPECT_EQ(report.modules, (std::vector<std::string>{"Alpha_S1_DI: DI-NEW", "Delta_IO: D-1"}));
    EXPECT_EQ(report.terminalRows, 4);
    ASSERT_EQ(report.skipped.size(), 2u);
    EXPECT_NE(report.skipped[1].find("DI-16A: present with other values"), std::string::npos);
    // Progress: range over the two type rows, then the closing text and the close.
    ASSERT_GE(progressLog.size(), 3u);
    EXPECT_EQ(progressLog[progressLog.size() - 2], "0..2@2 导入完成!");
    EXPECT_FALSE(dlg->progress.Visible());
    EXPECT_TRUE(env.host.MessageTexts().size() == 1u);  // the confirmation only
}

TEST_F(ImportTest, SecondImportAddsOnlyTheDashTypeRowAgain) {
    ASSERT_TRUE(RunImport());
    const size_t modules = Db("Select * from Alpha_S1_DI").RowCount();
    ASSERT_TRUE(RunImport());
    EXPECT_TRUE(dlg->report.modules.empty());
    EXPECT_TRUE(dlg->report.tables.empty());
    EXPECT_EQ(dlg->report.terminalRows, 0);
    EXPECT_EQ(dlg->report.terminalRowsPresent, 4);
    EXPECT_EQ(dlg->report.types, std::vector<std::string>{"Delta / D9 / IO (Delta-IO)"});
    EXPECT_EQ(Db("Select * from PLC_MANUFACTURER where MANUFACTURER='Delta'").RowCount(), 2u);
    EXPECT_EQ(Db("Select * from MANUFACTURER_Simple where MANUFACTURER='Delta'").RowCount(), 1u);
    EXPECT_EQ(Db("Select * from Alpha_S1_DI").RowCount(), modules);
}

TEST_F(ImportTest, DryRunReportsTheRealImportAndChangesNothing) {
    const size_t types = Db("Select * from PLC_MANUFACTURER").RowCount();
    ASSERT_TRUE(RunImport("/x/ace_plc.mdb", true));
    const std::string planned = libedit::FormatReport(dlg->report, false);
    EXPECT_EQ(Db("Select * from PLC_MANUFACTURER").RowCount(), types);
    EXPECT_EQ(Db("Select * from Alpha_S1_DI where CODE='DI-NEW'").RowCount(), 0u);
    ASSERT_TRUE(RunImport("/x/ace_plc.mdb"));
    EXPECT_EQ(libedit::FormatReport(dlg->report, false), planned);
    EXPECT_NE(planned.find("added 4 terminal rows"), std::string::npos);
}

TEST_F(ImportTest, EmptyOrMalformedTypeTableIsReportedAndNothingChanges) {
    source.tables["PLC_MANUFACTURER"].rows.clear();
    EXPECT_FALSE(RunImport());
    EXPECT_EQ(env.host.MessageTexts().back(), "数据库ace_plc.mdb中的PLC_MANUFACTURER表为空!");
    EXPECT_TRUE(dlg->visible);

    source = AceSource();
    source.tables["PLC_MANUFACTURER"].columns[3] = "TABLENAME";
    EXPECT_FALSE(RunImport());
    EXPECT_EQ(env.host.MessageTexts().back(), "导入数据库中数据库连接出现错误!");
    EXPECT_NE(env.host.AllPrinted().find("ACE_PLC.MDB: PLC_MANUFACTURER has no column TABLE_NAME"),
              std::string::npos);
    EXPECT_EQ(Db("Select * from PLC_MANUFACTURER where MANUFACTURER='Delta'").RowCount(), 0u);
    EXPECT_TRUE(lib.LoadLibrary());  // still usable
}

TEST_F(ImportTest, MissingModuleTableEndsTheImportAndKeepsEarlierRows) {
    source.tables.erase("Delta-IO_data");
    EXPECT_FALSE(RunImport());
    EXPECT_EQ(env.host.MessageTexts().back(), "打开数据库ace_plc.mdb中的表Delta-IO_data 出现错误!");
    EXPECT_TRUE(dlg->visible);
    EXPECT_FALSE(dlg->progress.Visible());
    // No transaction: the rows written before the failure stay.
    EXPECT_EQ(Db("Select * from Alpha_S1_DI where CODE='DI-NEW'").RowCount(), 1u);
    EXPECT_EQ(Db("Select * from Delta_IO").RowCount(), 1u);
}

TEST_F(ImportTest, QuotesOverLongValuesAndBadSequencesAreSkippedWithTheirReason) {
    auto& modules = source.tables["Alpha_S1_DI"].rows;
    modules.push_back({"O'Brien", "1", "", "", ""});
    modules.push_back({std::string(61, 'x'), "1", "", "", ""});
    modules.push_back({"长" + std::string(59, 'y'), "1", "", "", ""});  // 60 characters fit
    source.tables["Alpha_S1_DI_data"].rows.push_back({"DI-NEW", "4a", "TERM_=X4"});
    ASSERT_TRUE(RunImport());
    const auto& skipped = dlg->report.skipped;
    auto has = [&](const std::string& text) {
        for (const std::string& line : skipped) {
            if (line.find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(has("holds a quote"));
    EXPECT_TRUE(has("is longer than 60 characters"));
    EXPECT_TRUE(has("sequence \"4a\" is not a number"));
    EXPECT_EQ(Db("Select * from Alpha_S1_DI where CODE like '长%'").RowCount(), 1u);
    EXPECT_EQ(Db("Select * from Alpha_S1_DI_data where CODE='DI-NEW'").RowCount(), 3u);
}

}  // namespace

namespace {

using ImportEditorTest = libedit_test::EditorTest;

TEST_F(ImportEditorTest, ImportButtonRunsTheImportOverTheEditorsLibraryAndReloads) {
    dlg = OpenEditor();
    MemorySource ace = AceSource();
    std::string shownSource;
    libedit::WireImport(*dlg, [&](CDlgDbImport& import) {
        shownSource = import.sourcePath;
        import.OnBrowse("/media/ace_plc.mdb");
        import.pauseAfterDone = []{};
        import.openSource = [&](const std::string&, std::string&) {
            return std::make_unique<MemorySource>(ace);
        };
        env.host.messageAnswers.push_back(host::MsgResult::Ok);
        return import.OnOK();
});
ASSERT_EQ(dlg->FindPath({"Delta"}), nullptr);
dlg->OnImport();
EXPECT_EQ(shownSource, "D:\\ZANDRIX_IEC\\PLC\\ace_plc.mdb");
EXPECT_NE(dlg->FindPath({"Delta", "D9", "IO"}), nullptr);
EXPECT_NE(dlg->FindPath({"Alpha", "S1", "DI", "DI-NEW"}), nullptr);
}

}  // namespace
