// Draws the terminal symbols of the symbol library and writes one DXF file per symbol,
// plus symbols.txt listing each symbol's name, the direction it points in and what it is.
//   qv_make_symbols OUTPUT_FOLDER [PICTURE_FOLDER]
// With a picture folder it also draws each symbol into <name>.png there, and all of them
// with their names and captions into sheet.png, to look at.
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "SymbolSketch.h"
#include "cad/Dxf.h"
#include "cad/render/Render.h"
#include "cadutil/SymbolData.h"
#include "files/TextFile.h"

namespace {

using symbols::SymbolSketch;

struct SymbolDesign {
    const char* name;
    int direction;        // 0 up, 1 down, 2 right, 3 left
    const char* caption;  // what the symbol is, for people choosing one
    std::function<void(SymbolSketch&)> draw;
    double length = 2.5;  // from the inner end of the lead to the free end
};

// Every symbol marks where its number goes (beside the middle of the lead, clear of the
// terminal by the half height of a number of height 2 and a gap) and where its description
// goes (beyond the free end).
void TextPoints(SymbolSketch& s, double length) {
    s.TextPoint(-length / 2, s.HalfWidth() + 1.3);
    s.TextPoint(1.0, 0);
}

void CircleTerminal(SymbolSketch& s) {
    s.Line(-2.5, 0, -1, 0);
    s.Circle(-0.5, 0, 0.5);
}

void SquareTerminal(SymbolSketch& s) {
    s.Line(-2.5, 0, -1, 0);
    s.Rect(-1, -0.5, 0, 0.5);
}

void ScrewTerminal(SymbolSketch& s) {
    s.Line(-2.5, 0, -1.5, 0);
    s.Circle(-0.75, 0, 0.75);
    s.Line(-1.28, -0.53, -0.22, 0.53);
}

void FuseTerminal(SymbolSketch& s) {
    s.Line(-2.5, 0, -2.2, 0);
    s.Rect(-2.2, -0.4, -0.9, 0.4);
    s.Line(-2.2, 0, -0.6, 0);
    s.Circle(-0.3, 0, 0.3);
}

std::vector<cad::Point3d> Hexagon(double cx, double r) {
    std::vector<cad::Point3d> points;
    for (int i = 0; i < 6; ++i) {
        const double a = i * std::numbers::pi / 3;
        points.push_back({cx + r * std::cos(a), r * std::sin(a), 0});
    }
    return points;
}

// Each design is sketched pointing right, with its free end (the connection point, where
// the marker goes) at the origin and the lead running back to x = -length.
const std::vector<SymbolDesign>& Designs() {
    static const std::vector<SymbolDesign> designs = {
        {"SYMB2_S_KTR5", 2, "圆形端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.5, 0);
             s.Circle(-0.75, 0, 0.75);
         }},
        {"SYMB2_S_KTR17", 2, "螺钉端子(方框)",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.8, 0);
             s.Rect(-1.8, -0.9, 0, 0.9);
             s.Circle(-0.9, 0, 0.55);
             s.Line(-1.29, -0.39, -0.51, 0.39);
         }},
        {"SYMB2_S_KTR211", 2, "导轨式接线端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -2, 0);
             s.Rect(-2, -0.75, 0, 0.75);
             s.Line(-1.1, -0.75, -1.1, 0.75);
             s.Circle(-0.55, 0, 0.35);
         }},
        {"SYMB2_S_01", 2, "小圆端子", CircleTerminal},
        {"SYMB2_S_02", 2, "实心圆点端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -0.8, 0);
             s.Disc(-0.4, 0, 0.4);
         }},
        {"SYMB2_S_03", 2, "方形端子", SquareTerminal},
        {"SYMB2_S_04", 2, "螺钉压接端子", ScrewTerminal},
        {"SYMB2_S_05", 2, "插头(针)",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.2, 0);
             s.Poly({{-1.2, 0, 0}, {0, 0, 0}}, false, 0.8);
         }},
        {"SYMB2_S_06", 2, "插座(孔)",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -0.75, 0);
             s.Arc(0, 0, 0.75, 90, 270);
         }},
        {"SYMB2_S_07", 2, "插头插座对",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.75, 0);
             s.Arc(-1, 0, 0.75, 90, 270);
             s.Poly({{-1.25, 0, 0}, {-0.4, 0, 0}}, false, 0.5);
             s.Line(-0.4, 0, 0, 0);
         }},
        {"SYMB2_S_08", 2, "熔断器端子", FuseTerminal},
        {"SYMB2_S_09", 2, "试验断开端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.9, 0);
             s.Circle(-1.8, 0, 0.1);
             s.Line(-1.7, 0.04, -0.95, 0.6);
             s.Line(-1, 0, -0.6, 0);
             s.Circle(-0.3, 0, 0.3);
         }},
        {"SYMB2_S_10", 2, "双层端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -2, 0);
             s.Circle(-1.6, 0, 0.4);
             s.Line(-1.2, 0, -0.8, 0);
             s.Circle(-0.4, 0, 0.4);
         }},
        {"SYMB2_S_11", 2, "六角螺栓端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.5, 0);
             s.Poly(Hexagon(-0.75, 0.75), true);
             s.Circle(-0.75, 0, 0.35);
         }},
        {"SYMB2_S_12", 2, "菱形端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.5, 0);
             s.Poly({{-1.5, 0, 0}, {-0.75, 0.75, 0}, {0, 0, 0}, {-0.75, -0.75, 0}}, true);
         }},
        {"SYMB2_S_13", 2, "信号连接端子(箭头)",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.4, 0);
             s.Poly({{-1.4, -0.6, 0}, {-0.6, -0.6, 0}, {0, 0, 0}, {-0.6, 0.6, 0}, {-1.4, 0.6, 0}},
                    true);
         }},
        {"SYMB2_S_14", 2, "标记圆端子",
         [](SymbolSketch& s) {
             ScrewTerminal(s);
             s.Line(-1.28, 0.53, -0.22, -0.53);
         }},
        {"SYMB2_S_15", 2, "弹簧压接端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -2, 0);
             s.Rect(-2, -0.8, 0, 0.8);
             s.Poly({{-1.85, 0, 0},
                     {-1.6, 0.45, 0},
                     {-1.3, -0.45, 0},
                     {-1, 0.45, 0},
                     {-0.7, -0.45, 0},
                     {-0.4, 0.45, 0},
                     {-0.15, 0, 0}},
                    false);
         }},
        {"SYMB2_S_16", 2, "同心圆端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.5, 0);
             s.Circle(-0.75, 0, 0.75);
             s.Circle(-0.75, 0, 0.4);
         }},
        {"SYMB2_S_17", 2, "二极管端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -2.2, 0);
             s.Poly({{-2.2, -0.45, 0}, {-2.2, 0.45, 0}, {-1.45, 0, 0}}, true);
             s.Line(-1.45, -0.45, -1.45, 0.45);
             s.Line(-1.45, 0, -0.8, 0);
             s.Circle(-0.4, 0, 0.4);
         }},
        {"SYMB2_S_18", 2, "指示灯端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -2.35, 0);
             s.Circle(-1.75, 0, 0.6);
             s.Line(-2.17, -0.42, -1.33, 0.42);
             s.Line(-2.17, 0.42, -1.33, -0.42);
             s.Line(-1.15, 0, -0.8, 0);
             s.Circle(-0.4, 0, 0.4);
         }},
        {"SYMB2_S_19", 2, "方框圆端子",
         [](SymbolSketch& s) {
             s.Line(-2.5, 0, -1.8, 0);
             s.Rect(-1.8, -0.9, 0, 0.9);
             s.Circle(-0.9, 0, 0.5);
         }},
        {"SYMB2_S_20", 2, "短引线圆端子",
         [](SymbolSketch& s) {
             s.Line(-1.875, 0, -1, 0);
             s.Circle(-0.5, 0, 0.5);
         },
         1.875},
        {"SYMB2_S_210", 2, "短引线方形端子",
         [](SymbolSketch& s) {
             s.Line(-1.875, 0, -1, 0);
             s.Rect(-1, -0.5, 0, 0.5);
         },
         1.875},
        {"SYMB2_S_30", 0, "圆形端子(向上)", CircleTerminal},
        {"SYMB2_S_31", 1, "方形端子(向下)", SquareTerminal},
        {"SYMB2_S_32", 3, "螺钉压接端子(向左)", ScrewTerminal},
        {"SYMB2_S_33", 0, "熔断器端子(向上)", FuseTerminal},
    };
    return designs;
}

