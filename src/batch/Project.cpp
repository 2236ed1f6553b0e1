#include "batch/Project.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <tuple>

#include "files/TextFile.h"

namespace batch {

namespace {

std::string Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t");
    return std::string(text.substr(first, last - first + 1));
}

bool ParseWhole(const std::string& text, int base, long long& value) {
    if (text.empty() || text[0] == '-' || text[0] == '+') {
        return false;
    }
    char* end = nullptr;
    errno = 0;
    value = std::strtoll(text.c_str(), &end, base);
    return *end == '\0' && errno != ERANGE;
}

bool ParseNumber(const std::string& text, double& value) {
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0' && value >= 0 && value < 1e9;
}

struct LineReader {
    Project& project;
    std::vector<ListError>& errors;
    int line = 0;
    std::vector<std::tuple<int, std::string, std::string>>
        counterStarts;  // read once base is known
    std::vector<std::tuple<int, std::string, std::pair<long long, long long>, std::string>>
        slotStarts;

    void Fault(const std::string& key, const std::string& message) {
        errors.push_back({project.file, line, key, message, true});
    }

    bool Int(const std::string& key, const std::string& value, long long low, long long high,
             long long& out) {
        if (!ParseWhole(value, 10, out) || out < low || out > high) {
            Fault(key, "'" + value + "' is not a whole number from " + std::to_string(low) +
                           " to " + std::to_string(high));
            return false;
        }
        return true;
    }

    void Read(const std::string& key, const std::string& value);
};

void LineReader::Read(const std::string& key, const std::string& value) {
    long long n = 0;
    Kind kind{};
    const std::string upper = files::UpperAscii(key);
    if (key == "form") {
        if (value == "bit") {
            project.form = AddressForm::Bit;
        } else if (value == "iec") {
            project.form = AddressForm::Iec;
        } else if (value == "counter") {
            project.form = AddressForm::Counter;
        } else {
            Fault(key, "'" + value + "' is not one of bit, iec, counter");
        }
    } else if (key == "base") {
        if (value == "8" || value == "10" || value == "16") {
            project.base = std::atoi(value.c_str());
        } else {
            Fault(key, "'" + value + "' is not one of 8, 10, 16");
        }
    } else if (key == "digits") {
        if (Int(key, value, 1, 12, n)) {
            project.digits = static_cast<int>(n);
        }
    } else if (upper.rfind("START.", 0) == 0 && ParseKind(key.substr(6), kind)) {
        counterStarts.emplace_back(line, key, value);
    } else if (upper.rfind("SLOT.", 0) == 0) {
        const auto dot = key.find('.', 5);
        long long rack = 0, slot = 0;
        if (dot == std::string::npos || !ParseWhole(key.substr(5, dot - 5), 10, rack) ||
            !ParseWhole(key.substr(dot + 1), 10, slot)) {
            Fault(key, "a slot start is written slot.RACK.SLOT = N, e.g. slot.0.3 = 8");
        } else {
            slotStarts.emplace_back(line, key, std::make_pair(rack, slot), value);
        }
    } else if (upper.rfind("PREFIX.", 0) == 0 && ParseKind(key.substr(7), kind)) {
        project.prefix[static_cast<int>(kind)] = value;
    } else if (upper.rfind("KIND.", 0) == 0 && key.size() > 5) {
        if (ParseKind(value, kind)) {
            project.kindOfType[files::UpperAscii(key.substr(5))] = kind;
        } else {
            Fault(key, "'" + value + "' is not one of DI, DO, AI, AO");
        }
    } else if (key == "reserve") {
        if (value == "points" || value == "listed") {
            project.reservePoints = value == "points";
        } else {
            Fault(key, "'" + value + "' is not one of points, listed");
        }
    } else if (key == "spare") {
        project.spareTexts.push_back(value);
    } else if (key == "address.field") {
        if (value == "description" || value == "detail") {
            project.addressInDetail = value == "detail";
        } else {
            Fault(key, "'" + value + "' is not one of description, detail");
        }
    } else if (key == "sheet.modules") {
        if (Int(key, value, 1, 10000, n)) {
            project.modulesPerSheet = static_cast<int>(n);
        }
    } else if (key == "grid.columns") {
        if (Int(key, value, 1, 1000, n)) {
            project.gridColumns = static_cast<int>(n);
        }
    } else if (key == "grid.dx" || key == "grid.dy") {
        double d = 0;
        if (!ParseNumber(value, d)) {
            Fault(key, "'" + value + "' is not a length from 0 to 1e9");
        } else {
            (key == "grid.dx" ? project.gridDx : project.gridDy) = d;
        }
    } else if (key == "frame") {
        const std::filesystem::path frame(value);
        project.frame = frame.is_absolute() || project.file.empty()
                            ? value
                            : (std::filesystem::path(project.file).parent_path() / frame)
                                  .lexically_normal()
                                  .string();
    } else {
        Fault(key, "unknown key");
    }
}

}  // namespace

