#include "app/PlcRendalApp.h"

#include <algorithm>
#include <string>
#include <vector>

#include "app/CommandTable.h"
#include "app/PlcRendalMain.h"
#include "host/Host.h"

namespace app {

CPlcRendalApp::CPlcRendalApp() : unloadable_(true), mdiAware_(true) {}

AppResult CPlcRendalApp::EntryPoint(AppMessage message) {
    switch (message) {
        case AppMessage::InitApplication:
            return OnInitApplication();
        case AppMessage::UnloadApplication:
            return OnUnloadApplication();
        case AppMessage::LoadDocument:
        case AppMessage::UnloadDocument:
        case AppMessage::InvokeFunction:
            // The plug-in defines no functions for the host's script language: nothing to
            // define, undefine or dispatch.
        case AppMessage::Other:
            break;
    }
    return AppResult::Ok;
}

AppResult CPlcRendalApp::OnInitApplication() {
    unloadable_ = true;
    mdiAware_ = true;
    auto& current = host::Current();
    for (const auto& entry : CommandTable()) {
        // Every entry names its local name; a resource lookup would serve a null one.
        const char* localName = entry.localName ? entry.localName : entry.globalName;
        current.AddCommand(entry.groupName, entry.globalName, localName, entry.flags,
                           entry.handler);
    }
    return AppResult::Ok;
}

AppResult CPlcRendalApp::OnUnloadApplication() {
    std::vector<std::string> removed;
    for (const auto& entry : CommandTable()) {
        if (std::find(removed.begin(), removed.end(), entry.groupName) == removed.end()) {
            host::Current().RemoveGroup(entry.groupName);
            removed.emplace_back(entry.groupName);
        }
    }
    DestroyPluginDialogs();
    return AppResult::Ok;
}

}  // namespace app
