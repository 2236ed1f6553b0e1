#include "Json.h"

namespace jetwrite {
namespace {

constexpr int kMaxDepth = 64;

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    bool Document(JsonValue& out) {
        SkipBlanks();
        if (!Value(out, 0)) {
            return false;
        }
        SkipBlanks();
        return pos_ == text_.size() || Fail("unexpected text after the document");
    }

    const std::string& Error() const { return error_; }

private:
    bool Fail(const std::string& what) {
        if (error_.empty()) {
            error_ = "line " + std::to_string(line_) + ", column " + std::to_string(column_) +
                     ": " + what;
        }
        return false;
    }

    bool AtEnd() const { return pos_ >= text_.size(); }
    char Peek() const { return AtEnd() ? '\0' : text_[pos_]; }

    void Advance() {
        if (text_[pos_] == '\n') {
            ++line_;
            column_ = 1;
        } else if ((static_cast<unsigned char>(text_[pos_]) & 0xC0) != 0x80) {
            ++column_;  // columns count characters, not UTF-8 bytes
        }
        ++pos_;
    }

    void SkipBlanks() {
        while (!AtEnd() && (Peek() == ' ' || Peek() == '\t' || Peek() == '\n' || Peek() == '\r')) {
            Advance();
        }
    }

    bool Literal(std::string_view word) {
        if (text_.substr(pos_, word.size()) != word) {
            return Fail("unknown word; expected a value");
        }
        for (size_t i = 0; i < word.size(); ++i) {
            Advance();
        }
        return true;
    }

    bool Value(JsonValue& out, int depth) {
        out.line = line_;
        out.column = column_;
        if (depth > kMaxDepth) {
            return Fail("values nested too deeply");
        }
        switch (Peek()) {
            case '{':
                return Object(out, depth);
            case '[':
                return Array(out, depth);
            case '"':
                out.kind = JsonValue::Kind::String;
                return String(out.text);
            case 't':
                out.kind = JsonValue::Kind::Bool;
                out.boolean = true;
                return Literal("true");
            case 'f':
                out.kind = JsonValue::Kind::Bool;
                return Literal("false");
            case 'n':
                out.kind = JsonValue::Kind::Null;
                return Literal("null");
            case '\0':
                if (AtEnd()) {
                    return Fail("the text ends where a value was expected");
                }
                return Fail("unexpected character; expected a value");
            default:
                if (Peek() != '-' && !(Peek() >= '0' && Peek() <= '9')) {
                    return Fail("unexpected character; expected a value");
                }
                out.kind = JsonValue::Kind::Number;
                return Number(out.text);
        }
    }

    bool Digits(std::string& out) {
        if (!(Peek() >= '0' && Peek() <= '9')) {
            return Fail("a digit is expected");
        }
        while (Peek() >= '0' && Peek() <= '9') {
            out += Peek();
            Advance();
        }
        return true;
    }

    bool Number(std::string& out) {
        if (Peek() == '-') {
            out += '-';
            Advance();
        }
        if (Peek() == '0') {
            out += '0';
            Advance();
            if (Peek() >= '0' && Peek() <= '9') {
                return Fail("a number does not start with 0");
            }
        } else if (!Digits(out)) {
            return false;
        }
        if (Peek() == '.') {
            out += '.';
            Advance();
            if (!Digits(out)) {
                return false;
            }
        }
        if (Peek() == 'e' || Peek() == 'E') {
            out += 'e';
            Advance();
            if (Peek() == '+' || Peek() == '-') {
                out += Peek();
                Advance();
            }
            return Digits(out);
        }
        return true;
    }

    bool Hex4(unsigned& code) {
        code = 0;
        for (int i = 0; i < 4; ++i) {
            const char c = Peek();
            unsigned digit = 0;
            if (c >= '0' && c <= '9') {
                digit = c - '0';
            } else if (c >= 'a' && c <= 'f') {
                digit = c - 'a' + 10;
            } else if (c >= 'A' && c <= 'F') {
                digit = c - 'A' + 10;
            } else {
                return Fail("\\u needs four hexadecimal digits");
            }
            code = code * 16 + digit;
            Advance();
        }
        return true;
    }

