// Access SQL to SQLite SQL. The library is stored by SQLite but the system speaks the Access
// dialect: "DELETE * FROM", bracketed names, CHAR(n), MEMO, int and inline primary keys.
// The translation touches nothing inside string literals; "text" is a string literal, as in
// Access, and [name] a name.
#pragma once

#include <string>
#include <string_view>

namespace plcdb {

// The SQLite text of one Access statement. Column types of CREATE TABLE become:
//   CHAR(n), VARCHAR(n), TEXT(n), TEXT -> TEXT, compared without regard to case, refusing
//                                        text longer than n (255 for a bare TEXT)
//   MEMO, LONGTEXT, NOTE              -> TEXT, compared without regard to case, unbounded
//   INT, INTEGER, LONG, SHORT, ...    -> INTEGER
std::string TranslateAccessSql(std::string_view sql);

// The statement text quoted as a SQLite identifier ("name", inner quotes doubled).
std::string QuoteIdentifier(std::string_view name);

}  // namespace plcdb
