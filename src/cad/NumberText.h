// Numbers and handles as DXF text, always in the C locale whatever the process locale is.
#pragma once

#include <string>
#include <string_view>

#include "cad/Handle.h"

namespace cad {

// Shortest text that reads back to the same double; integers keep a ".0".
std::string FormatReal(double v);
std::string FormatHandle(Handle h);  // upper-case hex, no leading zeros; "0" for none
// The same texts written into a buffer of at least the given size; they return the end.
inline constexpr int kRealTextMax = 32;
inline constexpr int kHandleTextMax = 20;
char* WriteReal(char* out, double v);
char* WriteHandle(char* out, Handle h);

// Leading and trailing blanks are allowed; anything else makes them return false.
bool ParseReal(std::string_view text, double& out);
bool ParseInt(std::string_view text, long long& out);
bool ParseHandle(std::string_view text, Handle& out);
std::string_view Trim(std::string_view s);
// ASCII case-insensitive comparison, the way table names are matched.
bool EqualsNoCase(std::string_view a, std::string_view b);

}  // namespace cad
