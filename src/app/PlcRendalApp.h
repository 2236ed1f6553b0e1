// The application object: answers the host's load and unload messages.
#pragma once

namespace app {

enum class AppMessage {
    InitApplication,
    UnloadApplication,
    LoadDocument,
    UnloadDocument,
    InvokeFunction,
    Other
};

enum class AppResult { Ok, Error };

class CPlcRendalApp {
public:
    CPlcRendalApp();
    virtual ~CPlcRendalApp() = default;

    // The host's entry: dispatches one message.
    AppResult EntryPoint(AppMessage message);

    bool IsUnloadable() const { return unloadable_; }
    bool IsMdiAware() const { return mdiAware_; }

private:
    AppResult OnInitApplication();
    AppResult OnUnloadApplication();

    bool unloadable_ = false;
    bool mdiAware_ = false;
};

}  // namespace app
