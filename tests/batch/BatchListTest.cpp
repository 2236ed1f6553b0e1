// Reading I/O lists: CSV as spreadsheet programs write it, headings in any order and in
// Chinese, GB18030 files, and the project file's faults.
#include <gtest/gtest.h>

#include "BatchTestSupport.h"
#include "TestPaths.h"
#include "batch/Csv.h"
#include "batch/IoList.h"

namespace {

using batch::Column;

TEST(BatchCsv, QuotedFieldsKeepSeparatorsQuotesAndLineBreaksAndRecordsKeepTheirFirstLine) {
    const auto csv =
        batch::ParseCsv("a;\"b;c\";\"say \"\"hi\"\"\"\r\n\r\n\"two\nlines\";x;\r\nlast;;\n", ';');
    ASSERT_EQ(csv.error, "");
    ASSERT_EQ(csv.records.size(), 3u);
    EXPECT_EQ(csv.records[0].fields, (std::vector<std::string>{"a", "b;c", "say \"hi\""}));
    EXPECT_EQ(csv.records[1].line, 3);
    EXPECT_EQ(csv.records[1].fields, (std::vector<std::string>{"two\nlines", "x", ""}));
    EXPECT_EQ(csv.records[2].line, 5);
    EXPECT_EQ(csv.records[2].fields, (std::vector<std::string>{"last", "", ""}));
}

TEST(BatchCsv, AnUnclosedQuoteIsAnErrorNamingTheLineItOpensOn) {
    const auto csv = batch::ParseCsv("a,b\n1,\"open\n2,3\n", ',');
    EXPECT_EQ(csv.error, "line 2: a quoted field is not closed before the end of the file");
}

TEST(BatchCsv, TheSeparatorIsGuessedFromTheHeadingRowOutsideQuotes) {
    EXPECT_EQ(batch::GuessSeparator("tag;rack;slot,x\n1,2,3,4,5\n"), ';');
    EXPECT_EQ(batch::GuessSeparator("\"a;b;c\",rack\n"), ',');
}

TEST(BatchList, ChineseHeadingsInAnyOrderNameTheColumnsAndUnknownOnesAreIgnored) {
    const auto list = batch_test::ListFromCsv(
        "备注,信号,通道,模块,槽号,机架,位号,地址,图号\n"
        "x, Pump 1 ,3,M/S/T/DI8,2,0,A1,I0.2,P1\n");
    ASSERT_TRUE(list.errors.empty());
    ASSERT_EQ(list.rows.size(), 1u);
    const auto& row = list.rows[0];
    EXPECT_EQ(row.row, 2);
    EXPECT_EQ(row[Column::Tag], "A1");
    EXPECT_EQ(row[Column::Rack], "0");
    EXPECT_EQ(row[Column::Slot], "2");
    EXPECT_EQ(row[Column::Module], "M/S/T/DI8");
    EXPECT_EQ(row[Column::Channel], "3");
    EXPECT_EQ(row[Column::Signal], "Pump 1");
    EXPECT_EQ(row[Column::Address], "I0.2");
    EXPECT_EQ(row[Column::Sheet], "P1");
    EXPECT_FALSE(list.Has(Column::Kind));
}

TEST(BatchList, MissingRequiredAndRepeatedHeadingsAreFaultsOfTheHeadingRow) {
    const auto list = batch_test::ListFromCsv("Tag,RACK,slot,module,标号,signal\n");
    std::vector<std::string> texts;
    for (const auto& e : list.errors) {
        texts.push_back(e.Text());
    }
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "io.csv: row 1, column 标号: a second heading for the column tag",
                         "io.csv: row 1, column channel: the heading row has no such column "
                         "(required)"}));
}

TEST(BatchList, AGb18030FileIsReadAsTheWindowsSuiteWritesIt) {
    testing_support::TempDir dir;
    // "位号,机架,槽号,模块,通道,信号" and a row whose signal is "泵" in GB18030.
    const std::string gb =
        "\xCE\xBB\xBA\xC5,\xBB\xFA\xBC\xDC,\xB2\xDB\xBA\xC5,\xC4\xA3\xBF\xE9,\xCD\xA8\xB5\xC0,"
        "\xD0\xC5\xBA\xC5\r\nA1,0,1,M/S/T/DI8,1,\xB1\xC3\r\n";
    testing_support::WriteFile(dir / "gb.csv", gb);
    const auto list = batch::ReadIoList((dir / "gb.csv").string());
    ASSERT_TRUE(list.errors.empty()) << list.errors[0].Text();
    ASSERT_EQ(list.rows.size(), 1u);
    EXPECT_EQ(list.rows[0][Column::Signal], "泵");
}

TEST(BatchList, AnUnreadableListIsAFaultNamingTheFile) {
    const auto list = batch::ReadIoList("/nonexistent/io.csv");
    ASSERT_EQ(list.errors.size(), 1u);
    EXPECT_NE(list.errors[0].Text().find("/nonexistent/io.csv"), std::string::npos);
}

TEST(BatchProject, EachFaultNamesTheLineAndKey) {
    testing_support::TempDir dir;
    testing_support::WriteFile(dir / "p.ini",
                               "# comment\nform = octal\nbase = 8\nstart.DI = 9\n"
                               "colour = red\nslot.1 = 4\ngrid.columns = 0\nno equals here\n");
    std::vector<batch::ListError> errors;
    batch::ReadProject((dir / "p.ini").string(), errors);
    std::vector<std::pair<int, std::string>> where;
    for (const auto& e : errors) {
        where.emplace_back(e.row, e.column);
    }
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors[0].Text(), (dir / "p.ini").string() +
                                    ": line 2, key form: 'octal' is not one of bit, iec, counter");
    // start.DI is read in base 10 here (the form is not counter), so 9 is good.
    EXPECT_EQ(where, (std::vector<std::pair<int, std::string>>{
                         {2, "form"}, {5, "colour"}, {6, "slot.1"}, {7, "grid.columns"}, {8, ""}}));
}

TEST(BatchProject, CounterStartsAreReadInTheCounterBase) {
    std::vector<batch::ListError> errors;
    testing_support::TempDir dir;
    testing_support::WriteFile(dir / "p.ini",
                               "start.DO = 20\nform = counter\nbase = 8\nstart.DI = 18\n");
    const auto project = batch::ReadProject((dir / "p.ini").string(), errors);
    EXPECT_EQ(project.start[static_cast<int>(batch::Kind::DO)], 16);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].row, 4);
    EXPECT_EQ(errors[0].column, "start.DI");
}

}  // namespace
