// The --help texts of the library's editing commands.
#pragma once

#include "Args.h"

namespace cli {

extern const CommandSpec kNewManufacturerSpec, kNewSeriesSpec, kNewTypeSpec, kNewModuleSpec,
    kRenameSpec, kDeleteSpec, kSetShortSpec, kSetModuleSpec, kFindSpec, kTermAppendSpec,
    kTermInsertSpec, kTermDeleteSpec, kTermChangeSpec, kTermReorderSpec, kEditScriptSpec;

}  // namespace cli
