// The top of qvplc: what escapes a command becomes a message and an exit code of the table.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <stdexcept>

#include "ExitCodes.h"
#include "Messages.h"
#include "TopLevel.h"

namespace {

int GuardedWithStderr(const std::function<int()>& command, std::string& stderrText) {
    testing::internal::CaptureStderr();
    const int code = cli::Guarded(command);
    stderrText = testing::internal::GetCapturedStderr();
    return code;
}

TEST(TopLevelTest, WhateverEscapesIsReportedWithAnExitCode) {
    cli::SetCommandGroup("draw");
    std::string err;
    EXPECT_EQ(GuardedWithStderr([]() -> int { throw std::runtime_error("bad state"); }, err),
              cli::kExitInternal);
    EXPECT_EQ(err, "qvplc draw: internal error: bad state\n");
    EXPECT_EQ(GuardedWithStderr([]() -> int { throw 42; }, err), cli::kExitInternal);
    EXPECT_EQ(err, "qvplc draw: internal error: an unknown exception\n");
    EXPECT_EQ(GuardedWithStderr([]() -> int { throw std::bad_alloc(); }, err), cli::kExitInternal);
    EXPECT_EQ(err, "qvplc draw: internal error: out of memory\n");

    const std::string longName = "/tmp/" + std::string(300, 'y') + ".dxf";
    const auto tooLong = [&]() -> int {
        throw std::filesystem::filesystem_error("status", longName,
                                                std::make_error_code(std::errc::filename_too_long));
    };
    EXPECT_EQ(GuardedWithStderr(tooLong, err), cli::kExitCannotWrite);
    EXPECT_EQ(err, "qvplc draw: " + longName + ": File name too long\n");
    const auto busy = []() -> int {
        throw std::filesystem::filesystem_error(
            "lock", "/tmp/x.dxf", std::make_error_code(std::errc::resource_unavailable_try_again));
    };
    EXPECT_EQ(GuardedWithStderr(busy, err), cli::kExitLocked);
    EXPECT_EQ(GuardedWithStderr([] { return 3; }, err), 3);
    EXPECT_EQ(err, "");
    cli::SetCommandGroup("");
}

TEST(TopLevelTest, TheExitCodeTableIsOneListOfDistinctCodes) {
    size_t rows = 0;
    const cli::ExitCodeRow* table = cli::ExitCodeTable(rows);
    const std::string help = cli::ExitCodesHelp();
    std::set<int> codes;
    for (size_t i = 0; i < rows; ++i) {
        EXPECT_TRUE(codes.insert(table[i].code).second) << table[i].code;
        const std::string line = std::to_string(table[i].code) + "  " + table[i].meaning + "\n";
        EXPECT_NE(help.find(line), std::string::npos) << line;
    }
    for (int code :
         {cli::kExitOk, cli::kExitFailure, cli::kExitUsage, cli::kExitBadInput, cli::kExitCancelled,
          cli::kExitLocked, cli::kExitChanged, cli::kExitCannotWrite, cli::kExitNoServer,
          cli::kExitRevoked, cli::kExitInternal}) {
        EXPECT_EQ(codes.count(code), 1u) << code << " is not in the table";
    }
    EXPECT_EQ(codes.size(), 11u);
    EXPECT_EQ(cli::ExitCodeFor(cli::FileTrouble::InUse), cli::kExitLocked);
    EXPECT_EQ(cli::ExitCodeFor(cli::FileTrouble::ChangedOnDisk), cli::kExitChanged);
    EXPECT_EQ(cli::ExitCodeFor(cli::FileTrouble::Unreadable), cli::kExitBadInput);
    EXPECT_EQ(cli::ExitCodeFor(cli::FileTrouble::CannotWrite), cli::kExitCannotWrite);
}

}  // namespace
