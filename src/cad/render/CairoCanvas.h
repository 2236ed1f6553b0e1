// A canvas that paints with cairo: the back-end of the PNG and SVG files. World
// coordinates are mapped to the surface by a uniform scale with the Y axis turned down.
#pragma once

#include <cairo.h>

#include <string>

#include "cad/render/Canvas.h"

namespace cad::render {

struct View {
    Point2 topLeft;    // the world point at pixel (0, 0)
    double scale = 1;  // pixels per drawing unit
};

class CairoCanvas : public Canvas {
public:
    // Draws on `cr` (not owned). Texts use the first font fontconfig finds for `fontFamily`;
    // the default family holds Latin and CJK glyphs.
    CairoCanvas(cairo_t* cr, View view, double lineWidthPx = 1.0,
                const std::string& fontFamily = "WenQuanYi Micro Hei");

    void Line(Point2 from, Point2 to, Rgb colour) override;
    void Polyline(const std::vector<PolyVertex>& vertices, bool closed, Rgb colour) override;
    void Circle(Point2 centre, double radius, Rgb colour) override;
    void Arc(Point2 centre, double radius, double startAngle, double endAngle, Rgb colour) override;
    void Dot(Point2 at, Rgb colour) override;
    void Text(const TextLine& line, Rgb colour) override;
    void MText(const TextBlock& block, Rgb colour) override;
    void Fill(const std::vector<std::vector<Point2>>& rings, Rgb colour) override;

    // The advance of `text` in drawing units for a capital height and width factor: the one
    // width metric of every canvas, which this one stretches its glyphs to.
    double Advance(const std::string& text, double height, double widthFactor);

private:
    Point2 ToPixel(Point2 world) const;
    void TracePath(const std::vector<Point2>& points);  // a path through non-empty points
    void StrokePoints(const std::vector<Point2>& points, Rgb colour);
    void FillOutlines(const std::vector<std::vector<Point2>>& outlines, Rgb colour);
    void SetColour(Rgb colour);

    cairo_t* cr_;
    View view_;
    double lineWidthPx_;
    double capRatio_ = 0.72;  // capital height per unit of font size, measured on "H"
};

}  // namespace cad::render
