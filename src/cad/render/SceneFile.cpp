#include "cad/render/SceneFile.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <memory>

#include "cad/render/BoundsCanvas.h"
#include "cad/render/CairoCanvas.h"
#include "files/TextFile.h"

namespace cad::render {

namespace {

cairo_status_t AppendBytes(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

struct Layout {
    View view;
    int widthPx = 0;
    int heightPx = 0;
};

Layout FitView(const Box& box, const PictureOptions& options) {
    Layout layout;
    layout.widthPx = options.widthPx;
    const double usable = std::max(1.0, options.widthPx - 2 * options.marginPx);
    if (box.Empty()) {
        layout.heightPx = std::max(1, options.widthPx * 3 / 4);
        return layout;
    }
    const double w = box.Width(), h = box.Height();
    const double extent = std::max(w, h) > 0 ? std::max(w, h) : 1.0;
    double scale = (w > 0 ? usable / w : usable / extent);
    double heightPx = h * scale + 2 * options.marginPx;
    if (heightPx > options.maxHeightPx) {
        scale = std::max(1.0, options.maxHeightPx - 2 * options.marginPx) / h;
        heightPx = options.maxHeightPx;
    }
    layout.heightPx = std::max(1, static_cast<int>(std::ceil(heightPx)));
    layout.view.scale = scale;
    // Centre the drawing across the width (it only matters once the height was capped).
    const double spareX = (options.widthPx - w * scale) / 2;
    layout.view.topLeft = {box.min.x - spareX / scale, box.max.y + options.marginPx / scale};
    return layout;
}

void Paint(cairo_surface_t* surface, const Layout& layout, const DrawOn& draw,
           const PictureOptions& options) {
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, options.background.r, options.background.g, options.background.b);
    cairo_paint(cr);
    CairoCanvas canvas(cr, layout.view, options.lineWidthPx);
    draw(canvas);
    cairo_destroy(cr);
}

}  // namespace

bool FormatFromPath(const std::string& path, PictureFormat& format) {
    const auto dot = path.find_last_of('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) {
        return false;
    }
    std::string ext = path.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ext == "png") {
        format = PictureFormat::Png;
        return true;
    }
    if (ext == "svg") {
        format = PictureFormat::Svg;
        return true;
    }
    return false;
}

bool WritePicture(const DrawOn& draw, const std::string& path, const PictureOptions& options,
                  std::string& error) {
    PictureFormat format;
    if (!FormatFromPath(path, format)) {
        error = "'" + path + "': the picture must be named .png or .svg";
        return false;
    }
    if (options.widthPx < 16 || options.widthPx > 20000) {
        error = "picture width " + std::to_string(options.widthPx) +
                " px is out of range (16 to 20000)";
        return false;
    }
    BoundsCanvas bounds;
    draw(bounds);
    const Box& box = bounds.Bounds();
    // Beyond this a picture can no longer tell one point from the next anyway, and the
    // arithmetic of the view would overflow.
    constexpr double kLargest = 1e15;
    if (!box.Empty() && !(box.Width() < kLargest && box.Height() < kLargest)) {
        error = "'" + path + "': the drawing spans more than 1e15 units; nothing was drawn";
        return false;
    }
    const Layout layout = FitView(box, options);

    std::string bytes;
    cairo_status_t status;
    if (format == PictureFormat::Png) {
        cairo_surface_t* surface =
            cairo_image_surface_create(CAIRO_FORMAT_RGB24, layout.widthPx, layout.heightPx);
        Paint(surface, layout, draw, options);
        status = cairo_surface_write_to_png_stream(surface, AppendBytes, &bytes);
        cairo_surface_destroy(surface);
    } else {
        cairo_surface_t* surface = cairo_svg_surface_create_for_stream(
            AppendBytes, &bytes, layout.widthPx, layout.heightPx);
        cairo_svg_surface_set_document_unit(surface, CAIRO_SVG_UNIT_PX);
        Paint(surface, layout, draw, options);
        cairo_surface_finish(surface);
        status = cairo_surface_status(surface);
        cairo_surface_destroy(surface);
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        error = "'" + path + "': " + cairo_status_to_string(status);
        return false;
    }
    std::string writeError;
    if (!files::WriteWhole(path, bytes, &writeError)) {
        error = writeError;
        return false;
    }
    return true;
}

}  // namespace cad::render
