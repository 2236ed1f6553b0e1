#include "Messages.h"

#include <cstdarg>
#include <cstdio>
#include <memory>

#include "Catalogue.h"

namespace cli {
namespace {

std::string& Group() {
    static std::string group;
    return group;
}

// Loaded on first use, only under an English locale.
const Catalogue* English() {
    static const std::unique_ptr<Catalogue> catalogue = [] {
        auto loaded = std::make_unique<Catalogue>();
        if (!WantsEnglish() || !loaded->Load(EnglishCatalogueFile())) {
            loaded.reset();
        }
        return loaded;
    }();
    return catalogue.get();
}

}  // namespace

void SetCommandGroup(std::string_view group) {
    Group() = group;
}

std::string Prefix() {
    return Group().empty() ? std::string("qvplc") : "qvplc " + Group();
}

void Complain(std::string_view text) {
    std::fprintf(stderr, "%s: %.*s\n", Prefix().c_str(), static_cast<int>(text.size()),
                 text.data());
}

void Complainf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    char fixed[512];
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(fixed, sizeof fixed, format, copy);
    va_end(copy);
    std::string text;
    if (length >= 0 && static_cast<size_t>(length) < sizeof fixed) {
        text = fixed;
    } else if (length >= 0) {
        text.resize(static_cast<size_t>(length) + 1);
        std::vsnprintf(text.data(), text.size(), format, args);
        text.pop_back();
    }
    va_end(args);
    Complain(text);
}

std::string WithTranslation(std::string_view text) {
    const Catalogue* catalogue = English();
    if (!catalogue) {
        return std::string(text);
    }
    const std::string english = catalogue->Translate(text);
    return english.empty() ? std::string(text) : std::string(text) + " (" + english + ")";
}

}  // namespace cli
