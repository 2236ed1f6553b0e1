#include "cadutil/SymbolData.h"

#include "cad/Operations.h"

std::vector<STRUCT_TERMTEXTPOINT> CGetSymbData::PointsOfSpace(const cad::Database& db,
                                                              cad::Handle space) {
    std::vector<STRUCT_TERMTEXTPOINT> points;
    const cad::Handle layer = db.FindLayer(kTermTextPointLayer);
    if (layer == cad::kNullHandle) {
        return points;
    }
    for (const cad::Entity* entity : db.Entities(space)) {
        const auto* point = dynamic_cast<const cad::PointEntity*>(entity);
        if (point && point->layer == layer) {
            points.push_back({point->position, static_cast<int>(points.size())});
        }
    }
    return points;
}

bool CGetSymbData::GetTermTextPoints(const cad::Database& db, cad::Handle reference,
                                     std::vector<STRUCT_TERMTEXTPOINT>& points) const {
    points.clear();
    const auto* ref = db.Get<cad::BlockReference>(reference);
    if (!ref || ref->erased || !db.Block(ref->block)) {
        return false;
    }
    const cad::Matrix3d toWorld = cad::BlockTransform(db, *ref);
    points = PointsOfSpace(db, ref->block);
    for (auto& p : points) {
        p.point = toWorld.Apply(p.point);
    }
    return true;
}
