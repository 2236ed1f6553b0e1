// Points typed on the command line: "X,Y" or "X,Y,Z", numbers as a C program writes them.
#pragma once

#include <optional>
#include <string_view>

#include "cad/Geometry.h"

namespace desktop {

// Null when the text is not a point (a missing or extra coordinate, a word, an infinite
// or not-a-number value).
std::optional<cad::Point3d> ParsePointText(std::string_view text);

}  // namespace desktop
