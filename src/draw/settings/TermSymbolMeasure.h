// Measuring a terminal symbol from its drawing: the direction in which its lead leaves the
// module and the lead's length. The symbol's centre is the mean of the centres of the extents
// of its model-space entities; its terminal marker is the one red (colour 1) closed polyline
// of exactly two vertices with a bulge whose magnitude is below 1.1 (a dot drawn as two
// half circles). The marker's offset from the centre gives the direction and, times 2.5, the
// length. Without exactly one marker, the offset is taken from the centre to the origin, so a
// symbol drawn without a marker measures from the origin.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cad/Geometry.h"

namespace cad {
class Entity;
}

namespace drawsettings {

struct TermSymbolMeasure {
    int direction = 2;  // 0 up, 1 down, 2 right, 3 left
    float length = 0.0f;
};

// What one model-space entity contributes to the measure.
struct SymbolSample {
    bool hasExtents = false;
    cad::Point3d centre;  // of the extents
    bool isMarker = false;
    cad::Point3d markerPoint;  // midpoint of the marker's two vertices
};

TermSymbolMeasure MeasureFromSamples(const std::vector<SymbolSample>& samples);

// The direction rule: the larger of |dx| and |dy| decides; ties go to the X axis, and a zero
// offset along the deciding axis counts as positive.
int DirectionOfOffset(double dx, double dy);

// True for a red closed lightweight polyline of exactly two vertices with at least one
// vertex whose |bulge| - 1 < 0.1.
bool IsTerminalMarker(const cad::Entity& entity);

// Reads the symbol's drawing file into a side database and measures its model space. Empty,
// with `error` saying why, when the file is missing or is not a readable drawing.
std::optional<TermSymbolMeasure> MeasureTerminalSymbol(const std::string& path,
                                                       std::string* error = nullptr);

}  // namespace drawsettings
