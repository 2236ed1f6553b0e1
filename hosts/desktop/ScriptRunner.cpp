#include "ScriptRunner.h"

#include <QTimer>

#include "MainWindow.h"
#include "QtHost.h"
#include "files/TextFile.h"

namespace desktop {
namespace {

constexpr int kRetryMilliseconds = 5;

std::string Trim(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool Answer(const std::string& word, host::MsgResult& result) {
    const std::string upper = files::UpperAscii(word);
    if (upper == "YES") {
        result = host::MsgResult::Yes;
    } else if (upper == "NO") {
        result = host::MsgResult::No;
    } else if (upper == "OK") {
        result = host::MsgResult::Ok;
    } else if (upper == "CANCEL") {
        result = host::MsgResult::Cancel;
    } else {
        return false;
    }
    return true;
}

}  // namespace

bool ReadScript(const std::string& path, std::vector<ScriptLine>& lines, std::string& error) {
    const auto read = files::ReadLines(path);
    if (!read) {
        error = "cannot read the script " + path;
        return false;
    }
    for (std::size_t i = 0; i < read->size(); ++i) {
        const std::string text = Trim((*read)[i]);
        if (!text.empty() && !text.starts_with('#')) {
            lines.push_back({static_cast<int>(i + 1), text});
        }
    }
    return true;
}

ScriptRunner::ScriptRunner(MainWindow& window, std::string name, std::vector<ScriptLine> lines,
                           std::function<void(const std::string&)> done)
    : window_(window), name_(std::move(name)), lines_(std::move(lines)), done_(std::move(done)) {}

void ScriptRunner::Start() {
    window_.Host().scripted = true;
    QTimer::singleShot(0, this, &ScriptRunner::Step);
}

void ScriptRunner::Step() {
    if (finished_) {
        return;
    }
    QtHost& host = window_.Host();
    const bool waiting = host.WaitingForInput();
    if (!waiting && (host.Busy() || host.HasPendingCommands())) {
        QTimer::singleShot(kRetryMilliseconds, this, &ScriptRunner::Step);
        return;
    }
    if (next_ == lines_.size()) {
        if (waiting) {
            host.Escape();
            Finish(name_ + ": the script ended while a command was waiting for a point");
        } else {
            Finish({});
        }
        return;
    }
    const ScriptLine& line = lines_[next_++];
    // The next step is due before this line runs: a command it starts may wait for a point
    // in a nested event loop, and the next line is what answers it.
    QTimer::singleShot(0, this, &ScriptRunner::Step);
    if (const std::string error = Execute(line.text); !error.empty() && !finished_) {
        if (host.WaitingForInput()) {
            host.Escape();
        }
        Finish(name_ + " line " + std::to_string(line.number) + ": " + line.text + ": " + error);
    }
}

std::string ScriptRunner::Execute(const std::string& line) {
    const auto space = line.find(' ');
    const std::string word = files::UpperAscii(line.substr(0, space));
    const std::string rest = space == std::string::npos ? std::string() : Trim(line.substr(space));
    if (word == "ANSWER") {
        host::MsgResult result;
        if (!Answer(rest, result)) {
            return "answer takes yes, no, ok or cancel";
        }
        window_.Host().scriptedAnswers.push_back(result);
        return {};
    }
    if (word == "WAIT") {
        return {};
    }
    if (word == "DIALOG") {
        return window_.LoadedPlugin().RunDialogLine(line);
    }
    return window_.TypeLine(line);
}

void ScriptRunner::Finish(const std::string& failure) {
    if (finished_) {
        return;
    }
    finished_ = true;
    if (done_) {
        done_(failure);
    }
}

}  // namespace desktop
