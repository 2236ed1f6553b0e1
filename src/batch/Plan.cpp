#include "batch/Plan.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>

#include "batch/Addressing.h"
#include "files/TextFile.h"

namespace batch {

namespace {

bool ParseIndex(const std::string& text, long long& value) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos ||
        text.size() > 9) {
        return false;
    }
    value = std::atoll(text.c_str());
    return true;
}

std::vector<std::string> SplitPath(const std::string& path) {
    std::vector<std::string> parts;
    std::istringstream in(path);
    std::string part;
    while (std::getline(in, part, '/')) {
        parts.push_back(part);
    }
    if (!path.empty() && path.back() == '/') {
        parts.emplace_back();
    }
    return parts;
}

std::string FileNameFor(const std::string& sheet) {
    std::string name;
    for (const char c : sheet) {
        const auto u = static_cast<unsigned char>(c);
        name += (u < 0x20 || std::string_view("/\\:*?\"<>| ").find(c) != std::string_view::npos)
                    ? '_'
                    : c;
    }
    if (name.empty() || name[0] == '.') {
        name.insert(0, "sheet");
    }
    return name;
}

// Builds the modules of the list, one per tag, reporting each row's faults.
class Planner {
public:
    Planner(const IoList& list, const Project& project, const ModuleLookup& lookup)
        : list_(list), project_(project), lookup_(lookup) {}

    Plan Run();

private:
    void Fault(const IoRow& row, Column column, const std::string& message) {
        plan_.errors.push_back({list_.file, row.row, ColumnName(column), message});
    }
    bool AddRow(const IoRow& row);
    bool Place(const IoRow& row, PlannedModule& module);
    bool FindChannel(const IoRow& row, const LibraryModule& module, int& terminal);
    bool KindOf(const IoRow& row, const LibraryModule& module, Kind& kind);
    void Address(std::vector<PlannedModule*>& ordered);
    void Finish(PlannedModule& module);
    void Sheets(std::vector<PlannedModule*>& ordered);

    const IoList& list_;
    const Project& project_;
    const ModuleLookup& lookup_;
    Plan plan_;
    std::vector<PlannedModule> modules_;  // in the order of their first rows
    std::map<std::string, std::size_t> byTag_;
    std::map<std::pair<long long, long long>, std::size_t> bySlot_;
    std::map<std::pair<std::size_t, int>, int> channelRow_;  // (module, terminal) -> row
    std::map<const LibraryModule*, std::optional<Kind>> kindOfType_;
};

bool Planner::KindOf(const IoRow& row, const LibraryModule& module, Kind& kind) {
    if (!row[Column::Kind].empty()) {
        if (!ParseKind(row[Column::Kind], kind)) {
            Fault(row, Column::Kind, "'" + row[Column::Kind] + "' is not one of DI, DO, AI, AO");
            return false;
        }
        return true;
    }
    // The same module type answers the same kind: asked once per module.
    auto [known, added] = kindOfType_.try_emplace(&module);
    if (added) {
        known->second = project_.KindOfType(module.moduleType);
    }
    if (known->second) {
        kind = *known->second;
        return true;
    }
    Fault(row, Column::Kind,
          "module " + module.code + " has the signal type '" + module.moduleType +
              "', which is no single kind: give the row's kind (DI, DO, AI or AO) in a kind "
              "column, or map the type with kind." +
              module.moduleType + " = ... in the project file");
    return false;
}

bool Planner::FindChannel(const IoRow& row, const LibraryModule& module, int& terminal) {
    const std::string& channel = row[Column::Channel];
    if (channel.empty()) {
        Fault(row, Column::Channel, "no channel given");
        return false;
    }
    const bool bySequence = channel[0] == '#';
    const std::string key = bySequence ? channel.substr(1) : channel;
    for (std::size_t i = 0; i < module.terminals.size(); ++i) {
        const LibraryTerminal& t = module.terminals[i];
        if ((bySequence ? t.sequence : t.value) == key) {
            terminal = static_cast<int>(i);
            return true;
        }
    }
    Fault(row, Column::Channel,
          "module " + module.code + " has no terminal " +
              (bySequence ? "with sequence " + key : "'" + channel + "'"));
    return false;
}

