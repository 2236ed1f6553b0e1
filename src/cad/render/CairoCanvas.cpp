#include "cad/render/CairoCanvas.h"

#include <cmath>
#include <numbers>

#include "cad/render/Geometry2d.h"
#include "cad/render/TextLayout.h"
#include "files/TextFile.h"

namespace cad::render {

namespace {

// cairo refuses invalid UTF-8 by putting the whole context in an error state, which would
// blank the rest of the picture: stray bytes are shown as '?'.
std::string SafeText(const std::string& text) {
    if (files::IsValidUtf8(text)) {
        return text;
    }
    std::string safe;
    for (const char c : text) {
        safe += static_cast<unsigned char>(c) < 0x80 ? c : '?';
    }
    return safe;
}

}  // namespace

CairoCanvas::CairoCanvas(cairo_t* cr, View view, double lineWidthPx, const std::string& fontFamily)
    : cr_(cr), view_(view), lineWidthPx_(lineWidthPx) {
    cairo_select_font_face(cr_, fontFamily.c_str(), CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr_, 100);
    cairo_text_extents_t extents;
    cairo_text_extents(cr_, "H", &extents);
    if (extents.height > 1) {
        capRatio_ = extents.height / 100;
    }
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr_, CAIRO_LINE_JOIN_ROUND);
}

Point2 CairoCanvas::ToPixel(Point2 world) const {
    return {(world.x - view_.topLeft.x) * view_.scale, (view_.topLeft.y - world.y) * view_.scale};
}

void CairoCanvas::SetColour(Rgb colour) {
    cairo_set_source_rgb(cr_, colour.r, colour.g, colour.b);
}

void CairoCanvas::TracePath(const std::vector<Point2>& points) {
    const Point2 first = ToPixel(points[0]);
    cairo_move_to(cr_, first.x, first.y);
    for (size_t i = 1; i < points.size(); ++i) {
        const Point2 p = ToPixel(points[i]);
        cairo_line_to(cr_, p.x, p.y);
    }
}

void CairoCanvas::StrokePoints(const std::vector<Point2>& points, Rgb colour) {
    if (points.empty()) {
        return;
    }
    TracePath(points);
    SetColour(colour);
    cairo_set_line_width(cr_, lineWidthPx_);
    cairo_stroke(cr_);
}

void CairoCanvas::FillOutlines(const std::vector<std::vector<Point2>>& outlines, Rgb colour) {
    for (const auto& points : outlines) {
        if (points.size() < 3) {
            continue;
        }
        TracePath(points);
        cairo_close_path(cr_);
    }
    // One fill for all of them: neighbouring pieces (the two halves of a dot) show no seam.
    SetColour(colour);
    cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_WINDING);
    cairo_fill_preserve(cr_);
    // A hairline around the fill keeps very thin wide segments visible.
    cairo_set_line_width(cr_, lineWidthPx_ * 0.5);
    cairo_stroke(cr_);
}

void CairoCanvas::Line(Point2 from, Point2 to, Rgb colour) {
    StrokePoints({from, to}, colour);
}

void CairoCanvas::Polyline(const std::vector<PolyVertex>& vertices, bool closed, Rgb colour) {
    const size_t n = vertices.size();
    if (n == 1) {
        Dot(vertices[0].point, colour);
        return;
    }
    const size_t segments = closed ? n : (n > 0 ? n - 1 : 0);
    std::vector<Point2> thin;  // consecutive segments without width form one stroked path
    std::vector<std::vector<Point2>> wide;
    for (size_t i = 0; i < segments; ++i) {
        const PolyVertex& v = vertices[i];
        const Point2 to = vertices[(i + 1) % n].point;
        if (v.startWidth > 0 || v.endWidth > 0) {
            StrokePoints(thin, colour);
            thin.clear();
            wide.push_back(WideSegmentOutline(v.point, to, v.bulge, v.startWidth, v.endWidth));
            continue;
        }
        const auto piece = SegmentPoints(v.point, to, v.bulge, 0.05);
        thin.insert(thin.end(), thin.empty() ? piece.begin() : piece.begin() + 1, piece.end());
    }
    StrokePoints(thin, colour);
    FillOutlines(wide, colour);
}

