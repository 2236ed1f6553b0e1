// What the writer must get right beyond the fields it models: application names R14 can hold,
// one application per system under any spelling, real extents in the header, angles without
// conversion noise, no value a reader refuses, attributes only after their reference, grids
// of references, line types and embedded objects read from other programs' files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <set>

#include "TestPaths.h"
#include "cad/Audit.h"
#include "cad/Database.h"
#include "cad/Dxf.h"
#include "cad/Limits.h"
#include "cad/NumberText.h"

namespace cad {
namespace {

namespace ts = testing_support;

// The values of every group `code` in the text, in order.
std::vector<std::string> Values(const std::string& text, int code) {
    std::vector<std::string> out;
    std::size_t pos = 0;
    const std::string key = std::to_string(code);
    while (pos < text.size()) {
        const std::size_t end = text.find('\n', pos);
        const std::size_t next = text.find('\n', end + 1);
        if (end == std::string::npos || next == std::string::npos) {
            break;
        }
        if (Trim(std::string_view(text).substr(pos, end - pos)) == key) {
            out.push_back(text.substr(end + 1, next - end - 1));
        }
        pos = next + 1;
    }
    return out;
}

// The text after the first line that holds `value` alone: groups stay in step.
std::string After(const std::string& text, const std::string& value) {
    const std::size_t at = text.find("\n" + value + "\n");
    return at == std::string::npos ? std::string() : text.substr(at + value.size() + 2);
}

// The value following header variable `name` with group `code`.
double HeaderReal(const std::string& text, const std::string& name, int code) {
    const auto values = Values(After(text, name), code);
    double v = 0;
    EXPECT_TRUE(!values.empty() && ParseReal(values.front(), v)) << name;
    return v;
}

TEST(WriterApps, R14NamesAreShortenedAlikeInTheTableAndTheDataAndNeverMerge) {
    Database db;
    const std::string longOne = "QV_AN_APPLICATION_NAME_LONGER_THAN_R14_ALLOWS_ONE";
    const std::string longTwo = "QV_AN_APPLICATION_NAME_LONGER_THAN_R14_ALLOWS_TWO";
    auto* line = db.AppendNew<Line>();
    db.AppendXData(*line, longOne, XDataItem::String("one"));
    db.AppendXData(*line, longTwo, XDataItem::String("two"));
    db.AppendXData(*line, "QV_ GROUPPARTXRECT_TEXT", XDataItem::String("blank"));
    ASSERT_NE(db.FindApp(longOne), db.FindApp(longTwo));  // begin alike, stay two

    bool exact = true;
    const std::string text = WriteDxfString(db, DxfVersion::R14, &exact);
    EXPECT_FALSE(exact);
    const auto used = Values(text, 1001);
    ASSERT_EQ(used.size(), 3u);
    const auto back = ReadDxfString(text, "r14.dxf");
    EXPECT_TRUE(back->Repairs().empty()) << back->Repairs().front();  // all registered
    std::set<std::string> distinct(used.begin(), used.end());
    EXPECT_EQ(distinct.size(), 3u);
    for (const std::string& name : used) {
        EXPECT_LE(name.size(), 31u) << name;
        EXPECT_EQ(name.find(' '), std::string::npos) << name;
    }
    EXPECT_EQ(used[2], "QV__GROUPPARTXRECT_TEXT");
    const auto* l = back->Get<Line>(line->handle);
    ASSERT_EQ(l->xdata.size(), 3u);
    EXPECT_EQ(l->xdata[0].items[0].value, "one");
    EXPECT_EQ(l->xdata[1].items[0].value, "two");
    // From 2000 on every name is kept as it is.
    const auto full = Values(WriteDxfString(db, DxfVersion::R2000), 1001);
    EXPECT_EQ(full, (std::vector<std::string>{longOne, longTwo, "QV_ GROUPPARTXRECT_TEXT"}));
}

TEST(WriterApps, ADrawingSavedAsR14AndDrawnIntoAgainKeepsOneApplicationPerSystem) {
    Database db;
    auto* line = db.AppendNew<Line>();
    db.AppendXData(*line, "QV_ GROUPPARTXRECT_TEXT", XDataItem::String("first"));
    db.AppendXData(*line, "QV_Numbers", XDataItem::Int16(1));
    auto back = ReadDxfString(WriteDxfString(db, DxfVersion::R14), "r14.dxf");
    const Handle saved = back->FindApp("QV__GROUPPARTXRECT_TEXT");
    ASSERT_NE(saved, kNullHandle);

    auto* more = back->AppendNew<Line>();
    back->AppendXData(*more, "QV_ GROUPPARTXRECT_TEXT", XDataItem::String("second"));
    back->AppendXData(*more, "QV_NUMBERS", XDataItem::Int16(2));
    EXPECT_EQ(more->xdata[0].app, saved);
    EXPECT_EQ(back->RegisterApp("qv_numbers"), back->FindApp("QV_Numbers"));
    ASSERT_NE(back->GetXData(*more, "QV_ GROUPPARTXRECT_TEXT"), nullptr);
    const auto names = Values(WriteDxfString(*back, DxfVersion::R2010), 2);
    EXPECT_EQ(std::count(names.begin(), names.end(), "QV__GROUPPARTXRECT_TEXT"), 1);
    EXPECT_EQ(std::count(names.begin(), names.end(), "QV_ GROUPPARTXRECT_TEXT"), 0);
}

TEST(WriterHeader, ExtentsAreTheDrawingsOwnAndAnEmptyDrawingHasTheInvertedBox) {
    Database db;
    const std::string empty = WriteDxfString(db, DxfVersion::R2000);
    EXPECT_EQ(HeaderReal(empty, "$EXTMIN", 10), 1e20);
    EXPECT_EQ(HeaderReal(empty, "$EXTMAX", 20), -1e20);

    auto* line = db.AppendNew<Line>();
    line->start = {-5, 2, 0};
    line->end = {40, 30, 0};
    const Handle block = db.DefineBlock("CELL");
    auto circle = std::make_unique<Circle>();
    circle->radius = 1;
    db.Append(std::move(circle), block);
    auto* grid = db.InsertBlock(block, {100, 0, 0});
    grid->columns = 3;
    grid->rows = 2;
    grid->columnSpacing = 10;
    grid->rowSpacing = 50;
    for (DxfVersion v : {DxfVersion::R14, DxfVersion::R2010}) {
        const std::string text = WriteDxfString(db, v);
        EXPECT_EQ(HeaderReal(text, "$EXTMIN", 10), -5);
        EXPECT_EQ(HeaderReal(text, "$EXTMIN", 20), -1);   // the first row's circles
        EXPECT_EQ(HeaderReal(text, "$EXTMAX", 10), 121);  // the third column's circle
        EXPECT_EQ(HeaderReal(text, "$EXTMAX", 20), 51);   // the second row's
    }
}

TEST(WriterAngles, RightAnglesAreWrittenCleanAndOtherAnglesExactly) {
    Database db;
    auto* text = db.AppendNew<Text>();
    text->text = "1";
    text->rotation = std::numbers::pi / 2;
    auto* arc = db.AppendNew<Arc>();
    arc->radius = 1;
    arc->startAngle = std::numbers::pi / 2;
    arc->endAngle = 1.0;  // 57.29577951308232 degrees: no clean decimal near it
    auto* mtext = db.AppendNew<MText>();
    mtext->contents = "m";
    mtext->rotation = std::numbers::pi / 2;
    const Handle block = db.DefineBlock("B");
    db.InsertBlock(block, {}, {1, 1, 1}, 3 * std::numbers::pi / 2);

    const std::string all = WriteDxfString(db, DxfVersion::R2010);
    const std::string out = After(all, "ENTITIES");
    const auto angles = Values(out, 50);
    ASSERT_EQ(angles.size(), 3u);
    EXPECT_EQ(angles[0], "90.0");   // text
    EXPECT_EQ(angles[1], "90.0");   // arc start
    EXPECT_EQ(angles[2], "270.0");  // reference
    const auto ends = Values(out, 51);
    double end = 0;
    ASSERT_TRUE(!ends.empty() && ParseReal(ends.front(), end));
    EXPECT_EQ(end, 1.0 * 180.0 / std::numbers::pi);
    const auto x = Values(After(out, "AcDbMText"), 11), y = Values(After(out, "AcDbMText"), 21);
    ASSERT_FALSE(x.empty() || y.empty());
    EXPECT_EQ(x.front(), "0.0");
    EXPECT_EQ(y.front(), "1.0");
}

TEST(WriterRanges, AValueAReaderRefusesIsNeverWrittenAndTheErrorNamesTheEntity) {
    ts::TempDir dir;
    const auto path = dir / "far.dxf";
    const auto expectRefused = [&](Database& db, const std::string& words) {
        try {
            WriteDxfFile(db, path.string(), DxfVersion::R2010);
            ADD_FAILURE() << "written: " << words;
        } catch (const DxfError& e) {
            EXPECT_NE(std::string(e.what()).find(words), std::string::npos) << e.what();
        }
        EXPECT_FALSE(std::filesystem::exists(path));
        EXPECT_THROW(WriteDxfString(db, DxfVersion::R14), DxfError);
    };
    {
        Database db;
        auto* line = db.AppendNew<Line>();
        line->end = {1e300, 0, 0};
        expectRefused(db, FormatHandle(line->handle) + ": LINE holds the value 1e+300");
    }
    {
        Database db;
        auto* text = db.AppendNew<Text>();
        text->height = std::nan("");
        expectRefused(db, "TEXT holds the value nan");
    }
    {
        Database db;
        const Handle block = db.DefineBlock("FAR", {0, -2e100, 0});
        db.InsertBlock(block, {});
        expectRefused(db, "block \"FAR\" has its base point at -2e+100");
    }
    {
        Database db;
        const Handle block = db.DefineBlock("B");
        db.InsertBlock(block, {kMaxCoordinate, -kMaxCoordinate, 0});  // the range's own ends
        EXPECT_TRUE(Audit(db).empty()) << FormatIssues(Audit(db));
    }
}

TEST(WriterAttributes, AnAttributeWithoutItsReferenceIsReportedNotWritten) {
    Database db;
    auto attribute = std::make_unique<Attribute>();
    attribute->tag = "LOOSE";
    const Handle loose = db.Append(std::move(attribute));
    const auto issues = Audit(db);
    ASSERT_EQ(issues.size(), 1u) << FormatIssues(issues);
    EXPECT_EQ(issues[0].handle, loose);
    EXPECT_NE(issues[0].message.find("ATTRIB is not attached to a block reference"),
              std::string::npos);
    EXPECT_THROW(WriteDxfString(db, DxfVersion::R2010), DxfError);

    // One read from a file without its INSERT is kept, with its text, for the audit to name.
    Database plain;
    plain.AppendNew<Line>();
    std::string text = WriteDxfString(plain, DxfVersion::R2010);
    const std::string stray =
        "  0\nATTRIB\n  8\n0\n100\nAcDbText\n 10\n1.0\n 20\n2.0\n 30\n0.0\n 40\n2.5\n"
        "  1\nstray value\n100\nAcDbAttribute\n  2\nTAG\n 70\n0\n";
    text.insert(text.find("  0\nENDSEC", text.find("\nENTITIES\n")), stray);
    const auto back = ReadDxfString(text, "stray.dxf");
    const auto found = Audit(*back);
    ASSERT_EQ(found.size(), 1u) << FormatIssues(found);
    const auto* kept = back->Get<Attribute>(found[0].handle);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->text, "stray value");
}

TEST(WriterAttributes, AGridReferenceKeepsItsRowsColumnsAndAttributesInEveryVersion) {
    Database db;
    const Handle block = db.DefineBlock("TERM");
    auto def = std::make_unique<AttributeDefinition>();
    def->tag = "NO";
    def->text = "1";
    db.Append(std::move(def), block);
    auto* grid = db.InsertBlock(block, {5, 6, 0});
    grid->columns = 4;
    grid->rows = 3;
    grid->columnSpacing = 2.5;
    grid->rowSpacing = -7;
    db.Get<Attribute>(grid->attributes[0])->text = "X9";
    for (DxfVersion v : {DxfVersion::R14, DxfVersion::R2000, DxfVersion::R2010}) {
        SCOPED_TRACE(AcadVer(v));
        const std::string text = WriteDxfString(db, v);
        EXPECT_NE(text.find("AcDbMInsertBlock"), std::string::npos);
        const auto back = ReadDxfString(text, "grid.dxf");
        EXPECT_TRUE(back->Repairs().empty()) << back->Repairs().front();
        const auto* r = back->Get<BlockReference>(grid->handle);
        ASSERT_NE(r, nullptr);
        EXPECT_EQ(back->Block(r->block)->name, "TERM");
        EXPECT_EQ(r->position, (Point3d{5, 6, 0}));
        EXPECT_EQ(r->columns, 4);
        EXPECT_EQ(r->rows, 3);
        EXPECT_EQ(r->columnSpacing, 2.5);
        EXPECT_EQ(r->rowSpacing, -7);
        ASSERT_EQ(r->attributes.size(), 1u);
        EXPECT_EQ(back->Get<Attribute>(r->attributes[0])->text, "X9");
        const std::string again = WriteDxfString(*back, v);
        EXPECT_EQ(again.substr(again.find("ENTITIES")), text.substr(text.find("ENTITIES")));
    }
}

TEST(WriterForeign, LinetypesUsedAreDefinedAndEmbeddedObjectsStayInTheirEntity) {
    Database db;
    db.AppendNew<Line>();
    db.AppendNew<MText>()->contents = "a\\Nb";
    std::string text = WriteDxfString(db, DxfVersion::R2010);
    const auto put = [&text](const std::string& after, const std::string& before,
                             const std::string& tags) {
        const auto from = text.find(after, text.find("ENTITIES"));
        ASSERT_NE(from, std::string::npos) << after;
        text.insert(text.find(before, from) + 1, tags);
    };
    put("LINE", "\n  8\n0\n", "  6\nDASHDOT_FOREIGN\n");  // the line's line type, before 8
    // An MTEXT with columns as later versions write it, last: groups that share their codes
    // with the MTEXT's own.
    put("AcDbMText", "\n  0\n", "101\nEmbedded Object\n 70\n1\n 10\n1.0\n 11\n0.0\n 40\n20.0\n");
    const auto back = ReadDxfString(text, "foreign.dxf");
    EXPECT_NE(back->FindLinetype("DASHDOT_FOREIGN"), kNullHandle);
    EXPECT_FALSE(back->Repairs().empty());
    const auto* m = back->Entities()[1];
    ASSERT_EQ(m->Kind(), ObjectKind::MText);
    EXPECT_EQ(static_cast<const MText*>(m)->position, (Point3d{}));  // not the object's 10
    EXPECT_EQ(static_cast<const MText*>(m)->height, 2.5);            // nor its 40
    const std::string again = WriteDxfString(*back, DxfVersion::R2010);
    EXPECT_NE(again.find("101\nEmbedded Object\n 70\n1\n 10\n1.0\n 11\n0.0\n 40\n20.0\n"),
              std::string::npos);
    const auto ltypes = Values(After(again, "LTYPE"), 2);
    EXPECT_NE(std::find(ltypes.begin(), ltypes.end(), "DASHDOT_FOREIGN"), ltypes.end());
    // A line type that goes away before writing is named by the audit instead.
    back->Get<LinetypeRecord>(back->FindLinetype("DASHDOT_FOREIGN"))->erased = true;
    const auto issues = Audit(*back);
    ASSERT_EQ(issues.size(), 1u) << FormatIssues(issues);
    EXPECT_NE(issues[0].message.find("line type \"DASHDOT_FOREIGN\", which is not defined"),
              std::string::npos);
}

TEST(WriterVersion, ADrawingReadFromAnotherVersionSaysSoAndANewOneDoesNot) {
    Database fresh;
    EXPECT_EQ(VersionChange(fresh, DxfVersion::R14), "");
    const auto r14 = ReadDxfString(WriteDxfString(fresh, DxfVersion::R14), "old.dxf");
    EXPECT_EQ(VersionChange(*r14, DxfVersion::R14), "");
    const std::string note = VersionChange(*r14, VersionForSaveFormat("48"));
    EXPECT_NE(note.find("R14 (AC1014)"), std::string::npos) << note;
    EXPECT_NE(note.find("2010 (AC1024)"), std::string::npos) << note;
}

}  // namespace
}  // namespace cad
