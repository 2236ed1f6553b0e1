#include "plclib/AccessSql.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "files/TextFile.h"

namespace plcdb {
namespace {

enum class Kind { Space, Word, String, Quoted, Bracket, Punct };

struct Token {
    Kind kind;
    std::string text;  // as written; for Bracket and Quoted, the name inside
};

bool IsWordByte(unsigned char c) {
    return std::isalnum(c) || c == '_' || c == '$' || c >= 0x80;
}

// Reads a literal that ends at `close`, where a doubled `close` stands for one.
size_t ReadDelimited(std::string_view sql, size_t pos, char close, std::string& inner) {
    for (size_t i = pos + 1; i < sql.size(); ++i) {
        if (sql[i] != close) {
            inner += sql[i];
        } else if (close != ']' && i + 1 < sql.size() && sql[i + 1] == close) {
            inner += close;
            ++i;
        } else {
            return i + 1;
        }
    }
    return sql.size();  // unterminated: the engine reports it
}

std::vector<Token> Tokenize(std::string_view sql) {
    std::vector<Token> tokens;
    size_t i = 0;
    while (i < sql.size()) {
        const unsigned char c = static_cast<unsigned char>(sql[i]);
        size_t end = i + 1;
        if (std::isspace(c)) {
            while (end < sql.size() && std::isspace(static_cast<unsigned char>(sql[end]))) {
                ++end;
            }
            tokens.push_back({Kind::Space, std::string(sql.substr(i, end - i))});
        } else if (IsWordByte(c)) {
            while (end < sql.size() && IsWordByte(static_cast<unsigned char>(sql[end]))) {
                ++end;
            }
            tokens.push_back({Kind::Word, std::string(sql.substr(i, end - i))});
        } else if (c == '\'') {
            std::string inner;
            end = ReadDelimited(sql, i, '\'', inner);
            tokens.push_back({Kind::String, std::string(sql.substr(i, end - i))});  // verbatim
        } else if (c == '"' || c == '[') {
            std::string inner;
            end = ReadDelimited(sql, i, c == '"' ? '"' : ']', inner);
            tokens.push_back({c == '"' ? Kind::Quoted : Kind::Bracket, inner});
        } else {
            tokens.push_back({Kind::Punct, std::string(1, sql[i])});
        }
        i = end;
    }
    return tokens;
}

bool IsWord(const Token& token, std::string_view upper) {
    return token.kind == Kind::Word && files::UpperAscii(token.text) == upper;
}

bool IsPunct(const Token& token, char c) {
    return token.kind == Kind::Punct && token.text[0] == c;
}

// Index of the next token that is not a blank, or tokens.size().
size_t NextSolid(const std::vector<Token>& tokens, size_t from) {
    while (from < tokens.size() && tokens[from].kind == Kind::Space) {
        ++from;
    }
    return from;
}

std::string Emit(const Token& token) {
    switch (token.kind) {
        case Kind::Bracket:
            return QuoteIdentifier(token.text);
        case Kind::Quoted: {  // Access reads "text" as a string literal, not as a name
            std::string out = "'";
            for (char c : token.text) {
                out += c;
                if (c == '\'') {
                    out += '\'';
                }
            }
            return out + "'";
        }
        default:
            return token.text;
    }
}

std::string EmitRange(const std::vector<Token>& tokens, size_t from, size_t to) {
    std::string out;
    for (size_t i = from; i < to; ++i) {
        out += Emit(tokens[i]);
    }
    return out;
}

// The SQLite type clause for an Access column type; empty when the type is kept as written.
std::string MapColumnType(const std::string& column, const std::string& type, int size) {
    static const char* const kText[] = {"CHAR",     "VARCHAR",   "TEXT",  "NCHAR",
                                        "NVARCHAR", "CHARACTER", "STRING"};
    static const char* const kMemo[] = {"MEMO", "LONGTEXT", "LONGCHAR", "NOTE", "NTEXT"};
    static const char* const kInteger[] = {"INT",  "INTEGER", "LONG",    "SHORT",        "SMALLINT",
                                           "BYTE", "TINYINT", "COUNTER", "AUTOINCREMENT"};
    const auto in = [&](const auto& list) {
        return std::find(std::begin(list), std::end(list), type) != std::end(list);
    };
    if (in(kMemo)) {
        return "TEXT COLLATE NOCASE";
    }
    if (in(kText)) {
        const int limit = size > 0 ? size : 255;
        const std::string quoted = QuoteIdentifier(column);
        return "TEXT COLLATE NOCASE CONSTRAINT " +
               QuoteIdentifier(column + ": text longer than " + std::to_string(limit) +
                               " characters") +
               " CHECK(length(" + quoted + ")<=" + std::to_string(limit) + ")";
    }
    if (in(kInteger)) {
        return "INTEGER";
    }
    return {};
}

// One column definition of CREATE TABLE, tokens [from, to).
std::string TranslateColumn(const std::vector<Token>& tokens, size_t from, size_t to) {
    const size_t nameAt = NextSolid(tokens, from);
    if (nameAt >= to) {
        return EmitRange(tokens, from, to);
    }
    const Token& name = tokens[nameAt];
    for (const char* keyword : {"PRIMARY", "CONSTRAINT", "UNIQUE", "FOREIGN", "CHECK"}) {
        if (IsWord(name, keyword)) {
            return EmitRange(tokens, from, to);
        }
    }
    const size_t typeAt = NextSolid(tokens, nameAt + 1);
    if (typeAt >= to || tokens[typeAt].kind != Kind::Word) {
        return EmitRange(tokens, from, to);
    }
    size_t rest = typeAt + 1;
    int size = 0;
    const size_t open = NextSolid(tokens, rest);
    if (open < to && IsPunct(tokens[open], '(')) {
        const size_t number = NextSolid(tokens, open + 1);
        const size_t close = number < to ? NextSolid(tokens, number + 1) : to;
        if (close < to && IsPunct(tokens[close], ')') && tokens[number].kind == Kind::Word &&
            std::all_of(tokens[number].text.begin(), tokens[number].text.end(),
                        [](unsigned char c) { return std::isdigit(c) != 0; })) {
            size = std::stoi(tokens[number].text.substr(0, 9));
            rest = close + 1;
        }
    }
    const std::string mapped =
        MapColumnType(name.text, files::UpperAscii(tokens[typeAt].text), size);
    if (mapped.empty()) {
        return EmitRange(tokens, from, to);
    }
    return EmitRange(tokens, from, nameAt + 1) + " " + mapped + EmitRange(tokens, rest, to);
}

// CREATE TABLE name (defs...): the definitions are translated one by one.
std::string TranslateCreateTable(const std::vector<Token>& tokens) {
    size_t open = 0;
    while (open < tokens.size() && !IsPunct(tokens[open], '(')) {
        ++open;
    }
    if (open == tokens.size()) {
        return EmitRange(tokens, 0, tokens.size());
    }
    std::string out = EmitRange(tokens, 0, open + 1);
    int depth = 1;
    size_t start = open + 1;
    size_t i = start;
    for (; i < tokens.size() && depth > 0; ++i) {
        if (IsPunct(tokens[i], '(')) {
            ++depth;
        } else if (IsPunct(tokens[i], ')')) {
            --depth;
        }
        if ((depth == 1 && IsPunct(tokens[i], ',')) || depth == 0) {
            out += TranslateColumn(tokens, start, i) + tokens[i].text;
            start = i + 1;
        }
    }
    if (depth > 0) {  // unbalanced: left for the engine to report
        out += EmitRange(tokens, start, tokens.size());
        return out;
    }
    return out + EmitRange(tokens, i, tokens.size());
}

}  // namespace

std::string QuoteIdentifier(std::string_view name) {
    std::string out = "\"";
    for (char c : name) {
        out += c;
        if (c == '"') {
            out += '"';
        }
    }
    return out + "\"";
}

std::string TranslateAccessSql(std::string_view sql) {
    std::vector<Token> tokens = Tokenize(sql);
    const size_t first = NextSolid(tokens, 0);
    if (first == tokens.size()) {
        return std::string(sql);
    }
    if (IsWord(tokens[first], "DELETE")) {
        const size_t star = NextSolid(tokens, first + 1);
        if (star < tokens.size() && IsPunct(tokens[star], '*') &&
            NextSolid(tokens, star + 1) < tokens.size() &&
            IsWord(tokens[NextSolid(tokens, star + 1)], "FROM")) {
            const size_t end = star + 1 < tokens.size() && tokens[star + 1].kind == Kind::Space
                                   ? star + 2
                                   : star + 1;
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(star),
                         tokens.begin() + static_cast<std::ptrdiff_t>(end));
        }
    } else if (IsWord(tokens[first], "CREATE")) {
        const size_t table = NextSolid(tokens, first + 1);
        if (table < tokens.size() && IsWord(tokens[table], "TABLE")) {
            return TranslateCreateTable(tokens);
        }
    }
    return EmitRange(tokens, 0, tokens.size());
}

}  // namespace plcdb
