// The editing lock that names its host, the stamps, the check-in and the runs' server steps,
// with one or two workstations sharing a real FTP server.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "FtpTestServer.h"
#include "netlib/MyFtpConnection.h"
#include "netlib/NetworkRuns.h"
#include "netlib/TimeStamp.h"

using net_test::FtpTestServer;
using net_test::IndexOf;
using net_test::Workstation;
using testing_support::ReadFile;
using testing_support::WriteFile;

namespace {

const char* kLock = "lib/PLC/QvPLC.db.bak";

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

TEST(LockTest, HostIdentityIsAddressAndNameAndFollowsTheOverride) {
    testing_support::ScopedEnv name("ZANDRIX_HOST_NAME", "localhost");
    EXPECT_EQ(netlib::GetLocalHostIp(), "127.0.0.1(localhost)");
    testing_support::ScopedEnv unknown("ZANDRIX_HOST_NAME", "no-such-host.invalid");
    EXPECT_EQ(netlib::GetLocalHostIp(), "(no-such-host.invalid)");
    EXPECT_TRUE(netlib::SameHost("10.0.0.1(Alpha)", "10.0.0.1(ALPHA)"));
    EXPECT_FALSE(netlib::SameHost("10.0.0.1(alpha)", "10.0.0.2(alpha)"));
}

TEST(LockTest, ServerWithoutTheLibraryIsReportedAndTheCallerGoesOn) {
    FtpTestServer server;
    server.Put("lib/readme.txt", "");
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    EXPECT_TRUE(
        connection.DownloadWithEditLock(ws.Local("PLC/QvPLC.db").string(), "PLC\\", "QvPLC.db"));
    ASSERT_EQ(ws.host.messages.size(), 1u);
    EXPECT_EQ(ws.host.messages[0].text, "服务器上不存在<QvPLC.db>文件！");
    EXPECT_EQ(ws.host.messages[0].icon, host::MsgIcon::Information);
    EXPECT_FALSE(server.Has(kLock));
}

TEST(LockTest, FreeLibraryIsFetchedAndLockedWithThisHostsIdentity) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "server library");
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    ASSERT_TRUE(
        connection.DownloadWithEditLock(ws.Local("PLC/QvPLC.db").string(), "PLC/", "QvPLC.db"));
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "server library");
    EXPECT_EQ(server.Get(kLock), ws.Identity() + "\n");
    EXPECT_FALSE(std::filesystem::exists(ws.Local("TempFTP/LocalIP.txt")));
    EXPECT_TRUE(ws.host.messages.empty());
}

TEST(LockTest, LockOfAnotherHostAnsweredNoChangesNothing) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "server library");
    server.Put(kLock, "10.9.8.7(beta)\n");
    Workstation ws(server, "alpha");
    WriteFile(ws.Local("PLC/QvPLC.db"), "local library");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    ws.host.messageAnswers.push_back(host::MsgResult::No);
    EXPECT_FALSE(
        connection.DownloadWithEditLock(ws.Local("PLC/QvPLC.db").string(), "PLC/", "QvPLC.db"));
    EXPECT_TRUE(connection.Declined());
    ASSERT_EQ(ws.host.messages.size(), 1u);
    EXPECT_EQ(ws.host.messages[0].text,
              "主机IP为10.9.8.7(beta)的用户正对文件<QvPLC.db>进行操作，可等待其完成后再继续...\n"
              "是否强制撤销其库修改操作?");
    EXPECT_EQ(ws.host.messages[0].buttons, host::MsgButtons::YesNo);
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "local library");
    EXPECT_EQ(server.Get(kLock), "10.9.8.7(beta)\n");
    EXPECT_FALSE(net_test::Contains(server.Log(), "RETR QvPLC.db"));
}

TEST(LockTest, LockOfAnotherHostAnsweredYesIsRewrittenWithThisHost) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "server library");
    server.Put(kLock, "10.9.8.7(beta)\n");
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    ws.host.messageAnswers.push_back(host::MsgResult::Yes);
    ASSERT_TRUE(
        connection.DownloadWithEditLock(ws.Local("PLC/QvPLC.db").string(), "PLC/", "QvPLC.db"));
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "server library");
    EXPECT_EQ(FirstLine(server.Get(kLock)), ws.Identity());
}

