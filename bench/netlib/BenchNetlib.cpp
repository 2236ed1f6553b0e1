// bench_netlib: the speed of the library's transfers against a local FTP server
// (tests/netlib/ftp_server.py, started here).
//  1. CMyFtpConnection::Download of a 50 MB library against the curl command fetching the
//     same file in the same run, both best of 7 taken in turns (wall time). Goal: at most 1.1 times
//     curl.
//  2. CMyFtpConnection::FileExists on that file, against the fetch. Goal: under 2 %.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "netlib/LoginSettings.h"
#include "netlib/MyFtpConnection.h"

namespace {

namespace fs = std::filesystem;
constexpr int kRuns = 7;

double BestOf(int runs, const std::function<void()>& step) {
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        step();
        best = std::min(
            best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

[[noreturn]] void Fail(const std::string& why) {
    std::fprintf(stderr, "bench_netlib: %s\n", why.c_str());
    std::exit(1);
}

// The server's process id; its port in `port`.
pid_t StartServer(const fs::path& home, int& port) {
    int out[2];
    if (::pipe(out) != 0) {
        Fail("pipe");
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(out[1], 1);
        ::close(out[0]);
        ::execl(QV_PYTHON, QV_PYTHON, QV_SOURCE_DIR "/tests/netlib/ftp_server.py", "--home",
                home.c_str(), "--user", "bench", "--password", "bench", nullptr);
        ::_exit(127);
    }
    ::close(out[1]);
    FILE* reader = ::fdopen(out[0], "r");
    char line[64] = "";
    if (!std::fgets(line, sizeof line, reader) || std::sscanf(line, "PORT %d", &port) != 1) {
        Fail("the FTP server did not start (python3-pyftpdlib installed?)");
    }
    std::fclose(reader);
    return pid;
}

}  // namespace

int main() {
    const fs::path dir = fs::temp_directory_path() / ("bench_netlib." + std::to_string(::getpid()));
    fs::create_directories(dir / "home/PLC");
    fs::create_directories(dir / "local/LocalData");
    {
        std::ofstream library(dir / "home/PLC/QvPLC.db", std::ios::binary);
        std::string block(1 << 20, '\0');
        for (size_t i = 0; i < block.size(); ++i) {
            block[i] = static_cast<char>(i * 2654435761u >> 13);
        }
        for (int i = 0; i < 50; ++i) {
            library.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
    }
    int port = 0;
    const pid_t server = StartServer(dir / "home", port);
    ::setenv("ZANDRIX_LOCAL_DIR", (dir / "local").c_str(), 1);
    netlib::LoginSettings settings;
    settings.SetServer("127.0.0.1");
    settings.SetPort(std::to_string(port));
    settings.SetUser("bench");
    settings.SetPassword("bench");
    settings.SetPassive(true);
    std::string error;
    if (!netlib::WriteLoginSettings((dir / "local/LocalData/QvFTPLoginInfo.sys").string(), settings,
                                    &error)) {
        Fail(error);
    }

    const std::string target = (dir / "local/PLC/QvPLC.db").string();
    const std::string curl = "curl -s -S -u bench:bench -o '" + (dir / "curl.db").string() +
                             "' ftp://127.0.0.1:" + std::to_string(port) + "/PLC/QvPLC.db";
    // Taken in turns, so that a change of the machine's load meets both alike.
    double ours = 1e9, baseline = 1e9;
    for (int i = 0; i < kRuns; ++i) {
        ours = std::min(
            ours, BestOf(1, [&] {
                CMyFtpConnection connection;
                if (!connection.Connect() || !connection.Download("PLC/QvPLC.db", target)) {
                    Fail("the fetch failed: " + connection.LastError());
                }
            }));
        baseline = std::min(baseline, BestOf(1, [&] {
                                if (std::system(curl.c_str()) != 0) {
                                    Fail("curl failed");
                                }
                            }));
    }
    if (fs::file_size(target) != fs::file_size(dir / "curl.db")) {
        Fail("the two fetches differ in size");
    }
    CMyFtpConnection connection;
    if (!connection.Connect()) {
        Fail("no connection");
    }
    const double exists = BestOf(5, [&] {
        if (!connection.FileExists("PLC/QvPLC.db")) {
            Fail("FileExists said no");
        }
    });
    connection.Close();
    ::kill(server, SIGTERM);
    ::waitpid(server, nullptr, 0);
    fs::remove_all(dir);

    std::printf(
        "Download of a 50 MB library (connect, fetch, written whole): %.1f ms (best of 7)\n",
        ours * 1e3);
    std::printf("baseline (the curl command, same file):                    %.1f ms\n",
                baseline * 1e3);
    std::printf("ratio Download / curl: %.2f (goal <= 1.10)\n\n", ours / baseline);
    std::printf("FileExists on the same file: %.2f ms\n", exists * 1e3);
    std::printf("ratio FileExists / Download: %.2f %% (goal < 2 %%)\n", 100.0 * exists / ours);
    return 0;
}
