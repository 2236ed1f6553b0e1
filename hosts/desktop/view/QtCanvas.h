// A canvas that paints the entity walk on a QPainter: the desktop view's back-end. Points
// arrive in world coordinates and are mapped to the widget by one affine transform (the
// view's, or the view's after a dragged selection's).
#pragma once

#include <QFont>
#include <QPainter>
#include <QTransform>

#include "cad/render/Canvas.h"

namespace desktop {

class QtCanvas : public cad::render::Canvas {
public:
    // Paints on `painter` (not owned), whose own transform is left as it is.
    QtCanvas(QPainter& painter, const QTransform& worldToScreen, double lineWidthPx = 1.0);

    void Line(cad::render::Point2 from, cad::render::Point2 to, cad::render::Rgb colour) override;
    void Polyline(const std::vector<cad::render::PolyVertex>& vertices, bool closed,
                  cad::render::Rgb colour) override;
    void Circle(cad::render::Point2 centre, double radius, cad::render::Rgb colour) override;
    void Arc(cad::render::Point2 centre, double radius, double startAngle, double endAngle,
             cad::render::Rgb colour) override;
    void Dot(cad::render::Point2 at, cad::render::Rgb colour) override;
    void Text(const cad::render::TextLine& line, cad::render::Rgb colour) override;
    void MText(const cad::render::TextBlock& block, cad::render::Rgb colour) override;
    void Fill(const std::vector<std::vector<cad::render::Point2>>& rings,
              cad::render::Rgb colour) override;

    // Leaves out the one entity `entity` of the walk (the selection being dragged is drawn
    // on its own, where the cursor takes it).
    void Skip(unsigned long long entity) { skipped_ = entity; }
    void BeginEntity(unsigned long long handle) override {
        skipping_ = skipped_ != 0 && handle == skipped_;
    }
    void EndEntity() override { skipping_ = false; }

    // The family the view's texts are drawn in (Latin and CJK glyphs).
    static QFont TextFont();

private:
    QPointF Map(cad::render::Point2 p) const { return toScreen_.map(QPointF(p.x, p.y)); }
    void Stroke(const std::vector<cad::render::Point2>& points, cad::render::Rgb colour);
    void SetPen(cad::render::Rgb colour);

    QPainter& painter_;
    QTransform toScreen_;
    double scale_;  // pixels per drawing unit (the mean of the transform's axes)
    double lineWidthPx_;
    QFont font_;         // at kFontPx pixels; texts are scaled from it
    double capPx_ = 72;  // capital height of font_ in pixels
    unsigned long long skipped_ = 0;
    bool skipping_ = false;
};

}  // namespace desktop
