// Lists read from XLSX workbooks, and reports made from drawn sets read back and compared with
// the list that was drawn and with the drawings as an independent reader (ezdxf) sees them.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "TestPaths.h"
#include "batch/IoList.h"
#include "batch/Xlsx.h"

namespace {

namespace fs = std::filesystem;
using testing_support::ReadFile;
using testing_support::WriteFile;

using Outcome = testing_support::ProgramOutcome;

const std::string kDi = "Norvik Controls/NX 10/Digital input/NX1-DI16";
const std::string kAi = "Norvik Controls/NX 10/Analog input/NX1-AI8";

class ReportProgramTest : public testing::Test {
protected:
    Outcome Run(const std::string& command) {
        return testing_support::RunCaptured(command, dir_.Path());
    }
    Outcome Qvplc(const std::string& args) {
        return testing_support::RunQvplc(dir_ / "local", args, dir_.Path());
    }
    // Runs a Python program with the system's interpreter (openpyxl, ezdxf).
    Outcome Python(const std::string& program) {
        WriteFile(dir_ / "program.py", program);
        return Run("/usr/bin/python3 '" + (dir_ / "program.py").string() + "'");
    }
    std::string Path(const std::string& name) const { return (dir_ / name).string(); }

    testing_support::TempDir dir_;
};

// Rows of a CSV report: quoted fields with doubled quotes, no line breaks inside.
std::vector<std::vector<std::string>> CsvRows(std::string text) {
    if (text.rfind("\xEF\xBB\xBF", 0) == 0) {
        text.erase(0, 3);
    }
    std::vector<std::vector<std::string>> rows;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        std::vector<std::string> cells(1);
        bool quoted = false;
        for (std::size_t i = 0; i < line.size(); ++i) {
            const char c = line[i];
            if (quoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
                cells.back() += '"';
                ++i;
            } else if (c == '"') {
                quoted = !quoted;
            } else if (c == ',' && !quoted) {
                cells.emplace_back();
            } else {
                cells.back() += c;
            }
        }
        rows.push_back(cells);
    }
    return rows;
}

TEST_F(ReportProgramTest, AnXlsxListReadsAsTheSameCsvListWithColumnsInAnyOrder) {
    WriteFile(dir_ / "io.csv",
              "tag,rack,slot,module,channel,signal,address\n"
              "A1,0,1," +
                  kDi +
                  ",1,Pump 1,\n"
                  "A1,0,1," +
                  kDi +
                  ",3,泵 2,I7.1\n"
                  "A2,0,2," +
                  kAi + ",#2,Level,\n");
    // Chinese headings, another order, numbers stored as numbers, one inline string, a blank
    // cell, and a first sheet that is not the list.
    const Outcome made = Python(
        "import openpyxl\n"
        "wb = openpyxl.Workbook()\n"
        "wb.active.title = 'notes'\n"
        "ws = wb.create_sheet('IO')\n"
        "ws.append(['信号', '模块', '机架', '槽号', '通道', '位号', '地址'])\n"
        "ws.append(['Pump 1', '" +
        kDi +
        "', 0, 1, 1, 'A1', None])\n"
        "ws.append(['泵 2', '" +
        kDi +
        "', 0, 1, 3, 'A1', 'I7.1'])\n"
        "ws.append(['Level', '" +
        kAi +
        "', 0, 2, '#2', 'A2', None])\n"
        "wb.save('" +
        Path("io.xlsx") + "')\n");
    ASSERT_EQ(made.code, 0) << made.err;

    const batch::IoList csv = batch::ReadIoList(Path("io.csv"));
    const batch::IoList xlsx = batch::ReadIoList(Path("io.xlsx"), "IO");
    ASSERT_TRUE(xlsx.errors.empty()) << xlsx.errors.front().Text();
    ASSERT_EQ(xlsx.rows.size(), csv.rows.size());
    for (std::size_t i = 0; i < csv.rows.size(); ++i) {
        EXPECT_EQ(xlsx.rows[i].cells, csv.rows[i].cells) << "row " << i;
        EXPECT_EQ(xlsx.rows[i].row, static_cast<int>(i) + 2);
    }

    // The first sheet is read when none is named: here it holds no list.
    EXPECT_FALSE(batch::ReadIoList(Path("io.xlsx")).errors.empty());
    std::string error;
    EXPECT_FALSE(batch::ReadXlsxSheet(Path("io.xlsx"), "Missing", error));
    EXPECT_NE(error.find("no sheet named \"Missing\""), std::string::npos) << error;
    WriteFile(dir_ / "bad.xlsx", "tag,rack\nthis is text\n");
    EXPECT_FALSE(batch::ReadXlsxSheet(Path("bad.xlsx"), "", error));
    EXPECT_NE(error.find("not an XLSX workbook"), std::string::npos) << error;
    const batch::IoList bad = batch::ReadIoList(Path("bad.xlsx"));
    ASSERT_EQ(bad.errors.size(), 1u);
    EXPECT_NE(bad.errors[0].Text().find("bad.xlsx"), std::string::npos);
    // A ZIP package that is no workbook, and one whose sheet XML is cut off.
    ASSERT_EQ(Python("import zipfile\n"
                     "with zipfile.ZipFile('" +
                     Path("other.xlsx") +
                     "', 'w') as z:\n"
                     "    z.writestr('hello.txt', 'hi')\n"
                     "src = zipfile.ZipFile('" +
                     Path("io.xlsx") +
                     "')\n"
                     "with zipfile.ZipFile('" +
                     Path("cut.xlsx") +
                     "', 'w') as z:\n"
                     "    for n in src.namelist():\n"
                     "        d = src.read(n)\n"
                     "        z.writestr(n, d[:len(d) // 2] if n.endswith('sheet2.xml') else d)\n")
                  .code,
              0);
    EXPECT_FALSE(batch::ReadXlsxSheet(Path("other.xlsx"), "", error));
    EXPECT_NE(error.find("xl/workbook.xml"), std::string::npos) << error;
    EXPECT_FALSE(batch::ReadXlsxSheet(Path("cut.xlsx"), "IO", error));
    EXPECT_NE(error.find("not well-formed"), std::string::npos) << error;
}