void CairoCanvas::Circle(Point2 centre, double radius, Rgb colour) {
    const Point2 c = ToPixel(centre);
    cairo_new_sub_path(cr_);
    cairo_arc(cr_, c.x, c.y, radius * view_.scale, 0, 2 * std::numbers::pi);
    SetColour(colour);
    cairo_set_line_width(cr_, lineWidthPx_);
    cairo_stroke(cr_);
}

void CairoCanvas::Arc(Point2 centre, double radius, double startAngle, double endAngle,
                      Rgb colour) {
    const Point2 c = ToPixel(centre);
    cairo_new_sub_path(cr_);
    // Counter-clockwise in the world is counter-clockwise on screen, which with Y down
    // means decreasing cairo angles.
    cairo_arc_negative(cr_, c.x, c.y, radius * view_.scale, -startAngle, -endAngle);
    SetColour(colour);
    cairo_set_line_width(cr_, lineWidthPx_);
    cairo_stroke(cr_);
}

void CairoCanvas::Dot(Point2 at, Rgb colour) {
    const Point2 p = ToPixel(at);
    cairo_rectangle(cr_, p.x - lineWidthPx_, p.y - lineWidthPx_, 2 * lineWidthPx_,
                    2 * lineWidthPx_);
    SetColour(colour);
    cairo_fill(cr_);
}

double CairoCanvas::Advance(const std::string& text, double height, double widthFactor) {
    return TextAdvance(text, height, widthFactor);
}

void CairoCanvas::Text(const TextLine& line, Rgb colour) {
    const double fontPx = line.height * view_.scale / capRatio_;
    // Texts too small to see are left out, and so are texts far larger than any picture,
    // which the font rasteriser would take ages over.
    if (line.text.empty() || !(fontPx > 0.05) || !(fontPx < 1e5)) {
        return;
    }
    const std::string shown = SafeText(line.text);
    cairo_set_font_size(cr_, fontPx);
    cairo_text_extents_t extents;
    cairo_text_extents(cr_, shown.c_str(), &extents);
    const double advance = LineAdvance(line);
    // The glyphs fill the advance of the one width metric.
    const double stretch = extents.x_advance > 0 ? advance * view_.scale / extents.x_advance : 1.0;
    const Point2 offset = AlignOffset(line, advance);
    const Point2 anchor = ToPixel(line.anchor);
    cairo_save(cr_);
    cairo_translate(cr_, anchor.x, anchor.y);
    cairo_rotate(cr_, -line.rotation);
    cairo_translate(cr_, offset.x * view_.scale, -offset.y * view_.scale);
    cairo_scale(cr_, stretch, 1.0);
    cairo_move_to(cr_, 0, 0);
    SetColour(colour);
    cairo_show_text(cr_, shown.c_str());
    cairo_new_path(cr_);
    cairo_restore(cr_);
}

void CairoCanvas::MText(const TextBlock& block, Rgb colour) {
    const auto measure = [&](const std::string& s) {
        return Advance(s, block.height, block.widthFactor);
    };
    for (const auto& line : LayoutTextBlock(block, measure)) {
        Text(line, colour);
    }
}

}  // namespace cad::render

namespace cad::render {

void CairoCanvas::Fill(const std::vector<std::vector<Point2>>& rings, Rgb colour) {
    bool any = false;
    for (const auto& ring : rings) {
        if (ring.size() >= 3) {
            TracePath(ring);
            cairo_close_path(cr_);
            any = true;
        }
    }
    if (!any) {
        return;
    }
    SetColour(colour);
    cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill_preserve(cr_);
    cairo_set_line_width(cr_, lineWidthPx_ * 0.5);
    cairo_stroke(cr_);
}

}  // namespace cad::render
