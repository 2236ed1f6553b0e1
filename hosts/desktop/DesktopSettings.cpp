#include "DesktopSettings.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "files/AtomicFile.h"
#include "files/FileError.h"
#include "files/TextFile.h"

namespace desktop {
namespace {

constexpr const char* kRecentKey = "recent";
constexpr const char* kEnvironmentPrefix = "env.";

}  // namespace

std::string DesktopSettings::DefaultPath() {
    if (const char* named = std::getenv("QVPLC_DESKTOP_SETTINGS"); named && *named) {
        return named;
    }
    std::filesystem::path base;
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config) {
        base = config;
    } else if (const char* home = std::getenv("HOME"); home && *home) {
        base = std::filesystem::path(home) / ".config";
    } else {
        base = ".";
    }
    return (base / "qvplc" / "desktop.conf").string();
}

void DesktopSettings::Load(std::vector<std::string>& warnings) {
    environment_.clear();
    recent_.clear();
    std::error_code ec;
    if (!std::filesystem::exists(path_, ec)) {
        return;
    }
    const auto lines = files::ReadLines(path_);
    if (!lines) {
        warnings.push_back(path_ + ": cannot be read; the defaults are used");
        return;
    }
    for (std::size_t i = 0; i < lines->size(); ++i) {
        const std::string& line = (*lines)[i];
        if (line.empty() || line.starts_with('#')) {
            continue;
        }
        const auto eq = line.find('=');
        const std::string where = path_ + " line " + std::to_string(i + 1) + ": ";
        if (eq == std::string::npos) {
            warnings.push_back(where + "'" + line + "' is not name=value; passed over");
            continue;
        }
        const std::string name = line.substr(0, eq), value = line.substr(eq + 1);
        if (name == kRecentKey) {
            if (recent_.size() < kMaxRecentFiles &&
                std::find(recent_.begin(), recent_.end(), value) == recent_.end()) {
                recent_.push_back(value);
            }
        } else if (name.starts_with(kEnvironmentPrefix) &&
                   name.size() > std::string_view(kEnvironmentPrefix).size()) {
            environment_[name.substr(std::string_view(kEnvironmentPrefix).size())] = value;
        } else {
            warnings.push_back(where + "unknown setting '" + name + "'; passed over");
        }
    }
}

bool DesktopSettings::Save(std::string& error) const {
    std::string text = "# qvplc-desktop settings\n";
    for (const auto& [name, value] : environment_) {
        text += kEnvironmentPrefix + name + "=" + value + "\n";
    }
    for (const auto& path : recent_) {
        text += std::string(kRecentKey) + "=" + path + "\n";
    }
    files::WriteOptions options;
    options.createFolders = true;
    try {
        files::WriteFile(path_, text, options);
    } catch (const std::exception& e) {
        error = "cannot write the settings " + path_ + ": " + e.what();
        return false;
    }
    return true;
}

std::string DesktopSettings::Environment(const std::string& name) const {
    const auto it = environment_.find(name);
    return it == environment_.end() ? std::string() : it->second;
}

void DesktopSettings::SetEnvironment(const std::string& name, const std::string& value) {
    // A value with a line feed would split into a line the next load passes over.
    if (name.find_first_of("=\n") != std::string::npos || value.find('\n') != std::string::npos) {
        return;
    }
    environment_[name] = value;
}

void DesktopSettings::AddRecentFile(const std::string& path) {
    if (path.empty() || path.find('\n') != std::string::npos) {
        return;
    }
    RemoveRecentFile(path);
    recent_.insert(recent_.begin(), path);
    if (recent_.size() > kMaxRecentFiles) {
        recent_.resize(kMaxRecentFiles);
    }
}

void DesktopSettings::RemoveRecentFile(const std::string& path) {
    std::erase(recent_, path);
}

}  // namespace desktop
