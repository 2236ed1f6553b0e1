#include "plclib/TimeStamp.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "files/TextFile.h"
#include "host/Host.h"
#include "host/SuiteServices.h"

namespace plcdb {

std::string TimeStampPath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), kTimeStampRelativePath);
}

std::string NewTimeStamp() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(millis));
    return text;
}

bool WriteTimeStamp(const std::string& path, std::string_view author, std::string* error) {
    std::string line = NewTimeStamp();
    if (!author.empty()) {
        line += ' ';
        line += author;
    }
    files::WriteOptions options;
    options.createFolders = true;  // PLC/ is the suite's own folder
    return files::WriteWhole(path, line + "\n", error, options);
}

bool StampLibraryChange(const std::string& path) {
    if (!WriteTimeStamp(path, {}, nullptr)) {
        host::Print("\n无法写入文件" + path + "\n");
        return false;
    }
    return true;
}

}  // namespace plcdb
