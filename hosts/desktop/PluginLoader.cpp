#include "PluginLoader.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#include "app/PlcRendalApp.h"
#include "ui/PluginEntry.h"

namespace desktop {

std::vector<std::string> PluginCandidates(const std::string& programDir) {
    std::vector<std::string> candidates;
    if (const char* named = std::getenv("QVPLC_PLUGIN"); named != nullptr && *named != '\0') {
        // A library named on purpose is the only one tried: a silent fallback would hide
        // that it was not the one loaded.
        return {named};
    }
    const std::filesystem::path dir(programDir);
    candidates.push_back((dir / ui::kPluginFileName).string());
    candidates.push_back(
        (dir / ".." / "lib" / "qvplc" / ui::kPluginFileName).lexically_normal().string());
#ifdef QV_PLUGIN_BUILD_DIR
    candidates.push_back(std::string(QV_PLUGIN_BUILD_DIR) + "/" + ui::kPluginFileName);
#endif
    return candidates;
}

Plugin::~Plugin() {
    Unload();
}

bool Plugin::Load(const std::string& path, std::string& error) {
    Unload();
    // RTLD_LOCAL: the plug-in's own layers stay out of the program's symbol table.
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = dlerror();
        error = "cannot load the plug-in " + path + ": " + (reason ? reason : "unknown reason");
        return false;
    }
    auto* entry = reinterpret_cast<ui::PluginEntryFunction>(dlsym(handle, ui::kPluginEntryName));
    if (entry == nullptr) {
        const char* reason = dlerror();
        error = "the plug-in " + path + " has no entry " + ui::kPluginEntryName + ": " +
                (reason ? reason : "unknown reason");
        dlclose(handle);
        return false;
    }
    handle_ = handle;
    path_ = path;
    entry_ = entry;
    dialogLine_ =
        reinterpret_cast<const char* (*)(const char*)>(dlsym(handle, ui::kDialogLineEntryName));
    dialogHelp_ = reinterpret_cast<const char* (*)()>(dlsym(handle, ui::kDialogHelpEntryName));
    return true;
}

bool Plugin::LoadFirst(const std::vector<std::string>& candidates, std::string& error) {
    std::error_code ec;
    for (const auto& path : candidates) {
        if (candidates.size() == 1 || std::filesystem::exists(path, ec)) {
            return Load(path, error);
        }
    }
    error = "cannot find the plug-in " + std::string(ui::kPluginFileName) + "; looked in:";
    for (const auto& path : candidates) {
        error += " " + path;
    }
    error += " (set QVPLC_PLUGIN to its path)";
    return false;
}

bool Plugin::Initialise(host::IHost& host) {
    if (entry_ == nullptr) {
        return false;
    }
    initialised_ = entry_(&host, static_cast<int>(app::AppMessage::InitApplication)) ==
                   static_cast<int>(app::AppResult::Ok);
    return initialised_;
}

void Plugin::Attach(int (*entry)(host::IHost*, int), const char* (*dialogLine)(const char*),
                    const char* (*dialogHelp)()) {
    Unload();
    entry_ = entry;
    dialogLine_ = dialogLine;
    dialogHelp_ = dialogHelp;
    path_ = "(linked in)";
}

void Plugin::Unload() {
    if (entry_ == nullptr) {
        return;
    }
    if (initialised_) {
        entry_(nullptr, static_cast<int>(app::AppMessage::UnloadApplication));
        initialised_ = false;
    }
    if (handle_ != nullptr) {
        dlclose(handle_);
        handle_ = nullptr;
    }
    entry_ = nullptr;
    dialogLine_ = nullptr;
    dialogHelp_ = nullptr;
    path_.clear();
}

std::string Plugin::RunDialogLine(std::string_view line) const {
    if (dialogLine_ == nullptr) {
        return "the plug-in offers no dialog script lines";
    }
    const std::string text(line);
    return dialogLine_(text.c_str());
}

std::string Plugin::DialogLineHelp() const {
    return dialogHelp_ == nullptr ? std::string() : std::string(dialogHelp_());
}

}  // namespace desktop
