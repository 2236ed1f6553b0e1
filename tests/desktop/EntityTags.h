// The model-space entities of a drawing as the tags a DXF file holds for them, with handles
// replaced by their order of appearance: two drawings that hold the same entities (types,
// layers, positions, texts, extended data and its links) give the same list, whatever
// handles they were given.
#pragma once

#include <string>
#include <vector>

namespace cad {
class Database;
}

namespace desktop_test {

std::vector<std::string> EntityTags(const cad::Database& db);
// How many entities of each DXF type: "INSERT x16, LINE x4, ..." for messages.
std::string EntityCounts(const std::vector<std::string>& tags);

}  // namespace desktop_test
