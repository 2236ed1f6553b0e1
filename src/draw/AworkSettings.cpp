#include "draw/AworkSettings.h"

#include <charconv>
#include <cmath>

#include "files/TextFile.h"
#include "host/SuiteServices.h"

namespace draw {
namespace {

// A positive finite number written in the C locale, possibly surrounded by blanks.
bool ParsePositive(std::string_view text, double& value) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    double parsed = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (ec != std::errc() || end != text.data() + text.size()) {
        return false;
    }
    if (!std::isfinite(parsed) || parsed <= 0 || parsed > kMaxLabelHeight) {
        return false;
    }
    value = parsed;
    return true;
}

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

bool IsFontName(std::string_view name) {
    return !name.empty() && name.find_first_of("/\\,") == std::string_view::npos;
}

// "FONT" or "FONT,BIGFONT"; false (settings untouched) for anything else.
bool ParseTextFont(std::string_view text, AworkSettings& settings) {
    const auto comma = text.find(',');
    const std::string_view font = TrimBlanks(text.substr(0, comma));
    const std::string_view big =
        comma == std::string_view::npos ? std::string_view{} : TrimBlanks(text.substr(comma + 1));
    if (!IsFontName(font) || (comma != std::string_view::npos && !IsFontName(big))) {
        return false;
    }
    settings.textFont = std::string(font);
    settings.bigFont = std::string(big);
    return true;
}

}  // namespace

std::string AworkFilePath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), "LocalData/awork.sys");
}

AworkSettings ParseAworkSettings(const std::vector<std::string>& lines) {
    AworkSettings settings;
    bool heightSeen = false, fontSeen = false;
    for (const std::string& line : lines) {
        if (const auto at = line.find(kLabelHeightKey); at != std::string::npos && !heightSeen) {
            heightSeen = true;
            double height = 0;
            if (ParsePositive(std::string_view(line).substr(at + kLabelHeightKey.size()), height)) {
                settings.labelHeight = height;
            }
        } else if (const auto font = line.find(kTextFontKey);
                   font != std::string::npos && !fontSeen) {
            fontSeen = true;
            ParseTextFont(std::string_view(line).substr(font + kTextFontKey.size()), settings);
        }
    }
    return settings;
}

AworkSettings LoadAworkSettings(const std::string& path) {
    const auto lines = files::ReadLines(path);
    if (!lines) {
        return AworkSettings{};
    }
    return ParseAworkSettings(*lines);
}

std::string FormatAworkSettings(const AworkSettings& settings) {
    // to_chars writes the C locale's decimal point whatever the process locale is.
    char value[64];
    const auto result = std::to_chars(value, value + sizeof value, settings.labelHeight);
    std::string font = settings.textFont;
    if (!settings.bigFont.empty()) {
        font += "," + settings.bigFont;
    }
    return std::string(kLabelHeightKey) + std::string(value, result.ptr) + "\n" +
           std::string(kTextFontKey) + font + "\n";
}

}  // namespace draw
