// The desktop program end to end: the plug-in's commands typed into the command line, the
// drawing dialog asking for a drawing, the module placed with the mouse or typed points,
// compared with what qvplc draw makes of the same choices.
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "CommandLine.h"
#include "EntityTags.h"
#include "WindowFixture.h"
#include "app/PlcRendalMain.h"
#include "cad/Dxf.h"
#include "draw/DlgPlcRendal.h"
#include "view/DrawingView.h"

using namespace testing_support;
using desktop_test::PointText;
using desktop_test::WindowFixture;

namespace {

// The sequence numbers of the marked terminals, as qvplc draw's --terminals takes them.
std::string MarkedTerminals(const CDlgPlcRendal& dlg) {
    std::string list;
    for (int i = 0; i < dlg.termList.Count(); ++i) {
        if (IsMarked(dlg.termList.StateImage(i))) {
            list += (list.empty() ? "" : ",") + dlg.termList.Text(i, kColSequence);
        }
    }
    return list;
}

std::vector<std::string> FileEntityTags(const std::string& path) {
    return desktop_test::EntityTags(*cad::ReadDxfFile(path));
}

class DesktopWindow : public WindowFixture {};

}  // namespace

TEST_F(DesktopWindow, AModuleDraggedIntoPlaceIsWhatQvplcDrawMakesOfTheSameChoices) {
    OpenDialogOnSampleModule();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    const std::string before = MarkedTerminals(*dlg);
    Dialog("dialog mark 3 off");
    const std::string marked = MarkedTerminals(*dlg);
    EXPECT_NE(marked, before);
    Dialog("dialog press draw");
    EXPECT_TRUE(dlg->minimized);
    Then(ClickAt({420, 260}));
    ASSERT_TRUE(RunUntilIdle());
    ASSERT_EQ(clicked.size(), 1u);
    EXPECT_FALSE(dlg->drawPending);
    EXPECT_EQ(dlg->drawFinished, 1);
    EXPECT_TRUE(window->CurrentDocument().Modified());
    EXPECT_NE(window->windowTitle().indexOf("Drawing1.dxf*"), -1);

    // Saved through the command line, read back by the reader.
    const std::string saved = (local / "desk.dxf").string();
    ASSERT_EQ(window->TypeLine("SAVEAS " + saved), "");
    EXPECT_FALSE(window->CurrentDocument().Modified());
    EXPECT_NE(window->windowTitle().indexOf("desk.dxf - "), -1);
    const std::string reference = (local / "cli.dxf").string();
    std::string output;
    ASSERT_EQ(
        QvplcDraw("--terminals " + marked + " --at " + PointText(clicked[0]), reference, &output),
        0)
        << output;
    const auto ours = FileEntityTags(saved);
    const auto theirs = FileEntityTags(reference);
    EXPECT_EQ(desktop_test::EntityCounts(ours), desktop_test::EntityCounts(theirs));
    EXPECT_EQ(ours, theirs);
    EXPECT_NE(desktop_test::EntityCounts(ours).find("INSERT x"), std::string::npos);

    // Reopened from the recent files, the module is all there.
    ASSERT_EQ(window->TypeLine("NEW"), "");
    EXPECT_TRUE(desktop_test::EntityTags(window->CurrentDocument().Database()).empty())
        << window->Commands().PrintedText().toStdString();
    ASSERT_FALSE(window->Settings().RecentFiles().empty());
    ASSERT_TRUE(window->OpenFile(window->Settings().RecentFiles().front()));
    EXPECT_EQ(desktop_test::EntityTags(window->CurrentDocument().Database()), theirs);
}

TEST_F(DesktopWindow, ADividedDrawingWithClickedAndTypedPointsIsWhatQvplcDrawMakes) {
    OpenDialogOnSampleModule();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    Dialog("dialog mark 1 off");
    const std::string marked = MarkedTerminals(*dlg);
    const double p = dlg->termSpacing;
    Dialog("dialog press divided");
    // Each piece: its start by a click, its end typed; the first piece holds 5 places.
    Then(ClickAt({200, 200}));
    Then([this, p] { return TypePoint(clicked.at(0) + cad::Vector3d{6.5 * p, 0, 0})(); });
    Then(ClickAt({300, 500}));
    Then([this, p] { return TypePoint(clicked.at(1) + cad::Vector3d{30.5 * p, 0, 0})(); });
    ASSERT_TRUE(RunUntilIdle());
    ASSERT_EQ(clicked.size(), 2u);
    EXPECT_EQ(dlg->drawFinished, 1);
    const std::string saved = (local / "divided.dxf").string();
    ASSERT_TRUE(window->SaveAs(saved));

    const std::string pieces = " --pieces " + PointText(clicked[0]) + ":" +
                               PointText(clicked[0] + cad::Vector3d{6.5 * p, 0, 0}) + " --pieces " +
                               PointText(clicked[1]) + ":" +
                               PointText(clicked[1] + cad::Vector3d{30.5 * p, 0, 0});
    const std::string reference = (local / "cli-divided.dxf").string();
    std::string output;
    ASSERT_EQ(QvplcDraw("--terminals " + marked + pieces, reference, &output), 0) << output;
    EXPECT_EQ(FileEntityTags(saved), FileEntityTags(reference));
}

