#include "cadutil/BlockHelpers.h"

#include <memory>
#include <optional>

#include "cad/Operations.h"

namespace cadutil {

namespace {

cad::Entity* LiveEntity(cad::Database& db, cad::Handle h) {
    cad::Entity* entity = db.Get<cad::Entity>(h);
    return entity && !entity->erased ? entity : nullptr;
}

}  // namespace

bool AppendXDataItem(cad::Database& db, cad::Handle entity, std::string_view app,
                     const cad::XDataItem& item) {
    cad::Entity* e = LiveEntity(db, entity);
    if (!e || app.empty()) {
        return false;
    }
    db.AppendXData(*e, app, item);
    return true;
}

bool SetXDataItem(cad::Database& db, cad::Handle entity, std::string_view app,
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

namespace {

bool OnLayerThatIsOff(const cad::Database& db, const cad::Entity& e) {
    const cad::LayerRecord* layer = db.Layer(e.layer);
    return layer && (layer->color < 0 || (layer->flags & 1) != 0);
}

}  // namespace

bool BlockReferenceExtents(const cad::Database& db, cad::Handle reference, cad::Point3d& min,
                           cad::Point3d& max) {
    const auto* ref = db.Get<cad::BlockReference>(reference);
    if (!ref || ref->erased || !db.Block(ref->block)) {
        return false;
    }
    const cad::Matrix3d toWorld = cad::BlockTransform(db, *ref);
    std::optional<cad::Extents3d> total;
    for (const cad::Entity* entity : db.Entities(ref->block)) {
        // Entities on a layer that is off are as invisible as hidden ones: a symbol's
        // terminal-text points must not make the terminal look longer than it is.
        if (!entity->visible || OnLayerThatIsOff(db, *entity)) {
            continue;
        }
        auto copy =
            std::unique_ptr<cad::Entity>(static_cast<cad::Entity*>(entity->Clone().release()));
        if (!cad::TransformEntity(*copy, toWorld)) {
            continue;
        }
        if (const auto extents = cad::EntityExtents(db, *copy)) {
            if (total) {
                total->Add(*extents);
            } else {
                total = extents;
            }
        }
    }
    if (!total) {
        return false;
    }
    min = total->min;
    max = total->max;
    return true;
}

}  // namespace cadutil
