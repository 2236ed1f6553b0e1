// The suite's workstation settings file LocalData/awork.sys, as far as the module drawing
// needs it: the height of the device-label text, which is also the spacing unit between the
// module's outline and its header texts.
//
// Format: a text file (UTF-8, or GB18030 as written by the Windows suite), one setting per
// line, a label, a colon and the value with no blank:
//
//     标号字高:3.5
//
// Lines with other labels are ignored, so the suite may keep its own settings in the same
// file. The first line that holds the label wins. A missing file, a missing line, or a value
// that is not a positive finite number gives the default height kDefaultLabelHeight.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace draw {

inline constexpr std::string_view kLabelHeightKey = "标号字高:";
inline constexpr double kDefaultLabelHeight = 3.5;

struct AworkSettings {
    double labelHeight = kDefaultLabelHeight;  // h: device-label text height
};

// Full path of LocalData/awork.sys under the local installation folder.
std::string AworkFilePath();

// Reads the settings from `path`; never fails (see the defaults above).
AworkSettings LoadAworkSettings(const std::string& path);
// The same from lines already read.
AworkSettings ParseAworkSettings(const std::vector<std::string>& lines);

// The settings file the suite reads the label height from, content formatted as above.
std::string FormatAworkSettings(const AworkSettings& settings);

}  // namespace draw
