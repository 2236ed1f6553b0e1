// The valid range and kind of every drawing setting, in one table: `qvplc settings set`
// refuses a value outside it, the terminal settings dialog refuses a width or spacing outside
// it, and a settings file holding a value outside it is warned about (naming the file, the key
// and the value) and the default is used instead.
//
// Lengths (frame width, spacing, lead length) are at most kMaxSettingLength drawing units:
// far below cad::kMaxCoordinate, so that a module of any number of terminals placed anywhere
// in the coordinate range still has every point inside it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace drawsettings {

inline constexpr double kMaxSettingLength = 1e6;

enum class ValueKind { Integer, Real, Flag, Name };

struct SettingRange {
    const char* key;  // the member's name, as `qvplc settings` spells it
    ValueKind kind;
    double min = 0;  // Integer and Real only
    double max = 0;
    bool minExcluded = false;  // a real number above min, not at it
    double fallback = 0;       // the default used when a settings file holds a bad value
};

// Every drawing setting, in the order `qvplc settings show` lists them.
const std::vector<SettingRange>& SettingRanges();
const SettingRange* FindSettingRange(std::string_view key);

// Whether a number lies in the range (finite, whole for integers).
bool InSettingRange(const SettingRange& range, double value);

// The range as users read it: "1 to 3", "above 0, at most 1000000", "true or false", ...
std::string SettingRangeText(const SettingRange& range);

// One line per setting, "  KEY  KIND  RANGE", for the help of `qvplc settings`.
std::string SettingRangeTable();

// A symbol name becomes SYMB2LIB/<name>.dxf: it must stay a plain file name in that folder.
bool IsPlainSymbolName(std::string_view name);

// "KEY=VALUE is outside its range (RANGE)".
std::string OutOfRangeText(const SettingRange& range, const std::string& value);

// Tells (on standard error through the host) that the settings file `path` holds `value`
// for `key`, outside its range, and that `fallback` is used instead.
void WarnOutOfRange(const std::string& path, const SettingRange& range, const std::string& value);

}  // namespace drawsettings
