// Where a drawn module came from, kept in the drawing so that it can be checked against the
// library and the list later: xdata "QV_BATCH_SOURCE" on the module's device label, string
// items "key=value" (tag, module, stamp, library, list, file, sheet) and the module's origin
// as two reals. The module's own entities are found through the links the module drawing
// writes (label -> data text, outlines, symbol references -> their texts).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cad/Database.h"

namespace batch {

inline constexpr const char* kAppSource = "QV_BATCH_SOURCE";

struct ModuleSource {
    std::string tag;
    std::string module;         // MANUFACTURER/SERIES/TYPE/CODE
    std::string stamp;          // the library's version stamp when drawn
    std::string libraryDigest;  // of the module's rows in the library
    std::string listDigest;     // of the list rows it was drawn from
    std::string listFile;
    std::string sheet;
    cad::Point3d origin;

    bool operator==(const ModuleSource&) const = default;
};

void WriteSource(cad::Database& db, cad::Handle label, const ModuleSource& source);
std::optional<ModuleSource> ReadSource(const cad::Database& db, const cad::Entity& label);

struct DrawnModule {
    cad::Handle label = cad::kNullHandle;
    ModuleSource source;
};
// Every module of model space that carries its source, in drawing order.
std::vector<DrawnModule> FindDrawnModules(const cad::Database& db);

// The module's own entities: the label, its data text, outlines, terminal symbol references
// and their number and description texts.
std::vector<cad::Handle> ModuleEntities(const cad::Database& db, cad::Handle label);

// The first line of the library's version stamp file, or "" when there is none.
std::string ReadLibraryStamp();

}  // namespace batch
