// Measuring entities: text widths by character class, and the extents of every modelled
// entity, block references through their blocks.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_map>
#include <unordered_set>

#include "cad/Encoding.h"
#include "cad/Expansion.h"
#include "cad/Operations.h"
#include "cad/RawShapes.h"

namespace cad {

namespace {

bool IsFullWidth(char32_t c) {
    return (c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0x303E) ||
           (c >= 0x3041 && c <= 0x33FF) || (c >= 0x3400 && c <= 0x4DBF) ||
           (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xA000 && c <= 0xA4CF) ||
           (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0xFE30 && c <= 0xFE4F) || (c >= 0xFF00 && c <= 0xFF60) ||
           (c >= 0xFFE0 && c <= 0xFFE6) || (c >= 0x20000 && c <= 0x3FFFD);
}

Point3d Rotate(double x, double y, double angle, const Point3d& origin) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {origin.x + x * c - y * s, origin.y + x * s + y * c, origin.z};
}

// The box of a rotated rectangle given in the text's own axes.
std::optional<Extents3d> RotatedBox(double x0, double y0, double x1, double y1, double angle,
                                    const Point3d& origin) {
    Extents3d e{Rotate(x0, y0, angle, origin), Rotate(x0, y0, angle, origin)};
    e.Add(Rotate(x1, y0, angle, origin));
    e.Add(Rotate(x1, y1, angle, origin));
    e.Add(Rotate(x0, y1, angle, origin));
    return e;
}

bool Blank(std::string_view s) {
    return std::all_of(s.begin(), s.end(), [](char c) { return c == ' ' || c == '\t'; });
}

std::optional<Extents3d> TextExtents(const Text& t) {
    if (Blank(t.text)) {
        return std::nullopt;
    }
    const double h = t.height;
    double w = TextWidth(t.text, h, t.widthFactor);
    double angle = t.rotation;
    Point3d origin = t.Anchor();
    double x0 = 0;
    switch (t.horizontal) {
        case TextHorz::Left:
            break;
        case TextHorz::Center:
        case TextHorz::Middle:
            x0 = -w / 2;
            break;
        case TextHorz::Right:
            x0 = -w;
            break;
        case TextHorz::Aligned:
        case TextHorz::Fit:
            // The text fills the span between its two points.
            origin = t.position;
            w = t.position.DistanceTo(t.alignment);
            angle = w > 0 ? std::atan2(t.alignment.y - t.position.y, t.alignment.x - t.position.x)
                          : angle;
            break;
    }
    double y0 = 0;
    if (t.horizontal == TextHorz::Middle || t.vertical == TextVert::Middle) {
        y0 = -h / 2;
    } else if (t.vertical == TextVert::Top) {
        y0 = -h;
    }
    return RotatedBox(x0, y0, x0 + w, y0 + h, angle, origin);
}

std::optional<Extents3d> MTextExtents(const MText& m) {
    const auto lines = MTextLines(m.contents);
    double w = 0;
    bool any = false;
    for (const auto& line : lines) {
        w = std::max(w, TextWidth(line, m.height, 1.0));
        any = any || !Blank(line);
    }
    if (!any) {
        return std::nullopt;
    }
    const double h = m.height + (static_cast<double>(lines.size()) - 1) * m.height * 5.0 / 3.0;
    const int a = std::clamp(m.attachment, 1, 9) - 1;
    const double x0 = -(a % 3) * w / 2;
    const double yTop = (a / 3) * h / 2;  // top: 0, middle: h/2, bottom: h above the point
    return RotatedBox(x0, yTop - h, x0 + w, yTop, m.rotation, m.position);
}

void AddArc(Extents3d& e, const Point3d& c, double r, double start, double end) {
    const double twoPi = 2 * std::numbers::pi;
    while (end < start) {
        end += twoPi;
    }
    e.Add(Point3d{c.x + r * std::cos(start), c.y + r * std::sin(start), c.z});
    e.Add(Point3d{c.x + r * std::cos(end), c.y + r * std::sin(end), c.z});
    for (int k = static_cast<int>(std::ceil(start / (std::numbers::pi / 2)));
         k * std::numbers::pi / 2 <= end; ++k) {
        const double a = k * std::numbers::pi / 2;
        e.Add(Point3d{c.x + r * std::cos(a), c.y + r * std::sin(a), c.z});
    }
}

std::optional<Extents3d> PolylineExtents(const LwPolyline& p) {
    if (p.vertices.empty()) {
        return std::nullopt;
    }
    Extents3d e{{p.vertices[0].x, p.vertices[0].y, p.elevation},
                {p.vertices[0].x, p.vertices[0].y, p.elevation}};
    const std::size_t n = p.vertices.size();
    for (std::size_t i = 0; i < n; ++i) {
        const LwVertex& a = p.vertices[i];
        e.Add(Point3d{a.x, a.y, p.elevation});
        const bool last = i + 1 == n;
        if (a.bulge == 0 || (last && !p.closed)) {
            continue;
        }
        const LwVertex& b = p.vertices[last ? 0 : i + 1];
        const double chord = std::hypot(b.x - a.x, b.y - a.y);
        if (chord == 0) {
            continue;
        }
        // The arc through a and b whose bulge is tan(sweep / 4).
        const double sweep = 4 * std::atan(a.bulge);
        const double r = chord / (2 * std::sin(std::abs(sweep) / 2));
        const double mx = (a.x + b.x) / 2, my = (a.y + b.y) / 2;
        const double d = r * std::cos(sweep / 2);  // centre distance from the chord
        const double nx = -(b.y - a.y) / chord, ny = (b.x - a.x) / chord;
        const double sign = sweep > 0 ? 1 : -1;
        const Point3d c{mx + sign * nx * d, my + sign * ny * d, p.elevation};
        double s = std::atan2(a.y - c.y, a.x - c.x), t = std::atan2(b.y - c.y, b.x - c.x);
        if (sweep < 0) {
            std::swap(s, t);
        }
        AddArc(e, c, std::abs(r), s, t);
    }
    return e;
}

// One measurement: each block's box is worked out once (in block units) and reused, and a
// block met again inside itself or nested too deep is left out with an error, so no file can
// make measuring blow up or run out of stack.
struct Context {
    std::unordered_map<Handle, std::optional<Extents3d>> boxes;
    std::unordered_set<Handle> path;
    std::string error;
};

std::optional<Extents3d> Measure(const Database& db, const Entity& entity, Context& ctx);

std::optional<Extents3d> Union(const std::optional<Extents3d>& a,
                               const std::optional<Extents3d>& b) {
    if (!a) {
        return b;
    }
    if (!b) {
        return a;
    }
    Extents3d u = *a;
    u.Add(*b);
    return u;
}

std::optional<Extents3d> BlockBox(const Database& db, const BlockRecord& block, Context& ctx) {
    if (auto it = ctx.boxes.find(block.handle); it != ctx.boxes.end()) {
        return it->second;
    }
    if (ctx.path.count(block.handle) != 0) {
        if (ctx.error.empty()) {
            ctx.error = BlockCycleMessage(block.name);
        }
        return std::nullopt;
    }
    if (static_cast<int>(ctx.path.size()) >= kMaxBlockNesting) {
        if (ctx.error.empty()) {
            ctx.error = BlockNestingMessage(block.name);
        }
        return std::nullopt;
    }
    ctx.path.insert(block.handle);
    std::optional<Extents3d> box;
    for (Handle h : block.entities) {
        const auto* e = db.Get<Entity>(h);
        if (e != nullptr && !e->erased && e->Kind() != ObjectKind::AttributeDefinition) {
            box = Union(box, Measure(db, *e, ctx));
        }
    }
    ctx.path.erase(block.handle);
    ctx.boxes.emplace(block.handle, box);
    return box;
}

std::optional<Extents3d> ReferenceExtents(const Database& db, const BlockReference& ref,
                                          Context& ctx) {
    const BlockRecord* block = db.Block(ref.block);
    if (block == nullptr) {
        return std::nullopt;
    }
    std::optional<Extents3d> out;
    if (const auto box = BlockBox(db, *block, ctx)) {
        // A grid is the same box moved along two axes: its corner cells bound it.
        const int lastRow = std::max(1, ref.rows) - 1, lastColumn = std::max(1, ref.columns) - 1;
        for (int row : {0, lastRow}) {
            for (int column : {0, lastColumn}) {
                const Matrix3d m = GridTransform(db, ref, row, column);
                Extents3d t{m.Apply(box->min), m.Apply(box->min)};
                for (int k = 0; k < 8; ++k) {
                    t.Add(m.Apply(Point3d{(k & 1) ? box->max.x : box->min.x,
                                          (k & 2) ? box->max.y : box->min.y,
                                          (k & 4) ? box->max.z : box->min.z}));
                }
                out = Union(out, t);
            }
        }
    }
    for (Handle h : ref.attributes) {
        const auto* a = db.Get<Attribute>(h);
        if (a != nullptr && !a->erased) {
            out = Union(out, Measure(db, *a, ctx));
        }
    }
    return out;
}

// Lines without end count by their base points alone; a dimension by its picture block.
std::optional<Extents3d> RawExtents(const Database& db, const UnknownEntity& e, Context& ctx) {
    if (!RawEntityVisible(e)) {
        return std::nullopt;
    }
    const RawGeometry g = RawEntityGeometry(db, e);
    std::optional<Extents3d> out;
    const auto add = [&](const Point3d& p) { out = Union(out, Extents3d{p, p}); };
    for (const RawShape& shape : g.shapes) {
        for (const auto& path : shape.paths) {
            for (const Point3d& p : path) {
                add(p);
            }
        }
    }
    for (const RawInfiniteLine& line : g.infiniteLines) {
        add(line.base);
    }
    if (const BlockRecord* block = g.block.empty() ? nullptr : db.Block(db.FindBlock(g.block))) {
        out = Union(out, BlockBox(db, *block, ctx));
    }
    return out;
}

std::optional<Extents3d> Measure(const Database& db, const Entity& entity, Context& ctx) {
    if (entity.erased || !entity.visible) {
        return std::nullopt;
    }
    switch (entity.Kind()) {
        case ObjectKind::Line: {
            const auto& l = static_cast<const Line&>(entity);
            Extents3d e{l.start, l.start};
            e.Add(l.end);
            return e;
        }
        case ObjectKind::Point: {
            const auto& p = static_cast<const PointEntity&>(entity).position;
            return Extents3d{p, p};
        }
        case ObjectKind::Circle: {
            const auto& c = static_cast<const Circle&>(entity);
            const Vector3d r{c.radius, c.radius, 0};
            return Extents3d{c.center - r, c.center + r};
        }
        case ObjectKind::Arc: {
            const auto& a = static_cast<const Arc&>(entity);
            Extents3d e{a.center + Vector3d{a.radius * std::cos(a.startAngle),
                                            a.radius * std::sin(a.startAngle), 0},
                        a.center + Vector3d{a.radius * std::cos(a.startAngle),
                                            a.radius * std::sin(a.startAngle), 0}};
            AddArc(e, a.center, a.radius, a.startAngle, a.endAngle);
            return e;
        }
        case ObjectKind::LwPolyline:
            return PolylineExtents(static_cast<const LwPolyline&>(entity));
        case ObjectKind::Text:
            return TextExtents(static_cast<const Text&>(entity));
        case ObjectKind::Attribute: {
            const auto& a = static_cast<const Attribute&>(entity);
            return (a.flags & 1) != 0 ? std::nullopt : TextExtents(a);
        }
        case ObjectKind::AttributeDefinition: {
            Text shown = static_cast<const AttributeDefinition&>(entity);
            shown.text = static_cast<const AttributeDefinition&>(entity).tag;
            return TextExtents(shown);
        }
        case ObjectKind::MText:
            return MTextExtents(static_cast<const MText&>(entity));
        case ObjectKind::BlockReference:
            return ReferenceExtents(db, static_cast<const BlockReference&>(entity), ctx);
        case ObjectKind::UnknownEntity:
            return RawExtents(db, static_cast<const UnknownEntity&>(entity), ctx);
        default:
            return std::nullopt;
    }
}

}  // namespace

