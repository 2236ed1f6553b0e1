#include "cad/RawHatch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cad/RawTags.h"

namespace cad {

using namespace raw;

namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr long long kMaxPatternLines = 20000;

using Ring = std::vector<Point3d>;

void SkipSources(Cursor& c) {
    const long long n = c.Int(97).value_or(0);
    for (long long i = 0; i < n && c.Code() == 330; ++i) {
        c.Skip();
    }
}

Ring PolylinePath(Cursor& c) {
    c.Int(72);
    const bool closed = c.Int(73).value_or(1) != 0;
    const long long n = c.Int(93).value_or(0);
    std::vector<std::pair<Point3d, double>> v;
    for (long long i = 0; i < n && c.Code() == 10; ++i) {
        Point3d p{*c.Real(10), c.Real(20).value_or(0), 0};
        v.emplace_back(p, c.Real(42).value_or(0));
    }
    Ring ring;
    if (v.empty()) {
        return ring;
    }
    ring.push_back(v[0].first);
    const std::size_t segments = closed ? v.size() : v.size() - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        AppendBulgeSegment(ring, ring.back(), v[(i + 1) % v.size()].first, v[i].second);
    }
    return ring;
}

// A clockwise arc stores its angles mirrored: its points are the mirror image, across the
// major axis, of the counter-clockwise arc with the same numbers.
void AppendEllipse(Ring& ring, Point3d c, Vector3d major, double ratio, double a0, double a1,
                   bool ccw) {
    const Vector3d minor{-major.y * ratio, major.x * ratio, 0};
    auto pts = EllipsePoints(c, major, ccw ? minor : minor * -1, a0 * kDegree, a1 * kDegree);
    ring.insert(ring.end(), pts.begin(), pts.end());
}

void AppendSplineEdge(Cursor& c, Ring& ring) {
    const int degree = static_cast<int>(c.Int(94).value_or(3));
    c.Int(73);
    c.Int(74);
    c.Int(95);
    c.Int(96);
    std::vector<double> knots, weights;
    while (c.Code() == 40) {
        knots.push_back(*c.Real(40));
    }
    std::vector<Point3d> control;
    while (c.Code() == 10 || c.Code() == 42) {
        if (c.Code() == 42) {
            weights.push_back(*c.Real(42));
        } else {
            control.push_back({*c.Real(10), c.Real(20).value_or(0), 0});
        }
    }
    std::vector<Point3d> fit;
    if (c.Int(97)) {
        while (c.Code() == 11) {
            fit.push_back({*c.Real(11), c.Real(21).value_or(0), 0});
        }
    }
    for (int code : {12, 22, 13, 23}) {
        c.Real(code);
    }
    const auto pts = control.size() >= 2 ? SplinePoints(degree, knots, control, weights) : fit;
    ring.insert(ring.end(), pts.begin(), pts.end());
}

Ring EdgePath(Cursor& c) {
    const long long n = c.Int(93).value_or(0);
    Ring ring;
    for (long long i = 0; i < n && c.Code() == 72; ++i) {
        const long long type = *c.Int(72);
        if (type == 1) {
            const Point3d a{c.Real(10).value_or(0), c.Real(20).value_or(0), 0};
            const Point3d b{c.Real(11).value_or(0), c.Real(21).value_or(0), 0};
            ring.push_back(a);
            ring.push_back(b);
        } else if (type == 2) {
            const Point3d ctr{c.Real(10).value_or(0), c.Real(20).value_or(0), 0};
            const double r = c.Real(40).value_or(0);
            const double a0 = c.Real(50).value_or(0), a1 = c.Real(51).value_or(360);
            AppendEllipse(ring, ctr, {r, 0, 0}, 1, a0, a1, c.Int(73).value_or(1) != 0);
        } else if (type == 3) {
            const Point3d ctr{c.Real(10).value_or(0), c.Real(20).value_or(0), 0};
            const Vector3d major{c.Real(11).value_or(1), c.Real(21).value_or(0), 0};
            const double ratio = c.Real(40).value_or(1);
            const double a0 = c.Real(50).value_or(0), a1 = c.Real(51).value_or(360);
            AppendEllipse(ring, ctr, major, ratio, a0, a1, c.Int(73).value_or(1) != 0);
        } else if (type == 4) {
            AppendSplineEdge(c, ring);
        } else {
            break;
        }
    }
    return ring;
}

struct PatternLine {
    double angle = 0;
    Point3d base;
    Vector3d offset;
    std::vector<double> dashes;
};

std::vector<PatternLine> PatternLines(Cursor& c) {
    std::vector<PatternLine> lines;
    while (!c.AtEnd() && c.Code() != 78) {
        c.Skip();
    }
    const long long n = c.Int(78).value_or(0);
    for (long long i = 0; i < n && c.Code() == 53; ++i) {
        PatternLine l;
        l.angle = *c.Real(53) * kDegree;
        l.base = {c.Real(43).value_or(0), c.Real(44).value_or(0), 0};
        l.offset = {c.Real(45).value_or(0), c.Real(46).value_or(0), 0};
        const long long dashes = c.Int(79).value_or(0);
        for (long long k = 0; k < dashes && c.Code() == 49; ++k) {
            l.dashes.push_back(*c.Real(49));
        }
        lines.push_back(l);
    }
    return lines;
}

