#include "cad/Tags.h"

namespace cad {

const TagList* ExtraTags::Find(std::string_view marker) const {
    for (const auto& s : segments) {
        if (s.marker == marker) {
            return &s.tags;
        }
    }
    return nullptr;
}

TagList& ExtraTags::Get(const std::string& marker) {
    for (auto& s : segments) {
        if (s.marker == marker) {
            return s.tags;
        }
    }
    segments.push_back({marker, {}});
    return segments.back().tags;
}

bool ExtraTags::Empty() const {
    for (const auto& s : segments) {
        if (!s.tags.empty()) {
            return false;
        }
    }
    return true;
}

TagType TypeOfCode(int code) {
    if (code == 105 || code == 5 || (code >= 320 && code <= 369) || (code >= 390 && code <= 399) ||
        (code >= 480 && code <= 481) || code == 1005) {
        return TagType::Handle;
    }
    if ((code >= 10 && code <= 59) || (code >= 110 && code <= 149) ||
        (code >= 210 && code <= 239) || (code >= 460 && code <= 469) ||
        (code >= 1010 && code <= 1059)) {
        return TagType::Real;
    }
    if ((code >= 60 && code <= 79) || (code >= 170 && code <= 179) ||
        (code >= 270 && code <= 289) || (code >= 370 && code <= 389) ||
        (code >= 400 && code <= 409) || code == 1060 || code == 1070) {
        return TagType::Int16;
    }
    if ((code >= 90 && code <= 99) || (code >= 420 && code <= 429) ||
        (code >= 440 && code <= 459) || code == 1071) {
        return TagType::Int32;
    }
    if (code >= 160 && code <= 169) {
        return TagType::Int64;
    }
    if (code >= 290 && code <= 299) {
        return TagType::Bool;
    }
    return TagType::String;
}

}  // namespace cad
