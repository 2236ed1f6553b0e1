// Writing a picture file from anything that draws on a canvas: the drawing is first walked
// over a BoundsCanvas to find its box, then painted to a PNG or SVG that shows all of it.
#pragma once

#include <functional>
#include <string>

#include "cad/render/Canvas.h"

namespace cad::render {

struct PictureOptions {
    int widthPx = 1200;      // the picture's width; its height follows the drawing
    int maxHeightPx = 8000;  // a very tall drawing is scaled down to this
    double marginPx = 16;
    double lineWidthPx = 1.2;
    Rgb background{1, 1, 1};
};

enum class PictureFormat { Png, Svg };

using DrawOn = std::function<void(Canvas&)>;

// The format named by the path's extension (".png", ".svg", any case); false otherwise.
bool FormatFromPath(const std::string& path, PictureFormat& format);

// Draws `draw` into a picture file at `path`, written whole to a temporary file and
// renamed. False with `error` set when the path's extension is not .png/.svg, the size is
// out of range or the file cannot be written. An empty drawing gives a blank picture.
bool WritePicture(const DrawOn& draw, const std::string& path, const PictureOptions& options,
                  std::string& error);

}  // namespace cad::render
