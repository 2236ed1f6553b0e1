// Small services over the drawing database that the drawing dialog and the module drawing
// use: width-carrying polylines in model space, erasing, measuring, saving a side database
// in the user's preferred format, handing a command string to the host, host variables.
// Each is a free function without state; failures come back through the result.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cad/Database.h"

namespace cadutil {

// A lightweight polyline of N vertices in the model space of `db`. Segment i runs from
// point i to point i + 1 with start width widths[2i] and end width widths[2i + 1]; the last
// vertex carries the default width. Z is dropped. Null handle (and nothing created) when
// `db` is null or widths does not hold exactly 2N - 2 values.
cad::Handle AddPolylineWithWidths(cad::Database* db, const std::vector<cad::Point3d>& points,
                                  const std::vector<double>& widths);
// The same with one width for every segment.
cad::Handle AddPolylineWithWidth(cad::Database* db, const std::vector<cad::Point3d>& points,
                                 double width);

// True when the object existed, was not erased yet, and is erased now.
bool EraseObject(cad::Database* db, cad::Handle id);

// The entity's extents; true only when the box has positive width and positive height.
bool EntityExtents(const cad::Database& db, const cad::Entity& entity, cad::Point3d& min,
                   cad::Point3d& max);

enum class SaveStatus { Ok, NoDatabase, WriteFailed };

// Saves `db` as a DXF file at `path` (".dxf" is added when the path lacks it) in the
// version the host's "DefaultFormatForSave" asks for: 8 R14, 12 2000, 24 2004, 36 2007,
// anything else 2010. A setting that is none of 8/12/24/36/48 reads as "48" for the
// duration of the save and is put back afterwards. The preview of a file already at the
// path is kept as the new file's thumbnail. The file is written whole to a temporary file
// and renamed over the old one, so a failed save leaves the old file as it was.
SaveStatus SaveSideDatabase(cad::Database* db, std::string path, std::string* error = nullptr);
// The path a save writes to: `path` with ".dxf" appended when it does not end so.
std::string DrawingFilePath(std::string path);

// Hands `text` to the host as typed input for the current document; empty text is ignored.
void SendCommandString(std::string_view text);

// Host variables of the current drawing.
std::string DwgPrefix();  // its folder
std::string DwgName();    // its file name
bool DwgTitled();         // whether it was ever saved under a name of its own

}  // namespace cadutil
