#include "cadutil/BlockHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "cadutil/SymbolData.h"

using namespace cadutil;

TEST(XDataHelpers, AppendCreatesTheChainAndSetReplacesTheFirstOfItsCode) {
    cad::Database db;
    auto* label = db.AppendNew<cad::MText>();
    const cad::Handle h = label->handle;
    const std::string app = "QV_SYMB2_LABEL";
    EXPECT_EQ(db.FindApp(app), cad::kNullHandle);
    ASSERT_TRUE(AppendXDataItem(db, h, app, cad::XDataItem::HandleRef(0x2A)));
    ASSERT_TRUE(AppendXDataItem(db, h, app, cad::XDataItem::HandleRef(0x2B)));
    EXPECT_NE(db.FindApp(app), cad::kNullHandle);  // registered on first use
    ASSERT_TRUE(SetXDataItem(db, h, app, cad::XDataItem::HandleRef(0x99)));
    ASSERT_TRUE(SetXDataItem(db, h, app, cad::XDataItem::String("1")));
    const auto* items = db.GetXData(*label, app);
    ASSERT_NE(items, nullptr);
    ASSERT_EQ(items->size(), 3u);
    EXPECT_EQ((*items)[0].AsHandle(), 0x99u);             // the first 1005 replaced
    EXPECT_EQ((*items)[1].AsHandle(), 0x2Bu);             // the second one kept
    EXPECT_EQ((*items)[2], cad::XDataItem::String("1"));  // no 1000 yet: appended

    // The blank in the outline group names is kept as it is.
    ASSERT_TRUE(AppendXDataItem(db, h, "QV_ GROUPPARTXRECT_XRECT", cad::XDataItem::HandleRef(1)));
    EXPECT_NE(db.GetXData(*label, "QV_ GROUPPARTXRECT_XRECT"), nullptr);
}

TEST(XDataHelpers, RefuseWhatIsNotALiveEntity) {
    cad::Database db;
    auto* line = db.AppendNew<cad::Line>();
    const cad::Handle h = line->handle;
    db.Erase(h);
    EXPECT_FALSE(AppendXDataItem(db, h, "QV_X", cad::XDataItem::String("a")));
    EXPECT_FALSE(SetXDataItem(db, 0x7777, "QV_X", cad::XDataItem::String("a")));
    EXPECT_FALSE(SetXDataItem(db, db.FindLayer("0"), "QV_X", cad::XDataItem::String("a")));
    EXPECT_EQ(db.FindApp("QV_X"), cad::kNullHandle);
}

TEST(LayerByName, FindsAnyCaseOrFallsBackToTheCurrentLayer) {
    cad::Database db;
    const cad::Handle dim = db.AddLayer("DIM", 2);
    const cad::Handle other = db.AddLayer("OTHER", 3);
    db.SetCurrentLayer(other);
    EXPECT_EQ(LayerIdByName(db, "dim"), dim);
    EXPECT_EQ(LayerIdByName(db, "NO_SUCH"), other);
}

namespace {

// A block of a 2 x 1 box with an invisible far line, an empty text, and two text points.
cad::Handle SymbolBlock(cad::Database& db) {
    const cad::Handle block = db.DefineBlock("SYM");
    auto* box = db.AppendNew<cad::LwPolyline>(block);
    box->vertices = {{0, 0}, {2, 0}, {2, 1}, {0, 1}};
    box->closed = true;
    auto* hidden = db.AppendNew<cad::Line>(block);
    hidden->end = {50, 50, 0};
    hidden->visible = false;
    auto* empty = db.AppendNew<cad::Text>(block);
    empty->text = "";
    empty->SetAnchor({-40, -40, 0});
    const cad::Handle pointLayer = db.AddLayer(kTermTextPointLayer, -8);
    for (const cad::Point3d p : {cad::Point3d{1, 2, 0}, cad::Point3d{3, 0, 0}}) {
        auto* point = db.AppendNew<cad::PointEntity>(block);
        point->position = p;
        point->layer = pointLayer;
    }
    auto* other = db.AppendNew<cad::PointEntity>(block);  // a point on another layer
    other->position = {1, 0.5, 0};
    return block;
}

}  // namespace

TEST(BlockReferenceExtentsTest, MeasuresTheVisibleBlockUnderItsTransform) {
    cad::Database db;
    const cad::Handle block = SymbolBlock(db);
    auto* ref = db.InsertBlock(block, {10, 0, 0}, {1, 1, 1}, std::numbers::pi / 2);
    cad::Point3d min, max;
    ASSERT_TRUE(BlockReferenceExtents(db, ref->handle, min, max));
    // Turned a quarter left about (10,0): x from 9 to 10, y from 0 to 2. The text points
    // (on a layer that is off) reach beyond that and are not measured.
    EXPECT_NEAR(min.x, 9, 1e-9);
    EXPECT_NEAR(max.x, 10, 1e-9);
    EXPECT_NEAR(min.y, 0, 1e-9);
    EXPECT_NEAR(max.y, 2, 1e-9);
    EXPECT_FALSE(BlockReferenceExtents(db, block, min, max));  // not a reference
}

TEST(SymbolData, TermTextPointsFollowTheReferenceInDrawingOrder) {
    cad::Database db;
    const cad::Handle block = SymbolBlock(db);
    auto* ref = db.InsertBlock(block, {10, 5, 0}, {2, 2, 2}, std::numbers::pi / 2);
    CGetSymbData reader;
    std::vector<STRUCT_TERMTEXTPOINT> points;
    ASSERT_TRUE(reader.GetTermTextPoints(db, ref->handle, points));
    ASSERT_EQ(points.size(), 2u);  // the point on another layer is not a text point
    EXPECT_EQ(points[0].index, 0);
    EXPECT_EQ(points[1].index, 1);
    // (1,2) scaled by 2 and turned a quarter left: (-4,2), then moved to (10,5).
    EXPECT_NEAR(points[0].point.x, 6, 1e-9);
    EXPECT_NEAR(points[0].point.y, 7, 1e-9);
    EXPECT_NEAR(points[1].point.x, 10, 1e-9);
    EXPECT_NEAR(points[1].point.y, 11, 1e-9);

    EXPECT_FALSE(reader.GetTermTextPoints(db, block, points));
    EXPECT_TRUE(points.empty());
    db.Erase(ref->handle);
    EXPECT_FALSE(reader.GetTermTextPoints(db, ref->handle, points));
}
