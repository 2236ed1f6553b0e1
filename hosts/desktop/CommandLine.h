// The command line under the drawing: a print area for what commands say, the prompt, and
// an edit line with the history of typed lines (Up and Down).
#pragma once

#include <QWidget>
#include <string>
#include <vector>

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace desktop {

class CommandLine : public QWidget {
    Q_OBJECT
public:
    explicit CommandLine(QWidget* parent = nullptr);

    // Text as a CAD command line prints it: "\n" starts a new line.
    void Print(const QString& text);
    void SetPrompt(const QString& prompt);
    // Enters `line` as if typed and Enter pressed (scripts).
    void Type(const QString& line);
    QString PrintedText() const;
    QLineEdit* Edit() const { return edit_; }
    const std::vector<QString>& History() const { return history_; }

Q_SIGNALS:
    void lineEntered(const QString& line);
    void escapePressed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Enter();
    void Recall(int step);

    QPlainTextEdit* output_;
    QLabel* prompt_;
    QLineEdit* edit_;
    std::vector<QString> history_;
    int historyIndex_ = 0;  // history_.size() when not browsing
};

}  // namespace desktop
