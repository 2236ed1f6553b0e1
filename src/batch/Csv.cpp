#include "batch/Csv.h"

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
    CsvRecord record{1, {std::string()}};
    int line = 1;
    bool quoted = false, wasQuoted = false;
    int quoteLine = 0;
    auto endRecord = [&] {
        if (!IsBlank(record) || wasQuoted) {
            result.records.push_back(std::move(record));
        }
        record = CsvRecord{line, {std::string()}};
        wasQuoted = false;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted) {
            if (c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
                record.fields.back() += '"';
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                if (c == '\n') {
                    ++line;
                }
                record.fields.back() += c;
            }
        } else if (c == '"' && record.fields.back().empty()) {
            quoted = wasQuoted = true;
            quoteLine = line;
        } else if (c == separator) {
            record.fields.emplace_back();
        } else if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
            continue;
        } else if (c == '\n' || c == '\r') {
            ++line;
            endRecord();
        } else {
            record.fields.back() += c;
        }
    }
    if (quoted) {
        result.error = "line " + std::to_string(quoteLine) +
                       ": a quoted field is not closed before the end of the file";
        return result;
    }
    endRecord();
    return result;
}

}  // namespace batch
