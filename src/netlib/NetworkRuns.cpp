#include "netlib/NetworkRuns.h"

#include <sqlite3.h>

#include <filesystem>

#include "files/AtomicFile.h"
#include "files/TextFile.h"
#include "host/Host.h"
#include "host/SuiteServices.h"
#include "netlib/MyFtpConnection.h"
#include "netlib/NetMessages.h"
#include "netlib/Paths.h"
#include "netlib/TimeStamp.h"

namespace netlib {
namespace {

class WaitCursor {
public:
    WaitCursor() { host::Current().SetWaitCursor(true); }
    ~WaitCursor() { host::Current().SetWaitCursor(false); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

bool Exists(const std::string& path) {
    std::error_code ec;
    return std::filesystem::exists(path, ec);
}

// A missing local library makes its stamp go too, so that the copy counts as out of date.
bool ForgetStampOfMissingLibrary() {
    if (Exists(LocalPath(kLocalLibrary))) {
        return false;
    }
    std::error_code ec;
    std::filesystem::remove(LocalPath(kLocalStamp), ec);
    return true;
}

ServerSteps FetchWithLock(CMyFtpConnection& connection) {
    WaitCursor wait;
    if (!connection.DownloadWithEditLock(LocalPath(kLocalLibrary), kRemoteLibraryFolder,
                                         kLibraryFileName)) {
        return connection.Declined() ? ServerSteps::Declined : ServerSteps::Failed;
    }
    if (connection.FileExists(kRemoteStamp)) {
        connection.Download(kRemoteStamp, LocalPath(kLocalStamp));
    }
    return ServerSteps::GoOn;
}

// The lock taken by hand, when the local copy is current or open on this machine.
ServerSteps TakeLockByHand(CMyFtpConnection& connection) {
    const std::string me = GetLocalHostIp();
    if (connection.FileExists(kRemoteLibraryLock)) {
        // Fetched into the common resource folder, where it stays.
        const std::string copy = CommonPath(kLocalLock);
        std::string holder;
        if (connection.Download(kRemoteLibraryLock, copy)) {
            holder = ReadFirstLine(copy).value_or("");
        }
        if (!SameHost(holder, me)) {
            const auto answer =
                host::ShowMessage(FillFormat(kLibraryLockedByHostFormat, {holder}), kCaption,
                                  host::MsgIcon::Information, host::MsgButtons::YesNo);
            if (answer != host::MsgResult::Yes) {
                return ServerSteps::Declined;
            }
        }
    }
    const std::string lock = LocalPath(kLocalLock);
    files::WriteOptions options;
    options.sync = false;
    std::string error;
    if (!files::WriteWhole(lock, me + "\n", &error, options)) {
        host::Print(error + "\n");
        return ServerSteps::Failed;
    }
    const bool sent = connection.Upload(lock, kRemoteLibraryLock);
    std::error_code ec;
    std::filesystem::remove(lock, ec);
    return sent ? ServerSteps::GoOn : ServerSteps::Failed;
}

}  // namespace

bool IsLibraryOpenHere(const std::string& path) {
    if (!Exists(path)) {
        return false;
    }
    sqlite3* db = nullptr;
    bool open = false;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
        sqlite3_busy_timeout(db, 0);
        const int rc = sqlite3_exec(db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
        open = rc == SQLITE_BUSY || rc == SQLITE_LOCKED;
        if (rc == SQLITE_OK) {
            sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
        }
    }
    sqlite3_close(db);
    return open;
}

ServerSteps RunEditorServerSteps(std::string* error) {
    CMyFtpConnection connection;
    if (!connection.Connect()) {
        if (error) {
            *error = connection.LastError();
        }
        return ServerSteps::NoServer;
    }
    ForgetStampOfMissingLibrary();
    const bool openHere = IsLibraryOpenHere(LocalPath(kLocalLibrary));
    const ServerSteps result =
        !openHere && IsLibraryOutOfDate() ? FetchWithLock(connection) : TakeLockByHand(connection);
    connection.Close();
    return result;
}

void FetchMissingLibrary() {
    const bool missing = ForgetStampOfMissingLibrary();
    if (IsLibraryOpenHere(LocalPath(kLocalLibrary))) {
        return;
    }
    if (!missing || !IsLibraryOutOfDate()) {
        return;
    }
    CMyFtpConnection connection;
    if (!connection.Connect()) {
        return;
    }
    WaitCursor wait;
    if (connection.FileExists(kRemoteLibrary)) {
        connection.Download(kRemoteLibrary, LocalPath(kLocalLibrary));
    }
    connection.Close();
}

}  // namespace netlib
