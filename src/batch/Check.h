// Whether the modules of a drawing are still in step with the library and the I/O list
// they were drawn from: the digests recorded when they were drawn against those of now.
#pragma once

#include <string>
#include <vector>

#include "batch/Plan.h"
#include "batch/Source.h"

namespace batch {

struct CheckedModule {
    std::string drawing;
    ModuleSource source;
    bool libraryChanged = false;  // the module's rows in the library differ
    bool libraryMissing = false;  // the library has the module no more
    bool listChanged = false;     // the list makes other texts of it now
    bool listMissing = false;     // the list names the tag no more (only with a list)

    bool OutOfStep() const {
        return libraryChanged || libraryMissing || listChanged || listMissing;
    }
    // "library rows changed; list rows changed", or "in step".
    std::string Reasons() const;
};

// Checks every module of `db` that carries its source. `plan` may be null: the list is then
// not checked.
std::vector<CheckedModule> CheckDrawing(const std::string& drawing, const cad::Database& db,
                                        const ModuleLookup& lookup, const Plan* plan);

}  // namespace batch
