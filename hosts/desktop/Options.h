// The desktop program's command line: an optional drawing, a script of typed lines, a
// screenshot taken after the script, and whether to quit when it is done.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace desktop {

struct Options {
    std::string file;        // drawing to open at start; empty: a new drawing
    std::string commands;    // script file: one typed line per line
    std::string screenshot;  // PNG of the main window after the last script line
    bool quit = false;       // leave once the script (and screenshot) is done
    bool help = false;
};

// Null with `error` naming the offending argument.
std::optional<Options> ParseOptions(const std::vector<std::string>& args, std::string& error);

// The --help text; `dialogLines` lists the forms of "dialog ..." script lines.
std::string HelpText(std::string_view dialogLines);

}  // namespace desktop
