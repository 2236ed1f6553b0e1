// The English message catalogue: a compiled gettext catalogue (.mo) keyed by the system's
// original texts. Keys with %s are format strings; a text the system formatted from one is
// matched against it, and the values it was given are put into the translation.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cli {

class Catalogue {
public:
    // Reads a .mo file; false (and nothing added) when it is missing or malformed.
    bool Load(const std::string& path);
    void Add(const std::string& original, const std::string& translation);
    // The translation of `text`; empty when the catalogue has none.
    std::string Translate(std::string_view text) const;
    size_t Size() const { return exact_.size() + formats_.size(); }

private:
    struct Format {
        std::vector<std::string> pieces;  // the text around each %s
        std::string translation;
    };
    std::unordered_map<std::string, std::string> exact_;
    std::vector<Format> formats_;
};

// True when LC_ALL, else LC_MESSAGES, else LANG (the first one set) starts with "en".
bool WantsEnglish();
// The installed catalogue: share/locale/en/LC_MESSAGES/qvplc.mo beside the program's bin/.
std::string EnglishCatalogueFile();

}  // namespace cli
