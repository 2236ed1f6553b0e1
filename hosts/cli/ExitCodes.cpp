#include "ExitCodes.h"

#include <iterator>

namespace cli {
namespace {

constexpr ExitCodeRow kRows[] = {
    {kExitOk, "success"},
    {kExitFailure, "the command ran and failed (the reason is printed on standard error)"},
    {kExitUsage, "usage error: unknown command, option or argument, or a value out of range"},
    {kExitBadInput, "an input (library, drawing, settings) is missing, unreadable or malformed"},
    {kExitCancelled, "cancelled: a question was answered no, or a point was not given"},
    {kExitLocked, "the library or a file is in use by another program; try again later"},
    {kExitChanged, "a file changed on disk after it was read; nothing was written"},
    {kExitCannotWrite,
     "a file or folder cannot be written or reached (permission, read-only, "
     "missing folder, name too long)"},
    {kExitNoServer,
     "the library server cannot be reached, refused the login, or lacks the root folder"},
    {kExitRevoked, "another host took the editing lock: the library was not sent"},
    {kExitInternal, "internal error in qvplc (please report it)"},
};

}  // namespace

const ExitCodeRow* ExitCodeTable(size_t& rows) {
    rows = std::size(kRows);
    return kRows;
}

std::string ExitCodesHelp() {
    std::string text = "Exit codes:\n";
    for (const ExitCodeRow& row : kRows) {
        const std::string code = std::to_string(row.code);
        text += std::string(4 - code.size(), ' ') + code + "  " + row.meaning + "\n";
    }
    return text;
}

int ExitCodeFor(FileTrouble trouble) {
    switch (trouble) {
        case FileTrouble::InUse:
            return kExitLocked;
        case FileTrouble::ChangedOnDisk:
            return kExitChanged;
        case FileTrouble::Unreadable:
            return kExitBadInput;
        case FileTrouble::CannotWrite:
            return kExitCannotWrite;
    }
    return kExitInternal;
}

int ExitCodeFor(const files::FileError& error) {
    switch (error.Kind()) {
        case files::ErrorKind::SameFile:
            return kExitUsage;
        case files::ErrorKind::Locked:
            return ExitCodeFor(FileTrouble::InUse);
        case files::ErrorKind::ChangedOnDisk:
            return ExitCodeFor(FileTrouble::ChangedOnDisk);
        case files::ErrorKind::NotFound:
        case files::ErrorKind::NotRegular:
            return ExitCodeFor(FileTrouble::Unreadable);
        default:
            return ExitCodeFor(FileTrouble::CannotWrite);
    }
}

}  // namespace cli
