#include "cad/Audit.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "cad/Limits.h"
#include "cad/Message.h"
#include "cad/NumberText.h"

namespace cad {

namespace {

// A value as a message shows it; FormatReal writes what a file can hold instead of nan.
std::string ShowValue(double v) {
    if (std::isnan(v)) {
        return "nan";
    }
    if (std::isinf(v)) {
        return v > 0 ? "inf" : "-inf";
    }
    return FormatReal(v);
}

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
            if (const auto* b = Database::Cast<BlockRecord>(r)) {
                for (double v : {b->basePoint.x, b->basePoint.y, b->basePoint.z}) {
                    if (!InCoordinateRange(v)) {
                        Issue(o.handle,
                              FillMessage("block \"%s\" has its base point at %s, outside the "
                                          "range a drawing can hold (finite, at most 1e100 from "
                                          "zero)",
                                          {b->name, ShowValue(v)}));
                        break;
                    }
                }
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
        CheckFollower(e);
        CheckLinetype(e);
        CheckRange(e);
        CheckXData(e);
    }

    // An attribute or end marker stands in a file only after the reference that lists it.
    void CheckFollower(const Entity& e) {
        const ObjectKind kind = e.Kind();
        if (const auto* u = Database::Cast<UnknownEntity>(&e);
            u != nullptr && u->typeName == "VERTEX") {
            CheckVertex(e);
            return;
        }
        if (kind != ObjectKind::Attribute && kind != ObjectKind::Seqend) {
            return;
        }
        const DbObject* owner = db_.Object(e.owner);
        bool listed = false;
        if (const auto* ref = Database::Cast<BlockReference>(owner)) {
            listed = kind == ObjectKind::Seqend
                         ? ref->seqend == e.handle
                         : std::find(ref->attributes.begin(), ref->attributes.end(), e.handle) !=
                               ref->attributes.end();
        } else if (const auto* unknown = Database::Cast<UnknownEntity>(owner)) {
            listed = std::find(unknown->followers.begin(), unknown->followers.end(), e.handle) !=
                     unknown->followers.end();
        }
        if (!listed) {
            Issue(e.handle, FillMessage("%s is not attached to a block reference; a file cannot "
                                        "hold it on its own",
                                        {e.TypeName()}));
        }
    }

    // A vertex stands in a file only after the polyline that lists it: on its own it would be
    // read back as a vertex of whatever polyline the file holds before it.
    void CheckVertex(const Entity& e) {
        const auto* polyline = Database::Cast<UnknownEntity>(db_.Object(e.owner));
        if (polyline == nullptr || std::find(polyline->followers.begin(), polyline->followers.end(),
                                             e.handle) == polyline->followers.end()) {
            Issue(e.handle,
                  "VERTEX is not attached to a polyline; a file cannot hold it on its own");
        }
    }

    // A line type an entity names (group 6 of its common part) must be in the LTYPE table.
    void CheckLinetype(const Entity& e) {
        const TagList* common = nullptr;
        TagList before;
        if (const auto* u = Database::Cast<UnknownEntity>(&e)) {
            for (const Tag& t : u->tags) {
                if (t.code == 100 && t.value != "AcDbEntity") {
                    break;
                }
                before.push_back(t);
            }
            common = &before;
        } else if (e.extra) {
            common = e.extra->Find("AcDbEntity");
        }
        if (common == nullptr) {
            return;
        }
        for (const Tag& t : *common) {
            if (t.code == 6 && db_.FindLinetype(t.value) == kNullHandle) {
                Issue(e.handle, FillMessage("%s uses the line type \"%s\", which is not defined",
                                            {e.TypeName(), t.value}));
            }
        }
    }

    // Every number must be one the reader takes back (cad/Limits.h).
    void CheckRange(const Entity& e) {
        const std::vector<double> values = ValuesOf(e);
        for (double v : values) {
            if (!InCoordinateRange(v)) {
                Issue(e.handle, FillMessage("%s holds the value %s, outside the range a drawing "
                                            "can hold (finite, at most 1e100 from zero)",
                                            {e.TypeName(), ShowValue(v)}));
                return;
            }
        }
    }

    static std::vector<double> ValuesOf(const Entity& e) {
        auto point = [](std::vector<double>& out, const Point3d& p) {
            out.insert(out.end(), {p.x, p.y, p.z});
        };
        std::vector<double> out;
        switch (e.Kind()) {
            case ObjectKind::Line:
                point(out, static_cast<const Line&>(e).start);
                point(out, static_cast<const Line&>(e).end);
                break;
            case ObjectKind::Point:
                point(out, static_cast<const PointEntity&>(e).position);
                break;
            case ObjectKind::Circle:
                point(out, static_cast<const Circle&>(e).center);
                out.push_back(static_cast<const Circle&>(e).radius);
                break;
            case ObjectKind::Arc: {
                const auto& a = static_cast<const Arc&>(e);
                point(out, a.center);
                out.insert(out.end(), {a.radius, a.startAngle, a.endAngle});
                break;
            }
            case ObjectKind::LwPolyline: {
                const auto& p = static_cast<const LwPolyline&>(e);
                out.insert(out.end(), {p.constantWidth, p.elevation});
                for (const auto& v : p.vertices) {
                    out.insert(out.end(), {v.x, v.y, v.startWidth, v.endWidth, v.bulge});
                }
                break;
            }
            case ObjectKind::Text:
            case ObjectKind::Attribute:
            case ObjectKind::AttributeDefinition: {
                const auto& t = static_cast<const Text&>(e);
                point(out, t.position);
                point(out, t.alignment);
                out.insert(out.end(), {t.height, t.rotation, t.widthFactor, t.oblique});
                break;
            }
            case ObjectKind::MText: {
                const auto& t = static_cast<const MText&>(e);
                point(out, t.position);
                out.insert(out.end(), {t.height, t.referenceWidth, t.rotation});
                break;
            }
            case ObjectKind::BlockReference: {
                const auto& r = static_cast<const BlockReference&>(e);
                point(out, r.position);
                out.insert(out.end(), {r.scale.x, r.scale.y, r.scale.z, r.rotation, r.columnSpacing,
                                       r.rowSpacing});
                break;
            }
            default:
                break;
        }
        return out;
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