const char* KindName(Kind kind) {
    static const char* const names[] = {"DI", "DO", "AI", "AO"};
    return names[static_cast<int>(kind)];
}

bool ParseKind(std::string_view text, Kind& kind) {
    const std::string upper = files::UpperAscii(text);
    for (int k = 0; k < kKindCount; ++k) {
        if (upper == KindName(static_cast<Kind>(k))) {
            kind = static_cast<Kind>(k);
            return true;
        }
    }
    return false;
}

std::string Project::PrefixOf(Kind kind) const {
    const int k = static_cast<int>(kind);
    if (!prefix[k].empty()) {
        return prefix[k];
    }
    static const char* const defaults[3][kKindCount] = {
        {"I", "Q", "IW", "QW"}, {"%IX", "%QX", "%IW", "%QW"}, {"X", "Y", "AI", "AO"}};
    return defaults[static_cast<int>(form)][k];
}

std::optional<Kind> Project::KindOfType(std::string_view moduleType) const {
    const std::string upper = files::UpperAscii(Trim(moduleType));
    if (const auto it = kindOfType.find(upper); it != kindOfType.end()) {
        return it->second;
    }
    Kind kind{};
    if (ParseKind(upper, kind)) {
        return kind;
    }
    if (upper == "RO") {
        return Kind::DO;
    }
    return std::nullopt;
}

bool Project::IsSpare(std::string_view signal) const {
    const std::string upper = files::UpperAscii(Trim(signal));
    if (upper.empty()) {
        return true;
    }
    for (const std::string& spare : spareTexts) {
        if (upper == files::UpperAscii(spare)) {
            return true;
        }
    }
    return false;
}

Project ReadProject(const std::string& path, std::vector<ListError>& errors) {
    Project project;
    project.file = path;
    const auto lines = files::ReadLines(path);
    if (!lines) {
        errors.push_back({path, 0, "", "the project file cannot be read", true});
        return project;
    }
    LineReader reader{project, errors, 0, {}, {}};
    for (const std::string& raw : *lines) {
        ++reader.line;
        const std::string text = Trim(raw.substr(0, raw.find('#')));
        if (text.empty()) {
            continue;
        }
        const auto equals = text.find('=');
        if (equals == std::string::npos) {
            reader.Fault("", "'" + text + "' is not a line 'key = value'");
            continue;
        }
        reader.Read(Trim(text.substr(0, equals)), Trim(text.substr(equals + 1)));
    }
    // Starts are read in the counter form's base, known only after the whole file.
    const int base = project.form == AddressForm::Counter ? project.base : 10;
    const std::string baseText = " in base " + std::to_string(base);
    for (const auto& [line, key, value] : reader.counterStarts) {
        Kind kind{};
        ParseKind(key.substr(6), kind);
        long long n = 0;
        if (ParseWhole(value, base, n) && n < (1LL << 40)) {
            project.start[static_cast<int>(kind)] = n;
        } else {
            errors.push_back(
                {path, line, key, "'" + value + "' is not a whole number" + baseText, true});
        }
    }
    for (const auto& [line, key, slot, value] : reader.slotStarts) {
        long long n = 0;
        if (ParseWhole(value, base, n) && n < (1LL << 40)) {
            project.slotStart[slot] = n;
        } else {
            errors.push_back(
                {path, line, key, "'" + value + "' is not a whole number" + baseText, true});
        }
    }
    return project;
}

}  // namespace batch