bool Planner::Place(const IoRow& row, PlannedModule& module) {
    bool ok = true;
    if (!ParseIndex(row[Column::Rack], module.rackNo)) {
        Fault(row, Column::Rack, "'" + row[Column::Rack] + "' is not a rack number (0, 1, 2, ...)");
        ok = false;
    }
    if (!ParseIndex(row[Column::Slot], module.slotNo)) {
        Fault(row, Column::Slot, "'" + row[Column::Slot] + "' is not a slot number (0, 1, 2, ...)");
        ok = false;
    }
    const auto parts = SplitPath(row[Column::Module]);
    if (parts.size() != 4 || parts[0].empty() || parts[3].empty()) {
        Fault(row, Column::Module,
              "'" + row[Column::Module] + "' is not MANUFACTURER/SERIES/TYPE/CODE");
        return false;
    }
    module.module = lookup_(parts[0], parts[1], parts[2], parts[3]);
    if (module.module == nullptr) {
        Fault(row, Column::Module, "the library has no module " + row[Column::Module]);
        return false;
    }
    return ok;
}

bool Planner::AddRow(const IoRow& row) {
    if (row[Column::Tag].empty()) {
        Fault(row, Column::Tag, "no tag given");
        return false;
    }
    const std::string& tag = row[Column::Tag];
    std::size_t index = 0;
    if (const auto it = byTag_.find(tag); it != byTag_.end()) {
        index = it->second;
        const PlannedModule& m = modules_[index];
        for (const Column c : {Column::Rack, Column::Slot, Column::Module, Column::Sheet}) {
            const std::string& first = c == Column::Rack     ? m.rack
                                       : c == Column::Slot   ? m.slot
                                       : c == Column::Module ? m.module->Path()
                                                             : m.sheet;
            const bool same = c == Column::Module
                                  ? files::UpperAscii(first) == files::UpperAscii(row[c])
                                  : first == row[c];
            if (!same) {
                Fault(row, c,
                      "'" + row[c] + "' differs from row " + std::to_string(m.firstRow) +
                          ", where tag " + tag + " has '" + first + "'");
                return false;
            }
        }
    } else {
        PlannedModule module;
        module.tag = tag;
        module.rack = row[Column::Rack];
        module.slot = row[Column::Slot];
        module.sheet = row[Column::Sheet];
        module.firstRow = row.row;
        if (!Place(row, module)) {
            return false;
        }
        const auto slot = std::make_pair(module.rackNo, module.slotNo);
        if (const auto taken = bySlot_.find(slot); taken != bySlot_.end()) {
            const PlannedModule& other = modules_[taken->second];
            Fault(row, Column::Slot,
                  "rack " + module.rack + ", slot " + module.slot + " already holds " + other.tag +
                      " (row " + std::to_string(other.firstRow) + ")");
            return false;
        }
        index = modules_.size();
        byTag_[tag] = index;
        bySlot_[slot] = index;
        modules_.push_back(std::move(module));
    }
    PlannedModule& module = modules_[index];
    PlannedChannel channel;
    channel.row = row.row;
    if (!FindChannel(row, *module.module, channel.terminal) ||
        !KindOf(row, *module.module, channel.kind)) {
        return false;
    }
    const auto key = std::make_pair(index, channel.terminal);
    if (const auto seen = channelRow_.find(key); seen != channelRow_.end()) {
        Fault(row, Column::Channel,
              "channel " + row[Column::Channel] + " of " + tag + " is listed already in row " +
                  std::to_string(seen->second));
        return false;
    }
    channelRow_[key] = row.row;
    channel.signal = row[Column::Signal];
    channel.address = row[Column::Address];
    channel.spare = project_.IsSpare(channel.signal);
    module.channels.push_back(std::move(channel));
    return true;
}

