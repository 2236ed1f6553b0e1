// LocalData/PlcDrawSetting.dat: its labels, the per-format terminal values the format page
// keeps for all three formats, and the two shapes the file is written in: the full form of 30
// labelled lines (written by the settings sheet) and the short form of five unlabelled lines
// (written by the terminal settings dialog, and read back as a file without labels).
#pragma once

#include <array>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "draw/settings/PlcDrawSettings.h"

namespace drawsettings {

inline constexpr int kFormatCount = 3;

// One format's terminal as the format page holds it. The frame width stays text, as typed.
struct FormatTerminal {
    std::string path;
    std::string name;
    int direction = 2;
    std::string widthText = "10.0";
    float length = 5.0f;
};
using FormatTerminals = std::array<FormatTerminal, kFormatCount>;

struct FormatLabels {
    const char* path;
    const char* name;
    const char* direction;
    const char* width;
    const char* length;
};
// Labels of format 1, 2 or 3 (A, B, C in the file).
const FormatLabels& LabelsOf(int format);

inline constexpr const char* kLabelComponentType = "元件类型:";
inline constexpr const char* kLabelAutoDetail = "自动标注明细:";
inline constexpr const char* kLabelAutoDetailModel = "自动标注明细型号:";
inline constexpr const char* kLabelDetailModelType = "明细型号类型:";
inline constexpr const char* kLabelSpacing = "端子间隔距离:";

// The ten label flags in the order the file lists them, with their labels.
struct LabelFlag {
    const char* label;
    const char* member;
    bool PlcDrawSettings::*flag;
};
const std::array<LabelFlag, 10>& LabelFlags();

// The symbol a format uses when nothing is stored: KTR5, KTR17, KTR211, pointing right.
FormatTerminal DefaultFormatTerminal(int format);
// Common resource folder + SYMB2LIB/<name>.dxf.
std::string SymbolPathFor(std::string_view name);
// Common resource folder + Data/PLCType_A.dxf, _B or _C.
std::string FormatPreviewPath(int format);
// A stored path that names no existing file is taken as relative to the common folder (a
// Windows path "\SYMB2LIB\X.dwg" becoming "SYMB2LIB/X.dxf" there).
std::string ResolveStoredSymbolPath(const std::string& stored);

// The file's lines; empty optional when it cannot be opened.
std::optional<std::vector<std::string>> ReadSettingLines();

// What the format page reads: every format's values, each missing one by its default.
FormatTerminals LoadFormatTerminals(const std::vector<std::string>* lines);

// Checks one format's values as the format page read them against their ranges: a value
// outside its range is warned about (file, key, value) and replaced by the format's default.
void CheckFormatTerminal(FormatTerminal& terminal, int format);

// The values the drawing dialog's constructor presets before it loads the file.
void PresetPlcDrawSettings(PlcDrawSettings& settings);

// The drawing dialog's load; `fromFile`, when given, receives the names of the members whose
// values were taken from the file (the others hold defaults).
void LoadPlcDrawSettingsFromLines(PlcDrawSettings& settings, const std::vector<std::string>* lines,
                                  std::set<std::string>* fromFile);

// The two shapes of the file. Paths are written with the local installation folder removed.
std::string FullFormText(const FormatTerminals& formats, const PlcDrawSettings& settings);
std::string ShortFormText(const FormatTerminal& terminal);

}  // namespace drawsettings
