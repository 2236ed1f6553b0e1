#include "netlib/LoginSettings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "files/AtomicFile.h"
#include "files/TextFile.h"

namespace netlib {
namespace {

constexpr unsigned char kScrambleKey[16] = {0x51, 0x76, 0x50, 0x6c, 0x63, 0x52, 0x65, 0x6e,
                                            0x64, 0x61, 0x6c, 0x2e, 0x46, 0x54, 0x50, 0x21};

unsigned char KeyAt(size_t i) {
    return static_cast<unsigned char>(kScrambleKey[i % 16] + i);
}

int HexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

// A new file is made empty with mode 0600 before its content is written, so that the
// password never stands in a file others may read, not even for an instant; the atomic
// writer keeps the mode of the file it replaces.
bool MakePrivate(const std::string& path, std::string* error) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd >= 0) {
        ::close(fd);
        return true;
    }
    if (errno == EEXIST) {
        if (::chmod(path.c_str(), 0600) == 0) {
            return true;
        }
    }
    if (error) {
        *error = path + ": " + std::strerror(errno);
    }
    return false;
}

}  // namespace

std::string Scramble(std::string_view plain) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    out.reserve(plain.size() * 2);
    for (size_t i = 0; i < plain.size(); ++i) {
        const auto byte = static_cast<unsigned char>(plain[i]) ^ KeyAt(i);
        out += digits[byte >> 4];
        out += digits[byte & 0x0f];
    }
    return out;
}

std::optional<std::string> Unscramble(std::string_view line) {
    if (line.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string out;
    out.reserve(line.size() / 2);
    for (size_t i = 0; i < line.size(); i += 2) {
        const int high = HexValue(line[i]);
        const int low = HexValue(line[i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        out += static_cast<char>((high << 4 | low) ^ KeyAt(i / 2));
    }
    return out;
}

std::optional<LoginSettings> ReadLoginSettings(const std::string& path, std::string* error) {
    std::string bytes;
    if (!files::ReadWhole(path, bytes, error)) {
        return std::nullopt;
    }
    const std::vector<std::string> lines = files::SplitLines(bytes);
    LoginSettings settings;
    for (size_t i = 0; i < settings.lines.size() && i < lines.size(); ++i) {
        auto plain = Unscramble(lines[i]);
        if (!plain) {
            if (error) {
                *error = path + ": line " + std::to_string(i + 1) + " is not a scrambled value";
            }
            return std::nullopt;
        }
        settings.lines[i] = std::move(*plain);
    }
    return settings;
}

bool WriteLoginSettings(const std::string& path, const LoginSettings& settings,
                        std::string* error) {
    std::string content;
    for (const auto& line : settings.lines) {
        content += Scramble(line);
        content += '\n';
    }
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    const bool existed = std::filesystem::exists(path, ec);
    if (!MakePrivate(path, error)) {
        return false;
    }
    if (!files::WriteWhole(path, content, error)) {
        if (!existed) {
            std::filesystem::remove(path, ec);
        }
        return false;
    }
    return true;
}

}  // namespace netlib
