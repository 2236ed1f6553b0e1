#include "batch/Csv.h"

#include <algorithm>

namespace batch {

char GuessSeparator(std::string_view text) {
    int commas = 0, semicolons = 0;
    bool quoted = false;
    for (const char c : text) {
        if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && (c == '\n' || c == '\r')) {
            break;
        } else if (!quoted && c == ',') {
            ++commas;
        } else if (!quoted && c == ';') {
            ++semicolons;
        }
    }
    return semicolons > commas ? ';' : ',';
}

namespace {

bool IsBlank(const CsvRecord& record) {
    return record.fields.size() == 1 && record.fields[0].empty();
}

}  // namespace

CsvResult ParseCsv(std::string_view text, char separator) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") {
        text.remove_prefix(3);
    }
    CsvResult result;
    result.records.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) +
                           1);
    const char stops[] = {separator, '\r', '\n', '\0'};
    CsvRecord record{1, {std::string()}};
    bool wasQuoted = false;
    int line = 1;
    std::size_t i = 0;
    auto endRecord = [&] {
        if (!IsBlank(record) || wasQuoted) {
            result.records.push_back(std::move(record));
        }
        const std::size_t width = result.records.empty() ? 1 : result.records.back().fields.size();
        record = CsvRecord{line, {std::string()}};
        record.fields.reserve(width);
        wasQuoted = false;
    };
    while (i < text.size()) {
        std::string& field = record.fields.back();
        if (text[i] == '"' && field.empty()) {
            // A quoted field: up to the quote that is not doubled; separators and line
            // breaks inside are the field's own.
            wasQuoted = true;
            const int opened = line;
            ++i;
            for (;;) {
                const auto quote = text.find('"', i);
                if (quote == std::string_view::npos) {
                    result.error = "line " + std::to_string(opened) +
                                   ": a quoted field is not closed before the end of the file";
                    return result;
                }
                const std::string_view part = text.substr(i, quote - i);
                line += static_cast<int>(std::count(part.begin(), part.end(), '\n'));
                field.append(part);
                i = quote + 1;
                if (i < text.size() && text[i] == '"') {
                    field += '"';
                    ++i;
                    continue;
                }
                break;
            }
            continue;
        }
        const auto stop = std::min(text.find_first_of(std::string_view(stops, 3), i), text.size());
        field.append(text.substr(i, stop - i));
        i = stop;
        if (i >= text.size()) {
            break;
        }
        const char c = text[i++];
        if (c == separator) {
            record.fields.emplace_back();
        } else {
            if (c == '\r' && i < text.size() && text[i] == '\n') {
                ++i;
            }
            ++line;
            endRecord();
        }
    }
    endRecord();
    return result;
}

}  // namespace batch
