#include "app/CommandTable.h"

#include "app/PlcDataLibEditMain.h"
#include "app/PlcRendalMain.h"

namespace app {
namespace {

void OnPlcDataLibEdit() {
    CPlcDataLibEditMain run;
    run.Run();
}

void OnRendalFull() {
    CPlcRendalMain run;
    run.RunRendalFull();
}

void OnDivRendal() {
    CPlcRendalMain run;
    run.RunDivRendal();
}

void OnPlcRendal() {
    CPlcRendalMain run;
    run.RunRendal();
}

// The drawing-dialog command stands alone in a group whose name differs only in case.
constexpr CommandEntry kTable[] = {
    {"QvPlcRendal", "PlcDataLibEdit", "PlcDataLibEdit", kCmdTransparent, OnPlcDataLibEdit, nullptr,
     kNoResourceId},
    {"QvPlcRendal", "RENDALFULL", "RENDALFULL", kCmdTransparent, OnRendalFull, nullptr,
     kNoResourceId},
    {"QvPlcRendal", "DIVRENDAL", "DIVRENDAL", kCmdTransparent, OnDivRendal, nullptr, kNoResourceId},
    {"QVPLCRENDAL", "PLCRENDAL", "PLCRENDAL", kCmdTransparent, OnPlcRendal, nullptr, kNoResourceId},
};

}  // namespace

std::span<const CommandEntry> CommandTable() {
    return kTable;
}

}  // namespace app
