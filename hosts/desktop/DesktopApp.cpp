#include "DesktopApp.h"

#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QTimer>
#include <algorithm>
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

// Where a window of the program shows on the main window's picture: where it stands over
// the main window, or at the top right when the platform keeps no positions (offscreen).
QPoint PlaceOver(const QWidget& window, const QWidget& main, const QSize& picture) {
    QPoint at = window.frameGeometry().topLeft() - main.frameGeometry().topLeft();
    const QRect inside(QPoint(0, 0), picture - window.size());
    if (at == QPoint(0, 0) || !inside.contains(at)) {
        at = QPoint(std::max(0, picture.width() - window.width() - 12), 28);
    }
    return at;
}

// Saves the main window as it stands, with the plug-in's open dialogs over it; "" or what
// went wrong.
std::string TakeScreenshot(MainWindow& window, const std::string& path) {
    QApplication::processEvents();
    QPixmap picture = window.grab();
    if (picture.isNull()) {
        return "cannot take a screenshot of the window";
    }
    QPainter painter(&picture);
    for (QWidget* other : QApplication::topLevelWidgets()) {
        if (other == &window || !other->isVisible() || other->isMinimized() ||
            other->windowType() == Qt::Popup || other->windowType() == Qt::ToolTip) {
            continue;
        }
        painter.drawPixmap(PlaceOver(*other, window, picture.size()), other->grab());
    }
    painter.end();
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
    // The plug-in's dialogs are windows of their own: closing the main window ends the program.
    QObject::connect(&window, &MainWindow::closed, qApp, &QApplication::quit, Qt::QueuedConnection);
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
