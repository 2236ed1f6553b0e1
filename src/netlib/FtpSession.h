// One session with the library server over libcurl: the control connection is kept open
// between requests and every request names its file from the login folder. Paths given here
// are already joined to the root folder and use '/'.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "netlib/LoginSettings.h"

namespace netlib {

enum class FtpOutcome {
    Ok,
    Absent,  // the server answered that the file or folder is not there
    Failed,  // no answer, a dropped connection, a stalled transfer, a refused command
};

struct FtpResult {
    FtpOutcome outcome = FtpOutcome::Failed;
    long curlCode = 0;
    std::string error;  // libcurl's words, for the command line
    bool loginRefused = false;
    bool couldNotConnect = false;
};

// Bytes arriving from the server; false stops the transfer.
using FtpSink = std::function<bool(std::string_view bytes)>;

class FtpSession {
public:
    // Time-outs: 6 s to connect and for each answer of the server, and a transfer that moves
    // no byte for 6 s fails.
    static constexpr long kTimeoutSeconds = 6;

    explicit FtpSession(const LoginSettings& settings);
    ~FtpSession();
    FtpSession(const FtpSession&) = delete;
    FtpSession& operator=(const FtpSession&) = delete;

    // Logs in and enters `folder` (empty: stays in the login folder).
    FtpResult EnterFolder(std::string_view folder);
    FtpResult Fetch(std::string_view path, const FtpSink& sink);
    // Asks for the file's size: the server's answer without moving the file.
    FtpResult Size(std::string_view path);
    // Sends `file` (open for reading, at its start) as `path`, making missing folders.
    FtpResult Send(std::FILE* file, std::string_view path);
    // Raw commands in order (a command starting with '*' may fail without failing the
    // rest). They run in whatever folder the last request left, so their paths are made
    // absolute with FromLoginFolder.
    FtpResult Commands(const std::vector<std::string>& commands);
    // `path` (relative to the folder the login started in) as an absolute server path.
    std::string FromLoginFolder(std::string_view path) const;

private:
    std::string Url(std::string_view path, bool folder) const;
    void Prepare(const std::string& url);
    FtpResult Perform();

    void* curl_ = nullptr;
    std::string base_;
    std::string entryPath_;  // the server's folder right after the login
};

// The path's segments escaped for a URL, joined by '/'; empty segments dropped.
std::string EscapePath(std::string_view path);

}  // namespace netlib
