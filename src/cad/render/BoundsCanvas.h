// A canvas that draws nothing and keeps the box around everything drawn on it: run the
// entity walk over it first to find the view that shows the whole drawing.
#pragma once

#include "cad/render/Canvas.h"

namespace cad::render {

struct Box {
    Point2 min{1e300, 1e300};
    Point2 max{-1e300, -1e300};

    bool Empty() const { return min.x > max.x || min.y > max.y; }
    void Add(Point2 p);
    double Width() const { return Empty() ? 0 : max.x - min.x; }
    double Height() const { return Empty() ? 0 : max.y - min.y; }
};

class BoundsCanvas : public Canvas {
public:
    const Box& Bounds() const { return box_; }

    void Line(Point2 from, Point2 to, Rgb colour) override;
    void Polyline(const std::vector<PolyVertex>& vertices, bool closed, Rgb colour) override;
    void Circle(Point2 centre, double radius, Rgb colour) override;
    void Arc(Point2 centre, double radius, double startAngle, double endAngle, Rgb colour) override;
    void Dot(Point2 at, Rgb colour) override;
    void Text(const TextLine& line, Rgb colour) override;
    void MText(const TextBlock& block, Rgb colour) override;
    void Fill(const std::vector<std::vector<Point2>>& rings, Rgb colour) override;

private:
    Box box_;
};

}  // namespace cad::render
