// The part of the terminal-symbol measure that reads the drawing database.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "cad/Database.h"
#include "cad/Dxf.h"
#include "cad/Entity.h"
#include "cad/Operations.h"
#include "draw/settings/TermSymbolMeasure.h"

namespace drawsettings {

bool IsTerminalMarker(const cad::Entity& entity) {
    const auto* polyline = dynamic_cast<const cad::LwPolyline*>(&entity);
    if (!polyline || !polyline->closed || polyline->vertices.size() != 2 || polyline->color != 1) {
        return false;
    }
    // Any bulge below 1.1 in magnitude passes, flat segments included: the test is kept as
    // the symbol libraries were measured with it.
    return std::any_of(polyline->vertices.begin(), polyline->vertices.end(),
                       [](const cad::LwVertex& v) { return std::fabs(v.bulge) - 1 < 0.1; });
}

std::optional<TermSymbolMeasure> MeasureTerminalSymbol(const std::string& path,
                                                       std::string* error) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        if (error) {
            *error = "the symbol drawing " + path + " does not exist";
        }
        return std::nullopt;
    }
    std::string readError;
    const std::unique_ptr<cad::Database> side = cad::TryReadDxfFile(path, readError);
    if (!side) {
        if (error) {
            *error = readError;
        }
        return std::nullopt;
    }
    std::vector<SymbolSample> samples;
    for (const cad::Entity* entity : side->Entities(side->ModelSpace())) {
        SymbolSample sample;
        if (const auto extents = cad::EntityExtents(*side, *entity)) {
            sample.hasExtents = true;
            sample.centre = {(extents->min.x + extents->max.x) / 2,
                             (extents->min.y + extents->max.y) / 2, 0};
        }
        if (IsTerminalMarker(*entity)) {
            const auto& vertices = static_cast<const cad::LwPolyline*>(entity)->vertices;
            sample.isMarker = true;
            sample.markerPoint = {(vertices[0].x + vertices[1].x) / 2,
                                  (vertices[0].y + vertices[1].y) / 2, 0};
        }
        samples.push_back(sample);
    }
    return MeasureFromSamples(samples);
}

}  // namespace drawsettings
