#include "draw/settings/SettingRanges.h"

#include <cmath>
#include <cstdio>

#include "draw/settings/SettingsText.h"
#include "host/Host.h"

namespace drawsettings {

const std::vector<SettingRange>& SettingRanges() {
    using K = ValueKind;
    static const std::vector<SettingRange> ranges = {
        {"componentType", K::Integer, 1, 3, false, 1},
        {"termSymbolName", K::Name},
        {"termSymbolPath", K::Name},
        {"termDirection", K::Integer, 0, 3, false, 2},
        {"termLength", K::Real, 0, kMaxSettingLength, false, 5},
        {"typeWidth", K::Real, 0, kMaxSettingLength, true, 10},
        {"termSpacing", K::Real, 0, kMaxSettingLength, true, 10},
        {"labelManufacturer", K::Flag},
        {"labelModuleDesc", K::Flag},
        {"labelModuleCode", K::Flag},
        {"labelFrameNo", K::Flag},
        {"labelSlotNo", K::Flag},
        {"labelManufacturerPrefix", K::Flag},
        {"labelModuleDescPrefix", K::Flag},
        {"labelModuleCodePrefix", K::Flag},
        {"labelFramePrefix", K::Flag},
        {"labelSlotPrefix", K::Flag},
        {"autoDetail", K::Flag},
        {"autoDetailModel", K::Flag},
        {"detailModelType", K::Integer, 0, 1, false, 0},
    };
    return ranges;
}

const SettingRange* FindSettingRange(std::string_view key) {
    for (const SettingRange& range : SettingRanges()) {
        if (key == range.key) {
            return &range;
        }
    }
    return nullptr;
}

bool InSettingRange(const SettingRange& range, double value) {
    if (!std::isfinite(value) || value > range.max) {
        return false;
    }
    if (range.kind == ValueKind::Integer && value != std::floor(value)) {
        return false;
    }
    return range.minExcluded ? value > range.min : value >= range.min;
}

std::string SettingRangeText(const SettingRange& range) {
    switch (range.kind) {
        case ValueKind::Flag:
            return "true or false";
        case ValueKind::Name:
            return "a file name in SYMB2LIB, without '/'";
        case ValueKind::Integer:
            return FormatFixed(range.min, 0) + " to " + FormatFixed(range.max, 0);
        case ValueKind::Real:
            return std::string(range.minExcluded ? "above " : "from ") + FormatFixed(range.min, 0) +
                   ", at most " + FormatFixed(range.max, 0);
    }
    return {};
}

std::string SettingRangeTable() {
    static const char* const kKinds[] = {"integer", "real", "flag", "name"};
    std::string table;
    for (const SettingRange& range : SettingRanges()) {
        char line[160];
        std::snprintf(line, sizeof line, "  %-24s %-8s %s\n", range.key,
                      kKinds[static_cast<int>(range.kind)], SettingRangeText(range).c_str());
        table += line;
    }
    return table;
}

bool IsPlainSymbolName(std::string_view name) {
    if (name.empty() || name == "." || name == "..") {
        return false;
    }
    for (const char c : name) {
        if (c == '/' || c == '\\' || c == '\0') {
            return false;
        }
    }
    return true;
}

std::string OutOfRangeText(const SettingRange& range, const std::string& value) {
    char text[512];
    std::snprintf(text, sizeof text, "%s=%s is outside its range (%s)", range.key, value.c_str(),
                  SettingRangeText(range).c_str());
    return text;
}

void WarnOutOfRange(const std::string& path, const SettingRange& range, const std::string& value) {
    char text[1024];
    std::snprintf(text, sizeof text,
                  "settings file %s: %s=%s is outside its range (%s); the default %s is used",
                  path.c_str(), range.key, value.c_str(), SettingRangeText(range).c_str(),
                  FormatFixed(range.fallback, range.kind == ValueKind::Integer ? 0 : 1).c_str());
    host::ShowMessage(text, "Zandrix", host::MsgIcon::Exclamation);
}

}  // namespace drawsettings
