// The one error type of the file layer: what went wrong, with which file, and why.
#pragma once

#include <stdexcept>
#include <string>

namespace files {

// What kind of failure it was, so that a command can choose its exit code without reading
// the text: NotFound and NotRegular are problems with what the user named; the others are
// failures of the command.
enum class ErrorKind {
    NotFound,       // the file or its folder does not exist
    Permission,     // the system refused access
    NotRegular,     // a folder, FIFO, device or socket where a file belongs
    Locked,         // another process holds the update lock too long
    ChangedOnDisk,  // the file changed since it was read; nothing was written
    SameFile,       // an output is also an input of the same command
    ReadOnly,       // the file, its folder or its file system is marked read-only
    NameTooLong,    // a name or the whole path exceeds the system's limit
    HardLinked,     // the file has other hard links that a replacement would split off
    AlreadyExists,  // a file that is only ever made new is there already
    Other,
};

class FileError : public std::runtime_error {
public:
    FileError(ErrorKind kind, std::string path, std::string reason);
    ErrorKind Kind() const { return kind_; }
    const std::string& Path() const { return path_; }
    const std::string& Reason() const { return reason_; }

private:
    ErrorKind kind_;
    std::string path_;
    std::string reason_;
};

// The error for a failed system call on `path` with errno `error`.
FileError ErrnoError(const std::string& path, int error);

}  // namespace files
