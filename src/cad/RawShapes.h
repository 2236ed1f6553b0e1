// The geometry of entities the database keeps as raw tags (polylines with vertices, ellipses,
// splines, hatches, solids, faces, leaders, wipeouts, construction lines), read from those
// tags as plain paths in world coordinates, so that measuring and drawing need no model of
// each kind.
#pragma once

#include <string>
#include <vector>

#include "cad/Database.h"
#include "cad/Entity.h"
#include "cad/Geometry.h"

namespace cad {

struct RawShape {
    // Stroke: each path is a line through its points. Fill: the paths are rings filled by
    // the even-odd rule. Wipe: as Fill, in the background colour.
    enum class Paint { Stroke, Fill, Wipe };
    Paint paint = Paint::Stroke;
    std::vector<std::vector<Point3d>> paths;
};

// A line without end (XLINE) or with one end (RAY): drawn as far as the view reaches.
struct RawInfiniteLine {
    Point3d base;
    Vector3d direction;
    bool bothWays = true;
};

struct RawGeometry {
    std::vector<RawShape> shapes;
    std::vector<RawInfiniteLine> infiniteLines;
    std::string block;  // a picture kept in a block (a dimension's), drawn untransformed
    bool drawable = false;
};

// The geometry of `entity` by its type name; `drawable` is false for kinds that have none.
RawGeometry RawEntityGeometry(const Database& db, const UnknownEntity& entity);

// The layer named by an entity kept as raw tags (group 8), its colour (62, ByLayer when
// absent) and whether it is shown (60).
Handle RawEntityLayer(const Database& db, const UnknownEntity& entity);
int RawEntityColour(const UnknownEntity& entity);
bool RawEntityVisible(const UnknownEntity& entity);

}  // namespace cad
