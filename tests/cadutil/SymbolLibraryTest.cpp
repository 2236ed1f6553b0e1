// The terminal symbols shipped in SYMB2LIB: each is a valid drawing, has exactly one red
// direction marker, measures to the direction it is drawn in, and marks its text points.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "TestPaths.h"
#include "cad/Dxf.h"
#include "cad/Operations.h"
#include "cad/render/Render.h"
#include "cadutil/EntityHelpers.h"
#include "cadutil/SymbolData.h"

using namespace testing_support;

namespace {

std::filesystem::path LibraryDir() {
    return CommonResDir() / "SYMB2LIB";
}

// name -> direction, from the library's list.
std::map<std::string, int> Listed() {
    std::map<std::string, int> listed;
    std::ifstream in(LibraryDir() / "symbols.txt");
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::istringstream fields(line);
        std::string name;
        int direction = -1;
        fields >> name >> direction;
        listed[name] = direction;
    }
    return listed;
}

int DirectionOf(double dx, double dy) {
    if (std::abs(dx) >= std::abs(dy)) {
        return dx >= 0 ? 2 : 3;
    }
    return dy >= 0 ? 0 : 1;
}

bool IsMarker(const cad::Entity& e) {
    const auto* pl = dynamic_cast<const cad::LwPolyline*>(&e);
    if (!pl || !pl->closed || pl->vertices.size() != 2 || e.color != 1) {
        return false;
    }
    for (const auto& v : pl->vertices) {
        if (std::abs(v.bulge) - 1 < 0.1) {
            return true;
        }
    }
    return false;
}

struct Measure {
    int markers = 0;
    cad::Point3d marker;
    int direction = -1;
};

// The measuring rule of the drawing settings: the mean of the valid extents centres, and
// the single marker's offset from it.
Measure MeasureSymbol(const cad::Database& db) {
    Measure m;
    double sx = 0, sy = 0;
    int n = 0;
    for (const cad::Entity* e : db.Entities()) {
        cad::Point3d lo, hi;
        if (cadutil::EntityExtents(db, *e, lo, hi)) {
            sx += (lo.x + hi.x) / 2;
            sy += (lo.y + hi.y) / 2;
            ++n;
        }
        if (IsMarker(*e)) {
            const auto* pl = static_cast<const cad::LwPolyline*>(e);
            m.marker = {(pl->vertices[0].x + pl->vertices[1].x) / 2,
                        (pl->vertices[0].y + pl->vertices[1].y) / 2, 0};
            ++m.markers;
        }
    }
    const double cx = n ? sx / n : 0, cy = n ? sy / n : 0;
    if (m.markers == 1) {
        m.direction = DirectionOf(m.marker.x - cx, m.marker.y - cy);
    }
    return m;
}

// The end of a line farthest from the insertion point: the inner end of the lead.
cad::Point3d InnerEnd(const cad::Database& db) {
    cad::Point3d far;
    for (const cad::Entity* e : db.Entities()) {
        if (const auto* line = dynamic_cast<const cad::Line*>(e)) {
            for (const auto& p : {line->start, line->end}) {
                if (std::hypot(p.x, p.y) > std::hypot(far.x, far.y)) {
                    far = p;
                }
            }
        }
    }
    return far;
}

}  // namespace

TEST(SymbolLibrary, HoldsTheDefaultsAndTwoChooserPages) {
    const auto listed = Listed();
    EXPECT_GE(listed.size(), 25u);
    for (const char* name :
         {"SYMB2_S_KTR5", "SYMB2_S_KTR17", "SYMB2_S_KTR211", "SYMB2_S_01", "SYMB2_S_02",
          "SYMB2_S_03", "SYMB2_S_04", "SYMB2_S_20", "SYMB2_S_210"}) {
        ASSERT_TRUE(listed.count(name)) << name;
        EXPECT_TRUE(std::filesystem::exists(LibraryDir() / (std::string(name) + ".dxf")));
    }
    for (const char* name : {"SYMB2_S_KTR5", "SYMB2_S_KTR17", "SYMB2_S_KTR211"}) {
        EXPECT_EQ(listed.at(name), 2) << name << ": the format defaults point right";
    }
    std::set<int> directions;
    for (const auto& [name, direction] : listed) {
        directions.insert(direction);
    }
    EXPECT_EQ(directions.size(), 4u);  // symbols drawn in every direction are measured too
}

