// The network steps of the command runs: what the library editor's run and the drawing
// dialog's run do with the server before they open their dialog.
#pragma once

#include <string>

namespace netlib {

enum class ServerSteps {
    GoOn,      // the editor may open over the local library
    NoServer,  // the connection failed (reported by the connection)
    Declined,  // the user would not force the lock another host holds
    Failed,    // a transfer or the local lock file failed
};

// The editor run's server steps (installation style 1): connect, compare the stamps, fetch
// the server's library with its editing lock when the local copy is out of date, else take
// the lock by hand (asking before forcing another host's), then close. Anything but GoOn
// ends the run without opening the editor. `error`, when given, gets why the connection
// failed.
ServerSteps RunEditorServerSteps(std::string* error = nullptr);

// The drawing run's server step (installation styles 1 and 2): a missing local library is
// fetched from the server. A failed connection is silent; the run goes on either way.
void FetchMissingLibrary();

// Whether the library file is open on this machine: another connection holds a lock on it
// (a write lock cannot be taken at once). Stands in for the engine's lock file, which the
// runs delete when they can: a library open here cannot be "deleted" and stays as it is.
bool IsLibraryOpenHere(const std::string& path);

}  // namespace netlib
