#include "host/TextFile.h"

#include <fcntl.h>
#include <iconv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace textfile {

bool IsValidUtf8(std::string_view bytes) {
    size_t i = 0;
    while (i < bytes.size()) {
        const auto c = static_cast<unsigned char>(bytes[i]);
        int extra = 0;
        if (c < 0x80) {
            extra = 0;
        } else if ((c & 0xE0) == 0xC0 && c >= 0xC2) {
            extra = 1;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
        } else if ((c & 0xF8) == 0xF0 && c <= 0xF4) {
            extra = 3;
        } else {
            return false;
        }
        if (i + extra >= bytes.size() && extra > 0) {
            return false;
        }
        for (int k = 1; k <= extra; ++k) {
            if ((static_cast<unsigned char>(bytes[i + k]) & 0xC0) != 0x80) {
                return false;
            }
        }
        i += extra + 1;
    }
    return true;
}

std::string ToUtf8(std::string_view bytes) {
    if (IsValidUtf8(bytes)) {
        return std::string(bytes);
    }
    iconv_t cd = iconv_open("UTF-8", "GB18030");
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        return std::string(bytes);
    }
    std::string out(bytes.size() * 2 + 4, '\0');
    char* in = const_cast<char*>(bytes.data());
    size_t inLeft = bytes.size();
    char* outPtr = out.data();
    size_t outLeft = out.size();
    while (inLeft > 0) {
        if (iconv(cd, &in, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1)) {
            if (errno == E2BIG) {
                const size_t used = outPtr - out.data();
                out.resize(out.size() * 2);
                outPtr = out.data() + used;
                outLeft = out.size() - used;
                continue;
            }
            // An undecodable byte becomes U+FFFD rather than ending the text.
            if (outLeft < 3) {
                const size_t used = outPtr - out.data();
                out.resize(out.size() + 16);
                outPtr = out.data() + used;
                outLeft = out.size() - used;
            }
            std::memcpy(outPtr, "\xEF\xBF\xBD", 3);
            outPtr += 3;
            outLeft -= 3;
            ++in;
            --inLeft;
        }
    }
    iconv_close(cd);
    out.resize(outPtr - out.data());
    return out;
}

bool ReadWhole(const std::string& path, std::string& bytes, std::string* error) {
    auto fail = [&](const std::string& what, int why) {
        if (error) {
            *error = path + ": " + what + (why != 0 ? std::string(": ") + std::strerror(why) : "");
        }
        return false;
    };
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return fail("cannot be opened", errno);
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return fail("is not a regular file", 0);
    }
    bytes.resize(static_cast<std::size_t>(st.st_size));
    std::size_t done = 0;
    int failure = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            failure = n < 0 ? errno : 0;
            break;  // at zero, shorter than it was a moment ago: what was read is kept
        }
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    if (failure != 0) {
        return fail("cannot be read", failure);
    }
    bytes.resize(done);
    return true;
}

std::string UpperAscii(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) {
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    }
    return upper;
}

std::optional<std::vector<std::string>> ReadLines(const std::string& path) {
    std::string raw;
    if (!ReadWhole(path, raw)) {
        return std::nullopt;
    }
    const std::string text = ToUtf8(raw);
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        std::string line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(std::move(line));
        start = end + 1;
    }
    return lines;
}

bool WriteWhole(const std::string& path, std::string_view content, std::string* error) {
    namespace fs = std::filesystem;
    auto fail = [&](const std::string& what) {
        if (error) {
            *error = what + " (" + path + "): " + std::strerror(errno);
        }
        return false;
    };
    const fs::path target(path);
    std::error_code ec;
    if (target.has_parent_path()) {
        fs::create_directories(target.parent_path(), ec);
    }
    std::string temp = path + ".tmpXXXXXX";
    const int fd = mkstemp(temp.data());
    if (fd < 0) {
        return fail("cannot create a temporary file");
    }
    size_t written = 0;
    while (written < content.size()) {
        const ssize_t n = ::write(fd, content.data() + written, content.size() - written);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            const int saved = errno;
            ::close(fd);
            ::unlink(temp.c_str());
            errno = saved;
            return fail("cannot write");
        }
        written += static_cast<size_t>(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        const int saved = errno;
        ::unlink(temp.c_str());
        errno = saved;
        return fail("cannot flush");
    }
    // Keep the old file's permissions: a read-only settings file stays read-only and
    // refuses the write, as it would on the Windows suite.
    struct stat old {};
    if (::stat(path.c_str(), &old) == 0) {
        // Mode bits, not access(): the administrator may write anything, yet a file marked
        // read-only stays so for everyone.
        if ((old.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
            ::unlink(temp.c_str());
            errno = EACCES;
            return fail("the file is read-only");
        }
        ::chmod(temp.c_str(), old.st_mode & 07777);
    } else {
        ::chmod(temp.c_str(), 0644);
    }
    if (::rename(temp.c_str(), path.c_str()) != 0) {
        const int saved = errno;
        ::unlink(temp.c_str());
        errno = saved;
        return fail("cannot replace");
    }
    return true;
}

}  // namespace textfile
