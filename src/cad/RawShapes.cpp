#include "cad/RawShapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cad/RawHatch.h"
#include "cad/RawTags.h"

namespace cad {

using namespace raw;

namespace {

constexpr double kArrowSize = 2.5;  // the size a standard dimension style gives arrows

RawShape Stroke(std::vector<Point3d> path) {
    RawShape s;
    s.paths.push_back(std::move(path));
    return s;
}

struct Vertex {
    Point3d p;
    double bulge = 0;
    long long flags = 0;
    long long index[4] = {};
};

std::vector<Vertex> Vertices(const Database& db, const UnknownEntity& pl) {
    std::vector<Vertex> out;
    for (Handle h : pl.followers) {
        const auto* v = db.Get<UnknownEntity>(h);
        if (v == nullptr || v->erased || v->typeName != "VERTEX") {
            continue;
        }
        Vertex x;
        x.p = FirstPoint(v->tags, 10);
        x.bulge = FirstReal(v->tags, 42, 0);
        x.flags = FirstInt(v->tags, 70, 0);
        for (int k = 0; k < 4; ++k) {
            x.index[k] = FirstInt(v->tags, 71 + k, 0);
        }
        out.push_back(x);
    }
    return out;
}

// Faces list their corners by number (from 1); a negative number hides the edge it starts.
void PolyfaceEdges(const std::vector<Vertex>& all, RawGeometry& g) {
    std::vector<Point3d> places;
    for (const Vertex& v : all) {
        if ((v.flags & 64) != 0) {
            places.push_back(v.p);
        }
    }
    const auto place = [&](long long i) { return places[std::llabs(i) - 1]; };
    const auto valid = [&](long long i) {
        return i != 0 && std::llabs(i) <= static_cast<long long>(places.size());
    };
    for (const Vertex& v : all) {
        if ((v.flags & 128) == 0 || (v.flags & 64) != 0) {
            continue;
        }
        int n = 0;
        while (n < 4 && valid(v.index[n])) {
            ++n;
        }
        for (int k = 0; k < n && n > 1; ++k) {
            if (v.index[k] > 0) {
                g.shapes.push_back(Stroke({place(v.index[k]), place(v.index[(k + 1) % n])}));
            }
        }
    }
}

void MeshEdges(const std::vector<Vertex>& v, long long flags, long long m, long long n,
               RawGeometry& g) {
    if (m < 1 || n < 1 || static_cast<long long>(v.size()) < m * n) {
        return;
    }
    for (long long i = 0; i < m; ++i) {
        std::vector<Point3d> row;
        for (long long j = 0; j < n; ++j) {
            row.push_back(v[i * n + j].p);
        }
        if ((flags & 32) != 0) {
            row.push_back(row.front());
        }
        g.shapes.push_back(Stroke(std::move(row)));
    }
    for (long long j = 0; j < n; ++j) {
        std::vector<Point3d> column;
        for (long long i = 0; i < m; ++i) {
            column.push_back(v[i * n + j].p);
        }
        if ((flags & 1) != 0) {
            column.push_back(column.front());
        }
        g.shapes.push_back(Stroke(std::move(column)));
    }
}

// Plane polylines follow their bulges; widths are not drawn, only the centre line.
void PolylineShapes(const Database& db, const UnknownEntity& e, RawGeometry& g) {
    const long long flags = FirstInt(e.tags, 70, 0);
    const auto all = Vertices(db, e);
    if ((flags & 64) != 0) {
        PolyfaceEdges(all, g);
        return;
    }
    if ((flags & 16) != 0) {
        MeshEdges(all, flags, FirstInt(e.tags, 71, 0), FirstInt(e.tags, 72, 0), g);
        return;
    }
    std::vector<Vertex> v;
    for (const Vertex& x : all) {
        if ((x.flags & 16) == 0) {  // spline frame points are not on the curve
            v.push_back(x);
        }
    }
    if (v.empty()) {
        return;
    }
    const bool closed = (flags & 1) != 0;
    std::vector<Point3d> path;
    if ((flags & 8) != 0) {
        for (const Vertex& x : v) {
            path.push_back(x.p);
        }
        if (closed) {
            path.push_back(path.front());
        }
    } else {
        const double z = FirstPoint(e.tags, 10).z;
        const Ocs ocs = PlaneOf(e.tags);
        std::vector<Point3d> plane{{v[0].p.x, v[0].p.y, z}};
        const std::size_t segments = closed ? v.size() : v.size() - 1;
        for (std::size_t i = 0; i < segments; ++i) {
            const Point3d b = v[(i + 1) % v.size()].p;
            AppendBulgeSegment(plane, plane.back(), {b.x, b.y, z}, v[i].bulge);
        }
        for (const Point3d& p : plane) {
            path.push_back(ocs.ToWorld(p.x, p.y, p.z));
        }
    }
    g.shapes.push_back(Stroke(std::move(path)));
}

void EllipseShapes(const UnknownEntity& e, RawGeometry& g) {
    const Point3d c = FirstPoint(e.tags, 10);
    const Point3d a = FirstPoint(e.tags, 11, {1, 0, 0});
    const Vector3d major{a.x, a.y, a.z};
    const Ocs plane = PlaneOf(e.tags);
    const Vector3d n = plane.az;
    const Vector3d side{n.y * major.z - n.z * major.y, n.z * major.x - n.x * major.z,
                        n.x * major.y - n.y * major.x};
    const double ratio = FirstReal(e.tags, 40, 1);
    const double t0 = FirstReal(e.tags, 41, 0), t1 = FirstReal(e.tags, 42, 2 * std::numbers::pi);
    g.shapes.push_back(Stroke(EllipsePoints(c, major, side * ratio, t0, t1)));
}

void SplineShapes(const UnknownEntity& e, RawGeometry& g) {
    std::vector<double> knots, weights;
    for (const Tag& t : e.tags) {
        if (t.code == 40) {
            knots.push_back(Real(t));
        } else if (t.code == 41) {
            weights.push_back(Real(t));
        }
    }
    const auto control = AllPoints(e.tags, 10);
    auto path =
        control.size() >= 2
            ? SplinePoints(static_cast<int>(FirstInt(e.tags, 71, 3)), knots, control, weights)
            : AllPoints(e.tags, 11);  // a spline kept by its fit points alone
    if ((FirstInt(e.tags, 70, 0) & 1) != 0 && control.size() < 2 && !path.empty()) {
        path.push_back(path.front());
    }
    g.shapes.push_back(Stroke(std::move(path)));
}

// Solids and traces list their corners in the order 1, 2, 4, 3; three corners make a
// triangle.
void SolidShapes(const UnknownEntity& e, RawGeometry& g) {
    const Point3d p0 = FirstPoint(e.tags, 10), p1 = FirstPoint(e.tags, 11),
                  p2 = FirstPoint(e.tags, 12), p3 = FirstPoint(e.tags, 13, p2);
    const Ocs ocs = PlaneOf(e.tags);
    RawShape s;
    s.paint = RawShape::Paint::Fill;
    s.paths.emplace_back();
    for (const Point3d& p : {p0, p1, p3, p2}) {
        s.paths.back().push_back(ocs.ToWorld(p.x, p.y, p0.z));
    }
    g.shapes.push_back(std::move(s));
}

void FaceShapes(const UnknownEntity& e, RawGeometry& g) {
    const Point3d p[4] = {FirstPoint(e.tags, 10), FirstPoint(e.tags, 11), FirstPoint(e.tags, 12),
                          FirstPoint(e.tags, 13, FirstPoint(e.tags, 12))};
    const long long hidden = FirstInt(e.tags, 70, 0);
    for (int k = 0; k < 4; ++k) {
        if ((hidden & (1LL << k)) == 0 && !(p[k] == p[(k + 1) % 4])) {
            g.shapes.push_back(Stroke({p[k], p[(k + 1) % 4]}));
        }
    }
}

// The arrow head sits on the first vertex, pointing at it along the first segment.
void LeaderShapes(const UnknownEntity& e, RawGeometry& g) {
    const auto v = AllPoints(e.tags, 10);
    if (v.empty()) {
        return;
    }
    g.shapes.push_back(Stroke(v));
    if (v.size() < 2 || FirstInt(e.tags, 71, 1) == 0) {
        return;
    }
    const Vector3d d = v[1] - v[0];
    const double length = d.Length();
    if (length == 0) {
        return;
    }
    const double size = std::min(kArrowSize, length / 2);
    const Vector3d u = d * (1 / length);
    const Vector3d side{-u.y * size / 6, u.x * size / 6, 0};
    RawShape arrow;
    arrow.paint = RawShape::Paint::Fill;
    const Point3d back = v[0] + u * size;
    arrow.paths.push_back({v[0], back + side, back - side});
    g.shapes.push_back(std::move(arrow));
}

// The clip outline is given in the image's own units: x to the right and y downwards from
// its centre, one unit a pixel size.
void WipeoutShapes(const UnknownEntity& e, RawGeometry& g) {
    const Point3d origin = FirstPoint(e.tags, 10), u = FirstPoint(e.tags, 11, {1, 0, 0}),
                  v = FirstPoint(e.tags, 12, {0, 1, 0});
    const double height = FirstPoint(e.tags, 13, {1, 1, 0}).y;
    auto outline = AllPoints(e.tags, 14);
    if (outline.size() == 2) {
        const Point3d a = outline[0], b = outline[1];
        outline = {a, {b.x, a.y, 0}, b, {a.x, b.y, 0}};
    }
    if (outline.size() < 3) {
        return;
    }
    RawShape s;
    s.paint = RawShape::Paint::Wipe;
    s.paths.emplace_back();
    const Vector3d du{u.x, u.y, u.z}, dv{v.x, v.y, v.z};
    for (const Point3d& p : outline) {
        s.paths.back().push_back(origin + du * (p.x + 0.5) + dv * (height - p.y - 0.5));
    }
    g.shapes.push_back(std::move(s));
}

void InfiniteLine(const UnknownEntity& e, bool bothWays, RawGeometry& g) {
    const Point3d d = FirstPoint(e.tags, 11, {1, 0, 0});
    const Vector3d dir{d.x, d.y, d.z};
    if (dir.Length() > 0) {
        g.infiniteLines.push_back({FirstPoint(e.tags, 10), dir * (1 / dir.Length()), bothWays});
    }
}

}  // namespace

RawGeometry RawEntityGeometry(const Database& db, const UnknownEntity& e) {
    RawGeometry g;
    g.drawable = true;
    const std::string& type = e.typeName;
    if (type == "POLYLINE") {
        PolylineShapes(db, e, g);
    } else if (type == "ELLIPSE") {
        EllipseShapes(e, g);
    } else if (type == "SPLINE") {
        SplineShapes(e, g);
    } else if (type == "HATCH") {
        HatchShapes(e, g);
    } else if (type == "SOLID" || type == "TRACE") {
        SolidShapes(e, g);
    } else if (type == "3DFACE") {
        FaceShapes(e, g);
    } else if (type == "LEADER") {
        LeaderShapes(e, g);
    } else if (type == "WIPEOUT") {
        WipeoutShapes(e, g);
    } else if (type == "XLINE" || type == "RAY") {
        InfiniteLine(e, type == "XLINE", g);
    } else if (type == "DIMENSION" || type == "ACAD_TABLE") {
        for (const Tag& t : e.tags) {
            if (t.code == 2) {
                g.block = t.value;
                break;
            }
        }
    } else {
        g.drawable = false;
    }
    return g;
}

Handle RawEntityLayer(const Database& db, const UnknownEntity& e) {
    for (const Tag& t : e.tags) {
        if (t.code == 8) {
            return db.FindLayer(t.value);
        }
    }
    return kNullHandle;
}

int RawEntityColour(const UnknownEntity& e) {
    return static_cast<int>(FirstInt(e.tags, 62, kColorByLayer));
}

bool RawEntityVisible(const UnknownEntity& e) {
    return FirstInt(e.tags, 60, 0) == 0;
}

}  // namespace cad
