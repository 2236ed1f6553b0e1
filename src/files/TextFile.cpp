#include "files/TextFile.h"

#include "files/AtomicFile.h"
#include "files/FileIdentity.h"

#include <fcntl.h>
#include <iconv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace files {

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
    try {
        bytes = ReadWholeFile(path);
        return true;
    } catch (const FileError& e) {
        if (error) {
            *error = e.what();
        }
        return false;
    }
}

std::string ReadWholeFile(const std::string& path) {
    const int fd = OpenForReading(path);
    struct stat st {};
    ::fstat(fd, &st);
    std::string bytes(static_cast<std::size_t>(st.st_size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            const int failure = errno;
            ::close(fd);
            throw ErrnoError(path, failure);
        }
        if (n == 0) {
            break;  // shorter than it was a moment ago: what was read is kept
        }
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    bytes.resize(done);
    return bytes;
}

std::string UpperAscii(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) {
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    }
    return upper;
}

std::vector<std::string> SplitLines(std::string_view text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) {
            end = text.size();
        }
        std::string_view line = text.substr(start, end - start);
        // Every carriage return before the line feed belongs to the line end: a CR LF file
        // saved again in text mode on Windows ends its lines with CR CR LF.
        while (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        lines.emplace_back(line);
        start = end + 1;
    }
    return lines;
}

std::optional<std::vector<std::string>> ReadLines(const std::string& path) {
    std::string raw;
    if (!ReadWhole(path, raw)) {
        return std::nullopt;
    }
    return SplitLines(ToUtf8(raw));
}

bool WriteWhole(const std::string& path, std::string_view content, std::string* error,
                WriteOptions options) {
    try {
        WriteFile(path, content, std::move(options));
        return true;
    } catch (const FileError& e) {
        if (error) {
            *error = e.what();
        }
        return false;
    }
}

}  // namespace files
