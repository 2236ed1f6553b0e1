#include "cad/render/Geometry2d.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace cad::render;

namespace {

bool Near(Point2 a, Point2 b, double tol = 1e-9) {
    return std::abs(a.x - b.x) < tol && std::abs(a.y - b.y) < tol;
}

}  // namespace

TEST(BulgeArc, HalfCircleBulgeOneTurnsCounterClockwiseBelowTheChord) {
    BulgeArc arc;
    ASSERT_TRUE(ArcFromBulge({0, 0}, {2, 0}, 1.0, arc));
    EXPECT_TRUE(Near(arc.centre, {1, 0}));
    EXPECT_NEAR(arc.radius, 1.0, 1e-12);
    EXPECT_NEAR(arc.sweep, std::numbers::pi, 1e-12);
    // Counter-clockwise from (0,0) to (2,0) about (1,0) passes (1,-1); clockwise (1,1).
    const auto ccw = SegmentPoints({0, 0}, {2, 0}, 1.0);
    const auto cw = SegmentPoints({0, 0}, {2, 0}, -1.0);
    EXPECT_NEAR(ccw[ccw.size() / 2].y, -1.0, 0.01);
    EXPECT_NEAR(cw[cw.size() / 2].y, 1.0, 0.01);
    EXPECT_TRUE(Near(ccw.front(), {0, 0}));
    EXPECT_TRUE(Near(ccw.back(), {2, 0}));
}

TEST(BulgeArc, QuarterBulgeGivesTheRadiusOfItsChord) {
    // tan(90deg / 4): a quarter circle from (1,0) to (0,1) about the origin.
    BulgeArc arc;
    ASSERT_TRUE(ArcFromBulge({1, 0}, {0, 1}, std::tan(std::numbers::pi / 8), arc));
    EXPECT_TRUE(Near(arc.centre, {0, 0}, 1e-9));
    EXPECT_NEAR(arc.radius, 1.0, 1e-9);
    for (const auto& p : SegmentPoints({1, 0}, {0, 1}, std::tan(std::numbers::pi / 8))) {
        EXPECT_NEAR(std::hypot(p.x, p.y), 1.0, 1e-9);
    }
}

TEST(BulgeArc, StraightAndDegenerateSegmentsAreNotArcs) {
    BulgeArc arc;
    EXPECT_FALSE(ArcFromBulge({0, 0}, {3, 4}, 0.0, arc));
    EXPECT_FALSE(ArcFromBulge({1, 1}, {1, 1}, 1.0, arc));
    EXPECT_EQ(SegmentPoints({0, 0}, {3, 4}, 0.0).size(), 2u);
}

TEST(WideSegment, OutlineFollowsTheTaperOnBothSides) {
    const auto outline = WideSegmentOutline({0, 0}, {10, 0}, 0, 0, 2);
    ASSERT_EQ(outline.size(), 4u);
    EXPECT_TRUE(Near(outline[0], {0, 0}));
    EXPECT_TRUE(Near(outline[1], {10, 1}));
    EXPECT_TRUE(Near(outline[2], {10, -1}));
    EXPECT_TRUE(Near(outline[3], {0, 0}));
}

TEST(WideSegment, DonutOfTwoBulgesCoversItsFullRadius) {
    // The red direction dot of the symbols: two half circles as wide as the radius.
    double maxR = 0, minR = 1e9;
    for (const auto& [from, to] : {std::pair<Point2, Point2>{{-0.125, 0}, {0.125, 0}},
                                   std::pair<Point2, Point2>{{0.125, 0}, {-0.125, 0}}}) {
        for (const auto& p : WideSegmentOutline(from, to, 1.0, 0.25, 0.25)) {
            maxR = std::max(maxR, std::hypot(p.x, p.y));
            minR = std::min(minR, std::hypot(p.x, p.y));
        }
    }
    EXPECT_NEAR(maxR, 0.25, 1e-9);
    EXPECT_NEAR(minR, 0.0, 1e-9);
}

TEST(ArcPoints, SweepsCounterClockwiseAcrossZero) {
    const double deg = std::numbers::pi / 180;
    const auto points = ArcPoints({0, 0}, 2, 350 * deg, 10 * deg);
    for (const auto& p : points) {
        EXPECT_GT(p.x, 1.9);  // the short way through 0 degrees, not round the back
    }
    EXPECT_NEAR(points.back().y, 2 * std::sin(10 * deg), 1e-9);
}
