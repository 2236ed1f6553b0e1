// The drawing view on real drawing databases: what it paints where, how it zooms, pans and
// culls, and that the overlays of interactive input leave the drawing alone.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include "cad/Database.h"
#include "view/DrawingView.h"
#include "view/QtCanvas.h"

namespace {

cad::Line* AddLine(cad::Database& db, cad::Point3d from, cad::Point3d to, int colour = 1) {
    auto* line = db.AppendNew<cad::Line>();
    line->start = from;
    line->end = to;
    line->color = colour;
    return line;
}

bool IsRed(QRgb c) {
    return qRed(c) > 100 && qRed(c) > qGreen(c) + 60 && qRed(c) > qBlue(c) + 60;
}

// Any red pixel within `radius` of `at`.
bool RedNear(const QImage& image, QPointF at, int radius = 2) {
    for (int dy = -radius; dy <= radius; ++dy) {
        for (int dx = -radius; dx <= radius; ++dx) {
            const QPoint p(static_cast<int>(at.x()) + dx, static_cast<int>(at.y()) + dy);
            if (image.rect().contains(p) && IsRed(image.pixel(p))) {
                return true;
            }
        }
    }
    return false;
}

class DrawingViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        view.resize(400, 300);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    cad::Database db;
    desktop::DrawingView view;
};

TEST_F(DrawingViewTest, ZoomExtentsFramesTheDrawingAndPaintsItsEntitiesWhereTheyAre) {
    AddLine(db, {0, 0, 0}, {100, 0, 0});
    AddLine(db, {0, 50, 0}, {100, 50, 0});
    view.SetDatabase(&db);
    view.ZoomExtents();

    const QPointF left = view.WorldToScreen({0, 0, 0});
    const QPointF right = view.WorldToScreen({100, 50, 0});
    for (const QPointF p : {left, right}) {
        EXPECT_GE(p.x(), 0);
        EXPECT_LE(p.x(), view.width());
        EXPECT_GE(p.y(), 0);
        EXPECT_LE(p.y(), view.height());
    }
    EXPECT_GT(right.x() - left.x(), 0.8 * view.width());  // the long side fills the view
    EXPECT_LT(right.y(), left.y());                       // y goes up in the world

    const QImage image = view.RenderImage(view.size());
    EXPECT_TRUE(RedNear(image, view.WorldToScreen({50, 0, 0})));
    EXPECT_TRUE(RedNear(image, view.WorldToScreen({50, 50, 0})));
    EXPECT_FALSE(RedNear(image, view.WorldToScreen({50, 25, 0}), 4));
    EXPECT_EQ(view.LastCounts().drawn, 2);
}

TEST_F(DrawingViewTest, ZoomAtKeepsTheCursorPointAndPanFollowsTheMouse) {
    AddLine(db, {0, 0, 0}, {100, 100, 0});
    view.SetDatabase(&db);
    view.ZoomExtents();
    const QPointF cursor(123, 77);
    const cad::Point3d under = view.ScreenToWorld(cursor);
    const double before = view.Scale();
    view.ZoomAt(cursor, 2.5);
    EXPECT_NEAR(view.Scale(), before * 2.5, 1e-9);
    const QPointF again = view.WorldToScreen(under);
    EXPECT_NEAR(again.x(), cursor.x(), 1e-6);
    EXPECT_NEAR(again.y(), cursor.y(), 1e-6);

    const cad::Point3d back = view.ScreenToWorld(view.WorldToScreen({12.5, -3, 0}));
    EXPECT_NEAR(back.x, 12.5, 1e-9);
    EXPECT_NEAR(back.y, -3, 1e-9);

    // A middle-button drag moves the drawing with the mouse.
    const QPointF start = view.WorldToScreen({50, 50, 0});
    QTest::mousePress(&view, Qt::MiddleButton, {}, QPoint(200, 150));
    QMouseEvent move(QEvent::MouseMove, QPointF(230, 140), view.mapToGlobal(QPointF(230, 140)),
                     Qt::NoButton, Qt::MiddleButton, {});
    QApplication::sendEvent(&view, &move);
    QTest::mouseRelease(&view, Qt::MiddleButton, {}, QPoint(230, 140));
    const QPointF moved = view.WorldToScreen({50, 50, 0});
    EXPECT_NEAR(moved.x() - start.x(), 30, 1e-6);
    EXPECT_NEAR(moved.y() - start.y(), -10, 1e-6);
}

