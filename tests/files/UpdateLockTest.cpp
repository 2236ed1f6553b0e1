// The update lock between real processes: it waits, it gives up with Locked, and it keeps
// read-modify-writes apart even though every write replaces the file by a rename.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "TestPaths.h"
#include "files/AtomicFile.h"
#include "files/TextFile.h"
#include "files/UpdateLock.h"

using namespace testing_support;
using namespace std::chrono_literals;

namespace {

// Adds one to the number the file holds, under the lock, as a draw adds a module.
void Increment(const std::string& path) {
    const files::UpdateLock lock(path);
    files::WriteOptions options;
    options.expected = files::Identify(path);
    std::string text;
    files::ReadWhole(path, text);
    const int value = text.empty() ? 0 : std::stoi(text);
    std::this_thread::sleep_for(1ms);  // widen the window a lost update needs
    files::WriteFile(path, std::to_string(value + 1), options);
}

}  // namespace

TEST(UpdateLock, ConcurrentReadModifyWritesLoseNothing) {
    TempDir dir;
    const std::string path = (dir / "count.txt").string();  // created by the first update
    constexpr int kProcesses = 4, kRounds = 25;
    pid_t children[kProcesses];
    for (pid_t& child : children) {
        child = ::fork();
        if (child == 0) {
            try {
                for (int i = 0; i < kRounds; ++i) {
                    Increment(path);
                }
            } catch (...) {
                ::_exit(1);
            }
            ::_exit(0);
        }
    }
    for (pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    EXPECT_EQ(ReadFile(path), std::to_string(kProcesses * kRounds));
}

TEST(UpdateLock, WaitsForTheHolderAndGivesUpAfterItsTime) {
    TempDir dir;
    const std::string path = (dir / "d.dxf").string();
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const files::UpdateLock lock(path);
        ::write(ready[1], "x", 1);
        std::this_thread::sleep_for(600ms);
        ::_exit(0);
    }
    char c;
    ASSERT_EQ(::read(ready[0], &c, 1), 1);
    try {
        const files::UpdateLock lock(path, 50ms);
        ADD_FAILURE() << "the lock was taken twice";
    } catch (const files::FileError& e) {
        EXPECT_EQ(e.Kind(), files::ErrorKind::Locked);
        EXPECT_NE(std::string(e.what()).find("another process"), std::string::npos);
    }
    const auto start = std::chrono::steady_clock::now();
    { const files::UpdateLock lock(path, 10s); }
    EXPECT_GT(std::chrono::steady_clock::now() - start, 100ms) << "it did not wait";
    ::waitpid(child, nullptr, 0);

    EXPECT_THROW(files::UpdateLock((dir / "missing/d.dxf").string()), files::FileError);
}
