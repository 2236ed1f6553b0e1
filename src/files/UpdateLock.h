// UpdateLock: serialises read-modify-writes of one file between processes (drawing a module
// into an existing drawing, changing a setting).
//
// The lock is an advisory lock (flock) on the folder that holds the file, not on the file:
// every write replaces the file by a rename, so a lock on the old file would not stop a
// second process that opened the new one. The folder is never replaced, so one lock on it
// holds across the rename; it also covers a file that does not exist yet, where two
// processes would otherwise both create it. The price is that updates of different files
// in one folder wait for each other, which for these short updates is not noticed.
//
// How to use it: take the lock, then read the file and remember its Identity, then write
// it through an AtomicFile with that identity expected. The lock keeps out every process of
// this system; the identity check refuses the write when another program changed the file
// meanwhile (it knows nothing of the lock). Readers take no lock: they always see a whole
// file.
#pragma once

#include <chrono>
#include <string>

namespace files {

class UpdateLock {
public:
    // Waits up to `wait` for the lock of the folder holding `path` (symbolic links followed);
    // FileError(Locked) when another process keeps it longer, FileError(NotFound) when the
    // folder does not exist.
    explicit UpdateLock(const std::string& path,
                        std::chrono::milliseconds wait = std::chrono::seconds(30));
    ~UpdateLock();
    UpdateLock(const UpdateLock&) = delete;
    UpdateLock& operator=(const UpdateLock&) = delete;

private:
    int fd_ = -1;
};

}  // namespace files
