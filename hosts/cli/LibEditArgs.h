// The arguments of the editing commands of `qvplc lib`: paths of the library tree, terminal
// sequence numbers, and the checks each command makes before the editor is opened (each gives
// the usage error, or nullopt when the arguments are fine).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Args.h"

namespace cli {

using Names = std::vector<std::string>;

// "manufacturer", "series", "type", "module": the levels below the root.
extern const char* const kLevelWords[4];

[[gnu::format(printf, 1, 2)]] std::string Sprintf(const char* format, ...);
std::string Join(const Names& names);
// At most `levels` names: the last one takes the rest of the text, slashes and all.
Names SplitNames(const std::string& text, size_t levels);
// A sequence number as the terminal list shows it ("007" -> "7"); nullopt when no number.
std::optional<std::string> Sequence(const std::string& text);
// "3,1,2" -> {"3", "1", "2"}; nullopt when an item is no sequence number.
std::optional<Names> SequenceList(const std::string& text);

std::optional<std::string> NoCheck(const ParsedArgs& args);
std::optional<std::string> CheckSeries(const ParsedArgs& args);   // M/S
std::optional<std::string> CheckType(const ParsedArgs& args);     // M/S/T
std::optional<std::string> CheckModule(const ParsedArgs& args);   // M/S/T/CODE
std::optional<std::string> CheckAnyPath(const ParsedArgs& args);  // any of them
std::optional<std::string> CheckFind(const ParsedArgs& args);
std::optional<std::string> CheckValueGiven(const ParsedArgs& args);  // and a module
std::optional<std::string> CheckInsert(const ParsedArgs& args);
std::optional<std::string> CheckSequences(const ParsedArgs& args);  // a module, then SEQs
std::optional<std::string> CheckReorder(const ParsedArgs& args);

}  // namespace cli
