// The entity walk: what it hands to a canvas for the entities of a drawing database.
#include "cad/render/EntityWalk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "cad/render/Colours.h"

using namespace cad::render;

namespace {

struct Call {
    std::string kind;
    Rgb colour;
    std::vector<Point2> points;
    double radius = 0;
    TextLine text;
    TextBlock block;
    std::vector<PolyVertex> vertices;
};

class RecordingCanvas : public Canvas {
public:
    std::vector<Call> calls;

    void Line(Point2 a, Point2 b, Rgb c) override { calls.push_back({"line", c, {a, b}}); }
    void Polyline(const std::vector<PolyVertex>& v, bool, Rgb c) override {
        Call call{"polyline", c};
        call.vertices = v;
        calls.push_back(call);
    }
    void Circle(Point2 centre, double r, Rgb c) override {
        calls.push_back({"circle", c, {centre}, r});
    }
    void Arc(Point2 centre, double r, double a0, double a1, Rgb c) override {
        calls.push_back({"arc", c, {centre, {a0, a1}}, r});
    }
    void Dot(Point2 at, Rgb c) override { calls.push_back({"dot", c, {at}}); }
    void Text(const TextLine& line, Rgb c) override {
        Call call{"text", c};
        call.text = line;
        calls.push_back(call);
    }
    void MText(const TextBlock& block, Rgb c) override {
        Call call{"mtext", c};
        call.block = block;
        calls.push_back(call);
    }
    void Fill(const std::vector<std::vector<Point2>>& rings, Rgb c) override {
        Call call{"fill", c};
        for (const auto& ring : rings) {
            call.points.insert(call.points.end(), ring.begin(), ring.end());
        }
        calls.push_back(call);
    }
};

constexpr Rgb kWhite{1, 1, 1};

bool Near(Point2 a, Point2 b) {
    return std::abs(a.x - b.x) < 1e-9 && std::abs(a.y - b.y) < 1e-9;
}

cad::Line* AddLine(cad::Database& db, cad::Handle space = cad::kNullHandle) {
    auto* line = db.AppendNew<cad::Line>(space);
    line->end = {1, 0, 0};
    return line;
}

}  // namespace

TEST(EntityWalk, LeavesOutWhatIsNotShown) {
    cad::Database db;
    const cad::Handle off = db.AddLayer("OFF", -3);
    const cad::Handle frozen = db.AddLayer("FROZEN", 3);
    db.Layer(frozen)->flags = 1;
    AddLine(db)->layer = off;
    AddLine(db)->layer = frozen;
    AddLine(db)->visible = false;
    AddLine(db);
    auto* erased = AddLine(db);
    db.Erase(erased->handle);
    RecordingCanvas canvas;
    const WalkCounts counts = DrawSpace(db, canvas, {});
    EXPECT_EQ(canvas.calls.size(), 1u);
    EXPECT_EQ(counts.drawn, 1);
    EXPECT_EQ(counts.skipped, 3);  // the erased line is not in the space at all
}

TEST(EntityWalk, ResolvesByLayerAndForegroundColours) {
    cad::Database db;
    AddLine(db)->layer = db.AddLayer("GREEN", 3);
    AddLine(db)->color = 7;
    AddLine(db)->color = 1;
    RecordingCanvas light, dark;
    DrawSpace(db, light, {});
    WalkOptions onBlack;
    onBlack.background = {0, 0, 0};
    DrawSpace(db, dark, onBlack);
    ASSERT_EQ(light.calls.size(), 3u);
    EXPECT_EQ(dark.calls[0].colour, (Rgb{0, 1, 0}));
    EXPECT_EQ(light.calls[1].colour, (Rgb{0, 0, 0}));
    EXPECT_EQ(dark.calls[1].colour, (Rgb{1, 1, 1}));
    EXPECT_EQ(light.calls[2].colour, (Rgb{1, 0, 0}));
}

