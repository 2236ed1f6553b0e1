// Measuring terminal symbols: the direction rule, the marker test, drawings written by this
// program and by an independent DXF library, and every symbol the program ships.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "SettingsFixture.h"
#include "cad/Entity.h"
#include "draw/settings/TermSymbolMeasure.h"

using drawsettings::MeasureFromSamples;
using drawsettings::SymbolSample;

namespace {

SymbolSample Extent(double x, double y) {
    SymbolSample s;
    s.hasExtents = true;
    s.centre = {x, y, 0};
    return s;
}

SymbolSample Marker(double x, double y) {
    SymbolSample s = Extent(x, y);
    s.isMarker = true;
    s.markerPoint = {x, y, 0};
    return s;
}

}  // namespace

TEST(TermSymbolRule, DirectionFollowsTheLargerOffset) {
    EXPECT_EQ(drawsettings::DirectionOfOffset(3, 1), 2);
    EXPECT_EQ(drawsettings::DirectionOfOffset(-3, 1), 3);
    EXPECT_EQ(drawsettings::DirectionOfOffset(1, 3), 0);
    EXPECT_EQ(drawsettings::DirectionOfOffset(1, -3), 1);
    EXPECT_EQ(drawsettings::DirectionOfOffset(-2, 2), 3);  // a tie goes to the X axis
    EXPECT_EQ(drawsettings::DirectionOfOffset(0, 0), 2);
}

TEST(TermSymbolRule, CentreIsTheMeanOfExtentCentresAndLengthIsTwoAndAHalfOffsets) {
    // Centres (0,0), (4,0), (2,6) and the marker at (2,6): mean (2,2), offset (0,4).
    const auto m = MeasureFromSamples({Extent(0, 0), Extent(4, 0), Marker(2, 6)});
    EXPECT_EQ(m.direction, 0);
    EXPECT_FLOAT_EQ(m.length, 10.0f);
    // Entities without extents do not pull the centre.
    SymbolSample empty;
    empty.centre = {100, 100, 0};
    const auto same = MeasureFromSamples({Extent(0, 0), Extent(4, 0), Marker(2, 6), empty});
    EXPECT_EQ(same.direction, m.direction);
    EXPECT_FLOAT_EQ(same.length, m.length);
}

TEST(TermSymbolRule, WithoutExactlyOneMarkerTheOffsetPointsToTheOrigin) {
    // Centre (3,1): offset to the origin (-3,-1), so left, whatever the drawing shows.
    const auto none = MeasureFromSamples({Extent(2, 0), Extent(4, 2)});
    EXPECT_EQ(none.direction, 3);
    EXPECT_FLOAT_EQ(none.length, 7.5f);
    const auto two = MeasureFromSamples({Extent(2, 0), Extent(4, 2), Marker(9, 0), Marker(-9, 0)});
    EXPECT_EQ(two.direction, 3);
    // Nothing measurable at all: a zero offset.
    const auto nothing = MeasureFromSamples({});
    EXPECT_EQ(nothing.direction, 2);
    EXPECT_FLOAT_EQ(nothing.length, 0.0f);
}

TEST(TermSymbolRule, MarkerIsTheRedClosedTwoVertexDot) {
    cad::LwPolyline dot;
    dot.color = 1;
    dot.closed = true;
    dot.vertices = {{0, 0, -1, -1, 1.0}, {1, 0, -1, -1, 1.0}};
    EXPECT_TRUE(drawsettings::IsTerminalMarker(dot));
    cad::LwPolyline flat = dot;  // |0| - 1 < 0.1 holds too: the test is kept as it is
    flat.vertices[0].bulge = flat.vertices[1].bulge = 0;
    EXPECT_TRUE(drawsettings::IsTerminalMarker(flat));
    cad::LwPolyline steep = dot;
    steep.vertices[0].bulge = steep.vertices[1].bulge = -1.2;
    EXPECT_FALSE(drawsettings::IsTerminalMarker(steep));
    cad::LwPolyline open = dot;
    open.closed = false;
    EXPECT_FALSE(drawsettings::IsTerminalMarker(open));
    cad::LwPolyline blue = dot;
    blue.color = 5;
    EXPECT_FALSE(drawsettings::IsTerminalMarker(blue));
    cad::LwPolyline three = dot;
    three.vertices.push_back({2, 0, -1, -1, 1.0});
    EXPECT_FALSE(drawsettings::IsTerminalMarker(three));
    cad::Circle circle;
    circle.color = 1;
    EXPECT_FALSE(drawsettings::IsTerminalMarker(circle));
}

class TermSymbolFileTest : public SettingsFixture {};