TEST_F(DrawingViewTest, TheMouseAndEscapeAnswerInWorldCoordinates) {
    AddLine(db, {0, 0, 0}, {40, 30, 0});
    view.SetDatabase(&db);
    view.ZoomExtents();
    QSignalSpy clicked(&view, &desktop::DrawingView::pointClicked);
    QSignalSpy moved(&view, &desktop::DrawingView::cursorMoved);
    QSignalSpy escaped(&view, &desktop::DrawingView::escapePressed);

    const QPoint at = view.WorldToScreen({40, 30, 0}).toPoint();
    QTest::mouseMove(&view, at);
    QTest::mouseClick(&view, Qt::LeftButton, {}, at);
    QTest::keyClick(&view, Qt::Key_Escape);

    ASSERT_EQ(clicked.size(), 1);
    const auto point = clicked[0][0].value<cad::Point3d>();
    const double pixel = 1 / view.Scale();
    EXPECT_NEAR(point.x, 40, pixel);
    EXPECT_NEAR(point.y, 30, pixel);
    ASSERT_GE(moved.size(), 1);
    EXPECT_NEAR(moved.last()[0].value<cad::Point3d>().x, 40, pixel);
    EXPECT_EQ(escaped.size(), 1);

    // The wheel zooms in about the cursor.
    const double before = view.Scale();
    const cad::Point3d under = view.ScreenToWorld(QPointF(at));
    QWheelEvent wheel(QPointF(at), view.mapToGlobal(QPointF(at)), {}, QPoint(0, 120), Qt::NoButton,
                      {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&view, &wheel);
    EXPECT_GT(view.Scale(), before);
    EXPECT_NEAR(view.WorldToScreen(under).x(), at.x(), 1e-6);
    EXPECT_NEAR(view.WorldToScreen(under).y(), at.y(), 1e-6);
}

TEST_F(DrawingViewTest, EntitiesOutsideTheViewAreCulledAndTheRestPaintsTheSame) {
    for (int i = 0; i < 200; ++i) {
        AddLine(db, {i * 10.0, 0, 0}, {i * 10.0 + 5, 5, 0});
    }
    auto* xline = db.AppendNew<cad::Line>();  // a long line crossing everything stays
    xline->start = {-10, 2, 0};
    xline->end = {3000, 2, 0};
    xline->color = 1;
    view.SetDatabase(&db);
    view.ZoomExtents();
    view.ZoomAt(view.WorldToScreen({100, 0, 0}), 20);

    const QImage culled = view.RenderImage(view.size());
    const auto counts = view.LastCounts();
    EXPECT_GT(counts.culled, 150);
    EXPECT_EQ(counts.drawn + counts.culled, 201);

    // The same frame drawn without culling.
    QImage full(view.size(), QImage::Format_RGB32);
    full.fill(culled.pixel(0, 0));
    {
        QPainter painter(&full);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPointF o = view.WorldToScreen({0, 0, 0});
        const double s = view.Scale();
        desktop::QtCanvas canvas(painter, QTransform(s, 0, 0, -s, o.x(), o.y()));
        cad::render::WalkOptions options;
        options.background = {0.11, 0.12, 0.14};
        const auto all = cad::render::DrawSpace(db, canvas, options);
        EXPECT_EQ(all.drawn, 201);
    }
    EXPECT_EQ(culled, full);
}

TEST_F(DrawingViewTest, TheDragPreviewFollowsTheCursorAndLeavesTheDrawingAlone) {
    auto* line = AddLine(db, {0, 0, 0}, {10, 0, 0});
    AddLine(db, {0, 100, 0}, {100, 100, 0}, 3);  // something to frame
    view.SetDatabase(&db);
    view.ZoomExtents();
    view.SetDragPreview(line->handle, [](const cad::Point3d& cursor) {
        return cad::Matrix3d::Translation({cursor.x, cursor.y, 0});
    });
    const QPointF at = view.WorldToScreen({50, 50, 0});
    QMouseEvent move(QEvent::MouseMove, at, view.mapToGlobal(at), Qt::NoButton, Qt::NoButton, {});
    QApplication::sendEvent(&view, &move);
    const QImage shown = view.grab().toImage();
    // Drawn from the cursor, not where the entity is.
    EXPECT_TRUE(RedNear(shown, view.WorldToScreen({55, 50, 0})));
    EXPECT_FALSE(RedNear(shown, view.WorldToScreen({5, 0, 0})));
    EXPECT_EQ(line->start, (cad::Point3d{0, 0, 0}));
    EXPECT_EQ(line->end, (cad::Point3d{10, 0, 0}));

    view.ClearDragPreview();
    EXPECT_TRUE(RedNear(view.grab().toImage(), view.WorldToScreen({5, 0, 0})));
}

}  // namespace
