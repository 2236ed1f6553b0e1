// Builds a component library from a text of Access SQL statements, one per line ("--" starts
// a comment line): the bundled sample library is kept in this form.
#pragma once

#include <istream>
#include <string>

namespace plcdb {

class Connection;

// Runs every statement of `in` on `db`; on failure `error` names the source and line.
bool RunSqlText(std::istream& in, const std::string& source, Connection& db, std::string& error,
                int& statements);

// Creates `target` from the statements of `in` (or with the base tables only when `in` is
// null). The library is built under a temporary name in the same folder and linked into
// place only when complete, so an existing file is never replaced and a failed build leaves
// nothing behind. On failure `error` holds the reason.
enum class CreateResult { Created, BadStatement, CannotCreate };
CreateResult CreateLibraryFile(const std::string& target, std::istream* in,
                               const std::string& source, std::string& error, int& statements);

}  // namespace plcdb
