// The statements each editor operation runs, checked text for text and in order against the
// library's statement log. The sample library holds Alpha/S1/DI (Alpha_S1_DI), Alpha/S1/DO,
// Alpha/S2/AI, Beta/B1/MIX, Beta/B2 without a type and Gamma without a series.
#include "EditorTestSupport.h"

using namespace libedit;

namespace libedit_test {
namespace {

using Texts = std::vector<std::string>;

const std::string kCreateModules =
    "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),RATING "
    "CHAR(60),primary key(CODE))";
const std::string kCreateTerms =
    "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),TERMDESC "
    "CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))";

TEST_F(EditorTest, NewManufacturerAndItsShortName) {
    ASSERT_TRUE(NewManufacturer("Delta", "DLT"));
    EXPECT_EQ(Changes(), (Texts{"INSERT INTO PLC_MANUFACTURER VALUES ('Delta','','','')",
                                "INSERT INTO MANUFACTURER_simple VALUES ('Delta','DLT')"}));
    ClearLog();
    Select("Alpha");
    dlg->newManufacturerRunner = FillAndOk<CDlgNewManufacturer>([](auto& d) {
        EXPECT_EQ(d.caption, "修改厂家简称");
        EXPECT_EQ(d.fullName, "Alpha");
        EXPECT_EQ(d.shortName, "ALP");
        d.shortName = "AL2";
    });
    ClearLog();
    ASSERT_TRUE(dlg->OnMenuCommand(kCmdChangeShortName));
    EXPECT_EQ(Changes(),
              (Texts{"UPDATE MANUFACTURER_simple SET MFG='AL2' WHERE MANUFACTURER='Alpha'"}));
    EXPECT_EQ(dlg->statusText, "厂家名:Alpha 厂家简称:AL2");
}

TEST_F(EditorTest, NewSeriesFillsThePlaceholderThenAddsRows) {
    ASSERT_TRUE(NewSeries("Gamma", "G1"));
    ASSERT_TRUE(NewSeries("Gamma", "G2"));
    EXPECT_EQ(Statements(),
              (Texts{"SELECT * FROM MANUFACTURER_Simple WHERE MANUFACTURER='Gamma'",
                     "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='Gamma'",
                     "UPDATE PLC_MANUFACTURER SET SERIES='G1' WHERE TYPE='' AND SERIES='' AND "
                     "MANUFACTURER='Gamma'",
                     "SELECT * FROM MANUFACTURER_Simple WHERE MANUFACTURER='Gamma'",
                     "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='Gamma'",
                     "INSERT INTO PLC_MANUFACTURER VALUES ('Gamma','G2','','')"}));
    const Texts rows = DbTypeRows();
    EXPECT_EQ(std::count(rows.begin(), rows.end(), "Gamma|G1||"), 1);
    EXPECT_EQ(std::count(rows.begin(), rows.end(), "Gamma|G2||"), 1);
    EXPECT_EQ(std::count(rows.begin(), rows.end(), "Gamma|||"), 0);
}

TEST_F(EditorTest, NewTypeFillsTheSeriesPlaceholderAndMakesItsTables) {
    ASSERT_TRUE(NewType("Beta/B2", "S7-300 A"));
    EXPECT_EQ(Changes(),
              (Texts{"UPDATE PLC_MANUFACTURER SET TYPE='S7-300 A',TABLE_NAME='Beta_B2_S7_300_A' "
                     "WHERE TYPE='' AND SERIES='B2' AND MANUFACTURER='Beta'",
                     "Create TABLE Beta_B2_S7_300_A" + kCreateModules,
                     "Create TABLE Beta_B2_S7_300_A" + kCreateTerms}));
    EXPECT_EQ(Statements()[0],
              "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='Beta' AND SERIES='B2'");
    ClearLog();
    ASSERT_TRUE(NewType("Beta/B2", "T2"));
    EXPECT_EQ(Changes()[0], "INSERT INTO PLC_MANUFACTURER VALUES ('Beta','B2','T2','Beta_B2_T2')");
}

TEST_F(EditorTest, NewModuleAsksForItsCodeFirst) {
    ASSERT_TRUE(NewModule("Alpha/S1/DI", "DI-99", "8", "desc"));
    const Texts all = Statements();
    ASSERT_GE(all.size(), 2u);
    EXPECT_EQ(all[all.size() - 2], "SELECT * FROM Alpha_S1_DI WHERE CODE ='DI-99'");
    EXPECT_EQ(all.back(), "INSERT INTO Alpha_S1_DI VALUES ('DI-99','8','DI','desc','24V')");
    EXPECT_EQ(Db("SELECT * FROM Alpha_S1_DI WHERE CODE='DI-99'").RowCount(), 1u);
}

TEST_F(EditorTest, RenamesOfEachLevel) {
    ASSERT_TRUE(Rename("Beta", "Bravo"));
    EXPECT_EQ(Changes(),
              (Texts{"UPDATE PLC_MANUFACTURER SET MANUFACTURER='Bravo' WHERE MANUFACTURER ='Beta'",
                     "UPDATE MANUFACTURER_simple SET MANUFACTURER='Bravo' WHERE MANUFACTURER "
                     "='Beta'"}));
    ClearLog();
    ASSERT_TRUE(Rename("Alpha/S2", "S3"));
    EXPECT_EQ(Changes(), (Texts{"UPDATE PLC_MANUFACTURER SET SERIES='S3' WHERE SERIES ='S2' AND "
                                "MANUFACTURER='Alpha'"}));
    ClearLog();
    ASSERT_TRUE(Rename("Alpha/S1/DO", "DQ"));
    EXPECT_EQ(Changes(), (Texts{"UPDATE PLC_MANUFACTURER SET TYPE='DQ' WHERE TYPE='DO' AND "
                                "SERIES='S1' AND MANUFACTURER='Alpha'"}));
    ClearLog();
    ASSERT_TRUE(Rename("Alpha/S1/DQ/DO-16", "DO-17"));
    EXPECT_EQ(Changes(), (Texts{"UPDATE Alpha_S1_DO SET CODE='DO-17' WHERE CODE='DO-16'",
                                "UPDATE Alpha_S1_DO_data SET CODE='DO-17' WHERE CODE='DO-16'"}));
    EXPECT_EQ(Db("SELECT * FROM Alpha_S1_DO_data WHERE CODE='DO-17'").RowCount(), 2u);
}

TEST_F(EditorTest, DeleteManufacturerDropsItsTablesInBrackets) {
    Select("Alpha");
    ASSERT_TRUE(Confirmed(kCmdDeleteManufacturer));
    EXPECT_EQ(env.host.messages.back().text,
              "这将删除厂家 Alpha 数据库中的所有数据!\n\n确实要执行此操作 ?");
    EXPECT_EQ(env.host.messages.back().caption, "Zandrix 消息");
    EXPECT_EQ(env.host.messages.back().icon, host::MsgIcon::Question);
    EXPECT_EQ(Changes(), (Texts{"DELETE * FROM MANUFACTURER_Simple WHERE MANUFACTURER='Alpha'",
                                "DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Alpha'",
                                "Drop table [Alpha_S1_DI_data]", "Drop table [Alpha_S1_DI]",
                                "Drop table [Alpha_S1_DO_data]", "Drop table [Alpha_S1_DO]",
                                "Drop table [Alpha_S2_AI_data]", "Drop table [Alpha_S2_AI]"}));
}

TEST_F(EditorTest, DeleteSeriesDropsBareNamesThenDeletesItsRows) {
    Select("Alpha/S1");
    ASSERT_TRUE(Confirmed(kCmdDeleteSeries));
    EXPECT_EQ(env.host.messages.back().text,
              "这将删除厂家为 Alpha,系列为 S1 的数据库中的所有模块!\n\n确实要执行此操作 ?");
    const Texts all = Statements();
    const auto first = std::find(all.begin(), all.end(), "Drop table Alpha_S1_DI");
    ASSERT_NE(first, all.end());
    // After them the manufacturer is selected again, which reads its short name.
    const Texts tail(first, std::min(all.end(), first + 7));
    EXPECT_EQ(tail, (Texts{"Drop table Alpha_S1_DI", "Drop table Alpha_S1_DI_data",
                           "Drop table Alpha_S1_DO", "Drop table Alpha_S1_DO_data",
                           "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Alpha'",
                           "DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Alpha' AND "
                           "SERIES='S1'",
                           "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Alpha'"}));
}

TEST_F(EditorTest, DeleteTypeOfASeriesWithOneTypeKeepsItsRow) {
    Select("Alpha/S2/AI");
    ASSERT_TRUE(Confirmed(kCmdDeleteType));
    EXPECT_EQ(
        env.host.messages.back().text,
        "这将删除厂家为 Alpha ,系列为 S2 ,类型为 AI 的数据库中的所有模块!\n\n确实要执行此操作 ?");
    const Texts all = Statements();
    const Texts tail(all.end() - 4, all.end());
    EXPECT_EQ(tail, (Texts{"Drop table Alpha_S2_AI", "Drop table Alpha_S2_AI_data",
                           "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Alpha' AND "
                           "SERIES='S2'",
                           "UPDATE PLC_MANUFACTURER SET TYPE='',TABLE_NAME='' WHERE "
                           "MANUFACTURER='Alpha' AND SERIES='S2'"}));
    ClearLog();
    Select("Alpha/S1/DO");
    ASSERT_TRUE(Confirmed(kCmdDeleteType));
    EXPECT_EQ(Changes().back(),
              "DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Alpha' AND "
              "SERIES='S1' AND TYPE='DO'");
}

TEST_F(EditorTest, DeleteModuleDeletesItsRowThenItsTerminals) {
    Select("Alpha/S1/DI/DI-32B");
    ClearLog();
    ASSERT_TRUE(Confirmed(kCmdDeleteModule));
    EXPECT_EQ(env.host.messages.back().text,
              "这将删除厂家为 Alpha ,系列为 S1 ,类型为 DI ,模块号为 DI-32B "
              "的数据!\n\n确实要执行此操作 ?");
    EXPECT_EQ(Changes(), (Texts{"DELETE * FROM Alpha_S1_DI WHERE CODE='DI-32B'",
                                "DELETE * FROM Alpha_S1_DI_data WHERE CODE='DI-32B'"}));
}

TEST_F(EditorTest, ChangeModuleParameters) {
    Select("Alpha/S1/DI");
    dlg->SelectModuleRow(0);
    dlg->changeModuleRunner = FillAndOk<CDlgChangeModule>([](auto& d) {
        EXPECT_EQ(d.code, "DI-16A");
        EXPECT_EQ(d.points, "16");
        d.description = "new";
        d.rating = "5V";
    });
    ClearLog();
    ASSERT_TRUE(dlg->OnMenuCommand(kCmdChangeModule));
    EXPECT_EQ(Changes(), (Texts{"UPDATE Alpha_S1_DI SET POINTS='16', TYPE='DI', DESCRIPTION='new', "
                                "RATING='5V' WHERE CODE ='DI-16A'"}));
    EXPECT_EQ(dlg->moduleList.Text(0, kModDescription), "new");
    EXPECT_EQ(dlg->moduleList.Text(0, kModRating), "5V");
}

TEST_F(EditorTest, TerminalStatements) {
    Select("Alpha/S1/DI/DI-32B");
    ClearLog();
    ASSERT_TRUE(AppendTerm("V", "D", "X"));
    EXPECT_EQ(Changes(), (Texts{"INSERT INTO Alpha_S1_DI_data VALUES ('DI-32B',4,'V','D','X')"}));

    ClearLog();
    ASSERT_TRUE(InsertTermBefore("3", "N"));
    EXPECT_EQ(Changes(),
              (Texts{"UPDATE Alpha_S1_DI_data SET SEQUENCE=5 WHERE CODE='DI-32B' AND SEQUENCE = 4",
                     "UPDATE Alpha_S1_DI_data SET SEQUENCE=4 WHERE CODE='DI-32B' AND SEQUENCE = 3",
                     "INSERT INTO Alpha_S1_DI_data VALUES ('DI-32B',3,'N','in','inserted')"}));

    ClearLog();
    ASSERT_TRUE(DeleteTerms({"2"}));
    EXPECT_EQ(env.host.messages.back().text, "确定要删除所选的1条端点信息吗？");
    EXPECT_EQ(
        Changes(),
        (Texts{"DELETE * FROM Alpha_S1_DI_data WHERE CODE='DI-32B' AND SEQUENCE=2",
               "UPDATE Alpha_S1_DI_data SET SEQUENCE=2 WHERE CODE='DI-32B' AND SEQUENCE = 3",
               "UPDATE Alpha_S1_DI_data SET SEQUENCE=3 WHERE CODE='DI-32B' AND SEQUENCE = 4",
               "UPDATE Alpha_S1_DI_data SET SEQUENCE=4 WHERE CODE='DI-32B' AND SEQUENCE = 5"}));

    ClearLog();
    dlg->SelectTermRows({dlg->FindTermRow("2")});
    dlg->changeTermDataRunner = FillAndOk<CDlgChangeTermData>([](auto& d) {
        EXPECT_EQ(d.termValue, "N");
        d.termValue = "v";
        d.termDesc = "d";
        d.detailTermDesc = "x";
    });
    ASSERT_TRUE(dlg->OnMenuCommand(kCmdChangeTerm));
    EXPECT_EQ(Changes(), (Texts{"UPDATE Alpha_S1_DI_data SET TERMVALUE='v', TERMDESC='d', "
                                "DETAILTERMDESC='x' WHERE CODE ='DI-32B' AND SEQUENCE =2"}));

    ClearLog();
    dlg->SelectTermRows({0});
    dlg->termOrderRunner = FillAndOk<CDlgTermOrder>([](auto& d) {
        ASSERT_TRUE(d.SetOrder({"4", "1", "2", "3"}));
    });
    ASSERT_TRUE(dlg->OnMenuCommand(kCmdReorderTerms));
    EXPECT_EQ(Changes(),
              (Texts{"UPDATE Alpha_S1_DI_data SET TermValue='V', TERMDESC='D', DETAILTERMDESC='X' "
                     "WHERE CODE ='DI-32B' AND SEQUENCE =1",
                     "UPDATE Alpha_S1_DI_data SET TermValue='11', TERMDESC='I0.1', "
                     "DETAILTERMDESC='通道1' WHERE CODE ='DI-32B' AND SEQUENCE =2",
                     "UPDATE Alpha_S1_DI_data SET TermValue='v', TERMDESC='d', DETAILTERMDESC='x' "
                     "WHERE CODE ='DI-32B' AND SEQUENCE =3",
                     "UPDATE Alpha_S1_DI_data SET TermValue='13', TERMDESC='I0.3', "
                     "DETAILTERMDESC='通道3' WHERE CODE ='DI-32B' AND SEQUENCE =4"}));
    EXPECT_EQ(DbTerms("Alpha_S1_DI", "DI-32B"), (Texts{"1:V", "2:11", "3:v", "4:13"}));
    EXPECT_EQ(ListTerms(), (Texts{"1:V", "2:11", "3:v", "4:13"}));
}

TEST_F(EditorTest, EveryChangeStampsTheLibrary) {
    const auto stamp = env.LocalDir() / "PLC" / "QvPLC.tim";
    EXPECT_FALSE(std::filesystem::exists(stamp));
    ASSERT_TRUE(NewSeries("Gamma", "G1"));
    ASSERT_TRUE(std::filesystem::exists(stamp));
    const std::string first = testing_support::ReadFile(stamp);
    EXPECT_EQ(first.size(), std::string("2026-01-01 00:00:00.000\n").size()) << first;
    std::filesystem::remove(stamp);
    Select("Gamma");
    dlg->newSeriesRunner = FillAndOk<CDlgNewSeries>([](auto& d) { d.seriesName = "G1"; });
    EXPECT_FALSE(dlg->OnMenuCommand(kCmdNewSeries));  // a duplicate changes nothing
    EXPECT_FALSE(std::filesystem::exists(stamp));
}

}  // namespace
}  // namespace libedit_test
