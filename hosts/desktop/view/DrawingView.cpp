#include "view/DrawingView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "view/QtCanvas.h"

namespace desktop {

namespace {

// A CAD screen: dark ground, colour 7 drawn white.
constexpr cad::render::Rgb kBackground{0.11, 0.12, 0.14};
constexpr double kWheelStep = 1.25;
constexpr double kExtentsMargin = 0.05;

QTransform ToQTransform(const cad::Matrix3d& m) {
    return QTransform(m(0, 0), m(1, 0), m(0, 1), m(1, 1), m(0, 3), m(1, 3));
}

QColor Ground() {
    return QColor::fromRgbF(static_cast<float>(kBackground.r), static_cast<float>(kBackground.g),
                            static_cast<float>(kBackground.b));
}

}  // namespace

DrawingView::DrawingView(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::CrossCursor);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 150);
}

void DrawingView::SetDatabase(const cad::Database* db) {
    db_ = db;
    dragged_ = cad::kNullHandle;
    dragTransform_ = nullptr;
    rubberBase_.reset();
    DatabaseChanged();
}

void DrawingView::DatabaseChanged() {
    if (db_ != nullptr) {
        cad::render::WalkOptions options;
        options.background = kBackground;
        bounds_.Measure(*db_, options);
    } else {
        bounds_ = {};
    }
    Invalidate();
}

void DrawingView::Invalidate() {
    frameValid_ = false;
    update();
}

QTransform DrawingView::ViewTransform(QSize size) const {
    // x right and y up in the world; y down on screen.
    return QTransform(scale_, 0, 0, -scale_, size.width() / 2.0 - centre_.x * scale_,
                      size.height() / 2.0 + centre_.y * scale_);
}

QPointF DrawingView::WorldToScreen(cad::Point3d p) const {
    return ViewTransform(size()).map(QPointF(p.x, p.y));
}

cad::Point3d DrawingView::ScreenToWorld(QPointF p) const {
    const QPointF w = ViewTransform(size()).inverted().map(p);
    return {w.x(), w.y(), 0};
}

void DrawingView::ZoomExtents() {
    cad::render::Box box;
    if (db_ != nullptr) {
        for (const cad::Entity* entity : db_->Entities()) {
            if (const cad::render::Box* b = bounds_.Find(entity->handle)) {
                box.Add(b->min);
                box.Add(b->max);
            }
        }
    }
    if (box.Empty()) {
        centre_ = {0, 0, 0};
        scale_ = 1;
        Invalidate();
        return;
    }
    const double w = std::max(box.Width(), 1e-9) * (1 + 2 * kExtentsMargin);
    const double h = std::max(box.Height(), 1e-9) * (1 + 2 * kExtentsMargin);
    centre_ = {(box.min.x + box.max.x) / 2, (box.min.y + box.max.y) / 2, 0};
    scale_ = std::min(width() / w, height() / h);
    Invalidate();
}

void DrawingView::ZoomAt(QPointF screenPos, double factor) {
    if (!(factor > 0)) {
        return;
    }
    const cad::Point3d fixed = ScreenToWorld(screenPos);
    scale_ = std::clamp(scale_ * factor, 1e-9, 1e9);
    // Put `fixed` back under the cursor.
    const QPointF now = WorldToScreen(fixed);
    centre_.x += (now.x() - screenPos.x()) / scale_;
    centre_.y -= (now.y() - screenPos.y()) / scale_;
    Invalidate();
}

void DrawingView::PanBy(QPointF screenDelta) {
    centre_.x -= screenDelta.x() / scale_;
    centre_.y += screenDelta.y() / scale_;
    Invalidate();
}

void DrawingView::SetRubberBand(std::optional<cad::Point3d> base) {
    rubberBase_ = base;
    update();
}

void DrawingView::SetDragPreview(cad::Handle entity,
                                 std::function<cad::Matrix3d(const cad::Point3d&)> xf) {
    dragged_ = entity;
    dragTransform_ = std::move(xf);
    Invalidate();  // the frame leaves the dragged selection out
}

void DrawingView::ClearDragPreview() {
    dragged_ = cad::kNullHandle;
    dragTransform_ = nullptr;
    Invalidate();
}

