// CMyFtpConnection against a real FTP server: logins, modes, the root folder, transfers with
// their one reconnection, time-outs, the safe upload and names that need escaping.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "FtpTestServer.h"
#include "netlib/MyFtpConnection.h"

using net_test::Contains;
using net_test::FtpTestServer;
using net_test::IndexOf;
using net_test::Workstation;
using testing_support::ReadFile;
using testing_support::WriteFile;

TEST(ConnectionTest, UserLoginFetchesAndSendsFilesRelativeToTheRoot) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "server library");
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect()) << connection.LastError();
    EXPECT_TRUE(Contains(server.Log(), "USER team"));
    EXPECT_TRUE(Contains(server.Log(), "CWD lib"));

    const std::string local = ws.Local("PLC/QvPLC.db").string();
    ASSERT_TRUE(connection.Download("  PLC\\QvPLC.db ", local));  // trimmed, '\' taken as '/'
    EXPECT_EQ(ReadFile(local), "server library");

    WriteFile(ws.Local("up.txt"), "sent");
    ASSERT_TRUE(connection.Upload(ws.Local("up.txt").string(), "PLC/up.txt"));
    EXPECT_EQ(server.Get("lib/PLC/up.txt"), "sent");
    EXPECT_TRUE(connection.FileExists("PLC/up.txt"));
    EXPECT_FALSE(connection.FileExists("PLC/none.txt"));
    EXPECT_FALSE(connection.FileExists("NoFolder/up.txt"));
    connection.Close();
    EXPECT_FALSE(connection.IsConnected());
}

TEST(ConnectionTest, WrongPasswordOrMissingSettingsFailWithoutAMessageBox) {
    FtpTestServer server;
    Workstation ws(server, "alpha");
    ws.settings.SetPassword("wrong");
    ws.SaveSettings();
    CMyFtpConnection connection;
    EXPECT_FALSE(connection.Connect());
    EXPECT_FALSE(connection.LastError().empty());
    std::filesystem::remove(ws.Local(netlib::kLoginSettingsRelativePath));
    EXPECT_FALSE(connection.Connect());
    EXPECT_NE(connection.LastError().find("QvFTPLoginInfo.sys"), std::string::npos);
    EXPECT_TRUE(ws.host.messages.empty());
}

TEST(ConnectionTest, AnonymousLoginSendsNoCredentialsWhateverTheLinesHold) {
    net_test::ServerOptions options;
    options.user = "";
    options.anonymous = true;
    FtpTestServer server(options);
    Workstation ws(server, "alpha", "");
    ws.settings.SetAnonymous(true);
    ws.settings.SetUser("team");
    ws.settings.SetPassword("s3cret");
    ws.SaveSettings();
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect()) << connection.LastError();
    const auto log = server.Log();
    EXPECT_TRUE(Contains(log, "USER anonymous"));
    EXPECT_EQ(IndexOf(log, "USER team"), -1);
    EXPECT_EQ(IndexOf(log, "PASS s3cret"), -1);
    // An empty root: no change of folder at connect.
    EXPECT_EQ(IndexOf(log, "CWD"), -1);
}

TEST(ConnectionTest, PassiveAndActiveModesFollowTheFlag) {
    FtpTestServer server;
    server.Put("lib/a.txt", "A");
    Workstation ws(server, "alpha");
    for (const bool passive : {true, false}) {
        ws.settings.SetPassive(passive);
        ws.SaveSettings();
        server.ClearLog();
        CMyFtpConnection connection;
        ASSERT_TRUE(connection.Connect());
        ASSERT_TRUE(connection.Download("a.txt", ws.Local("a.txt").string()))
            << connection.LastError();
        const auto log = server.Log();
        const bool sawPassive = IndexOf(log, "EPSV") >= 0 || IndexOf(log, "PASV") >= 0;
        const bool sawActive = IndexOf(log, "EPRT") >= 0 || IndexOf(log, "PORT") >= 0;
        EXPECT_EQ(sawPassive, passive);
        EXPECT_EQ(sawActive, !passive);
    }
}

TEST(ConnectionTest, MissingRootFolderIsReportedWithItsName) {
    FtpTestServer server;
    Workstation ws(server, "alpha", "nowhere");
    CMyFtpConnection connection;
    EXPECT_FALSE(connection.Connect());
    ASSERT_EQ(ws.host.messages.size(), 1u);
    EXPECT_EQ(ws.host.messages[0].text,
              "设置站点当前路径失败!\n可能原因:FTP站点中路径名nowhere不存在");
    EXPECT_EQ(ws.host.messages[0].caption, "Zandrix");
    EXPECT_EQ(ws.host.messages[0].icon, host::MsgIcon::Error);
    EXPECT_FALSE(connection.IsConnected());
}

