#include "netlib/TimeStamp.h"

#include <filesystem>

#include "files/TextFile.h"
#include "host/SuiteServices.h"
#include "netlib/MyFtpConnection.h"
#include "netlib/Paths.h"
#include "plclib/TimeStamp.h"

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
    return plcdb::WriteTimeStamp(path, GetLocalHostIp(), error);
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
