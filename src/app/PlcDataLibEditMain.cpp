#include "app/PlcDataLibEditMain.h"

#include "host/Host.h"
#include "host/SuiteServices.h"
#include "netlib/NetworkRuns.h"

namespace app {

void CPlcDataLibEditMain::Run() {
    // An ordinary network client may draw from the library but never edit it.
    if (suite::GetCurZandrixInstallStyle() == 2) {
        host::Print("普通客户端无运行此命令的权限！\n");
        return;
    }
    host::Current().ActivateMainWindow();
    if (suite::GetCurZandrixInstallStyle() == 1 &&
        netlib::RunEditorServerSteps() != netlib::ServerSteps::GoOn) {
        return;
    }
}

}  // namespace app
