#include "draw/settings/SettingsText.h"

#include <locale.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>

#include "files/TextFile.h"

namespace drawsettings {
namespace {

bool IsContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The C locale as a locale object, so that parsing never depends on setlocale().
locale_t CLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return locale;
}

bool IsCSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsCSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsCSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

size_t CharCount(std::string_view text) {
    size_t count = 0;
    for (char c : text) {
        if (!IsContinuationByte(c)) {
            ++count;
        }
    }
    return count;
}

std::string FindLabelValue(const std::vector<std::string>& lines, std::string_view label) {
    for (const std::string& line : lines) {
        if (line.find(label) == std::string::npos) {
            continue;
        }
        size_t wanted = CharCount(line) - CharCount(label);
        size_t start = line.size();
        while (wanted > 0 && start > 0) {
            --start;
            while (start > 0 && IsContinuationByte(line[start])) {
                --start;
            }
            --wanted;
        }
        return line.substr(start);
    }
    return {};
}

double ParseReal(std::string_view text) {
    const std::string copy(text);  // strtod needs a terminated string
    const double value = strtod_l(copy.c_str(), nullptr, CLocale());
    return value;
}

int ParseInt(std::string_view text) {
    const std::string copy(text);
    errno = 0;
    const long value = std::strtol(copy.c_str(), nullptr, 10);
    if (value > INT_MAX) {
        return INT_MAX;
    }
    if (value < INT_MIN) {
        return INT_MIN;
    }
    return static_cast<int>(value);
}

std::string FormatFixed(double value, int decimals) {
    char buffer[400];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    if (result.ec != std::errc()) {
        return "0";
    }
    return std::string(buffer, result.ptr);
}

std::string RemoveFolder(std::string path, std::string_view folder) {
    if (folder.empty()) {
        return path;
    }
    size_t at = 0;
    while ((at = path.find(folder, at)) != std::string::npos) {
        path.erase(at, folder.size());
    }
    return path;
}

std::string RemoveBlanks(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        if (c != ' ') {
            out += c;
        }
    }
    return out;
}

bool IsUnsignedRealText(std::string_view text) {
    text = Trim(text);
    if (text.empty() || text.front() == '-') {
        return false;
    }
    if (text.front() == '+') {
        text.remove_prefix(1);
        if (text.empty() || text.front() == '-') {
            return false;
        }
    }
    double value = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::general);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() &&
           std::isfinite(value);
}

namespace {

// What this process last read of each settings file, and why its last write failed.
struct SettingsFileState {
    std::map<std::string, files::Identity> read;
    std::string lastError;
};

SettingsFileState& State() {
    static SettingsFileState state;
    return state;
}

}  // namespace

void RememberSettingsRead(const std::string& path) {
    try {
        State().read[path] = files::Identify(path);
    } catch (const files::FileError&) {
        State().read.erase(path);
    }
}

bool WriteSettingsFile(const std::string& path, std::string_view content, std::string* error) {
    files::WriteOptions options;
    options.createFolders = true;  // LocalData is the suite's own folder
    if (const auto it = State().read.find(path); it != State().read.end()) {
        options.expected = it->second;
    }
    std::string why;
    const bool written = files::WriteWhole(path, content, &why, options);
    if (written) {
        RememberSettingsRead(path);
    } else {
        State().lastError = why;
    }
    if (error) {
        *error = why;
    }
    return written;
}

const std::string& LastSettingsWriteError() {
    return State().lastError;
}

}  // namespace drawsettings
