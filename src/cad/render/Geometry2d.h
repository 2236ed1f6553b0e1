// Plane geometry shared by the back-ends: arcs described by polyline bulges, and the
// outline of a polyline segment that has a width.
#pragma once

#include <vector>

#include "cad/render/Canvas.h"

namespace cad::render {

struct BulgeArc {
    Point2 centre;
    double radius = 0;
    double startAngle = 0;  // radians, at the segment's first point
    double sweep = 0;       // signed: positive counter-clockwise
};

// The arc from `from` to `to` with `bulge`; false for a straight segment (bulge 0 or a
// zero-length chord).
bool ArcFromBulge(Point2 from, Point2 to, double bulge, BulgeArc& arc);

// Points along one polyline segment, both ends included; arcs are split so that no piece
// turns more than `maxStep` radians.
std::vector<Point2> SegmentPoints(Point2 from, Point2 to, double bulge, double maxStep = 0.1);

// The closed outline of a segment drawn with a width that runs from `startWidth` to
// `endWidth`: the left edge forward, then the right edge back.
std::vector<Point2> WideSegmentOutline(Point2 from, Point2 to, double bulge, double startWidth,
                                       double endWidth);

// Points of an arc, counter-clockwise from start to end (end taken past start).
std::vector<Point2> ArcPoints(Point2 centre, double radius, double startAngle, double endAngle,
                              double maxStep = 0.1);

}  // namespace cad::render
