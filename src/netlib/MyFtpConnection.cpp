#include "netlib/MyFtpConnection.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include "files/AtomicFile.h"
#include "files/TextFile.h"
#include "host/Host.h"
#include "host/SuiteServices.h"
#include "netlib/FtpSession.h"
#include "netlib/LoginSettings.h"
#include "netlib/NetMessages.h"
#include "netlib/Paths.h"
#include "netlib/TimeStamp.h"

using netlib::FtpOutcome;
using netlib::FtpResult;
using netlib::FtpSession;
using netlib::kCaption;

namespace {

// A server that refuses the connection is tried this many times more, this far apart.
constexpr int kConnectRetries = 5;
constexpr auto kConnectBackOff = std::chrono::milliseconds(500);

std::string Trim(std::string text) {
    const char* blanks = " \t";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos) {
        return {};
    }
    const size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

// '\' as '/', no leading or trailing '/'.
std::string NormalRemote(std::string path) {
    for (char& c : path) {
        if (c == '\\') {
            c = '/';
        }
    }
    while (!path.empty() && path.front() == '/') {
        path.erase(0, 1);
    }
    while (!path.empty() && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

std::string FolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

bool RefuseUnsafe(const std::string& name) {
    if (netlib::IsSafeRemoteName(name)) {
        return false;
    }
    host::Print("the remote name holds a line break and is refused: " + name + "\n");
    return true;
}

}  // namespace

CMyFtpConnection::CMyFtpConnection()
    : loginFile_(netlib::LocalPath(netlib::kLoginSettingsRelativePath)),
      localFolder_(suite::GetZandrixLocalInstallPath()) {}

CMyFtpConnection::~CMyFtpConnection() {
    Close();
}

void CMyFtpConnection::Close() {
    session_.reset();
}

bool CMyFtpConnection::Connect() {
    Close();
    lastError_.clear();
    std::string error;
    auto settings = netlib::ReadLoginSettings(loginFile_, &error);
    if (!settings) {
        lastError_ = error;
        return false;
    }
    if (settings->Anonymous()) {
        settings->SetUser("");
        settings->SetPassword("");
    }
    const std::string givenRoot = Trim(settings->Root());
    root_ = NormalRemote(givenRoot);
    const std::string* values[] = {&root_, &settings->Server(), &settings->User(),
                                   &settings->Password(), &settings->Port()};
    for (const std::string* value : values) {
        if (RefuseUnsafe(*value)) {
            lastError_ = "a login setting holds a line break";
            return false;
        }
    }
    std::error_code ec;
    safeUpload_ = std::filesystem::exists(
        std::filesystem::path(loginFile_).parent_path() / netlib::kSafeUploadFlag, ec);

    FtpResult result;
    for (int attempt = 0; attempt <= kConnectRetries; ++attempt) {
        auto session = std::make_unique<FtpSession>(*settings);
        result = session->EnterFolder(root_);
        if (result.outcome == FtpOutcome::Ok) {
            session_ = std::move(session);
            return true;
        }
        if (!result.couldNotConnect || attempt == kConnectRetries) {
            break;
        }
        std::this_thread::sleep_for(kConnectBackOff);
    }
    lastError_ = result.error;
    if (result.outcome == FtpOutcome::Absent && !root_.empty()) {
        host::ShowMessage(netlib::FillFormat(netlib::kRootFolderFailedFormat, {givenRoot}),
                          kCaption, host::MsgIcon::Error);
    }
    return false;
}

std::string CMyFtpConnection::Remote(const std::string& path) const {
    const std::string relative = NormalRemote(path);
    if (root_.empty()) {
        return relative;
    }
    return relative.empty() ? root_ : root_ + "/" + relative;
}

CMyFtpConnection::Step CMyFtpConnection::Record(const FtpResult& result) {
    lastError_ = result.error;
    switch (result.outcome) {
        case FtpOutcome::Ok:
            return Step::Ok;
        case FtpOutcome::Absent:
            return Step::Absent;
        case FtpOutcome::Failed:
            break;
    }
    return Step::Failed;
}

template <typename Transfer>
CMyFtpConnection::Step CMyFtpConnection::WithRetry(Transfer transfer) {
    if (session_) {
        const Step first = transfer();
        if (first != Step::Failed) {
            return first;
        }
    }
    const std::string firstError = lastError_;
    Close();
    if (!Connect()) {
        if (lastError_.empty()) {
            lastError_ = firstError;
        }
        return Step::Failed;
    }
    return transfer();
}

bool CMyFtpConnection::DownloadTo(const std::string& remote, const std::string& local, bool sync) {
    if (RefuseUnsafe(remote)) {
        return false;
    }
    const Step step = WithRetry([&] {
        files::WriteOptions options;
        options.sync = sync;
        options.createFolders = true;
        std::unique_ptr<files::AtomicFile> file;
        try {
            file = std::make_unique<files::AtomicFile>(local, options);
        } catch (const files::FileError& e) {
            lastError_ = e.what();
            host::Print(lastError_ + "\n");
            return Step::LocalError;
        }
        std::string writeError;
        const netlib::FtpSink sink = [&](std::string_view bytes) {
            try {
                file->Write(bytes);
                return true;
            } catch (const std::exception& e) {
                writeError = e.what();
                return false;
            }
        };
        const Step fetched = Record(session_->Fetch(Remote(remote), sink));
        if (!writeError.empty()) {
            lastError_ = writeError;
            host::Print(lastError_ + "\n");
            return Step::LocalError;
        }
        if (fetched == Step::Ok) {
            try {
                file->Commit();
            } catch (const files::FileError& e) {
                lastError_ = e.what();
                host::Print(lastError_ + "\n");
                return Step::LocalError;
            }
        }
        return fetched;
    });
    return step == Step::Ok;
}

bool CMyFtpConnection::Download(std::string remote, std::string local) {
    return DownloadTo(Trim(std::move(remote)), Trim(std::move(local)), true);
}

bool CMyFtpConnection::SendFile(const std::string& local, const std::string& remote) {
    const Step step = WithRetry([&] {
        std::FILE* file = std::fopen(local.c_str(), "rb");
        if (file == nullptr) {
            lastError_ = local + ": cannot be read";
            return Step::LocalError;
        }
        const Step sent = Record(session_->Send(file, Remote(remote)));
        std::fclose(file);
        return sent;
    });
    return step == Step::Ok;
}

bool CMyFtpConnection::Upload(std::string local, std::string remote) {
    local = Trim(std::move(local));
    remote = Trim(std::move(remote));
    if (RefuseUnsafe(remote)) {
        return false;
    }
    bool done = false;
    if (safeUpload_) {
        // Sent under a temporary name and renamed when complete, so that a client fetching
        // meanwhile gets the old library whole, never half of the new one.
        uploadFinalName_ = NormalRemote(remote);
        uploadFolder_ = FolderOf(uploadFinalName_);
        uploadTempName_ = uploadFolder_.empty() ? "#.txt" : uploadFolder_ + "/#.txt";
        done = SendFile(local, uploadTempName_);
        if (done) {
            const std::string finalPath = session_->FromLoginFolder(Remote(uploadFinalName_));
            const std::string tempPath = session_->FromLoginFolder(Remote(uploadTempName_));
            done = Record(session_->Commands({"*DELE " + finalPath, "RNFR " + tempPath,
                                              "RNTO " + finalPath})) == Step::Ok;
        }
    } else {
        done = SendFile(local, remote);
    }
    if (!done) {
        host::ShowMessage(netlib::FillFormat(netlib::kUploadFailedFormat, {remote}), kCaption,
                          host::MsgIcon::Exclamation);
    }
    return done;
}

bool CMyFtpConnection::FileExists(const std::string& remote) {
    if (RefuseUnsafe(remote)) {
        return false;
    }
    if (!session_ && !Connect()) {
        return false;
    }
    return WithRetry([&] { return Record(session_->Size(Remote(remote))); }) == Step::Ok;
}

bool CMyFtpConnection::RemoveRemoteFile(const std::string& remote) {
    if (!FileExists(remote)) {
        return IsConnected();  // a server that does not answer has not said "no such file"
    }
    const Step step = WithRetry([&] {
        return Record(session_->Commands({"DELE " + session_->FromLoginFolder(Remote(remote))}));
    });
    if (step != Step::Ok) {
        host::ShowMessage(netlib::FillFormat(netlib::kRemoveFailedFormat, {remote}), kCaption,
                          host::MsgIcon::Exclamation);
        return false;
    }
    return true;
}

std::string CMyFtpConnection::ReadRemoteFirstLine(const std::string& remote,
                                                  const std::string& scratch) {
    std::string line;
    if (DownloadTo(remote, scratch, false)) {
        if (auto lines = files::ReadLines(scratch); lines && !lines->empty()) {
            line = lines->front();
        }
    }
    std::error_code ec;
    std::filesystem::remove(scratch, ec);
    return line;
}

bool CMyFtpConnection::SendIdentity(const std::string& scratch, const std::string& remote) {
    files::WriteOptions options;
    options.sync = false;
    options.createFolders = true;
    std::string error;
    if (!files::WriteWhole(scratch, GetLocalHostIp() + "\n", &error, options)) {
        lastError_ = error;
        host::Print(error + "\n");
        return false;
    }
    const bool sent = Upload(scratch, remote);
    std::error_code ec;
    std::filesystem::remove(scratch, ec);
    return sent;
}

bool CMyFtpConnection::DownloadWithEditLock(const std::string& local,
                                            const std::string& remoteFolder,
                                            const std::string& fileName) {
    declined_ = false;
    const std::string remote = NormalRemote(remoteFolder) + "/" + fileName;
    if (!FileExists(remote)) {
        if (!IsConnected()) {
            return false;  // no answer from the server is no "the file is not there"
        }
        host::ShowMessage(netlib::FillFormat(netlib::kServerHasNoFileFormat, {fileName}), kCaption,
                          host::MsgIcon::Information);
        return true;
    }
    const std::string lock = remote + ".bak";
    const std::string scratch = suite::PathJoin(localFolder_, netlib::kScratchIdentity);
    if (FileExists(lock)) {
        const std::string holder = ReadRemoteFirstLine(lock, scratch);
        if (netlib::SameHost(holder, GetLocalHostIp())) {
            if (!Download(remote, local)) {
                return false;
            }
            RemoveRemoteFile(fileName + ".bak");
            return true;
        }
        const auto answer = host::ShowMessage(
            netlib::FillFormat(netlib::kFileLockedByHostFormat, {holder, fileName}), kCaption,
            host::MsgIcon::Information, host::MsgButtons::YesNo);
        if (answer != host::MsgResult::Yes) {
            declined_ = true;
            return false;
        }
    }
    if (!Download(remote, local)) {
        return false;
    }
    return SendIdentity(scratch, lock);
}

bool CMyFtpConnection::IsEditLockRevoked(const std::string& remote) {
    const std::string lock = NormalRemote(remote) + ".bak";
    if (!FileExists(lock)) {
        revokedMessage_ = netlib::FillFormat(netlib::kRevokedMessageFormat, {remote});
        return true;
    }
    const std::string scratch = suite::PathJoin(suite::PathJoin(localFolder_, "TempFTP"), lock);
    const std::string holder = ReadRemoteFirstLine(lock, scratch);
    if (netlib::SameHost(holder, GetLocalHostIp())) {
        return false;
    }
    revokedMessage_ = netlib::FillFormat(netlib::kRevokedByHostFormat, {remote, holder});
    return true;
}

CheckInReport CMyFtpConnection::CheckInLibrary() {
    CheckInReport report;
    if (suite::GetCurZandrixInstallStyle() != 1 || !Connect()) {
        return report;
    }
    report.connected = true;
    if (IsEditLockRevoked(netlib::kRemoteLibrary)) {
        // The lock now belongs to another host: neither overwritten nor removed, and the
        // local changes stay here.
        report.revoked = true;
        report.revokedMessage = revokedMessage_;
        Close();
        return report;
    }
    std::error_code ec;
    const std::string stamp = netlib::LocalPath(netlib::kLocalStamp);
    if (std::filesystem::exists(stamp, ec) && netlib::IsLibraryOutOfDate()) {
        report.libraryOutOfDate = true;
        report.sent = Upload(netlib::LocalPath(netlib::kLocalLibrary), netlib::kRemoteLibrary) &&
                      Upload(stamp, netlib::kRemoteStamp);
        report.sendFailed = !report.sent;
    }
    report.lockReleased = RemoveRemoteFile(netlib::kRemoteLibraryLock);
    Close();
    return report;
}
