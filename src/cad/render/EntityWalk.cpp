#include "cad/render/EntityWalk.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cad/Operations.h"
#include "cad/RawShapes.h"
#include "cad/render/Colours.h"

namespace cad::render {

namespace {

// The context an entity is drawn in: the transform to the world, and what ByBlock and
// layer "0" stand for inside the reference being drawn.
struct Context {
    Matrix3d toWorld;
    int blockColour = 7;
    Handle blockLayer = kNullHandle;
    int depth = 0;
    bool insideReference = false;
};

class Walker {
public:
    Walker(const Database& db, Canvas& canvas, const WalkOptions& options)
        : db_(db), canvas_(canvas), options_(options) {}

    void Space(Handle space, const Context& ctx) {
        for (const Entity* entity : db_.Entities(space)) {
            if (ctx.depth == 0 && Culled(entity->handle)) {
                ++counts.culled;
                continue;
            }
            if (ctx.depth == 0) {
                canvas_.BeginEntity(entity->handle);
            }
            One(*entity, ctx);
            if (ctx.depth == 0) {
                canvas_.EndEntity();
            }
        }
    }

    void Draw(const Entity& e) { One(e, Context{}); }

    // Lines without end stop at this box; `measuring` draws only their base points.
    Box reach;
    bool measuring = false;
    bool sawInfinite = false;  // a line without end was met

    WalkCounts counts;

private:
    bool Culled(Handle entity) const {
        if (options_.cull == nullptr || options_.view.Empty()) {
            return false;
        }
        const Box* box = options_.cull->Find(entity);
        const Box& view = options_.view;
        return box != nullptr && (box->max.x < view.min.x || box->min.x > view.max.x ||
                                  box->max.y < view.min.y || box->min.y > view.max.y);
    }

    Handle EffectiveLayer(Handle entityLayer, const Context& ctx) const {
        const LayerRecord* layer = db_.Layer(entityLayer);
        if (ctx.insideReference && layer && layer->name == "0" && ctx.blockLayer) {
            return ctx.blockLayer;
        }
        return entityLayer;
    }

    bool LayerShown(Handle layerHandle) const {
        const LayerRecord* layer = db_.Layer(layerHandle);
        return !layer || (layer->color >= 0 && (layer->flags & 1) == 0);
    }

    int ColourIndex(int color, Handle layerHandle, const Context& ctx) const {
        if (color == kColorByBlock) {
            return ctx.blockColour;
        }
        if (color == kColorByLayer || color < 0 || color > 255) {
            const LayerRecord* layer = db_.Layer(layerHandle);
            return layer ? std::abs(layer->color) : 7;
        }
        return color;
    }

    void One(const Entity& e, const Context& ctx);
    void Reference(const BlockReference& ref, int colour, Handle layer, const Context& ctx);
    // Each draws the entity when it is of its kinds; false for other kinds.
    bool Geometry(const Entity& e, Rgb colour, const Matrix3d& m);
    bool Texts(const Entity& e, Rgb colour, const Matrix3d& m, const Context& ctx);
    // `shown` replaces the text's own string (an attribute definition shows its tag).
    void DrawText(const Text& text, const std::string& shown, Rgb colour, const Matrix3d& m);
    void DrawMText(const MText& text, Rgb colour, const Matrix3d& m);
    void DrawPolyline(const LwPolyline& pl, Rgb colour, const Matrix3d& m);
    bool DrawRaw(const UnknownEntity& e, Rgb colour, const Matrix3d& m, int index, Handle layer,
                 const Context& ctx);
    void DrawInfinite(const RawInfiniteLine& line, Rgb colour, const Matrix3d& m);

