#include "Catalogue.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "host/SuiteServices.h"

namespace cli {
namespace {

constexpr uint32_t kMoMagic = 0x950412de;

uint32_t Word(const std::string& data, size_t at, bool swap) {
    uint32_t value = 0;
    std::memcpy(&value, data.data() + at, 4);
    return swap ? __builtin_bswap32(value) : value;
}

std::vector<std::string> SplitAtFormats(const std::string& text) {
    std::vector<std::string> pieces;
    size_t start = 0;
    for (size_t at = text.find("%s"); at != std::string::npos; at = text.find("%s", start)) {
        pieces.push_back(text.substr(start, at - start));
        start = at + 2;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

// The values that turn `pieces` into `text`, or false. A value is never empty and is taken
// as short as the next piece allows, which is how the system's messages read.
bool Match(const std::vector<std::string>& pieces, std::string_view text,
           std::vector<std::string>& values) {
    if (text.substr(0, pieces.front().size()) != pieces.front()) {
        return false;
    }
    size_t at = pieces.front().size();
    for (size_t i = 1; i < pieces.size(); ++i) {
        const bool last = i + 1 == pieces.size();
        size_t next = std::string_view::npos;
        if (last) {
            const std::string& tail = pieces[i];
            if (text.size() < at + 1 + tail.size() ||
                text.substr(text.size() - tail.size()) != tail) {
                return false;
            }
            next = text.size() - tail.size();
        } else {
            next = pieces[i].empty() ? at + 1 : text.find(pieces[i], at + 1);
            if (next == std::string_view::npos) {
                return false;
            }
        }
        values.emplace_back(text.substr(at, next - at));
        at = next + pieces[i].size();
    }
    return at == text.size();
}

// Puts the values into a translation: "%s" takes the next value, "%2$s" the second, so that a
// translation can order them as its language needs.
std::string Fill(const std::string& translation, const std::vector<std::string>& values) {
    std::string out;
    size_t next = 0;
    for (size_t i = 0; i < translation.size(); ++i) {
        size_t index = 0;
        size_t length = 0;
        if (translation.compare(i, 2, "%s") == 0) {
            index = next++;
            length = 2;
        } else if (i + 3 < translation.size() && translation[i] == '%' &&
                   translation[i + 1] >= '1' && translation[i + 1] <= '9' &&
                   translation.compare(i + 2, 2, "$s") == 0) {
            index = static_cast<size_t>(translation[i + 1] - '1');
            length = 4;
        }
        if (length == 0) {
            out += translation[i];
            continue;
        }
        out += index < values.size() ? values[index] : std::string();
        i += length - 1;
    }
    return out;
}

}  // namespace

bool Catalogue::Load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.eof() && !in.good()) {
        return false;
    }
    if (data.size() < 28) {
        return false;
    }
    const bool swap = Word(data, 0, false) != kMoMagic;
    if (Word(data, 0, swap) != kMoMagic) {
        return false;
    }
    const uint64_t count = Word(data, 8, swap);
    const uint64_t originals = Word(data, 12, swap);
    const uint64_t translations = Word(data, 16, swap);
    auto entry = [&](uint64_t table, uint64_t i, std::string& out) {
        const uint64_t at = table + i * 8;
        if (at + 8 > data.size()) {
            return false;
        }
        const uint64_t length = Word(data, at, swap);
        const uint64_t offset = Word(data, at + 4, swap);
        if (offset + length > data.size()) {
            return false;
        }
        out.assign(data, offset, length);
        return true;
    };
    std::vector<std::pair<std::string, std::string>> pairs;
    for (uint64_t i = 0; i < count; ++i) {
        std::string original, translation;
        if (!entry(originals, i, original) || !entry(translations, i, translation)) {
            return false;
        }
        pairs.emplace_back(std::move(original), std::move(translation));
    }
    for (const auto& [original, translation] : pairs) {
        if (!original.empty() && !translation.empty()) {  // "" is the catalogue's header
            Add(original, translation);
        }
    }
    return true;
}

void Catalogue::Add(const std::string& original, const std::string& translation) {
    if (original.find("%s") == std::string::npos) {
        exact_[original] = translation;
    } else {
        formats_.push_back({SplitAtFormats(original), translation});
    }
}

std::string Catalogue::Translate(std::string_view text) const {
    if (const auto it = exact_.find(std::string(text)); it != exact_.end()) {
        return it->second;
    }
    for (const Format& format : formats_) {
        std::vector<std::string> values;
        if (Match(format.pieces, text, values)) {
            return Fill(format.translation, values);
        }
    }
    return {};
}

bool WantsEnglish() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value && *value) {
            return std::strncmp(value, "en", 2) == 0;
        }
    }
    return false;
}

std::string EnglishCatalogueFile() {
    return suite::PathJoin(suite::ProgramShareDir(), "locale/en/LC_MESSAGES/qvplc.mo");
}

}  // namespace cli
