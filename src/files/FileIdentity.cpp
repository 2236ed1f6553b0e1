#include "files/FileIdentity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "files/FileError.h"

namespace files {

namespace {

constexpr int kMaxLinks = 40;  // the system's own limit for a path

FileError NotRegularError(const std::string& path, mode_t mode) {
    if (S_ISDIR(mode)) {
        return FileError(ErrorKind::NotRegular, path, "is a folder, not a file");
    }
    return FileError(ErrorKind::NotRegular, path, "is a FIFO, device or socket, not a file");
}

}  // namespace

bool Identity::operator==(const Identity& other) const {
    if (exists != other.exists) {
        return false;
    }
    return !exists ||
           (device == other.device && inode == other.inode && size == other.size &&
            modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec);
}

Identity Identify(const std::string& path) {
    struct stat st {};
    Identity id;
    if (::stat(path.c_str(), &st) != 0) {
        if (errno == ENOENT) {
            return id;
        }
        throw ErrnoError(path, errno);
    }
    id.exists = true;
    id.device = st.st_dev;
    id.inode = st.st_ino;
    id.size = st.st_size;
    id.modified = st.st_mtim;
    return id;
}

// Where a file that does not exist yet would be made: its folder's real path and its name.
std::string WouldBeMadeAt(const std::string& path) {
    try {
        const std::string resolved = ResolveLinks(path);
        char* folder = ::realpath(FolderOf(resolved).c_str(), nullptr);
        if (!folder) {
            return {};
        }
        std::string made = std::string(folder) + "/" + BaseNameOf(resolved);
        std::free(folder);
        return made;
    } catch (const FileError&) {
        return {};
    }
}

bool SameFile(const std::string& a, const std::string& b) {
    struct stat sa {
    }, sb{};
    const bool hasA = ::stat(a.c_str(), &sa) == 0;
    const bool hasB = ::stat(b.c_str(), &sb) == 0;
    if (hasA && hasB) {
        return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
    }
    if (hasA || hasB) {
        return false;
    }
    // Two outputs not made yet: one when they would be made in one place.
    const std::string madeA = WouldBeMadeAt(a);
    return !madeA.empty() && madeA == WouldBeMadeAt(b);
}

void RefuseSameFile(const std::string& output, const std::string& input) {
    if (SameFile(output, input)) {
        throw FileError(ErrorKind::SameFile, output,
                        "the output is also an input of this command; nothing was written");
    }
}

std::string FolderOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string BaseNameOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string ResolveLinks(const std::string& path) {
    std::string current = path;
    for (int hops = 0; hops <= kMaxLinks; ++hops) {
        struct stat st {};
        if (::lstat(current.c_str(), &st) != 0) {
            if (errno == ENOENT) {
                return current;
            }
            throw ErrnoError(current, errno);
        }
        if (!S_ISLNK(st.st_mode)) {
            return current;
        }
        std::string target(static_cast<std::size_t>(st.st_size > 0 ? st.st_size : 4096), '\0');
        const ssize_t n = ::readlink(current.c_str(), target.data(), target.size());
        if (n < 0) {
            throw ErrnoError(current, errno);
        }
        target.resize(static_cast<std::size_t>(n));
        const bool relative = target.empty() || target[0] != '/';
        current = relative && current.find('/') != std::string::npos
                      ? FolderOf(current) + "/" + target
                      : target;
    }
    throw ErrnoError(path, ELOOP);
}

int OpenForReading(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        throw ErrnoError(path, errno);
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        const int error = errno;
        ::close(fd);
        throw ErrnoError(path, error);
    }
    if (!S_ISREG(st.st_mode)) {
        ::close(fd);
        throw NotRegularError(path, st.st_mode);
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fd;
}

void RefuseNonRegular(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        if (errno == ENOENT) {
            return;
        }
        throw ErrnoError(path, errno);
    }
    if (!S_ISREG(st.st_mode)) {
        throw NotRegularError(path, st.st_mode);
    }
}

}  // namespace files
