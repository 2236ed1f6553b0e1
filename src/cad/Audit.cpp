#include "cad/Audit.h"

#include <unordered_set>

#include "cad/NumberText.h"

namespace cad {

namespace {

class Auditor {
public:
    explicit Auditor(const Database& db) : db_(db) {}

    std::vector<AuditIssue> Run() {
        CheckBlockHandles();
        db_.ForEachObject([this](const DbObject& o) { Check(o); });
        for (Handle h : {db_.ModelSpace(), db_.PaperSpace(), db_.NamedObjects()}) {
            if (db_.Object(h) == nullptr) {
                Issue(h,
                      "a required object (model space, paper space or the named object dictionary) "
                      "is missing");
            }
        }
        return std::move(issues_);
    }

private:
    void Issue(Handle h, std::string message) { issues_.push_back({h, std::move(message)}); }

    void CheckBlockHandles() {
        const auto* table = db_.Get<SymbolTable>(db_.Table("BLOCK_RECORD"));
        if (table == nullptr) {
            Issue(kNullHandle, "the BLOCK_RECORD table is missing");
            return;
        }
        std::unordered_set<Handle> seen;
        for (Handle h : table->records) {
            const auto* b = db_.Get<BlockRecord>(h);
            if (b == nullptr || b->erased) {
                continue;
            }
            for (Handle own : {b->beginHandle, b->endHandle}) {
                if (own == kNullHandle || db_.Object(own) != nullptr || !seen.insert(own).second) {
                    Issue(h, "block \"" + b->name +
                                 "\" has a missing or duplicate BLOCK/ENDBLK handle");
                }
                CheckSeed(own);
            }
        }
    }

    void CheckSeed(Handle h) {
        if (h >= db_.HandleSeed()) {
            Issue(h, "handle is not below the handle seed");
        }
    }

    void Check(const DbObject& o) {
        CheckSeed(o.handle);
        if (o.erased) {
            return;
        }
        if (o.owner != kNullHandle && db_.Object(o.owner) == nullptr) {
            Issue(o.handle, "owner " + FormatHandle(o.owner) + " does not exist");
        }
        if (const auto* e = Database::Cast<Entity>(&o)) {
            CheckEntity(*e);
        } else if (const auto* r = Database::Cast<TableRecord>(&o)) {
            if (db_.Get<SymbolTable>(r->owner) == nullptr) {
                Issue(o.handle, "table record \"" + r->name + "\" is not owned by a table");
            }
        }
    }

    void CheckEntity(const Entity& e) {
        if (e.owner == kNullHandle) {
            Issue(e.handle, e.TypeName() + " has no owner");
        }
        if (e.Kind() != ObjectKind::UnknownEntity && e.layer != kNullHandle) {
            const auto* layer = db_.Layer(e.layer);
            if (layer == nullptr || layer->erased) {
                Issue(e.handle, e.TypeName() + " is on a layer that does not exist");
            }
        }
        const Handle style = StyleOf(e);
        if (style != kNullHandle &&
            (db_.TextStyle(style) == nullptr || db_.TextStyle(style)->erased)) {
            Issue(e.handle, e.TypeName() + " uses a text style that does not exist");
        }
        if (const auto* ref = Database::Cast<BlockReference>(&e)) {
            const auto* block = db_.Block(ref->block);
            if (block == nullptr || block->erased) {
                Issue(e.handle, "block reference names a block that does not exist");
            }
        }
        if (const auto* pl = Database::Cast<LwPolyline>(&e);
            pl != nullptr && pl->vertices.empty()) {
            Issue(e.handle, "polyline has no vertices");
        }
        CheckXData(e);
    }

    static Handle StyleOf(const Entity& e) {
        if (const auto* t = Database::Cast<Text>(&e)) {
            return t->style;
        }
        if (const auto* m = Database::Cast<MText>(&e)) {
            return m->style;
        }
        return kNullHandle;
    }

    void CheckXData(const Entity& e) {
        for (const auto& g : e.xdata) {
            const auto* app = db_.Get<AppIdRecord>(g.app);
            if (app == nullptr || app->erased) {
                Issue(e.handle, "extended data of an application that is not registered");
                continue;
            }
            int depth = 0;
            for (const auto& item : g.items) {
                CheckItem(e, app->name, item, depth);
            }
            if (depth != 0) {
                Issue(e.handle, "extended data of \"" + app->name + "\" has unbalanced braces");
            }
        }
    }

    void CheckItem(const Entity& e, const std::string& app, const XDataItem& item, int& depth) {
        if (item.code < 1000 || item.code > 1071 || item.code == 1001) {
            Issue(e.handle,
                  "extended data of \"" + app + "\" holds group code " + std::to_string(item.code));
        } else if (item.code == 1005) {
            Handle target = kNullHandle;
            if (!ParseHandle(item.value, target)) {
                Issue(e.handle,
                      "extended data of \"" + app + "\" holds a bad handle \"" + item.value + "\"");
            } else if (target != kNullHandle && db_.Object(target) == nullptr) {
                Issue(e.handle, "extended data of \"" + app + "\" points at " + item.value +
                                    ", which does not exist");
            }
        } else if (item.code == 1002) {
            depth += item.value == "{" ? 1 : item.value == "}" ? -1 : 0;
            if (depth < 0) {
                Issue(e.handle, "extended data of \"" + app + "\" closes a brace it never opened");
                depth = 0;
            }
        } else if ((item.code == 1000 || item.code == 1003) && item.value.size() > 255) {
            Issue(e.handle, "extended data string of \"" + app + "\" is longer than 255 bytes");
        }
    }

    const Database& db_;
    std::vector<AuditIssue> issues_;
};

}  // namespace

std::vector<AuditIssue> Audit(const Database& db) {
    return Auditor(db).Run();
}

std::string FormatIssues(const std::vector<AuditIssue>& issues) {
    std::string out;
    for (const auto& i : issues) {
        if (!out.empty()) {
            out += "; ";
        }
        out += FormatHandle(i.handle) + ": " + i.message;
    }
    return out;
}

}  // namespace cad
