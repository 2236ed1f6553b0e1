// Drawing one terminal symbol for the symbol library: the terminal with its free end (the
// connection point) at the insertion point, the lead running back from it, the red
// direction marker on the free end and the terminal-text points. The symbol is sketched
// pointing right (+X) and stored turned to the direction it is shipped in.
#pragma once

#include <string>
#include <vector>

#include "cad/Database.h"

namespace symbols {

class SymbolSketch {
public:
    // `direction`: 0 up, 1 down, 2 right, 3 left.
    explicit SymbolSketch(int direction);

    void Line(double x0, double y0, double x1, double y1);
    void Circle(double cx, double cy, double r);
    // Degrees, counter-clockwise.
    void Arc(double cx, double cy, double r, double startDeg, double endDeg);
    void Rect(double x0, double y0, double x1, double y1);
    // A polyline; `width` > 0 draws it filled to that width.
    cad::LwPolyline* Poly(const std::vector<cad::Point3d>& points, bool closed, double width = 0);
    // A filled disc: two half-circle bulges drawn as wide as the radius.
    cad::LwPolyline* Disc(double cx, double cy, double r);
    // The direction marker: a red dot made of two half-circle bulges.
    void Marker(double x, double y);
    // A place for a terminal text; the first one is where the number goes.
    void TextPoint(double x, double y);

    cad::Database& Db() { return db_; }
    // How far the sketch reaches to either side of the lead's axis so far.
    double HalfWidth() const { return halfWidth_; }

private:
    cad::Point3d Turn(double x, double y) const;

    cad::Database db_;
    void Reach(double y, double margin = 0);

    int quarterTurns_ = 0;  // counter-clockwise
    double halfWidth_ = 0;
    cad::Handle pointLayer_;
};

}  // namespace symbols
