// qvplc-desktop: the desktop host. See --help.
#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <filesystem>

#include "DesktopApp.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string error;
    const auto options = desktop::ParseOptions(args, error);
    if (!options) {
        std::fprintf(stderr, "qvplc-desktop: %s\n", error.c_str());
        return desktop::kExitUsage;
    }
    std::error_code ec;
    const std::string programDir =
        std::filesystem::read_symlink("/proc/self/exe", ec).parent_path().string();
    if (options->help) {
        std::fputs(desktop::HelpWithDialogLines(programDir).c_str(), stdout);
        return 0;
    }
    QApplication application(argc, argv);
    return desktop::RunDesktop(*options, programDir);
}
