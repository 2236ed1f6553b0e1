#include "cadutil/EntityHelpers.h"

#include <gtest/gtest.h>

#include "RecordingHost.h"

using cadutil::AddPolylineWithWidth;
using cadutil::AddPolylineWithWidths;

namespace {

size_t ModelCount(const cad::Database& db) {
    return db.Entities().size();
}

}  // namespace

TEST(AddPolyline, SegmentWidthsGoToTheirVerticesAndTheLastKeepsTheDefault) {
    cad::Database db;
    const cad::Handle h =
        AddPolylineWithWidths(&db, {{0, 0, 7}, {10, 0, 7}, {10, 5, 7}}, {0.5, 1.0, 2.0, 3.0});
    const auto* pl = db.Get<cad::LwPolyline>(h);
    ASSERT_NE(pl, nullptr);
    EXPECT_EQ(pl->owner, db.ModelSpace());
    ASSERT_EQ(pl->vertices.size(), 3u);
    EXPECT_DOUBLE_EQ(pl->vertices[0].startWidth, 0.5);
    EXPECT_DOUBLE_EQ(pl->vertices[0].endWidth, 1.0);
    EXPECT_DOUBLE_EQ(pl->vertices[1].startWidth, 2.0);
    EXPECT_DOUBLE_EQ(pl->vertices[1].endWidth, 3.0);
    EXPECT_LT(pl->vertices[2].startWidth, 0);  // the default width
    EXPECT_DOUBLE_EQ(pl->vertices[2].y, 5);
    EXPECT_DOUBLE_EQ(pl->elevation, 0);  // Z is dropped
    EXPECT_FALSE(pl->closed);
    for (const auto& v : pl->vertices) {
        EXPECT_EQ(v.bulge, 0);
    }
}

TEST(AddPolyline, WidthCountMustBeTwiceThePointsLessTwo) {
    cad::Database db;
    // One point and no widths: 2N - 2 = 0, so a one-vertex polyline is made.
    const cad::Handle one = AddPolylineWithWidths(&db, {{1, 2, 0}}, {});
    ASSERT_NE(db.Get<cad::LwPolyline>(one), nullptr);
    EXPECT_EQ(db.Get<cad::LwPolyline>(one)->vertices.size(), 1u);
    const size_t before = ModelCount(db);
    EXPECT_EQ(AddPolylineWithWidths(&db, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {1, 1, 1}),
              cad::kNullHandle);
    EXPECT_EQ(AddPolylineWithWidths(&db, {}, {}), cad::kNullHandle);
    EXPECT_EQ(AddPolylineWithWidths(nullptr, {{0, 0, 0}}, {}), cad::kNullHandle);
    EXPECT_EQ(ModelCount(db), before);  // nothing was created by the refusals
}

TEST(AddPolyline, OneWidthForEverySegment) {
    cad::Database db;
    const auto* pl = db.Get<cad::LwPolyline>(
        AddPolylineWithWidth(&db, {{0, 0, 0}, {5, 0, 0}, {5, 5, 0}, {0, 5, 0}}, 0.35));
    ASSERT_NE(pl, nullptr);
    ASSERT_EQ(pl->vertices.size(), 4u);
    for (size_t i = 0; i + 1 < pl->vertices.size(); ++i) {
        EXPECT_DOUBLE_EQ(pl->vertices[i].startWidth, 0.35);
        EXPECT_DOUBLE_EQ(pl->vertices[i].endWidth, 0.35);
    }
    EXPECT_EQ(AddPolylineWithWidth(&db, {}, 1.0), cad::kNullHandle);
}

TEST(EraseObject, SucceedsOnceForALiveObject) {
    cad::Database db;
    const cad::Handle h = AddPolylineWithWidth(&db, {{0, 0, 0}, {1, 1, 0}}, 0);
    EXPECT_TRUE(cadutil::EraseObject(&db, h));
    EXPECT_TRUE(db.Object(h)->erased);
    EXPECT_FALSE(cadutil::EraseObject(&db, h));
    EXPECT_FALSE(cadutil::EraseObject(&db, 0xFFFFFF));
    EXPECT_FALSE(cadutil::EraseObject(nullptr, h));
    EXPECT_TRUE(db.Entities().empty());
}

TEST(EntityExtentsTest, TrueOnlyForABoxWithAreaAndVisible) {
    cad::Database db;
    auto* flat = db.AppendNew<cad::Line>();
    flat->start = {0, 3, 0};
    flat->end = {10, 3, 0};
    auto* upright = db.AppendNew<cad::Line>();
    upright->end = {0, 4, 0};
    auto* circle = db.AppendNew<cad::Circle>();
    circle->center = {2, 3, 0};
    circle->radius = 1;
    cad::Point3d min, max;
    EXPECT_FALSE(cadutil::EntityExtents(db, *flat, min, max));
    EXPECT_FALSE(cadutil::EntityExtents(db, *upright, min, max));
    ASSERT_TRUE(cadutil::EntityExtents(db, *circle, min, max));
    EXPECT_NEAR(min.x, 1, 1e-9);
    EXPECT_NEAR(max.y, 4, 1e-9);
    circle->visible = false;
    EXPECT_FALSE(cadutil::EntityExtents(db, *circle, min, max));
}

TEST(HostServices, CommandStringsAndDrawingVariablesGoThroughTheHost) {
    testing_support::RecordingHost recording;
    host::ScopedHost scope(recording);
    cadutil::SendCommandString("");
    cadutil::SendCommandString("(Command)\nRendalFull\n");
    ASSERT_EQ(recording.sentCommands.size(), 1u);
    EXPECT_EQ(recording.sentCommands[0], "(Command)\nRendalFull\n");

    // dwgtitled is a number: only a non-zero one means titled.
    recording.variables = {{"dwgtitled", "0"}};
    EXPECT_FALSE(cadutil::DwgTitled());
    recording.variables["dwgtitled"] = "1";
    EXPECT_TRUE(cadutil::DwgTitled());
    recording.variables.erase("dwgtitled");
    EXPECT_FALSE(cadutil::DwgTitled());
}
