// Every canvas lays a text out by the one width metric: the ink of a line drawn by the
// QPainter canvas and by the cairo canvas spans the advance the extents are measured with.
#include <gtest/gtest.h>

#include <cairo.h>
#include <QImage>
#include <QPainter>

#include "cad/render/BoundsCanvas.h"
#include "cad/render/CairoCanvas.h"
#include "cad/render/TextLayout.h"
#include "view/QtCanvas.h"

namespace {

constexpr int kWidth = 900, kHeight = 200;
constexpr double kScale = 2;  // pixels per unit; world (0, 0) at pixel (50, 150)

cad::render::TextLine Line(const std::string& text) {
    cad::render::TextLine line;
    line.text = text;
    line.anchor = {0, 0};
    line.height = 20;
    line.widthFactor = 0.8;
    return line;
}

// Leftmost and rightmost columns holding dark ink on a white ground.
std::pair<int, int> InkColumns(const QImage& image) {
    int first = -1, last = -1;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (qGray(image.pixel(x, y)) < 128) {
                first = first < 0 ? x : first;
                last = x;
                break;
            }
        }
    }
    return {first, last};
}

QImage QtPicture(const cad::render::TextLine& line) {
    QImage image(kWidth, kHeight, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    desktop::QtCanvas canvas(painter, QTransform(kScale, 0, 0, -kScale, 50, 150));
    canvas.Text(line, {0, 0, 0});
    return image;
}

QImage CairoPicture(const cad::render::TextLine& line) {
    QImage image(kWidth, kHeight, QImage::Format_RGB32);
    image.fill(Qt::white);
    cairo_surface_t* surface = cairo_image_surface_create_for_data(
        image.bits(), CAIRO_FORMAT_RGB24, kWidth, kHeight, static_cast<int>(image.bytesPerLine()));
    cairo_t* cr = cairo_create(surface);
    cad::render::CairoCanvas canvas(cr, {{-50 / kScale, 150 / kScale}, kScale});
    canvas.Text(line, {0, 0, 0});
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return image;
}

TEST(TextMetric, TheQtAndCairoCanvasesAndTheExtentsAgreeOnWidths) {
    for (const std::string text : {"ABCDEFGHKM", "X1-端子排", "wide 文字 text"}) {
        const auto line = Line(text);
        const double advancePx = cad::render::LineAdvance(line) * kScale;
        cad::render::BoundsCanvas bounds;
        bounds.Text(line, {});
        EXPECT_NEAR(bounds.Bounds().Width() * kScale, advancePx, 1e-6) << text;

        for (const QImage& image : {QtPicture(line), CairoPicture(line)}) {
            const auto [first, last] = InkColumns(image);
            ASSERT_GE(first, 0) << text;
            // The ink spans the advance, less the glyphs' side bearings.
            EXPECT_NEAR(last - first, advancePx, 0.08 * advancePx) << text;
            EXPECT_NEAR(first, 50, 0.05 * advancePx) << text;
        }
    }
}

TEST(TextMetric, CentredTextsStandWhereTheExtentsPutThem) {
    auto line = Line("CENTRE");
    line.hAlign = cad::render::HAlign::Center;
    line.anchor = {200, 0};
    const auto [first, last] = InkColumns(QtPicture(line));
    EXPECT_NEAR((first + last) / 2.0, 50 + 200 * kScale, 3);
    const auto [cfirst, clast] = InkColumns(CairoPicture(line));
    EXPECT_NEAR((cfirst + clast) / 2.0, 50 + 200 * kScale, 3);
}

}  // namespace
