// The drawing surface that the entity walk draws on. Everything arrives in world
// coordinates with its colour resolved, so a file back-end (cairo) and a desktop view can
// share the one walk over the drawing database.
#pragma once

#include <string>
#include <vector>

namespace cad::render {

struct Rgb {
    double r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};

struct Point2 {
    double x = 0, y = 0;
    bool operator==(const Point2&) const = default;
};

// One vertex of a lightweight polyline: the widths and bulge describe the segment that
// starts here. A bulge is the tangent of a quarter of the arc's included angle, positive
// counter-clockwise.
struct PolyVertex {
    Point2 point;
    double startWidth = 0;
    double endWidth = 0;
    double bulge = 0;
};

enum class HAlign { Left, Center, Right };
enum class VAlign { Baseline, Bottom, Middle, Top };

// One line of text. `height` is the height of a capital letter; `widthFactor` stretches
// the glyphs along the text direction; `rotation` is in radians, counter-clockwise.
// `fitLength` > 0 squeezes or stretches the line to exactly that length (aligned and fit
// texts).
struct TextLine {
    std::string text;  // UTF-8, formatting codes already removed
    Point2 anchor;
    double height = 1;
    double rotation = 0;
    double widthFactor = 1;
    HAlign hAlign = HAlign::Left;
    VAlign vAlign = VAlign::Baseline;
    double fitLength = 0;
};

// A multi-line text block. `attachment` is 1..9 (1 top left, 5 middle centre, 9 bottom
// right); `referenceWidth` > 0 wraps paragraphs at that width.
struct TextBlock {
    std::vector<std::string> paragraphs;
    Point2 anchor;
    double height = 1;
    double rotation = 0;
    double widthFactor = 1;
    int attachment = 1;
    double referenceWidth = 0;
    double lineSpacing = 5.0 / 3.0;  // baseline to baseline, in text heights
};

class Canvas {
public:
    virtual ~Canvas() = default;

    virtual void Line(Point2 from, Point2 to, Rgb colour) = 0;
    virtual void Polyline(const std::vector<PolyVertex>& vertices, bool closed, Rgb colour) = 0;
    virtual void Circle(Point2 centre, double radius, Rgb colour) = 0;
    // Counter-clockwise from `startAngle` to `endAngle`, radians.
    virtual void Arc(Point2 centre, double radius, double startAngle, double endAngle,
                     Rgb colour) = 0;
    virtual void Dot(Point2 at, Rgb colour) = 0;
    virtual void Text(const TextLine& line, Rgb colour) = 0;
    virtual void MText(const TextBlock& block, Rgb colour) = 0;
    // Rings filled by the even-odd rule (solid hatches, solids, wipeouts).
    virtual void Fill(const std::vector<std::vector<Point2>>& rings, Rgb colour) = 0;
    // Bracket the drawing of one entity of the space (a view may group or cache by them).
    virtual void BeginEntity(unsigned long long /*handle*/) {}
    virtual void EndEntity() {}
};

}  // namespace cad::render