QImage DrawingView::RenderFrame(QSize size, cad::Handle skipped) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Ground());
    if (db_ == nullptr || size.isEmpty()) {
        lastCounts_ = {};
        return image;
    }
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QTransform transform = ViewTransform(size);
    QtCanvas canvas(painter, transform);
    canvas.Skip(skipped);
    cad::render::WalkOptions options;
    options.background = kBackground;
    const QTransform back = transform.inverted();
    const QPointF a = back.map(QPointF(0, 0));
    const QPointF b = back.map(QPointF(size.width(), size.height()));
    options.view.Add({std::min(a.x(), b.x()), std::min(a.y(), b.y())});
    options.view.Add({std::max(a.x(), b.x()), std::max(a.y(), b.y())});
    options.cull = &bounds_;
    lastCounts_ = cad::render::DrawSpace(*db_, canvas, options);
    ++fullRedraws_;
    return image;
}

QImage DrawingView::RenderImage(QSize size) {
    return RenderFrame(size, cad::kNullHandle);
}

void DrawingView::paintEvent(QPaintEvent*) {
    if (!frameValid_ || frame_.size() != size()) {
        frame_ = RenderFrame(size(), dragged_);
        frameValid_ = true;
    }
    QPainter painter(this);
    painter.drawImage(0, 0, frame_);
    PaintOverlays(painter);
}

void DrawingView::PaintOverlays(QPainter& painter) {
    if (!cursor_) {
        return;
    }
    const QPointF at = *cursor_;
    painter.setRenderHint(QPainter::Antialiasing);
    if (db_ != nullptr && dragged_ != cad::kNullHandle && dragTransform_) {
        const QTransform moved =
            ToQTransform(dragTransform_(ScreenToWorld(at))) * ViewTransform(size());
        QtCanvas canvas(painter, moved);
        cad::render::WalkOptions options;
        options.background = kBackground;
        cad::render::DrawEntity(*db_, canvas, options, dragged_);
    }
    if (rubberBase_) {
        QPen band(QColor(255, 255, 255), 1, Qt::DashLine);
        painter.setPen(band);
        painter.drawLine(WorldToScreen(*rubberBase_), at);
    }
    painter.setPen(QPen(QColor(230, 230, 230), 1));
    painter.drawLine(QPointF(0, at.y()), QPointF(width(), at.y()));
    painter.drawLine(QPointF(at.x(), 0), QPointF(at.x(), height()));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(at.x() - 4, at.y() - 4, 8, 8));
}

void DrawingView::resizeEvent(QResizeEvent*) {
    frameValid_ = false;
}

void DrawingView::mousePressEvent(QMouseEvent* event) {
    const bool pan =
        event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && spaceDown_);
    if (pan) {
        panFrom_ = event->position();
        return;
    }
    if (event->button() == Qt::LeftButton) {
        Q_EMIT pointClicked(ScreenToWorld(event->position()));
    }
}

void DrawingView::mouseMoveEvent(QMouseEvent* event) {
    if (panFrom_) {
        PanBy(event->position() - *panFrom_);
        panFrom_ = event->position();
    }
    cursor_ = event->position();
    update();
    Q_EMIT cursorMoved(ScreenToWorld(event->position()));
}

void DrawingView::mouseReleaseEvent(QMouseEvent* event) {
    if (panFrom_ && (event->button() == Qt::MiddleButton || event->button() == Qt::LeftButton)) {
        panFrom_.reset();
    }
}

void DrawingView::wheelEvent(QWheelEvent* event) {
    const int steps = event->angleDelta().y();
    if (steps != 0) {
        ZoomAt(event->position(), std::pow(kWheelStep, steps / 120.0));
    }
    event->accept();
}

void DrawingView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT escapePressed();
        return;
    }
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceDown_ = true;
        return;
    }
    QWidget::keyPressEvent(event);
}

void DrawingView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceDown_ = false;
        panFrom_.reset();
        return;
    }
    QWidget::keyReleaseEvent(event);
}

void DrawingView::leaveEvent(QEvent*) {
    cursor_.reset();
    update();
}

}  // namespace desktop