TEST(Colours, LightColoursAreDarkenedOnWhiteKeepingTheirHue) {
    const Rgb yellow = PaintColour(2, kWhite);
    EXPECT_DOUBLE_EQ(yellow.r, yellow.g);
    EXPECT_EQ(yellow.b, 0);
    EXPECT_LT(yellow.r, 0.6);
    EXPECT_EQ(PaintColour(2, {0, 0, 0}), (Rgb{1, 1, 0}));
    // The hue wheel: 10 is pure red, 90 pure cyan-green half way; odd indices are tints.
    EXPECT_EQ(IndexColour(10, kWhite), (Rgb{1, 0, 0}));
    const Rgb tint = IndexColour(11, kWhite);
    EXPECT_EQ(tint.r, 1);
    EXPECT_DOUBLE_EQ(tint.g, 0.5);
    EXPECT_EQ(IndexColour(0, kWhite), IndexColour(7, kWhite));
}

TEST(EntityWalk, BlockReferencesAreDrawnThroughTheirTransform) {
    cad::Database db;
    const cad::Handle block = db.DefineBlock("B");
    auto* circle = db.AppendNew<cad::Circle>(block);
    circle->center = {1, 0, 0};
    circle->radius = 1;
    circle->color = cad::kColorByBlock;
    auto* pl = db.AppendNew<cad::LwPolyline>(block);
    pl->vertices = {{0, 0, -1, -1, 1.0}, {1, 0, 0.5, 0.25, 0}};
    pl->constantWidth = 0.1;
    pl->layer = db.FindLayer("0");
    auto* ref = db.InsertBlock(block, {10, 5, 0}, {2, 2, 1}, std::numbers::pi / 2);
    ref->color = 5;
    ref->layer = db.AddLayer("REFS", 4);
    RecordingCanvas canvas;
    DrawSpace(db, canvas, {});
    ASSERT_EQ(canvas.calls.size(), 2u);
    EXPECT_TRUE(Near(canvas.calls[0].points[0], {10, 7}));
    EXPECT_DOUBLE_EQ(canvas.calls[0].radius, 2);
    EXPECT_EQ(canvas.calls[0].colour, (Rgb{0, 0, 1}));  // ByBlock: the reference's colour
    const auto& v = canvas.calls[1].vertices;
    ASSERT_EQ(v.size(), 2u);
    EXPECT_DOUBLE_EQ(v[0].startWidth, 0.2);  // the constant width, scaled
    EXPECT_DOUBLE_EQ(v[1].startWidth, 1.0);
    EXPECT_DOUBLE_EQ(v[0].bulge, 1.0);
    // On layer 0 inside a block an entity takes the reference's layer (cyan, darkened).
    EXPECT_EQ(canvas.calls[1].colour, PaintColour(4, kWhite));
}

TEST(EntityWalk, MirroredReferenceTurnsBulgesAndArcsTheOtherWay) {
    cad::Database db;
    const cad::Handle block = db.DefineBlock("M");
    auto* pl = db.AppendNew<cad::LwPolyline>(block);
    pl->vertices = {{0, 0, -1, -1, 0.5}, {1, 0, -1, -1, 0}};
    auto* arc = db.AppendNew<cad::Arc>(block);
    arc->radius = 1;
    arc->startAngle = 0;
    arc->endAngle = std::numbers::pi / 2;  // the upper right quarter
    db.InsertBlock(block, {0, 0, 0}, {-1, 1, 1});
    RecordingCanvas canvas;
    DrawSpace(db, canvas, {});
    ASSERT_EQ(canvas.calls.size(), 2u);
    EXPECT_DOUBLE_EQ(canvas.calls[0].vertices[0].bulge, -0.5);
    // Mirrored in X it is the upper left quarter: counter-clockwise from 90 to 180 degrees.
    EXPECT_NEAR(canvas.calls[1].points[1].x, std::numbers::pi / 2, 1e-9);
    EXPECT_NEAR(canvas.calls[1].points[1].y, std::numbers::pi, 1e-9);
}

