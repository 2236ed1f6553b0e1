#include "plclib/LibrarySql.h"

#include <filesystem>

#include "files/AtomicFile.h"
#include "plclib/Engine.h"

namespace plcdb {

bool RunSqlText(std::istream& in, const std::string& source, Connection& db, std::string& error,
                int& statements) {
    std::string line;
    int number = 0;
    statements = 0;
    while (std::getline(in, line)) {
        ++number;
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.find_first_not_of(" \t") == std::string::npos || line.rfind("--", 0) == 0) {
            continue;
        }
        if (!db.Execute(line, error)) {
            error = source + ":" + std::to_string(number) + ": " + error;
            return false;
        }
        ++statements;
    }
    return true;
}

CreateResult BuildLibraryFile(const std::string& target, const files::WriteOptions& options,
                              const std::function<bool(Connection&, std::string&)>& build,
                              std::string& error) {
    std::string scratch;
    try {
        files::CheckWritable(target);
        scratch = files::ScratchPathFor(target);
    } catch (const files::FileError& e) {
        error = e.what();
        return CreateResult::CannotCreate;
    }
    CreateResult result = CreateResult::Created;
    {
        Connection db;
        if (!db.Create(scratch, error)) {
            result = CreateResult::CannotCreate;
        } else if (!build(db, error) || !db.Close(error)) {
            std::string closing;
            db.Close(closing);
            result = CreateResult::BadStatement;
        }
    }
    if (result == CreateResult::Created) {
        try {
            files::CopyInto(target, scratch, options);
        } catch (const files::FileError& e) {
            error = e.what();
            result = CreateResult::CannotCreate;
        }
    }
    std::error_code ec;
    std::filesystem::remove(scratch, ec);
    std::filesystem::remove(scratch + "-journal", ec);
    return result;
}

CreateResult CreateLibraryFile(const std::string& target, std::istream* in,
                               const std::string& source, std::string& error, int& statements,
                               Existing existing) {
    statements = 0;
    // Unless asked to replace it, a library made meanwhile by someone else is kept.
    files::WriteOptions options;
    options.createOnly = existing == Existing::Keep;
    return BuildLibraryFile(
        target, options,
        [&](Connection& db, std::string& failure) {
            return db.Execute("BEGIN", failure) &&
                   (!in || RunSqlText(*in, source, db, failure, statements)) &&
                   db.Execute("COMMIT", failure);
        },
        error);
}

}  // namespace plcdb
