// Where tests find the source tree, the build tree, the fixtures shared beside the project
// and the Debian Python that runs the independent DXF checks; and scratch folders.
#pragma once

#include <filesystem>
#include <string>

namespace testing_support {

std::filesystem::path SourceDir();
std::filesystem::path BinaryDir();
// The built common resource folder (symbols, preview drawings).
std::filesystem::path CommonResDir();
// ../shared/fixtures beside the project root; empty when absent.
std::filesystem::path SharedFixturesDir();
// The Python interpreter with Debian's python3-ezdxf.
std::string Python();

// A fresh empty folder, removed when the object goes.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// Sets an environment variable for the lifetime of the guard.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::string& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    bool had_ = false;
    std::string old_;
};

// Runs a shell command; returns its exit status and fills `output` with stdout+stderr.
int RunCommand(const std::string& command, std::string* output = nullptr);

// What a program run left: its exit status and its standard output and error apart.
struct ProgramOutcome {
    int code = -1;
    std::string out, err;
};
// Runs a shell command with its standard output and error caught in files of `scratch`.
ProgramOutcome RunCaptured(const std::string& command, const std::filesystem::path& scratch);
// Runs the built qvplc as a single workstation with the local folder `localDir`, the build's
// common resources and an English locale.
ProgramOutcome RunQvplc(const std::filesystem::path& localDir, const std::string& args,
                        const std::filesystem::path& scratch);

std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& content);

}  // namespace testing_support
