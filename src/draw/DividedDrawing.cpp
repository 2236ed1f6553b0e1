// DIVRENDAL: the module drawn in pieces along its axis (X, or -Y on a vertical module).
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "cadutil/EntityHelpers.h"
#include "draw/DlgPlcRendal.h"
#include "draw/ModuleDrawing.h"
#include "draw/ModuleParts.h"
#include "draw/SheetDrawing.h"
#include "host/Host.h"

namespace draw {
namespace {

// A prompt that ends neither normally nor by cancelling is asked again; after this many
// times it counts as cancelled, so that a failing host cannot hold the command forever.
constexpr int kMaxPromptAttempts = 100;

struct Piece {
    cad::Point3d start;
    cad::Point3d end;
};

// Where the divided drawing stands between pieces: the next undrawn terminal of each list
// and how many pieces are drawn (the first one carries the header).
struct DividedState {
    TermLists lists;
    std::size_t next[2] = {0, 0};
    int pieces = 0;

    bool Done() const { return next[0] >= lists.first.size() && next[1] >= lists.second.size(); }
};

double PieceLength(const ModuleChoice& choice, const Piece& piece) {
    return choice.orientation != 0 ? piece.start.y - piece.end.y : piece.end.x - piece.start.x;
}

// Asks for the end point of a piece until it lies far enough along the axis. False when
// the user cancels (or, at the second prompt, gives anything but a point).
bool AskEndPoint(const DrawContext& ctx, Piece& piece) {
    host::IHost& host = host::Current();
    host::InputStatus status = host::InputStatus::Cancel;
    for (int attempt = 0; attempt < kMaxPromptAttempts; ++attempt) {
        status = host.GetPoint("\n请指定绘制结束点:", &piece.start, piece.end);
        if (status == host::InputStatus::Normal || status == host::InputStatus::Cancel) {
            break;
        }
    }
    if (status != host::InputStatus::Normal) {
        return false;
    }
    const double minimum = 2.0 * ctx.settings.termSpacing + 5.0;
    while (PieceLength(ctx.choice, piece) <= minimum) {
        if (host.GetPoint("\n结束点位置不对，请重新指定:", &piece.start, piece.end) !=
            host::InputStatus::Normal) {
            return false;
        }
    }
    return true;
}

// Terminal places in a piece: one pitch is kept free at its start.
std::size_t PlacesInPiece(const DrawContext& ctx, const Piece& piece, const DividedState& state) {
    const double p = ctx.settings.termSpacing;
    const std::size_t remaining = std::max(state.lists.first.size() - state.next[0],
                                           state.lists.second.size() - state.next[1]);
    if (!(p > 0)) {
        return remaining;
    }
    const double k = std::floor((PieceLength(ctx.choice, piece) - p) / p);
    if (k < 1) {
        return 0;
    }
    return k >= static_cast<double>(remaining) ? remaining : static_cast<std::size_t>(k);
}

// Draws up to `places` terminals of one list along its edge; returns the run (count x p).
double DrawRun(DrawContext& ctx, const std::vector<int>& rows, std::size_t& next,
               std::size_t places, bool firstList) {
    const PlcDrawSettings& settings = ctx.settings;
    const double H = settings.typeWidth, p = settings.termSpacing;
    const bool vertical = ctx.choice.orientation != 0;
    const TermStyle style = TermStyleFor(settings.componentType);
    const Side side =
        vertical ? (firstList ? Side::Right : Side::Left) : (firstList ? Side::Upper : Side::Lower);
    std::size_t count = 0;
    for (; count < places && next < rows.size(); ++count, ++next) {
        const double along = static_cast<double>(count + 1) * p;
        const double across = firstList ? 0.0 : -H;
        const cad::Point3d at =
            vertical ? cad::Point3d{across, -along, 0} : cad::Point3d{along, across, 0};
        DrawTerminal(ctx, rows[next], side, style, at);
    }
    return static_cast<double>(count) * p;
}

void PrintCorner(const char* format, const cad::Point3d& point) {
    char line[128];
    std::snprintf(line, sizeof line, format, point.x, point.y);
    host::Print(line);
}

// Closes a piece with an opening and a closing bracket (converted from the UCS and linked
// to the label like an outline). The closing bracket of a vertical piece runs through its
// left-upper point at the end of the first list's run, the two lower corners half a pitch
// below the longer run, and its right-upper point at the end of the second list's run; the
// cell style prints these four points, which other tools read back in this form. With
// unequal sides the upper ends therefore do not meet the runs of the edges they stand on.
// A horizontal piece has the same brackets with the axes exchanged: the upper end follows
// the first (upper) list and the lower end the second, as on the whole module.
void CloseBrackets(DrawContext& ctx, double r1, double r2) {
    const double H = ctx.settings.typeWidth, p = ctx.settings.termSpacing;
    if (ctx.choice.orientation == 0) {
        const double xe = p / 2 + std::max(r1, r2) + p / 2;
        AddOutline(ctx, {{p / 2, 0}, {0, 0}, {0, -H}, {p / 2, -H}}, false);
        AddOutline(ctx, {{p / 2 + r1, 0}, {xe, 0}, {xe, -H}, {p / 2 + r2, -H}}, false);
        return;
    }
    const double yb = -p / 2 - std::max(r1, r2) - p / 2;
    const cad::Point3d lu{-H, -p / 2 - r1}, ld{-H, yb}, rd{0, yb}, ru{0, -p / 2 - r2};
    AddOutline(ctx, {{-H, -p / 2}, {-H, 0}, {0, 0}, {0, -p / 2}}, false);
    AddOutline(ctx, {lu, ld, rd, ru}, false);
    if (ctx.settings.componentType == 3) {
        host::IHost& host = host::Current();
        PrintCorner("\nLU:(%0.2f,%0.2f)\n", host.UcsToWcs(ctx.At(lu.x, lu.y)));
        PrintCorner("\nLD:(%0.2f,%0.2f)\n", host.UcsToWcs(ctx.At(ld.x, ld.y)));
        PrintCorner("\nRD:(%0.2f,%0.2f)\n", host.UcsToWcs(ctx.At(rd.x, rd.y)));
        PrintCorner("\nRU:(%0.2f,%0.2f)\n", host.UcsToWcs(ctx.At(ru.x, ru.y)));
    }
}

// One piece: placement, end point, terminals and brackets. False when the command ends
// (cancelled, or no terminal place left in the piece: `cancelled` tells them apart).
bool DrawPiece(DrawContext& ctx, DividedState& state, bool& cancelled) {
    CDlgPlcRendal& dlg = ctx.dlg;
    Piece piece;
    cancelled = true;
    if (!WriteModulePreview(dlg, ctx.choice, 1) || !DragPlaceModule(dlg, piece.start, 1)) {
        return false;
    }
    if (!AskEndPoint(ctx, piece)) {
        cadutil::EraseObject(&ctx.db, dlg.placedRefId);
        return false;
    }
    cancelled = false;
    cadutil::EraseObject(&ctx.db, dlg.placedRefId);
    const std::size_t places = PlacesInPiece(ctx, piece, state);
    if (places < 1) {
        return false;
    }
    ctx.origin = piece.start;
    if (state.pieces == 0) {
        DrawHeader(ctx, true);
        dlg.labelId = ctx.label;
    }
    ctx.label = dlg.labelId;
    const double r1 = DrawRun(ctx, state.lists.first, state.next[0], places, true);
    const double r2 = DrawRun(ctx, state.lists.second, state.next[1], places, false);
    CloseBrackets(ctx, r1, r2);
    ++state.pieces;
    return true;
}

}  // namespace

}  // namespace draw

bool DrawDivided(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db) {
    draw::DrawingSession session(dlg);
    draw::DrawContext ctx(dlg, choice, db);
    ctx.divided = true;
    draw::DividedState state;
    state.lists = draw::CollectDividedTerminals(choice);
    if (!draw::OpenDrawContext(ctx) || !draw::LoadSymbolBlock(ctx)) {
        dlg.drawActive = 0;
        return false;
    }
    while (!state.Done()) {
        bool cancelled = false;
        if (!draw::DrawPiece(ctx, state, cancelled)) {
            if (cancelled) {
                dlg.drawActive = 0;
                return false;
            }
            break;
        }
    }
    if (dlg.autoDetail || dlg.autoDetailModel) {
        draw::RecordModulePart(dlg, choice, db);
    }
    dlg.drawFinished = 1;
    dlg.drawActive = 0;
    return true;
}