TEST_F(ReportProgramTest, ReportsOfADrawnSetShowWhatTheListDrewAndTheDrawingsHold) {
    ASSERT_EQ(Qvplc("lib init --sample").code, 0);
    WriteFile(dir_ / "io.csv",
              "tag,rack,slot,module,channel,signal,address\n"
              "A1,0,1," +
                  kDi +
                  ",1,Pump 1,\n"
                  "A1,0,1," +
                  kDi +
                  ",2,Pump 2,I9.7\n"
                  "A2,0,2," +
                  kAi + ",#2,Level,\n");
    const Outcome drawn = Qvplc("batch '" + Path("io.csv") + "' --out '" + Path("out") + "'");
    ASSERT_EQ(drawn.code, 0) << drawn.err;
    const std::string sheet = "'" + Path("out/sheet-01.dxf") + "'";

    // The I/O report, as XLSX read back by the list reader, carries each list row.
    const Outcome io = Qvplc("report io " + sheet + " --out '" + Path("io-report.xlsx") + "'");
    ASSERT_EQ(io.code, 0) << io.err;
    std::string error;
    const auto report = batch::ReadXlsxSheet(Path("io-report.xlsx"), "", error);
    ASSERT_TRUE(report) << error;
    const auto& rows = report->rows;
    ASSERT_GE(rows.size(), 4u);
    EXPECT_EQ(rows[0], (std::vector<std::string>{"drawing", "tag", "module", "channel", "address",
                                                 "signal", "kind"}));
    const auto find = [&](const std::string& tag, const std::string& signal) {
        for (const auto& row : rows) {
            if (row.size() == 7 && row[1] == tag && row[5] == signal) {
                return row;
            }
        }
        return std::vector<std::string>{};
    };
    const auto pump1 = find("A1", "Pump 1"), pump2 = find("A1", "Pump 2"),
               level = find("A2", "Level");
    ASSERT_FALSE(pump1.empty());
    ASSERT_FALSE(pump2.empty());
    ASSERT_FALSE(level.empty());
    EXPECT_EQ(pump1[3], "1");
    EXPECT_EQ(pump1[6], "DI");
    EXPECT_EQ(pump2[4], "I9.7");  // a given address is the one drawn
    EXPECT_EQ(level[6], "AI");
    EXPECT_EQ(level[2], kAi);

    // The terminal plan names as many terminals as the drawing holds terminal symbols, each
    // with the number text an independent reader finds linked to it.
    const Outcome plan = Qvplc("report terminals " + sheet + " --out '" + Path("t.csv") + "'");
    ASSERT_EQ(plan.code, 0) << plan.err;
    const auto terminals = CsvRows(ReadFile(dir_ / "t.csv"));
    const Outcome counted = Python(
        "import ezdxf\n"
        "doc = ezdxf.readfile('" +
        Path("out/sheet-01.dxf") +
        "')\n"
        "n = [e for e in doc.modelspace().query('INSERT') if e.has_xdata('QV_SYMB2_TERM_TEXT_1')]\n"
        "print(len(n))\n");
    ASSERT_EQ(counted.code, 0) << counted.err;
    EXPECT_EQ(std::to_string(terminals.size() - 1) + "\n", counted.out);

    // The bill of materials counts one of each module here.
    const Outcome bom = Qvplc("report bom " + sheet);
    ASSERT_EQ(bom.code, 0) << bom.err;
    const auto bomRows = CsvRows(bom.out);
    ASSERT_EQ(bomRows.size(), 3u) << bom.out;
    EXPECT_EQ(bomRows[1][3], "1");
    EXPECT_EQ(bomRows[2][3], "1");
}

TEST_F(ReportProgramTest, BadDrawingsAndArgumentsAreRefusedWithTheirReason) {
    WriteFile(dir_ / "not.dxf", "this is no drawing");
    const Outcome bad = Qvplc("report terminals '" + Path("not.dxf") + "'");
    EXPECT_EQ(bad.code, 3);
    EXPECT_NE(bad.err.find("not.dxf"), std::string::npos) << bad.err;

    EXPECT_EQ(Qvplc("report wires x.dxf").code, 2);
    EXPECT_EQ(Qvplc("report io x.dxf --format pdf").code, 2);
    EXPECT_EQ(Qvplc("report io x.dxf --format xlsx").code, 2);  // XLSX needs --out

    ASSERT_EQ(Python("import ezdxf\nezdxf.new().saveas('" + Path("empty.dxf") + "')\n").code, 0);
    const Outcome empty = Qvplc("report bom '" + Path("empty.dxf") + "'");
    EXPECT_EQ(empty.code, 0);
    EXPECT_NE(empty.err.find("no drawn module found"), std::string::npos) << empty.err;
    EXPECT_EQ(CsvRows(empty.out).size(), 1u);  // the headings only
}

}  // namespace
