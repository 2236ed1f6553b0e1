#include "cadutil/BlockHelpers.h"

#include "cad/Operations.h"

namespace cadutil {

namespace {

cad::Entity* LiveEntity(cad::Database& db, cad::Handle h) {
    cad::Entity* entity = db.Get<cad::Entity>(h);
    return entity && !entity->erased ? entity : nullptr;
}

}  // namespace

bool AppendXDataItem(cad::Database& db, cad::Handle entity, const std::string& app,
                     const cad::XDataItem& item) {
    cad::Entity* e = LiveEntity(db, entity);
    if (!e || app.empty()) {
        return false;
    }
    db.AppendXData(*e, app, item);
    return true;
}

bool SetXDataItem(cad::Database& db, cad::Handle entity, const std::string& app,
                  const cad::XDataItem& item) {
    cad::Entity* e = LiveEntity(db, entity);
    if (!e || app.empty()) {
        return false;
    }
    db.SetXData(*e, app, item);
    return true;
}

cad::Handle LayerIdByName(const cad::Database& db, const std::string& name) {
    const cad::Handle layer = db.FindLayer(name);
    return layer != cad::kNullHandle ? layer : db.CurrentLayer();
}

bool BlockReferenceExtents(const cad::Database& db, cad::Handle reference, cad::Point3d& min,
                           cad::Point3d& max) {
    const auto* ref = db.Get<cad::BlockReference>(reference);
    if (!ref || ref->erased) {
        return false;
    }
    const auto extents = cad::EntityExtents(db, *ref);
    if (!extents) {
        return false;
    }
    min = extents->min;
    max = extents->max;
    return true;
}

}  // namespace cadutil
