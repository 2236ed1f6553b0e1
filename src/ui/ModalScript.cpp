#include "ui/ModalScript.h"

#include <QDialog>

#include <deque>
#include <map>

namespace ui {

namespace {

std::map<std::string, std::deque<std::string>>& Kept() {
    static std::map<std::string, std::deque<std::string>> kept;
    return kept;
}

std::string& FirstError() {
    static std::string error;
    return error;
}

}  // namespace

void KeepModalLine(const std::string& kind, std::string line) {
    Kept()[kind].push_back(std::move(line));
}

void DropModalLines(const std::string& kind) {
    Kept().erase(kind);
}

void ClearModalLines() {
    Kept().clear();
    FirstError().clear();
}

std::string TakeModalError() {
    std::string error;
    error.swap(FirstError());
    return error;
}

bool RunModal(QDialog& window, const std::string& kind, const PlayLine& play) {
    std::deque<std::string> lines;
    lines.swap(Kept()[kind]);
    if (lines.empty()) {
        return window.exec() == QDialog::Accepted;
    }
    bool closed = false;
    const auto connection =
        QObject::connect(&window, &QDialog::finished, [&closed] { closed = true; });
    window.show();
    for (const std::string& line : lines) {
        if (closed) {
            break;
        }
        const std::string error = play(line);
        if (!error.empty()) {
            if (FirstError().empty()) {
                FirstError() = error;
            }
            break;
        }
    }
    if (!closed) {
        window.reject();
    }
    QObject::disconnect(connection);
    return window.result() == QDialog::Accepted;
}

}  // namespace ui
