// Builds a component library from a text of Access SQL statements, one per line ("--" starts
// a comment line): the bundled sample library is kept in this form.
#pragma once

#include <functional>
#include <istream>
#include <string>

#include "files/AtomicFile.h"

namespace plcdb {

class Connection;

// Runs every statement of `in` on `db`; on failure `error` names the source and line.
bool RunSqlText(std::istream& in, const std::string& source, Connection& db, std::string& error,
                int& statements);

// Creates `target` from the statements of `in` (or with the base tables only when `in` is
// null). The library is built under a scratch name in the same folder and written through
// the atomic writer only when complete, so a failed build leaves nothing behind; an existing
// file is kept (the result is CannotCreate) unless `existing` says to replace it. On failure
// `error` holds the reason.
enum class CreateResult { Created, BadStatement, CannotCreate };

// SQLite makes a library by name: `build` fills a new library at a scratch path beside
// `target`, and only a complete one is written over `target` through the atomic writer. The
// scratch file and its journal are removed either way. BadStatement when `build` failed,
// CannotCreate when the target cannot be written; `error` says why.
CreateResult BuildLibraryFile(const std::string& target, const files::WriteOptions& options,
                              const std::function<bool(Connection&, std::string&)>& build,
                              std::string& error);
enum class Existing { Keep, Replace };
CreateResult CreateLibraryFile(const std::string& target, std::istream* in,
                               const std::string& source, std::string& error, int& statements,
                               Existing existing = Existing::Keep);

}  // namespace plcdb
