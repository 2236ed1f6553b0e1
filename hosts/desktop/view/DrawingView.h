// The desktop's view of the drawing database: every entity drawn through the one entity walk
// on a cached frame, pan and zoom about the cursor, a crosshair, and the overlays of
// interactive input (a rubber band from a base point, a selection dragged under a transform)
// painted over the frame, so that moving the mouse never redraws the drawing.
#pragma once

#include <QImage>
#include <QTransform>
#include <QWidget>
#include <functional>
#include <optional>

#include "cad/Database.h"
#include "cad/Geometry.h"
#include "cad/render/EntityWalk.h"

namespace desktop {

class DrawingView : public QWidget {
    Q_OBJECT
public:
    explicit DrawingView(QWidget* parent = nullptr);

    void SetDatabase(const cad::Database* db);  // null: an empty view
    void DatabaseChanged();                     // entities added, removed or moved
    void ZoomExtents();
    // Zooms by `factor` (> 1 closer) keeping the world point under `screenPos` in place.
    void ZoomAt(QPointF screenPos, double factor);
    // Moves the drawing by a distance on screen.
    void PanBy(QPointF screenDelta);

    QPointF WorldToScreen(cad::Point3d p) const;
    cad::Point3d ScreenToWorld(QPointF p) const;
    double Scale() const { return scale_; }  // pixels per drawing unit

    void SetRubberBand(std::optional<cad::Point3d> base);
    void SetDragPreview(cad::Handle entity, std::function<cad::Matrix3d(const cad::Point3d&)> xf);
    void ClearDragPreview();

    // The drawing as the view shows it, at `size` around the same centre and scale.
    QImage RenderImage(QSize size);
    // What the last full redraw drew and left out.
    const cad::render::WalkCounts& LastCounts() const { return lastCounts_; }
    int FullRedraws() const { return fullRedraws_; }

Q_SIGNALS:
    void cursorMoved(cad::Point3d world);
    void pointClicked(cad::Point3d world);
    void escapePressed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QTransform ViewTransform(QSize size) const;
    QImage RenderFrame(QSize size, cad::Handle skipped);
    void Invalidate();
    void PaintOverlays(QPainter& painter);

    const cad::Database* db_ = nullptr;
    cad::render::EntityBounds bounds_;
    cad::Point3d centre_{0, 0, 0};  // the world point at the middle of the widget
    double scale_ = 1;

    QImage frame_;
    bool frameValid_ = false;
    cad::render::WalkCounts lastCounts_;
    int fullRedraws_ = 0;

    std::optional<QPointF> cursor_;
    std::optional<cad::Point3d> rubberBase_;
    cad::Handle dragged_ = cad::kNullHandle;
    std::function<cad::Matrix3d(const cad::Point3d&)> dragTransform_;

    std::optional<QPointF> panFrom_;
    bool spaceDown_ = false;
};

}  // namespace desktop
