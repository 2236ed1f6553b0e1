// Which file a path names: identity by device and inode, never by spelling, so that
// "D.dxf", "./D.dxf", a symbolic link to it and a hard link of it are all one file.
#pragma once

#include <sys/types.h>

#include <ctime>
#include <string>

#include "files/FileError.h"

namespace files {

// What a read-modify-write remembers of a file to notice that someone else replaced or
// changed it: the inode (a replacement by rename is a new one), the size and the time of
// the last change.
struct Identity {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    bool operator==(const Identity& other) const;
};

// The identity of the file `path` names, symbolic links followed. `exists` false when there
// is no such file; FileError for any other failure (a link loop, a name too long, no
// permission to look).
Identity Identify(const std::string& path);

// True when both paths name one existing file, or, when neither exists yet, when both would
// be made as one file (same folder and name once links are followed). An existing file is
// never the same as a path that names nothing.
bool SameFile(const std::string& a, const std::string& b);

// Throws FileError(SameFile) naming `output` when it is the same file as `input`.
void RefuseSameFile(const std::string& output, const std::string& input);

// The path a write to `path` replaces: symbolic links of the last component followed to the
// file they name (which may not exist yet). FileError for a link loop.
std::string ResolveLinks(const std::string& path);

// The folder that holds `path` ("." for a bare name).
std::string FolderOf(const std::string& path);
std::string BaseNameOf(const std::string& path);

// Opens an existing regular file for reading without blocking on a FIFO or a device, which
// is refused at once. The descriptor is the caller's to close. FileError when it cannot.
int OpenForReading(const std::string& path);

// FileError(NotRegular) when `path` exists and is not a regular file (a folder, FIFO, device
// or socket); nothing when it is a file or does not exist.
void RefuseNonRegular(const std::string& path);

}  // namespace files
