#include "view/QtCanvas.h"

#include <QFontMetricsF>
#include <QPainterPath>
#include <QPolygonF>
#include <cmath>
#include <numbers>

#include "cad/render/Geometry2d.h"
#include "cad/render/TextLayout.h"

namespace desktop {

using cad::render::Point2;
using cad::render::Rgb;

namespace {

constexpr double kFontPx = 100;

QColor ToColor(Rgb c) {
    return QColor::fromRgbF(static_cast<float>(c.r), static_cast<float>(c.g),
                            static_cast<float>(c.b));
}

QString FromUtf8(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QFont QtCanvas::TextFont() {
    QFont font("WenQuanYi Micro Hei");
    font.setPixelSize(static_cast<int>(kFontPx));
    return font;
}

QtCanvas::QtCanvas(QPainter& painter, const QTransform& worldToScreen, double lineWidthPx)
    : painter_(painter),
      toScreen_(worldToScreen),
      scale_(std::sqrt(std::abs(worldToScreen.determinant()))),
      lineWidthPx_(lineWidthPx),
      font_(TextFont()) {
    const double cap = QFontMetricsF(font_).capHeight();
    if (cap > 1) {
        capPx_ = cap;
    }
}

void QtCanvas::SetPen(Rgb colour) {
    QPen pen(ToColor(colour));
    pen.setWidthF(lineWidthPx_);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    painter_.setPen(pen);
    painter_.setBrush(Qt::NoBrush);
}

void QtCanvas::Stroke(const std::vector<Point2>& points, Rgb colour) {
    if (points.empty()) {
        return;
    }
    QPolygonF polygon;
    polygon.reserve(static_cast<qsizetype>(points.size()));
    for (const Point2& p : points) {
        polygon << Map(p);
    }
    SetPen(colour);
    painter_.drawPolyline(polygon);
}

void QtCanvas::Line(Point2 from, Point2 to, Rgb colour) {
    if (skipping_) {
        return;
    }
    SetPen(colour);
    painter_.drawLine(Map(from), Map(to));
}

void QtCanvas::Polyline(const std::vector<cad::render::PolyVertex>& vertices, bool closed,
                        Rgb colour) {
    if (skipping_) {
        return;
    }
    const size_t n = vertices.size();
    if (n == 1) {
        Dot(vertices[0].point, colour);
        return;
    }
    const size_t segments = closed ? n : (n > 0 ? n - 1 : 0);
    std::vector<Point2> thin;
    std::vector<std::vector<Point2>> wide;
    for (size_t i = 0; i < segments; ++i) {
        const auto& v = vertices[i];
        const Point2 to = vertices[(i + 1) % n].point;
        if (v.startWidth > 0 || v.endWidth > 0) {
            Stroke(thin, colour);
            thin.clear();
            wide.push_back(
                cad::render::WideSegmentOutline(v.point, to, v.bulge, v.startWidth, v.endWidth));
            continue;
        }
        const auto piece = cad::render::SegmentPoints(v.point, to, v.bulge, 0.05);
        thin.insert(thin.end(), thin.empty() ? piece.begin() : piece.begin() + 1, piece.end());
    }
    Stroke(thin, colour);
    if (!wide.empty()) {
        Fill(wide, colour);
    }
}

void QtCanvas::Circle(Point2 centre, double radius, Rgb colour) {
    if (skipping_) {
        return;
    }
    if (toScreen_.isScaling() && !toScreen_.isRotating() &&
        std::abs(std::abs(toScreen_.m11()) - std::abs(toScreen_.m22())) < 1e-9 * scale_) {
        SetPen(colour);
        const double r = radius * scale_;
        painter_.drawEllipse(Map(centre), r, r);
        return;
    }
    Stroke(cad::render::ArcPoints(centre, radius, 0, 2 * std::numbers::pi), colour);
}

void QtCanvas::Arc(Point2 centre, double radius, double startAngle, double endAngle, Rgb colour) {
    if (skipping_) {
        return;
    }
    Stroke(cad::render::ArcPoints(centre, radius, startAngle, endAngle), colour);
}

void QtCanvas::Dot(Point2 at, Rgb colour) {
    if (skipping_) {
        return;
    }
    const QPointF p = Map(at);
    painter_.fillRect(
        QRectF(p.x() - lineWidthPx_, p.y() - lineWidthPx_, 2 * lineWidthPx_, 2 * lineWidthPx_),
        ToColor(colour));
}

void QtCanvas::Text(const cad::render::TextLine& line, Rgb colour) {
    if (skipping_) {
        return;
    }
    const double heightPx = line.height * scale_;
    // Unreadably small texts are left out, and so are texts far larger than any screen.
    if (line.text.empty() || !(heightPx > 0.5) || !(heightPx < 1e5)) {
        return;
    }
    const QString shown = FromUtf8(line.text);
    const double natural = QFontMetricsF(font_).horizontalAdvance(shown);
    const double advance = cad::render::LineAdvance(line);
    const double fontScale = heightPx / capPx_;
    // The glyphs fill the advance of the one width metric the other canvases use.
    const double stretch = natural > 0 ? advance * scale_ / (natural * fontScale) : 1.0;
    const Point2 offset = cad::render::AlignOffset(line, advance);
    // The text's direction on screen, through whatever rotation the transform adds.
    const QPointF origin = Map(line.anchor);
    const QPointF along =
        Map({line.anchor.x + std::cos(line.rotation), line.anchor.y + std::sin(line.rotation)}) -
        origin;
    const double angle = std::atan2(along.y(), along.x()) * 180 / std::numbers::pi;
    painter_.save();
    painter_.translate(origin);
    painter_.rotate(angle);
    painter_.translate(offset.x * scale_, -offset.y * scale_);
    painter_.scale(fontScale * stretch, fontScale);
    painter_.setFont(font_);
    painter_.setPen(ToColor(colour));
    painter_.drawText(QPointF(0, 0), shown);
    painter_.restore();
}

void QtCanvas::MText(const cad::render::TextBlock& block, Rgb colour) {
    const auto measure = [&](const std::string& s) {
        return cad::render::TextAdvance(s, block.height, block.widthFactor);
    };
    for (const auto& line : cad::render::LayoutTextBlock(block, measure)) {
        Text(line, colour);
    }
}

void QtCanvas::Fill(const std::vector<std::vector<Point2>>& rings, Rgb colour) {
    if (skipping_) {
        return;
    }
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    for (const auto& ring : rings) {
        if (ring.size() < 3) {
            continue;
        }
        QPolygonF polygon;
        for (const Point2& p : ring) {
            polygon << Map(p);
        }
        path.addPolygon(polygon);
        path.closeSubpath();
    }
    if (path.isEmpty()) {
        return;
    }
    painter_.fillPath(path, ToColor(colour));
}

}  // namespace desktop
