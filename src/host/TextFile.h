// Text files the system reads and writes whole: settings, the last selection, scratch files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace textfile {

// Reads a file's bytes as they are (read-only, not locked). False, with `error` naming the
// file and the reason, when it cannot be opened or read or is not a regular file.
bool ReadWhole(const std::string& path, std::string& bytes, std::string* error = nullptr);

// Reads a text file as lines without their line ends (LF or CR LF). Text that is not valid
// UTF-8 is taken as GB18030, the encoding of files written by the Windows suite. Empty
// optional when the file cannot be opened.
std::optional<std::vector<std::string>> ReadLines(const std::string& path);

// Converts GB18030 bytes to UTF-8; the input unchanged when it is valid UTF-8 already.
std::string ToUtf8(std::string_view bytes);
bool IsValidUtf8(std::string_view bytes);

// ASCII letters in upper case, other bytes as they are: names, codes and keywords are matched
// without regard to case, never through the process locale.
std::string UpperAscii(std::string_view text);

// Writes `content` to a temporary file in the same folder and renames it over `path`, so
// that a crash or a full disk never leaves half a file. Creates missing parent folders.
// False, with `path` untouched, when any step fails; `error` then says which.
bool WriteWhole(const std::string& path, std::string_view content, std::string* error = nullptr);

}  // namespace textfile