TEST(LockTest, LockNamingThisHostInOtherCaseIsNotAskedAbout) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "server library");
    Workstation ws(server, "alpha");
    std::string upper = ws.Identity();
    for (char& c : upper) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    server.Put(kLock, upper + "\n");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    ASSERT_TRUE(
        connection.DownloadWithEditLock(ws.Local("PLC/QvPLC.db").string(), "PLC/", "QvPLC.db"));
    EXPECT_TRUE(ws.host.messages.empty());
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "server library");
    EXPECT_EQ(server.Get(kLock), upper + "\n");  // still this host's
}

TEST(LockTest, StampsCompareFirstLinesWithoutRegardToCase) {
    FtpTestServer server;
    Workstation ws(server, "alpha");
    EXPECT_TRUE(IsLibraryOutOfDate());  // neither stamp
    WriteFile(ws.Local("PLC/QvPLC.tim"), "2026-01-01 stamp a\n");
    EXPECT_TRUE(IsLibraryOutOfDate());  // no server stamp
    server.Put("lib/PLC/QvPLC.tim", "2026-01-01 STAMP A\nsecond line ignored\n");
    EXPECT_FALSE(IsLibraryOutOfDate());
    EXPECT_FALSE(std::filesystem::exists(ws.Local("TempFTP/QvPLC.tim")));
    server.Put("lib/PLC/QvPLC.tim", "2026-01-02 stamp b\n");
    EXPECT_TRUE(IsLibraryOutOfDate());
    // An ordinary client compares nothing with the server.
    testing_support::ScopedEnv style("ZANDRIX_INSTALL_STYLE", "2");
    server.Put("lib/PLC/QvPLC.tim", "2026-01-01 stamp a\n");
    EXPECT_TRUE(IsLibraryOutOfDate());
}

TEST(LockTest, CheckInSendsTheEditedLibraryAndReleasesTheLock) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "v1");
    server.Put("lib/PLC/QvPLC.tim", "stamp 1\n");
    Workstation ws(server, "alpha");
    ASSERT_EQ(netlib::RunEditorServerSteps(), netlib::ServerSteps::GoOn);
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.tim")), "stamp 1\n");
    EXPECT_EQ(FirstLine(server.Get(kLock)), ws.Identity());

    WriteFile(ws.Local("PLC/QvPLC.db"), "v2");
    std::string error;
    ASSERT_TRUE(netlib::WriteTimeStamp(ws.Local("PLC/QvPLC.tim").string(), &error)) << error;
    CMyFtpConnection connection;
    const CheckInReport report = connection.CheckInLibrary();
    EXPECT_TRUE(report.connected);
    EXPECT_FALSE(report.revoked);
    EXPECT_TRUE(report.sent);
    EXPECT_TRUE(report.lockReleased);
    EXPECT_EQ(server.Get("lib/PLC/QvPLC.db"), "v2");
    EXPECT_EQ(server.Get("lib/PLC/QvPLC.tim"), ReadFile(ws.Local("PLC/QvPLC.tim")));
    EXPECT_FALSE(server.Has(kLock));

    // Unchanged library: the lock goes, nothing is sent.
    ASSERT_EQ(netlib::RunEditorServerSteps(), netlib::ServerSteps::GoOn);
    server.ClearLog();
    const CheckInReport again = connection.CheckInLibrary();
    EXPECT_FALSE(again.sent);
    EXPECT_TRUE(again.lockReleased);
    EXPECT_EQ(IndexOf(server.Log(), "STOR"), -1);
}

TEST(LockTest, RevokedLockIsDetectedAtCheckInAndNothingIsSent) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "v1");
    server.Put("lib/PLC/QvPLC.tim", "stamp 1\n");
    Workstation alpha(server, "alpha");
    ASSERT_EQ(netlib::RunEditorServerSteps(), netlib::ServerSteps::GoOn);
    WriteFile(alpha.Local("PLC/QvPLC.db"), "alpha's edit");
    ASSERT_TRUE(netlib::WriteTimeStamp(alpha.Local("PLC/QvPLC.tim").string(), nullptr));

    {
        Workstation beta(server, "beta");
        beta.host.messageAnswers.push_back(host::MsgResult::Yes);  // force alpha's lock
        ASSERT_EQ(netlib::RunEditorServerSteps(), netlib::ServerSteps::GoOn);
        ASSERT_EQ(beta.host.messages.size(), 1u);
        EXPECT_NE(beta.host.messages[0].text.find("(alpha)"), std::string::npos);
    }
    const std::string betaLock = server.Get(kLock);
    EXPECT_NE(betaLock.find("(beta)"), std::string::npos);

    alpha.Enter();
    server.ClearLog();
    CMyFtpConnection connection;
    const CheckInReport report = connection.CheckInLibrary();
    EXPECT_TRUE(report.revoked);
    EXPECT_EQ(report.revokedMessage, "文件<PLC/QvPLC.db>的库修改作已被主机IP为" +
                                         FirstLine(betaLock) + "的用户强制撤销，无法入库...");
    EXPECT_FALSE(report.sent);
    EXPECT_EQ(server.Get("lib/PLC/QvPLC.db"), "v1");
    EXPECT_EQ(server.Get(kLock), betaLock);
    EXPECT_EQ(IndexOf(server.Log(), "STOR"), -1);
    EXPECT_EQ(IndexOf(server.Log(), "DELE"), -1);

    // A lock removed outright is revoked too.
    std::filesystem::remove(server.Home() / kLock);
    EXPECT_TRUE(connection.CheckInLibrary().revoked);
    EXPECT_EQ(connection.RevokedMessage(), "文件<PLC/QvPLC.db>的库修改作已被强制撤销，无法入库...");
}

