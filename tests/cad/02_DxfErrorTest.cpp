// Bad input gets a DxfError naming the file and the line, never a crash or a hang.
#include <gtest/gtest.h>

#include "TestPaths.h"
#include "cad/Dxf.h"

namespace cad {
namespace {

const char* kMinimal =
    "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n0\nLINE\n5\n20\n8\n0\n10\n1.0\n20\n2.0\n11\n3.0\n21\n4."
    "0\n0\nENDSEC\n0\nEOF\n";

struct BadCase {
    const char* name;
    std::string text;
    long line;          // expected line, 0: any
    const char* words;  // expected in the message
};

std::string Replace(std::string s, const std::string& from, const std::string& to) {
    s.replace(s.find(from), from.size(), to);
    return s;
}

TEST(DxfError, MinimalFileReads) {
    auto db = ReadDxfString(kMinimal, "min.dxf");
    ASSERT_EQ(db->Entities().size(), 1u);
    EXPECT_EQ(db->Entities()[0]->handle, 0x20u);
}

TEST(DxfError, EachFaultIsNamedWithFileAndLine) {
    const std::string ok = kMinimal;
    const std::vector<BadCase> cases = {
        {"truncated", ok.substr(0, ok.find("11\n3.0")), 0, "ENTITIES is not terminated"},
        {"odd lines", ok.substr(0, ok.size() - 4), 0, "ends after group code"},
        {"non-numeric code", Replace(ok, "10\n1.0", "1x\n1.0"), 21, "group code is not a number"},
        {"unknown code", Replace(ok, "10\n1.0", "5000\n1.0"), 21, "does not exist"},
        {"non-numeric value", Replace(ok, "10\n1.0", "10\nabc"), 22, "not a valid number"},
        {"absurd number", Replace(ok, "10\n1.0", "10\n1e300"), 22, "out of range"},
        {"absurd integer", Replace(ok, "8\n0\n10", "62\n99999999999999\n10"), 20, "out of range"},
        {"unterminated section", Replace(ok, "0\nENDSEC\n0\nEOF\n", ""), 0,
         "ENTITIES is not terminated"},
        {"damaged binary sentinel", std::string("AutoCAD Binary DXF\r\n\x1b\0", 22), 1,
         "binary DXF with a damaged first line"},
        {"DWG", std::string("AC1024\0\0\0\0\0", 11), 1, "DWG"},
        {"PNG", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), 1, "not a DXF"},
        {"misplaced ENDBLK", Replace(ok, "0\nLINE", "0\nENDBLK"), 15, "misplaced ENDBLK"},
        {"NUL byte", Replace(ok, "LINE", std::string("LI\0E", 4)), 16, "NUL"},
        {"control character in a type name", Replace(ok, "LINE", "LI\tNE"), 15,
         "type name holds a blank or a control character"},
    };
    for (const auto& c : cases) {
        try {
            ReadDxfString(c.text, "bad.dxf");
            ADD_FAILURE() << c.name << ": accepted";
        } catch (const DxfError& e) {
            EXPECT_EQ(e.File(), "bad.dxf") << c.name;
            EXPECT_NE(std::string(e.what()).find(c.words), std::string::npos)
                << c.name << ": " << e.what();
            if (c.line != 0) {
                EXPECT_EQ(e.Line(), c.line) << c.name << ": " << e.what();
            } else {
                EXPECT_GT(e.Line(), 0) << c.name << ": " << e.what();
            }
        }
    }
}

TEST(DxfError, MissingFileAndTryReadReportInsteadOfThrowing) {
    testing_support::TempDir dir;
    std::string error;
    EXPECT_EQ(TryReadDxfFile((dir / "none.dxf").string(), error), nullptr);
    EXPECT_NE(error.find("none.dxf"), std::string::npos);
    testing_support::WriteFile(dir / "empty.dxf", "");
    EXPECT_EQ(TryReadDxfFile((dir / "empty.dxf").string(), error), nullptr);
    EXPECT_NE(error.find("empty"), std::string::npos);
}

TEST(DxfError, LenientReadingRepairsAndSaysSo) {
    // A layer, a style and an application that are used but not defined; a 1005 link to
    // nothing; a duplicate handle.
    const std::string text =
        "0\nSECTION\n2\nENTITIES\n"
        "0\nTEXT\n5\n30\n8\nNEWLAYER\n10\n0\n20\n0\n40\n2\n1\nabc\n7\nNOSTYLE\n1001\nQV_"
        "APP\n1005\nFFFF\n"
        "0\nLINE\n5\n30\n8\n0\n10\n0\n20\n0\n11\n1\n21\n1\n0\nENDSEC\n0\nEOF\n";
    auto db = ReadDxfString(text, "lenient.dxf");
    EXPECT_NE(db->FindLayer("NEWLAYER"), kNullHandle);
    EXPECT_NE(db->FindTextStyle("NOSTYLE"), kNullHandle);
    EXPECT_NE(db->FindApp("QV_APP"), kNullHandle);
    ASSERT_EQ(db->Entities().size(), 2u);
    EXPECT_NE(db->Entities()[0]->handle, db->Entities()[1]->handle);
    const auto* items = db->GetXData(*db->Entities()[0], "QV_APP");
    ASSERT_NE(items, nullptr);
    EXPECT_EQ((*items)[0].value, "0");  // the dangling link was cut
    EXPECT_GE(db->Repairs().size(), 5u);
    EXPECT_NE(db->Layer(db->CurrentLayer()), nullptr);  // required entries were added
    EXPECT_NE(db->FindBlock("*Model_Space"), kNullHandle);
    EXPECT_NO_THROW(WriteDxfString(*db, DxfVersion::R2010));
}

}  // namespace
}  // namespace cad
