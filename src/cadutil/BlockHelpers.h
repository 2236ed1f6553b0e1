// Services over blocks, layers and extended data that the module drawing calls while it
// builds a module: linking entities by extended data, finding its text layer, measuring
// inserted terminal symbols.
#pragma once

#include <string>

#include "cad/Database.h"

namespace cadutil {

// Appends `item` to the extended data of `entity` under `app` (registered, and the
// application's group created, when the entity has none yet). False when `entity` names no
// live entity of `db`.
bool AppendXDataItem(cad::Database& db, cad::Handle entity, std::string_view app,
                     const cad::XDataItem& item);
// Replaces the value of the first item of `app` with the same group code as `item`, or
// appends `item` when there is none.
bool SetXDataItem(cad::Database& db, cad::Handle entity, std::string_view app,
                  const cad::XDataItem& item);

// The layer named `name` (any case), or the current layer when there is none.
cad::Handle LayerIdByName(const cad::Database& db, const std::string& name);

// The extents of a block reference: the entities of its block under its transform, leaving
// out invisible entities, entities on layers that are off or frozen, and empty texts.
// The reference's own attributes are not measured. False when `reference` is not a live
// block reference or nothing in it has extents.
bool BlockReferenceExtents(const cad::Database& db, cad::Handle reference, cad::Point3d& min,
                           cad::Point3d& max);

}  // namespace cadutil
