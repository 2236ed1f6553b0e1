// The 256 indexed colours of drawings, as RGB for the screen and for pictures.
#pragma once

#include "cad/render/Canvas.h"

namespace cad::render {

// The RGB of colour index 1..255 (0 and 256 and anything else give index 7). Index 7 is
// the "foreground" colour: black on a light background, white on a dark one.
Rgb IndexColour(int index, Rgb background);

// The colour as it is painted: on a light background very light colours (yellow, green,
// cyan, light greys) are darkened just enough to stay legible, hue kept.
Rgb PaintColour(int index, Rgb background);

bool IsLight(Rgb colour);

}  // namespace cad::render
