// The suite's installation service: how this workstation is installed and where the
// suite's folders are. Environment variables override the defaults:
//   ZANDRIX_INSTALL_STYLE  0 single workstation (default), 1 network client with editing
//                          rights, 2 ordinary network client
//   ZANDRIX_LOCAL_DIR      local installation folder (default: $XDG_DATA_HOME/zandrix, or
//                          ~/.local/share/zandrix)
//   ZANDRIX_COMMON_DIR     common resource folder (default: share/zandrix beside the
//                          program's bin/ folder when it is there, as after an install
//                          and in the build tree; else the folder the build names)
#pragma once

#include <string>
#include <string_view>

namespace suite {

int GetCurZandrixInstallStyle();
// Both folders end with exactly one '/'.
std::string GetZandrixLocalInstallPath();
std::string GetZandrixCommonResInstallPath();

// The share/ folder beside the folder of the running program (without a trailing '/').
std::string ProgramShareDir();

// Joins two path parts with exactly one '/' at the seam: one is added when neither part has
// it, one is dropped when both have it. An empty part leaves the other as it is.
std::string PathJoin(std::string_view first, std::string_view second);

// A path named by the system with backslashes ("PLC\\QvPLC.db") in this platform's form.
std::string NativePath(std::string_view path);

}  // namespace suite
