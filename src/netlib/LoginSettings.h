// The login settings of the library server: LocalData/QvFTPLoginInfo.sys, eleven text lines,
// each stored scrambled. Scrambling only keeps the values from being read at a glance; it is
// no encryption, and the file's mode (0600) is what keeps it private.
//
// The scrambling, both ways: the line's UTF-8 bytes are each XORed with the byte
// kScrambleKey[i % 16] + i (i the byte's position, modulo 256), and the result is written as
// two upper-case hexadecimal digits per byte. An empty value is an empty line.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace netlib {

inline constexpr const char* kLoginSettingsRelativePath = "LocalData/QvFTPLoginInfo.sys";

struct LoginSettings {
    // Line n of the file is lines[n - 1]. Lines 1, 8, 9 and 10 belong to the suite's other
    // tools: they are read, kept and written back, never used here.
    std::array<std::string, 11> lines;

    const std::string& Root() const { return lines[1]; }
    const std::string& Server() const { return lines[2]; }
    const std::string& Port() const { return lines[3]; }
    bool Anonymous() const { return lines[4] == "1"; }
    const std::string& User() const { return lines[5]; }
    const std::string& Password() const { return lines[6]; }
    bool Passive() const { return lines[10] == "1"; }

    void SetRoot(std::string value) { lines[1] = std::move(value); }
    void SetServer(std::string value) { lines[2] = std::move(value); }
    void SetPort(std::string value) { lines[3] = std::move(value); }
    void SetAnonymous(bool on) { lines[4] = on ? "1" : "0"; }
    void SetUser(std::string value) { lines[5] = std::move(value); }
    void SetPassword(std::string value) { lines[6] = std::move(value); }
    void SetPassive(bool on) { lines[10] = on ? "1" : "0"; }
};

std::string Scramble(std::string_view plain);
// Empty optional when the line is not a scrambled value (odd length, not hexadecimal).
std::optional<std::string> Unscramble(std::string_view line);

// Reads the file. Empty optional, with `error` naming the file (and the line) and the reason,
// when it is missing, unreadable or a line is not scrambled text. Missing lines at the end
// read as empty.
std::optional<LoginSettings> ReadLoginSettings(const std::string& path, std::string* error);
// Writes the eleven lines whole, mode 0600; false with `error` set on failure.
bool WriteLoginSettings(const std::string& path, const LoginSettings& settings, std::string* error);

}  // namespace netlib
