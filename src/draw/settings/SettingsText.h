// Text rules of the settings files: the label lookup, numbers read the way the C library's
// atof/atoi read them (a prefix that parses, else 0) and written in the C locale whatever the
// process locale is, and the checks the settings dialogs apply to typed numbers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace drawsettings {

// Number of characters (code points) of UTF-8 text.
size_t CharCount(std::string_view text);

// The value stored under `label` (which includes its colon): from the first line that
// contains the label anywhere, the last (line length - label length) characters, counted in
// characters. Empty when no line contains the label.
std::string FindLabelValue(const std::vector<std::string>& lines, std::string_view label);

// atof / atoi in the C locale: leading white space skipped, the longest prefix that parses is
// used, 0 when nothing does. ParseInt clamps to the int range.
double ParseReal(std::string_view text);
int ParseInt(std::string_view text);

// printf("%.*f") in the C locale.
std::string FormatFixed(double value, int decimals);

// Every occurrence of `folder` removed from `path` (nothing removed when `folder` is empty).
std::string RemoveFolder(std::string path, std::string_view folder);

// `text` without any ' '.
std::string RemoveBlanks(std::string_view text);

// The typed-number check of the settings dialogs: once trimmed, the text is not empty, does
// not begin with '-' and is, as a whole, a finite decimal real number.
bool IsUnsignedRealText(std::string_view text);

// Writes a settings file whole through files::AtomicFile. Refuses, leaving the old file as
// it is, when the existing file is marked read-only (no write permission bit, whoever runs
// the program), when it changed on disk since this process last read it (another program
// saved its own settings meanwhile), or when any step of the write fails.
bool WriteSettingsFile(const std::string& path, std::string_view content,
                       std::string* error = nullptr);
// Called as a settings file is read: a later write expects the file as it was then.
void RememberSettingsRead(const std::string& path);
// Why the last failed WriteSettingsFile failed (path and reason).
const std::string& LastSettingsWriteError();

}  // namespace drawsettings
