#include "TestPaths.h"

#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace testing_support {

std::filesystem::path SourceDir() {
    return QV_SOURCE_DIR;
}
std::filesystem::path BinaryDir() {
    return QV_BINARY_DIR;
}
std::filesystem::path CommonResDir() {
    return QV_TEST_COMMON_RES_DIR;
}

std::filesystem::path SharedFixturesDir() {
    const auto dir = SourceDir().parent_path() / "shared" / "fixtures";
    return std::filesystem::is_directory(dir) ? dir : std::filesystem::path();
}

std::string Python() {
    return QV_TEST_PYTHON;
}

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qvtest.XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        std::abort();
    }
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(path_, ec);
}

ScopedEnv::ScopedEnv(const char* name, const std::string& value) : name_(name) {
    if (const char* old = std::getenv(name)) {
        had_ = true;
        old_ = old;
    }
    setenv(name, value.c_str(), 1);
}

ScopedEnv::~ScopedEnv() {
    if (had_) {
        setenv(name_.c_str(), old_.c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

int RunCommand(const std::string& command, std::string* output) {
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) {
        return -1;
    }
    std::string text;
    std::array<char, 4096> buffer{};
    size_t n;
    while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
        text.append(buffer.data(), n);
    }
    const int status = pclose(pipe);
    if (output) {
        *output = text;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

ProgramOutcome RunCaptured(const std::string& command, const std::filesystem::path& scratch) {
    const auto out = scratch / "run.stdout", err = scratch / "run.stderr";
    const int status =
        std::system((command + " >'" + out.string() + "' 2>'" + err.string() + "'").c_str());
    ProgramOutcome run;
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = ReadFile(out);
    run.err = ReadFile(err);
    return run;
}

ProgramOutcome RunQvplc(const std::filesystem::path& localDir, const std::string& args,
                        const std::filesystem::path& scratch) {
    return RunCaptured(
        "env -u LC_ALL -u LC_MESSAGES LANG=C.UTF-8 ZANDRIX_INSTALL_STYLE=0 "
        "ZANDRIX_LOCAL_DIR='" +
            localDir.string() + "' ZANDRIX_COMMON_DIR='" + CommonResDir().string() + "' '" +
            (BinaryDir() / "bin/qvplc").string() + "' " + args,
        scratch);
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
}

}  // namespace testing_support
