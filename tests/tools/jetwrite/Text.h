// Text as a Jet 4 file stores it: UTF-16LE, or the compressed form in which characters
// below U+0100 take one byte.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace jetwrite {

// False for text that is not well-formed UTF-8.
bool Utf8ToUtf16(std::string_view text, std::u16string& out);

// The stored bytes of `text`; `compress` allows the compressed form where it is shorter.
// False when the text cannot be stored so that readers get it back (it starts with U+FEFF,
// which marks the compressed form, and holds a character the compressed form cannot carry).
bool EncodeText(const std::u16string& text, bool compress, std::vector<uint8_t>& out);

}  // namespace jetwrite