    static void AppendUtf8(std::string& out, unsigned code) {
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }

    bool Escape(std::string& out) {
        Advance();  // the backslash
        const char c = Peek();
        const std::string_view simple = "\"\\/bfnrt";
        const std::string_view meaning = "\"\\/\b\f\n\r\t";
        if (const auto at = simple.find(c); c != '\0' && at != std::string_view::npos) {
            out += meaning[at];
            Advance();
            return true;
        }
        if (c != 'u') {
            return Fail("unknown escape in a string");
        }
        Advance();
        unsigned code = 0;
        if (!Hex4(code)) {
            return false;
        }
        if (code >= 0xDC00 && code <= 0xDFFF) {
            return Fail("a low surrogate without its high surrogate");
        }
        if (code >= 0xD800 && code <= 0xDBFF) {
            unsigned low = 0;
            if (text_.substr(pos_, 2) != "\\u") {
                return Fail("a high surrogate without its low surrogate");
            }
            Advance();
            Advance();
            if (!Hex4(low)) {
                return false;
            }
            if (low < 0xDC00 || low > 0xDFFF) {
                return Fail("a high surrogate without its low surrogate");
            }
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        }
        AppendUtf8(out, code);
        return true;
    }

    bool String(std::string& out) {
        Advance();  // the opening quote
        while (true) {
            if (AtEnd()) {
                return Fail("the text ends inside a string");
            }
            const char c = Peek();
            if (c == '"') {
                Advance();
                return true;
            }
            if (static_cast<unsigned char>(c) < 0x20) {
                return Fail("a control character inside a string must be escaped");
            }
            if (c == '\\') {
                if (!Escape(out)) {
                    return false;
                }
                continue;
            }
            out += c;
            Advance();
        }
    }

    bool Array(JsonValue& out, int depth) {
        out.kind = JsonValue::Kind::Array;
        Advance();
        SkipBlanks();
        if (Peek() == ']') {
            Advance();
            return true;
        }
        while (true) {
            SkipBlanks();
            if (!Value(out.items.emplace_back(), depth + 1)) {
                return false;
            }
            SkipBlanks();
            if (Peek() == ']') {
                Advance();
                return true;
            }
            if (Peek() != ',') {
                return Fail("expected ',' or ']' in an array");
            }
            Advance();
        }
    }

    bool Object(JsonValue& out, int depth) {
        out.kind = JsonValue::Kind::Object;
        Advance();
        SkipBlanks();
        if (Peek() == '}') {
            Advance();
            return true;
        }
        while (true) {
            SkipBlanks();
            if (Peek() != '"') {
                return Fail("expected a quoted key in an object");
            }
            std::string key;
            const int keyLine = line_;
            const int keyColumn = column_;
            if (!String(key)) {
                return false;
            }
            if (out.Find(key)) {
                line_ = keyLine;
                column_ = keyColumn;
                return Fail("the key \"" + key + "\" appears twice");
            }
            SkipBlanks();
            if (Peek() != ':') {
                return Fail("expected ':' after a key");
            }
            Advance();
            SkipBlanks();
            auto& member = out.members.emplace_back(std::move(key), JsonValue{});
            if (!Value(member.second, depth + 1)) {
                return false;
            }
            SkipBlanks();
            if (Peek() == '}') {
                Advance();
                return true;
            }
            if (Peek() != ',') {
                return Fail("expected ',' or '}' in an object");
            }
            Advance();
        }
    }

    std::string_view text_;
    size_t pos_ = 0;
    int line_ = 1;
    int column_ = 1;
    std::string error_;
};

}  // namespace

const JsonValue* JsonValue::Find(std::string_view key) const {
    for (const auto& [name, value] : members) {
        if (name == key) {
            return &value;
        }
    }
    return nullptr;
}

std::string JsonValue::Where() const {
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

bool ParseJson(std::string_view text, JsonValue& out, std::string& error) {
    out = JsonValue{};
    Parser parser(text);
    if (!parser.Document(out)) {
        error = parser.Error();
        return false;
    }
    return true;
}

}  // namespace jetwrite
