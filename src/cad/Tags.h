// The lowest layer of the drawing file format: a group code and its value as text, with the
// line of the file it came from. Everything the database does not model is kept as tags and
// written back unchanged.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace cad {

struct Tag {
    int code = 0;
    std::string value;  // UTF-8; numbers already in C-locale text

    bool operator==(const Tag&) const = default;
};

using TagList = std::vector<Tag>;

// Tags of a known object that its class does not model, kept per subclass marker so that
// they are written back inside the subclass they were read from. The marker "" holds the
// tags read before the first subclass marker (e.g. the 102 groups after the handle).
// The marker of a part opened by group 101 (an embedded object) is this prefix and its name.
inline constexpr std::string_view kEmbeddedMarker = "101:";

struct ExtraTags {
    struct Segment {
        std::string marker;
        TagList tags;
    };
    std::vector<Segment> segments;

    const TagList* Find(std::string_view marker) const;
    TagList& Get(const std::string& marker);  // adds an empty segment when missing
    bool Empty() const;
};

// Kind of value a group code carries.
enum class TagType { String, Real, Int16, Int32, Int64, Bool, Handle };
TagType TypeOfCode(int code);

}  // namespace cad
