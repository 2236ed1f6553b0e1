// Types the lines of a script into the main window one by one, each once the window is ready
// for it: no queued command string left to run, and no command busy unless it waits for a
// point (then the next line answers it).
#pragma once

#include <QObject>
#include <functional>
#include <string>
#include <vector>

namespace desktop {

class MainWindow;

// The lines of a script file, numbered from 1; false with `error` when it cannot be read.
struct ScriptLine {
    int number = 0;
    std::string text;
};
bool ReadScript(const std::string& path, std::vector<ScriptLine>& lines, std::string& error);

class ScriptRunner : public QObject {
    Q_OBJECT
public:
    // `done` gets "" when every line was taken, else the failure naming the line.
    ScriptRunner(MainWindow& window, std::string name, std::vector<ScriptLine> lines,
                 std::function<void(const std::string& failure)> done);
    void Start();

private:
    void Step();
    std::string Execute(const std::string& line);
    void Finish(const std::string& failure);

    MainWindow& window_;
    std::string name_;
    std::vector<ScriptLine> lines_;
    std::function<void(const std::string&)> done_;
    std::size_t next_ = 0;
    bool finished_ = false;
};

}  // namespace desktop
