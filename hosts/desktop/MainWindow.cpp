#include "MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <cstdio>

#include "CommandLine.h"
#include "QtHost.h"
#include "view/DrawingView.h"

namespace desktop {
namespace {

constexpr const char* kHostGroup = "QVPLC_DESKTOP";
constexpr const char* kProgramCaption = "qvplc-desktop";
constexpr const char* kDxfFilter = "DXF drawings (*.dxf);;All files (*)";

QString Utf8(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

MainWindow::MainWindow(std::string settingsPath) : settings_(std::move(settingsPath)) {
    view_ = new DrawingView;
    view_->setObjectName("drawingView");
    view_->installEventFilter(this);
    commandLine_ = new CommandLine;
    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(view_);
    splitter->addWidget(commandLine_);
    splitter->setStretchFactor(0, 5);
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);
    coordinates_ = new QLabel(this);
    coordinates_->setObjectName("cursorCoordinates");
    statusBar()->addPermanentWidget(coordinates_);
    connect(view_, &DrawingView::cursorMoved, this, [this](cad::Point3d world) {
        coordinates_->setText(QString::asprintf("%.4f, %.4f", world.x, world.y));
    });

    host_ = std::make_unique<QtHost>(HostParts{this, commandLine_, view_, &document_, &settings_,
                                               [this] { DocumentChanged(); }});
    connect(commandLine_, &CommandLine::lineEntered, this,
            [this](const QString& line) { lastLineError_ = host_->TypeLine(line.toStdString()); });

    std::vector<std::string> warnings;
    settings_.Load(warnings);
    for (const auto& warning : warnings) {
        commandLine_->Print(Utf8("\n" + warning));
    }
    BuildMenus();
    RegisterHostCommands();
    view_->SetDatabase(&document_.Database());
    DocumentChanged();
    resize(1100, 760);
}

MainWindow::~MainWindow() {
    // The plug-in goes first: its unload removes commands from the host and closes its views.
    UnloadPlugin();
    view_->SetDatabase(nullptr);
}

bool MainWindow::LoadPlugin(const std::vector<std::string>& candidates, std::string& error) {
    if (!plugin_.LoadFirst(candidates, error)) {
        return false;
    }
    if (!plugin_.Initialise(*host_)) {
        error = "the plug-in " + plugin_.Path() + " refused to initialise";
        plugin_.Unload();
        return false;
    }
    return true;
}

void MainWindow::UnloadPlugin() {
    // Installed for the unload message: the plug-in talks to its host while it goes.
    plugin_.Unload();
}

void MainWindow::BuildMenus() {
    QMenu* file = menuBar()->addMenu("&File");
    file->addAction("&New", QKeySequence::New, this, [this] { NewDrawing(); });
    file->addAction("&Open...", QKeySequence::Open, this, [this] {
        if (const std::string path = AskFileName(false); !path.empty()) {
            OpenFile(path);
        }
    });
    file->addAction("&Save", QKeySequence::Save, this, [this] { Save(); });
    file->addAction("Save &As...", QKeySequence::SaveAs, this, [this] {
        if (const std::string path = AskFileName(true); !path.empty()) {
            SaveAs(path);
        }
    });
    recentMenu_ = file->addMenu("&Recent Files");
    file->addSeparator();
    file->addAction("&Quit", QKeySequence::Quit, this, [this] { close(); });
    QMenu* viewMenu = menuBar()->addMenu("&View");
    viewMenu->addAction("Zoom &Extents", this, [this] { view_->ZoomExtents(); });
    UpdateRecentMenu();
}

void MainWindow::RegisterHostCommands() {
    auto add = [this](const char* name, std::function<void()> handler) {
        host_->AddCommand(kHostGroup, name, name, 0, std::move(handler));
    };
    add("NEW", [this] { NewDrawing(); });
    add("OPEN", [this] {
        std::string path = host_->Arguments();
        if (path.empty()) {
            path = AskFileName(false);
        }
        if (!path.empty()) {
            OpenFile(path);
        }
    });
    add("SAVE", [this] { Save(); });
    add("SAVEAS", [this] {
        std::string path = host_->Arguments();
        if (path.empty()) {
            path = AskFileName(true);
        }
        if (!path.empty()) {
            SaveAs(path);
        }
    });
    add("QUIT", [this] { close(); });
    add("ZOOM", [this] {
        const std::string option = host_->Arguments();
        if (option.empty() || option == "E" || option == "e" || option == "Extents" ||
            option == "extents") {
            view_->ZoomExtents();
        } else {
            host_->Print("\nZOOM takes E (zoom to the extents of the drawing).");
        }
    });
}

std::string MainWindow::TypeLine(const std::string& line) {
    // Through the edit line, so that the line shows and joins the history as typed.
    lastLineError_.clear();
    commandLine_->Type(Utf8(line));
    return lastLineError_;
}

std::string MainWindow::AskFileName(bool forSave) {
    if (host_->scripted) {
        host_->Print("\nA file name is needed here: give it after the command.");
        return {};
    }
    const QString dir = document_.Titled() ? Utf8(document_.Variable("dwgprefix")) : QString();
    const QString path =
        forSave ? QFileDialog::getSaveFileName(this, "Save Drawing As", dir, kDxfFilter)
                : QFileDialog::getOpenFileName(this, "Open Drawing", dir, kDxfFilter);
    return path.toStdString();
}

bool MainWindow::MaySetAsideDrawing() {
    if (!document_.Modified()) {
        return true;
    }
    const host::MsgResult answer = host_->MessageBox(
        {"Save changes to " + document_.Variable("dwgname") + "?", kProgramCaption,
         host::MsgIcon::Question, host::MsgButtons::YesNoCancel});
    if (answer == host::MsgResult::Yes) {
        return Save();
    }
    return answer == host::MsgResult::No;
}

bool MainWindow::NewDrawing() {
    if (host_->LockDepth() > 0 || host_->WaitingForInput()) {
        ShowError(kProgramCaption,
                  "The drawing is in use by a command; finish or cancel it first.");
        return false;
    }
    if (!MaySetAsideDrawing()) {
        return false;
    }
    view_->SetDatabase(nullptr);
    document_.New();
    view_->SetDatabase(&document_.Database());
    DocumentChanged();
    return true;
}

bool MainWindow::OpenFile(const std::string& path) {
    if (host_->LockDepth() > 0 || host_->WaitingForInput()) {
        ShowError(kProgramCaption,
                  "The drawing is in use by a command; finish or cancel it first.");
        return false;
    }
    if (!MaySetAsideDrawing()) {
        return false;
    }
    view_->SetDatabase(nullptr);
    std::string error;
    const bool opened = document_.Open(path, error);
    view_->SetDatabase(&document_.Database());
    if (!opened) {
        // The drawing that was open stays open.
        ShowError("Cannot open the drawing", "Cannot open the drawing " + path + ":\n" + error);
        settings_.RemoveRecentFile(path);
    } else {
        RememberRecent(document_.Path());
        view_->ZoomExtents();
    }
    DocumentChanged();
    return opened;
}

bool MainWindow::Save() {
    if (!document_.Titled()) {
        const std::string path = AskFileName(true);
        return !path.empty() && SaveAs(path);
    }
    return SaveAs(document_.Path());
}

bool MainWindow::SaveAs(const std::string& path) {
    std::string error, note;
    const std::string format = settings_.Environment("DefaultFormatForSave");
    if (!document_.SaveAs(path, format, error, note)) {
        ShowError("Cannot save the drawing", "Cannot save the drawing " + path + ":\n" + error);
        return false;
    }
    if (!note.empty()) {
        host_->Print("\n" + note);
    }
    host_->Print("\nSaved " + document_.Path());
    RememberRecent(document_.Path());
    DocumentChanged();
    return true;
}

void MainWindow::ShowError(const std::string& caption, const std::string& text) {
    host_->MessageBox({text, caption, host::MsgIcon::Error, host::MsgButtons::Ok});
}

void MainWindow::RememberRecent(const std::string& path) {
    settings_.AddRecentFile(path);
    std::string error;
    if (!settings_.Save(error)) {
        host_->Print("\n" + error);
    }
    UpdateRecentMenu();
}

void MainWindow::UpdateRecentMenu() {
    recentMenu_->clear();
    for (const std::string& path : settings_.RecentFiles()) {
        recentMenu_->addAction(Utf8(path), this, [this, path] { OpenFile(path); });
    }
    recentMenu_->setEnabled(!settings_.RecentFiles().empty());
}

void MainWindow::DocumentChanged() {
    document_.NoteChanges();
    setWindowTitle(Utf8(document_.Title()) + " - " + kProgramCaption);
    view_->DatabaseChanged();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (host_->WaitingForInput()) {
        host_->Escape();
    }
    if (!MaySetAsideDrawing()) {
        event->ignore();
        return;
    }
    event->accept();
    Q_EMIT closed();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view_ && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool typing = !key->text().isEmpty() && key->text().at(0).isPrint() &&
                            key->key() != Qt::Key_Space &&
                            !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
        if (typing || key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            commandLine_->Edit()->setFocus();
            QApplication::sendEvent(commandLine_->Edit(), event);
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

}  // namespace desktop
