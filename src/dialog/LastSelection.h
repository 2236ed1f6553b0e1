// The last selection in the library tree, shared by the library editor and the drawing
// dialog through LocalData/PlcLibEdit.dat: four lines (manufacturer, series, type, module
// code), each ended by a line feed, an empty line for a level that was not selected.
#pragma once

#include <string>

namespace dialog {

struct LastSelection {
    std::string manufacturer;
    std::string series;
    std::string type;
    std::string code;

    bool operator==(const LastSelection&) const = default;
};

// local folder + "LocalData/PlcLibEdit.dat"
std::string LastSelectionPath();

// Missing file or missing lines read as empty levels.
LastSelection ReadLastSelection(const std::string& path = LastSelectionPath());

// Writes the four lines whole (temporary file and rename). False when the file cannot be
// written; the old file then stays as it was.
bool WriteLastSelection(const LastSelection& selection,
                        const std::string& path = LastSelectionPath());

}  // namespace dialog