TEST(EntityWalk, AttributesAndTheirDefinitions) {
    cad::Database db;
    const cad::Handle block = db.DefineBlock("A");
    auto* def = db.AppendNew<cad::AttributeDefinition>(block);
    def->tag = "TAG";
    def->text = "default";
    auto* ref = db.InsertBlock(block, {0, 0, 0});
    ASSERT_EQ(ref->attributes.size(), 1u);
    auto hidden = std::make_unique<cad::Attribute>();
    hidden->text = "hidden";
    hidden->flags = 1;
    db.AddAttribute(ref->handle, std::move(hidden));

    RecordingCanvas inModel;
    DrawSpace(db, inModel, {});
    // The definition is not drawn inside the reference; the visible attribute is.
    ASSERT_EQ(inModel.calls.size(), 1u);
    EXPECT_EQ(inModel.calls[0].text.text, "default");

    RecordingCanvas blockItself;
    DrawSpace(db, blockItself, {}, block);
    ASSERT_EQ(blockItself.calls.size(), 1u);
    EXPECT_EQ(blockItself.calls[0].text.text, "TAG");  // the block itself shows the tag
}

TEST(EntityWalk, TextModesBecomeAlignmentsAndFits) {
    cad::Database db;
    auto* middle = db.AppendNew<cad::Text>();
    middle->text = "12";
    middle->horizontal = cad::TextHorz::Middle;
    middle->SetAnchor({5, 5, 0});
    auto* fit = db.AppendNew<cad::Text>();
    fit->text = "fit";
    fit->horizontal = cad::TextHorz::Fit;
    fit->position = {0, 0, 0};
    fit->alignment = {0, 8, 0};
    auto* empty = db.AppendNew<cad::Text>();
    empty->text = "";
    RecordingCanvas canvas;
    DrawSpace(db, canvas, {});
    ASSERT_EQ(canvas.calls.size(), 2u);
    EXPECT_EQ(canvas.calls[0].text.hAlign, HAlign::Center);
    EXPECT_EQ(canvas.calls[0].text.vAlign, VAlign::Middle);
    EXPECT_TRUE(Near(canvas.calls[0].text.anchor, {5, 5}));
    EXPECT_DOUBLE_EQ(canvas.calls[1].text.fitLength, 8);
    EXPECT_NEAR(canvas.calls[1].text.rotation, std::numbers::pi / 2, 1e-12);
}

TEST(EntityWalk, MTextArrivesAsParagraphs) {
    cad::Database db;
    auto* mtext = db.AppendNew<cad::MText>();
    mtext->contents = "厂家:甲\\P模块代号:X1";
    mtext->attachment = 5;
    mtext->height = 2.5;
    mtext->rotation = std::numbers::pi / 2;
    RecordingCanvas canvas;
    DrawSpace(db, canvas, {});
    ASSERT_EQ(canvas.calls.size(), 1u);
    const TextBlock& block = canvas.calls[0].block;
    EXPECT_EQ(block.paragraphs, (std::vector<std::string>{"厂家:甲", "模块代号:X1"}));
    EXPECT_EQ(block.attachment, 5);
    EXPECT_DOUBLE_EQ(block.height, 2.5);
    EXPECT_NEAR(block.rotation, std::numbers::pi / 2, 1e-12);
}

TEST(EntityWalk, AGridIsDrawnCellByCellAndASelfNestedBlockNotAtAll) {
    cad::Database db;
    const cad::Handle block = db.DefineBlock("CELL");
    db.AppendNew<cad::PointEntity>(block);
    auto* grid = db.InsertBlock(block, {1, 2, 0});
    grid->columns = 3;
    grid->rows = 2;
    grid->columnSpacing = 10;
    grid->rowSpacing = 100;
    RecordingCanvas canvas;
    EXPECT_EQ(DrawSpace(db, canvas, {}).refused, "");
    ASSERT_EQ(canvas.calls.size(), 6u);
    EXPECT_TRUE(Near(canvas.calls.back().points[0], {21, 102}));

    // Three references to itself: 3^16 instances before the nesting limit stops them.
    const cad::Handle self = db.DefineBlock("SELF");
    db.AppendNew<cad::Line>(self);
    for (int k = 0; k < 3; ++k) {
        db.InsertBlock(self, {static_cast<double>(k), 0, 0}, {1, 1, 1}, 0, self);
    }
    db.InsertBlock(self, {});
    RecordingCanvas refused;
    const WalkCounts counts = DrawSpace(db, refused, {});
    EXPECT_NE(counts.refused.find("block \"SELF\" contains itself"), std::string::npos)
        << counts.refused;
    EXPECT_TRUE(refused.calls.empty());
}
