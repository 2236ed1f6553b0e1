// The ranges every value of a drawing lives in. The reader refuses what lies outside them and
// the writer never writes it, so any drawing this system writes can be read again; options,
// settings and files are checked against the same numbers where their values enter.
#pragma once

#include <cmath>

namespace cad {

// Coordinates, lengths, sizes and heights: finite and at most this far from zero.
inline constexpr double kMaxCoordinate = 1e100;

inline bool InCoordinateRange(double v) {
    return std::isfinite(v) && std::abs(v) <= kMaxCoordinate;
}

}  // namespace cad
