// The run of the library-editor command, and the one editor it shows.
#pragma once

#include <functional>

#include "dialog/ModalRunner.h"

class CDlgDbImport;
class CDlgPlcDataLibEdit;

// The one library editor; null until the first run and again after the editor closes.
extern CDlgPlcDataLibEdit* g_pDlgPlcDataLibEdit;

namespace app {

// Gives the edited library back to the server and releases the editing lock (installation
// style 1): the network library's check-in unless a test puts something else in its place.
extern std::function<void()> g_checkInLibrary;

// What closing the editor ends with: the check-in in style 1, then the object and the
// pointer to it go. An editor made by hand over another library file closes the same way.
void OnLibraryEditorClosed(CDlgPlcDataLibEdit* dlg);

// Shows the import dialog the editor's import button opens (a view installs it); without
// one the button does nothing.
extern dialog::ModalRunner<CDlgDbImport> g_importRunner;

class CPlcDataLibEditMain {
public:
    virtual ~CPlcDataLibEditMain() = default;
    // Creates the editor when none is open, refreshes it and shows it.
    void Run();
};

// Destroys the editor on unload: its window first, and only if that succeeds the object.
void DestroyLibraryEditor();

}  // namespace app
