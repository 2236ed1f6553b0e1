// qvplc net: the team's library on an FTP server. `login` writes the login settings, `status`
// tells what the server holds, `checkout` runs the library editor's server steps (fetch when
// out of date, take the editing lock), `checkin` gives the library back as the editor does
// when it closes, and `publish` puts a first library on an empty server.
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

#include "Args.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "Messages.h"
#include "NetStep.h"
#include "files/TextFile.h"
#include "host/Host.h"
#include "host/SuiteServices.h"
#include "netlib/LoginSettings.h"
#include "netlib/MyFtpConnection.h"
#include "netlib/NetworkRuns.h"
#include "netlib/Paths.h"
#include "netlib/TimeStamp.h"

namespace cli {
namespace {

const CommandSpec kLoginSpec{
    "qvplc net login --server HOST [--port N] [--user NAME | --anonymous] [--passive] "
    "[--root FOLDER]",
    "Writes the login settings of the library server, LocalData/QvFTPLoginInfo.sys in the\n"
    "local installation folder: eleven lines, each scrambled (not encrypted: the file is\n"
    "made readable by its owner only). The password is read from standard input (its first\n"
    "line) or, on a terminal, asked for without echo; it is never taken from the command\n"
    "line. --anonymous logs in without user name and password. Without --passive the server\n"
    "connects back for each transfer (active mode). --root names the library's folder on\n"
    "the server (PLC/QvPLC.db is found below it). Lines the suite's other tools keep in the\n"
    "file are kept.",
    {{"server", "HOST", "the server's name or address"},
     {"port", "N", "the server's port (default 21)"},
     {"user", "NAME", "the user name"},
     {"anonymous", "", "log in anonymously: no user name, no password"},
     {"passive", "", "passive-mode transfers (the client opens every connection)"},
     {"root", "FOLDER", "the library root folder on the server (default: the login folder)"}},
    "Example:\n  printf '%s\\n' \"$PASSWORD\" | qvplc net login --server ftp.example.org "
    "--user team --passive --root plc"};

const CommandSpec kStatusSpec{
    "qvplc net status",
    "Connects to the library server and prints whether it is reachable, the local and the\n"
    "server's version stamps, whether the local library is up to date, and which host holds\n"
    "the editing lock.",
    {},
    ""};

const CommandSpec kCheckoutSpec{
    "qvplc net checkout [--yes | --no]",
    "The library editor's server steps, for a network client with editing rights\n"
    "(ZANDRIX_INSTALL_STYLE=1): fetches the server's library when the local one is out of\n"
    "date and takes the editing lock, which names this host. When another host holds the\n"
    "lock the question whether to force it is answered by --yes or --no, and refused\n"
    "without either.",
    {YesOption(), NoOption()},
    "Example:\n  ZANDRIX_INSTALL_STYLE=1 qvplc net checkout"};

const CommandSpec kCheckinSpec{
    "qvplc net checkin",
    "Gives the library back to the server as the library editor does when it closes: when\n"
    "the local library changed (its stamp differs from the server's) it is sent with its\n"
    "stamp, and the editing lock is released. When another host forced the lock meanwhile,\n"
    "nothing is sent and that host's lock is left alone. A library changed without the\n"
    "editor (a file copied over PLC/QvPLC.db) gets a new stamp first.",
    {},
    ""};

const CommandSpec kPublishSpec{
    "qvplc net publish",
    "Puts the local library and its stamp on a server that has no library yet: the first\n"
    "step of a team. A server that has one is left alone (check it out and in instead).",
    {},
    ""};

int NoServer(const std::string& error) {
    Complainf("cannot reach the library server%s%s", error.empty() ? "" : ": ", error.c_str());
    return kExitNoServer;
}

bool EditingClient(const char* command) {
    const int style = suite::GetCurZandrixInstallStyle();
    if (style == 1) {
        return true;
    }
    if (style == 2) {
        host::Print("普通客户端无运行此命令的权限！\n");
    } else {
        Complainf("%s needs a network client with editing rights (ZANDRIX_INSTALL_STYLE=1)",
                  command);
    }
    return false;
}

std::string ReadPassword() {
    std::string password;
    if (!::isatty(STDIN_FILENO)) {
        std::getline(std::cin, password);
        return password;
    }
    termios old{};
    ::tcgetattr(STDIN_FILENO, &old);
    termios quiet = old;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    std::fputs("Password: ", stderr);
    ::tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
    std::getline(std::cin, password);
    ::tcsetattr(STDIN_FILENO, TCSANOW, &old);
    std::fputc('\n', stderr);
    return password;
}

int RunLogin(const ParsedArgs& args, CliHost&) {
    const std::string path = netlib::LocalPath(netlib::kLoginSettingsRelativePath);
    netlib::LoginSettings settings;
    std::string error;
    std::error_code ec;
    if (std::filesystem::exists(path, ec)) {
        if (auto old = netlib::ReadLoginSettings(path, &error)) {
            settings = *old;  // keeps the lines of the suite's other tools
        }
    }
    const auto server = args.Value("server");
    if (!server || server->empty()) {
        Complain("net login needs --server HOST");
        return kExitUsage;
    }
    const std::string port = args.Value("port").value_or("21");
    if (port.empty() || port.size() > 5 ||
        port.find_first_not_of("0123456789") != std::string::npos || std::stoi(port) < 1 ||
        std::stoi(port) > 65535) {
        Complainf("--port %s is not a port number (1 to 65535)", port.c_str());
        return kExitUsage;
    }
    const bool anonymous = args.Has("anonymous");
    if (anonymous && args.Has("user")) {
        Complain("--anonymous and --user exclude each other");
        return kExitUsage;
    }
    settings.SetServer(*server);
    settings.SetPort(port);
    settings.SetRoot(args.Value("root").value_or(""));
    settings.SetAnonymous(anonymous);
    settings.SetUser(anonymous ? "" : args.Value("user").value_or(""));
    settings.SetPassword(anonymous ? "" : ReadPassword());
    settings.SetPassive(args.Has("passive"));
    for (const auto& line : settings.lines) {
        if (!netlib::IsSafeRemoteName(line)) {
            Complain("a login setting holds a line break: nothing was written");
            return kExitBadInput;
        }
    }
    if (!netlib::WriteLoginSettings(path, settings, &error)) {
        Complain(error);
        return kExitCannotWrite;
    }
    std::printf("%s: login settings for %s:%s%s written\n", path.c_str(), server->c_str(),
                port.c_str(), anonymous ? " (anonymous)" : "");
    return kExitOk;
}

std::string Shown(const std::optional<std::string>& value) {
    return value ? "'" + *value + "'" : std::string("none");
}

int RunStatus(const ParsedArgs&, CliHost&) {
    CMyFtpConnection connection;
    if (!connection.Connect()) {
        return NoServer(connection.LastError());
    }
    std::printf("server: reachable\n");
    const std::string scratch = netlib::LocalPath("TempFTP/status.txt");
    const bool hasLibrary = connection.FileExists(netlib::kRemoteLibrary);
    std::optional<std::string> serverStamp;
    if (connection.FileExists(netlib::kRemoteStamp)) {
        serverStamp = connection.ReadRemoteFirstLine(netlib::kRemoteStamp, scratch);
    }
    const auto localStamp = netlib::ReadFirstLine(netlib::LocalPath(netlib::kLocalStamp));
    std::printf("server library: %s\n", hasLibrary ? "present" : "none");
    std::printf("server stamp: %s\nlocal stamp: %s\n", Shown(serverStamp).c_str(),
                Shown(localStamp).c_str());
    const bool current = serverStamp && localStamp &&
                         files::UpperAscii(*serverStamp) == files::UpperAscii(*localStamp);
    std::printf("local library: %s\n", current ? "up to date" : "out of date");
    if (connection.FileExists(netlib::kRemoteLibraryLock)) {
        const std::string holder =
            connection.ReadRemoteFirstLine(netlib::kRemoteLibraryLock, scratch);
        const bool mine = netlib::SameHost(holder, GetLocalHostIp());
        std::printf("editing lock: held by %s%s\n", holder.c_str(), mine ? " (this host)" : "");
    } else {
        std::printf("editing lock: free\n");
    }
    return kExitOk;
}

std::filesystem::file_time_type LibraryTime() {
    std::error_code ec;
    return std::filesystem::last_write_time(netlib::LocalPath(netlib::kLocalLibrary), ec);
}

int RunCheckout(const ParsedArgs& args, CliHost& host) {
    if (!EditingClient("net checkout")) {
        return kExitFailure;
    }
    host.answer = args.Has("yes") ? Answer::Yes : args.Has("no") ? Answer::No : Answer::None;
    const auto before = LibraryTime();
    std::string error;
    switch (netlib::RunEditorServerSteps(&error)) {
        case netlib::ServerSteps::NoServer:
            return NoServer(error);
        case netlib::ServerSteps::Declined:
            Complain("the lock stays with the host that holds it; nothing was fetched");
            return kExitCancelled;
        case netlib::ServerSteps::Failed:
            Complain("checkout failed: the library or the lock could not be transferred");
            return kExitFailure;
        case netlib::ServerSteps::GoOn:
            break;
    }
    std::printf("%s\nediting lock: held by %s (this host)\n",
                LibraryTime() != before ? "fetched the server's library"
                                        : "kept the local library (up to date)",
                GetLocalHostIp().c_str());
    return kExitOk;
}

int RunCheckin(const ParsedArgs&, CliHost&) {
    if (!EditingClient("net checkin")) {
        return kExitFailure;
    }
    std::string error;
    if (!netlib::StampIfLibraryChanged(&error) && !error.empty()) {
        Complain(error);
        return kExitCannotWrite;
    }
    CMyFtpConnection connection;
    const CheckInReport report = connection.CheckInLibrary();
    if (!report.connected) {
        return NoServer(connection.LastError());
    }
    if (report.revoked) {
        Complain(WithTranslation(report.revokedMessage));
        Complain("nothing was sent, and the lock was left to the host that holds it");
        return kExitRevoked;
    }
    if (report.sent) {
        std::printf("sent %s and %s\n", netlib::kRemoteLibrary, netlib::kRemoteStamp);
    } else if (!report.sendFailed) {
        std::printf("the library is unchanged: nothing was sent\n");
    }
    std::printf("editing lock: %s\n", report.lockReleased ? "released" : "NOT released");
    return report.sendFailed || !report.lockReleased ? kExitFailure : kExitOk;
}

int RunPublish(const ParsedArgs&, CliHost&) {
    const std::string library = netlib::LocalPath(netlib::kLocalLibrary);
    std::error_code ec;
    if (!std::filesystem::exists(library, ec)) {
        Complainf("no local library at %s to publish", library.c_str());
        return kExitBadInput;
    }
    CMyFtpConnection connection;
    if (!connection.Connect()) {
        return NoServer(connection.LastError());
    }
    if (connection.FileExists(netlib::kRemoteLibrary)) {
        Complain("the server has a library already; it was left as it is");
        return kExitFailure;
    }
    std::string error;
    if (!netlib::StampIfLibraryChanged(&error) && !error.empty()) {
        Complain(error);
        return kExitCannotWrite;
    }
    if (!connection.Upload(library, netlib::kRemoteLibrary) ||
        !connection.Upload(netlib::LocalPath(netlib::kLocalStamp), netlib::kRemoteStamp)) {
        return kExitFailure;
    }
    std::printf("published %s and %s\n", netlib::kRemoteLibrary, netlib::kRemoteStamp);
    return kExitOk;
}

struct Subcommand {
    const char* name;
    const CommandSpec* command;
    int (*run)(const ParsedArgs& args, CliHost& host);
};

const Subcommand kSubcommands[] = {
    {"login", &kLoginSpec, RunLogin},          {"status", &kStatusSpec, RunStatus},
    {"checkout", &kCheckoutSpec, RunCheckout}, {"checkin", &kCheckinSpec, RunCheckin},
    {"publish", &kPublishSpec, RunPublish},
};

void PrintGroupUsage(FILE* out) {
    std::fprintf(out,
                 "usage: qvplc net <command> [options]\n\nThe team's library on an FTP server.\n\n"
                 "Commands:\n"
                 "  login     write the login settings of the library server\n"
                 "  status    server reachable, stamps, up to date, who holds the lock\n"
                 "  checkout  fetch the library when out of date and take the editing lock\n"
                 "  checkin   send the edited library back and release the lock\n"
                 "  publish   put the first library on an empty server\n\n"
                 "Every command takes --help.\n");
}

}  // namespace

void RunDrawingNetworkStep() {
    const int style = suite::GetCurZandrixInstallStyle();
    if (style == 1 || style == 2) {
        netlib::FetchMissingLibrary();
    }
}

int RunNet(const Arguments& args, CliHost& host) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h") {
        PrintGroupUsage(args.empty() ? stderr : stdout);
        return args.empty() ? kExitUsage : kExitOk;
    }
    for (const auto& sub : kSubcommands) {
        if (args[0] != sub.name) {
            continue;
        }
        auto parsed = Parse(*sub.command, Arguments(args.begin() + 1, args.end()));
        if (!parsed) {
            return kExitUsage;
        }
        if (parsed->help) {
            std::printf("%s", HelpText(*sub.command).c_str());
            return kExitOk;
        }
        if (!parsed->positional.empty()) {
            Complainf("net %s takes no argument\nusage: %s", sub.name, sub.command->usage.c_str());
            return kExitUsage;
        }
        if (parsed->Has("yes") && parsed->Has("no")) {
            Complain("--yes and --no exclude each other");
            return kExitUsage;
        }
        return sub.run(*parsed, host);
    }
    Complainf("unknown command 'net %s'", args[0].c_str());
    std::fputc('\n', stderr);
    PrintGroupUsage(stderr);
    return kExitUsage;
}

}  // namespace cli
