#include "CommandLine.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QVBoxLayout>

namespace desktop {
namespace {

constexpr int kPrintedLinesKept = 2000;
constexpr const char* kIdlePrompt = "Command:";

}  // namespace

CommandLine::CommandLine(QWidget* parent) : QWidget(parent) {
    output_ = new QPlainTextEdit(this);
    output_->setReadOnly(true);
    output_->setMaximumBlockCount(kPrintedLinesKept);
    output_->setFocusPolicy(Qt::NoFocus);
    output_->setObjectName("commandOutput");
    prompt_ = new QLabel(kIdlePrompt, this);
    edit_ = new QLineEdit(this);
    edit_->setObjectName("commandEdit");
    edit_->installEventFilter(this);
    auto* row = new QHBoxLayout;
    row->addWidget(prompt_);
    row->addWidget(edit_, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(output_, 1);
    layout->addLayout(row);
    connect(edit_, &QLineEdit::returnPressed, this, &CommandLine::Enter);
}

void CommandLine::Print(const QString& text) {
    // Appended as typed: a leading "\n" ends the line in progress, as on a CAD command line.
    QTextCursor cursor = output_->textCursor();
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
    output_->setTextCursor(cursor);
    output_->verticalScrollBar()->setValue(output_->verticalScrollBar()->maximum());
}

void CommandLine::SetPrompt(const QString& prompt) {
    const QString trimmed = prompt.trimmed();
    prompt_->setText(trimmed.isEmpty() ? QString(kIdlePrompt) : trimmed);
}

void CommandLine::Type(const QString& line) {
    edit_->setText(line);
    Enter();
}

QString CommandLine::PrintedText() const {
    return output_->toPlainText();
}

void CommandLine::Enter() {
    const QString line = edit_->text();
    edit_->clear();
    if (!line.trimmed().isEmpty() && (history_.empty() || history_.back() != line)) {
        history_.push_back(line);
    }
    historyIndex_ = static_cast<int>(history_.size());
    Print("\n" + prompt_->text() + " " + line);
    Q_EMIT lineEntered(line);
}

void CommandLine::Recall(int step) {
    if (history_.empty()) {
        return;
    }
    historyIndex_ = std::clamp(historyIndex_ + step, 0, static_cast<int>(history_.size()));
    edit_->setText(historyIndex_ < static_cast<int>(history_.size()) ? history_[historyIndex_]
                                                                     : QString());
}

bool CommandLine::eventFilter(QObject* watched, QEvent* event) {
    if (watched == edit_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            Recall(key == Qt::Key_Up ? -1 : 1);
            return true;
        }
        if (key == Qt::Key_Escape) {
            edit_->clear();
            Q_EMIT escapePressed();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace desktop