TEST(ConnectionTest, TransferDroppedOnceSucceedsAfterTheOneReconnection) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "new library");
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    server.SetHooks(R"({"drop": 1, "drop_on": ["RETR"]})");
    ASSERT_TRUE(connection.Download("PLC/QvPLC.db", ws.Local("PLC/QvPLC.db").string()));
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "new library");
    const auto log = server.Log();
    EXPECT_EQ(std::count(log.begin(), log.end(), "USER team"), 2);
}

TEST(ConnectionTest, TransferDroppedTwiceFailsAndKeepsTheLocalCopy) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", std::string(1 << 20, 'n'));
    Workstation ws(server, "alpha");
    WriteFile(ws.Local("PLC/QvPLC.db"), "old library");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    server.SetHooks(R"({"drop": 2, "drop_on": ["RETR"]})");
    EXPECT_FALSE(connection.Download("PLC/QvPLC.db", ws.Local("PLC/QvPLC.db").string()));
    EXPECT_EQ(ReadFile(ws.Local("PLC/QvPLC.db")), "old library");
    EXPECT_EQ(std::filesystem::directory_iterator(ws.Local("PLC"))->path().filename(), "QvPLC.db");
    // Nothing is retried beyond the one reconnection: a third attempt would have got through.
    const auto log = server.Log();
    EXPECT_EQ(std::count(log.begin(), log.end(), "RETR QvPLC.db"), 2);
}

TEST(ConnectionTest, StalledServerFailsWithinTheTimeOutsInsteadOfHanging) {
    FtpTestServer server;
    server.Put("lib/a.txt", "A");
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    server.SetHooks(R"({"stall_on": ["RETR"]})");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(connection.Download("a.txt", ws.Local("a.txt").string()));
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start)
            .count();
    // Two attempts of at most one 6 s time-out each, and the reconnection between them.
    EXPECT_LT(seconds, 25);
    EXPECT_FALSE(std::filesystem::exists(ws.Local("a.txt")));
}

TEST(ConnectionTest, FileExistsAsksForTheSizeWithoutFetchingTheFile) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", std::string(1 << 20, 'x'));
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;  // not connected: FileExists connects by itself
    EXPECT_TRUE(connection.FileExists("PLC/QvPLC.db"));
    EXPECT_EQ(IndexOf(server.Log(), "RETR"), -1);
    EXPECT_TRUE(Contains(server.Log(), "SIZE QvPLC.db"));
}

TEST(ConnectionTest, SafeUploadSendsUnderTheTemporaryNameThenRemovesAndRenames) {
    FtpTestServer server;
    server.Put("lib/PLC/QvPLC.db", "old");
    Workstation ws(server, "alpha");
    WriteFile(ws.Local("LocalData/Ftp.bg"), "");
    WriteFile(ws.Local("PLC/QvPLC.db"), "new");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    server.ClearLog();
    ASSERT_TRUE(connection.Upload(ws.Local("PLC/QvPLC.db").string(), "PLC/QvPLC.db"));
    const auto log = server.Log();
    const int stor = IndexOf(log, "STOR #.txt");
    const int dele = IndexOf(log, "DELE /lib/PLC/QvPLC.db");
    const int rnfr = IndexOf(log, "RNFR /lib/PLC/#.txt");
    const int rnto = IndexOf(log, "RNTO /lib/PLC/QvPLC.db");
    ASSERT_GE(stor, 0);
    EXPECT_LT(stor, dele);
    EXPECT_LT(dele, rnfr);
    EXPECT_LT(rnfr, rnto);
    EXPECT_EQ(server.Get("lib/PLC/QvPLC.db"), "new");
    EXPECT_FALSE(server.Has("lib/PLC/#.txt"));

    // A file at the root is sent as "#.txt" at the root.
    ws.settings.SetRoot("");
    ws.SaveSettings();
    ASSERT_TRUE(connection.Connect());
    server.ClearLog();
    ASSERT_TRUE(connection.Upload(ws.Local("PLC/QvPLC.db").string(), "top.db"));
    EXPECT_GE(IndexOf(server.Log(), "STOR #.txt"), 0);
    EXPECT_EQ(IndexOf(server.Log(), "CWD"), -1);
    EXPECT_EQ(server.Get("top.db"), "new");
}

