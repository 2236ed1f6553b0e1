#include "PointText.h"

#include <charconv>
#include <cmath>
#include <vector>

namespace desktop {
namespace {

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// from_chars reads in the C locale whatever the user's locale: "1.5" is always one and a half.
std::optional<double> Number(std::string_view text) {
    text = Trim(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size() ||
        !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

}  // namespace

std::optional<cad::Point3d> ParsePointText(std::string_view text) {
    std::vector<double> values;
    while (true) {
        const auto comma = text.find(',');
        const auto value = Number(text.substr(0, comma));
        if (!value) {
            return std::nullopt;
        }
        values.push_back(*value);
        if (comma == std::string_view::npos) {
            break;
        }
        text.remove_prefix(comma + 1);
    }
    if (values.size() < 2 || values.size() > 3) {
        return std::nullopt;
    }
    return cad::Point3d{values[0], values[1], values.size() == 3 ? values[2] : 0.0};
}

}  // namespace desktop
