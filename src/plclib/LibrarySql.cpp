#include "plclib/LibrarySql.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

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
                               const std::string& source, std::string& error, int& statements) {
    const std::string temporary = target + ".part";
    std::error_code ec;
    std::filesystem::remove(temporary, ec);
    statements = 0;
    {
        Connection db;
        if (!db.Create(temporary, error)) {
            return CreateResult::CannotCreate;
        }
        if (!db.Execute("BEGIN", error) ||
            (in && !RunSqlText(*in, source, db, error, statements)) ||
            !db.Execute("COMMIT", error) || !db.Close(error)) {
            std::string closing;
            db.Close(closing);
            std::filesystem::remove(temporary, ec);
            return CreateResult::BadStatement;
        }
    }
    // link() refuses an existing name: a library made meanwhile by someone else is kept.
    const int linked = ::link(temporary.c_str(), target.c_str());
    const int linkError = errno;
    std::filesystem::remove(temporary, ec);
    if (linked != 0) {
        error = target + ": " + std::strerror(linkError);
        return CreateResult::CannotCreate;
    }
    return CreateResult::Created;
}

}  // namespace plcdb
