// Pictures written through the cairo back-ends: the files are real PNG and SVG, the view
// shows the whole drawing, and Chinese texts come out as glyphs of a CJK font.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numbers>
#include <vector>

#include "PixelImage.h"
#include "TestPaths.h"
#include "cad/render/BoundsCanvas.h"
#include "cad/render/CairoCanvas.h"
#include "cad/render/SceneFile.h"

using namespace cad::render;
using render_test::IsDark;
using render_test::IsInk;
using render_test::IsRed;
using render_test::PixelImage;
using testing_support::ReadFile;
using testing_support::TempDir;

namespace {

constexpr Rgb kRed{1, 0, 0};
constexpr Rgb kBlack{0, 0, 0};

// A red frame from (0,0) to (100,50) and a black diagonal.
void FrameAndDiagonal(Canvas& canvas) {
    canvas.Polyline({{{0, 0}}, {{100, 0}}, {{100, 50}}, {{0, 50}}}, true, kRed);
    canvas.Line({0, 0}, {100, 50}, kBlack);
}

TextLine Label(const std::string& text, Point2 at, double height) {
    TextLine line;
    line.text = text;
    line.anchor = at;
    line.height = height;
    return line;
}

}  // namespace

TEST(Picture, PngShowsTheWholeDrawingAtTheRequestedWidth) {
    TempDir dir;
    PictureOptions options;
    options.widthPx = 400;
    options.marginPx = 10;
    options.lineWidthPx = 2;  // whole pixels of pure colour, not anti-aliased tints
    std::string error;
    ASSERT_TRUE(WritePicture(FrameAndDiagonal, (dir / "frame.png").string(), options, error))
        << error;
    PixelImage image((dir / "frame.png").string());
    ASSERT_TRUE(image.Ok());
    EXPECT_EQ(image.Width(), 400);
    EXPECT_NEAR(image.Height(), 10 + 190 + 10, 2);  // the drawing's 2:1 shape kept
    // The frame's four sides lie just inside the margins, in red.
    EXPECT_GT(image.Count(0, 0, 400, 14, IsRed), 300);     // top edge
    EXPECT_GT(image.Count(0, 196, 400, 210, IsRed), 300);  // bottom edge
    EXPECT_GT(image.Count(0, 0, 14, 210, IsRed), 150);     // left edge
    EXPECT_GT(image.Count(386, 0, 400, 210, IsRed), 150);  // right edge
    // The diagonal runs from the lower left to the upper right: the Y axis points up.
    EXPECT_GT(image.Count(20, 170, 60, 200, IsDark), 10);
    EXPECT_EQ(image.Count(20, 20, 60, 50, IsDark), 0);
    // The margin outside the frame is background.
    EXPECT_EQ(image.Count(0, 0, 5, 5, IsInk), 0);
}

TEST(Picture, SvgIsAScalableDrawingOfTheSameSize) {
    TempDir dir;
    PictureOptions options;
    options.widthPx = 300;
    std::string error;
    const auto path = dir / "frame.SVG";  // the extension is matched in any case
    ASSERT_TRUE(WritePicture(FrameAndDiagonal, path.string(), options, error)) << error;
    const std::string svg = ReadFile(path);
    EXPECT_EQ(svg.rfind("<?xml", 0), 0u);
    EXPECT_NE(svg.find("<svg"), std::string::npos);
    EXPECT_NE(svg.find("width=\"300px\""), std::string::npos);
    EXPECT_NE(svg.find("rgb(100%,0%,0%)"), std::string::npos);  // the red frame
    EXPECT_NE(svg.find("</svg>"), std::string::npos);
}

