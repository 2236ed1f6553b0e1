// The words of a "dialog ..." script line and the messages it answers with.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ui {

// The line split at blanks into at most `maxWords` words, the last one taking the rest of the
// line (blanks inside it kept, the ends trimmed).
std::vector<std::string> SplitWords(std::string_view line, size_t maxWords);

// `format` with its one "%s" replaced by `value`.
std::string FormatMessage(const char* format, std::string_view value);

}  // namespace ui
