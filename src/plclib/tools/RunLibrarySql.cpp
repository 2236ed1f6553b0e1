// qv_libsql SOURCE.sql LIBRARY.db: builds a component library from a text of Access SQL
// statements, one per line ("--" starts a comment line). The library is written under a
// temporary name and renamed at the end, so a failed build never leaves half a library.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "plclib/Engine.h"

namespace {

int Fail(const std::string& message) {
    std::fprintf(stderr, "qv_libsql: %s\n", message.c_str());
    return 1;
}

bool RunFile(std::ifstream& in, const std::string& source, plcdb::Connection& db,
             std::string& error) {
    std::string line;
    int number = 0;
    int statements = 0;
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
    std::printf("qv_libsql: %d statements from %s\n", statements, source.c_str());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return Fail("usage: qv_libsql SOURCE.sql LIBRARY.db");
    }
    const std::string source = argv[1];
    const std::string target = argv[2];
    std::ifstream in(source);
    if (!in) {
        return Fail("cannot read " + source);
    }
    const std::string temporary = target + ".part";
    std::error_code ec;
    std::filesystem::remove(temporary, ec);
    std::string error;
    {
        plcdb::Connection db;
        if (!db.Create(temporary, error) || !db.Execute("BEGIN", error) ||
            !RunFile(in, source, db, error) || !db.Execute("COMMIT", error) || !db.Close(error)) {
            std::filesystem::remove(temporary, ec);
            return Fail(error);
        }
    }
    std::filesystem::rename(temporary, target, ec);
    if (ec) {
        std::filesystem::remove(temporary, ec);
        return Fail("cannot write " + target + ": " + ec.message());
    }
    return 0;
}
