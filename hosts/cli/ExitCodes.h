// Exit codes of qvplc, the same for every subcommand.
#pragma once

namespace cli {

inline constexpr int kExitOk = 0;          // the command did what was asked
inline constexpr int kExitFailure = 1;     // it ran and failed; the reason was reported
inline constexpr int kExitUsage = 2;       // wrong subcommand, option or argument
inline constexpr int kExitBadInput = 3;    // an input file is missing, unreadable or malformed
inline constexpr int kExitCancelled = 4;   // a question or a point was declined or not answered

inline constexpr const char* kExitCodesHelp =
    "Exit codes:\n"
    "  0  success\n"
    "  1  the command ran and failed (the reason is printed on standard error)\n"
    "  2  usage error: unknown subcommand, option or argument\n"
    "  3  an input file is missing, unreadable or malformed\n"
    "  4  cancelled: a question was answered no, or a point was not given\n";

}  // namespace cli