TEST(SymbolLibrary, EverySymbolMeasuresToTheDirectionItIsDrawnIn) {
    for (const auto& [name, listedDirection] : Listed()) {
        SCOPED_TRACE(name);
        std::string error;
        const auto db = cad::TryReadDxfFile((LibraryDir() / (name + ".dxf")).string(), error);
        ASSERT_TRUE(db) << error;
        const Measure m = MeasureSymbol(*db);
        ASSERT_EQ(m.markers, 1);
        EXPECT_EQ(m.direction, listedDirection);
        // What the drawing shows: the marker sits on the insertion point (the connection
        // end) and the lead runs back from it, so its far end lies against the direction.
        EXPECT_LT(std::hypot(m.marker.x, m.marker.y), 0.3);
        const cad::Point3d inner = InnerEnd(*db);
        EXPECT_EQ(DirectionOf(-inner.x, -inner.y), listedDirection);
        const double length = std::hypot(inner.x, inner.y);
        EXPECT_GE(length, 1.5);
        EXPECT_LE(length, 3.0);
        // The first text point, beside the lead, and the second beyond the free end.
        const auto points = CGetSymbData::PointsOfSpace(*db, db->ModelSpace());
        const cad::Handle layer = db->FindLayer(kTermTextPointLayer);
        ASSERT_NE(db->Layer(layer), nullptr);
        EXPECT_LT(db->Layer(layer)->color, 0) << "the text points' layer is off";
        ASSERT_EQ(points.size(), 2u);
        EXPECT_EQ(DirectionOf(points[1].point.x, points[1].point.y), listedDirection);
        // A number of height 2 centred on the first point must clear the terminal.
        const bool across = listedDirection >= 2;  // the lead lies along X: width is in Y
        double halfWidth = 0;
        for (const cad::Entity* e : db->Entities()) {
            cad::Point3d lo, hi;
            if (e->layer != layer && cadutil::EntityExtents(*db, *e, lo, hi)) {
                halfWidth = std::max(
                    {halfWidth, std::abs(across ? lo.y : lo.x), std::abs(across ? hi.y : hi.x)});
            }
        }
        const double offset = std::abs(across ? points[0].point.y : points[0].point.x);
        EXPECT_GE(offset - 1.0, halfWidth + 0.2) << "number would touch the terminal";
    }
}

TEST(SymbolLibrary, EveryFilePassesTheIndependentReader) {
    const auto script = SourceDir() / "tests/cad/check_dxf.py";
    for (const auto& [name, direction] : Listed()) {
        std::string out;
        const int rc = RunCommand(Python() + " " + script.string() + " " +
                                      (LibraryDir() / (name + ".dxf")).string() + " 2>&1",
                                  &out);
        EXPECT_EQ(rc, 0) << name << "\n" << out;
    }
}

TEST(SymbolLibrary, EverySymbolRendersWithItsMarkerInRed) {
    TempDir dir;
    for (const auto& [name, direction] : Listed()) {
        const auto db = cad::ReadDxfFile((LibraryDir() / (name + ".dxf")).string());
        cad::render::RenderOptions options;
        options.picture.widthPx = 120;
        std::string error;
        const auto svg = dir / (name + ".svg");
        ASSERT_TRUE(cad::render::RenderToFile(*db, svg.string(), options, error)) << error;
        const std::string text = ReadFile(svg);
        EXPECT_NE(text.find("fill:rgb(100%,0%,0%)"), std::string::npos) << name;
        EXPECT_NE(text.find("stroke:rgb(0%,0%,0%)"), std::string::npos) << name;
    }
}
