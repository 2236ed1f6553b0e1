// The cases where the library's shape makes an operation do something other than the
// obvious: placeholder rows, table names, renamed types, the last series or type of their
// parent, renumbered terminal rows, values holding a quote, and the remembered selection.
#include <filesystem>

#include "EditorTestSupport.h"
#include "draw/DlgPlcRendal.h"
#include "files/TextFile.h"

using namespace libedit;

namespace libedit_test {
namespace {

using Texts = std::vector<std::string>;

int CountEntries(const CDlgPlcDataLibEdit& dlg, const std::string& m, const std::string& s,
                 const std::string& t) {
    int count = 0;
    for (const auto& entry : dlg.plcLib.Entries()) {
        count += entry->manufacturer == m && entry->series == s && entry->type == t;
    }
    return count;
}

bool Contains(const Texts& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

TEST_F(EditorTest, FirstSeriesFillsThePlaceholderEntryInMemoryToo) {
    ASSERT_EQ(CountEntries(*dlg, "Gamma", "", ""), 1);
    ASSERT_TRUE(NewSeries("Gamma", "G1"));
    EXPECT_EQ(CountEntries(*dlg, "Gamma", "", ""), 0);
    EXPECT_EQ(CountEntries(*dlg, "Gamma", "G1", ""), 1);
    EXPECT_EQ(dlg->tree.Selected()->text, "G1");
    EXPECT_EQ(dlg->tree.Selected()->image, dialog::kImageSeries);
}

TEST_F(EditorTest, TypeNameWithBlankAndDashGivesUnderscoredTables) {
    ASSERT_TRUE(NewManufacturer("X"));
    ASSERT_TRUE(NewSeries("X", "Y"));
    ASSERT_TRUE(NewType("X/Y", "S7-300 A"));
    EXPECT_TRUE(Contains(DbTypeRows(), "X|Y|S7-300 A|X_Y_S7_300_A"));
    EXPECT_TRUE(Db("SELECT * FROM X_Y_S7_300_A").Empty());
    EXPECT_TRUE(Db("SELECT * FROM X_Y_S7_300_A_data").Empty());
    // The new type takes modules and terminal rows at once.
    ASSERT_TRUE(NewModule("X/Y/S7-300 A", "CPU1"));
    Select("X/Y/S7-300 A/CPU1");
    ASSERT_TRUE(AppendTerm("L+"));
    EXPECT_EQ(DbTerms("X_Y_S7_300_A", "CPU1"), (Texts{"1:L+"}));
}

TEST_F(EditorTest, RenamedTypeKeepsItsTableSoTheOldNameCollidesLater) {
    ASSERT_TRUE(Rename("Alpha/S1/DO", "DQ"));
    EXPECT_TRUE(Contains(DbTypeRows(), "Alpha|S1|DQ|Alpha_S1_DO"));
    ClearLog();
    env.host.messages.clear();
    // The row is added, but its tables exist already: both creations fail and are shown.
    EXPECT_TRUE(NewType("Alpha/S1", "DO"));
    EXPECT_TRUE(Contains(DbTypeRows(), "Alpha|S1|DO|Alpha_S1_DO"));
    int failedCreates = 0;
    for (const auto& entry : log) {
        failedCreates +=
            entry.statement.rfind("Create TABLE Alpha_S1_DO", 0) == 0 && !entry.succeeded;
    }
    EXPECT_EQ(failedCreates, 2);
    ASSERT_FALSE(env.host.messages.empty());
    EXPECT_EQ(env.host.messages[0].text.rfind("执行数据库操作时出错,错误信息:", 0), 0u);
}

TEST_F(EditorTest, DeletingTheOnlySeriesKeepsTheManufacturer) {
    ASSERT_TRUE(NewSeries("Gamma", "G1"));
    Select("Gamma/G1");
    ASSERT_TRUE(Confirmed(kCmdDeleteSeries));
    EXPECT_TRUE(Contains(DbTypeRows(), "Gamma|||"));
    EXPECT_EQ(CountEntries(*dlg, "Gamma", "", ""), 1);
    dialog::TreeNode* gamma = dlg->FindPath({"Gamma"});
    ASSERT_NE(gamma, nullptr);
    EXPECT_TRUE(gamma->children.empty());
    EXPECT_EQ(dlg->tree.Selected(), gamma);
}

TEST_F(EditorTest, DeletingTheOnlySeriesWithTwoTypesRecreatesThePlaceholder) {
    ASSERT_TRUE(NewManufacturer("Z"));
    ASSERT_TRUE(NewSeries("Z", "Y"));
    ASSERT_TRUE(NewType("Z/Y", "T1"));
    ASSERT_TRUE(NewType("Z/Y", "T2"));
    Select("Z/Y");
    ClearLog();
    ASSERT_TRUE(Confirmed(kCmdDeleteSeries));
    EXPECT_EQ(Changes().back(), "INSERT INTO PLC_MANUFACTURER VALUES('Z','','','')");
    Texts zRows;
    for (const auto& row : DbTypeRows()) {
        if (row.rfind("Z|", 0) == 0) {
            zRows.push_back(row);
        }
    }
    EXPECT_EQ(zRows, (Texts{"Z|||"}));
    EXPECT_EQ(CountEntries(*dlg, "Z", "", ""), 1);
}

TEST_F(EditorTest, DeletingTheOnlyTypeKeepsTheSeries) {
    Select("Beta/B1/MIX");
    ASSERT_TRUE(Confirmed(kCmdDeleteType));
    EXPECT_TRUE(Contains(DbTypeRows(), "Beta|B1||"));
    EXPECT_EQ(CountEntries(*dlg, "Beta", "B1", ""), 1);
    EXPECT_EQ(CountEntries(*dlg, "Beta", "B1", "MIX"), 0);
    dialog::TreeNode* series = dlg->FindPath({"Beta", "B1"});
    ASSERT_NE(series, nullptr);
    EXPECT_TRUE(series->children.empty());
    EXPECT_TRUE(Db("SELECT name FROM sqlite_master WHERE name='Beta_B1_MIX'").Empty());
}

TEST_F(EditorTest, DeletingTheLastModuleLeavesTheTypeEntry) {
    Select("Beta/B1/MIX/MX-01X");
    ASSERT_TRUE(Confirmed(kCmdDeleteModule));
    EXPECT_EQ(CountEntries(*dlg, "Beta", "B1", "MIX"), 1);
    EXPECT_EQ(dlg->tree.Selected(), dlg->FindPath({"Beta", "B1", "MIX"}));
    EXPECT_EQ(dlg->moduleList.Count(), 0);
}

TEST_F(EditorTest, InsertBeforeRowOneRenumbersEveryRow) {
    Select("Alpha/S1/DI/DI-32B");
    ASSERT_EQ(ListTerms(), (Texts{"1:11", "2:12", "3:13"}));
    ASSERT_TRUE(InsertTermBefore("1", "N"));
    const Texts expected{"1:N", "2:11", "3:12", "4:13"};
    EXPECT_EQ(DbTerms("Alpha_S1_DI", "DI-32B"), expected);
    EXPECT_EQ(ListTerms(), expected);
    EXPECT_EQ(dlg->termList.SelectedRows(), (std::vector<int>{0}));
    const CPlcPartData* module = dlg->CurrentModule();
    ASSERT_NE(module, nullptr);
    Texts held;
    for (const auto& row : module->terminals) {
        held.push_back(row->sequence + ":" + row->termValue);
    }
    EXPECT_EQ(held, expected);
}

TEST_F(EditorTest, DeletingRowsTwoAndThreeOfFiveLeavesOneToThree) {
    ASSERT_TRUE(NewModule("Alpha/S1/DI", "M5"));
    dlg->SelectModuleRow(dlg->moduleList.Count() - 1);
    for (const char* value : {"a", "b", "c", "d", "e"}) {
        ASSERT_TRUE(AppendTerm(value));
    }
    ASSERT_TRUE(DeleteTerms({"2", "3"}));
    EXPECT_EQ(env.host.messages.back().text, "确定要删除所选的2条端点信息吗？");
    const Texts expected{"1:a", "2:d", "3:e"};
    EXPECT_EQ(DbTerms("Alpha_S1_DI", "M5"), expected);
    EXPECT_EQ(ListTerms(), expected);
}

TEST_F(EditorTest, DeletedRowsStayDeletedWhenALaterOneFails) {
    Select("Alpha/S1/DI/DI-16A");
    dlg->SelectTermRows({1, 3});  // sequences 2 and 4 of 7
    env.host.messageAnswers.push_back(host::MsgResult::Ok);
    // After the second delete another program takes the free sequence, so the shift that
    // follows meets it and fails.
    int deletes = 0;
    dlg->plcLib.SetStatementObserver([&](const std::string& statement, bool) {
        if (statement.rfind("DELETE", 0) == 0 && ++deletes == 2) {
            std::string error;
            plcdb::Connection other;
            ASSERT_TRUE(other.Open(env.LibraryPath().string(), error));
            ASSERT_TRUE(
                other.Execute("INSERT INTO Alpha_S1_DI_data VALUES ('DI-16A',3,'X','','')", error));
            other.Close(error);
        }
    });
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdDeleteTerms));
    EXPECT_EQ(deletes, 2);
    const Texts rows = DbTerms("Alpha_S1_DI", "DI-16A");
    EXPECT_FALSE(Contains(rows, "2:12"));
    for (const auto& row : rows) {
        EXPECT_NE(row.substr(row.find(':')), ":12") << "the first deleted row came back";
        EXPECT_NE(row.substr(row.find(':')), ":14") << "the second deleted row came back";
    }
    EXPECT_EQ(dlg->termList.Count(), 5);
    EXPECT_EQ(dlg->termList.SelectedCount(), 0);
}

TEST_F(EditorTest, ValuesHoldingAQuoteAreRefusedWithNothingChanged) {
    const auto dump = [&] {
        Texts all = DbTypeRows();
        for (const auto& row : Db("SELECT name FROM sqlite_master WHERE type='table'").rows) {
            for (const auto& data : Db("SELECT * FROM " + row[0]).rows) {
                std::string line = row[0];
                for (const auto& field : data) {
                    line += "|" + field;
                }
                all.push_back(line);
            }
        }
        return all;
    };
    const Texts before = dump();
    const size_t entriesBefore = dlg->plcLib.Entries().size();
    const std::string quoted = "O'Neil";
    const auto refused = [&](const char* what, bool result) {
        EXPECT_FALSE(result) << what;
        EXPECT_TRUE(Changes().empty()) << what << ": " << Changes().front();
        ASSERT_FALSE(env.host.messages.empty()) << what;
        EXPECT_EQ(env.host.messages.back().text.rfind("执行数据库操作时出错,错误信息:", 0), 0u)
            << what << ": " << env.host.messages.back().text;
        ClearLog();
    };
    refused("manufacturer", NewManufacturer(quoted, "s"));
    refused("short name of a new manufacturer", NewManufacturer("New", quoted));
    refused("series", NewSeries("Gamma", quoted));
    refused("type", NewType("Beta/B2", quoted));
    refused("module code", NewModule("Alpha/S1/DI", quoted));
    refused("module description", NewModule("Alpha/S1/DI", "OK-1", "8", quoted));
    refused("manufacturer rename", Rename("Beta", quoted));
    refused("series rename", Rename("Alpha/S2", quoted));
    refused("type rename", Rename("Alpha/S2/AI", quoted));
    refused("module rename", Rename("Alpha/S2/AI/AI-08", quoted));
    Select("Alpha");
    dlg->newManufacturerRunner =
        FillAndOk<CDlgNewManufacturer>([&](auto& d) { d.shortName = quoted; });
    refused("short name", dlg->OnMenuCommand(kCmdChangeShortName));
    Select("Alpha/S1/DI/DI-32B");
    ClearLog();
    dlg->changeModuleRunner = FillAndOk<CDlgChangeModule>([&](auto& d) { d.rating = quoted; });
    dlg->SelectModuleRow(0);
    refused("module parameters", dlg->OnMenuCommand(kCmdChangeModule));
    refused("appended terminal", AppendTerm("1", quoted));
    refused("inserted terminal", InsertTermBefore("2", quoted));
    dlg->SelectTermRows({0});
    dlg->changeTermDataRunner =
        FillAndOk<CDlgChangeTermData>([&](auto& d) { d.detailTermDesc = quoted; });
    refused("changed terminal", dlg->OnMenuCommand(kCmdChangeTerm));

    EXPECT_EQ(dump(), before);
    EXPECT_EQ(dlg->plcLib.Entries().size(), entriesBefore);
    EXPECT_NE(dlg->FindPath({"Beta"}), nullptr);
    EXPECT_NE(dlg->FindPath({"Alpha", "S2", "AI", "AI-08"}), nullptr);
    EXPECT_FALSE(std::filesystem::exists(env.LocalDir() / "PLC" / "QvPLC.tim"));
}

TEST_F(EditorTest, RenameChangesMemoryEvenWhenItsStatementFails) {
    // A name longer than the column allows: the engine refuses the statement, and the
    // names in memory, changed first, stay changed.
    const std::string tooLong(61, 'n');
    EXPECT_FALSE(Rename("Alpha/S2", tooLong));
    EXPECT_EQ(CountEntries(*dlg, "Alpha", tooLong, "AI"), 2);
    EXPECT_NE(dlg->FindPath({"Alpha", tooLong}), nullptr);
    EXPECT_TRUE(Contains(DbTypeRows(), "Alpha|S2|AI|Alpha_S2_AI"));
    // A module rename changes memory only after its statements succeeded.
    EXPECT_FALSE(Rename("Alpha/S1/DI/DI-16A", "DI-32B"));
    EXPECT_NE(dlg->FindPath({"Alpha", "S1", "DI", "DI-16A"}), nullptr);
    EXPECT_EQ(Db("SELECT * FROM Alpha_S1_DI WHERE CODE='DI-16A'").RowCount(), 1u);
}

TEST_F(EditorTest, SecondInsertOfANewManufacturerRunsEvenWhenTheFirstFails) {
    const std::string tooLong(61, 'm');
    ClearLog();
    EXPECT_FALSE(NewManufacturer(tooLong, "S"));
    ASSERT_EQ(log.size(), 2u);
    EXPECT_FALSE(log[0].succeeded);
    EXPECT_EQ(log[1].statement, "INSERT INTO MANUFACTURER_simple VALUES ('" + tooLong + "','S')");
    EXPECT_EQ(dlg->FindPath({tooLong}), nullptr);
}

// --- the remembered selection ---------------------------------------------------------

void WriteSelection(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    ASSERT_TRUE(files::WriteWhole(path.string(), text));
}

TEST_F(EditorTest, ReselectsTheRememberedModule) {
    WriteSelection(env.LastSelectionFile(), "Alpha\nS1\nDI\nDI-32B\n");
    dlg->Refresh();
    const dialog::TreeNode* node = dlg->tree.Selected();
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->text, "DI-32B");
    EXPECT_EQ(node->image, dialog::kImageModule);
    EXPECT_TRUE(node->parent->expanded);
    EXPECT_EQ(dlg->moduleList.Count(), 1);
    EXPECT_EQ(ListTerms(), (Texts{"1:11", "2:12", "3:13"}));
    EXPECT_EQ(dlg->statusText, "厂家:Alpha 系列:S1 系列类型:DI 模块代码:DI-32B");
}

