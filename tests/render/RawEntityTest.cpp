// Entities kept as raw tags, written by ezdxf, drawn and measured by the entity walk.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>

#include "PixelImage.h"
#include "TestPaths.h"
#include "cad/Dxf.h"
#include "cad/Operations.h"
#include "cad/RawShapes.h"
#include "cad/render/BoundsCanvas.h"
#include "cad/render/EntityWalk.h"
#include "cad/render/Render.h"

using namespace cad::render;
using render_test::PixelImage;

namespace {

// Counts what the walk hands over, and keeps every point stroked or filled.
class TallyCanvas : public BoundsCanvas {
public:
    std::map<std::string, int> calls;
    std::vector<Point2> stroked, filled;
    std::vector<Rgb> fillColours;

    void Line(Point2 a, Point2 b, Rgb c) override {
        ++calls["line"];
        stroked.insert(stroked.end(), {a, b});
        BoundsCanvas::Line(a, b, c);
    }
    void Polyline(const std::vector<PolyVertex>& v, bool closed, Rgb c) override {
        ++calls["polyline"];
        for (const auto& x : v) {
            stroked.push_back(x.point);
        }
        BoundsCanvas::Polyline(v, closed, c);
    }
    void Text(const TextLine& line, Rgb c) override {
        ++calls["text"];
        BoundsCanvas::Text(line, c);
    }
    void MText(const TextBlock& block, Rgb c) override {
        ++calls["text"];
        BoundsCanvas::MText(block, c);
    }
    void Fill(const std::vector<std::vector<Point2>>& rings, Rgb c) override {
        ++calls["fill"];
        fillColours.push_back(c);
        for (const auto& r : rings) {
            filled.insert(filled.end(), r.begin(), r.end());
        }
        BoundsCanvas::Fill(rings, c);
    }
};

class RawEntityTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dir_ = std::make_unique<testing_support::TempDir>();
        const auto script = testing_support::SourceDir() / "tests/render/make_entities.py";
        ASSERT_EQ(testing_support::RunCommand(testing_support::Python() + " " + script.string() +
                                              " " + dir_->Path().string()),
                  0);
    }
    static void TearDownTestSuite() { dir_.reset(); }

    std::unique_ptr<cad::Database> Read(const std::string& name) {
        return cad::ReadDxfFile((dir_->Path() / (name + ".dxf")).string());
    }
    TallyCanvas Walk(const std::string& name) {
        const auto db = Read(name);
        TallyCanvas canvas;
        DrawSpace(*db, canvas, {});
        return canvas;
    }
    std::string Png(const std::string& name) {
        const auto db = Read(name);
        const std::string out = (dir_->Path() / (name + ".png")).string();
        RenderOptions options;
        options.picture.widthPx = 200;
        std::string error;
        EXPECT_TRUE(RenderToFile(*db, out, options, error)) << error;
        return out;
    }

    static std::unique_ptr<testing_support::TempDir> dir_;
};

std::unique_ptr<testing_support::TempDir> RawEntityTest::dir_;

void ExpectBox(const Box& box, double x0, double y0, double x1, double y1, double tol = 1e-3) {
    EXPECT_NEAR(box.min.x, x0, tol);
    EXPECT_NEAR(box.min.y, y0, tol);
    EXPECT_NEAR(box.max.x, x1, tol);
    EXPECT_NEAR(box.max.y, y1, tol);
}

double Nearest(const std::vector<Point2>& points, Point2 to) {
    double best = 1e300;
    for (const auto& p : points) {
        best = std::min(best, std::hypot(p.x - to.x, p.y - to.y));
    }
    return best;
}

bool IsGreen(render_test::Pixel p) {
    return p.g > 150 && p.r < 100 && p.b < 100;
}

}  // namespace

TEST_F(RawEntityTest, EllipsesReachTheirAxesEndsAndArcsStopAtTheirParameters) {
    ExpectBox(Walk("ellipse").Bounds(), -3, 0, 5, 4);
    // Major axis up, minor to the left: the half from 0 to pi lies left of the centre.
    ExpectBox(Walk("ellipse_arc").Bounds(), -2, -4, 0, 4);
    const auto db = Read("ellipse");
    const auto extents = cad::SpaceExtents(*db);
    ASSERT_TRUE(extents);
    EXPECT_NEAR(extents->min.x, -3, 1e-3);
    EXPECT_NEAR(extents->max.y, 4, 1e-3);
}

TEST_F(RawEntityTest, SplinesPassThroughTheirFitPointsAndRationalOnesAreExact) {
    const auto spline = Walk("spline");
    for (Point2 fit : {Point2{0, 0}, Point2{3, 4}, Point2{6, -2}, Point2{10, 1}}) {
        EXPECT_LT(Nearest(spline.stroked, fit), 0.05) << fit.x << "," << fit.y;
    }
    // A quarter circle as a rational quadratic: every point lies on the unit circle.
    const auto nurbs = Walk("nurbs");
    ASSERT_GT(nurbs.stroked.size(), 10u);
    for (const auto& p : nurbs.stroked) {
        EXPECT_NEAR(std::hypot(p.x, p.y), 1, 1e-9);
    }
}

