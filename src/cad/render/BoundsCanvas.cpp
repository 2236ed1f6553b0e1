#include "cad/render/BoundsCanvas.h"

#include <algorithm>
#include <cmath>

#include "cad/render/Geometry2d.h"
#include "cad/render/TextLayout.h"

namespace cad::render {

void Box::Add(Point2 p) {
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) {
        return;
    }
    min.x = std::min(min.x, p.x);
    min.y = std::min(min.y, p.y);
    max.x = std::max(max.x, p.x);
    max.y = std::max(max.y, p.y);
}

void BoundsCanvas::Line(Point2 from, Point2 to, Rgb) {
    box_.Add(from);
    box_.Add(to);
}

void BoundsCanvas::Polyline(const std::vector<PolyVertex>& vertices, bool closed, Rgb) {
    const size_t n = vertices.size();
    if (n == 1) {
        box_.Add(vertices[0].point);
    }
    const size_t segments = closed ? n : (n > 0 ? n - 1 : 0);
    for (size_t i = 0; i < segments && n > 1; ++i) {
        const PolyVertex& v = vertices[i];
        const Point2 to = vertices[(i + 1) % n].point;
        for (const auto& p : WideSegmentOutline(v.point, to, v.bulge, v.startWidth, v.endWidth)) {
            box_.Add(p);
        }
    }
}

void BoundsCanvas::Circle(Point2 centre, double radius, Rgb) {
    box_.Add({centre.x - radius, centre.y - radius});
    box_.Add({centre.x + radius, centre.y + radius});
}

void BoundsCanvas::Arc(Point2 centre, double radius, double startAngle, double endAngle, Rgb) {
    for (const auto& p : ArcPoints(centre, radius, startAngle, endAngle, 0.05)) {
        box_.Add(p);
    }
}

void BoundsCanvas::Dot(Point2 at, Rgb) {
    box_.Add(at);
}

void BoundsCanvas::Text(const TextLine& line, Rgb) {
    for (const auto& p : TextLineBox(line, LineAdvance(line))) {
        box_.Add(p);
    }
}

void BoundsCanvas::MText(const TextBlock& block, Rgb colour) {
    const auto measure = [&](const std::string& s) {
        return TextAdvance(s, block.height, block.widthFactor);
    };
    for (const auto& line : LayoutTextBlock(block, measure)) {
        Text(line, colour);
    }
}

}  // namespace cad::render

namespace cad::render {

void BoundsCanvas::Fill(const std::vector<std::vector<Point2>>& rings, Rgb) {
    for (const auto& ring : rings) {
        for (const Point2& p : ring) {
            box_.Add(p);
        }
    }
}

}  // namespace cad::render
