#include "cad/render/Geometry2d.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace cad::render {

bool ArcFromBulge(Point2 from, Point2 to, double bulge, BulgeArc& arc) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    const double chord = std::hypot(dx, dy);
    if (std::abs(bulge) < 1e-12 || chord < 1e-12) {
        return false;
    }
    // The centre lies on the chord's perpendicular bisector, at a signed distance
    // chord * (1 - b^2) / (4b) to the left of the chord.
    const double offset = chord * (1 - bulge * bulge) / (4 * bulge);
    const Point2 mid{(from.x + to.x) / 2, (from.y + to.y) / 2};
    const Point2 left{-dy / chord, dx / chord};
    arc.centre = {mid.x + left.x * offset, mid.y + left.y * offset};
    arc.radius = chord * (1 + bulge * bulge) / (4 * std::abs(bulge));
    arc.startAngle = std::atan2(from.y - arc.centre.y, from.x - arc.centre.x);
    arc.sweep = 4 * std::atan(bulge);
    return true;
}

std::vector<Point2> SegmentPoints(Point2 from, Point2 to, double bulge, double maxStep) {
    BulgeArc arc;
    if (!ArcFromBulge(from, to, bulge, arc)) {
        return {from, to};
    }
    const int pieces = std::max(2, static_cast<int>(std::ceil(std::abs(arc.sweep) / maxStep)));
    std::vector<Point2> points;
    points.reserve(pieces + 1);
    points.push_back(from);
    for (int i = 1; i < pieces; ++i) {
        const double a = arc.startAngle + arc.sweep * i / pieces;
        points.push_back(
            {arc.centre.x + arc.radius * std::cos(a), arc.centre.y + arc.radius * std::sin(a)});
    }
    points.push_back(to);
    return points;
}

std::vector<Point2> WideSegmentOutline(Point2 from, Point2 to, double bulge, double startWidth,
                                       double endWidth) {
    const std::vector<Point2> path = SegmentPoints(from, to, bulge);
    BulgeArc arc;
    const bool curved = ArcFromBulge(from, to, bulge, arc);
    const size_t n = path.size();
    std::vector<Point2> left(n), right(n);
    for (size_t i = 0; i < n; ++i) {
        // The side direction: radial on an arc (exact at the ends, so that neighbouring
        // wide segments meet without a gap), square to the segment on a straight one.
        Point2 side;
        if (curved) {
            const double sign = arc.sweep > 0 ? -1 : 1;
            side = {sign * (path[i].x - arc.centre.x) / arc.radius,
                    sign * (path[i].y - arc.centre.y) / arc.radius};
        } else {
            const double len = std::hypot(to.x - from.x, to.y - from.y);
            side = len > 0 ? Point2{-(to.y - from.y) / len, (to.x - from.x) / len} : Point2{};
        }
        const double t = n > 1 ? static_cast<double>(i) / (n - 1) : 0;
        const double half = (startWidth + (endWidth - startWidth) * t) / 2;
        left[i] = {path[i].x + side.x * half, path[i].y + side.y * half};
        right[i] = {path[i].x - side.x * half, path[i].y - side.y * half};
    }
    std::vector<Point2> outline = left;
    outline.insert(outline.end(), right.rbegin(), right.rend());
    return outline;
}

std::vector<Point2> ArcPoints(Point2 centre, double radius, double startAngle, double endAngle,
                              double maxStep) {
    double sweep = endAngle - startAngle;
    while (sweep <= 0) {
        sweep += 2 * std::numbers::pi;
    }
    while (sweep > 2 * std::numbers::pi + 1e-12) {
        sweep -= 2 * std::numbers::pi;
    }
    const int pieces = std::max(2, static_cast<int>(std::ceil(sweep / maxStep)));
    std::vector<Point2> points;
    points.reserve(pieces + 1);
    for (int i = 0; i <= pieces; ++i) {
        const double a = startAngle + sweep * i / pieces;
        points.push_back({centre.x + radius * std::cos(a), centre.y + radius * std::sin(a)});
    }
    return points;
}

}  // namespace cad::render
