// Reads a database description:
//   {"tables": [{"name": "T", "columns": [{"name": "C", "type": "text" | "memo" | "long",
//                "length": 60}], "rows": [["value", null, 3], ...]}]}
// "length" (1..255, default 255) is allowed for text columns only; "rows" may be left out.
#pragma once

#include <string>
#include <string_view>

#include "JetWriter.h"

namespace jetwrite {

// False with "line L, column C: what" in `error`.
bool LoadDescription(std::string_view json, Database& db, std::string& error);

}  // namespace jetwrite
