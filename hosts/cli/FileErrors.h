// How a command reports a files::FileError: "qvplc COMMAND: PATH: REASON" on standard error,
// and the exit code for its kind from the one table (ExitCodeFor).
#pragma once

#include "files/FileError.h"

namespace cli {

int ReportFileError(const char* command, const files::FileError& error);

}  // namespace cli
