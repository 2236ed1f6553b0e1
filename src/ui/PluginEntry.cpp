#include "ui/PluginEntry.h"

#include <string>

#include "app/PlcRendalApp.h"
#include "host/Host.h"
#include "ui/Views.h"

namespace {

// The application object lives as long as the library is loaded.
app::CPlcRendalApp& Application() {
    static app::CPlcRendalApp application;
    return application;
}

}  // namespace

#define QV_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))

QV_PLUGIN_EXPORT int QvPlcRendalEntry(host::IHost* host, int message) {
    const auto appMessage = static_cast<app::AppMessage>(message);
    app::AppResult result = app::AppResult::Ok;
    switch (appMessage) {
        case app::AppMessage::InitApplication:
            if (host == nullptr) {
                return static_cast<int>(app::AppResult::Error);
            }
            host::Install(host);
            ui::InstallViews();
            result = Application().EntryPoint(appMessage);
            break;
        case app::AppMessage::UnloadApplication:
            // The commands go and the dialogs are destroyed first; their views go after them.
            result = Application().EntryPoint(appMessage);
            ui::RemoveViews();
            host::Install(nullptr);
            break;
        default:
            result = Application().EntryPoint(appMessage);
            break;
    }
    return static_cast<int>(result);
}

QV_PLUGIN_EXPORT const char* QvPlcRendalDialogLine(const char* line) {
    static std::string answer;
    answer = ui::RunDialogLine(line == nullptr ? "" : line);
    return answer.c_str();
}

QV_PLUGIN_EXPORT const char* QvPlcRendalDialogHelp() {
    static std::string help;
    help = ui::DialogLineHelp();
    return help.c_str();
}