TEST_F(EditorTest, AMissingNameEndsTheDescentAtTheLevelAbove) {
    WriteSelection(env.LastSelectionFile(), "alpha\nS1\nGone\nDI-32B\n");
    dlg->Refresh();
    ASSERT_NE(dlg->tree.Selected(), nullptr);
    EXPECT_EQ(dlg->tree.Selected(), dlg->FindPath({"Alpha", "S1"}));
    EXPECT_TRUE(dlg->tree.Selected()->expanded);

    WriteSelection(env.LastSelectionFile(), "Alpha\n\nDI\n\n");
    dlg->Refresh();
    EXPECT_EQ(dlg->tree.Selected(), dlg->FindPath({"Alpha"}));

    WriteSelection(env.LastSelectionFile(), "Nobody\nS1\nDI\nDI-32B\n");
    dlg->Refresh();
    EXPECT_EQ(dlg->tree.Selected(), nullptr);
    EXPECT_TRUE(dlg->tree.Root()->expanded);

    WriteSelection(env.LastSelectionFile(), "Alpha\nS1\nDI\nGone\n");
    dlg->Refresh();
    EXPECT_EQ(dlg->tree.Selected(), dlg->FindPath({"Alpha", "S1", "DI"}));
    EXPECT_EQ(dlg->moduleList.Count(), 2);
}

TEST_F(EditorTest, ClosingWritesTheSelectionWhole) {
    Select("Alpha/S1/DI");
    dlg->SelectModuleRow(1);
    CDlgPlcDataLibEdit* closed = nullptr;
    dlg->onClosed = [&](CDlgPlcDataLibEdit* d) { closed = d; };
    dlg->OnClose();
    EXPECT_EQ(closed, dlg.get());
    EXPECT_FALSE(dlg->plcLib.IsOpen());
    EXPECT_FALSE(dlg->windowCreated);
    EXPECT_EQ(testing_support::ReadFile(env.LastSelectionFile()), "Alpha\nS1\nDI\nDI-32B\n");
    // The drawing dialog reads the same file and picks the same module.
    auto drawing = env.OpenDialog();
    EXPECT_EQ(drawing->manufacturerInfo.code, "DI-32B");
}

}  // namespace
}  // namespace libedit_test
