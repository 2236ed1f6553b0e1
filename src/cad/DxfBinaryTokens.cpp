// Binary DXF at the token layer: each value is turned into the text an ASCII file would hold.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "cad/DxfTokens.h"
#include "cad/NumberText.h"
#include "cad/Tags.h"

namespace cad::dxfread {

namespace {

// Group codes whose value is a chunk of bytes with a one-byte length before it.
bool IsChunk(int code) {
    return (code >= 310 && code <= 319) || code == 1004;
}

template <class T>
T LittleEndian(const char* p) {
    std::uint64_t v = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        v |= static_cast<std::uint64_t>(static_cast<unsigned char>(p[i])) << (8 * i);
    }
    T out;
    if constexpr (sizeof(T) == 8) {
        std::memcpy(&out, &v, 8);
    } else {
        using U = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint16_t>;
        const U narrow = static_cast<U>(v);
        std::memcpy(&out, &narrow, sizeof(T));
    }
    return out;
}

}  // namespace

char* Tokenizer::Scratch(std::size_t size) {
    if (size > arenaLeft_) {
        const std::size_t block = std::max<std::size_t>(size, 64 * 1024);
        arena_.push_back(std::make_unique<char[]>(block));
        arenaNext_ = arena_.back().get();
        arenaLeft_ = block;
    }
    char* out = arenaNext_;
    arenaNext_ += size;
    arenaLeft_ -= size;
    return out;
}

bool Tokenizer::NextBinary(RawTag& tag) {
    const std::size_t size = data_.size();
    if (pos_ >= size) {
        return false;
    }
    const long codeAt = static_cast<long>(pos_);
    auto need = [&](std::size_t n, const char* problem) {
        if (size - pos_ < n) {
            Fail(static_cast<long>(pos_), problem);
        }
    };
    int code = 0;
    if (twoByteCodes_) {
        need(2, "the file ends inside a group code (truncated?)");
        code = LittleEndian<std::uint16_t>(data_.data() + pos_);
        pos_ += 2;
    } else {
        code = static_cast<unsigned char>(data_[pos_++]);
        if (code == 255) {
            need(2, "the file ends inside a group code (truncated?)");
            code = LittleEndian<std::uint16_t>(data_.data() + pos_);
            pos_ += 2;
        }
    }
    if (code > 1071) {
        Fail(codeAt, "group code " + std::to_string(code) + " does not exist");
    }
    const std::size_t valueAt = pos_;
    const std::string codeText = std::to_string(code);
    std::string_view value;
    auto number = [&](auto v) {
        char* out = Scratch(kRealTextMax);
        char* end;
        if constexpr (std::is_floating_point_v<decltype(v)>) {
            // Not a number stays "nan" or "inf", for the reader to refuse with the offset.
            end = std::isfinite(v) ? WriteReal(out, v) : std::to_chars(out, out + 8, v).ptr;
        } else {
            end = std::to_chars(out, out + kRealTextMax, v).ptr;
        }
        value = std::string_view(out, static_cast<std::size_t>(end - out));
    };
    // A little-endian number of the width its type gives, written as text.
    auto take = [&](auto type) {
        using T = decltype(type);
        need(sizeof(T), "the file ends inside a number (truncated?)");
        number(LittleEndian<T>(data_.data() + pos_));
        pos_ += sizeof(T);
    };
    if (IsChunk(code)) {
        need(1, "the file ends before the length of a binary chunk (truncated?)");
        const std::size_t n = static_cast<unsigned char>(data_[pos_++]);
        need(n, "the file ends inside a binary chunk (truncated?)");
        static constexpr char kHex[] = "0123456789ABCDEF";
        char* out = Scratch(2 * n);
        for (std::size_t i = 0; i < n; ++i) {
            const auto b = static_cast<unsigned char>(data_[pos_ + i]);
            out[2 * i] = kHex[b >> 4];
            out[2 * i + 1] = kHex[b & 15];
        }
        value = std::string_view(out, 2 * n);
        pos_ += n;
    } else {
        switch (TypeOfCode(code)) {
            case TagType::String:
            case TagType::Handle: {
                const void* nul = std::memchr(data_.data() + pos_, '\0', size - pos_);
                if (nul == nullptr) {
                    Fail(static_cast<long>(pos_), "the file ends inside the text of group code " +
                                                      codeText + " (truncated?)");
                }
                const std::size_t len = static_cast<const char*>(nul) - (data_.data() + pos_);
                value = data_.substr(pos_, len);
                pos_ += len + 1;
                break;
            }
            case TagType::Real:
                take(double{});
                break;
            case TagType::Int16:
                take(std::int16_t{});
                break;
            case TagType::Int32:
                take(std::int32_t{});
                break;
            case TagType::Int64:
                take(std::int64_t{});
                break;
            case TagType::Bool:
                need(1, "the file ends inside a number (truncated?)");
                number(static_cast<int>(static_cast<unsigned char>(data_[pos_])));
                pos_ += 1;
                break;
        }
    }
    tag.code = code;
    tag.value = value;
    tag.line = static_cast<long>(valueAt) - 1;
    return true;
}

}  // namespace cad::dxfread
