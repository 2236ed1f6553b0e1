// Files the system reads and writes whole: settings, the last selection, pictures, scratch
// files; and the text conversions of what it reads.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/AtomicFile.h"

namespace files {

// Reads a file's bytes as they are (read-only, not locked). False, with `error` naming the
// file and the reason, when it cannot be opened or read or is not a regular file (a FIFO or
// a device is refused at once, never waited on).
bool ReadWhole(const std::string& path, std::string& bytes, std::string* error = nullptr);
// The same, throwing FileError.
std::string ReadWholeFile(const std::string& path);

// Reads a text file as lines without their line ends (LF or CR LF). Text that is not valid
// UTF-8 is taken as GB18030, the encoding of files written by the Windows suite. Empty
// optional when the file cannot be opened.
std::optional<std::vector<std::string>> ReadLines(const std::string& path);
// Splits text into lines as ReadLines does (LF, CR LF or CR CR LF line ends).
std::vector<std::string> SplitLines(std::string_view text);

// Converts GB18030 bytes to UTF-8; the input unchanged when it is valid UTF-8 already.
std::string ToUtf8(std::string_view bytes);
bool IsValidUtf8(std::string_view bytes);

// ASCII letters in upper case, other bytes as they are: names, codes and keywords are matched
// without regard to case, never through the process locale.
std::string UpperAscii(std::string_view text);

// Writes `content` as the whole file through an AtomicFile (see AtomicFile.h for the
// policy). False, with `path` untouched and `error` naming the path and the reason, when the
// file cannot be written.
bool WriteWhole(const std::string& path, std::string_view content, std::string* error = nullptr,
                WriteOptions options = {});

}  // namespace files
