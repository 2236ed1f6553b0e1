// The network library's files: where the library, its stamp and its lock stand, on the
// server (relative to the library root) and in the local installation folder.
#pragma once

#include <string>

namespace netlib {

inline constexpr const char* kRemoteLibrary = "PLC/QvPLC.db";
inline constexpr const char* kRemoteLibraryFolder = "PLC/";
inline constexpr const char* kLibraryFileName = "QvPLC.db";
inline constexpr const char* kRemoteLibraryLock = "PLC/QvPLC.db.bak";
inline constexpr const char* kRemoteStamp = "PLC/QvPLC.tim";

inline constexpr const char* kLocalLibrary = "PLC/QvPLC.db";
inline constexpr const char* kLocalStamp = "PLC/QvPLC.tim";
inline constexpr const char* kLocalLock = "PLC/QvPLC.db.bak";
inline constexpr const char* kScratchStamp = "TempFTP/QvPLC.tim";
inline constexpr const char* kScratchIdentity = "TempFTP/LocalIP.txt";
// Beside the login settings: its presence makes every upload go under a temporary name.
inline constexpr const char* kSafeUploadFlag = "Ftp.bg";

// The suite's local installation folder joined with `relative`.
std::string LocalPath(const std::string& relative);
// The common resource folder joined with `relative`.
std::string CommonPath(const std::string& relative);

}  // namespace netlib