TEST(Picture, RefusesBadRequestsWithoutWritingAnything) {
    TempDir dir;
    std::string error;
    PictureOptions options;
    EXPECT_FALSE(WritePicture(FrameAndDiagonal, (dir / "frame.jpg").string(), options, error));
    EXPECT_NE(error.find(".png or .svg"), std::string::npos);
    options.widthPx = 5;
    EXPECT_FALSE(WritePicture(FrameAndDiagonal, (dir / "frame.png").string(), options, error));
    EXPECT_NE(error.find("out of range"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(dir.Path()));
}

TEST(Picture, EmptyDrawingGivesABlankPicture) {
    TempDir dir;
    std::string error;
    const auto nothing = [](Canvas&) {};
    ASSERT_TRUE(WritePicture(nothing, (dir / "blank.png").string(), {}, error)) << error;
    PixelImage image((dir / "blank.png").string());
    ASSERT_TRUE(image.Ok());
    EXPECT_EQ(image.Count(IsInk), 0);
}

TEST(Picture, ChineseTextIsDrawnWithRealGlyphs) {
    // Two different characters must give different pictures: a font without CJK glyphs
    // draws the same empty box for both.
    TempDir dir;
    PictureOptions options;
    options.widthPx = 200;
    std::string error;
    const auto frame = [](Canvas& c) { c.Line({0, -2}, {12, -2}, {0.9, 0.9, 0.9}); };
    for (const char* ch : {"端", "子"}) {
        const auto draw = [&](Canvas& c) {
            frame(c);
            c.Text(Label(ch, {0, 0}, 8), kBlack);
        };
        ASSERT_TRUE(WritePicture(draw, (dir / (std::string(ch) + ".png")).string(), options, error))
            << error;
    }
    PixelImage a((dir / "端.png").string()), b((dir / "子.png").string());
    ASSERT_TRUE(a.Ok() && b.Ok());
    ASSERT_EQ(a.Width(), b.Width());
    ASSERT_EQ(a.Height(), b.Height());
    EXPECT_GT(a.Count(IsDark), 200);
    int differing = 0;
    for (int y = 0; y < a.Height(); ++y) {
        for (int x = 0; x < a.Width(); ++x) {
            differing += IsDark(a.At(x, y)) != IsDark(b.At(x, y)) ? 1 : 0;
        }
    }
    EXPECT_GT(differing, 100);
}

TEST(Picture, TextHeightAndRotationFollowTheDrawing) {
    // A capital height of 10 units at 10 px per unit stands about 100 px tall; turned a
    // quarter left it is about 100 px wide instead.
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 600, 600);
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    View view{{0, 60}, 10};
    CairoCanvas canvas(cr, view);
    canvas.Text(Label("HHH", {5, 30}, 10), kBlack);
    TextLine turned = Label("HHH", {55, 5}, 10);
    turned.rotation = std::numbers::pi / 2;
    canvas.Text(turned, kBlack);
    cairo_surface_flush(surface);
    const std::string png = (std::filesystem::temp_directory_path() / "qv_text_h.png").string();
    cairo_surface_write_to_png(surface, png.c_str());
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    PixelImage image(png);
    std::filesystem::remove(png);
    ASSERT_TRUE(image.Ok());
    // Upright "HHH": ink rows from y=300 (baseline) up to about y=200.
    int top = 600, bottom = 0;
    for (int y = 0; y < 600; ++y) {
        if (image.Count(0, y, 440, y + 1, IsDark) > 0) {
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    EXPECT_NEAR(bottom, 300, 3);
    EXPECT_NEAR(bottom - top, 100, 6);
    // The turned one stands between x=450 and its baseline at x=550, reaching up from y=550.
    int left = 600, right = 0;
    for (int x = 440; x < 600; ++x) {
        if (image.Count(x, 320, x + 1, 600, IsDark) > 0) {
            left = std::min(left, x);
            right = std::max(right, x);
        }
    }
    EXPECT_NEAR(right, 550, 3);
    EXPECT_NEAR(right - left, 100, 6);
}

TEST(Picture, BoundsCoverWideSegmentsAndEstimatedTexts) {
    BoundsCanvas bounds;
    bounds.Polyline({{{0, 0}, 4, 4, 0}, {{10, 0}}}, false, kBlack);
    EXPECT_DOUBLE_EQ(bounds.Bounds().min.y, -2);
    EXPECT_DOUBLE_EQ(bounds.Bounds().max.y, 2);
    TextLine right = Label("模块", {0, 0}, 2);
    right.hAlign = HAlign::Right;
    bounds.Text(right, kBlack);
    EXPECT_LT(bounds.Bounds().min.x, -4);  // two wide characters reach left of the anchor
}

TEST(Picture, AbsurdGeometryIsRefusedOrDrawnButNeverHangs) {
    TempDir dir;
    std::string error;
    const auto huge = [](Canvas& c) { c.Line({0, 0}, {1e300, -1e300}, kBlack); };
    EXPECT_FALSE(WritePicture(huge, (dir / "huge.png").string(), {}, error));
    EXPECT_NE(error.find("1e15"), std::string::npos) << error;
    // A text a million times the drawing's size next to a small line: drawn without it.
    const auto giantText = [](Canvas& c) {
        c.Line({0, 0}, {10, 10}, kBlack);
        TextLine line = Label("巨", {5, 5}, 1e-3);
        c.Text(line, kBlack);
        line.height = 1e7;
        line.anchor = {0, 0};
        CairoCanvas* cairo = dynamic_cast<CairoCanvas*>(&c);
        if (cairo) {  // only the painting pass: the bounds pass would grow the view
            c.Text(line, kBlack);
        }
    };
    ASSERT_TRUE(WritePicture(giantText, (dir / "giant.png").string(), {}, error)) << error;
    PixelImage image((dir / "giant.png").string());
    ASSERT_TRUE(image.Ok());
    EXPECT_GT(image.Count(IsDark), 100);  // the line is there
}

TEST(Picture, SvgCarriesTheOutlinesOfChineseGlyphs) {
    // Viewers of the SVG need no CJK font: each glyph travels as an outline of its own.
    TempDir dir;
    std::string error;
    const auto draw = [](Canvas& c) { c.Text(Label("端子端", {0, 0}, 5), kBlack); };
    ASSERT_TRUE(WritePicture(draw, (dir / "t.svg").string(), {}, error)) << error;
    const std::string svg = ReadFile(dir / "t.svg");
    // Three characters are placed, from two outlines: the repeated one is shared.
    std::vector<std::string> uses;
    const std::string key = "xlink:href=\"#glyph";
    for (size_t at = svg.find(key); at != std::string::npos; at = svg.find(key, at + 1)) {
        uses.push_back(svg.substr(at, svg.find('"', at + key.size()) - at));
    }
    ASSERT_EQ(uses.size(), 3u);
    EXPECT_NE(uses[0], uses[1]);
    EXPECT_EQ(uses[0], uses[2]);
    EXPECT_EQ(svg.find("<text"), std::string::npos);
}

TEST(Picture, DotOfTwoHalfCirclesHasNoSeam) {
    // Regression: the two wide half circles of a direction marker left a light line along
    // their common diameter when their ends were not cut exactly radially.
    TempDir dir;
    PictureOptions options;
    options.widthPx = 216;
    options.marginPx = 8;  // 200 px for the dot's 20 units: 10 px per unit
    std::string error;
    const auto dot = [](Canvas& c) {
        c.Polyline({{{-5, 0}, 10, 10, 1.0}, {{5, 0}, 10, 10, 1.0}}, true, kRed);
    };
    ASSERT_TRUE(WritePicture(dot, (dir / "dot.png").string(), options, error)) << error;
    PixelImage image((dir / "dot.png").string());
    ASSERT_TRUE(image.Ok());
    const int centre = 108;
    for (int x = centre - 90; x <= centre + 90; ++x) {
        for (int y = centre - 1; y <= centre + 1; ++y) {
            ASSERT_TRUE(IsRed(image.At(x, y))) << "seam at " << x << "," << y;
        }
    }
    EXPECT_FALSE(IsRed(image.At(centre + 100, centre + 100)));  // outside the dot
}
