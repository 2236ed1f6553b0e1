#include "Text.h"

namespace jetwrite {

bool Utf8ToUtf16(std::string_view text, std::u16string& out) {
    out.clear();
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        unsigned code = 0;
        int extra = 0;
        if (lead < 0x80) {
            code = lead;
        } else if (lead >= 0xC2 && lead < 0xE0) {
            code = lead & 0x1F;
            extra = 1;
        } else if (lead >= 0xE0 && lead < 0xF0) {
            code = lead & 0x0F;
            extra = 2;
        } else if (lead >= 0xF0 && lead < 0xF5) {
            code = lead & 0x07;
            extra = 3;
        } else {
            return false;
        }
        if (extra > 0 && i + extra >= text.size()) {
            return false;
        }
        for (int k = 1; k <= extra; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) {
                return false;
            }
            code = (code << 6) | (next & 0x3F);
        }
        const bool overlong = (extra == 2 && code < 0x800) || (extra == 3 && code < 0x10000);
        if (overlong || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return false;
        }
        if (code >= 0x10000) {
            code -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (code >> 10));
            out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        } else {
            out += static_cast<char16_t>(code);
        }
        i += extra + 1;
    }
    return true;
}

namespace {

void PutUnit(std::vector<uint8_t>& out, char16_t unit) {
    out.push_back(static_cast<uint8_t>(unit & 0xFF));
    out.push_back(static_cast<uint8_t>(unit >> 8));
}

// The compressed form: a marker, then one byte per character below U+0100 and two per other
// character, with a zero byte switching between the two modes. A character whose low byte
// is zero cannot be written in either mode.
bool Compress(const std::u16string& text, std::vector<uint8_t>& out) {
    out = {0xFF, 0xFE};
    bool narrow = true;
    for (const char16_t unit : text) {
        if ((unit & 0xFF) == 0) {
            return false;
        }
        const bool fits = unit < 0x100;
        if (fits != narrow) {
            out.push_back(0);
            narrow = fits;
        }
        if (narrow) {
            out.push_back(static_cast<uint8_t>(unit));
        } else {
            PutUnit(out, unit);
        }
    }
    return true;
}

}  // namespace

bool EncodeText(const std::u16string& text, bool compress, std::vector<uint8_t>& out) {
    const bool marked = !text.empty() && text[0] == 0xFEFF;
    if ((compress || marked) && Compress(text, out) && (marked || out.size() < text.size() * 2)) {
        return true;
    }
    if (marked) {
        return false;
    }
    out.clear();
    out.reserve(text.size() * 2);
    for (const char16_t unit : text) {
        PutUnit(out, unit);
    }
    return true;
}

}  // namespace jetwrite
