// How qvplc talks to its user: every message goes to standard error as "qvplc GROUP: text",
// standard output holds results only. The system's own messages are shown as written; under
// an English locale an English translation from the message catalogue follows each of them.
#pragma once

#include <string>
#include <string_view>

namespace cli {

// The group that runs ("draw", "lib", ...); empty before one is chosen.
void SetCommandGroup(std::string_view group);
// "qvplc" or "qvplc GROUP".
std::string Prefix();

// Prints "PREFIX: text" and a line feed on standard error.
void Complain(std::string_view text);
// The same with printf formatting.
void Complainf(const char* format, ...) __attribute__((format(printf, 1, 2)));

// A message of the system with its English translation appended in parentheses when the
// locale asks for English and the catalogue has one; otherwise the text unchanged.
std::string WithTranslation(std::string_view text);

}  // namespace cli
