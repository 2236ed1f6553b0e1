#include "host/SuiteServices.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#ifndef QV_COMMON_RES_DIR
#define QV_COMMON_RES_DIR "/usr/share/zandrix"
#endif

namespace suite {
namespace {

std::string EnvOr(const char* name, std::string fallback) {
    const char* value = std::getenv(name);
    return (value && *value) ? std::string(value) : std::move(fallback);
}

std::string WithTrailingSlash(std::string path) {
    if (path.empty() || path.back() != '/') {
        path += '/';
    }
    return path;
}

std::string DefaultLocalFolder() {
    const char* xdg = std::getenv("XDG_DATA_HOME");
    if (xdg && *xdg) {
        return PathJoin(xdg, "zandrix");
    }
    return PathJoin(EnvOr("HOME", "/tmp"), ".local/share/zandrix");
}

}  // namespace

int GetCurZandrixInstallStyle() {
    const std::string text = EnvOr("ZANDRIX_INSTALL_STYLE", "0");
    if (text == "1") {
        return 1;
    }
    if (text == "2") {
        return 2;
    }
    return 0;
}

std::string GetZandrixLocalInstallPath() {
    return WithTrailingSlash(EnvOr("ZANDRIX_LOCAL_DIR", DefaultLocalFolder()));
}

std::string GetZandrixCommonResInstallPath() {
    if (const char* value = std::getenv("ZANDRIX_COMMON_DIR"); value && *value) {
        return WithTrailingSlash(value);
    }
    const std::string share = ProgramShareDir();
    const std::string beside = PathJoin(share, "zandrix");
    std::error_code ec;
    if (!share.empty() && std::filesystem::is_directory(beside, ec)) {
        return WithTrailingSlash(beside);
    }
    return WithTrailingSlash(QV_COMMON_RES_DIR);
}

std::string ProgramShareDir() {
    std::error_code ec;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec || program.empty()) {
        return {};
    }
    return (program.parent_path().parent_path() / "share").string();
}

std::string PathJoin(std::string_view first, std::string_view second) {
    if (first.empty()) {
        return std::string(second);
    }
    if (second.empty()) {
        return std::string(first);
    }
    const bool firstHas = first.back() == '/';
    const bool secondHas = second.front() == '/';
    std::string joined(first);
    if (firstHas && secondHas) {
        joined.pop_back();
    } else if (!firstHas && !secondHas) {
        joined += '/';
    }
    joined += second;
    return joined;
}

std::string NativePath(std::string_view path) {
    std::string native(path);
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

}  // namespace suite
