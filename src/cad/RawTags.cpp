#include "cad/RawTags.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cad/NumberText.h"

namespace cad::raw {

double Real(const Tag& t) {
    double v = 0;
    return ParseReal(t.value, v) && std::isfinite(v) ? v : 0;
}

long long Int(const Tag& t) {
    long long v = 0;
    return ParseInt(t.value, v) ? v : 0;
}

double FirstReal(const TagList& tags, int code, double fallback) {
    for (const Tag& t : tags) {
        if (t.code == code) {
            return Real(t);
        }
    }
    return fallback;
}

long long FirstInt(const TagList& tags, int code, long long fallback) {
    for (const Tag& t : tags) {
        if (t.code == code) {
            return Int(t);
        }
    }
    return fallback;
}

namespace {

// The point starting at tags[i] (code `code`), with the y and z that follow it.
Point3d PointAt(const TagList& tags, std::size_t i, int code) {
    Point3d p{Real(tags[i]), 0, 0};
    if (i + 1 < tags.size() && tags[i + 1].code == code + 10) {
        p.y = Real(tags[i + 1]);
        if (i + 2 < tags.size() && tags[i + 2].code == code + 20) {
            p.z = Real(tags[i + 2]);
        }
    }
    return p;
}

Vector3d Cross(const Vector3d& a, const Vector3d& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vector3d Unit(const Vector3d& v) {
    const double l = v.Length();
    return l > 0 ? v * (1 / l) : v;
}

}  // namespace

Point3d FirstPoint(const TagList& tags, int code, Point3d fallback) {
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (tags[i].code == code) {
            return PointAt(tags, i, code);
        }
    }
    return fallback;
}

std::vector<Point3d> AllPoints(const TagList& tags, int code) {
    std::vector<Point3d> out;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (tags[i].code == code) {
            out.push_back(PointAt(tags, i, code));
        }
    }
    return out;
}

Point3d Ocs::ToWorld(double x, double y, double z) const {
    return Point3d{} + ax * x + ay * y + az * z;
}

Ocs PlaneOf(const TagList& tags) {
    const Point3d n = FirstPoint(tags, 210, {0, 0, 1});
    Ocs ocs;
    ocs.az = Unit({n.x, n.y, n.z});
    if (ocs.az.Length() == 0 || ocs.az == Vector3d{0, 0, 1}) {
        return Ocs{};
    }
    const double limit = 1.0 / 64;
    ocs.ax = std::abs(ocs.az.x) < limit && std::abs(ocs.az.y) < limit
                 ? Unit(Cross({0, 1, 0}, ocs.az))
                 : Unit(Cross({0, 0, 1}, ocs.az));
    ocs.ay = Unit(Cross(ocs.az, ocs.ax));
    return ocs;
}

std::optional<double> Cursor::Real(int code) {
    if (Code() != code) {
        return std::nullopt;
    }
    return raw::Real(tags_[pos_++]);
}

std::optional<long long> Cursor::Int(int code) {
    if (Code() != code) {
        return std::nullopt;
    }
    return raw::Int(tags_[pos_++]);
}

void AppendBulgeSegment(std::vector<Point3d>& out, Point3d a, Point3d b, double bulge) {
    const double chord = std::hypot(b.x - a.x, b.y - a.y);
    if (bulge == 0 || chord == 0 || !std::isfinite(bulge)) {
        out.push_back(b);
        return;
    }
    const double sweep = 4 * std::atan(bulge);
    const double r = chord / (2 * std::sin(std::abs(sweep) / 2));
    const double d = r * std::cos(sweep / 2);
    const double nx = -(b.y - a.y) / chord, ny = (b.x - a.x) / chord;
    const double sign = sweep > 0 ? 1 : -1;
    const double cx = (a.x + b.x) / 2 + sign * nx * d, cy = (a.y + b.y) / 2 + sign * ny * d;
    const double start = std::atan2(a.y - cy, a.x - cx);
    const int steps = std::max(2, static_cast<int>(std::ceil(std::abs(sweep) / 0.1)));
    for (int k = 1; k < steps; ++k) {
        const double t = start + sweep * k / steps;
        out.push_back({cx + r * std::cos(t), cy + r * std::sin(t), a.z});
    }
    out.push_back(b);
}

std::vector<Point3d> EllipsePoints(Point3d c, Vector3d major, Vector3d minor, double t0,
                                   double t1) {
    const double twoPi = 2 * std::numbers::pi;
    while (t1 <= t0) {
        t1 += twoPi;
    }
    t1 = std::min(t1, t0 + twoPi);
    const int steps = std::max(4, static_cast<int>(std::ceil((t1 - t0) / twoPi * 128)));
    std::vector<Point3d> out;
    out.reserve(steps + 1);
    for (int k = 0; k <= steps; ++k) {
        const double t = t0 + (t1 - t0) * k / steps;
        out.push_back(c + major * std::cos(t) + minor * std::sin(t));
    }
    return out;
}

namespace {

// de Boor's algorithm in homogeneous coordinates at `u` in knot span `span`.
Point3d DeBoor(int p, const std::vector<double>& k, const std::vector<Point3d>& ctrl,
               const std::vector<double>& w, int span, double u) {
    struct H {
        double x, y, z, w;
    };
    std::vector<H> d(p + 1);
    for (int j = 0; j <= p; ++j) {
        const Point3d& c = ctrl[span - p + j];
        const double wj = w[span - p + j];
        d[j] = {c.x * wj, c.y * wj, c.z * wj, wj};
    }
    for (int r = 1; r <= p; ++r) {
        for (int j = p; j >= r; --j) {
            const int i = span - p + j;
            const double den = k[i + p - r + 1] - k[i];
            const double a = den != 0 ? (u - k[i]) / den : 0;
            d[j] = {(1 - a) * d[j - 1].x + a * d[j].x, (1 - a) * d[j - 1].y + a * d[j].y,
                    (1 - a) * d[j - 1].z + a * d[j].z, (1 - a) * d[j - 1].w + a * d[j].w};
        }
    }
    const double hw = d[p].w != 0 ? d[p].w : 1;
    return {d[p].x / hw, d[p].y / hw, d[p].z / hw};
}

}  // namespace

std::vector<Point3d> SplinePoints(int degree, const std::vector<double>& knots,
                                  const std::vector<Point3d>& control,
                                  const std::vector<double>& weights) {
    const int n = static_cast<int>(control.size());
    if (degree < 1 || n <= degree || static_cast<int>(knots.size()) != n + degree + 1 ||
        !std::is_sorted(knots.begin(), knots.end())) {
        return control;  // not a valid spline: its control polygon is the best picture
    }
    std::vector<double> w(weights);
    if (static_cast<int>(w.size()) != n ||
        std::any_of(w.begin(), w.end(), [](double x) { return !(x > 0); })) {
        w.assign(n, 1.0);
    }
    const double u0 = knots[degree], u1 = knots[n];
    if (!(u1 > u0)) {
        return control;
    }
    const int samples = std::clamp(n * 16, 32, 4000);
    std::vector<Point3d> out;
    out.reserve(samples + 1);
    int span = degree;
    for (int s = 0; s <= samples; ++s) {
        const double u = s == samples ? u1 : u0 + (u1 - u0) * s / samples;
        while (span < n - 1 && u >= knots[span + 1]) {
            ++span;
        }
        out.push_back(DeBoor(degree, knots, control, w, span, u));
    }
    return out;
}

}  // namespace cad::raw
