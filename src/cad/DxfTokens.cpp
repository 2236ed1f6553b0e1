#include "cad/DxfTokens.h"

#include <algorithm>
#include <cstring>

#include "cad/NumberText.h"

namespace cad::dxfread {

namespace {

constexpr std::string_view kBinarySentinel{"AutoCAD Binary DXF\r\n\x1a\0", 22};

std::string Printable(std::string_view text) {
    std::string out;
    for (unsigned char c : text.substr(0, 60)) {
        out += c >= 0x20 && c != 0x7F ? static_cast<char>(c) : '?';
    }
    return out;
}

}  // namespace

Tokenizer::Tokenizer(std::string_view data, std::string fileName)
    : data_(data), fileName_(std::move(fileName)) {
    if (data.size() >= 3 && static_cast<unsigned char>(data[0]) == 0xEF &&
        static_cast<unsigned char>(data[1]) == 0xBB &&
        static_cast<unsigned char>(data[2]) == 0xBF) {
        pos_ = 3;  // a byte order mark before the first group code
    }
    const std::string_view head = data.substr(0, 32);
    if (head.rfind("AutoCAD Binary DXF", 0) == 0) {
        if (data.substr(0, kBinarySentinel.size()) != kBinarySentinel) {
            Fail(1, "binary DXF with a damaged first line", head.substr(0, 22));
        }
        binary_ = true;
        pos_ = kBinarySentinel.size();
        // The first tag is "0 SECTION": with two-byte codes its second byte is 0 as well.
        twoByteCodes_ = data.size() > pos_ + 1 && data[pos_ + 1] == '\0';
        return;
    }
    if (head.size() >= 6 && head.substr(0, 4) == "AC10" && head[4] >= '0' && head[4] <= '9') {
        Fail(1, "this is a DWG drawing, not a DXF file", head.substr(0, 6));
    }
    if (head.rfind("\x89PNG", 0) == 0 || head.rfind("\xFF\xD8\xFF", 0) == 0 ||
        head.rfind("%PDF", 0) == 0 || head.rfind("GIF8", 0) == 0 || head.rfind("BM", 0) == 0 ||
        head.rfind("PK\x03\x04", 0) == 0) {
        Fail(1, "this is not a DXF file (it looks like an image, PDF or archive)",
             head.substr(0, 4));
    }
    // NUL bytes are looked for line by line, so the file is only touched once.
}

void Tokenizer::Fail(long line, const std::string& problem, std::string_view text) const {
    if (binary_) {
        throw DxfError::AtOffset(fileName_, line, problem, Printable(text));
    }
    throw DxfError(fileName_, line, problem, Printable(text));
}

bool Tokenizer::ReadLine(std::string_view& line) {
    if (pos_ >= data_.size()) {
        return false;
    }
    const char* start = data_.data() + pos_;
    const void* nl = std::memchr(start, '\n', data_.size() - pos_);
    std::size_t len = nl != nullptr ? static_cast<const char*>(nl) - start : data_.size() - pos_;
    pos_ += len + (nl != nullptr ? 1 : 0);
    if (len > 0 && start[len - 1] == '\r') {
        --len;
    }
    line = std::string_view(start, len);
    ++line_;
    if (std::memchr(start, '\0', len) != nullptr) {
        Fail(line_, "this is not a DXF text file (it holds NUL bytes)");
    }
    return true;
}

void Tokenizer::ReleaseConsumed() {
    if (!release_) {
        return;
    }
    // Everything before the tag waiting in `peekTag_` (or before the cursor) is done with.
    const std::size_t upTo = peeked_ ? peekStart_ : pos_;
    if (upTo > released_ + (std::size_t{4} << 20)) {
        release_(released_, upTo);
        released_ = upTo;
    }
}

namespace {

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

// The handles of an ASCII file, read line pair by line pair without building tags. It only
// has to be a good guess: a made handle that still clashes is caught by the reader.
Handle HighestAsciiHandle(std::string_view data) {
    Handle highest = kNullHandle;
    std::size_t pos = 0;
    while (pos < data.size()) {
        const std::size_t codeEnd = data.find('\n', pos);
        if (codeEnd == std::string_view::npos) {
            break;
        }
        const std::string_view code = TrimBlanks(data.substr(pos, codeEnd - pos));
        std::size_t valueEnd = data.find('\n', codeEnd + 1);
        if (valueEnd == std::string_view::npos) {
            valueEnd = data.size();
        }
        if (code == "5" || code == "105") {
            Handle h = kNullHandle;
            if (ParseHandle(TrimBlanks(data.substr(codeEnd + 1, valueEnd - codeEnd - 1)), h)) {
                highest = std::max(highest, h);
            }
        }
        pos = valueEnd + 1;
    }
    return highest;
}

}  // namespace

Handle Tokenizer::HighestHandleFrom(std::size_t start) const {
    if (!binary_) {
        return HighestAsciiHandle(data_.substr(std::min(start, data_.size())));
    }
    Tokenizer ahead(data_, fileName_);
    ahead.pos_ = start;
    ahead.binary_ = binary_;
    ahead.twoByteCodes_ = twoByteCodes_;
    Handle highest = kNullHandle;
    try {
        RawTag t;
        while (ahead.Next(t)) {
            Handle h = kNullHandle;
            if ((t.code == 5 || t.code == 105) && ParseHandle(t.value, h)) {
                highest = std::max(highest, h);
            }
        }
    } catch (const DxfError&) {
    }
    return highest;
}

bool Tokenizer::NextInRecord(RawTag& tag) {
    if (!peeked_) {
        if (!Next(peekTag_)) {
            return false;
        }
        peeked_ = true;
        peekStart_ = tagStart_;
    }
    if (peekTag_.code == 0) {
        return false;
    }
    tag = peekTag_;
    peeked_ = false;
    return true;
}

bool Tokenizer::Peek(RawTag& tag) {
    if (!peeked_) {
        peeked_ = Next(peekTag_);
        if (!peeked_) {
            return false;
        }
        peekStart_ = tagStart_;
    }
    tag = peekTag_;
    return true;
}

bool Tokenizer::Next(RawTag& tag) {
    if (peeked_) {
        peeked_ = false;
        tag = peekTag_;
        return true;
    }
    // Comments may stand wherever a group may, before the first section too.
    do {
        tagStart_ = pos_;
        if (!(binary_ ? NextBinary(tag) : NextTag(tag))) {
            return false;
        }
    } while (tag.code == 999);
    return true;
}

bool Tokenizer::NextTag(RawTag& tag) {
    std::string_view codeLine;
    if (!ReadLine(codeLine)) {
        return false;
    }
    const long line = line_;
    long long code = 0;
    // Most group codes are a few digits after blanks: read them directly.
    std::size_t k = 0;
    while (k < codeLine.size() && codeLine[k] == ' ') {
        ++k;
    }
    const std::size_t digitsStart = k;
    while (k < codeLine.size() && k - digitsStart < 5 && codeLine[k] >= '0' && codeLine[k] <= '9') {
        code = code * 10 + (codeLine[k++] - '0');
    }
    const bool simple = k > digitsStart && k == codeLine.size();
    if (!simple && !ParseInt(codeLine, code)) {
        if (Trim(codeLine).empty() && pos_ >= data_.size()) {
            return false;  // a blank last line
        }
        Fail(line, "group code is not a number", codeLine);
    }
    if (code < 0 || code > 1071) {
        Fail(line, "group code " + std::to_string(code) + " does not exist", codeLine);
    }
    std::string_view value;
    if (!ReadLine(value)) {
        Fail(line,
             "the file ends after group code " + std::to_string(code) +
                 " (truncated, or an odd number of lines)",
             codeLine);
    }
    tag.code = static_cast<int>(code);
    tag.value = value;
    tag.line = line;
    return true;
}

}  // namespace cad::dxfread
