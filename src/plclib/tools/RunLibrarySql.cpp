// qv_libsql SOURCE.sql LIBRARY.db: builds a component library from a text of Access SQL
// statements, one per line ("--" starts a comment line). The library is built in a scratch
// file and written through an AtomicFile at the end, so a failed build never leaves half a
// library.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "files/AtomicFile.h"
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
    std::string temporary, error;
    try {
        files::CheckWritable(target);
        temporary = files::ScratchPathFor(target);
    } catch (const files::FileError& e) {
        return Fail(e.what());
    }
    bool built = false;
    {
        plcdb::Connection db;
        built = db.Create(temporary, error) && db.Execute("BEGIN", error) &&
                RunFile(in, source, db, error) && db.Execute("COMMIT", error) && db.Close(error);
    }
    if (built) {
        try {
            files::CopyInto(target, temporary);
        } catch (const files::FileError& e) {
            built = false;
            error = e.what();
        }
    }
    std::error_code ec;
    std::filesystem::remove(temporary, ec);
    std::filesystem::remove(temporary + "-journal", ec);
    return built ? 0 : Fail(error);
}
