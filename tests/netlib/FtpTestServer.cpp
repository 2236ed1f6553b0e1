#include "FtpTestServer.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "files/TextFile.h"
#include "netlib/MyFtpConnection.h"

namespace net_test {

FtpTestServer::FtpTestServer(ServerOptions options) : home_(dir_.Path() / "home") {
    std::filesystem::create_directories(home_);
    SetHooks("{}");
    int out[2];
    if (::pipe(out) != 0) {
        throw std::runtime_error("pipe");
    }
    const std::string script =
        (testing_support::SourceDir() / "tests/netlib/ftp_server.py").string();
    std::vector<std::string> args = {testing_support::Python(),
                                     script,
                                     "--home",
                                     home_.string(),
                                     "--log",
                                     (dir_.Path() / "commands.log").string(),
                                     "--hooks",
                                     (dir_.Path() / "hooks.json").string()};
    if (!options.user.empty()) {
        args.insert(args.end(), {"--user", options.user, "--password", options.password});
    }
    if (options.anonymous) {
        args.push_back("--anonymous");
    }
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(out[1], 1);
        ::close(out[0]);
        ::close(out[1]);
        std::vector<char*> argv;
        for (auto& arg : args) {
            argv.push_back(arg.data());
        }
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(out[1]);
    FILE* reader = ::fdopen(out[0], "r");
    char line[64] = "";
    if (!std::fgets(line, sizeof line, reader) || std::sscanf(line, "PORT %d", &port_) != 1) {
        std::fclose(reader);
        throw std::runtime_error("the test FTP server did not start");
    }
    std::fclose(reader);
}

FtpTestServer::~FtpTestServer() {
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
}

std::vector<std::string> FtpTestServer::Log() const {
    auto lines = files::ReadLines((dir_.Path() / "commands.log").string());
    return lines ? *lines : std::vector<std::string>{};
}

void FtpTestServer::ClearLog() const {
    std::filesystem::remove(dir_.Path() / "commands.log");
}

void FtpTestServer::SetHooks(const std::string& json) const {
    testing_support::WriteFile(dir_.Path() / "hooks.json", json);
}

std::string FtpTestServer::HooksNow() const {
    return testing_support::ReadFile(dir_.Path() / "hooks.json");
}

void FtpTestServer::Put(const std::string& relative, const std::string& content) const {
    std::filesystem::create_directories((home_ / relative).parent_path());
    testing_support::WriteFile(home_ / relative, content);
}

std::string FtpTestServer::Get(const std::string& relative) const {
    return testing_support::ReadFile(home_ / relative);
}

bool FtpTestServer::Has(const std::string& relative) const {
    return std::filesystem::exists(home_ / relative);
}

Workstation::Workstation(const FtpTestServer& server, const std::string& hostName,
                         const std::string& root)
    : hostName_(hostName) {
    std::filesystem::create_directories(dir_.Path() / "local" / "LocalData");
    std::filesystem::create_directories(dir_.Path() / "common");
    settings.SetRoot(root);
    settings.SetServer("127.0.0.1");
    settings.SetPort(std::to_string(server.Port()));
    settings.SetAnonymous(false);
    settings.SetUser("team");
    settings.SetPassword("s3cret");
    settings.SetPassive(true);
    Enter();
    SaveSettings();
}

void Workstation::Enter() {
    env_.clear();
    env_.push_back(std::make_unique<testing_support::ScopedEnv>("ZANDRIX_LOCAL_DIR",
                                                                (dir_.Path() / "local").string()));
    env_.push_back(std::make_unique<testing_support::ScopedEnv>("ZANDRIX_COMMON_DIR",
                                                                (dir_.Path() / "common").string()));
    env_.push_back(std::make_unique<testing_support::ScopedEnv>("ZANDRIX_HOST_NAME", hostName_));
    env_.push_back(std::make_unique<testing_support::ScopedEnv>("ZANDRIX_INSTALL_STYLE", "1"));
    host::Install(&host);
}

Workstation::~Workstation() {
    if (&host::Current() == &host) {
        host::Install(nullptr);
    }
}

void Workstation::SaveSettings() const {
    std::string error;
    if (!netlib::WriteLoginSettings(Local(netlib::kLoginSettingsRelativePath).string(), settings,
                                    &error)) {
        throw std::runtime_error(error);
    }
}

std::string Workstation::Identity() const {
    return netlib::GetLocalHostIp();
}

bool Contains(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

int IndexOf(const std::vector<std::string>& lines, const std::string& prefix) {
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].rfind(prefix, 0) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

}  // namespace net_test
