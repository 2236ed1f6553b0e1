// CMyFtpConnection: the workstation's connection to the server that holds the team's
// component library. Remote paths are relative to the library root folder named in the login
// settings and use '/' (a '\' is taken as '/'); local paths are absolute.
//
// Every transfer follows one retry rule: with no open connection, or when the transfer fails,
// everything is closed, Connect runs once more, and the transfer is tried a second and last
// time. A server's plain "no such file" is an answer, not a failure, and is not retried.
#pragma once

#include <memory>
#include <string>

namespace netlib {
class FtpSession;
struct FtpResult;
}  // namespace netlib

// What CheckInLibrary did, for the caller that wants to say so.
struct CheckInReport {
    bool connected = false;
    bool revoked = false;        // the lock was no longer this host's: nothing was sent
    std::string revokedMessage;  // the text composed when the lock was found revoked
    bool libraryOutOfDate = false;
    bool sent = false;  // the library and its stamp went to the server
    bool sendFailed = false;
    bool lockReleased = false;
};

class CMyFtpConnection {
public:
    // The folders come from the suite's installation services.
    CMyFtpConnection();
    virtual ~CMyFtpConnection();
    CMyFtpConnection(const CMyFtpConnection&) = delete;
    CMyFtpConnection& operator=(const CMyFtpConnection&) = delete;

    bool Connect();
    void Close();
    bool IsConnected() const { return session_ != nullptr; }

    bool Download(std::string remote, std::string local);
    bool Upload(std::string local, std::string remote);
    bool FileExists(const std::string& remote);
    bool DownloadWithEditLock(const std::string& local, const std::string& remoteFolder,
                              const std::string& fileName);
    bool IsEditLockRevoked(const std::string& remote);
    bool RemoveRemoteFile(const std::string& remote);
    CheckInReport CheckInLibrary();

    // The first line of a remote file, fetched through the scratch file `scratch` (removed
    // again); empty when it cannot be fetched.
    std::string ReadRemoteFirstLine(const std::string& remote, const std::string& scratch);
    // Writes this host's identity as the only line of `scratch` and sends it as `remote`.
    bool SendIdentity(const std::string& scratch, const std::string& remote);

    // Why the last Connect or transfer failed, in libcurl's words (empty when it did not).
    const std::string& LastError() const { return lastError_; }
    // The text IsEditLockRevoked composed the last time it answered true.
    const std::string& RevokedMessage() const { return revokedMessage_; }
    // Whether the last DownloadWithEditLock ended because the user declined to force a lock.
    bool Declined() const { return declined_; }
    const std::string& LocalFolder() const { return localFolder_; }

private:
    enum class Step { Ok, Absent, Failed, LocalError };
    template <typename Transfer>
    Step WithRetry(Transfer transfer);
    Step Record(const netlib::FtpResult& result);
    bool ConnectOnce();
    bool DownloadTo(const std::string& remote, const std::string& local, bool sync);
    bool SendFile(const std::string& local, const std::string& remote);
    std::string Remote(const std::string& path) const;

    std::string root_;
    std::string loginFile_;
    std::string localFolder_;
    std::unique_ptr<netlib::FtpSession> session_;
    bool safeUpload_ = false;
    // The safe upload's working names.
    std::string uploadFolder_;
    std::string uploadFinalName_;
    std::string uploadTempName_;

    std::string lastError_;
    std::string revokedMessage_;
    bool declined_ = false;
};

namespace netlib {
// "%s(%s)": this machine's first IPv4 address and its host name. ZANDRIX_HOST_NAME, when set,
// stands for the host name (and the address is looked up from it); an address that cannot
// be found leaves the first part empty.
std::string GetLocalHostIp();
// The two identities name the same host (letter case aside).
bool SameHost(const std::string& a, const std::string& b);
// A remote name holding a line break would smuggle commands to the server.
bool IsSafeRemoteName(const std::string& name);
}  // namespace netlib

using netlib::GetLocalHostIp;
