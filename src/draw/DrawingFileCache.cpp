#include "draw/DrawingFileCache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cad/Dxf.h"

namespace draw {

namespace {

bool ReadWholeFile(const std::string& path, std::string& bytes, std::string& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = path + ": cannot be opened: " + std::strerror(errno);
        return false;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        error = path + ": is not a regular file";
        return false;
    }
    bytes.resize(static_cast<std::size_t>(st.st_size));
    std::size_t done = 0;
    int failure = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            failure = errno;
            break;
        }
        if (n == 0) {
            break;  // shorter than it was a moment ago: what was read is parsed
        }
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    if (failure != 0) {
        error = path + ": cannot be read: " + std::strerror(failure);
        return false;
    }
    bytes.resize(done);
    return true;
}

}  // namespace

const cad::Database* DrawingFileCache::Read(const std::string& path, std::string& error) {
    std::string bytes;
    if (!ReadWholeFile(path, bytes, error)) {
        Forget();
        return nullptr;
    }
    if (drawing_ && path_ == path && bytes_ == bytes) {
        return drawing_.get();
    }
    std::unique_ptr<cad::Database> drawing;
    try {
        if (bytes.empty()) {
            throw cad::DxfError(path, 0, "the file is empty");
        }
        drawing = cad::ReadDxfString(bytes, path);
    } catch (const cad::DxfError& e) {
        error = e.what();
        Forget();
        return nullptr;
    }
    Remember(path, std::move(bytes), std::move(drawing));
    return drawing_.get();
}

void DrawingFileCache::Remember(std::string path, std::string bytes,
                                std::unique_ptr<cad::Database> drawing) {
    path_ = std::move(path);
    bytes_ = std::move(bytes);
    drawing_ = std::move(drawing);
}

void DrawingFileCache::Forget() {
    Remember({}, {}, nullptr);
}

}  // namespace draw
