// Loads the plug-in's shared library, sends it the initialise and unload messages, and
// reaches the dialog script lines it exports.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {
class IHost;
}

namespace desktop {

// Where the plug-in is looked for, first first: $QVPLC_PLUGIN, beside the program, the
// installed ../<libdir>/qvplc/, then the build tree the program was built in.
std::vector<std::string> PluginCandidates(const std::string& programDir);

class Plugin {
public:
    Plugin() = default;
    ~Plugin();  // unloads
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // Opens the library and finds its entry. False with `error` naming the path and the
    // loader's reason.
    bool Load(const std::string& path, std::string& error);
    // Uses a plug-in linked into the program instead of a library (tests reach its dialogs
    // directly this way); Unload then only sends the unload message.
    void Attach(int (*entry)(host::IHost*, int), const char* (*dialogLine)(const char*),
                const char* (*dialogHelp)());
    // The first candidate that exists is loaded; false with `error` when none loads.
    bool LoadFirst(const std::vector<std::string>& candidates, std::string& error);
    // Sends the initialise-application message: the plug-in registers its commands.
    bool Initialise(host::IHost& host);
    // Sends the unload-application message (commands removed, dialogs destroyed) and closes
    // the library. Harmless when nothing is loaded.
    void Unload();

    bool Loaded() const { return entry_ != nullptr; }
    const std::string& Path() const { return path_; }
    // One "dialog ..." script line acted on by the plug-in's dialog views: "" when done.
    std::string RunDialogLine(std::string_view line) const;
    std::string DialogLineHelp() const;

private:
    void* handle_ = nullptr;
    std::string path_;
    int (*entry_)(host::IHost*, int) = nullptr;
    const char* (*dialogLine_)(const char*) = nullptr;
    const char* (*dialogHelp_)() = nullptr;
    bool initialised_ = false;
};

}  // namespace desktop
