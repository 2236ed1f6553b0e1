#include "cad/Encoding.h"

#include <iconv.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

namespace cad {

namespace {

// One converter per direction and charset, reused: opening iconv is far slower than
// converting the short strings of a drawing.
class Converter {
public:
    Converter(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~Converter() {
        if (Ok()) {
            iconv_close(cd_);
        }
    }
    bool Ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
    // Converts all of `in`; false when any byte does not convert.
    bool Convert(std::string_view in, std::string& out) {
        iconv(cd_, nullptr, nullptr, nullptr, nullptr);
        char* src = const_cast<char*>(in.data());
        std::size_t left = in.size();
        char buf[256];
        while (left > 0) {
            char* dst = buf;
            std::size_t room = sizeof buf;
            const std::size_t r = iconv(cd_, &src, &left, &dst, &room);
            out.append(buf, dst - buf);
            if (r == static_cast<std::size_t>(-1) && errno != E2BIG) {
                return false;
            }
        }
        return true;
    }

private:
    iconv_t cd_;
};

Converter* GetConverter(const std::string& to, const std::string& from) {
    static std::mutex mutex;
    static std::map<std::string, std::unique_ptr<Converter>> cache;
    std::lock_guard lock(mutex);
    auto& slot = cache[to + "<" + from];
    if (!slot) {
        slot = std::make_unique<Converter>(to.c_str(), from.c_str());
    }
    return slot->Ok() ? slot.get() : nullptr;
}

void AppendEscape(std::string& out, char32_t c) {
    auto put = [&out](unsigned v) {
        char buf[12];
        std::snprintf(buf, sizeof buf, "\\U+%04X", v);
        out += buf;
    };
    if (c > 0xFFFF) {
        const char32_t v = c - 0x10000;
        put(0xD800 + (v >> 10));
        put(0xDC00 + (v & 0x3FF));
    } else {
        put(static_cast<unsigned>(c));
    }
}

int HexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

}  // namespace

bool IsAscii(std::string_view s) {
    for (unsigned char c : s) {
        if (c >= 0x80) {
            return false;
        }
    }
    return true;
}

char32_t NextCodepoint(std::string_view s, std::size_t& pos) {
    const unsigned char c = s[pos];
    int len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
    if (len == 0 || pos + len > s.size()) {
        ++pos;
        return 0xFFFD;
    }
    char32_t v = len == 1 ? c : len == 2 ? (c & 0x1F) : len == 3 ? (c & 0x0F) : (c & 0x07);
    for (int i = 1; i < len; ++i) {
        const unsigned char d = s[pos + i];
        if ((d >> 6) != 2) {
            ++pos;
            return 0xFFFD;
        }
        v = (v << 6) | (d & 0x3F);
    }
    pos += len;
    return v;
}

void AppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string CodepageCharset(std::string_view cp) {
    std::string upper;
    for (char c : cp) {
        upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    }
    if (upper == "ANSI_936" || upper == "GBK" || upper == "GB2312")
        return "GBK";
    if (upper == "ANSI_950" || upper == "BIG5")
        return "BIG5";
    if (upper == "ANSI_932" || upper == "DOS932")
        return "CP932";
    if (upper == "ANSI_949")
        return "CP949";
    if (upper == "UTF8" || upper == "UTF-8")
        return "UTF-8";
    if (upper.rfind("ANSI_", 0) == 0 && upper.size() == 9)
        return "CP" + upper.substr(5);
    return "CP1252";
}

std::string EncodeText(std::string_view utf8, const std::string& charset) {
    if (IsAscii(utf8) || charset == "UTF-8") {
        return std::string(utf8);
    }
    Converter* conv = GetConverter(charset, "UTF-8");
    std::string out;
    std::size_t pos = 0;
    while (pos < utf8.size()) {
        const std::size_t start = pos;
        const char32_t c = NextCodepoint(utf8, pos);
        if (c < 0x80) {
            out += static_cast<char>(c);
            continue;
        }
        const std::size_t before = out.size();
        if (conv == nullptr || c == 0xFFFD ||
            !conv->Convert(utf8.substr(start, pos - start), out)) {
            out.resize(before);
            AppendEscape(out, c);
        }
    }
    return out;
}

std::string ExpandUnicodeEscapes(std::string_view s) {
    if (s.find("\\U+") == std::string_view::npos && s.find("\\u+") == std::string_view::npos) {
        return std::string(s);
    }
    std::string out;
    char32_t pendingHigh = 0;
    for (std::size_t i = 0; i < s.size();) {
        if (s[i] == '\\' && i + 7 <= s.size() && (s[i + 1] == 'U' || s[i + 1] == 'u') &&
            s[i + 2] == '+') {
            int v = 0;
            bool ok = true;
            for (int k = 3; k < 7; ++k) {
                const int h = HexValue(s[i + k]);
                ok = ok && h >= 0;
                v = v * 16 + (h < 0 ? 0 : h);
            }
            if (ok) {
                if (v >= 0xD800 && v < 0xDC00) {
                    pendingHigh = static_cast<char32_t>(v);
                } else if (v >= 0xDC00 && v < 0xE000 && pendingHigh != 0) {
                    AppendUtf8(out, 0x10000 + ((pendingHigh - 0xD800) << 10) + (v - 0xDC00));
                    pendingHigh = 0;
                } else {
                    AppendUtf8(out, static_cast<char32_t>(v));
                }
                i += 7;
                continue;
            }
        }
        out += s[i++];
    }
    return out;
}

std::string DecodeText(std::string_view bytes, const std::string& charset) {
    std::string out;
    if (IsAscii(bytes) || charset == "UTF-8") {
        out.assign(bytes);
    } else if (Converter* conv = GetConverter("UTF-8", charset);
               conv != nullptr && conv->Convert(bytes, out)) {
    } else {
        out.clear();
        // Not in the declared code page: keep valid UTF-8 as it is, replace what is not.
        std::size_t pos = 0;
        while (pos < bytes.size()) {
            AppendUtf8(out, NextCodepoint(bytes, pos));
        }
    }
    return ExpandUnicodeEscapes(out);
}

}  // namespace cad
