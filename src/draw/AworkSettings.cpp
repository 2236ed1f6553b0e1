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
    if (!std::isfinite(parsed) || parsed <= 0) {
        return false;
    }
    value = parsed;
    return true;
}

}  // namespace

std::string AworkFilePath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), "LocalData/awork.sys");
}

AworkSettings ParseAworkSettings(const std::vector<std::string>& lines) {
    AworkSettings settings;
    for (const std::string& line : lines) {
        const auto at = line.find(kLabelHeightKey);
        if (at == std::string::npos) {
            continue;
        }
        double height = 0;
        if (ParsePositive(std::string_view(line).substr(at + kLabelHeightKey.size()), height)) {
            settings.labelHeight = height;
        }
        break;
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
    return std::string(kLabelHeightKey) + std::string(value, result.ptr) + "\n";
}

}  // namespace draw