    const Database& db_;
    Canvas& canvas_;
    const WalkOptions& options_;
};

Point2 At(const Matrix3d& m, const Point3d& p) {
    const Point3d w = m.Apply(p);
    return {w.x, w.y};
}

double Angle(const Matrix3d& m, double angle) {
    const Vector3d d = m.Apply(Vector3d{std::cos(angle), std::sin(angle), 0});
    return std::atan2(d.y, d.x);
}

double ScaleAlong(const Matrix3d& m, double angle) {
    return m.Apply(Vector3d{std::cos(angle), std::sin(angle), 0}).Length();
}

bool Mirrors(const Matrix3d& m) {
    return m(0, 0) * m(1, 1) - m(0, 1) * m(1, 0) < 0;
}

double MeanScale(const Matrix3d& m) {
    return std::sqrt(std::abs(m(0, 0) * m(1, 1) - m(0, 1) * m(1, 0)));
}

void Walker::One(const Entity& e, const Context& ctx) {
    // An entity kept as tags names its layer and colour in them.
    const auto* raw = Database::Cast<UnknownEntity>(&e);
    const Handle layer = EffectiveLayer(raw ? RawEntityLayer(db_, *raw) : e.layer, ctx);
    const bool visible = raw ? RawEntityVisible(*raw) : e.visible;
    if (e.erased || !visible || !LayerShown(layer)) {
        ++counts.skipped;
        return;
    }
    const int index = ColourIndex(raw ? RawEntityColour(*raw) : e.color, layer, ctx);
    const Rgb colour = PaintColour(index, options_.background);
    const Matrix3d& m = ctx.toWorld;
    bool drawn = true;
    if (e.Kind() == ObjectKind::BlockReference) {
        Reference(static_cast<const BlockReference&>(e), index, layer, ctx);
    } else if (raw) {
        drawn = DrawRaw(*raw, colour, m, index, layer, ctx);
    } else {
        drawn = Geometry(e, colour, m) || Texts(e, colour, m, ctx);
    }
    ++(drawn ? counts.drawn : counts.skipped);
}

bool Walker::Geometry(const Entity& e, Rgb colour, const Matrix3d& m) {
    switch (e.Kind()) {
        case ObjectKind::Line: {
            const auto& line = static_cast<const Line&>(e);
            canvas_.Line(At(m, line.start), At(m, line.end), colour);
            return true;
        }
        case ObjectKind::LwPolyline:
            DrawPolyline(static_cast<const LwPolyline&>(e), colour, m);
            return true;
        case ObjectKind::Circle: {
            const auto& circle = static_cast<const Circle&>(e);
            canvas_.Circle(At(m, circle.center), circle.radius * MeanScale(m), colour);
            return true;
        }
        case ObjectKind::Arc: {
            const auto& arc = static_cast<const Arc&>(e);
            double a0 = Angle(m, arc.startAngle), a1 = Angle(m, arc.endAngle);
            if (Mirrors(m)) {
                std::swap(a0, a1);
            }
            canvas_.Arc(At(m, arc.center), arc.radius * MeanScale(m), a0, a1, colour);
            return true;
        }
        case ObjectKind::Point:
            canvas_.Dot(At(m, static_cast<const PointEntity&>(e).position), colour);
            return true;
        default:
            return false;
    }
}

bool Walker::Texts(const Entity& e, Rgb colour, const Matrix3d& m, const Context& ctx) {
    switch (e.Kind()) {
        case ObjectKind::AttributeDefinition: {
            if (ctx.insideReference) {
                return false;
            }
            const auto& def = static_cast<const AttributeDefinition&>(e);
            DrawText(def, def.tag, colour, m);
            return true;
        }
        case ObjectKind::Attribute:
        case ObjectKind::Text: {
            const auto& text = static_cast<const Text&>(e);
            DrawText(text, text.text, colour, m);
            return true;
        }
        case ObjectKind::MText:
            DrawMText(static_cast<const MText&>(e), colour, m);
            return true;
        default:
            return false;
    }
}

void Walker::Reference(const BlockReference& ref, int colour, Handle layer, const Context& ctx) {
    if (ctx.depth < options_.maxDepth && db_.Block(ref.block)) {
        Context inner;
        inner.blockColour = colour;
        inner.blockLayer = layer;
        inner.depth = ctx.depth + 1;
        inner.insideReference = true;
        for (int row = 0; row < std::max(1, ref.rows); ++row) {
            for (int column = 0; column < std::max(1, ref.columns); ++column) {
                inner.toWorld = ctx.toWorld * GridTransform(db_, ref, row, column);
                Space(ref.block, inner);
            }
        }
    }
    for (const Handle h : ref.attributes) {
        const Attribute* attribute = db_.Get<Attribute>(h);
        if (attribute && (attribute->flags & 1) == 0) {
            One(*attribute, ctx);
        }
    }
}

bool Walker::DrawRaw(const UnknownEntity& e, Rgb colour, const Matrix3d& m, int index, Handle layer,
                     const Context& ctx) {
    const RawGeometry g = RawEntityGeometry(db_, e);
    if (!g.block.empty()) {
        const Handle block = db_.FindBlock(g.block);
        if (block == kNullHandle || ctx.depth >= options_.maxDepth) {
            return false;
        }
        Context inner = ctx;
        inner.blockColour = index;
        inner.blockLayer = layer;
        inner.depth = ctx.depth + 1;
        inner.insideReference = true;
        Space(block, inner);
        return true;
    }
    for (const RawShape& shape : g.shapes) {
        std::vector<std::vector<Point2>> rings;
        for (const auto& path : shape.paths) {
            std::vector<Point2> points;
            points.reserve(path.size());
            for (const Point3d& p : path) {
                points.push_back(At(m, p));
            }
            rings.push_back(std::move(points));
        }
        if (shape.paint == RawShape::Paint::Stroke) {
            for (const auto& points : rings) {
                std::vector<PolyVertex> vertices(points.size());
                for (std::size_t i = 0; i < points.size(); ++i) {
                    vertices[i].point = points[i];
                }
                canvas_.Polyline(vertices, false, colour);
            }
        } else {
            canvas_.Fill(rings,
                         shape.paint == RawShape::Paint::Wipe ? options_.background : colour);
        }
    }
    for (const RawInfiniteLine& line : g.infiniteLines) {
        DrawInfinite(line, colour, m);
    }
    return g.drawable;
}

// Clipped to the reach box (Liang-Barsky), so that a line without end never widens it.
void Walker::DrawInfinite(const RawInfiniteLine& line, Rgb colour, const Matrix3d& m) {
    const Point2 base = At(m, line.base);
    sawInfinite = true;
    if (measuring || reach.Empty()) {
        canvas_.Dot(base, colour);
        return;
    }
    const Point2 tip = At(m, line.base + line.direction);
    const double dx = tip.x - base.x, dy = tip.y - base.y;
    double t0 = line.bothWays ? -1e300 : 0, t1 = 1e300;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {base.x - reach.min.x, reach.max.x - base.x, base.y - reach.min.y,
                         reach.max.y - base.y};
    for (int k = 0; k < 4; ++k) {
        if (p[k] == 0) {
            if (q[k] < 0) {
                return;
            }
            continue;
        }
        const double t = q[k] / p[k];
        if (p[k] < 0) {
            t0 = std::max(t0, t);
        } else {
            t1 = std::min(t1, t);
        }
    }
    if (t0 <= t1) {
        canvas_.Line({base.x + dx * t0, base.y + dy * t0}, {base.x + dx * t1, base.y + dy * t1},
                     colour);
    }
}

void Walker::DrawPolyline(const LwPolyline& pl, Rgb colour, const Matrix3d& m) {
    const double scale = MeanScale(m);
    const bool mirrored = Mirrors(m);
    std::vector<PolyVertex> vertices;
    vertices.reserve(pl.vertices.size());
    for (const LwVertex& v : pl.vertices) {
        PolyVertex out;
        out.point = At(m, Point3d{v.x, v.y, pl.elevation});
        out.startWidth = (v.startWidth >= 0 ? v.startWidth : pl.constantWidth) * scale;
        out.endWidth = (v.endWidth >= 0 ? v.endWidth : pl.constantWidth) * scale;
        out.bulge = mirrored ? -v.bulge : v.bulge;
        vertices.push_back(out);
    }
    canvas_.Polyline(vertices, pl.closed, colour);
}

void Walker::DrawText(const Text& text, const std::string& shown, Rgb colour, const Matrix3d& m) {
    if (shown.empty()) {
        return;
    }
    TextLine line;
    line.text = shown;
    line.height = text.height * ScaleAlong(m, text.rotation + std::numbers::pi / 2);
    line.widthFactor = text.widthFactor * ScaleAlong(m, text.rotation) /
                       std::max(1e-12, ScaleAlong(m, text.rotation + std::numbers::pi / 2));
    const bool stretched = text.horizontal == TextHorz::Aligned || text.horizontal == TextHorz::Fit;
    if (stretched) {
        const Point2 a = At(m, text.position), b = At(m, text.alignment);
        line.anchor = a;
        line.fitLength = std::hypot(b.x - a.x, b.y - a.y);
        line.rotation =
            line.fitLength > 0 ? std::atan2(b.y - a.y, b.x - a.x) : Angle(m, text.rotation);
    } else {
        line.anchor = At(m, text.Anchor());
        line.rotation = Angle(m, text.rotation);
        line.hAlign = text.horizontal == TextHorz::Right  ? HAlign::Right
                      : text.horizontal == TextHorz::Left ? HAlign::Left
                                                          : HAlign::Center;
        line.vAlign = text.horizontal == TextHorz::Middle ? VAlign::Middle
                      : text.vertical == TextVert::Bottom ? VAlign::Bottom
                      : text.vertical == TextVert::Middle ? VAlign::Middle
                      : text.vertical == TextVert::Top    ? VAlign::Top
                                                          : VAlign::Baseline;
    }
    canvas_.Text(line, colour);
}

void Walker::DrawMText(const MText& text, Rgb colour, const Matrix3d& m) {
    TextBlock block;
    block.paragraphs = MTextLines(text.contents);
    if (block.paragraphs.empty()) {
        return;
    }
    const double up = ScaleAlong(m, text.rotation + std::numbers::pi / 2);
    block.anchor = At(m, text.position);
    block.height = text.height * up;
    block.rotation = Angle(m, text.rotation);
    block.attachment = text.attachment;
    block.referenceWidth = text.referenceWidth * ScaleAlong(m, text.rotation);
    const TextStyleRecord* style = db_.TextStyle(text.style);
    block.widthFactor = style && style->widthFactor > 0 ? style->widthFactor : 1.0;
    canvas_.MText(block, colour);
}

}  // namespace

WalkCounts DrawSpace(const Database& db, Canvas& canvas, const WalkOptions& options, Handle space) {
    const Handle drawn = space == kNullHandle ? db.ModelSpace() : space;
    WalkCounts refused;
    if (!CheckExpansion(db, drawn, refused.refused)) {
        return refused;
    }
    Walker walker(db, canvas, options);
    walker.reach = options.view;
    if (walker.reach.Empty()) {
        BoundsCanvas bounds;
        WalkOptions all = options;
        all.cull = nullptr;
        Walker measure(db, bounds, all);
        measure.measuring = true;
        measure.Space(drawn, Context{});
        walker.reach = bounds.Bounds();
    }
    Context ctx;
    walker.Space(drawn, ctx);
    return walker.counts;
}

WalkCounts DrawEntity(const Database& db, Canvas& canvas, const WalkOptions& options,
                      Handle entity) {
    const auto* e = db.Get<Entity>(entity);
    WalkCounts counts;
    if (e == nullptr) {
        return counts;
    }
    Walker walker(db, canvas, options);
    walker.reach = options.view;
    canvas.BeginEntity(entity);
    walker.Draw(*e);
    canvas.EndEntity();
    return walker.counts;
}

void EntityBounds::Measure(const Database& db, const WalkOptions& options, Handle space) {
    boxes_.clear();
    const Handle drawn = space == kNullHandle ? db.ModelSpace() : space;
    std::string refused;
    if (!CheckExpansion(db, drawn, refused)) {
        return;
    }
    WalkOptions all = options;
    all.cull = nullptr;
    all.view = Box{};
    for (const Entity* entity : db.Entities(drawn)) {
        BoundsCanvas bounds;
        Walker measure(db, bounds, all);
        measure.measuring = true;
        measure.Draw(*entity);
        if (!measure.sawInfinite && !bounds.Bounds().Empty()) {
            boxes_.emplace(entity->handle, bounds.Bounds());
        }
    }
}

const Box* EntityBounds::Find(Handle entity) const {
    const auto it = boxes_.find(entity);
    return it == boxes_.end() ? nullptr : &it->second;
}

}  // namespace cad::render
