#include "files/FileError.h"

#include <cerrno>
#include <cstring>

namespace files {

FileError::FileError(ErrorKind kind, std::string path, std::string reason)
    : std::runtime_error(path + ": " + reason),
      kind_(kind),
      path_(std::move(path)),
      reason_(std::move(reason)) {}

FileError ErrnoError(const std::string& path, int error) {
    switch (error) {
        case ENOENT:
            return FileError(ErrorKind::NotFound, path, "no such file or folder");
        case ENOTDIR:
            return FileError(ErrorKind::NotFound, path, "a part of the path is not a folder");
        case EACCES:
        case EPERM:
            return FileError(ErrorKind::Permission, path, "permission denied");
        case ELOOP:
            return FileError(ErrorKind::NotFound, path,
                             "too many levels of symbolic links (a link loop)");
        case ENAMETOOLONG:
            return FileError(ErrorKind::NameTooLong, path, "the file name or the path is too long");
        case EROFS:
            return FileError(ErrorKind::ReadOnly, path, "the file system is read-only");
        case EISDIR:
            return FileError(ErrorKind::NotRegular, path, "is a folder, not a file");
        case ENXIO:
            return FileError(ErrorKind::NotRegular, path, "is a FIFO or device, not a file");
        default:
            return FileError(ErrorKind::Other, path, std::strerror(error));
    }
}

}  // namespace files
