#include "batch/Check.h"

#include <map>
#include <sstream>

namespace batch {

std::string CheckedModule::Reasons() const {
    std::vector<std::string> reasons;
    if (libraryMissing) {
        reasons.emplace_back("module no longer in the library");
    } else if (libraryChanged) {
        reasons.emplace_back("library rows changed");
    }
    if (listMissing) {
        reasons.emplace_back("tag no longer in the list");
    } else if (listChanged) {
        reasons.emplace_back("list rows changed");
    }
    if (reasons.empty()) {
        return "in step";
    }
    std::string text = reasons[0];
    for (std::size_t i = 1; i < reasons.size(); ++i) {
        text += "; " + reasons[i];
    }
    return text;
}

std::vector<CheckedModule> CheckDrawing(const std::string& drawing, const cad::Database& db,
                                        const ModuleLookup& lookup, const Plan* plan) {
    std::map<std::string, const PlannedModule*> planned;
    if (plan != nullptr) {
        for (const PlannedSheet& sheet : plan->sheets) {
            for (const PlannedModule& module : sheet.modules) {
                planned[module.tag] = &module;
            }
        }
    }
    std::vector<CheckedModule> checked;
    for (const DrawnModule& drawn : FindDrawnModules(db)) {
        CheckedModule c{drawing, drawn.source};
        std::vector<std::string> parts;
        std::istringstream in(drawn.source.module);
        for (std::string part; std::getline(in, part, '/');) {
            parts.push_back(part);
        }
        const LibraryModule* module =
            parts.size() == 4 ? lookup(parts[0], parts[1], parts[2], parts[3]) : nullptr;
        c.libraryMissing = module == nullptr;
        c.libraryChanged =
            module != nullptr && LibraryDigest(*module) != drawn.source.libraryDigest;
        if (plan != nullptr) {
            const auto it = planned.find(drawn.source.tag);
            c.listMissing = it == planned.end();
            c.listChanged = !c.listMissing && (it->second->listDigest != drawn.source.listDigest ||
                                               it->second->module->Path() != drawn.source.module);
        }
        checked.push_back(std::move(c));
    }
    return checked;
}

}  // namespace batch
