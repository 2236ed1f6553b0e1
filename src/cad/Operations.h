// Operations on entities and blocks: extents, transforms, explode, and copying one
// database's model space into another as a block.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cad/Database.h"

namespace cad {

struct Extents3d {
    Point3d min;
    Point3d max;

    void Add(const Point3d& p);
    void Add(const Extents3d& e);
};

// Text measure. A text's box runs from its baseline up to its height; its width is the sum
// of its characters' advances: a full-width character (CJK ideographs, kana, hangul,
// full-width forms: East Asian Wide or Fullwidth) advances height x widthFactor, every other
// character 0.6 x height x widthFactor. No font is consulted, so every host measures alike.
double TextWidth(std::string_view utf8, double height, double widthFactor);
// The visible text of MText contents: formatting codes removed, one string per paragraph.
std::vector<std::string> MTextLines(std::string_view contents);

// Extents of one entity in world coordinates. None for invisible or erased entities, empty
// texts, unmodelled entities and block references whose block yields nothing. A block
// reference measures the entities of its block (recursively) under its transform, each cell
// of its rows and columns, and its visible attributes. A block that contains itself, or
// blocks nested past kMaxBlockNesting, are left out and `error` (when given) says so.
std::optional<Extents3d> EntityExtents(const Database& db, const Entity& entity,
                                       std::string* error = nullptr);
// Extents of every live entity of a space (model space when kNullHandle).
std::optional<Extents3d> SpaceExtents(const Database& db, Handle space = kNullHandle,
                                      std::string* error = nullptr);

// The transform of a block reference: block base point to the origin, scale, rotation,
// then to the insertion point.
Matrix3d BlockTransform(const Database& db, const BlockReference& ref);

// Applies an affine transform to a modelled entity. Non-uniform scaling of circles, arcs,
// texts and block references keeps them what they are (radius and heights scale by the
// mean of the X and Y factors). False for unmodelled entities.
bool TransformEntity(Entity& entity, const Matrix3d& m);
// The same for an entity of a database; a block reference's attributes move with it.
bool TransformEntity(Database& db, Handle entity, const Matrix3d& m);

// Replaces a block reference by copies of its block's entities (and its attributes as
// texts), transformed, appended to the reference's owner space, one set per cell of its
// rows and columns; nested references are exploded too. Entities on layer "0" take the
// reference's layer and ByBlock colours its colour; attribute definitions and unmodelled
// entities are left out. The reference is erased. Returns the handles of the new entities.
// A reference that expands past the bounds of cad/Expansion.h is left as it is: nothing is
// added, and `error` (when given) says why.
std::vector<Handle> ExplodeReference(Database& db, Handle reference, std::string* error = nullptr);
// Explodes every block reference in a space; returns how many were exploded. When the
// space's references together expand past the bounds, none is exploded and -1 is returned.
int ExplodeAllReferences(Database& db, Handle space = kNullHandle, std::string* error = nullptr);

// Copies the live entities of `source`'s model space into block `blockName` of `target`
// (defined or redefined; its base point is the source's $INSBASE), with the layers, text
// styles, applications and nested blocks they use. Handles are new; 1005 items that point
// at copied entities are remapped. Returns the block record, or kNullHandle; a source whose
// block references expand past the bounds of cad/Expansion.h is refused before anything is
// copied, with `error` (when given) saying why.
Handle InsertAsBlock(Database& target, const Database& source, const std::string& blockName,
                     std::string* error = nullptr);

// Deep-copies an entity into the same database (new handle, same owner space).
Handle CopyEntity(Database& db, Handle entity, Handle space = kNullHandle);

}  // namespace cad
