#include "WindowFixture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include "CommandLine.h"
#include "app/PlcRendalMain.h"
#include "draw/DlgPlcRendal.h"
#include "ui/PluginEntry.h"
#include "view/DrawingView.h"

using namespace testing_support;

namespace desktop_test {

std::string PointText(const cad::Point3d& p) {
    char text[80];
    std::snprintf(text, sizeof text, "%.17g,%.17g", p.x, p.y);
    return text;
}

WindowFixture::WindowFixture()
    : localEnv("ZANDRIX_LOCAL_DIR", local.Path().string()),
      commonEnv("ZANDRIX_COMMON_DIR", CommonResDir().string()),
      styleEnv("ZANDRIX_INSTALL_STYLE", "0") {
    std::filesystem::create_directories(local / "PLC");
    std::filesystem::copy_file(BinaryDir() / "local" / "PLC" / "QvPLC.db",
                               local / "PLC" / "QvPLC.db");
    window = std::make_unique<desktop::MainWindow>((local / "desktop.conf").string());
    window->Settings().SetEnvironment("DefaultFormatForSave", "48");
    window->resize(900, 700);
    window->show();
    QApplication::processEvents();
    window->LoadedPlugin().Attach(QvPlcRendalEntry, QvPlcRendalDialogLine, QvPlcRendalDialogHelp);
    EXPECT_TRUE(window->LoadedPlugin().Initialise(window->Host()));
    QObject::connect(&window->View(), &desktop::DrawingView::pointClicked,
                     [this](cad::Point3d p) { clicked.push_back(p); });
}

WindowFixture::~WindowFixture() {
    window->UnloadPlugin();
    window.reset();
}

WindowFixture::Step WindowFixture::ClickAt(QPoint screen) {
    return [this, screen] {
        if (!window->Host().WaitingForInput()) {
            return false;
        }
        QTest::mouseMove(&window->View(), screen);
        QTest::mouseClick(&window->View(), Qt::LeftButton, {}, screen);
        return true;
    };
}

WindowFixture::Step WindowFixture::TypePoint(const cad::Point3d& point) {
    return [this, point] {
        if (!window->Host().WaitingForInput()) {
            return false;
        }
        QTest::keyClicks(window->Commands().Edit(), QString::fromStdString(PointText(point)));
        QTest::keyClick(window->Commands().Edit(), Qt::Key_Return);
        return true;
    };
}

WindowFixture::Step WindowFixture::PressEscape() {
    return [this] {
        if (!window->Host().WaitingForInput()) {
            return false;
        }
        QTest::keyClick(window->Commands().Edit(), Qt::Key_Escape);
        return true;
    };
}

void WindowFixture::Poll() {
    if (!steps_.empty() && steps_.front()()) {
        steps_.pop_front();
    }
}

bool WindowFixture::RunUntilIdle(int milliseconds) {
    QTimer poller;
    QObject::connect(&poller, &QTimer::timeout, [this] { Poll(); });
    poller.start(2);
    QElapsedTimer clock;
    clock.start();
    const desktop::QtHost& host = window->Host();
    while (clock.elapsed() < milliseconds) {
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        if (!host.Busy() && !host.HasPendingCommands() && steps_.empty()) {
            return true;
        }
    }
    return false;
}

void WindowFixture::Dialog(const std::string& line) {
    EXPECT_EQ(window->LoadedPlugin().RunDialogLine(line), "") << line;
}

void WindowFixture::OpenDialogOnSampleModule() {
    ASSERT_EQ(window->TypeLine("PLCRENDAL"), "");
    ASSERT_NE(g_pDlgPlcRendal, nullptr);
    // Through the dialog's view, as the mouse and keyboard would.
    Dialog(std::string("dialog select ") + kSampleModule);
    Dialog("dialog set tag A1");
    Dialog("dialog set frame 0");
    Dialog("dialog set slot 2");
    ASSERT_GT(g_pDlgPlcRendal->termList.Count(), 0);
}

int WindowFixture::QvplcDraw(const std::string& options, const std::string& drawing,
                             std::string* output) {
    const std::string command = "cd '" + local.Path().string() + "' && '" +
                                (BinaryDir() / "bin" / "qvplc").string() + "' draw '" +
                                kSampleModule + "' --tag A1 --frame 0 --slot 2 " + options +
                                " --drawing '" + drawing + "' 2>&1";
    return RunCommand(command, output);
}

}  // namespace desktop_test