bool DrawPicture(const cad::Database& db, const std::string& stem) {
    cad::render::RenderOptions options;
    options.picture.widthPx = stem.ends_with("sheet") ? 1400 : 320;
    options.picture.lineWidthPx = 2;
    std::string error;
    if (!cad::render::RenderToFile(db, stem + ".png", options, error)) {
        std::fprintf(stderr, "qv_make_symbols: %s\n", error.c_str());
        return false;
    }
    return true;
}

// Places a copy of the symbol's drawing on the sheet as a block, inserted in its cell
// with the name and caption below it.
void AddToSheet(cad::Database& sheet, const cad::Database& symbol, const SymbolDesign& design,
                int cell) {
    const cad::Handle block = sheet.DefineBlock(design.name);
    const cad::Handle layer = sheet.AddLayer(kTermTextPointLayer, -8);
    for (const cad::Entity* entity : symbol.Entities()) {
        auto copy =
            std::unique_ptr<cad::Entity>(static_cast<cad::Entity*>(entity->Clone().release()));
        copy->layer = entity->color == 1 || symbol.Layer(entity->layer)->name == "0"
                          ? sheet.FindLayer("0")
                          : layer;
        sheet.Append(std::move(copy), block);
    }
    const double x = (cell % 6) * 12.0, y = -(cell / 6) * 12.0;
    sheet.InsertBlock(block, {x, y, 0});
    const char* lines[2] = {design.name, design.caption};
    for (int i = 0; i < 2; ++i) {
        auto* text = sheet.AppendNew<cad::Text>();
        text->text = lines[i];
        text->height = 0.8;
        text->horizontal = cad::TextHorz::Center;
        text->SetAnchor({x, y - 4.5 - 1.4 * i, 0});
        text->color = i == 0 ? 5 : 3;
    }
    auto* dot = sheet.AppendNew<cad::Circle>();  // the insertion point
    dot->center = {x, y, 0};
    dot->radius = 0.15;
    dot->color = 8;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: qv_make_symbols OUTPUT_FOLDER [PICTURE_FOLDER]\n");
        return 2;
    }
    const std::string folder = argv[1];
    cad::Database sheet;
    int cell = 0;
    std::string manifest = "# name\tdirection (0 up, 1 down, 2 right, 3 left)\tcaption\n";
    for (const auto& design : Designs()) {
        SymbolSketch sketch(design.direction);
        design.draw(sketch);
        sketch.Marker(0, 0);
        TextPoints(sketch, design.length);
        const std::string path = folder + "/" + design.name + ".dxf";
        try {
            cad::WriteDxfFile(sketch.Db(), path, cad::DxfVersion::R2000);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "qv_make_symbols: %s\n", e.what());
            return 1;
        }
        AddToSheet(sheet, sketch.Db(), design, cell++);
        if (argc == 3 && !DrawPicture(sketch.Db(), std::string(argv[2]) + "/" + design.name)) {
            return 1;
        }
        manifest += std::string(design.name) + "\t" + std::to_string(design.direction) + "\t" +
                    design.caption + "\n";
    }
    if (argc == 3 && !DrawPicture(sheet, std::string(argv[2]) + "/sheet")) {
        return 1;
    }
    std::string error;
    if (!files::WriteWhole(folder + "/symbols.txt", manifest, &error)) {
        std::fprintf(stderr, "qv_make_symbols: %s\n", error.c_str());
        return 1;
    }
    std::printf("%zu symbols written to %s\n", Designs().size(), folder.c_str());
    return 0;
}