TEST_F(RawEntityTest, PolylinesWithVerticesFollowBulgesAndDrawMeshEdges) {
    // A bulge of 1 from (0,0) to (10,0) is a half circle below the chord.
    ExpectBox(Walk("polyline2d").Bounds(), 0, -5, 10, 0, 0.02);
    ExpectBox(Walk("polyline3d").Bounds(), 0, 0, 10, 5);
    EXPECT_EQ(Walk("polyface").calls["polyline"], 3);  // the triangle's three edges
    EXPECT_EQ(Walk("mesh").calls["polyline"], 6);      // three rows, three columns
}

TEST_F(RawEntityTest, SolidHatchesAndSolidsFillTheirInside) {
    for (const std::string name : {"hatch_solid", "solid"}) {
        const PixelImage image(Png(name));
        ASSERT_TRUE(image.Ok());
        EXPECT_TRUE(render_test::IsRed(image.At(image.Width() / 2, image.Height() / 2))) << name;
    }
    auto arc = Walk("hatch_arc");
    EXPECT_EQ(arc.calls["fill"], 1);
    ExpectBox(arc.Bounds(), -4, 0, 4, 4, 0.01);
    const PixelImage half(Png("hatch_arc"));
    EXPECT_TRUE(IsGreen(half.At(half.Width() / 2, half.Height() * 2 / 3)));
}

TEST_F(RawEntityTest, PatternHatchesDrawTheirLinesClippedToTheBoundary) {
    auto pattern = Walk("hatch_pattern");
    EXPECT_EQ(pattern.calls["fill"], 0);
    EXPECT_GT(pattern.calls["polyline"], 5);
    for (const auto& p : pattern.stroked) {
        EXPECT_TRUE(p.x > -1e-6 && p.x < 10 + 1e-6 && p.y > -1e-6 && p.y < 10 + 1e-6);
    }
    // Diagonal lines cross the middle of the square.
    EXPECT_LT(Nearest(pattern.stroked, {0, 0}), 0.5);
}

TEST_F(RawEntityTest, FacesLeaveOutTheirInvisibleEdges) {
    auto face = Walk("face");
    EXPECT_EQ(face.calls["polyline"], 3);
    EXPECT_GT(Nearest(face.stroked, {5, 0}), 4);  // the first edge is hidden
}

TEST_F(RawEntityTest, LeadersDrawTheirPathAndAnArrowHeadAtTheFirstVertex) {
    auto leader = Walk("leader");
    EXPECT_EQ(leader.calls["fill"], 1);
    EXPECT_LT(Nearest(leader.filled, {0, 0}), 1e-9);
    ExpectBox(leader.Bounds(), 0, 0, 20, 10, 0.5);
}

TEST_F(RawEntityTest, DimensionsDrawTheirBlockWithTextAndArrows) {
    auto dim = Walk("dimension");
    EXPECT_GE(dim.calls["text"], 1);
    EXPECT_GE(dim.calls["fill"] + dim.calls["polyline"], 2);  // the arrow heads
    EXPECT_GT(dim.Bounds().max.y, 5);  // the dimension line above the measured one
    const auto db = Read("dimension");
    const auto extents = cad::SpaceExtents(*db);
    ASSERT_TRUE(extents);
    EXPECT_GT(extents->max.y, 5);
}

TEST_F(RawEntityTest, LinesWithoutEndReachAcrossTheDrawingButDoNotWidenIt) {
    auto lines = Walk("xline");
    ExpectBox(lines.Bounds(), 0, 0, 10, 10);
    EXPECT_LT(Nearest(lines.stroked, {5, 0}), 1e-9);
    EXPECT_LT(Nearest(lines.stroked, {5, 10}), 1e-9);
    EXPECT_LT(Nearest(lines.stroked, {10, 5}), 1e-9);
    EXPECT_GT(Nearest(lines.stroked, {0.5, 5}), 0.4);  // a ray starts at its base
    // A view given by the caller is where they stop.
    const auto db = Read("xline");
    TallyCanvas canvas;
    WalkOptions options;
    options.view.Add({-100, -100});
    options.view.Add({100, 100});
    DrawSpace(*db, canvas, options);
    EXPECT_NEAR(canvas.Bounds().max.y, 100, 1e-9);
    EXPECT_NEAR(canvas.Bounds().min.x, 0, 1e-9);
}

TEST_F(RawEntityTest, WipeoutsCoverWhatLiesBelowWithTheBackground) {
    auto walked = Walk("wipeout");
    ASSERT_EQ(walked.fillColours.size(), 2u);
    EXPECT_EQ(walked.fillColours[1], (Rgb{1, 1, 1}));
    const PixelImage image(Png("wipeout"));
    const auto centre = image.At(image.Width() / 2, image.Height() / 2);
    EXPECT_GT(centre.r + centre.g + centre.b, 700);
    EXPECT_TRUE(render_test::IsRed(image.At(image.Width() / 4, image.Height() / 4)));
}

TEST_F(RawEntityTest, SingleEntitiesDrawAloneAndBracketed) {
    const auto db = Read("xline");
    const auto entities = db->Entities(db->ModelSpace());
    ASSERT_EQ(entities.size(), 3u);
    TallyCanvas canvas;
    const WalkCounts counts = DrawEntity(*db, canvas, {}, entities[0]->handle);
    EXPECT_EQ(counts.drawn, 1);
    EXPECT_EQ(canvas.calls["line"], 1);
}
