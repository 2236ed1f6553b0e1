#include "PiecesAdvice.h"

#include <algorithm>
#include <cmath>

#include "Messages.h"
#include "draw/DlgPlcRendal.h"
#include "draw/ModuleParts.h"

namespace cli {

void ExplainMissingPieces(const CDlgPlcRendal& dlg, const std::vector<cad::Point3d>& points) {
    const draw::TermLists lists = draw::CollectDividedTerminals(dlg.termList);
    const size_t terminals = std::max(lists.first.size(), lists.second.size());
    const size_t given = points.size() / 2;
    double longest = 0;
    for (size_t i = 0; i + 1 < points.size(); i += 2) {
        const double length =
            dlg.orientation != 0 ? points[i].y - points[i + 1].y : points[i + 1].x - points[i].x;
        longest = std::max(longest, length);
    }
    // A piece keeps one spacing free at its start and holds a terminal per spacing after it.
    const double spacing = dlg.termSpacing;
    const double places = spacing > 0 ? std::floor((longest - spacing) / spacing) : 0;
    if (places < 1) {
        Complainf(
            "the module has %zu terminals to draw in pieces and no piece given holds "
            "one; repeat --pieces X0,Y0:X1,Y1 once for each piece, each longer than %g "
            "along the module's axis",
            terminals, 2.0 * spacing + 5.0);
        return;
    }
    const size_t perPiece = static_cast<size_t>(std::min(places, 1e9));
    const size_t needed = (terminals + perPiece - 1) / perPiece;
    Complainf(
        "the module needs %zu pieces for its %zu terminals at %zu terminals a piece (as "
        "long as the longest given), but %zu were given; repeat --pieces X0,Y0:X1,Y1 "
        "once for each piece",
        needed, terminals, perPiece, given);
}

}  // namespace cli
