#include "FileErrors.h"

#include <cstdio>

#include "ExitCodes.h"

namespace cli {

int ReportFileError(const char* command, const files::FileError& error) {
    std::fprintf(stderr, "%s: %s\n", command, error.what());
    return ExitCodeFor(error);
}

}  // namespace cli
