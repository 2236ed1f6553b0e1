#include "SettingsFixture.h"

#include <memory>

#include "cad/Database.h"
#include "cad/Dxf.h"
#include "cad/Entity.h"

std::string WriteSymbolDrawing(const std::filesystem::path& path, double leadX, double leadY,
                               bool withMarker, int markerColor) {
    cad::Database db;
    auto* lead = db.AppendNew<cad::Line>();
    lead->start = {0, 0, 0};
    lead->end = {leadX, leadY, 0};
    auto* terminal = db.AppendNew<cad::Circle>();
    terminal->center = {0, 0, 0};
    terminal->radius = 1.0;
    if (withMarker) {
        auto* dot = db.AppendNew<cad::LwPolyline>();
        dot->color = static_cast<std::int16_t>(markerColor);
        dot->closed = true;
        dot->vertices = {{leadX - 0.25, leadY, -1, -1, 1.0}, {leadX + 0.25, leadY, -1, -1, 1.0}};
    }
    std::filesystem::create_directories(path.parent_path());
    cad::WriteDxfFile(db, path.string(), cad::DxfVersion::R2010);
    return path.string();
}
