#include "TableDescription.h"

#include <charconv>
#include <initializer_list>

#include "Json.h"

namespace jetwrite {
namespace {

using Kind = JsonValue::Kind;

bool Fail(const JsonValue& at, const std::string& path, const std::string& what,
          std::string& error) {
    error = at.Where() + ": " + path + " " + what;
    return false;
}

bool Expect(const JsonValue& value, Kind kind, const std::string& path, const char* what,
            std::string& error) {
    return value.kind == kind || Fail(value, path, std::string("must be ") + what, error);
}

bool OnlyKeys(const JsonValue& object, const std::string& path,
              std::initializer_list<std::string_view> keys, std::string& error) {
    for (const auto& [key, value] : object.members) {
        bool known = false;
        for (const auto k : keys) {
            known = known || key == k;
        }
        if (!known) {
            return Fail(value, path, "has an unknown key \"" + key + "\"", error);
        }
    }
    return true;
}

const JsonValue* Required(const JsonValue& object, const char* key, const std::string& path,
                          std::string& error) {
    const JsonValue* value = object.Find(key);
    if (!value) {
        Fail(object, path, std::string("needs \"") + key + "\"", error);
    }
    return value;
}

bool LoadColumn(const JsonValue& value, const std::string& path, Column& column,
                std::string& error) {
    if (!Expect(value, Kind::Object, path, "an object", error) ||
        !OnlyKeys(value, path, {"name", "type", "length"}, error)) {
        return false;
    }
    const JsonValue* name = Required(value, "name", path, error);
    const JsonValue* type = name ? Required(value, "type", path, error) : nullptr;
    if (!type || !Expect(*name, Kind::String, path + ".name", "a string", error) ||
        !Expect(*type, Kind::String, path + ".type", "a string", error)) {
        return false;
    }
    column.name = name->text;
    if (type->text == "text") {
        column.type = ColumnType::Text;
    } else if (type->text == "memo") {
        column.type = ColumnType::Memo;
    } else if (type->text == "long") {
        column.type = ColumnType::Long;
    } else {
        return Fail(*type, path + ".type", "must be \"text\", \"memo\" or \"long\"", error);
    }
    if (const JsonValue* length = value.Find("length")) {
        int n = 0;
        const auto& t = length->text;
        const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), n);
        if (column.type != ColumnType::Text) {
            return Fail(*length, path + ".length", "is only for text columns", error);
        }
        if (length->kind != Kind::Number || ec != std::errc() || end != t.data() + t.size() ||
            n < 1 || n > 255) {
            return Fail(*length, path + ".length", "must be a whole number from 1 to 255", error);
        }
        column.length = n;
    }
    return true;
}

bool LoadField(const JsonValue& value, const Column& column, const std::string& path, Field& field,
               std::string& error) {
    if (value.kind == Kind::Null) {
        field.reset();
        return true;
    }
    if (column.type == ColumnType::Long) {
        const bool whole =
            value.kind == Kind::Number && value.text.find_first_of(".e") == std::string::npos;
        if (!whole) {
            return Fail(value, path, "must be a whole number or null (a long column)", error);
        }
    } else if (value.kind != Kind::String) {
        return Fail(value, path, "must be a string or null (a text or memo column)", error);
    }
    field = value.text;
    return true;
}

bool LoadRows(const JsonValue& rows, const std::string& path, Table& table, std::string& error) {
    if (!Expect(rows, Kind::Array, path, "an array of rows", error)) {
        return false;
    }
    table.rows.reserve(rows.items.size());
    for (size_t r = 0; r < rows.items.size(); ++r) {
        const auto& row = rows.items[r];
        const std::string at = path + "[" + std::to_string(r) + "]";
        if (!Expect(row, Kind::Array, at, "an array of fields", error)) {
            return false;
        }
        if (row.items.size() != table.columns.size()) {
            return Fail(row, at,
                        "has " + std::to_string(row.items.size()) + " fields for " +
                            std::to_string(table.columns.size()) + " columns",
                        error);
        }
        auto& fields = table.rows.emplace_back(row.items.size());
        for (size_t c = 0; c < row.items.size(); ++c) {
            if (!LoadField(row.items[c], table.columns[c], at + "[" + std::to_string(c) + "]",
                           fields[c], error)) {
                return false;
            }
        }
    }
    return true;
}

bool LoadTable(const JsonValue& value, const std::string& path, Table& table, std::string& error) {
    if (!Expect(value, Kind::Object, path, "an object", error) ||
        !OnlyKeys(value, path, {"name", "columns", "rows"}, error)) {
        return false;
    }
    const JsonValue* name = Required(value, "name", path, error);
    const JsonValue* columns = name ? Required(value, "columns", path, error) : nullptr;
    if (!columns || !Expect(*name, Kind::String, path + ".name", "a string", error) ||
        !Expect(*columns, Kind::Array, path + ".columns", "an array", error)) {
        return false;
    }
    table.name = name->text;
    for (size_t c = 0; c < columns->items.size(); ++c) {
        if (!LoadColumn(columns->items[c], path + ".columns[" + std::to_string(c) + "]",
                        table.columns.emplace_back(), error)) {
            return false;
        }
    }
    const JsonValue* rows = value.Find("rows");
    return !rows || LoadRows(*rows, path + ".rows", table, error);
}

}  // namespace

bool LoadDescription(std::string_view json, Database& db, std::string& error) {
    db = Database{};
    JsonValue root;
    if (!ParseJson(json, root, error)) {
        return false;
    }
    if (!Expect(root, Kind::Object, "the description", "an object", error) ||
        !OnlyKeys(root, "the description", {"tables"}, error)) {
        return false;
    }
    const JsonValue* tables = Required(root, "tables", "the description", error);
    if (!tables || !Expect(*tables, Kind::Array, "tables", "an array", error)) {
        return false;
    }
    for (size_t t = 0; t < tables->items.size(); ++t) {
        if (!LoadTable(tables->items[t], "tables[" + std::to_string(t) + "]",
                       db.tables.emplace_back(), error)) {
            return false;
        }
    }
    return true;
}

}  // namespace jetwrite