// Each kind counts on through the modules in rack and slot order; a slot start in the
// project sets the count for its module.
void Planner::Address(std::vector<PlannedModule*>& ordered) {
    long long next[kKindCount];
    std::copy(std::begin(project_.start), std::end(project_.start), next);
    for (PlannedModule* module : ordered) {
        std::sort(module->channels.begin(), module->channels.end(),
                  [](const PlannedChannel& a, const PlannedChannel& b) {
                      return a.terminal < b.terminal;
                  });
        const auto slotStart = project_.slotStart.find({module->rackNo, module->slotNo});
        for (int k = 0; k < kKindCount; ++k) {
            const Kind kind = static_cast<Kind>(k);
            long long listed = 0;
            for (const PlannedChannel& c : module->channels) {
                listed += c.kind == kind ? 1 : 0;
            }
            if (listed == 0) {
                continue;
            }
            long long start = slotStart != project_.slotStart.end() ? slotStart->second : next[k];
            long long index = 0;
            for (PlannedChannel& c : module->channels) {
                if (c.kind == kind) {
                    if (c.address.empty()) {
                        c.address = FormatAddress(project_, kind, start, index);
                    }
                    ++index;
                }
            }
            // A module of one kind keeps room for all its points; spare channels at the end
            // are gaps in the count as listed spares are.
            long long points = 0;
            const auto single = project_.KindOfType(module->module->moduleType);
            if (project_.reservePoints && single && *single == kind &&
                ParseIndex(module->module->points, points)) {
                listed = std::max(listed, points);
            }
            next[k] = start + BlockSize(project_, kind, listed);
        }
    }
}

void Planner::Finish(PlannedModule& module) {
    std::vector<std::string> fields = {module.tag, module.rack, module.slot, module.module->Path(),
                                       module.sheet};
    for (const PlannedChannel& c : module.channels) {
        const LibraryTerminal& t = module.module->terminals[c.terminal];
        std::string signal = c.spare ? std::string() : c.signal;
        std::string description = c.address, detail = signal;
        if (project_.addressInDetail) {
            std::swap(description, detail);
        }
        module.texts[t.sequence] = {description, detail};
        fields.insert(fields.end(), {t.sequence, KindName(c.kind), description, detail});
    }
    module.listDigest = Digest(fields);
    module.libraryDigest = LibraryDigest(*module.module);
}

void Planner::Sheets(std::vector<PlannedModule*>& ordered) {
    std::map<std::string, std::size_t> sheetOf;
    std::set<std::string> fileNames;
    int unnamed = 0;
    for (PlannedModule* module : ordered) {
        if (module->sheet.empty()) {
            const int number = unnamed++ / project_.modulesPerSheet + 1;
            char name[32];
            std::snprintf(name, sizeof name, "sheet-%02d", number);
            module->sheet = name;
        }
        auto [it, added] = sheetOf.emplace(module->sheet, plan_.sheets.size());
        if (added) {
            PlannedSheet sheet;
            sheet.name = module->sheet;
            std::string base = FileNameFor(sheet.name), file = base + ".dxf";
            for (int n = 2; !fileNames.insert(files::UpperAscii(file)).second; ++n) {
                file = base + "-" + std::to_string(n) + ".dxf";
            }
            sheet.fileName = file;
            plan_.sheets.push_back(std::move(sheet));
        }
        plan_.sheets[it->second].modules.push_back(std::move(*module));
    }
}

Plan Planner::Run() {
    plan_.errors = list_.errors;
    if (!list_.errors.empty()) {
        return std::move(plan_);
    }
    for (const IoRow& row : list_.rows) {
        AddRow(row);
    }
    std::vector<PlannedModule*> ordered;
    for (PlannedModule& module : modules_) {
        if (!module.channels.empty()) {
            ordered.push_back(&module);
        }
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto* a, const auto* b) {
        return std::make_pair(a->rackNo, a->slotNo) < std::make_pair(b->rackNo, b->slotNo);
    });
    Address(ordered);
    for (PlannedModule* module : ordered) {
        Finish(*module);
    }
    Sheets(ordered);
    return std::move(plan_);
}

}  // namespace

std::size_t Plan::ModuleCount() const {
    std::size_t count = 0;
    for (const PlannedSheet& sheet : sheets) {
        count += sheet.modules.size();
    }
    return count;
}

Plan MakePlan(const IoList& list, const Project& project, const ModuleLookup& lookup) {
    return Planner(list, project, lookup).Run();
}

std::string Digest(const std::vector<std::string>& fields) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const std::string& field : fields) {
        for (const char c : field) {
            hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        }
        hash = (hash ^ 0x1F) * 1099511628211ULL;  // a field ends: "ab","c" differs from "a","bc"
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

std::string LibraryDigest(const LibraryModule& module) {
    std::vector<std::string> fields = {module.Path(), module.shortName, module.points,
                                       module.moduleType, module.description};
    for (const LibraryTerminal& t : module.terminals) {
        fields.insert(fields.end(), {t.sequence, t.value, t.description, t.detail});
    }
    return Digest(fields);
}

}  // namespace batch
