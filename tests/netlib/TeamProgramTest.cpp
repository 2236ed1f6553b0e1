// qvplc net run as a program by a team of two workstations (two local folders, two host
// names) sharing one server: login, publish, status, checkout, edit, checkin, and each other's
// locks; and two clients racing for the lock.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "../../hosts/cli/ExitCodes.h"
#include "FtpTestServer.h"

namespace {

namespace fs = std::filesystem;
using net_test::FtpTestServer;
using testing_support::ReadFile;

struct Outcome {
    int code = -1;
    std::string out, err;
};

class TeamProgramTest : public testing::Test {
protected:
    FtpTestServer server;
    testing_support::TempDir dir;

    Outcome Run(const std::string& host, const std::string& args, const std::string& style = "1",
                const std::string& input = "", const std::string& env = "") {
        const std::string local = (dir / host).string();
        const std::string command =
            (input.empty() ? std::string() : "printf '%s\\n' '" + input + "' | ") +
            "env -u LC_ALL -u LC_MESSAGES LANG=C.UTF-8 ZANDRIX_LOCAL_DIR='" + local +
            "' ZANDRIX_COMMON_DIR='" + (dir / (host + "-common")).string() +
            "' ZANDRIX_HOST_NAME=" + host + " ZANDRIX_INSTALL_STYLE=" + style + " " + env + " '" +
            (testing_support::BinaryDir() / "bin/qvplc").string() + "' " + args + " >'" +
            (dir / "out").string() + "' 2>'" + (dir / "err").string() + "'";
        const int status = std::system(command.c_str());
        Outcome run;
        run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        run.out = ReadFile(dir / "out");
        run.err = ReadFile(dir / "err");
        return run;
    }
    void Login(const std::string& host) {
        const Outcome run = Run(host,
                                "net login --server 127.0.0.1 --port " +
                                    std::to_string(server.Port()) + " --user team --root 'plc lib'",
                                "1", "s3cret");
        ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    }
    std::string Library(const std::string& host) { return ReadFile(dir / host / "PLC/QvPLC.db"); }
};

}  // namespace

TEST_F(TeamProgramTest, TwoWorkstationsShareTheLibraryAndSeeEachOthersLocks) {
    server.Put("plc lib/readme.txt", "");
    Login("alpha");
    Login("beta");
    EXPECT_EQ(Run("alpha", "net status").code, cli::kExitOk);
    const std::string sample =
        "ZANDRIX_COMMON_DIR='" + testing_support::CommonResDir().string() + "'";
    ASSERT_EQ(Run("alpha", "lib init --sample", "1", "", sample).code, cli::kExitOk);
    ASSERT_EQ(Run("alpha", "net publish").code, cli::kExitOk);
    EXPECT_EQ(server.Get("plc lib/PLC/QvPLC.db"), Library("alpha"));
    EXPECT_EQ(Run("alpha", "net publish").code, cli::kExitFailure);  // never replaced

    // An ordinary client's tree fetches the missing library, and takes no lock.
    Outcome run = Run("beta", "lib tree", "2");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_NE(run.out.find("Norvik Controls"), std::string::npos);
    EXPECT_FALSE(server.Has("plc lib/PLC/QvPLC.db.bak"));
    EXPECT_EQ(Run("beta", "net checkout", "2").code, cli::kExitFailure);

    // alpha checks out, edits by replacing its library, and checks in.
    run = Run("alpha", "net checkout");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_EQ(ReadFile(server.Home() / "plc lib/PLC/QvPLC.db.bak"), "(alpha)\n");
    run = Run("beta", "net status");
    EXPECT_NE(run.out.find("editing lock: held by (alpha)\n"), std::string::npos) << run.out;
    run = Run("beta", "net checkout --no");
    EXPECT_EQ(run.code, cli::kExitCancelled);
    EXPECT_NE(run.err.find("主机IP为(alpha)的用户"), std::string::npos) << run.err;
    EXPECT_EQ(Run("beta", "net checkout").code, cli::kExitCancelled);  // no answer: refused

    ASSERT_EQ(Run("alpha", "lib init --library '" + (dir / "edited.db").string() + "'").code, 0);
    fs::copy_file(dir / "edited.db", dir / "alpha/PLC/QvPLC.db",
                  fs::copy_options::overwrite_existing);
    run = Run("alpha", "net checkin");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_EQ(run.out, "sent PLC/QvPLC.db and PLC/QvPLC.tim\nediting lock: released\n");
    EXPECT_EQ(server.Get("plc lib/PLC/QvPLC.db"), ReadFile(dir / "edited.db"));
    EXPECT_FALSE(server.Has("plc lib/PLC/QvPLC.db.bak"));

    // beta's copy is now out of date: its checkout fetches alpha's edit.
    run = Run("beta", "net checkout");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    EXPECT_NE(run.out.find("fetched the server's library"), std::string::npos);
    EXPECT_EQ(Library("beta"), ReadFile(dir / "edited.db"));

    // alpha forces beta's lock; beta's check-in then sends nothing.
    run = Run("alpha", "net checkout --yes");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    fs::copy_file(dir / "alpha/PLC/QvPLC.db", dir / "beta/PLC/QvPLC.db",
                  fs::copy_options::overwrite_existing);
    run = Run("beta", "net checkin");
    EXPECT_EQ(run.code, cli::kExitRevoked) << run.err;
    EXPECT_NE(run.err.find("已被主机IP为(alpha)的用户强制撤销"), std::string::npos) << run.err;
    EXPECT_EQ(ReadFile(server.Home() / "plc lib/PLC/QvPLC.db.bak"), "(alpha)\n");
    EXPECT_EQ(server.Get("plc lib/PLC/QvPLC.db"), ReadFile(dir / "edited.db"));
}

