// The desktop program's main window: the drawing view, the command line, the File menu with
// recent files, and the status bar with the cursor's world coordinates.
#pragma once

#include <QMainWindow>
#include <memory>
#include <string>

#include "DesktopSettings.h"
#include "Document.h"
#include "PluginLoader.h"

class QLabel;
class QMenu;

namespace desktop {

class CommandLine;
class DrawingView;
class QtHost;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(std::string settingsPath = DesktopSettings::DefaultPath());
    ~MainWindow() override;

    // Loads the plug-in and sends it the initialise message. False with `error` naming the
    // library and the loader's reason.
    bool LoadPlugin(const std::vector<std::string>& candidates, std::string& error);
    // Unload message, then the library is closed: no plug-in command stays registered.
    void UnloadPlugin();

    // File operations; each reports its own trouble. Open and New ask before dropping
    // unsaved work; false when that was declined or the file could not be read.
    bool OpenFile(const std::string& path);
    bool NewDrawing();
    bool Save();
    bool SaveAs(const std::string& path);
    // Asks whether to save unsaved work: false when the user chose to keep the window.
    bool MaySetAsideDrawing();

    Document& CurrentDocument() { return document_; }
    DesktopSettings& Settings() { return settings_; }
    QtHost& Host() { return *host_; }
    Plugin& LoadedPlugin() { return plugin_; }
    CommandLine& Commands() { return *commandLine_; }
    DrawingView& View() { return *view_; }

    // Types a line as the user would; "" when it was taken, else what was wrong.
    std::string TypeLine(const std::string& line);

Q_SIGNALS:
    // The window was closed for good (the user agreed to drop or save unsaved work).
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    // Typing while the drawing has the focus goes to the command line, as in a CAD window.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildMenus();
    void RegisterHostCommands();
    void DocumentChanged();
    void UpdateRecentMenu();
    void RememberRecent(const std::string& path);
    void ShowError(const std::string& caption, const std::string& text);
    std::string AskFileName(bool forSave);

    DesktopSettings settings_;
    Document document_;
    Plugin plugin_;
    DrawingView* view_ = nullptr;
    CommandLine* commandLine_ = nullptr;
    QLabel* coordinates_ = nullptr;
    QMenu* recentMenu_ = nullptr;
    std::unique_ptr<QtHost> host_;
    std::string lastLineError_;
};

}  // namespace desktop
