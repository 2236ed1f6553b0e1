// The suite's workstation settings file LocalData/awork.sys, as far as the module drawing
// needs it: the height of the device-label text, which is also the spacing unit between the
// module's outline and its header texts.
//
// Format: a text file (UTF-8, or GB18030 as written by the Windows suite), one setting per
// line, a label, a colon and the value with no blank:
//
//     标号字高:3.5
//
//     文字字体:txt.shx,gbcbig.shx
//
// Lines with other labels are ignored, so the suite may keep its own settings in the same
// file. The first line that holds a label wins. A missing file, a missing line, or a height
// that is not a positive number of at most 1000000 gives the default kDefaultLabelHeight.
//
// The text font: every text of a module drawing uses the text style kTextStyleName, whose
// font this setting gives: either an SHX pair, the font and its big font for the Chinese
// characters ("txt.shx,gbcbig.shx", the default, as CAD programs set up for Chinese have
// them), or one TrueType font for viewers ("simsun.ttf", "wqy-microhei.ttc"). A value
// holding '/' or '\', more than two names, or an empty name gives the default. LibreCAD
// draws a text with the stroke font named like its style: the build makes that font,
// share/zandrix/fonts/qvcjk.lff, from WenQuanYi Micro Hei (see README).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace draw {

inline constexpr std::string_view kLabelHeightKey = "标号字高:";
inline constexpr double kDefaultLabelHeight = 3.5;
inline constexpr double kMaxLabelHeight = 1e6;
inline constexpr std::string_view kTextFontKey = "文字字体:";
inline constexpr const char* kDefaultTextFont = "txt.shx";
inline constexpr const char* kDefaultBigFont = "gbcbig.shx";
inline constexpr const char* kTextStyleName = "qvcjk";

struct AworkSettings {
    double labelHeight = kDefaultLabelHeight;  // h: device-label text height
    std::string textFont = kDefaultTextFont;   // the style's font file
    std::string bigFont = kDefaultBigFont;     // its big font; empty for a TrueType font
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
