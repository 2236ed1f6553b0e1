// The program around the main window: loads the plug-in, opens the drawing, runs the script,
// takes the screenshot and gives the exit code.
#pragma once

#include <string>

#include "Options.h"

namespace desktop {

inline constexpr int kExitFailure = 1;  // a script line, the plug-in or the screenshot failed
inline constexpr int kExitUsage = 2;

// The --help text with the dialog script lines of the plug-in found from `programDir`.
std::string HelpWithDialogLines(const std::string& programDir);

// Runs the window until it is closed (or the script is done, with --quit). Needs a
// QApplication. Returns the exit code.
int RunDesktop(const Options& options, const std::string& programDir);

}  // namespace desktop
