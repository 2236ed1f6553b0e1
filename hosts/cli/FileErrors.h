// How a command reports a files::FileError: "qvplc COMMAND: PATH: REASON" on standard error,
// and the exit code for its kind (a file the user named that cannot be used is bad input;
// anything else is a failure of the command).
#pragma once

#include "files/FileError.h"

namespace cli {

int ReportFileError(const char* command, const files::FileError& error);

}  // namespace cli
