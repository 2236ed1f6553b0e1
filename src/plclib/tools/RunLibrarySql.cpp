// qv_libsql SOURCE.sql LIBRARY.db: builds a component library from a text of Access SQL
// statements, one per line ("--" starts a comment line). An existing LIBRARY.db is replaced
// whole, and only once the new library is complete.
#include <cstdio>
#include <fstream>
#include <string>

#include "plclib/LibrarySql.h"

namespace {

int Fail(const std::string& message) {
    std::fprintf(stderr, "qv_libsql: %s\n", message.c_str());
    return 1;
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
    std::string error;
    int statements = 0;
    if (plcdb::CreateLibraryFile(target, &in, source, error, statements,
                                 plcdb::Existing::Replace) != plcdb::CreateResult::Created) {
        return Fail(error);
    }
    std::printf("qv_libsql: %d statements from %s\n", statements, source.c_str());
    return 0;
}
