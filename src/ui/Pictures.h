// Pictures of drawing files for the dialogs' preview controls, painted by the same entity walk
// as every other view of a drawing.
#pragma once

#include <QImage>
#include <QSize>

#include <string>

namespace ui {

// The model space of the drawing at `path`, fitted into `size` with a small margin on a
// white ground. A null image when the file cannot be read.
QImage DrawingPicture(const std::string& path, QSize size);

// Whether `image` holds at least one pixel that differs from its top-left pixel.
bool HasInk(const QImage& image);

}  // namespace ui
