// The runs of the three drawing commands.
#pragma once

#include <functional>
#include <string>

class CDlgPlcRendal;

// The one drawing dialog of the process: null until the first PLCRENDAL, and again after the
// dialog was closed or the plug-in unloaded.
extern CDlgPlcRendal* g_pDlgPlcRendal;

namespace app {

// Called with each drawing dialog whose window was just created, before its tree is built and
// it is shown: a desktop view attaches itself to the dialog here. Empty: no view.
extern std::function<void(CDlgPlcRendal&)> g_rendalWindowCreated;

class CPlcRendalMain {
public:
    virtual ~CPlcRendalMain() = default;
    void RunRendal();      // PLCRENDAL
    void RunRendalFull();  // RENDALFULL
    void RunDivRendal();   // DIVRENDAL
};

// local folder + "PLC/QvPLC.db"
std::string LibraryPath();

// Unload: destroys the drawing dialog, then the library editor, each only if it exists.
void DestroyPluginDialogs();

}  // namespace app
