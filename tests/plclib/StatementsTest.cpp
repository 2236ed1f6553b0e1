// Every statement the library layer, the editor and the importer issue, with their texts
// exactly as those parts build them, run in the order of a working session on one library.
// Each step is followed by a check of what it should have left behind.
#include <string>
#include <vector>

#include "LibraryFixture.h"

namespace plclib_test {
namespace {

struct Step {
    std::string statement;
    std::string check;  // a query whose row count proves the effect; empty: the statement's
    size_t rows;
};

std::vector<Step> Session() {
    const std::string F = "Acme Automation", S = "ACM", M = F, R = "AX 200", T = "DX-300 A";
    const std::string table = "Acme_Automation_AX_200_DX_300_A";
    const std::string K = "AX-16DI", K2 = "AX-16DI/B";
    const std::string pm = "SELECT * FROM PLC_MANUFACTURER";
    const std::string terms = "Select * from " + table + "_data where CODE='" + K2 + "'";
    const auto where = [&](const std::string& condition) { return pm + " WHERE " + condition; };
    std::vector<Step> steps = {
        // New manufacturer, its short name, then a series filling the placeholder row.
        {"INSERT INTO PLC_MANUFACTURER VALUES ('" + F + "','','','')", pm, 1},
        {"INSERT INTO MANUFACTURER_simple VALUES ('" + F + "','" + S + "')",
         "SELECT * FROM MANUFACTURER_Simple WHERE MFG='ACM'", 1},
        {"UPDATE MANUFACTURER_simple SET MFG='" + S + "X' WHERE MANUFACTURER='" + F + "'",
         "SELECT * FROM MANUFACTURER_Simple WHERE MFG='ACMX'", 1},
        {"SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='" + M + "'", "", 1},
        {"UPDATE PLC_MANUFACTURER SET SERIES='" + R +
             "' WHERE TYPE='' AND SERIES='' AND "
             "MANUFACTURER='" +
             M + "'",
         where("SERIES='AX 200'"), 1},
        {"INSERT INTO PLC_MANUFACTURER VALUES ('" + M + "','" + R + "2','','')", pm, 2},
        // New type: fill the series row, create its tables (both spellings of the second).
        {"SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='" + M + "' AND SERIES='" + R + "'",
         "", 1},
        {"UPDATE PLC_MANUFACTURER SET TYPE='" + T + "',TABLE_NAME='" + table +
             "' WHERE TYPE='' AND SERIES='" + R + "' AND MANUFACTURER='" + M + "'",
         where("TABLE_NAME='" + table + "'"), 1},
        {"INSERT INTO PLC_MANUFACTURER VALUES ('" + M + "','" + R + "','" + T + "B','" + table +
             "B')",
         pm, 3},
        {"Create TABLE " + table +
             "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),"
             "RATING CHAR(60),primary key(CODE))",
         "Select * from " + table, 0},
        {"Create TABLE " + table +
             "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),TERMDESC "
             "CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))",
         "Select * from " + table + "_data", 0},
        {"Create TABLE " + table +
             "B(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),"
             "RATING CHAR(60),primary key(CODE))",
         "Select * from " + table + "B", 0},
        {"Create TABLE " + table +
             "B_data (CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),TERMDESC "
             "CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))",
         "Select * from " + table + "B_data", 0},
        // A module and its terminals.
        {"SELECT * FROM " + table + " WHERE CODE ='" + K + "'", "", 0},
        {"INSERT INTO " + table + " VALUES ('" + K + "','16','DI','16 inputs','24VDC')",
         "Select * from " + table, 1},
        {"UPDATE " + table +
             " SET POINTS='32', TYPE='DI', DESCRIPTION='32 inputs', "
             "RATING='24VDC' WHERE CODE ='" +
             K + "'",
         "SELECT * FROM " + table + " WHERE POINTS='32'", 1},
    };
    for (int seq = 1; seq <= 4; ++seq) {
        const std::string n = std::to_string(seq);
        steps.push_back({"INSERT INTO " + table + "_data VALUES ('" + K + "'," + n + ",'" + n +
                             "','I0." + n + "','input " + n + "')",
                         "Select * from " + table + "_data where CODE='" + K + "'",
                         static_cast<size_t>(seq)});
    }
    const std::vector<Step> more = {
        // Rename the code in both tables.
        {"UPDATE " + table + " SET CODE='" + K2 + "' WHERE CODE='" + K + "'",
         "SELECT * FROM " + table + " WHERE CODE ='" + K2 + "'", 1},
        {"UPDATE " + table + "_data SET CODE='" + K2 + "' WHERE CODE='" + K + "'", terms, 4},
        // Insert before 2: shift 4, 3, 2 up, then the new row.
        {"UPDATE " + table + "_data SET SEQUENCE=5 WHERE CODE='" + K2 + "' AND SEQUENCE = 4",
         terms + " AND SEQUENCE=5", 1},
        {"UPDATE " + table + "_data SET SEQUENCE=4 WHERE CODE='" + K2 + "' AND SEQUENCE = 3",
         terms + " AND SEQUENCE=4", 1},
        {"UPDATE " + table + "_data SET SEQUENCE=3 WHERE CODE='" + K2 + "' AND SEQUENCE = 2",
         terms + " AND SEQUENCE=2", 0},
        {"INSERT INTO " + table + "_data VALUES ('" + K2 + "',2,'M','0V','common')", terms, 5},
        // Delete row 3 and close the gap.
        {"DELETE * FROM " + table + "_data WHERE CODE='" + K2 + "' AND SEQUENCE=3", terms, 4},
        {"UPDATE " + table + "_data SET SEQUENCE=3 WHERE CODE='" + K2 + "' AND SEQUENCE = 4",
         terms + " AND SEQUENCE=3", 1},
        {"UPDATE " + table + "_data SET SEQUENCE=4 WHERE CODE='" + K2 + "' AND SEQUENCE = 5",
         terms + " AND SEQUENCE=5", 0},
        {"UPDATE " + table +
             "_data SET TERMVALUE='L+', TERMDESC='24V', DETAILTERMDESC='supply'"
             " WHERE CODE ='" +
             K2 + "' AND SEQUENCE =1",
         terms + " AND TERMVALUE='L+'", 1},
        {"UPDATE " + table +
             "_data SET TermValue='X', TERMDESC='Y', DETAILTERMDESC='Z' WHERE "
             "CODE ='" +
             K2 + "' AND SEQUENCE =4",
         terms + " AND TERMDESC='Y' AND SEQUENCE=4", 1},
        // Lookups of the library layer and the importer.
        {"Select * FROM PLC_MANUFACTURER WHERE MANUFACTURER='" + M + "' AND SERIES='" + R + "'", "",
         2},
        {"Select TABLE_NAME FROM PLC_MANUFACTURER WHERE MANUFACTURER='" + M + "'", "", 3},
        {"SELECT * FROM MANUFACTURER_Simple WHERE MANUFACTURER='" + M + "'", "", 1},
        {"Select * from MANUFACTURER_Simple", "", 1},
        {"INSERT INTO Manufacturer_Simple VALUES ('Other','')", "Select * from MANUFACTURER_Simple",
         2},
        // Renames of manufacturer, series and type.
        {"UPDATE PLC_MANUFACTURER SET MANUFACTURER='Acme' WHERE MANUFACTURER ='" + M + "'",
         where("MANUFACTURER='Acme'"), 3},
        {"UPDATE MANUFACTURER_simple SET MANUFACTURER='Acme' WHERE MANUFACTURER ='" + M + "'",
         "SELECT * FROM MANUFACTURER_Simple WHERE MANUFACTURER='Acme'", 1},
        {"UPDATE PLC_MANUFACTURER SET SERIES='AX' WHERE SERIES ='" + R +
             "' AND "
             "MANUFACTURER='Acme'",
         where("SERIES='AX'"), 2},
        {"UPDATE PLC_MANUFACTURER SET TYPE='DI' WHERE TYPE='" + T +
             "' AND SERIES='AX' AND "
             "MANUFACTURER='Acme'",
         where("TYPE='DI' AND TABLE_NAME='" + table + "'"), 1},
        // Delete the module, then the type, the series and the manufacturer.
        {"DELETE * FROM " + table + " WHERE CODE='" + K2 + "'", "Select * from " + table, 0},
        {"DELETE * FROM " + table + "_data WHERE CODE='" + K2 + "'", terms, 0},
        {"Drop table " + table, "SELECT * FROM sqlite_master WHERE name='" + table + "'", 0},
        {"Drop table " + table + "_data", "SELECT * FROM sqlite_master WHERE type='table'", 4},
        {"SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Acme' AND SERIES='AX'", "", 2},
        {"DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Acme' AND SERIES='AX' AND TYPE='DI'",
         pm, 2},
        {"UPDATE PLC_MANUFACTURER SET TYPE='',TABLE_NAME='' WHERE MANUFACTURER='Acme' AND "
         "SERIES='AX'",
         where("TABLE_NAME=''"), 2},
        {"SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Acme'", "", 2},
        {"DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Acme' AND SERIES='AX'", pm, 1},
        {"UPDATE PLC_MANUFACTURER SET SERIES='',TYPE='',TABLE_NAME='' WHERE MANUFACTURER='Acme'",
         where("SERIES=''"), 1},
        {"DELETE * FROM MANUFACTURER_Simple WHERE MANUFACTURER='Acme'",
         "Select * from MANUFACTURER_Simple", 1},
        {"DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='Acme'", pm, 0},
        {"INSERT INTO PLC_MANUFACTURER VALUES('Acme','','','')", pm, 1},
        {"Drop table [" + table + "B_data]", "SELECT * FROM sqlite_master WHERE type='table'", 3},
        {"Drop table [" + table + "B]", "SELECT * FROM sqlite_master WHERE type='table'", 2},
    };
    steps.insert(steps.end(), more.begin(), more.end());
    return steps;
}

class StatementsTest : public LibraryTest {};

TEST_F(StatementsTest, EveryStatementOfASessionRunsAsWritten) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(MakeLibrary({})));
    for (const auto& step : Session()) {
        SCOPED_TRACE(step.statement);
        const bool isQuery = step.statement.rfind("S", 0) == 0;  // Select / SELECT
        if (isQuery) {
            auto rows = lib.Query(step.statement);
            ASSERT_TRUE(rows);
            if (step.check.empty()) {
                EXPECT_EQ(rows->RowCount(), step.rows);
            }
        } else {
            ASSERT_TRUE(lib.Execute(step.statement));
        }
        if (!step.check.empty()) {
            auto rows = lib.Query(step.check);
            ASSERT_TRUE(rows) << step.check;
            EXPECT_EQ(rows->RowCount(), step.rows) << step.check;
        }
    }
    EXPECT_TRUE(host_.messages.empty()) << host_.MessageTexts().front();
}

}  // namespace
}  // namespace plclib_test
