// The progress of a long command on standard error: a bar redrawn in place on a terminal;
// for logs, one line per whole percent, worded by the command.
#pragma once

namespace cli {

class ProgressBar {
public:
    ProgressBar();
    ~ProgressBar();  // ends the bar's line
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // Shows `percent`. True when it is new and standard error is no terminal: the caller then
    // prints its own line for the log.
    bool Show(int percent);

private:
    bool terminal_;
    bool drawn_ = false;
    int last_ = -1;
};

}  // namespace cli
