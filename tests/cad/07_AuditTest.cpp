// The audit before writing: faults ezdxf would repair silently are refused here, and a
// refused save leaves the existing file as it was.
#include <gtest/gtest.h>

#include "TestPaths.h"
#include "cad/Audit.h"
#include "cad/Dxf.h"

namespace cad {
namespace {

bool Mentions(const std::vector<AuditIssue>& issues, const std::string& words) {
    for (const auto& i : issues) {
        if (i.message.find(words) != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST(Audit, FindsEachKindOfFault) {
    Database db;
    auto* line = db.AppendNew<Line>();
    line->xdata.push_back({0xABCDE, {XDataItem::String("x")}});  // not a registered application
    auto* text = db.AppendNew<Text>();
    db.AppendXData(*text, "QV_LINK", XDataItem::HandleRef(0xFFFFF));  // points at nothing
    db.AppendXData(*text, "QV_LINK", XDataItem{1002, "{"});           // never closed
    db.AppendXData(*text, "QV_LINK", XDataItem::String(std::string(300, 'x')));
    text->layer = db.ModelSpace();  // a handle that is not a layer
    db.AppendNew<LwPolyline>();     // no vertices
    auto* ref = db.AppendNew<BlockReference>();
    ref->block = 0x12345;
    const auto issues = Audit(db);
    EXPECT_TRUE(Mentions(issues, "not registered"));
    EXPECT_TRUE(Mentions(issues, "does not exist"));
    EXPECT_TRUE(Mentions(issues, "unbalanced braces"));
    EXPECT_TRUE(Mentions(issues, "longer than 255"));
    EXPECT_TRUE(Mentions(issues, "layer that does not exist"));
    EXPECT_TRUE(Mentions(issues, "no vertices"));
    EXPECT_TRUE(Mentions(issues, "block that does not exist"));
}

TEST(Audit, LinksToErasedEntitiesAreCutWhenWritten) {
    Database db;
    auto* label = db.AppendNew<MText>();
    auto* ref = db.AppendNew<Line>();
    db.AppendXData(*label, "QV_SYMB2_LABEL", XDataItem::HandleRef(ref->handle));
    db.Erase(ref->handle);
    EXPECT_TRUE(Audit(db).empty());
    auto back = ReadDxfString(WriteDxfString(db, DxfVersion::R2010), "cut.dxf");
    EXPECT_EQ((*back->GetXData(*back->Get<MText>(label->handle), "QV_SYMB2_LABEL"))[0].value, "0");
    EXPECT_TRUE(back->Repairs().empty());
}

TEST(Audit, ARefusedSaveLeavesTheOldFileAndNoTemporary) {
    testing_support::TempDir dir;
    const auto path = dir / "PlcDraw.dxf";
    testing_support::WriteFile(path, "old bytes");
    Database db;
    db.AppendNew<LwPolyline>();
    try {
        WriteDxfFile(db, path.string(), DxfVersion::R2010);
        ADD_FAILURE() << "a polyline without vertices was written";
    } catch (const DxfError& e) {
        EXPECT_EQ(e.File(), path.string());
        EXPECT_NE(std::string(e.what()).find("no vertices"), std::string::npos);
    }
    EXPECT_EQ(testing_support::ReadFile(path), "old bytes");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 1);
}

}  // namespace
}  // namespace cad