// Where the line origin + t * dir crosses the rings, sorted: even-odd pairs are inside.
std::vector<double> Crossings(const std::vector<Ring>& rings, Point3d origin, Vector3d dir) {
    std::vector<double> ts;
    for (const Ring& ring : rings) {
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Point3d a = ring[i], b = ring[(i + 1) % ring.size()];
            const Vector3d e = b - a;
            const double den = dir.x * e.y - dir.y * e.x;
            if (den == 0) {
                continue;
            }
            const Vector3d w = a - origin;
            const double s = (dir.y * w.x - dir.x * w.y) / den;  // along the edge
            if (s >= 0 && s < 1) {
                ts.push_back((w.x * e.y - w.y * e.x) / den);
            }
        }
    }
    std::sort(ts.begin(), ts.end());
    return ts;
}

void AddDashes(std::vector<std::vector<Point3d>>& out, const PatternLine& l, Point3d origin,
               Vector3d dir, double t0, double t1) {
    double length = 0;
    for (double d : l.dashes) {
        length += std::abs(d);
    }
    const auto add = [&](double a, double b) {
        out.push_back({origin + dir * a, origin + dir * std::max(a, b)});
    };
    if (l.dashes.empty() || length <= 0) {
        add(t0, t1);
        return;
    }
    for (double t = std::floor(t0 / length) * length; t < t1;) {
        for (double d : l.dashes) {
            const double a = std::max(t, t0), b = std::min(t + std::abs(d), t1);
            if (d >= 0 && a <= b) {
                add(a, b);
            }
            t += std::abs(d);
        }
    }
}

// False when the pattern is too dense to draw line by line.
bool ClipPattern(const std::vector<Ring>& rings, const std::vector<PatternLine>& lines,
                 std::vector<std::vector<Point3d>>& out) {
    double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300;
    for (const Ring& r : rings) {
        for (const Point3d& p : r) {
            x0 = std::min(x0, p.x), y0 = std::min(y0, p.y);
            x1 = std::max(x1, p.x), y1 = std::max(y1, p.y);
        }
    }
    long long budget = kMaxPatternLines;
    for (const PatternLine& l : lines) {
        const Vector3d dir{std::cos(l.angle), std::sin(l.angle), 0};
        const Vector3d normal{-dir.y, dir.x, 0};
        const double step = l.offset.x * normal.x + l.offset.y * normal.y;
        if (std::abs(step) < 1e-12) {
            continue;
        }
        double lo = 1e300, hi = -1e300;
        for (const Point3d& corner :
             {Point3d{x0, y0, 0}, Point3d{x1, y0, 0}, Point3d{x0, y1, 0}, Point3d{x1, y1, 0}}) {
            const double d =
                ((corner.x - l.base.x) * normal.x + (corner.y - l.base.y) * normal.y) / step;
            lo = std::min(lo, d), hi = std::max(hi, d);
        }
        const long long k0 = static_cast<long long>(std::floor(lo)),
                        k1 = static_cast<long long>(std::ceil(hi));
        budget -= k1 - k0 + 1;
        if (budget < 0) {
            return false;
        }
        for (long long k = k0; k <= k1; ++k) {
            const Point3d origin = l.base + l.offset * static_cast<double>(k);
            const auto ts = Crossings(rings, origin, dir);
            for (std::size_t i = 0; i + 1 < ts.size(); i += 2) {
                AddDashes(out, l, origin, dir, ts[i], ts[i + 1]);
            }
        }
    }
    return true;
}

}  // namespace

void HatchShapes(const UnknownEntity& e, RawGeometry& g) {
    const auto& tags = e.tags;
    std::size_t start = 0;
    while (start < tags.size() && tags[start].code != 91) {
        ++start;
    }
    Cursor c(tags, start);
    const long long paths = c.Int(91).value_or(0);
    std::vector<Ring> rings;
    for (long long i = 0; i < paths && c.Code() == 92; ++i) {
        const long long flags = *c.Int(92);
        Ring ring = (flags & 2) != 0 ? PolylinePath(c) : EdgePath(c);
        SkipSources(c);
        if (ring.size() >= 2) {
            rings.push_back(std::move(ring));
        }
    }
    if (rings.empty()) {
        return;
    }
    const bool solid = FirstInt(tags, 70, 0) != 0;
    const double z = FirstPoint(tags, 10).z;
    const Ocs ocs = PlaneOf(tags);
    const auto toWorld = [&](std::vector<Point3d> path) {
        for (Point3d& p : path) {
            p = ocs.ToWorld(p.x, p.y, z);
        }
        return path;
    };
    RawShape shape;
    shape.paint = solid ? RawShape::Paint::Fill : RawShape::Paint::Stroke;
    std::vector<std::vector<Point3d>> plane;
    if (solid || !ClipPattern(rings, PatternLines(c), plane)) {
        plane = rings;
        if (!solid) {
            for (auto& ring : plane) {
                ring.push_back(ring.front());
            }
        }
    }
    for (auto& path : plane) {
        shape.paths.push_back(toWorld(std::move(path)));
    }
    g.shapes.push_back(std::move(shape));
}

}  // namespace cad
