// What a terminal symbol's designer marked in its drawing besides the geometry: the places
// where the terminal's texts go. A terminal-text point is a POINT entity on the layer
// kTermTextPointLayer in the symbol's drawing; the points are taken in drawing order, the
// first one being where the terminal number goes.
#pragma once

#include <vector>

#include "cad/Database.h"

// The layer that holds a symbol's terminal-text points. It is switched off in the symbol
// drawings, so the points are never seen.
inline constexpr const char* kTermTextPointLayer = "QV_TERM_TEXT_POINT";

// One terminal-text point of an inserted symbol.
struct STRUCT_TERMTEXTPOINT {
    cad::Point3d point;  // world coordinates: the block's point under the reference
    int index = 0;       // 0 for the first point of the symbol, then 1, 2, ...
};

// The suite's symbol-data reader.
class CGetSymbData {
public:
    // The terminal-text points of the block reference `reference`, transformed by it, in
    // the order the symbol's drawing lists them. False (and `points` empty) when the
    // handle is not a live block reference; true with no points when the symbol marks none.
    bool GetTermTextPoints(const cad::Database& db, cad::Handle reference,
                           std::vector<STRUCT_TERMTEXTPOINT>& points) const;

    // The points of a symbol drawing's own model space (or of a block definition), as the
    // designer placed them.
    static std::vector<STRUCT_TERMTEXTPOINT> PointsOfSpace(const cad::Database& db,
                                                           cad::Handle space);
};