void Extents3d::Add(const Point3d& p) {
    min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
    max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
}

void Extents3d::Add(const Extents3d& e) {
    Add(e.min);
    Add(e.max);
}

double TextWidth(std::string_view utf8, double height, double widthFactor) {
    double units = 0;
    std::size_t pos = 0;
    while (pos < utf8.size()) {
        units += IsFullWidth(NextCodepoint(utf8, pos)) ? 1.0 : 0.6;
    }
    return units * height * widthFactor;
}

std::optional<Extents3d> EntityExtents(const Database& db, const Entity& entity,
                                       std::string* error) {
    Context ctx;
    auto box = Measure(db, entity, ctx);
    if (error != nullptr) {
        *error = ctx.error;
    }
    return box;
}

std::optional<Extents3d> SpaceExtents(const Database& db, Handle space, std::string* error) {
    Context ctx;
    std::optional<Extents3d> box;
    const BlockRecord* block = db.Block(space == kNullHandle ? db.ModelSpace() : space);
    if (block != nullptr) {
        for (Handle h : block->entities) {
            if (const auto* e = db.Get<Entity>(h); e != nullptr && !e->erased) {
                box = Union(box, Measure(db, *e, ctx));
            }
        }
    }
    if (error != nullptr) {
        *error = ctx.error;
    }
    return box;
}

Matrix3d BlockTransform(const Database& db, const BlockReference& ref) {
    const BlockRecord* block = db.Block(ref.block);
    const Point3d base = block != nullptr ? block->basePoint : Point3d{};
    return Matrix3d::Translation({ref.position.x, ref.position.y, ref.position.z}) *
           Matrix3d::Rotation(ref.rotation) *
           Matrix3d::Scaling(ref.scale.x, ref.scale.y, ref.scale.z) *
           Matrix3d::Translation({-base.x, -base.y, -base.z});
}

}  // namespace cad