TEST(LockTest, EditorStepsWithACurrentCopyTakeTheLockByHand) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "v1");
    server.Put("lib/PLC/QvPLC.tim", "stamp 1\n");
    server.Put(kLock, "10.9.8.7(beta)\n");
    Workstation ws(server, "alpha");
    WriteFile(ws.Local("PLC/QvPLC.db"), "local v1");
    WriteFile(ws.Local("PLC/QvPLC.tim"), "STAMP 1\n");

    ws.host.messageAnswers.push_back(host::MsgResult::No);
    EXPECT_EQ(netlib::RunEditorServerSteps(), netlib::ServerSteps::Declined);
    ASSERT_EQ(ws.host.messages.size(), 1u);
    EXPECT_EQ(ws.host.messages[0].text,
              "主机IP为10.9.8.7(beta)的用户正在进行PLC数据库编辑操作，是否强制执行!");
    EXPECT_EQ(server.Get(kLock), "10.9.8.7(beta)\n");

    ws.host.messageAnswers.push_back(host::MsgResult::Yes);
    EXPECT_EQ(netlib::RunEditorServerSteps(), netlib::ServerSteps::GoOn);
    EXPECT_EQ(server.Get(kLock), ws.Identity() + "\n");
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "local v1");  // current: not fetched
    EXPECT_FALSE(std::filesystem::exists(ws.Local("PLC/QvPLC.db.bak")));
    EXPECT_TRUE(std::filesystem::exists(ws.Local("../common/PLC/QvPLC.db.bak")));
}

TEST(LockTest, DrawingFetchesOnlyAMissingLibrary) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "server library");
    server.Put("lib/PLC/QvPLC.tim", "stamp 1\n");
    Workstation ws(server, "alpha");
    testing_support::ScopedEnv style("ZANDRIX_INSTALL_STYLE", "2");
    netlib::FetchMissingLibrary();
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "server library");
    EXPECT_FALSE(server.Has(kLock));

    server.Put("lib/PLC/QvPLC.db", "newer library");
    netlib::FetchMissingLibrary();  // a local copy is used as it is
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "server library");

    ws.settings.SetPort("1");  // no server there: silent, nothing fetched
    ws.SaveSettings();
    std::filesystem::remove(ws.Local("PLC/QvPLC.db"));
    netlib::FetchMissingLibrary();
    EXPECT_FALSE(std::filesystem::exists(ws.Local("PLC/QvPLC.db")));
    EXPECT_TRUE(ws.host.messages.empty());
}

TEST(LockTest, LibraryOpenOnThisMachineIsUsedAsItIsAndStillLocked) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "server library");
    server.Put("lib/PLC/QvPLC.tim", "stamp 2\n");
    Workstation ws(server, "alpha");
    const std::string library = ws.Local("PLC/QvPLC.db").string();
    std::filesystem::create_directories(ws.Local("PLC"));
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(library.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "CREATE TABLE t(x); BEGIN EXCLUSIVE", nullptr, nullptr, nullptr),
              SQLITE_OK);
    const std::string before = ReadFile(library);
    EXPECT_TRUE(netlib::IsLibraryOpenHere(library));
    // Out of date, but open here: not fetched over, the lock is taken by hand.
    EXPECT_EQ(netlib::RunEditorServerSteps(), netlib::ServerSteps::GoOn);
    EXPECT_EQ(ReadFile(library), before);
    EXPECT_EQ(server.Get(kLock), ws.Identity() + "\n");
    sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    EXPECT_FALSE(netlib::IsLibraryOpenHere(library));
    sqlite3_close(db);
    EXPECT_FALSE(netlib::IsLibraryOpenHere(ws.Local("PLC/none.db").string()));
}
