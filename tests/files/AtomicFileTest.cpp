// The write policy of AtomicFile, each rule on real files: what a replaced file keeps, what is
// refused before anything is written, and what a killed writer leaves behind.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "TestPaths.h"
#include "files/AtomicFile.h"
#include "files/TextFile.h"

using namespace testing_support;
namespace fs = std::filesystem;

namespace {

std::set<std::string> Names(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

struct stat Stat(const fs::path& path) {
    struct stat st {};
    ::lstat(path.c_str(), &st);
    return st;
}

// Expects the write to be refused with `kind`, the file (when there is one) unchanged and
// no file added to the folder.
void ExpectRefused(const fs::path& path, files::ErrorKind kind, const std::string& reason) {
    const fs::path folder = path.parent_path();
    std::error_code ec;
    const bool hadFolder = fs::is_directory(folder, ec);
    const auto before = hadFolder ? Names(folder) : std::set<std::string>{};
    const bool hadFile = fs::is_regular_file(path, ec);
    const std::string old = hadFile ? ReadFile(path) : "";
    try {
        files::WriteFile(path.string(), "new content\n");
        ADD_FAILURE() << path << " was written";
    } catch (const files::FileError& e) {
        EXPECT_EQ(e.Kind(), kind) << e.what();
        EXPECT_NE(std::string(e.what()).find(reason), std::string::npos) << e.what();
        const std::string what = e.what();
        EXPECT_TRUE(what.find(path.filename().string().substr(0, 20)) != std::string::npos ||
                    what.rfind(folder.string() + ": ", 0) == 0)
            << "the message names the file or its folder: " << what;
    }
    if (hadFile) {
        EXPECT_EQ(ReadFile(path), old);
    }
    EXPECT_EQ(hadFolder, fs::is_directory(folder, ec)) << "a folder was created";
    if (hadFolder) {
        EXPECT_EQ(Names(folder), before);
    }
}

}  // namespace

TEST(AtomicFile, AReplacedFileKeepsModeOwnerAndLinks) {
    TempDir dir;
    // Mode: a private drawing stays private.
    const fs::path secret = dir / "secret.dxf";
    WriteFile(secret, "old");
    ::chmod(secret.c_str(), 0600);
    files::WriteFile(secret.string(), "new");
    EXPECT_EQ(ReadFile(secret), "new");
    EXPECT_EQ(Stat(secret).st_mode & 07777, 0600u);

    // A new file gets 0666 less the umask.
    const mode_t mask = ::umask(027);
    files::WriteFile((dir / "fresh.txt").string(), "x");
    ::umask(mask);
    EXPECT_EQ(Stat(dir / "fresh.txt").st_mode & 07777, 0640u);

    // A symbolic link stays a link; the file it names is the one replaced.
    fs::create_directory(dir / "real");
    WriteFile(dir / "real/target.dxf", "old");
    fs::create_symlink("real/target.dxf", dir / "link.dxf");
    files::WriteFile((dir / "link.dxf").string(), "through the link");
    EXPECT_TRUE(fs::is_symlink(dir / "link.dxf"));
    EXPECT_EQ(ReadFile(dir / "real/target.dxf"), "through the link");

    // Run as the administrator, the file keeps its owner and group.
    if (::geteuid() == 0) {
        const fs::path owned = dir / "owned.dat";
        WriteFile(owned, "old");
        ASSERT_EQ(::chown(owned.c_str(), 4321, 4322), 0);
        files::WriteFile(owned.string(), "new");
        EXPECT_EQ(Stat(owned).st_uid, 4321u);
        EXPECT_EQ(Stat(owned).st_gid, 4322u);
    }
    // Nothing but the files themselves is left in the folders.
    EXPECT_EQ(Names(dir / "real"), std::set<std::string>{"target.dxf"});
    for (const auto& name : Names(dir.Path())) {
        EXPECT_NE(name.rfind(".qv~", 0), 0u) << name;
    }
}

TEST(AtomicFile, FilesThatCannotBeWrittenSafelyAreRefusedUntouched) {
    TempDir dir;
    // Several hard links: a rename would split the file from its other names.
    WriteFile(dir / "a.dxf", "shared");
    fs::create_hard_link(dir / "a.dxf", dir / "b.dxf");
    ExpectRefused(dir / "a.dxf", files::ErrorKind::HardLinked, "hard links");
    EXPECT_EQ(ReadFile(dir / "b.dxf"), "shared");

    // Read-only by its mode bits, whoever runs the program.
    WriteFile(dir / "ro.dat", "kept");
    ::chmod((dir / "ro.dat").c_str(), 0444);
    ExpectRefused(dir / "ro.dat", files::ErrorKind::ReadOnly, "read-only");

    fs::create_directory(dir / "locked");
    WriteFile(dir / "locked/f.dxf", "kept");
    ::chmod((dir / "locked").c_str(), 0555);
    ExpectRefused(dir / "locked/f.dxf", files::ErrorKind::ReadOnly, "folder is read-only");
    ExpectRefused(dir / "locked/new.dxf", files::ErrorKind::ReadOnly, "folder is read-only");
    ::chmod((dir / "locked").c_str(), 0755);

    // A missing folder is an error, never created.
    ExpectRefused(dir / "missing/f.dxf", files::ErrorKind::NotFound, "does not exist");

    // Not a file where the file belongs.
    fs::create_directory(dir / "folder.dxf");
    ExpectRefused(dir / "folder.dxf", files::ErrorKind::NotRegular, "folder");
    ASSERT_EQ(::mkfifo((dir / "pipe.dxf").c_str(), 0644), 0);
    ExpectRefused(dir / "pipe.dxf", files::ErrorKind::NotRegular, "FIFO");

    // Names the system cannot hold, and links that lead nowhere.
    ExpectRefused(dir / std::string(300, 'n'), files::ErrorKind::NameTooLong, "too long");
    fs::create_symlink("loop2", dir / "loop1");
    fs::create_symlink("loop1", dir / "loop2");
    ExpectRefused(dir / "loop1", files::ErrorKind::NotFound, "link loop");
}

TEST(AtomicFile, TheSuiteOwnFoldersAreCreatedOnRequest) {
    TempDir dir;
    files::WriteOptions options;
    options.createFolders = true;
    files::WriteFile((dir / "LocalData/deep/s.dat").string(), "x", options);
    EXPECT_EQ(ReadFile(dir / "LocalData/deep/s.dat"), "x");
}

TEST(AtomicFile, AWriterThatStopsLeavesTheOldFileAndNothingElse) {
    TempDir dir;
    const fs::path path = dir / "d.dxf";
    WriteFile(path, "old");
    {
        files::AtomicFile file(path.string());
        file.Write("half of it");
    }  // never committed
    EXPECT_EQ(ReadFile(path), "old");
    EXPECT_EQ(Names(dir.Path()), std::set<std::string>{"d.dxf"});

    // Killed in the middle of writing.
    const pid_t child = ::fork();
    if (child == 0) {
        files::AtomicFile file(path.string());
        file.Write(std::string(1 << 20, 'x'));
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(ReadFile(path), "old");
    EXPECT_EQ(Names(dir.Path()), std::set<std::string>{"d.dxf"});
}

TEST(AtomicFile, TemporariesOfProcessesThatAreGoneAreRemovedByTheNextWrite) {
    TempDir dir;
    // A pid no process has: past the system's largest.
    const std::string stale = ".qv~99999999~0badc0de~d.dxf";
    const std::string live = ".qv~1~0badc0de~d.dxf";  // init is always there
    WriteFile(dir / stale, "left by a crash");
    WriteFile(dir / live, "another process at work");
    WriteFile(dir / "user.qv~1.txt", "not ours");
    files::WriteFile((dir / "d.dxf").string(), "new");
    EXPECT_EQ(Names(dir.Path()), (std::set<std::string>{"d.dxf", live, "user.qv~1.txt"}));
}

TEST(AtomicFile, AFileChangedSinceItWasReadIsNotOverwritten) {
    TempDir dir;
    const fs::path path = dir / "d.dxf";
    WriteFile(path, "as read");
    files::WriteOptions options;
    options.expected = files::Identify(path.string());
    WriteFile(path.string() + ".other", "saved by another program");
    fs::rename(path.string() + ".other", path);
    try {
        files::WriteFile(path.string(), "ours", options);
        ADD_FAILURE() << "the other program's save was overwritten";
    } catch (const files::FileError& e) {
        EXPECT_EQ(e.Kind(), files::ErrorKind::ChangedOnDisk);
        EXPECT_NE(std::string(e.what()).find("changed on disk"), std::string::npos);
    }
    EXPECT_EQ(ReadFile(path), "saved by another program");
    EXPECT_EQ(Names(dir.Path()), std::set<std::string>{"d.dxf"});

    // Expected absent, created meanwhile: refused too.
    options.expected = files::Identify((dir / "new.dxf").string());
    WriteFile(dir / "new.dxf", "theirs");
    EXPECT_THROW(files::WriteFile((dir / "new.dxf").string(), "ours", options), files::FileError);
    EXPECT_EQ(ReadFile(dir / "new.dxf"), "theirs");
}

TEST(FileIdentity, OneFileWhateverItsSpelling) {
    TempDir dir;
    WriteFile(dir / "d.dxf", "x");
    WriteFile(dir / "other.dxf", "x");
    fs::create_symlink("d.dxf", dir / "sym.dxf");
    fs::create_hard_link(dir / "d.dxf", dir / "hard.dxf");
    const std::string d = (dir / "d.dxf").string();
    EXPECT_TRUE(files::SameFile(d, (dir.Path() / "." / "d.dxf").string()));
    EXPECT_TRUE(files::SameFile(d, (dir / "sym.dxf").string()));
    EXPECT_TRUE(files::SameFile(d, (dir / "hard.dxf").string()));
    EXPECT_FALSE(files::SameFile(d, (dir / "other.dxf").string()));
    EXPECT_FALSE(files::SameFile(d, (dir / "none.dxf").string()));
    // Two outputs not made yet, spelled differently.
    EXPECT_TRUE(
        files::SameFile((dir / "new.png").string(), (dir.Path() / "." / "new.png").string()));
    EXPECT_FALSE(files::SameFile((dir / "new.png").string(), (dir / "new.svg").string()));
    EXPECT_THROW(files::RefuseSameFile((dir / "sym.dxf").string(), d), files::FileError);
}

TEST(FileIdentity, AFifoOrFolderIsRefusedAtOnceWhenRead) {
    TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0644), 0);
    fs::create_directory(dir / "folder");
    ::alarm(10);  // a read that blocks on the FIFO fails the test instead of hanging it
    std::string bytes, error;
    EXPECT_FALSE(files::ReadWhole((dir / "pipe").string(), bytes, &error));
    EXPECT_NE(error.find("FIFO"), std::string::npos) << error;
    EXPECT_FALSE(files::ReadWhole((dir / "folder").string(), bytes, &error));
    EXPECT_NE(error.find("folder"), std::string::npos) << error;
    EXPECT_FALSE(files::ReadLines((dir / "pipe").string()));
    ::alarm(0);
}
