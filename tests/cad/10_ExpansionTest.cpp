// Block references expand within bounds: a block that contains itself, nesting past the
// limit or more instances (a huge grid among them) than the drawing's budget is refused with a
// message naming the cause, by counting, measuring, exploding and copying alike, and a refused
// explode or copy changes nothing. Grids of references expand cell by cell.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "cad/Database.h"
#include "cad/Expansion.h"
#include "cad/Operations.h"

namespace cad {
namespace {

// Blocks "B0" ... "B<depth>": each holds `fanOut` references to the next, the last one line.
// Model space holds one reference to "B0", so the line is nested depth + 1 blocks deep.
Handle Chain(Database& db, int depth, int fanOut) {
    Handle inner = db.DefineBlock("B" + std::to_string(depth));
    auto line = std::make_unique<Line>();
    line->end = {1, 0, 0};
    db.Append(std::move(line), inner);
    for (int level = depth - 1; level >= 0; --level) {
        const Handle outer = db.DefineBlock("B" + std::to_string(level));
        for (int k = 0; k < fanOut; ++k) {
            db.InsertBlock(inner, {static_cast<double>(k), 0, 0}, {1, 1, 1}, 0, outer);
        }
        inner = outer;
    }
    return db.InsertBlock(inner, {})->handle;
}

// Block "SELF" holds a circle and three references to itself, as a fuzzed file does.
Handle SelfNested(Database& db) {
    const Handle self = db.DefineBlock("SELF");
    auto circle = std::make_unique<Circle>();
    circle->radius = 1;
    db.Append(std::move(circle), self);
    for (int k = 0; k < 3; ++k) {
        db.InsertBlock(self, {static_cast<double>(k), 0, 0}, {1, 1, 1}, 0, self);
    }
    return db.InsertBlock(self, {})->handle;
}

TEST(Expansion, EachBoundIsRefusedWithItsOwnMessage) {
    struct Case {
        const char* name;
        std::function<Handle(Database&)> build;
        const char* words;
    };
    const Case cases[] = {
        {"cycle", SelfNested, "block \"SELF\" contains itself"},
        {"too deep", [](Database& db) { return Chain(db, kMaxBlockNesting, 1); },
         "nested more than 16 deep"},
        {"too many", [](Database& db) { return Chain(db, 8, 10); }, "expands to more than"},
        {"huge grid",
         [](Database& db) {
             const Handle ref = Chain(db, 0, 1);
             auto* grid = db.Get<BlockReference>(ref);
             grid->columns = grid->rows = 32767;
             return ref;
         },
         "expands to more than"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Database db;
        const Handle ref = c.build(db);
        std::string error;
        EXPECT_FALSE(CheckExpansion(db, db.ModelSpace(), error));
        EXPECT_NE(error.find(c.words), std::string::npos) << error;
        error.clear();
        EXPECT_FALSE(CheckExpansion(db, *db.Get<Entity>(ref), error));
        EXPECT_NE(error.find(c.words), std::string::npos) << error;
    }
    // Just within each bound.
    Database deep;
    Chain(deep, kMaxBlockNesting - 1, 1);
    std::string error;
    EXPECT_TRUE(CheckExpansion(deep, deep.ModelSpace(), error)) << error;
    Database grid;
    auto* ref = grid.Get<BlockReference>(Chain(grid, 0, 1));
    ref->columns = 4;
    ref->rows = 5;
    ExpansionCounter counter(grid);
    EXPECT_TRUE(counter.AddBlock(grid.ModelSpace())) << counter.Error();
    EXPECT_EQ(counter.Total(), 1 + 4 * 5);  // the reference and one line per cell
}

TEST(Expansion, RefusedExplodeAndCopyChangeNothingAndSayWhy) {
    Database db;
    const Handle ref = Chain(db, 8, 10);  // 10^8 lines from a few dozen objects
    const std::size_t before = db.ObjectCount();
    std::string error;
    EXPECT_TRUE(ExplodeReference(db, ref, &error).empty());
    EXPECT_NE(error.find("expands to more than"), std::string::npos) << error;
    EXPECT_FALSE(db.Get<Entity>(ref)->erased);
    error.clear();
    EXPECT_EQ(ExplodeAllReferences(db, kNullHandle, &error), -1);
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(db.ObjectCount(), before);

    Database cyclic;
    SelfNested(cyclic);
    Database target;
    const std::size_t targetBefore = target.ObjectCount();
    error.clear();
    EXPECT_EQ(InsertAsBlock(target, cyclic, "SYMBOL", &error), kNullHandle);
    EXPECT_NE(error.find("block \"SELF\" contains itself"), std::string::npos) << error;
    EXPECT_EQ(target.ObjectCount(), targetBefore);
    EXPECT_EQ(target.FindBlock("SYMBOL"), kNullHandle);
}

TEST(Expansion, MeasuringLeavesOutACycleWithAnErrorAndStaysLinearOnWideNesting) {
    Database db;
    const Handle ref = SelfNested(db);
    std::string error;
    const auto box = EntityExtents(db, *db.Get<Entity>(ref), &error);
    EXPECT_NE(error.find("contains itself"), std::string::npos) << error;
    ASSERT_TRUE(box.has_value());  // the circle of the outer level still counts
    EXPECT_EQ(box->min.x, -1);

    Database wide;
    Chain(wide, kMaxBlockNesting - 1, 10);  // 10^15 lines: measured through each block once
    error.clear();
    const auto all = SpaceExtents(wide, kNullHandle, &error);
    EXPECT_EQ(error, "");
    ASSERT_TRUE(all.has_value());
    EXPECT_EQ(all->max.x, 9.0 * (kMaxBlockNesting - 1) + 1);
}

TEST(Expansion, ExplodingAGridPlacesOneCopyPerCellAlongTheRotatedAxes) {
    Database db;
    const Handle block = db.DefineBlock("CELL");
    auto point = std::make_unique<PointEntity>();
    db.Append(std::move(point), block);
    auto* ref = db.InsertBlock(block, {100, 0, 0}, {1, 1, 1}, std::numbers::pi / 2);
    ref->columns = 2;
    ref->rows = 3;
    ref->columnSpacing = 10;
    ref->rowSpacing = 1;
    std::string error;
    const auto made = ExplodeReference(db, ref->handle, &error);
    ASSERT_EQ(made.size(), 6u) << error;
    std::vector<Point3d> at;
    for (Handle h : made) {
        const Point3d p = db.Get<PointEntity>(h)->position;
        at.push_back({std::round(p.x * 1e9) / 1e9, std::round(p.y * 1e9) / 1e9, 0});
    }
    // Columns run along the reference's X axis, turned to +Y; rows along its Y, turned to -X.
    EXPECT_NE(std::find(at.begin(), at.end(), Point3d{100, 10, 0}), at.end());
    EXPECT_NE(std::find(at.begin(), at.end(), Point3d{98, 10, 0}), at.end());
    EXPECT_NE(std::find(at.begin(), at.end(), Point3d{98, 0, 0}), at.end());
}

}  // namespace
}  // namespace cad
