#include "ProgressBar.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace cli {

ProgressBar::ProgressBar() : terminal_(isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
    if (drawn_) {
        std::fputc('\n', stderr);
    }
}

bool ProgressBar::Show(int percent) {
    if (percent == last_) {
        return false;
    }
    last_ = percent;
    if (!terminal_) {
        return true;
    }
    const int filled = percent * 40 / 100;
    std::fprintf(stderr, "\r[%s%s] %3d%%", std::string(filled, '#').c_str(),
                 std::string(40 - filled, ' ').c_str(), percent);
    std::fflush(stderr);
    drawn_ = true;
    return false;
}

}  // namespace cli
