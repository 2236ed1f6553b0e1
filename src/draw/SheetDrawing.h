// The two drawing commands' work: RENDALFULL draws the whole module at a point the user
// drags it to; DIVRENDAL draws it in pieces, each between a start point the user drags the
// preview to and an end point the user picks, as many terminals as fit between them.
//
// Both draw into the given database (the host's working drawing), link the device label and
// the data text to each other (QV_LABEL_DETAIL / QV_DETAIL_LABEL) and, when the settings ask
// for it, record the module as a part (see RecordModulePart). They set drawActive while they
// run, drawBusy while they draw (the dialog ignores closing meanwhile), drawFinished when
// the module is complete, and at the end, however they end, reshowPending with the command
// "(Command)\nRendalFull\n" sent to the host, whose run then brings the dialog back.
#pragma once

#include <string>

#include "cad/Database.h"
#include "draw/ModuleChoice.h"
#include "draw/settings/PlcDrawSettings.h"

class CDlgPlcRendal;

// RENDALFULL: format 3 cell style, 1 closed frame, 2 closed frame with the terminal numbers
// at the symbol's first terminal-text point; any other format draws nothing. True when the
// module was drawn.
bool DrawFullSheet(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db);
// The drawing RENDALFULL does once the point is picked: the whole module with its origin at
// `at`, without preview, drag or the dialog's reshow (a batch places modules itself).
bool DrawFullSheetAt(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db,
                     const cad::Point3d& at);

// DIVRENDAL: format 3 cell style (printing the closing bracket's corners in the vertical
// orientation), any other format the frame-style terminals between brackets. True when the
// command ran to its end (pieces drawn before a cancel stay either way).
bool DrawDivided(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db);

namespace draw {

// The drawing's parts list: dictionary kPartsDictionary of the named object dictionary, one
// xrecord per part keyed by its device label. The xrecord holds pairs of a key (group code
// 3) and its value (group code 1) for the keys $LABEL (device label), $CODE (module code),
// $DESCRIBE and $NAME (the module description, when autoDetail is set), $TYPE (the model:
// the module code, or short name + " " + code when detailModelType is 1; when
// autoDetailModel is set), $NOTE (empty), $LABELDIS (the label as shown) and $Location
// (安装位置). Keys whose value is not filled are written empty.
inline constexpr const char* kPartsDictionary = "QV_DICITIONARY_PART2DATABASE";
cad::Handle RecordModulePart(const PlcDrawSettings& settings, const ModuleChoice& choice,
                             cad::Database& db);

}  // namespace draw
