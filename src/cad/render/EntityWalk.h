// The one walk over a drawing's entities that every view shares: each entity is resolved
// (layer visibility, ByLayer and ByBlock colours, block transforms) and drawn on a Canvas.
#pragma once

#include <string>

#include "cad/Database.h"
#include "cad/Expansion.h"
#include "cad/render/BoundsCanvas.h"
#include "cad/render/Canvas.h"

namespace cad::render {

struct WalkOptions {
    Rgb background{1, 1, 1};  // decides the colour of index 7 and the darkening of light ones
    int maxDepth = kMaxBlockNesting;  // nested block references deeper are left out
    // How far lines without end reach: this area (the view), or the drawing's own extents
    // when empty.
    Box view;
};

// What the walk met, for the caller's report.
struct WalkCounts {
    int drawn = 0;
    int skipped = 0;  // invisible, on a layer that is off or frozen, or not drawable
    // Why nothing was drawn: the space expands past the bounds of cad/Expansion.h.
    std::string refused;
};

// Draws the live entities of `space` (model space when kNullHandle). Attribute definitions
// show their tags when the block itself is drawn, and are left out inside references. A space
// whose references expand past the bounds of cad/Expansion.h is not drawn at all (`refused`
// says why), so no drawing can make the walk run without end.
WalkCounts DrawSpace(const Database& db, Canvas& canvas, const WalkOptions& options,
                     Handle space = kNullHandle);

// Draws the one entity `entity` as the walk draws it in its space (a drag preview).
WalkCounts DrawEntity(const Database& db, Canvas& canvas, const WalkOptions& options,
                      Handle entity);

}  // namespace cad::render
