// Object identity in the drawing database. A handle is unique within one database, never
// reused, and stays valid after its object is erased (erasing marks, it does not free).
#pragma once

#include <cstdint>

namespace cad {

using Handle = std::uint64_t;
inline constexpr Handle kNullHandle = 0;

}  // namespace cad
