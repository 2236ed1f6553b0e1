// A small strict JSON reader for the writer's table descriptions: no comments, no trailing
// commas, no duplicate keys. Every value remembers where it starts so that a description
// that parses but says something wrong can be reported by line and column too.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace jetwrite {

struct JsonValue {
    enum class Kind { Null, Bool, Number, String, Array, Object };
    Kind kind = Kind::Null;
    bool boolean = false;
    std::string text;  // a string's contents (UTF-8), or a number as written
    std::vector<JsonValue> items;
    std::vector<std::pair<std::string, JsonValue>> members;  // in the order written
    int line = 1;
    int column = 1;

    const JsonValue* Find(std::string_view key) const;
    // "line L, column C" of this value.
    std::string Where() const;
};

// False with "line L, column C: what was wrong" in `error`.
bool ParseJson(std::string_view text, JsonValue& out, std::string& error);

}  // namespace jetwrite
