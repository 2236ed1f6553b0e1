#include "files/UpdateLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "files/FileError.h"
#include "files/FileIdentity.h"

namespace files {

UpdateLock::UpdateLock(const std::string& path, std::chrono::milliseconds wait) {
    const std::string folder = FolderOf(ResolveLinks(path));
    fd_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd_ < 0) {
        if (errno == ENOENT) {
            throw FileError(ErrorKind::NotFound, folder, "the folder does not exist");
        }
        throw ErrnoError(folder, errno);
    }
    const auto deadline = std::chrono::steady_clock::now() + wait;
    while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) ||
            std::chrono::steady_clock::now() >= deadline) {
            ::close(fd_);
            throw FileError(ErrorKind::Locked, path,
                            "another process is updating this file; try again later");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

UpdateLock::~UpdateLock() {
    if (fd_ >= 0) {
        ::close(fd_);  // releases the lock
    }
}

}  // namespace files
