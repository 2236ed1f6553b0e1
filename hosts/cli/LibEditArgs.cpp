// The arguments of the editing commands: paths, sequence numbers, and the checks made before
// the editor opens.
#include "LibEditArgs.h"

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace cli {

namespace {

constexpr const char* kLevelForms[] = {"MANUFACTURER", "MANUFACTURER/SERIES",
                                       "MANUFACTURER/SERIES/TYPE", "MANUFACTURER/SERIES/TYPE/CODE"};

}  // namespace

const char* const kLevelWords[4] = {"manufacturer", "series", "type", "module"};

std::string Sprintf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    va_end(args);
    return text;
}

std::string Join(const Names& names) {
    std::string joined;
    for (const std::string& name : names) {
        joined += (joined.empty() ? "" : "/") + name;
    }
    return joined;
}

Names SplitNames(const std::string& text, size_t levels) {
    Names names;
    size_t start = 0;
    while (names.size() + 1 < levels) {
        const size_t slash = text.find('/', start);
        if (slash == std::string::npos) {
            break;
        }
        names.push_back(text.substr(start, slash - start));
        start = slash + 1;
    }
    names.push_back(text.substr(start));
    return names;
}

namespace {

std::optional<std::string> CheckPath(const std::string& text, size_t minLevels, size_t maxLevels) {
    const Names names = SplitNames(text, maxLevels);
    bool empty = false;
    for (const std::string& name : names) {
        empty = empty || name.empty();
    }
    if (names.size() >= minLevels && !empty) {
        return std::nullopt;
    }
    if (minLevels == maxLevels) {
        return Sprintf("'%s' is not %s", text.c_str(), kLevelForms[maxLevels - 1]);
    }
    return Sprintf(
        "'%s' is not MANUFACTURER, MANUFACTURER/SERIES, MANUFACTURER/SERIES/TYPE or "
        "MANUFACTURER/SERIES/TYPE/CODE",
        text.c_str());
}

}  // namespace

std::optional<std::string> Sequence(const std::string& text) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    errno = 0;
    const long value = std::strtol(text.c_str(), nullptr, 10);
    if (errno == ERANGE || value < 1 || value > INT_MAX) {
        return std::nullopt;
    }
    return std::to_string(value);
}

std::optional<Names> SequenceList(const std::string& text) {
    Names list;
    size_t start = 0;
    while (true) {
        const size_t comma = text.find(',', start);
        const auto sequence = Sequence(text.substr(start, comma - start));
        if (!sequence) {
            return std::nullopt;
        }
        list.push_back(*sequence);
        if (comma == std::string::npos) {
            return list;
        }
        start = comma + 1;
    }
}

std::optional<std::string> NoCheck(const ParsedArgs&) {
    return std::nullopt;
}

std::optional<std::string> CheckSeries(const ParsedArgs& args) {
    return CheckPath(args.positional[0], 2, 2);
}

std::optional<std::string> CheckType(const ParsedArgs& args) {
    return CheckPath(args.positional[0], 3, 3);
}

std::optional<std::string> CheckModule(const ParsedArgs& args) {
    return CheckPath(args.positional[0], 4, 4);
}

std::optional<std::string> CheckAnyPath(const ParsedArgs& args) {
    return CheckPath(args.positional[0], 1, 4);
}

std::optional<std::string> CheckFind(const ParsedArgs& args) {
    if (args.positional[0].empty()) {
        return std::string("find needs a text to look for");
    }
    return std::nullopt;
}

std::optional<std::string> CheckValueGiven(const ParsedArgs& args) {
    if (!args.Has("value")) {
        return std::string("--value V is required");
    }
    return CheckModule(args);
}

std::optional<std::string> CheckInsert(const ParsedArgs& args) {
    const auto before = args.Value("before");
    if (!before) {
        return std::string("--before SEQ is required");
    }
    if (!Sequence(*before)) {
        return Sprintf("--before takes a sequence number (1, 2, ...), not '%s'", before->c_str());
    }
    return CheckValueGiven(args);
}

std::optional<std::string> CheckSequences(const ParsedArgs& args) {
    for (size_t i = 1; i < args.positional.size(); ++i) {
        if (!Sequence(args.positional[i])) {
            return Sprintf("'%s' is not a sequence number (1, 2, ...)", args.positional[i].c_str());
        }
    }
    return CheckModule(args);
}

std::optional<std::string> CheckReorder(const ParsedArgs& args) {
    const auto order = args.Value("order");
    if (!order) {
        return std::string("--order SEQ,SEQ,... is required");
    }
    if (!SequenceList(*order)) {
        return Sprintf("--order takes sequence numbers separated by commas, like 3,1,2, not '%s'",
                       order->c_str());
    }
    return CheckModule(args);
}

}  // namespace cli
