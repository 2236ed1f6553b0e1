// When a drawing in pieces runs out of the pieces given on the command line: how many the
// module needs, and how the option is repeated.
#pragma once

#include <vector>

#include "cad/Geometry.h"

class CDlgPlcRendal;

namespace cli {

// `points` are the pieces given, start and end point of each in turn.
void ExplainMissingPieces(const CDlgPlcRendal& dlg, const std::vector<cad::Point3d>& points);

}  // namespace cli
