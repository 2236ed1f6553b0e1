#include "ui/Pictures.h"

#include <cairo.h>

#include <algorithm>

#include "cad/Dxf.h"
#include "cad/render/BoundsCanvas.h"
#include "cad/render/CairoCanvas.h"
#include "cad/render/EntityWalk.h"

namespace ui {

namespace {

constexpr double kMarginPx = 4;

cad::render::View FitView(const cad::render::Box& box, QSize size) {
    cad::render::View view;
    const double usableW = std::max(1.0, size.width() - 2 * kMarginPx);
    const double usableH = std::max(1.0, size.height() - 2 * kMarginPx);
    const double w = std::max(box.Width(), 1e-9);
    const double h = std::max(box.Height(), 1e-9);
    view.scale = std::min(usableW / w, usableH / h);
    // Centre the drawing in the picture.
    const double spareX = (size.width() - box.Width() * view.scale) / 2;
    const double spareY = (size.height() - box.Height() * view.scale) / 2;
    view.topLeft = {box.min.x - spareX / view.scale, box.max.y + spareY / view.scale};
    return view;
}

}  // namespace

QImage DrawingPicture(const std::string& path, QSize size) {
    std::string error;
    const auto db = cad::TryReadDxfFile(path, error);
    if (!db || size.isEmpty()) {
        return {};
    }
    const cad::render::WalkOptions options;
    cad::render::BoundsCanvas bounds;
    cad::render::DrawSpace(*db, bounds, options);

    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    if (bounds.Bounds().Empty()) {
        return image;
    }
    // Cairo paints straight into the image's pixels: both use native-endian premultiplied
    // 32-bit ARGB.
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(image.bits(), CAIRO_FORMAT_ARGB32, image.width(),
                                            image.height(), static_cast<int>(image.bytesPerLine()));
    cairo_t* cr = cairo_create(surface);
    {
        cad::render::CairoCanvas canvas(cr, FitView(bounds.Bounds(), size));
        cad::render::DrawSpace(*db, canvas, options);
    }
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    cairo_surface_destroy(surface);
    return image;
}

bool HasInk(const QImage& image) {
    if (image.isNull()) {
        return false;
    }
    const QRgb ground = image.pixel(0, 0);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != ground) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace ui
