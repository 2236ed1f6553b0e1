// The runs of the three drawing commands.
#pragma once

#include <string>

namespace app {

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
