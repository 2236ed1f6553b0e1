// Reading values out of the raw tags of an entity the database does not model.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "cad/Geometry.h"
#include "cad/Tags.h"

namespace cad::raw {

double Real(const Tag& t);
long long Int(const Tag& t);
double FirstReal(const TagList& tags, int code, double fallback);
long long FirstInt(const TagList& tags, int code, long long fallback);
// The point whose x has `code` (y code + 10, z code + 20); `fallback` when absent.
Point3d FirstPoint(const TagList& tags, int code, Point3d fallback = {});
// Every point whose x has `code`, in order.
std::vector<Point3d> AllPoints(const TagList& tags, int code);

// The plane of a planar entity: its extrusion direction (210) and the axes the arbitrary
// axis rule gives it.
struct Ocs {
    Vector3d ax{1, 0, 0}, ay{0, 1, 0}, az{0, 0, 1};
    Point3d ToWorld(double x, double y, double z) const;
};
Ocs PlaneOf(const TagList& tags);

// Reads tags in order: each Take consumes the current tag only when its code matches.
class Cursor {
public:
    Cursor(const TagList& tags, std::size_t pos) : tags_(tags), pos_(pos) {}
    bool AtEnd() const { return pos_ >= tags_.size(); }
    int Code() const { return AtEnd() ? -1 : tags_[pos_].code; }
    std::optional<double> Real(int code);
    std::optional<long long> Int(int code);
    void Skip() { ++pos_; }

private:
    const TagList& tags_;
    std::size_t pos_;
};

// Points of the arc from `a` to `b` whose bulge is `bulge` (tan of a quarter of its sweep),
// `a` excluded and `b` included; just `b` for a straight segment.
void AppendBulgeSegment(std::vector<Point3d>& out, Point3d a, Point3d b, double bulge);
// Points of an ellipse arc centred at `c` with axes `major` and `minor`, parameters from
// `t0` to `t1` (radians, t1 taken past t0), both ends included.
std::vector<Point3d> EllipsePoints(Point3d c, Vector3d major, Vector3d minor, double t0, double t1);
// Points along a B-spline of `degree` (rational when `weights` has one per control point).
std::vector<Point3d> SplinePoints(int degree, const std::vector<double>& knots,
                                  const std::vector<Point3d>& control,
                                  const std::vector<double>& weights);

}  // namespace cad::raw
