// From an I/O list to the modules to draw: each tag is one module, checked against the
// library (module, channels), given its addresses and terminal texts, and put on a sheet.
// Every fault is reported with its row and column; rows with faults are left out.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "batch/IoList.h"
#include "batch/Project.h"

namespace batch {

struct LibraryTerminal {
    std::string sequence, value, description, detail;
};

struct LibraryModule {
    std::string manufacturer, series, type, code;
    std::string shortName, points, moduleType, description;
    std::vector<LibraryTerminal> terminals;  // in the library's order

    std::string Path() const { return manufacturer + "/" + series + "/" + type + "/" + code; }
};

// The module with these four names, the library's way of comparing them (ASCII case
// ignored); null when there is none.
using ModuleLookup =
    std::function<const LibraryModule*(const std::string& manufacturer, const std::string& series,
                                       const std::string& type, const std::string& code)>;

struct PlannedChannel {
    int row = 0;       // the list row
    int terminal = 0;  // index into the module's terminals
    Kind kind = Kind::DI;
    std::string signal;
    std::string address;
    bool spare = false;
};

struct PlannedModule {
    std::string tag, rack, slot, sheet;
    long long rackNo = 0, slotNo = 0;
    const LibraryModule* module = nullptr;
    std::vector<PlannedChannel> channels;  // in terminal order
    // The texts the drawing gives each listed terminal, by sequence: description, detail.
    std::map<std::string, std::pair<std::string, std::string>> texts;
    std::string libraryDigest;  // of the module's rows in the library
    std::string listDigest;     // of what the list makes of it (rows, addresses, sheet)
    int firstRow = 0;
};

struct PlannedSheet {
    std::string name;
    std::string fileName;  // NAME.dxf, with characters a file name cannot hold replaced
    std::vector<PlannedModule> modules;  // in rack and slot order
};

struct Plan {
    std::vector<PlannedSheet> sheets;
    std::vector<ListError> errors;
    std::size_t ModuleCount() const;
};

// The plan points to the modules `lookup` gives: they must outlive it.
Plan MakePlan(const IoList& list, const Project& project, const ModuleLookup& lookup);

// A short hexadecimal digest of the fields (FNV-1a, 64 bits): enough to see that rows
// changed, not a protection against forgery.
std::string Digest(const std::vector<std::string>& fields);
std::string LibraryDigest(const LibraryModule& module);

}  // namespace batch
