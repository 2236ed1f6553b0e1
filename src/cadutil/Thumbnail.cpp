#include "cadutil/Thumbnail.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace cadutil {

namespace {

bool ReadLine(std::istream& in, std::string& line) {
    if (!std::getline(in, line)) {
        return false;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return true;
}

std::string Trim(const std::string& s) {
    const auto b = s.find_first_not_of(" \t");
    const auto e = s.find_last_not_of(" \t");
    return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

// Reads the next group code and value; false at the end of the file or on a code that is
// not a number.
bool NextTag(std::istream& in, cad::Tag& tag) {
    std::string code, value;
    if (!ReadLine(in, code) || !ReadLine(in, value)) {
        return false;
    }
    code = Trim(code);
    char* end = nullptr;
    const long number = std::strtol(code.c_str(), &end, 10);
    if (code.empty() || *end != '\0') {
        return false;
    }
    tag.code = static_cast<int>(number);
    tag.value = std::move(value);
    return true;
}

}  // namespace

std::optional<cad::TagList> ReadThumbnail(const std::string& path) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        return std::nullopt;  // nothing to keep; a FIFO would block the read
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    cad::Tag tag;
    bool sectionStart = false;
    while (NextTag(in, tag)) {
        const std::string value = Trim(tag.value);
        if (sectionStart && tag.code == 2 && value == "THUMBNAILIMAGE") {
            cad::TagList tags;
            while (NextTag(in, tag)) {
                if (tag.code == 0) {
                    return tags.empty() ? std::nullopt : std::optional(std::move(tags));
                }
                tag.value = Trim(tag.value);
                tags.push_back(tag);
            }
            return std::nullopt;  // cut off before ENDSEC: not a preview to keep
        }
        sectionStart = tag.code == 0 && value == "SECTION";
        if (tag.code == 0 && value == "EOF") {
            break;
        }
    }
    return std::nullopt;
}

}  // namespace cadutil
