// Drawing a planned I/O list: each module drawn whole by the drawing dialog, as a user would
// draw it (the module selected in the library tree, its terminal texts and tag typed in,
// the whole-module drawing run at its place on the sheet's grid), its source recorded on
// its device label, one drawing per sheet written through the atomic writer. With an
// update, only the modules whose library rows or list rows changed since they were drawn
// are drawn again, in place; everything else in the drawing stays as it was.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "batch/Plan.h"
#include "batch/Source.h"
#include "cad/Database.h"

class CDlgPlcRendal;

namespace batch {

// The library as the drawing dialog holds it, for planning and drawing.
class ModuleDrawer {
public:
    ModuleDrawer();
    ~ModuleDrawer();
    ModuleDrawer(const ModuleDrawer&) = delete;
    ModuleDrawer& operator=(const ModuleDrawer&) = delete;

    // Opens the dialog over the library; false when it cannot be opened (the dialog has
    // reported why).
    bool Open();
    ModuleLookup Lookup();
    // The module drawn whole with its origin at `at`; false when the dialog could not
    // select or draw it.
    bool Draw(const PlannedModule& module, cad::Database& db, const cad::Point3d& at,
              cad::Handle& label);
    // The length of a module along X, as drawn.
    double Width(const PlannedModule& module) const;
    CDlgPlcRendal& Dialog() { return *dlg_; }

private:
    std::unique_ptr<CDlgPlcRendal> dlg_;
    std::map<std::string, std::unique_ptr<LibraryModule>> modules_;
    std::map<std::string, std::string> shortNames_;
};

enum class Action { Drawn, Redrawn, Kept, Failed };
const char* ActionName(Action action);

struct DrawnEntry {
    std::string sheet, file, tag, module, rack, slot;
    cad::Point3d origin;
    std::size_t channels = 0;
    Action action = Action::Drawn;
};

struct SetOptions {
    std::string outDir;
    std::string listFile;  // as recorded in the drawings
    std::string saveFormat = "48";
    bool update = false;
    std::function<void(std::size_t done, std::size_t total)> progress;
};

struct SetResult {
    std::vector<DrawnEntry> entries;
    std::vector<std::string> written;  // drawing files written
    std::vector<std::string> errors;   // drawings that could not be read or drawn
};

// Draws (or with options.update brings up to date) one drawing per sheet of `plan` in
// options.outDir. FileError when a drawing cannot be written.
SetResult DrawSet(ModuleDrawer& drawer, const Plan& plan, const Project& project,
                  const SetOptions& options);

// The report of a drawing set as CSV: sheet,file,tag,module,rack,slot,x,y,channels,action.
std::string ReportCsv(const std::vector<DrawnEntry>& entries);

}  // namespace batch
