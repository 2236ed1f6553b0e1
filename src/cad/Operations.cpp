// Changing entities: transforms, explode, copies within and between databases.
#include "cad/Operations.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "cad/Encoding.h"
#include "cad/Expansion.h"
#include "cad/NumberText.h"

namespace cad {

namespace {

struct Frame {
    double angle = 0;  // rotation of the X axis
    double scale = 1;  // mean of the X and Y factors
    bool mirrored = false;
};

Frame FrameOf(const Matrix3d& m) {
    const Vector3d x = m.Apply(Vector3d{1, 0, 0});
    const Vector3d y = m.Apply(Vector3d{0, 1, 0});
    Frame f;
    f.angle = std::atan2(x.y, x.x);
    f.scale = (x.Length() + y.Length()) / 2;
    f.mirrored = x.x * y.y - x.y * y.x < 0;
    return f;
}

void TransformText(Text& t, const Matrix3d& m, const Frame& f) {
    t.position = m.Apply(t.position);
    t.alignment = m.Apply(t.alignment);
    t.height *= f.scale;
    t.rotation += f.angle;
}

}  // namespace

std::vector<std::string> MTextLines(std::string_view s) {
    std::vector<std::string> lines(1);
    for (std::size_t i = 0; i < s.size(); ++i) {
        const char c = s[i];
        if (c == '{' || c == '}') {
            continue;
        }
        if (c != '\\' || i + 1 >= s.size()) {
            lines.back() += c;
            continue;
        }
        const char code = s[++i];
        switch (code) {
            case 'P':
                lines.emplace_back();
                break;
            case '~':
                lines.back() += ' ';
                break;
            case '\\':
            case '{':
            case '}':
                lines.back() += code;
                break;
            case 'S': {  // stacked text "a^b;" shown as "a/b"
                const std::size_t end = s.find(';', i);
                std::string stacked(
                    s.substr(i + 1, (end == std::string_view::npos ? s.size() : end) - i - 1));
                for (char& ch : stacked) {
                    ch = ch == '^' || ch == '#' ? '/' : ch;
                }
                lines.back() += stacked;
                i = end == std::string_view::npos ? s.size() : end;
                break;
            }
            case 'A':
            case 'C':
            case 'c':
            case 'F':
            case 'f':
            case 'H':
            case 'h':
            case 'Q':
            case 'q':
            case 'T':
            case 't':
            case 'W':
            case 'w':
            case 'p': {
                const std::size_t end = s.find(';', i);
                i = end == std::string_view::npos ? s.size() : end;
                break;
            }
            case 'L':
            case 'l':
            case 'O':
            case 'o':
            case 'K':
            case 'k':
            case 'N':
            case 'X':
                break;
            default:
                lines.back() += code;
                break;
        }
    }
    return lines;
}

bool TransformEntity(Entity& entity, const Matrix3d& m) {
    const Frame f = FrameOf(m);
    switch (entity.Kind()) {
        case ObjectKind::Line: {
            auto& l = static_cast<Line&>(entity);
            l.start = m.Apply(l.start);
            l.end = m.Apply(l.end);
            return true;
        }
        case ObjectKind::Point: {
            auto& p = static_cast<PointEntity&>(entity);
            p.position = m.Apply(p.position);
            return true;
        }
        case ObjectKind::Circle: {
            auto& c = static_cast<Circle&>(entity);
            c.center = m.Apply(c.center);
            c.radius *= f.scale;
            return true;
        }
        case ObjectKind::Arc: {
            auto& a = static_cast<Arc&>(entity);
            a.center = m.Apply(a.center);
            a.radius *= f.scale;
            if (f.mirrored) {
                const double start = a.startAngle;
                a.startAngle = f.angle - a.endAngle;
                a.endAngle = f.angle - start;
            } else {
                a.startAngle += f.angle;
                a.endAngle += f.angle;
            }
            return true;
        }
        case ObjectKind::LwPolyline: {
            auto& p = static_cast<LwPolyline&>(entity);
            for (auto& v : p.vertices) {
                const Point3d q = m.Apply(Point3d{v.x, v.y, p.elevation});
                v.x = q.x;
                v.y = q.y;
                v.startWidth = v.startWidth >= 0 ? v.startWidth * f.scale : v.startWidth;
                v.endWidth = v.endWidth >= 0 ? v.endWidth * f.scale : v.endWidth;
                v.bulge = f.mirrored ? -v.bulge : v.bulge;
            }
            p.constantWidth *= f.scale;
            if (!p.vertices.empty()) {
                p.elevation = m.Apply(Point3d{p.vertices[0].x, p.vertices[0].y, p.elevation}).z;
            }
            return true;
        }
        case ObjectKind::Text:
        case ObjectKind::Attribute:
        case ObjectKind::AttributeDefinition:
            TransformText(static_cast<Text&>(entity), m, f);
            return true;
        case ObjectKind::MText: {
            auto& t = static_cast<MText&>(entity);
            t.position = m.Apply(t.position);
            t.height *= f.scale;
            t.referenceWidth *= f.scale;
            t.rotation += f.angle;
            return true;
        }
        case ObjectKind::BlockReference: {
            auto& r = static_cast<BlockReference&>(entity);
            r.position = m.Apply(r.position);
            r.scale = r.scale * f.scale;
            if (f.mirrored) {
                r.scale.y = -r.scale.y;
            }
            r.rotation += f.angle;
            return true;
        }
        default:
            return false;
    }
}

bool TransformEntity(Database& db, Handle entity, const Matrix3d& m) {
    auto* e = db.Get<Entity>(entity);
    if (e == nullptr || !TransformEntity(*e, m)) {
        return false;
    }
    if (auto* ref = Database::Cast<BlockReference>(e)) {
        for (Handle a : ref->attributes) {
            if (auto* att = db.Get<Attribute>(a)) {
                TransformEntity(*att, m);
            }
        }
    }
    return true;
}

// ---- explode

namespace {

struct Inherit {
    Handle layer = kNullHandle;
    std::int16_t color = kColorByLayer;
};

std::unique_ptr<Entity> PlainCopy(const Entity& e) {
    auto copy = std::unique_ptr<Entity>(static_cast<Entity*>(e.Clone().release()));
    copy->handle = kNullHandle;
    return copy;
}

std::unique_ptr<Text> AttributeAsText(const Attribute& a) {
    auto t = std::make_unique<Text>();
    static_cast<Entity&>(*t).layer = a.layer;
    t->color = a.color;
    t->xdata = a.xdata;
    t->position = a.position;
    t->alignment = a.alignment;
    t->height = a.height;
    t->rotation = a.rotation;
    t->widthFactor = a.widthFactor;
    t->oblique = a.oblique;
    t->text = a.text;
    t->style = a.style;
    t->horizontal = a.horizontal;
    t->vertical = a.vertical;
    return t;
}

void Resolve(Entity& e, const Inherit& from, Handle layerZero) {
    if (e.layer == layerZero || e.layer == kNullHandle) {
        e.layer = from.layer;
    }
    if (e.color == kColorByBlock) {
        e.color = from.color;
    }
}

// The caller has counted what the reference expands to (cad/Expansion.h), so the blocks
// met here are neither cyclic nor nested too deep, and what is appended stays in bounds.
void ExplodeBlock(Database& db, Handle blockHandle, const Matrix3d& m, const Inherit& from,
                  Handle space, std::vector<Handle>& out);

void ExplodeInto(Database& db, const BlockReference& ref, const Matrix3d& outer,
                 const Inherit& from, Handle space, std::vector<Handle>& out) {
    for (int row = 0; row < std::max(1, ref.rows); ++row) {
        for (int column = 0; column < std::max(1, ref.columns); ++column) {
            ExplodeBlock(db, ref.block, outer * GridTransform(db, ref, row, column), from, space,
                         out);
        }
    }
}

void ExplodeBlock(Database& db, Handle blockHandle, const Matrix3d& m, const Inherit& from,
                  Handle space, std::vector<Handle>& out) {
    const BlockRecord* block = db.Block(blockHandle);
    if (block == nullptr) {
        return;
    }
    const Handle layerZero = db.FindLayer("0");
    const std::vector<Handle> members = block->entities;  // appending may grow model space
    for (Handle h : members) {
        const auto* e = db.Get<Entity>(h);
        if (e == nullptr || e->erased || e->Kind() == ObjectKind::AttributeDefinition ||
            e->Kind() == ObjectKind::UnknownEntity) {
            continue;
        }
        if (const auto* nested = Database::Cast<BlockReference>(e)) {
            Inherit inner{nested->layer == layerZero ? from.layer : nested->layer,
                          nested->color == kColorByBlock ? from.color : nested->color};
            ExplodeInto(db, *nested, m, inner, space, out);
            for (Handle a : nested->attributes) {
                const auto* att = db.Get<Attribute>(a);
                if (att != nullptr && !att->erased && (att->flags & 1) == 0) {
                    auto text = AttributeAsText(*att);
                    TransformEntity(*text, m);
                    Resolve(*text, inner, layerZero);
                    out.push_back(db.Append(std::move(text), space));
                }
            }
            continue;
        }
        auto copy = PlainCopy(*e);
        TransformEntity(*copy, m);
        Resolve(*copy, from, layerZero);
        out.push_back(db.Append(std::move(copy), space));
    }
}

}  // namespace

namespace {

std::vector<Handle> ExplodeCounted(Database& db, Handle reference) {
    std::vector<Handle> out;
    const auto* ref = db.Get<BlockReference>(reference);
    if (ref == nullptr || ref->erased || db.Block(ref->owner) == nullptr) {
        return out;
    }
    const Handle space = ref->owner;
    ExplodeInto(db, *ref, Matrix3d(), {ref->layer, ref->color}, space, out);
    ref = db.Get<BlockReference>(reference);
    for (Handle a : ref->attributes) {
        const auto* att = db.Get<Attribute>(a);
        if (att != nullptr && !att->erased && (att->flags & 1) == 0) {
            out.push_back(db.Append(AttributeAsText(*att), space));
        }
    }
    db.Erase(reference);
    return out;
}

}  // namespace

std::vector<Handle> ExplodeReference(Database& db, Handle reference, std::string* error) {
    const auto* ref = db.Get<BlockReference>(reference);
    std::string why;
    if (ref != nullptr && !ref->erased && !CheckExpansion(db, *ref, why)) {
        if (error != nullptr) {
            *error = why;
        }
        return {};
    }
    return ExplodeCounted(db, reference);
}

int ExplodeAllReferences(Database& db, Handle space, std::string* error) {
    // Counted together first: either every reference is exploded or none is.
    ExpansionCounter counter(db);
    const std::vector<Entity*> entities = db.Entities(space);
    for (const Entity* e : entities) {
        if (e->Kind() == ObjectKind::BlockReference && !counter.Add(*e)) {
            if (error != nullptr) {
                *error = counter.Error();
            }
            return -1;
        }
    }
    int count = 0;
    for (Entity* e : entities) {
        if (e->Kind() == ObjectKind::BlockReference && !ExplodeCounted(db, e->handle).empty()) {
            ++count;
        } else if (e->Kind() == ObjectKind::BlockReference) {
            db.Erase(e->handle);  // an empty block draws nothing
            ++count;
        }
    }
    return count;
}

Handle CopyEntity(Database& db, Handle entity, Handle space) {
    const auto* e = db.Get<Entity>(entity);
    if (e == nullptr || e->erased || e->Kind() == ObjectKind::Attribute ||
        e->Kind() == ObjectKind::Seqend) {
        return kNullHandle;
    }
    auto copy = PlainCopy(*e);
    if (auto* ref = Database::Cast<BlockReference>(copy.get())) {
        ref->attributes.clear();
        ref->seqend = kNullHandle;
    }
    if (auto* u = Database::Cast<UnknownEntity>(copy.get())) {
        u->followers.clear();
    }
    const Handle h = db.Append(std::move(copy), space == kNullHandle ? e->owner : space);
    if (const auto* src = db.Get<UnknownEntity>(entity)) {
        const std::vector<Handle> followers = src->followers;
        for (Handle f : followers) {
            const auto* fe = db.Get<Entity>(f);
            if (fe == nullptr || fe->erased) {
                continue;
            }
            auto c = PlainCopy(*fe);
            c->owner = h;
            const Handle ch = db.Add(std::move(c));
            db.Get<UnknownEntity>(h)->followers.push_back(ch);
        }
    }
    if (const auto* src = db.Get<BlockReference>(entity)) {
        const std::vector<Handle> atts = src->attributes;
        for (Handle a : atts) {
            const auto* att = db.Get<Attribute>(a);
            if (att != nullptr && !att->erased) {
                auto c =
                    std::unique_ptr<Attribute>(static_cast<Attribute*>(att->Clone().release()));
                db.AddAttribute(h, std::move(c));
            }
        }
    }
    return h;
}

}  // namespace cad
