// qvplc lib check on real library files: the sample library is clean, a copy made faulty by
// hand with sqlite3 gives each fault once with where it is, and the file keeps its bytes.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "TestPaths.h"

namespace {

using testing_support::ReadFile;
using testing_support::WriteFile;

using Outcome = testing_support::ProgramOutcome;

class LibCheckProgramTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(Qvplc("lib init --sample").code, 0); }

    Outcome Run(const std::string& command) {
        return testing_support::RunCaptured(command, dir_.Path());
    }
    Outcome Qvplc(const std::string& args) {
        return testing_support::RunQvplc(dir_ / "local", args, dir_.Path());
    }
    std::string Library() const { return (dir_ / "local/PLC/QvPLC.db").string(); }

    testing_support::TempDir dir_;
};

int Count(const std::string& text, const std::string& line) {
    int n = 0;
    for (auto at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) {
        ++n;
    }
    return n;
}

TEST_F(LibCheckProgramTest, TheSampleLibraryIsCleanAndAFaultyCopyGivesEachFaultOnce) {
    const Outcome clean = Qvplc("lib check");
    EXPECT_EQ(clean.code, 0) << clean.out << clean.err;
    EXPECT_EQ(clean.out, "");

    const std::string di = "Norvik_Controls_NX_10_Digital_input";
    WriteFile(
        dir_ / "faults.sql",
        // A type whose tables have no keys: a sequence twice, one missing, a value twice.
        "INSERT INTO PLC_MANUFACTURER VALUES('Norvik Controls','NX 10','Loose','Loose');\n"
        "CREATE TABLE Loose(CODE, POINTS, TYPE, DESCRIPTION, RATING);\n"
        "CREATE TABLE Loose_data(CODE, SEQUENCE, TermValue, TERMDESC, DETAILTERMDESC);\n"
        "INSERT INTO Loose VALUES('M1', '3', 'DI', '', '');\n"
        "INSERT INTO Loose_data VALUES('M1', 1, '1', '', ''), ('M1', 1, '2', '', ''),\n"
        "  ('M1', 3, '1', '', '');\n"
        // A text past its column's 60 characters, written past the engine's check.
        "PRAGMA ignore_check_constraints = 1;\n"
        "UPDATE " +
            di +
            " SET DESCRIPTION = printf('%.70c', 'x') WHERE CODE = 'NX1-DI8';\n"
            // A TABLE_NAME without tables, a table no type names, a manufacturer without a
            // short name.
            "INSERT INTO PLC_MANUFACTURER VALUES('Norvik Controls','NX 10','Ghost','Ghost_t');\n"
            "CREATE TABLE Orphan(CODE CHAR(60));\n"
            "INSERT INTO PLC_MANUFACTURER VALUES('Nameless Co','S1','T1','-');\n");
    ASSERT_EQ(Run("sqlite3 '" + Library() + "' <'" + (dir_ / "faults.sql").string() + "'").code, 0);
    const std::string before = ReadFile(Library());

    const Outcome faulty = Qvplc("lib check");
    EXPECT_EQ(faulty.code, 1);
    const std::string& out = faulty.out;
    const std::string m1 = "Norvik Controls/NX 10/Loose/M1: ";
    EXPECT_EQ(Count(out, m1 + "terminal sequence 1 is used 2 times\n"), 1) << out;
    EXPECT_EQ(Count(out, m1 + "terminal sequence 2 is missing\n"), 1) << out;
    EXPECT_EQ(Count(out, m1 + "terminal value '1' is used 2 times\n"), 1) << out;
    EXPECT_EQ(Count(out,
                    "Norvik Controls/NX 10/Digital input/NX1-DI8: DESCRIPTION holds 70 "
                    "characters, more than its 60\n"),
              1)
        << out;
    EXPECT_EQ(Count(out, "Norvik Controls/NX 10/Ghost: its table Ghost_t is missing\n"), 1) << out;
    EXPECT_EQ(Count(out, "Orphan: no type names this table in TABLE_NAME\n"), 1) << out;
    EXPECT_EQ(Count(out, "Nameless Co: the manufacturer has no short name\n"), 1) << out;
    EXPECT_EQ(Count(out, "\n"), 7) << out;  // nothing else
    EXPECT_NE(faulty.err.find("7 fault(s) found"), std::string::npos) << faulty.err;
    EXPECT_EQ(ReadFile(Library()), before);  // only read
}

TEST_F(LibCheckProgramTest, AMissingOrForeignFileIsNamedWithWhatIsWrong) {
    const Outcome missing = Qvplc("lib check --library '" + (dir_ / "none.db").string() + "'");
    EXPECT_EQ(missing.code, 3);
    EXPECT_NE(missing.err.find("no library at"), std::string::npos) << missing.err;

    WriteFile(dir_ / "text.db", "this is not a database, only text that is long enough to read");
    const Outcome foreign = Qvplc("lib check --library '" + (dir_ / "text.db").string() + "'");
    EXPECT_EQ(foreign.code, 3);
    EXPECT_NE(foreign.err.find("text.db"), std::string::npos) << foreign.err;

    EXPECT_EQ(Qvplc("lib check extra").code, 2);
}

}  // namespace
