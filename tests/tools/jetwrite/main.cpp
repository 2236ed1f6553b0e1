// jetwrite TABLES.json OUT.mdb: writes the Access file a table description describes.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "JetWriter.h"
#include "TableDescription.h"

namespace {

int Usage() {
    std::cerr << "usage: jetwrite [--plain-text] [--indirect-maps] TABLES.json OUT.mdb\n"
                 "  --plain-text     store every text as UTF-16LE, never compressed\n"
                 "  --indirect-maps  give every table a page-indirect usage map\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    jetwrite::WriteOptions options;
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--plain-text") {
            options.compressText = false;
        } else if (arg == "--indirect-maps") {
            options.indirectMaps = true;
        } else if (arg.rfind("--", 0) == 0) {
            std::cerr << "jetwrite: unknown option " << arg << "\n";
            return Usage();
        } else {
            files.push_back(arg);
        }
    }
    if (files.size() != 2) {
        return Usage();
    }
    std::ifstream in(files[0], std::ios::binary);
    if (!in) {
        std::cerr << "jetwrite: cannot read " << files[0] << ": " << std::strerror(errno) << "\n";
        return 1;
    }
    std::ostringstream text;
    text << in.rdbuf();
    jetwrite::Database db;
    std::string error;
    if (!jetwrite::LoadDescription(text.str(), db, error)) {
        std::cerr << "jetwrite: " << files[0] << ": " << error << "\n";
        return 1;
    }
    jetwrite::WriteSummary summary;
    if (!jetwrite::WriteDatabase(db, files[1], options, error, &summary)) {
        std::cerr << "jetwrite: " << error << "\n";
        return 1;
    }
    std::cout << "wrote " << files[1] << ": " << db.tables.size() << " tables, " << summary.rows
              << " rows, " << summary.pages << " pages\n";
    return 0;
}
