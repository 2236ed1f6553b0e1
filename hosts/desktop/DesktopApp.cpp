#include "DesktopApp.h"

#include <QApplication>
#include <QPixmap>
#include <QTimer>
#include <cstdio>
#include <memory>

#include "CommandLine.h"
#include "MainWindow.h"
#include "PluginLoader.h"
#include "QtHost.h"
#include "ScriptRunner.h"

namespace desktop {
namespace {

void Complain(const std::string& text) {
    std::fprintf(stderr, "qvplc-desktop: %s\n", text.c_str());
}

// Saves the main window as it stands; "" or what went wrong.
std::string TakeScreenshot(MainWindow& window, const std::string& path) {
    QApplication::processEvents();
    const QPixmap picture = window.grab();
    if (picture.isNull()) {
        return "cannot take a screenshot of the window";
    }
    if (!picture.save(QString::fromStdString(path), "PNG")) {
        return "cannot write the screenshot " + path;
    }
    return {};
}

}  // namespace

std::string HelpWithDialogLines(const std::string& programDir) {
    Plugin plugin;
    std::string error;
    std::string dialogLines;
    if (plugin.LoadFirst(PluginCandidates(programDir), error)) {
        dialogLines = plugin.DialogLineHelp();
    }
    return HelpText(dialogLines);
}

int RunDesktop(const Options& options, const std::string& programDir) {
    MainWindow window;
    window.show();
    const bool scripted = !options.commands.empty() || !options.screenshot.empty();
    window.Host().scripted = scripted;
    std::string error;
    if (!window.LoadPlugin(PluginCandidates(programDir), error)) {
        Complain(error);
        if (scripted) {
            return kExitFailure;
        }
        window.Commands().Print(QString::fromStdString("\n" + error));
        window.Host().MessageBox(
            {error, "qvplc-desktop", host::MsgIcon::Error, host::MsgButtons::Ok});
    }
    if (!options.file.empty() && !window.OpenFile(options.file) && scripted) {
        Complain("cannot open " + options.file);
        return kExitFailure;
    }
    std::vector<ScriptLine> lines;
    if (!options.commands.empty() && !ReadScript(options.commands, lines, error)) {
        Complain(error);
        return kExitUsage;
    }
    int exitCode = 0;
    std::unique_ptr<ScriptRunner> runner;
    if (scripted) {
        runner = std::make_unique<ScriptRunner>(
            window, options.commands.empty() ? "script" : options.commands, std::move(lines),
            [&](const std::string& failure) {
                if (!failure.empty()) {
                    Complain(failure);
                    window.Commands().Print(QString::fromStdString("\n" + failure));
                    exitCode = kExitFailure;
                }
                if (!options.screenshot.empty()) {
                    if (const std::string shot = TakeScreenshot(window, options.screenshot);
                        !shot.empty()) {
                        Complain(shot);
                        exitCode = kExitFailure;
                    }
                }
                if (options.quit) {
                    // Leaves without the question about unsaved work: the script said so.
                    QTimer::singleShot(0, qApp, [&] { QApplication::exit(exitCode); });
                } else {
                    window.Host().scripted = false;
                }
            });
        runner->Start();
    } else if (options.quit) {
        return 0;
    }
    const int code = QApplication::exec();
    window.UnloadPlugin();
    return options.quit ? exitCode : (code != 0 ? code : exitCode);
}

}  // namespace desktop
