#include "batch/Source.h"

#include <set>

#include "draw/ModuleDrawing.h"
#include "files/TextFile.h"
#include "plclib/TimeStamp.h"

namespace batch {

namespace {

const char* const kKeys[] = {"tag", "module", "stamp", "library", "list", "file", "sheet"};

std::string* Field(ModuleSource& source, std::string_view key) {
    std::string* fields[] = {&source.tag,           &source.module,     &source.stamp,
                             &source.libraryDigest, &source.listDigest, &source.listFile,
                             &source.sheet};
    for (int i = 0; i < 7; ++i) {
        if (key == kKeys[i]) {
            return fields[i];
        }
    }
    return nullptr;
}

std::vector<cad::Handle> LinkedHandles(const cad::Database& db, const cad::Entity& entity,
                                       const char* app) {
    std::vector<cad::Handle> handles;
    if (const auto* items = db.GetXData(entity, app)) {
        for (const cad::XDataItem& item : *items) {
            if (item.code == 1005 && item.AsHandle() != cad::kNullHandle) {
                handles.push_back(item.AsHandle());
            }
        }
    }
    return handles;
}

}  // namespace

void WriteSource(cad::Database& db, cad::Handle label, const ModuleSource& source) {
    auto* entity = db.Get<cad::Entity>(label);
    if (entity == nullptr) {
        return;
    }
    db.RemoveXData(*entity, kAppSource);
    ModuleSource copy = source;
    for (const char* key : kKeys) {
        db.AppendXData(*entity, kAppSource,
                       cad::XDataItem::String(std::string(key) + "=" + *Field(copy, key)));
    }
    db.AppendXData(*entity, kAppSource, cad::XDataItem::Real(source.origin.x));
    db.AppendXData(*entity, kAppSource, cad::XDataItem::Real(source.origin.y));
}

std::optional<ModuleSource> ReadSource(const cad::Database& db, const cad::Entity& label) {
    const auto* items = db.GetXData(label, kAppSource);
    if (items == nullptr) {
        return std::nullopt;
    }
    ModuleSource source;
    std::vector<double> reals;
    for (const cad::XDataItem& item : *items) {
        if (item.code == 1040) {
            reals.push_back(item.AsReal());
        } else if (const auto equals = item.value.find('=');
                   item.code == 1000 && equals != std::string::npos) {
            if (std::string* field = Field(source, item.value.substr(0, equals))) {
                *field = item.value.substr(equals + 1);
            }
        }
    }
    if (source.tag.empty() || source.module.empty() || reals.size() < 2) {
        return std::nullopt;
    }
    source.origin = {reals[0], reals[1], 0};
    return source;
}

std::vector<DrawnModule> FindDrawnModules(const cad::Database& db) {
    std::vector<DrawnModule> modules;
    for (const cad::Entity* entity : db.Entities()) {
        if (auto source = ReadSource(db, *entity)) {
            modules.push_back({entity->handle, std::move(*source)});
        }
    }
    return modules;
}

std::vector<cad::Handle> ModuleEntities(const cad::Database& db, cad::Handle label) {
    std::vector<cad::Handle> handles;
    std::set<cad::Handle> seen;
    auto add = [&](cad::Handle h) {
        const auto* e = db.Get<cad::Entity>(h);
        if (e != nullptr && !e->erased && seen.insert(h).second) {
            handles.push_back(h);
        }
    };
    const auto* labelEntity = db.Get<cad::Entity>(label);
    if (labelEntity == nullptr) {
        return handles;
    }
    add(label);
    for (const char* app : {draw::kAppLabelDetail, draw::kAppOutlineRect}) {
        for (const cad::Handle h : LinkedHandles(db, *labelEntity, app)) {
            add(h);
        }
    }
    for (const cad::Handle ref : LinkedHandles(db, *labelEntity, draw::kAppLabel)) {
        const auto* symbol = db.Get<cad::Entity>(ref);
        if (symbol == nullptr) {
            continue;
        }
        add(ref);
        for (const char* app : {draw::kAppTermText, draw::kAppTermDescText}) {
            for (const cad::Handle h : LinkedHandles(db, *symbol, app)) {
                add(h);
            }
        }
    }
    return handles;
}

std::string ReadLibraryStamp() {
    const auto lines = files::ReadLines(plcdb::TimeStampPath());
    return lines && !lines->empty() ? (*lines)[0] : std::string();
}

}  // namespace batch
