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

CreateResult CreateLibraryFile(const std::string& target, std::istream* in,
                               const std::string& source, std::string& error, int& statements,
                               Existing existing) {
    std::string temporary;
    try {
        files::CheckWritable(target);
        temporary = files::ScratchPathFor(target);
    } catch (const files::FileError& e) {
        error = e.what();
        return CreateResult::CannotCreate;
    }
    std::error_code ec;
    statements = 0;
    {
        Connection db;
        if (!db.Create(temporary, error)) {
            std::filesystem::remove(temporary, ec);
            return CreateResult::CannotCreate;
        }
        if (!db.Execute("BEGIN", error) ||
            (in && !RunSqlText(*in, source, db, error, statements)) ||
            !db.Execute("COMMIT", error) || !db.Close(error)) {
            std::string closing;
            db.Close(closing);
            std::filesystem::remove(temporary, ec);
            std::filesystem::remove(temporary + "-journal", ec);
            return CreateResult::BadStatement;
        }
    }
    // Unless asked to replace it, a library made meanwhile by someone else is kept.
    files::WriteOptions options;
    options.createOnly = existing == Existing::Keep;
    try {
        files::CopyInto(target, temporary, options);
    } catch (const files::FileError& e) {
        error = e.what();
        std::filesystem::remove(temporary, ec);
        return CreateResult::CannotCreate;
    }
    std::filesystem::remove(temporary, ec);
    return CreateResult::Created;
}

}  // namespace plcdb