TEST(ConnectionTest, FailedUploadIsReported) {
    FtpTestServer server;
    server.Put("lib/PLC/old.txt", "");
    Workstation ws(server, "alpha");
    WriteFile(ws.Local("a.txt"), "A");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    server.SetHooks(R"({"drop": 2, "drop_on": ["STOR"]})");
    EXPECT_FALSE(connection.Upload(ws.Local("a.txt").string(), "PLC/a.txt"));
    ASSERT_EQ(ws.host.messages.size(), 1u);
    EXPECT_EQ(ws.host.messages[0].text,
              "文件 PLC/a.txt 上传失败，请确认是否被其它客户端用户调用！");
    EXPECT_EQ(ws.host.messages[0].icon, host::MsgIcon::Exclamation);
}

TEST(ConnectionTest, NamesWithBlanksSignsAndChineseCharactersWork) {
    FtpTestServer server;
    const std::string root = "团队 库/v#1";
    const std::string name = "PLC/元件 50%?.db";
    server.Put(root + "/" + name, "library");
    Workstation ws(server, "alpha", root);
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect()) << connection.LastError();
    EXPECT_TRUE(connection.FileExists(name));
    ASSERT_TRUE(connection.Download(name, ws.Local("got.db").string()));
    EXPECT_EQ(ReadFile(ws.Local("got.db")), "library");
    WriteFile(ws.Local("LocalData/Ftp.bg"), "");
    ASSERT_TRUE(connection.Connect());
    ASSERT_TRUE(connection.Upload(ws.Local("got.db").string(), "PLC/新 #2.db"));
    EXPECT_EQ(server.Get(root + "/PLC/新 #2.db"), "library");
    EXPECT_TRUE(connection.RemoveRemoteFile("PLC/新 #2.db"));
    EXPECT_FALSE(server.Has(root + "/PLC/新 #2.db"));
}

TEST(ConnectionTest, LineBreaksInNamesAreRefusedBeforeAnythingIsSent) {
    FtpTestServer server;
    server.Put("lib/a.txt", "A");
    Workstation ws(server, "alpha");
    CMyFtpConnection connection;
    ASSERT_TRUE(connection.Connect());
    server.ClearLog();
    EXPECT_FALSE(connection.Download("a.txt\r\nDELE a.txt", ws.Local("x").string()));
    EXPECT_FALSE(connection.FileExists("a.txt\nDELE a.txt"));
    EXPECT_EQ(IndexOf(server.Log(), "DELE"), -1);
    EXPECT_EQ(IndexOf(server.Log(), "RETR"), -1);
    EXPECT_TRUE(server.Has("lib/a.txt"));

    ws.settings.SetRoot("lib\r\nDELE a.txt");
    ws.SaveSettings();
    connection.Close();
    server.ClearLog();
    EXPECT_FALSE(connection.Connect());
    EXPECT_TRUE(server.Log().empty());
}

TEST(ConnectionTest, ReaderFetchingDuringALargeSafeUploadGetsAWholeLibrary) {
    FtpTestServer server;
    const std::string oldLibrary(2 << 20, 'o');
    const std::string newLibrary(4 << 20, 'n');
    server.Put("lib/PLC/QvPLC.db", oldLibrary);
    Workstation ws(server, "alpha");
    WriteFile(ws.Local("LocalData/Ftp.bg"), "");
    WriteFile(ws.Local("PLC/QvPLC.db"), newLibrary);
    server.SetHooks(R"({"stor_rate": 1048576})");  // the send takes seconds

    CMyFtpConnection writer;
    ASSERT_TRUE(writer.Connect());
    std::atomic<bool> done = false;
    bool sent = false;
    std::thread upload([&] {
        sent = writer.Upload(ws.Local("PLC/QvPLC.db").string(), "PLC/QvPLC.db");
        done = true;
    });
    CMyFtpConnection reader;
    ASSERT_TRUE(reader.Connect());
    int fetchedDuringUpload = 0;
    for (int i = 0; i < 50 && !done; ++i) {
        ASSERT_TRUE(reader.Download("PLC/QvPLC.db", ws.Local("read.db").string()));
        const std::string got = ReadFile(ws.Local("read.db"));
        EXPECT_TRUE(got == oldLibrary || got == newLibrary) << got.size() << " bytes";
        fetchedDuringUpload += done ? 0 : 1;
    }
    upload.join();
    EXPECT_TRUE(sent);
    EXPECT_GT(fetchedDuringUpload, 0);
    EXPECT_EQ(server.Get("lib/PLC/QvPLC.db"), newLibrary);
}
