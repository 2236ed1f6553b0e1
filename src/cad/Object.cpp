#include "cad/Object.h"

#include "cad/Entity.h"
#include "cad/NumberText.h"
#include "cad/Records.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>

namespace cad {

DbObject::DbObject(const DbObject& o)
    : handle(kNullHandle),
      owner(o.owner),
      erased(false),
      extra(o.extra ? std::make_unique<ExtraTags>(*o.extra) : nullptr) {}

Point3d Text::Anchor() const {
    const bool plain = (horizontal == TextHorz::Left || horizontal == TextHorz::Aligned ||
                        horizontal == TextHorz::Fit) &&
                       vertical == TextVert::Baseline;
    return plain ? position : alignment;
}

void Text::SetAnchor(const Point3d& p) {
    position = p;
    alignment = p;
}

bool BlockRecord::IsModelSpace() const {
    return EqualsNoCase(name, "*Model_Space");
}

bool BlockRecord::IsPaperSpace() const {
    return name.size() >= 12 && EqualsNoCase(std::string_view(name).substr(0, 12), "*Paper_Space");
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    if (a == b) {
        return true;  // names are mostly spelt the same way each time
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        x = static_cast<char>(x >= 'a' && x <= 'z' ? x - 32 : x);
        y = static_cast<char>(y >= 'a' && y <= 'z' ? y - 32 : y);
        if (x != y) {
            return false;
        }
    }
    return true;
}

Handle Dictionary::Find(const std::string& key) const {
    for (const auto& [k, v] : entries) {
        if (k == key) {
            return v;
        }
    }
    return kNullHandle;
}

void Dictionary::Set(const std::string& key, Handle value) {
    for (auto& [k, v] : entries) {
        if (k == key) {
            v = value;
            return;
        }
    }
    entries.emplace_back(key, value);
}

bool Dictionary::Remove(const std::string& key) {
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        if (it->first == key) {
            entries.erase(it);
            return true;
        }
    }
    return false;
}

std::string XRecord::Value(int code) const {
    for (const auto& t : data) {
        if (t.code == code) {
            return t.value;
        }
    }
    return {};
}

// ---- number text

namespace {

// Coordinates and sizes mostly have a few decimals (3.5, 12.25, 0.001). Such a value is
// written as the integer n = v * 10^6 with the point put back and trailing zeros dropped,
// when n / 10^6 gives back exactly v: the text then reads back as the same double, because n
// and the power of ten are exact and both the division and the reading round correctly. Fewer
// decimals would have worked only if six do (same quotient), so one test decides. Values
// below 0.001 would be shorter in exponent form, and others are left to the general path.
char* WriteShortDecimal(char* out, double v) {
    constexpr double kScale = 1e6;
    const double magnitude = std::abs(v);
    if (magnitude < 0.001 || magnitude >= 1e9) {
        return nullptr;
    }
    // Rounded by adding a half and truncating, which compiles to two instructions; should
    // that ever miss the nearest integer, the test below sends the value the general way.
    auto n = static_cast<long long>(magnitude * kScale + 0.5);
    if (static_cast<double>(n) / kScale != magnitude) {
        return nullptr;
    }
    int decimals = 6;
    while (decimals > 1 && n % 10 == 0) {
        n /= 10;
        --decimals;
    }
    char digits[24];
    const int count =
        static_cast<int>(std::to_chars(digits, digits + sizeof digits, n).ptr - digits);
    if (v < 0) {
        *out++ = '-';
    }
    if (count <= decimals) {
        *out++ = '0';
        *out++ = '.';
        out = std::fill_n(out, decimals - count, '0');
        return std::copy_n(digits, count, out);
    }
    out = std::copy_n(digits, count - decimals, out);
    *out++ = '.';
    return std::copy_n(digits + count - decimals, decimals, out);
}

// Values that need all their digits are mostly computed ones (rotated geometry, measured
// positions), and a drawing repeats them: one rotation on every terminal, a preview's
// geometry in the preview file and again in the drawing it is placed in. The texts last made
// for such values are kept, one per slot of a small table (zero bits never come here).
struct RecentReal {
    std::uint64_t bits = 0;
    std::uint8_t size = 0;
    char text[kRealTextMax - 9] = {};
};
constexpr int kRecentBits = 12;

char* WriteGeneralReal(char* out, double v) {
    thread_local std::unique_ptr<RecentReal[]> recent;
    if (!recent) {
        recent = std::make_unique<RecentReal[]>(std::size_t{1} << kRecentBits);
    }
    const auto bits = std::bit_cast<std::uint64_t>(v);
    RecentReal& slot = recent[(bits * 0x9E3779B97F4A7C15ull) >> (64 - kRecentBits)];
    if (slot.bits == bits) {
        return std::copy_n(slot.text, slot.size, out);
    }
    char* end = std::to_chars(out, out + kRealTextMax - 2, v).ptr;
    if (std::string_view(out, end - out).find_first_of(".eEn") == std::string_view::npos) {
        end = std::copy_n(".0", 2, end);
    }
    const auto size = static_cast<std::size_t>(end - out);
    if (size <= sizeof slot.text) {
        slot.bits = bits;
        slot.size = static_cast<std::uint8_t>(size);
        std::copy_n(out, size, slot.text);
    }
    return end;
}

}  // namespace

