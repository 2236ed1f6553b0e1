// The boundary paths of a hatch and what fills them.
#pragma once

#include "cad/RawShapes.h"

namespace cad {

// Solid hatches fill their boundary; pattern hatches draw their pattern lines clipped to it,
// or the boundary itself when the pattern is too dense to draw line by line.
void HatchShapes(const UnknownEntity& hatch, RawGeometry& g);

}  // namespace cad
