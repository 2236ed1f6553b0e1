#include "files/AtomicFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "files/TextFile.h"

namespace files {

namespace {

constexpr const char* kTempPrefix = ".qv~";

constexpr mode_t kWriteBits = S_IWUSR | S_IWGRP | S_IWOTH;

mode_t CurrentUmask() {
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return mask;
}

// A temporary name the next write into the folder recognises: ".qv~PID~RANDOM~NAME".
std::string TemporaryName(const std::string& name) {
    static std::mt19937 random(std::random_device{}());
    char middle[48];
    std::snprintf(middle, sizeof middle, "%s%ld~%08x~", kTempPrefix, static_cast<long>(::getpid()),
                  static_cast<unsigned>(random()));
    // Short enough for any file system's name limit, whatever the target's name.
    return middle + name.substr(0, 160);
}

// Removes temporary files left in `folderFd` by processes that no longer run.
void RemoveStaleTemporaries(int folderFd) {
    const int copy = ::dup(folderFd);
    DIR* dir = copy >= 0 ? ::fdopendir(copy) : nullptr;
    if (!dir) {
        if (copy >= 0) {
            ::close(copy);
        }
        return;
    }
    const std::string prefix = kTempPrefix;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name.compare(0, prefix.size(), prefix) != 0) {
            continue;
        }
        char* end = nullptr;
        const long pid = std::strtol(name.c_str() + prefix.size(), &end, 10);
        if (pid <= 0 || *end != '~' || pid == ::getpid()) {
            continue;
        }
        if (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) {
            ::unlinkat(folderFd, name.c_str(), 0);
        }
    }
    ::closedir(dir);
}

void CheckFolder(const std::string& folder, bool create) {
    struct stat st {};
    if (::stat(folder.c_str(), &st) != 0) {
        const int error = errno;
        if (error == ENOENT && create) {
            std::error_code ec;
            std::filesystem::create_directories(folder, ec);
            if (!ec) {
                return CheckFolder(folder, false);
            }
            throw ErrnoError(folder, ec.value());
        }
        if (error == ENOENT) {
            throw FileError(ErrorKind::NotFound, folder, "the folder does not exist");
        }
        throw ErrnoError(folder, error);
    }
    if (!S_ISDIR(st.st_mode)) {
        throw FileError(ErrorKind::NotFound, folder, "is not a folder");
    }
    // Mode bits, not access(): the administrator may write anything, yet a folder marked
    // read-only stays so for everyone.
    if ((st.st_mode & kWriteBits) == 0) {
        throw FileError(ErrorKind::ReadOnly, folder, "the folder is read-only");
    }
}

struct Inspected {
    std::string path;  // symbolic links followed
    std::string name;  // within its folder
    bool existed = false;
    unsigned mode = 0, owner = 0, group = 0;
};

// What a write to `path` would replace, checked against the policy in the header.
Inspected Inspect(const std::string& path, bool createFolders) {
    if (path.empty()) {
        throw FileError(ErrorKind::NotFound, path, "no file name was given");
    }
    Inspected target;
    target.path = ResolveLinks(path);
    target.name = BaseNameOf(target.path);
    if (target.name.empty() || target.name == "." || target.name == "..") {
        throw FileError(ErrorKind::NotRegular, path, "is a folder, not a file");
    }
    if (target.name.size() > NAME_MAX) {
        throw FileError(ErrorKind::NameTooLong, path, "the file name is longer than 255 bytes");
    }
    struct stat st {};
    if (::lstat(target.path.c_str(), &st) == 0) {
        if (!S_ISREG(st.st_mode)) {
            throw FileError(ErrorKind::NotRegular, path,
                            S_ISDIR(st.st_mode) ? "is a folder, not a file"
                                                : "is a FIFO, device or socket, not a file");
        }
        if (st.st_nlink > 1) {
            throw FileError(ErrorKind::HardLinked, path,
                            "the file has other hard links that replacing it would split off");
        }
        if ((st.st_mode & kWriteBits) == 0) {
            throw FileError(ErrorKind::ReadOnly, path, "the file is read-only");
        }
        target.existed = true;
        target.mode = st.st_mode & 07777;
        target.owner = st.st_uid;
        target.group = st.st_gid;
    } else if (errno != ENOENT) {
        throw ErrnoError(path, errno);
    }
    CheckFolder(FolderOf(target.path), createFolders);
    return target;
}

}  // namespace

void CheckWritable(const std::string& path) {
    Inspect(path, false);
}

