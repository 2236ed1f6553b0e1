// The one walk over a drawing's entities that every view shares: each entity is resolved
// (layer visibility, ByLayer and ByBlock colours, block transforms) and drawn on a Canvas.
#pragma once

#include <string>
#include <unordered_map>

#include "cad/Database.h"
#include "cad/Expansion.h"
#include "cad/render/BoundsCanvas.h"
#include "cad/render/Canvas.h"

namespace cad::render {

class EntityBounds;

struct WalkOptions {
    Rgb background{1, 1, 1};  // decides the colour of index 7 and the darkening of light ones
    int maxDepth = kMaxBlockNesting;  // nested block references deeper are left out
    // How far lines without end reach: this area (the view), or the drawing's own extents
    // when empty.
    Box view;
    // With a view, the entities of the space whose measured bounds miss it are left out.
    const EntityBounds* cull = nullptr;
};

// What the walk met, for the caller's report.
struct WalkCounts {
    int drawn = 0;
    int skipped = 0;  // invisible, on a layer that is off or frozen, or not drawable
    int culled = 0;   // outside the view
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

// The bounds of each entity of a space as the walk draws it, measured once so that a view
// can leave out what it does not show. Entities that reach without end (construction lines,
// references holding them) and those that draw nothing have no bounds and are never culled.
class EntityBounds {
public:
    void Measure(const Database& db, const WalkOptions& options, Handle space = kNullHandle);
    // Null when the entity has no bounds of its own.
    const Box* Find(Handle entity) const;
    size_t Size() const { return boxes_.size(); }

private:
    std::unordered_map<Handle, Box> boxes_;
};

}  // namespace cad::render