TEST_F(DesktopWindow, EscDuringTheDragLeavesTheDrawingAsItWas) {
    OpenDialogOnSampleModule();
    const auto before = desktop_test::EntityTags(window->CurrentDocument().Database());
    Dialog("dialog press draw");
    // The run's wait cursor gives way while the module follows the mouse.
    bool waitCursorWhilePointing = true;
    Then([&] {
        if (!window->Host().WaitingForInput()) {
            return false;
        }
        waitCursorWhilePointing = QApplication::overrideCursor() != nullptr;
        return true;
    });
    Then(PressEscape());
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_FALSE(waitCursorWhilePointing);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(desktop_test::EntityTags(window->CurrentDocument().Database()), before);
    EXPECT_NE(window->Commands().PrintedText().indexOf("选择插入点错误!"), -1);
    EXPECT_FALSE(g_pDlgPlcRendal->drawPending);
    EXPECT_NE(g_pDlgPlcRendal->drawFinished, 1);
}

TEST_F(DesktopWindow, APlugInMessageBoxShowsItsCaptionIconAndButtons) {
    OpenDialogOnSampleModule();
    Dialog("dialog set tag -");
    QString caption, text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QTimer watcher;
    QObject::connect(&watcher, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) {
            return;
        }
        watcher.stop();
        caption = box->windowTitle();
        text = box->text();
        icon = box->icon();
        buttons = box->standardButtons();
        box->button(QMessageBox::Ok)->click();
    });
    watcher.start(10);
    Dialog("dialog press draw");
    EXPECT_EQ(caption, "Zandrix");
    EXPECT_EQ(text, "请输入标号");
    EXPECT_EQ(icon, QMessageBox::Warning);
    EXPECT_EQ(buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    EXPECT_FALSE(g_pDlgPlcRendal->drawPending);
    EXPECT_FALSE(window->Host().HasPendingCommands());
}

TEST_F(DesktopWindow, ACommandStringCancelsTheCommandWaitingAndRunsAfterIt) {
    std::vector<std::string> seen;
    window->Host().AddCommand("T", "PICK", "PICK", 0, [&] {
        cad::Point3d base{1, 2, 0}, picked;
        const auto status = window->Host().GetPoint("\nPick:", &base, picked);
        seen.push_back(status == host::InputStatus::Cancel ? "PICK cancelled" : "PICK picked");
    });
    window->Host().AddCommand("T", "AFTER", "AFTER", 0, [&] { seen.push_back("AFTER"); });
    Then([&] {
        if (!window->Host().WaitingForInput()) {
            return false;
        }
        // Not a point: refused, and the request still waits.
        EXPECT_NE(window->TypeLine("AFTER"), "");
        EXPECT_TRUE(window->Host().WaitingForInput());
        window->Host().SendCommandString("(Command)\nAfter\n");
        return true;
    });
    // Typed from the event loop: the command waits for its point in a nested one.
    QTimer::singleShot(0, [&] { window->TypeLine("pick"); });
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(seen, (std::vector<std::string>{"PICK cancelled", "AFTER"}));
}

TEST_F(DesktopWindow, ABadDrawingIsReportedAndTheOpenOneKept) {
    OpenDialogOnSampleModule();
    Dialog("dialog press draw");
    Then(TypePoint({10, 10, 0}));
    ASSERT_TRUE(RunUntilIdle());
    const auto drawn = desktop_test::EntityTags(window->CurrentDocument().Database());
    ASSERT_FALSE(drawn.empty());
    const std::string bad = (local / "broken.dxf").string();
    WriteFile(bad, "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n1.0.0\n");
    std::vector<host::MessageBoxRequest> asked;
    window->Host().messageHook = [&](const host::MessageBoxRequest& request) {
        asked.push_back(request);
        // Keep the unsaved drawing aside without saving it.
        return std::optional<host::MsgResult>(request.buttons == host::MsgButtons::YesNoCancel
                                                  ? host::MsgResult::No
                                                  : host::MsgResult::Ok);
    };
    EXPECT_FALSE(window->OpenFile(bad));
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].text, "Save changes to Drawing1.dxf?");
    EXPECT_EQ(asked[1].caption, "Cannot open the drawing");
    // The reader's words: which file, which line, what was wrong with it.
    EXPECT_NE(asked[1].text.find("broken.dxf:8: "), std::string::npos) << asked[1].text;
    EXPECT_NE(asked[1].text.find("\"1.0.0\""), std::string::npos) << asked[1].text;
    EXPECT_EQ(desktop_test::EntityTags(window->CurrentDocument().Database()), drawn);
}

