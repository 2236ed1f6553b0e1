// AtomicFile: the one way this system writes a file. Every file it writes (drawings,
// previews, pictures, settings, the last selection, libraries, symbols) goes through here,
// so that every file is written by one policy:
//
// - Whole or not at all. The new content goes to a temporary file in the target's own
//   folder, is flushed and synced, and is then renamed over the target; the folder is synced
//   after the rename. Readers see the old file or the new one, never half of either.
// - Nothing to clean up after a crash. The temporary file is unnamed (O_TMPFILE) and only
//   gets a name for the instant before the rename. Where the file system cannot make an
//   unnamed file, it is named ".qv~PID~..." in the target's folder; the next write into that
//   folder removes such names whose process is gone.
// - The file stays what it was. The replacement gets the old file's mode (a 0600 drawing
//   stays 0600) and, when run as root, its owner and group. A new file gets 0666 less the
//   umask. A symbolic link stays a link: the file it points to is the one replaced.
// - Refused rather than damaged, before anything is written:
//   * a file with more than one hard link: a rename would split it from its other names and
//     writing in place could leave it half written, so such a file is not written at all;
//   * a file or a folder whose mode bits allow no writing (read-only for everyone, the
//     administrator included), and a read-only file system;
//   * a folder, FIFO, device or socket where the file belongs;
//   * a folder that does not exist: it is created only when the caller asks (the suite's own
//     folders, such as Temp/ and LocalData/ under the local folder), never for a path a user
//     named;
//   * with `expected` set, a file that changed on disk since it was read (see UpdateLock).
// Every failure is a FileError naming the path and the reason; the target is untouched.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "files/FileError.h"
#include "files/FileIdentity.h"

namespace files {

struct WriteOptions {
    // Sync file and folder to the disk. Off only for scratch files that are rewritten at once.
    bool sync = true;
    // Create the missing folders of the path (for the suite's own folders only).
    bool createFolders = false;
    // When set, the commit is refused with ChangedOnDisk unless the target still has this
    // identity: what a read-modify-write saw when it read the file.
    std::optional<Identity> expected;
    // Make a new file only: an existing target (or one made by someone else meanwhile) is
    // kept, and the write is refused with AlreadyExists.
    bool createOnly = false;
};

class AtomicFile {
public:
    // Checks the target and opens the temporary file; FileError when the file cannot be
    // written by the policy above.
    explicit AtomicFile(const std::string& path, WriteOptions options = {});
    ~AtomicFile();  // discards what was written unless committed
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    void Write(std::string_view bytes);
    // Syncs and renames the temporary file over the target.
    void Commit();

    // The file that is replaced: the path given, symbolic links followed.
    const std::string& Target() const { return target_; }

private:
    void OpenTemporary();
    void GiveName();
    void Discard();

    std::string path_;
    std::string target_;
    std::string name_;  // the target's name within its folder
    WriteOptions options_;
    int folderFd_ = -1;
    int fd_ = -1;
    std::string tempName_;  // empty while the temporary file is unnamed
    bool unnamed_ = false;
    bool existed_ = false;
    unsigned mode_ = 0;
    unsigned owner_ = 0, group_ = 0;
    bool committed_ = false;
};

// FileError when a write to `path` would be refused by the policy above (checked up front,
// so that a command refuses before it writes any of its outputs).
void CheckWritable(const std::string& path);

// A path in the folder of `target` where a program that must build a file by name (SQLite
// makes a library that way) can build it before writing it through an AtomicFile with
// CopyInto. The name is one the next write into the folder removes when its process is
// gone; the caller removes it when done.
std::string ScratchPathFor(const std::string& target);

// Writes the bytes of the file `source` as the whole of `path` through an AtomicFile.
void CopyInto(const std::string& path, const std::string& source, WriteOptions options = {});

// Writes `content` as the whole of `path` through an AtomicFile; FileError on failure.
void WriteFile(const std::string& path, std::string_view content, WriteOptions options = {});

}  // namespace files
