#include "SymbolSketch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cadutil/SymbolData.h"

namespace symbols {

namespace {
constexpr double kDeg = std::numbers::pi / 180;
}

SymbolSketch::SymbolSketch(int direction)
    : quarterTurns_(direction == 0   ? 1
                    : direction == 3 ? 2
                    : direction == 1 ? 3
                                     : 0) {
    pointLayer_ = db_.AddLayer(kTermTextPointLayer, 8);
    // Off: the points guide the drawing and are never seen.
    db_.Layer(pointLayer_)->color = -8;
    db_.SetCurrentLayer(db_.FindLayer("0"));
}

cad::Point3d SymbolSketch::Turn(double x, double y) const {
    // Exact quarter turns keep the coordinates as they were typed.
    switch (quarterTurns_) {
        case 1:
            return {-y + 0.0, x, 0};
        case 2:
            return {-x + 0.0, -y + 0.0, 0};
        case 3:
            return {y, -x + 0.0, 0};
        default:
            return {x, y, 0};
    }
}

void SymbolSketch::Reach(double y, double margin) {
    halfWidth_ = std::max(halfWidth_, std::abs(y) + margin);
}

void SymbolSketch::Line(double x0, double y0, double x1, double y1) {
    auto* line = db_.AppendNew<cad::Line>();
    Reach(y0);
    Reach(y1);
    line->start = Turn(x0, y0);
    line->end = Turn(x1, y1);
}

void SymbolSketch::Circle(double cx, double cy, double r) {
    auto* circle = db_.AppendNew<cad::Circle>();
    Reach(cy, r);
    circle->center = Turn(cx, cy);
    circle->radius = r;
}

void SymbolSketch::Arc(double cx, double cy, double r, double startDeg, double endDeg) {
    auto* arc = db_.AppendNew<cad::Arc>();
    Reach(cy, r);
    arc->center = Turn(cx, cy);
    arc->radius = r;
    arc->startAngle = std::fmod(startDeg + 90.0 * quarterTurns_, 360.0) * kDeg;
    arc->endAngle = std::fmod(endDeg + 90.0 * quarterTurns_, 360.0) * kDeg;
}

void SymbolSketch::Rect(double x0, double y0, double x1, double y1) {
    Poly({{x0, y0, 0}, {x1, y0, 0}, {x1, y1, 0}, {x0, y1, 0}}, true);
}

cad::LwPolyline* SymbolSketch::Poly(const std::vector<cad::Point3d>& points, bool closed,
                                    double width) {
    auto* pl = db_.AppendNew<cad::LwPolyline>();
    for (const auto& p : points) {
        Reach(p.y, width / 2);
        const cad::Point3d q = Turn(p.x, p.y);
        cad::LwVertex v;
        v.x = q.x;
        v.y = q.y;
        pl->vertices.push_back(v);
    }
    pl->closed = closed;
    pl->constantWidth = width;
    return pl;
}

cad::LwPolyline* SymbolSketch::Disc(double cx, double cy, double r) {
    Reach(cy, r);
    cad::LwPolyline* pl = Poly({{cx - r / 2, cy, 0}, {cx + r / 2, cy, 0}}, true, r);
    for (auto& v : pl->vertices) {
        v.bulge = 1.0;
    }
    return pl;
}

void SymbolSketch::Marker(double x, double y) {
    Disc(x, y, 0.25)->color = 1;
}

void SymbolSketch::TextPoint(double x, double y) {
    auto point = std::make_unique<cad::PointEntity>();
    point->position = Turn(x, y);
    point->layer = pointLayer_;
    db_.Append(std::move(point));
}

}  // namespace symbols
