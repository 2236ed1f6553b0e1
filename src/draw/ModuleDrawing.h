// Drawing one PLC I/O module from a module choice and the drawing settings: the header (device
// label and data lines), the outline, one terminal symbol per chosen terminal with its number and
// description texts, and the extended-data links that tie them together:
//
//   terminal symbol reference  QV_SYMB2_TERM_TEXT_1      "1", number text
//                              QV_SYMB2_TERMDESC_TEXT_1  description text
//                              QV_SYMB2_LABEL            device label
//   terminal-number text       QV_SYMB2_TERM_TEXT_1      symbol reference
//                              QV_SYMB2_TERMDESC_TEXT_1  symbol reference (both on the number)
//   device label               QV_SYMB2_LABEL            every symbol reference, in order
//                              QV_ GROUPPARTXRECT_XRECT  every outline polyline, in order
//   outline polyline           QV_ GROUPPARTXRECT_TEXT   device label
//
// The description text carries no link of its own here; the divided drawing adds one.
// Lengths are drawing units; the module's origin is the upper-left corner of its body.
#pragma once

#include "cad/Database.h"
#include "cad/Geometry.h"
#include "draw/ModuleChoice.h"

class CDlgPlcRendal;

namespace draw {

// Application names of the links (the blank after "QV_" in the outline names is part of the
// name the suite's other tools look for).
inline constexpr const char* kAppTermText = "QV_SYMB2_TERM_TEXT_1";
inline constexpr const char* kAppTermDescText = "QV_SYMB2_TERMDESC_TEXT_1";
inline constexpr const char* kAppLabel = "QV_SYMB2_LABEL";
inline constexpr const char* kAppOutlineText = "QV_ GROUPPARTXRECT_TEXT";
inline constexpr const char* kAppOutlineRect = "QV_ GROUPPARTXRECT_XRECT";
inline constexpr const char* kAppLabelDetail = "QV_LABEL_DETAIL";
inline constexpr const char* kAppDetailLabel = "QV_DETAIL_LABEL";

// The preview and placement drawing, relative to the local installation folder, and the
// block it is inserted as.
inline constexpr const char* kPreviewFile = "Temp/PlcDraw.dxf";
inline constexpr const char* kPreviewBlock = "Temp_PlcDraw_Block";

}  // namespace draw

// Draws `choice` with `dlg`'s drawing settings into `db`'s model space with its origin at
// (0, 0). A non-zero `outlineOnly` draws the header and one edge line only. On failure (no
// current text style, symbol drawing unreadable or not insertable) `dlg.drawActive` is
// cleared, what was appended stays, and the result is false; on success drawActive is left as
// it was.
bool DrawModule(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db,
                int outlineOnly);

// Draws the module into a new side database, explodes its block references so that only
// plain geometry remains, and saves it as Temp/PlcDraw.dxf in the host's save format.
// Returns 1, or 0 when the drawing failed or the file could not be written.
int WriteModulePreview(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, int outlineOnly);

// Inserts Temp/PlcDraw.dxf into the host's working drawing as block "Temp_PlcDraw_Block" and
// lets the user drag a reference of it into place. Returns 1 with the picked point in `out`,
// or 0 (no preview file, unreadable, no drawing, or the drag was cancelled). With `keep` set
// the reference stays at full size at the point and `dlg.placedRefId` names it; otherwise it
// is erased.
int DragPlaceModule(CDlgPlcRendal& dlg, cad::Point3d& out, int keep);