char* WriteReal(char* out, double v) {
    if (!std::isfinite(v) || v == 0) {
        return std::copy_n("0.0", 3, out);
    }
    // Whole numbers below 10000 are the same text in the shortest form and as integers;
    // drawings are full of them, and integer formatting costs a fraction.
    if (std::abs(v) < 10000 && v == static_cast<double>(static_cast<int>(v))) {
        out = std::to_chars(out, out + kRealTextMax, static_cast<int>(v)).ptr;
        return std::copy_n(".0", 2, out);
    }
    if (char* end = WriteShortDecimal(out, v)) {
        return end;
    }
    return WriteGeneralReal(out, v);
}

std::string FormatReal(double v) {
    char buf[kRealTextMax];
    return std::string(buf, WriteReal(buf, v));
}

char* WriteHandle(char* out, Handle h) {
    char* end = std::to_chars(out, out + kHandleTextMax, h, 16).ptr;
    for (char* p = out; p != end; ++p) {
        *p = static_cast<char>(*p >= 'a' && *p <= 'f' ? *p - 32 : *p);
    }
    return end;
}

std::string FormatHandle(Handle h) {
    char buf[kHandleTextMax];
    return std::string(buf, WriteHandle(buf, h));
}

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\r')) {
        s.remove_prefix(1);
    }
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) {
        s.remove_suffix(1);
    }
    return s;
}

bool ParseReal(std::string_view text, double& out) {
    text = Trim(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    if (text.empty()) {
        return false;
    }
    auto res = std::from_chars(text.data(), text.data() + text.size(), out);
    return res.ec == std::errc() && res.ptr == text.data() + text.size() && std::isfinite(out);
}

bool ParseInt(std::string_view text, long long& out) {
    text = Trim(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    if (text.empty()) {
        return false;
    }
    auto res = std::from_chars(text.data(), text.data() + text.size(), out);
    return res.ec == std::errc() && res.ptr == text.data() + text.size();
}

bool ParseHandle(std::string_view text, Handle& out) {
    // Links are read back for every extended-data item written and audited: plain
    // upper-case hex, as this program writes it, is read digit by digit.
    if (!text.empty() && text.size() <= 16) {
        Handle value = 0;
        bool plain = true;
        for (char c : text) {
            const int digit = c >= '0' && c <= '9'   ? c - '0'
                              : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                     : -1;
            if (digit < 0) {
                plain = false;
                break;
            }
            value = value << 4 | static_cast<Handle>(digit);
        }
        if (plain) {
            out = value;
            return true;
        }
    }
    text = Trim(text);
    if (text.empty() || text.size() > 16) {
        return false;
    }
    auto res = std::from_chars(text.data(), text.data() + text.size(), out, 16);
    return res.ec == std::errc() && res.ptr == text.data() + text.size();
}

}  // namespace cad