AtomicFile::AtomicFile(const std::string& path, WriteOptions options)
    : path_(path), options_(std::move(options)) {
    const Inspected target = Inspect(path, options_.createFolders);
    target_ = target.path;
    name_ = target.name;
    existed_ = target.existed;
    if (options_.createOnly && existed_) {
        throw FileError(ErrorKind::AlreadyExists, path_,
                        "the file already exists; it was left as it is");
    }
    mode_ = target.mode;
    owner_ = target.owner;
    group_ = target.group;
    const std::string folder = FolderOf(target_);
    folderFd_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd_ < 0) {
        throw ErrnoError(folder, errno);
    }
    RemoveStaleTemporaries(folderFd_);
    try {
        OpenTemporary();
    } catch (...) {
        Discard();
        throw;
    }
}

AtomicFile::~AtomicFile() {
    Discard();
}

void AtomicFile::OpenTemporary() {
    fd_ = ::openat(folderFd_, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    if (fd_ >= 0) {
        unnamed_ = true;
        return;
    }
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOENT) {
        throw ErrnoError(target_, errno);
    }
    for (int attempt = 0; attempt < 16 && fd_ < 0; ++attempt) {
        tempName_ = TemporaryName(name_);
        fd_ = ::openat(folderFd_, tempName_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd_ < 0 && errno != EEXIST) {
            const int error = errno;
            tempName_.clear();
            throw ErrnoError(target_, error);
        }
    }
    if (fd_ < 0) {
        tempName_.clear();
        throw ErrnoError(target_, EEXIST);
    }
}

void AtomicFile::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd_, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            throw ErrnoError(target_, n < 0 ? errno : ENOSPC);
        }
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
}

// The unnamed file gets a temporary name for the rename; linkat cannot replace a name.
void AtomicFile::GiveName() {
    if (!unnamed_) {
        return;
    }
    const std::string self = "/proc/self/fd/" + std::to_string(fd_);
    for (int attempt = 0; attempt < 16; ++attempt) {
        tempName_ = TemporaryName(name_);
        if (::linkat(AT_FDCWD, self.c_str(), folderFd_, tempName_.c_str(), AT_SYMLINK_FOLLOW) ==
            0) {
            unnamed_ = false;
            return;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    const int error = errno;
    tempName_.clear();
    throw ErrnoError(target_, error);
}

void AtomicFile::Commit() {
    if (options_.sync && ::fsync(fd_) != 0) {
        throw ErrnoError(target_, errno);
    }
    if (existed_) {
        if (::geteuid() == 0) {
            ::fchown(fd_, owner_, group_);
        }
        ::fchmod(fd_, mode_);
    } else if (!unnamed_) {
        ::fchmod(fd_, 0666 & ~CurrentUmask());
    }
    if (options_.expected && !(Identify(target_) == *options_.expected)) {
        throw FileError(ErrorKind::ChangedOnDisk, path_,
                        "the file was changed on disk since it was read; nothing was written");
    }
    GiveName();
    const unsigned flags = options_.createOnly ? RENAME_NOREPLACE : 0;
    if (::renameat2(folderFd_, tempName_.c_str(), folderFd_, name_.c_str(), flags) != 0) {
        if (options_.createOnly && errno == EEXIST) {
            throw FileError(ErrorKind::AlreadyExists, path_,
                            "the file already exists; it was left as it is");
        }
        throw ErrnoError(target_, errno);
    }
    tempName_.clear();
    committed_ = true;
    if (options_.sync) {
        ::fsync(folderFd_);
    }
    Discard();
}

void AtomicFile::Discard() {
    if (fd_ >= 0) {
        ::close(fd_);
        fd_ = -1;
    }
    if (!tempName_.empty() && folderFd_ >= 0) {
        ::unlinkat(folderFd_, tempName_.c_str(), 0);
        tempName_.clear();
    }
    if (folderFd_ >= 0) {
        ::close(folderFd_);
        folderFd_ = -1;
    }
}

std::string ScratchPathFor(const std::string& target) {
    const std::string resolved = ResolveLinks(target);
    return FolderOf(resolved) + "/" + TemporaryName(BaseNameOf(resolved));
}

void CopyInto(const std::string& path, const std::string& source, WriteOptions options) {
    WriteFile(path, ReadWholeFile(source), std::move(options));
}

void WriteFile(const std::string& path, std::string_view content, WriteOptions options) {
    AtomicFile file(path, std::move(options));
    file.Write(content);
    file.Commit();
}

}  // namespace files
