#include "netlib/TimeStamp.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "files/TextFile.h"
#include "host/SuiteServices.h"
#include "netlib/MyFtpConnection.h"
#include "netlib/Paths.h"

namespace netlib {

std::optional<std::string> ReadFirstLine(const std::string& path) {
    auto lines = files::ReadLines(path);
    if (!lines) {
        return std::nullopt;
    }
    return lines->empty() ? std::string() : lines->front();
}

bool IsLibraryOutOfDate() {
    const std::string scratch = LocalPath(kScratchStamp);
    if (suite::GetCurZandrixInstallStyle() == 1) {
        CMyFtpConnection connection;
        if (connection.Connect() && connection.FileExists(kRemoteStamp)) {
            connection.Download(kRemoteStamp, scratch);
        }
    }
    const auto server = ReadFirstLine(scratch);
    std::error_code ec;
    std::filesystem::remove(scratch, ec);
    const auto local = ReadFirstLine(LocalPath(kLocalStamp));
    if (!server || !local) {
        return true;
    }
    return files::UpperAscii(*server) != files::UpperAscii(*local);
}

bool WriteTimeStamp(const std::string& path, std::string* error) {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d ", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(millis));
    files::WriteOptions options;
    options.createFolders = true;
    return files::WriteWhole(path, text + GetLocalHostIp() + "\n", error, options);
}

bool StampIfLibraryChanged(std::string* error) {
    namespace fs = std::filesystem;
    const std::string library = LocalPath(kLocalLibrary);
    const std::string stamp = LocalPath(kLocalStamp);
    std::error_code ec;
    const auto libraryTime = fs::last_write_time(library, ec);
    if (ec) {
        return false;
    }
    const auto stampTime = fs::last_write_time(stamp, ec);
    if (!ec && stampTime >= libraryTime) {
        return false;
    }
    return WriteTimeStamp(stamp, error);
}

}  // namespace netlib
