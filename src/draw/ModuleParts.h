// The pieces the module drawing and its command variants (whole sheet, divided) are built
// from: sorting the chosen terminals by side, the symbol rotation table, the header, outlines and
// one terminal with its texts and links. All of them draw into a given database at a given
// origin. Files are read only through the suite's readers (the symbol drawing, awork.sys
// for the label height); the host is asked only to convert points from the UCS.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cad/Database.h"
#include "cad/Geometry.h"
#include "draw/ModuleChoice.h"
#include "draw/settings/PlcDrawSettings.h"

class CDlgPlcRendal;

namespace draw {

// The decimal angles the drawings use: shortened multiples of pi, kept as they are so that
// drawings compare equal with those the suite has always produced.
inline constexpr double kAngle90 = 1.5707963;
inline constexpr double kAngle180 = 3.1415926;
inline constexpr double kAngleMinus90 = -1.5707963;
inline constexpr double kAngle270 = 4.7123889;

// Rotation of the terminal symbol reference by termDirection (0..3) and side; 0 where the
// block keeps its own direction, and for directions outside 0..3.
double SymbolRotation(int termDirection, Side side);

// Indices into the choice's terminals of those to draw, in order. Unmarked terminals are
// left out.
struct TermLists {
    std::vector<int> first;   // upper (horizontal) or right (vertical)
    std::vector<int> second;  // lower or left
};
// The module drawing's rule: horizontal takes the upper side first and the lower second;
// vertical the right side first and the left second; terminals on other sides are not drawn.
TermLists CollectModuleTerminals(const ModuleChoice& choice);
// The divided drawing's rule, whatever the orientation: upper or right first, lower or left
// second.
TermLists CollectDividedTerminals(const ModuleChoice& choice);

// `text` as MText shows it literally: backslashes and braces escaped, so that a user's
// text cannot start a formatting code.
std::string MTextLiteral(std::string_view text);

// The data lines of the header, joined with MText paragraph breaks; the user's texts are
// taken literally.
std::string HeaderDataText(const PlcDrawSettings& settings, const ModuleChoice& choice);

// How a terminal is drawn: the frame styles 1 and 2 (2 puts the number at the symbol's first
// terminal-text point) or the cell style 3.
enum class TermStyle { Frame, FrameTextPoint, Cell };
TermStyle TermStyleFor(int componentType);

// Everything one drawing run keeps while it draws into one database. The module and its
// texts come from `choice`, how to draw them from `settings`; the dialog is where the run
// leaves its results (drawActive, labelId, the measured termLength, the placed preview).
struct DrawContext {
    CDlgPlcRendal& dlg;
    const PlcDrawSettings& settings;
    const ModuleChoice& choice;
    cad::Database& db;
    cad::Point3d origin;  // the module's origin; every point is offset by it
    double labelHeight = 3.5;
    cad::Handle layer = cad::kNullHandle;      // "DIM", or the current layer
    cad::Handle textStyle = cad::kNullHandle;  // the style every text is written in
    cad::Handle label = cad::kNullHandle;      // device-label MText
    cad::Handle data = cad::kNullHandle;       // data MText
    cad::Handle symbolBlock = cad::kNullHandle;
    // The symbol's extents around its insertion point, per rotation: every terminal of a
    // side inserts the same block the same way, so each way is measured once.
    struct SymbolFootprint {
        double rotation;
        cad::Vector3d low, high;
    };
    std::vector<SymbolFootprint> symbolFootprints;
    // The divided drawing: the description links back to its symbol, and every terminal's
    // texts are centred (numbers vertically in the middle, descriptions hanging from the top)
    // whatever the format and side.
    bool divided = false;

    DrawContext(CDlgPlcRendal& d, const ModuleChoice& c, cad::Database& target);
    cad::Point3d At(double x, double y) const { return {origin.x + x, origin.y + y, origin.z}; }
};

// Step 2 of a drawing: the label height and the text font from awork.sys, the "DIM" layer
// (or the current one), the check that the current text style exists, and the text style
// "qvcjk" with the configured font, made or brought up to date. False (nothing drawn) when
// the current style is missing.
bool OpenDrawContext(DrawContext& ctx);

// The device label and the data text at the origin; with `detailLinks` the two are linked
// to each other (QV_LABEL_DETAIL / QV_DETAIL_LABEL).
void DrawHeader(DrawContext& ctx, bool detailLinks);

// A polyline through `points` (module coordinates, converted from the UCS to world
// coordinates), linked to the device label as one of its outlines.
cad::Handle AddOutline(DrawContext& ctx, const std::vector<cad::Point3d>& points, bool closed);

// Reads the symbol drawing at termSymbolPath and defines it as block termSymbolName. Prints
// "文件<path>打开失败！" when the file cannot be read; false on any failure.
bool LoadSymbolBlock(DrawContext& ctx);

// One terminal: the choice's terminal `index` drawn on `side` at terminal point `at` (module
// coordinates: the edge point for the frame styles, the cell centre for the cell style).
void DrawTerminal(DrawContext& ctx, int index, Side side, TermStyle style, const cad::Point3d& at);

// The whole module at ctx.origin: header, outline, symbol block and terminals (steps 1 to 10
// of a module drawing). With `outlineOnly` the header and one edge line only; with
// `detailLinks` the header texts are linked to each other. On failure drawActive is
// cleared and the result is false.
bool DrawWholeModule(DrawContext& ctx, bool outlineOnly, bool detailLinks);

// Marks the dialog busy for the lifetime of a drawing command and asks for the dialog to
// be shown again when the command is over, however it ends.
class DrawingSession {
public:
    explicit DrawingSession(CDlgPlcRendal& dlg);
    ~DrawingSession();
    DrawingSession(const DrawingSession&) = delete;
    DrawingSession& operator=(const DrawingSession&) = delete;

private:
    CDlgPlcRendal& dlg_;
};

}  // namespace draw
