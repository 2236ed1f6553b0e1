// A real FTP server for the network tests: tests/netlib/ftp_server.py on 127.0.0.1 and a free
// port, its home folder, the log of every command it received and the hooks that make it drop
// a connection or stall; and a workstation (its local folder, host name and login settings).
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "RecordingHost.h"
#include "TestPaths.h"
#include "netlib/LoginSettings.h"
#include "netlib/Paths.h"

namespace net_test {

struct ServerOptions {
    std::string user = "team";
    std::string password = "s3cret";
    bool anonymous = false;
};

class FtpTestServer {
public:
    explicit FtpTestServer(ServerOptions options = {});
    ~FtpTestServer();
    FtpTestServer(const FtpTestServer&) = delete;
    FtpTestServer& operator=(const FtpTestServer&) = delete;

    int Port() const { return port_; }
    const std::filesystem::path& Home() const { return home_; }
    // The commands received so far, "VERB argument" each.
    std::vector<std::string> Log() const;
    void ClearLog() const;
    // The hooks of ftp_server.py as JSON ("{}" clears them).
    void SetHooks(const std::string& json) const;
    std::string HooksNow() const;
    void Put(const std::string& relative, const std::string& content) const;
    std::string Get(const std::string& relative) const;
    bool Has(const std::string& relative) const;

private:
    testing_support::TempDir dir_;
    std::filesystem::path home_;
    pid_t pid_ = -1;
    int port_ = 0;
};

// One workstation: its own local and common folders, host name and login settings, and the
// recording host the library reports through. Sets the suite's environment while it lives.
class Workstation {
public:
    Workstation(const FtpTestServer& server, const std::string& hostName,
                const std::string& root = "lib");
    ~Workstation();
    Workstation(const Workstation&) = delete;
    Workstation& operator=(const Workstation&) = delete;
    netlib::LoginSettings settings;
    void SaveSettings() const;
    std::filesystem::path Local(const std::string& relative) const {
        return dir_ / "local" / relative;
    }
    // Activates this workstation's environment (folders, host name, style 1).
    void Enter();
    testing_support::RecordingHost host;
    std::string Identity() const;

private:
    testing_support::TempDir dir_;
    std::string hostName_;
    std::vector<std::unique_ptr<testing_support::ScopedEnv>> env_;
};

bool Contains(const std::vector<std::string>& lines, const std::string& line);
// Index of the first line starting with `prefix`, or -1.
int IndexOf(const std::vector<std::string>& lines, const std::string& prefix);

}  // namespace net_test
