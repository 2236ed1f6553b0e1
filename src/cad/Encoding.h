// Text in drawing files: UTF-8 inside the database, the file's code page in files before
// R2007, with \U+XXXX for characters the code page cannot hold.
#pragma once

#include <string>
#include <string_view>

namespace cad {

// The iconv name of a $DWGCODEPAGE value ("ANSI_936" -> "GBK"); "CP1252" when unknown.
std::string CodepageCharset(std::string_view dwgCodepage);

// Converts UTF-8 to the charset; characters it cannot hold become \U+XXXX.
std::string EncodeText(std::string_view utf8, const std::string& charset);
// Converts bytes in the charset to UTF-8 and expands \U+XXXX; bytes that do not decode are
// taken as UTF-8 when they are valid UTF-8, else as the charset's replacement.
std::string DecodeText(std::string_view bytes, const std::string& charset);
// Expands \U+XXXX escapes of UTF-8 text.
std::string ExpandUnicodeEscapes(std::string_view utf8);

bool IsAscii(std::string_view s);
// Decodes one UTF-8 character at `pos` (advancing it); U+FFFD for a bad sequence.
char32_t NextCodepoint(std::string_view s, std::size_t& pos);
void AppendUtf8(std::string& out, char32_t c);

}  // namespace cad