TEST_F(TeamProgramTest, LoginFileRoundTripAndAServerThatIsNotThere) {
    Login("alpha");
    const fs::path file = dir / "alpha/LocalData/QvFTPLoginInfo.sys";
    EXPECT_EQ(fs::status(file).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(ReadFile(file).find("s3cret"), std::string::npos);
    EXPECT_EQ(Run("alpha", "net status").code, cli::kExitNoServer);  // root folder missing
    server.Put("plc lib/PLC/x", "");
    EXPECT_EQ(Run("alpha", "net status").code, cli::kExitOk);

    Outcome run = Run("alpha", "net login --server 127.0.0.1 --port 1 --anonymous");
    ASSERT_EQ(run.code, cli::kExitOk) << run.err;
    run = Run("alpha", "net status");
    EXPECT_EQ(run.code, cli::kExitNoServer);
    EXPECT_NE(run.err.find("cannot reach the library server"), std::string::npos) << run.err;
    EXPECT_EQ(Run("alpha", "net login --server h --port 70000").code, cli::kExitUsage);
    EXPECT_EQ(Run("alpha", "net login --server h --anonymous --user u").code, cli::kExitUsage);
}

// Two clients that test the lock at the same moment can both find it free and both fetch the
// library: the lock file then names whichever sent it last, and the other learns that it was
// overtaken only at its check-in, which sends nothing. The lock is advisory; nothing stronger
// is promised.
TEST_F(TeamProgramTest, TwoClientsRacingForTheLockEndWithOneHolder) {
    server.Put("plc lib/PLC/QvPLC.db", "v1");
    server.Put("plc lib/PLC/QvPLC.tim", "stamp\n");
    Login("alpha");
    Login("beta");
    const std::string qvplc = (testing_support::BinaryDir() / "bin/qvplc").string();
    std::string both;
    for (const std::string host : {"alpha", "beta"}) {
        both += "env ZANDRIX_LOCAL_DIR='" + (dir / host).string() + "' ZANDRIX_COMMON_DIR='" +
                (dir / (host + "-common")).string() + "' ZANDRIX_HOST_NAME=" + host +
                " ZANDRIX_INSTALL_STYLE=1 '" + qvplc + "' net checkout --no >/dev/null 2>&1 & ";
    }
    ASSERT_EQ(std::system((both + "wait").c_str()), 0);
    // Two sends of the lock at once may even leave the longer one's tail behind the shorter
    // one: only the first line counts.
    std::string holder = ReadFile(server.Home() / "plc lib/PLC/QvPLC.db.bak");
    holder = holder.substr(0, holder.find('\n'));
    ASSERT_TRUE(holder == "(alpha)" || holder == "(beta)") << holder;
    const std::string loser = holder == "(alpha)" ? "beta" : "alpha";
    const std::string winner = loser == "alpha" ? "beta" : "alpha";
    EXPECT_EQ(Run(loser, "net checkin").code, cli::kExitRevoked);
    EXPECT_EQ(Run(winner, "net checkin").code, cli::kExitOk);
    EXPECT_FALSE(server.Has("plc lib/PLC/QvPLC.db.bak"));
}
