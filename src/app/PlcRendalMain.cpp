#include "app/PlcRendalMain.h"

#include <filesystem>

#include "host/Host.h"
#include "host/SuiteServices.h"
#include "plclib/PlcLib.h"

namespace app {
namespace {

// Shows the wait cursor for the lifetime of a run.
class WaitCursor {
public:
    WaitCursor() { host::Current().SetWaitCursor(true); }
    ~WaitCursor() { host::Current().SetWaitCursor(false); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

std::string Format(const char* format, const std::string& value) {
    std::string text(format);
    text.replace(text.find("%s"), 2, value);
    return text;
}

}  // namespace

std::string LibraryPath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath);
}

void CPlcRendalMain::RunRendal() {
    WaitCursor wait;
    const std::string path = LibraryPath();
    if (!std::filesystem::exists(path)) {
        host::ShowMessage(Format("PLC元件数据库文件%s不存在", path), "Zandrix 消息",
                          host::MsgIcon::Error);
        return;
    }
    host::Current().ActivateMainWindow();
    CPlcLib library;
    library.Open(path);
}

void CPlcRendalMain::RunRendalFull() {
    WaitCursor wait;
    host::Current().ActivateMainWindow();
}

void CPlcRendalMain::RunDivRendal() {
    WaitCursor wait;
    host::Current().ActivateMainWindow();
}

void DestroyPluginDialogs() {}

}  // namespace app