TEST_F(TermSymbolFileTest, SymbolDrawingsMeasureToTheirLeads) {
    const struct {
        double x, y;
        int direction;
    } cases[] = {{4, 0, 2}, {-4, 0, 3}, {0, 4, 0}, {0, -4, 1}};
    for (const auto& c : cases) {
        const auto path = WriteSymbolDrawing(temp / "sym.dxf", c.x, c.y);
        const auto m = drawsettings::MeasureTerminalSymbol(path);
        ASSERT_TRUE(m) << c.x << "," << c.y;
        EXPECT_EQ(m->direction, c.direction) << c.x << "," << c.y;
        // Centres (2,0), (0,0), (4,0) for a right lead: mean (2,0), marker 2 away.
        EXPECT_NEAR(m->length, 5.0f, 1e-4) << c.x << "," << c.y;
    }
}

TEST_F(TermSymbolFileTest, SymbolWithoutRedMarkerMeasuresFromTheOrigin) {
    // The dot is there but blue: not a marker, so the right-pointing lead measures left.
    const auto path = WriteSymbolDrawing(temp / "blue.dxf", 4, 0, true, 5);
    const auto m = drawsettings::MeasureTerminalSymbol(path);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->direction, 3);
}

TEST_F(TermSymbolFileTest, SymbolWrittenByAnotherProgramMeasuresAlike) {
    const auto path = (temp / "ezdxf.dxf").string();
    const std::string script =
        (testing_support::SourceDir() / "tests/settings/make_symbol.py").string();
    ASSERT_EQ(testing_support::RunCommand(testing_support::Python() + " " + script + " " + path +
                                          " 0 -6"),
              0);
    const auto m = drawsettings::MeasureTerminalSymbol(path);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->direction, 1);
}

TEST_F(TermSymbolFileTest, MissingOrNonDrawingFilesAreReported) {
    std::string error;
    EXPECT_FALSE(drawsettings::MeasureTerminalSymbol((temp / "none.dxf").string(), &error));
    EXPECT_NE(error.find("none.dxf"), std::string::npos);
    const auto png = temp / "fake.dxf";
    testing_support::WriteFile(png, std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16));
    error.clear();
    EXPECT_FALSE(drawsettings::MeasureTerminalSymbol(png.string(), &error));
    EXPECT_FALSE(error.empty());
}

// Every shipped symbol measures, by this program's reader and rule, to the direction an
// independent reader sees (from the rest of the visible drawing to the marker) and to the
// direction the symbol list declares for it.
TEST(ShippedTermSymbols, EachMeasuresToTheDirectionItsDrawingShows) {
    const auto folder = testing_support::CommonResDir() / "SYMB2LIB";
    std::vector<std::filesystem::path> symbols;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
        if (entry.path().extension() == ".dxf") {
            symbols.push_back(entry.path());
        }
    }
    ASSERT_GE(symbols.size(), 25u) << "the symbol library in " << folder << " is incomplete";
    for (const char* name : {"SYMB2_S_KTR5", "SYMB2_S_KTR17", "SYMB2_S_KTR211", "SYMB2_S_01",
                             "SYMB2_S_04", "SYMB2_S_20", "SYMB2_S_210"}) {
        EXPECT_TRUE(std::filesystem::exists(folder / (std::string(name) + ".dxf"))) << name;
    }
    std::string command =
        testing_support::Python() + " " +
        (testing_support::SourceDir() / "tests/settings/symbol_direction.py").string();
    for (const auto& symbol : symbols) {
        command += " '" + symbol.string() + "'";
    }
    std::string output;
    ASSERT_EQ(testing_support::RunCommand(command, &output), 0) << output;
    std::map<std::string, std::string> shown;  // path -> "<direction> <markers>"
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const auto second = line.find(' ', line.find(' ') + 1);
        if (second != std::string::npos) {
            shown[line.substr(second + 1)] = line.substr(0, second);
        }
    }
    // symbols.txt: name <TAB> direction <TAB> caption.
    std::map<std::string, int> declared;
    std::istringstream list(
        testing_support::ReadFile(testing_support::SourceDir() / "res/SYMB2LIB/symbols.txt"));
    for (std::string line; std::getline(list, line);) {
        const auto tab = line.find('\t');
        if (tab != std::string::npos && tab + 1 < line.size()) {
            declared[line.substr(0, tab)] = line[tab + 1] - '0';
        }
    }
    EXPECT_GE(declared.size(), 25u);
    for (const auto& symbol : symbols) {
        const std::string seen = shown[symbol.string()];
        ASSERT_TRUE(!seen.empty() && seen[0] >= '0' && seen[0] <= '3')
            << symbol.filename() << " has no single marker: " << seen;
        const auto m = drawsettings::MeasureTerminalSymbol(symbol.string());
        ASSERT_TRUE(m) << symbol;
        EXPECT_EQ(m->direction, seen[0] - '0') << symbol.filename();
        EXPECT_GT(m->length, 0.0f) << symbol.filename();
        const std::string stem = symbol.stem().string();
        if (const auto it = declared.find(stem); it != declared.end()) {
            EXPECT_EQ(m->direction, it->second) << stem << " as symbols.txt lists it";
        }
        if (stem == "SYMB2_S_KTR5" || stem == "SYMB2_S_KTR17" || stem == "SYMB2_S_KTR211") {
            EXPECT_EQ(m->direction, 2) << stem << " is a format default and points right";
        }
    }
}
