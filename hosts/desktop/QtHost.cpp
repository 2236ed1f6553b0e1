#include "QtHost.h"

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QTimer>
#include <QWidget>
#include <cstdio>

#include "CommandLine.h"
#include "DesktopSettings.h"
#include "Document.h"
#include "PointText.h"
#include "view/DrawingView.h"

namespace desktop {
namespace {

QMessageBox::Icon ToQt(host::MsgIcon icon) {
    switch (icon) {
        case host::MsgIcon::Error:
            return QMessageBox::Critical;
        case host::MsgIcon::Exclamation:
            return QMessageBox::Warning;
        case host::MsgIcon::Question:
            return QMessageBox::Question;
        case host::MsgIcon::Information:
            return QMessageBox::Information;
        case host::MsgIcon::None:
            break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons ToQt(host::MsgButtons buttons) {
    switch (buttons) {
        case host::MsgButtons::Ok:
            return QMessageBox::Ok;
        case host::MsgButtons::OkCancel:
            return QMessageBox::Ok | QMessageBox::Cancel;
        case host::MsgButtons::YesNo:
            return QMessageBox::Yes | QMessageBox::No;
        case host::MsgButtons::YesNoCancel:
            return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

host::MsgResult FromQt(int button, host::MsgButtons buttons) {
    switch (button) {
        case QMessageBox::Ok:
            return host::MsgResult::Ok;
        case QMessageBox::Yes:
            return host::MsgResult::Yes;
        case QMessageBox::No:
            return host::MsgResult::No;
        default:
            // A box closed without a button: the answer that goes on with nothing.
            return buttons == host::MsgButtons::Ok      ? host::MsgResult::Ok
                   : buttons == host::MsgButtons::YesNo ? host::MsgResult::No
                                                        : host::MsgResult::Cancel;
    }
}

// What a script's box gets when no answer was queued: never consent.
host::MsgResult CautiousAnswer(host::MsgButtons buttons) {
    switch (buttons) {
        case host::MsgButtons::Ok:
            return host::MsgResult::Ok;
        case host::MsgButtons::YesNo:
            return host::MsgResult::No;
        default:
            return host::MsgResult::Cancel;
    }
}

QString FromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QtHost::QtHost(HostParts parts) : parts_(std::move(parts)) {
    if (parts_.view != nullptr) {
        connect(parts_.view, &DrawingView::pointClicked, this, &QtHost::OnPointClicked);
        connect(parts_.view, &DrawingView::escapePressed, this, &QtHost::Escape);
    }
    if (parts_.commandLine != nullptr) {
        connect(parts_.commandLine, &CommandLine::escapePressed, this, &QtHost::Escape);
    }
}

QtHost::~QtHost() {
    Answer(host::InputStatus::Cancel);
}

std::string QtHost::TypeLine(const std::string& text) {
    const std::string line = QString::fromStdString(text).trimmed().toStdString();
    if (WaitingForInput()) {
        if (const auto point = ParsePointText(line)) {
            Answer(host::InputStatus::Normal, *point);
            return {};
        }
        if (line == host::kCancelCommandLine) {
            Answer(host::InputStatus::Cancel);
            return {};
        }
        Print("\nGive a point as X,Y, click in the drawing, or press Esc to cancel.");
        return "'" + line + "' is not a point; give a point as X,Y";
    }
    if (line.empty() || line == host::kCancelCommandLine) {
        return {};
    }
    if (Busy()) {
        return "a command is still running; '" + line + "' was not run";
    }
    return RunCommand(line);
}

std::string QtHost::RunCommand(const std::string& line) {
    const auto space = line.find_first_of(" \t");
    const std::string name = line.substr(0, space);
    const host::RegisteredCommand* command = registry_.Find(name);
    if (command == nullptr) {
        Print("\nUnknown command \"" + name + "\".");
        return "unknown command '" + name + "'";
    }
    const std::string rest = space == std::string::npos
                                 ? std::string()
                                 : line.substr(line.find_first_not_of(" \t", space));
    ++runDepth_;
    const std::string previousArguments = arguments_;
    arguments_ = rest;
    registry_.Run(name);
    arguments_ = previousArguments;
    --runDepth_;
    AfterCommand();
    return {};
}

void QtHost::AfterCommand() {
    if (parts_.document != nullptr) {
        parts_.document->NoteChanges();
    }
    if (parts_.documentChanged) {
        parts_.documentChanged();
    }
    if (!Busy() && !pending_.empty()) {
        // The strings a command sent run once it has returned.
        RunPending();
    }
}

void QtHost::RunPending() {
    pendingScheduled_ = false;
    while (!Busy() && !pending_.empty()) {
        const std::string line = pending_.front();
        pending_.pop_front();
        if (line == host::kCancelCommandLine) {
            continue;
        }
        if (parts_.commandLine != nullptr) {
            parts_.commandLine->Print(QString("\nCommand: ") + FromUtf8(line));
        }
        RunCommand(line);
    }
}

void QtHost::SendCommandString(std::string_view text) {
    auto lines = host::CommandStringLines(text);
    if (lines.empty()) {
        return;
    }
    // The leading empty command call cancels a command waiting for input.
    if (lines.front() == host::kCancelCommandLine && WaitingForInput()) {
        Answer(host::InputStatus::Cancel);
    }
    pending_.insert(pending_.end(), lines.begin(), lines.end());
    if (!Busy() && !pendingScheduled_) {
        pendingScheduled_ = true;
        QTimer::singleShot(0, this, &QtHost::RunPending);
    }
}

void QtHost::Escape() {
    if (WaitingForInput()) {
        Print("\n*Cancel*");
        Answer(host::InputStatus::Cancel);
    }
}

void QtHost::OnPointClicked(const cad::Point3d& world) {
    if (WaitingForInput()) {
        Answer(host::InputStatus::Normal, world);
    }
}

void QtHost::Answer(host::InputStatus status, const cad::Point3d& point) {
    inputStatus_ = status;
    inputPoint_ = point;
    // No longer waiting from this moment: events handled before the loop returns (a script's
    // next line, a second click) must not answer again.
    QEventLoop* loop = inputLoop_;
    inputLoop_ = nullptr;
    if (loop != nullptr) {
        loop->exit();
    }
}

host::InputStatus QtHost::WaitForInput(std::string_view prompt, cad::Point3d& picked) {
    if (WaitingForInput()) {
        // One request at a time: a second one from inside the first cannot be answered.
        return host::InputStatus::Error;
    }
    Print(prompt);
    if (parts_.commandLine != nullptr) {
        parts_.commandLine->SetPrompt(FromUtf8(prompt));
    }
    // The run's wait cursor gives way while the user points, and comes back after.
    int waitCursors = 0;
    while (QApplication::overrideCursor() != nullptr) {
        QApplication::restoreOverrideCursor();
        ++waitCursors;
    }
    QEventLoop loop;
    inputLoop_ = &loop;
    inputStatus_ = host::InputStatus::Cancel;
    loop.exec();
    inputLoop_ = nullptr;
    for (int i = 0; i < waitCursors; ++i) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    }
    if (parts_.commandLine != nullptr) {
        parts_.commandLine->SetPrompt({});
    }
    if (inputStatus_ == host::InputStatus::Normal) {
        picked = inputPoint_;
    }
    return inputStatus_;
}

host::InputStatus QtHost::GetPoint(std::string_view prompt, const cad::Point3d* base,
                                   cad::Point3d& picked) {
    if (parts_.view != nullptr) {
        parts_.view->SetRubberBand(base ? std::optional<cad::Point3d>(*base) : std::nullopt);
    }
    const host::InputStatus status = WaitForInput(prompt, picked);
    if (parts_.view != nullptr) {
        parts_.view->SetRubberBand(std::nullopt);
    }
    return status;
}

host::InputStatus QtHost::Drag(cad::Handle entity, std::string_view prompt,
                               const host::DragTransform& transform, cad::Point3d& picked) {
    if (parts_.view != nullptr) {
        // The dragged reference was just added: the view learns of it before following it.
        parts_.view->DatabaseChanged();
        parts_.view->SetDragPreview(entity, transform);
    }
    const host::InputStatus status = WaitForInput(prompt, picked);
    if (parts_.view != nullptr) {
        parts_.view->ClearDragPreview();
    }
    return status;
}

void QtHost::Print(std::string_view text) {
    if (parts_.commandLine != nullptr) {
        parts_.commandLine->Print(FromUtf8(text));
    }
}

host::MsgResult QtHost::MessageBox(const host::MessageBoxRequest& request) {
    shownMessages.push_back(request);
    if (messageHook) {
        if (const auto answer = messageHook(request)) {
            return *answer;
        }
    }
    if (scripted) {
        host::MsgResult answer = CautiousAnswer(request.buttons);
        if (!scriptedAnswers.empty()) {
            answer = scriptedAnswers.front();
            scriptedAnswers.pop_front();
        }
        std::fprintf(stderr, "qvplc-desktop: [%s] %s\n", request.caption.c_str(),
                     request.text.c_str());
        Print("\n[" + request.caption + "] " + request.text);
        return answer;
    }
    QMessageBox box(ToQt(request.icon), FromUtf8(request.caption), FromUtf8(request.text),
                    ToQt(request.buttons), parts_.window);
    box.setObjectName("hostMessageBox");
    return FromQt(box.exec(), request.buttons);
}

void QtHost::SetWaitCursor(bool on) {
    if (on) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else if (QApplication::overrideCursor() != nullptr) {
        QApplication::restoreOverrideCursor();
    }
}

void QtHost::ActivateMainWindow() {
    if (parts_.window != nullptr) {
        parts_.window->raise();
        parts_.window->activateWindow();
    }
}

void QtHost::LockDocument() {
    ++lockDepth_;
}

void QtHost::UnlockDocument() {
    if (lockDepth_ > 0) {
        --lockDepth_;
    }
}

cad::Database* QtHost::WorkingDatabase() {
    return parts_.document != nullptr ? &parts_.document->Database() : nullptr;
}

std::string QtHost::GetVariable(std::string_view name) {
    return parts_.document != nullptr ? parts_.document->Variable(std::string(name))
                                      : std::string();
}

std::string QtHost::GetEnvironment(std::string_view name) {
    return parts_.settings != nullptr ? parts_.settings->Environment(std::string(name))
                                      : std::string();
}

void QtHost::SetEnvironment(std::string_view name, std::string_view value) {
    if (parts_.settings == nullptr) {
        return;
    }
    parts_.settings->SetEnvironment(std::string(name), std::string(value));
    std::string error;
    if (!parts_.settings->Save(error)) {
        Print("\n" + error);
    }
}

bool QtHost::AddCommand(std::string_view group, std::string_view globalName,
                        std::string_view localName, int flags, host::CommandHandler handler) {
    return registry_.Add(group, globalName, localName, flags, std::move(handler));
}

void QtHost::RemoveGroup(std::string_view group) {
    registry_.RemoveGroup(group);
}

}  // namespace desktop
