// The desktop program's own settings: the host settings the plug-in reads through the host
// interface (DefaultFormatForSave) and the recently opened drawings. One "name=value" line
// each, written whole through the atomic writer.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace desktop {

inline constexpr std::size_t kMaxRecentFiles = 8;

class DesktopSettings {
public:
    // $QVPLC_DESKTOP_SETTINGS, else $XDG_CONFIG_HOME/qvplc/desktop.conf, else
    // ~/.config/qvplc/desktop.conf.
    static std::string DefaultPath();

    explicit DesktopSettings(std::string path) : path_(std::move(path)) {}

    // A missing file gives defaults. Lines that mean nothing are passed over and named in
    // `warnings` ("FILE line N: ..."), so a damaged file never stops the program.
    void Load(std::vector<std::string>& warnings);
    // False with `error` when the file cannot be written; the old file is then kept whole.
    bool Save(std::string& error) const;

    // Host settings; an unknown name reads as empty text.
    std::string Environment(const std::string& name) const;
    void SetEnvironment(const std::string& name, const std::string& value);

    // Newest first, no duplicates, at most kMaxRecentFiles.
    const std::vector<std::string>& RecentFiles() const { return recent_; }
    void AddRecentFile(const std::string& path);
    void RemoveRecentFile(const std::string& path);

    const std::string& Path() const { return path_; }

private:
    std::string path_;
    std::map<std::string, std::string> environment_;
    std::vector<std::string> recent_;
};

}  // namespace desktop