TEST_F(DesktopWindow, UnsavedWorkIsKeptWhenTheQuestionIsCancelled) {
    OpenDialogOnSampleModule();
    Dialog("dialog press draw");
    Then(TypePoint({0, 0, 0}));
    ASSERT_TRUE(RunUntilIdle());
    window->Host().messageHook = [](const host::MessageBoxRequest&) {
        return std::optional<host::MsgResult>(host::MsgResult::Cancel);
    };
    EXPECT_FALSE(window->NewDrawing());
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->CurrentDocument().Modified());
    EXPECT_FALSE(desktop_test::EntityTags(window->CurrentDocument().Database()).empty());
}

TEST_F(DesktopWindow, UnloadLeavesNoPlugInCommandAndNoDialog) {
    OpenDialogOnSampleModule();
    ASSERT_NE(g_pDlgPlcRendal, nullptr);
    window->UnloadPlugin();
    EXPECT_EQ(g_pDlgPlcRendal, nullptr);
    for (const auto& command : window->Host().Registry().Commands()) {
        EXPECT_EQ(command.group, "QVPLC_DESKTOP") << command.globalName;
    }
    EXPECT_EQ(window->Host().Registry().Find("PLCRENDAL"), nullptr);
    EXPECT_NE(window->TypeLine("PLCRENDAL"), "");
    EXPECT_NE(window->Host().Registry().Find("zoom"), nullptr);
}

TEST_F(DesktopWindow, TypingOverTheDrawingGoesToTheCommandLineAndUpRecallsEarlierLines) {
    QLineEdit* edit = window->Commands().Edit();
    window->View().setFocus();
    QTest::keyClicks(&window->View(), "zoom");
    QTest::keyClick(&window->View(), Qt::Key_Return);
    ASSERT_EQ(window->Commands().History().size(), 1u);
    EXPECT_EQ(window->Commands().History()[0], "zoom");
    EXPECT_NE(window->Commands().PrintedText().indexOf("Command: zoom"), -1);
    EXPECT_EQ(window->TypeLine("zoom x"), "");
    EXPECT_NE(window->Commands().PrintedText().indexOf("ZOOM takes E"), -1);
    EXPECT_NE(window->TypeLine("nosuch"), "");
    EXPECT_NE(window->Commands().PrintedText().indexOf("Unknown command \"nosuch\"."), -1);
    QTest::keyClick(edit, Qt::Key_Up);
    EXPECT_EQ(edit->text(), "nosuch");
    QTest::keyClick(edit, Qt::Key_Up);
    QTest::keyClick(edit, Qt::Key_Up);
    QTest::keyClick(edit, Qt::Key_Up);  // past the oldest: stays there
    EXPECT_EQ(edit->text(), "zoom");
    QTest::keyClick(edit, Qt::Key_Down);
    EXPECT_EQ(edit->text(), "zoom x");
    QTest::keyClick(edit, Qt::Key_Down);
    QTest::keyClick(edit, Qt::Key_Down);
    EXPECT_EQ(edit->text(), "");
}

TEST_F(DesktopWindow, TheSaveVersionFollowsTheHostSettingKeptInTheSettingsFile) {
    // As the plug-in would set it through the host interface.
    window->Host().SetEnvironment("DefaultFormatForSave", "24");
    EXPECT_EQ(window->Host().GetEnvironment("DefaultFormatForSave"), "24");
    EXPECT_NE(ReadFile(local / "desktop.conf").find("env.DefaultFormatForSave=24"),
              std::string::npos);
    const std::string path = (local / "r2004.dxf").string();
    ASSERT_EQ(window->TypeLine("SAVEAS " + path), "");
    EXPECT_NE(ReadFile(path).find("AC1018"), std::string::npos);
    EXPECT_EQ(window->Host().GetVariable("dwgname"), "r2004.dxf");
    EXPECT_EQ(window->Host().GetVariable("DWGTITLED"), "1");
    window->Host().SetEnvironment("DefaultFormatForSave", "8");
    ASSERT_TRUE(window->Save());
    EXPECT_NE(ReadFile(path).find("AC1014"), std::string::npos);
}

TEST_F(DesktopWindow, ALockedDrawingIsNotReplacedUntilUnlocked) {
    std::vector<host::MessageBoxRequest> asked;
    window->Host().messageHook = [&](const host::MessageBoxRequest& request) {
        asked.push_back(request);
        return std::optional<host::MsgResult>(host::MsgResult::Ok);
    };
    cad::Database* before = window->Host().WorkingDatabase();
    window->Host().LockDocument();
    EXPECT_FALSE(window->NewDrawing());
    EXPECT_EQ(window->Host().WorkingDatabase(), before);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].text, "The drawing is in use by a command; finish or cancel it first.");
    window->Host().UnlockDocument();
    window->Host().UnlockDocument();  // one unlock too many changes nothing
    EXPECT_EQ(window->Host().LockDepth(), 0);
    EXPECT_TRUE(window->NewDrawing());
    EXPECT_NE(window->Host().WorkingDatabase(), before);
}
