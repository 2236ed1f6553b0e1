// Writing entities: the common part, each modelled entity's subclasses, unmodelled
// entities as read, and extended data last.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "cad/DxfWriter.h"
#include "cad/Encoding.h"
#include "cad/NumberText.h"

namespace cad::dxfwrite {

namespace {

// A unit vector at an angle, with the noise of the sine and cosine of right angles removed
// (cos 90 degrees is 6e-17, not 0).
Point3d Direction(double angle) {
    auto clean = [](double v) { return std::abs(v) < 1e-15 ? 0.0 : v; };
    return {clean(std::cos(angle)), clean(std::sin(angle)), 0};
}

bool IsPlainAnchor(const Text& t) {
    return (t.horizontal == TextHorz::Left || t.horizontal == TextHorz::Aligned ||
            t.horizontal == TextHorz::Fit) &&
           t.vertical == TextVert::Baseline;
}

// Splits encoded MText contents into pieces of at most 250 bytes, never inside a
// multi-byte character (UTF-8 or a double-byte code page) or an escape sequence.
std::vector<std::string_view> SplitMText(std::string_view s, bool utf8) {
    std::vector<std::string_view> pieces;
    while (s.size() > 250) {
        std::size_t cut = 0;
        std::size_t i = 0;
        while (i < s.size()) {
            const unsigned char c = s[i];
            std::size_t len = 1;
            if (utf8) {
                len = c < 0x80         ? 1
                      : (c >> 5) == 6  ? 2
                      : (c >> 4) == 14 ? 3
                      : (c >> 3) == 30 ? 4
                                       : 1;
            } else if (c >= 0x81 && c != 0xFF) {
                len = 2;
            } else if (c == '\\' && i + 1 < s.size()) {
                const char next = s[i + 1];
                len = (next == 'U' || next == 'u') && i + 7 <= s.size() ? 7 : 2;
            }
            if (utf8 && c == '\\' && i + 1 < s.size()) {
                const char next = s[i + 1];
                len = (next == 'U' || next == 'u') && i + 7 <= s.size() ? 7 : 2;
            }
            if (i + len > 250) {
                break;
            }
            i += len;
            cut = i;
        }
        if (cut == 0) {
            cut = std::min<std::size_t>(250, s.size());
        }
        pieces.push_back(s.substr(0, cut));
        s.remove_prefix(cut);
    }
    pieces.push_back(s);
    return pieces;
}

}  // namespace

void Writer::Entity(const cad::Entity& e) {
    if (const auto* u = Database::Cast<UnknownEntity>(&e)) {
        Head(e, u->typeName, e.owner);
        Tags(u->tags);
        XData(e);
        for (Handle f : u->followers) {
            if (const auto* follower = db_.Get<cad::Entity>(f);
                follower != nullptr && !follower->erased) {
                Entity(*follower);
            }
        }
        return;
    }
    Head(e, e.TypeName(), e.owner);
    EntityCommon(e);
    Body(e);
    XData(e);
    if (const auto* ref = Database::Cast<BlockReference>(&e);
        ref != nullptr && !ref->attributes.empty()) {
        for (Handle a : ref->attributes) {
            if (const auto* att = db_.Get<cad::Entity>(a); att != nullptr && !att->erased) {
                Entity(*att);
            }
        }
        if (const auto* end = db_.Get<cad::Entity>(ref->seqend)) {
            Entity(*end);
        }
    }
}

void Writer::EntityCommon(const cad::Entity& e) {
    Raw(100, "AcDbEntity");
    const DbObject* owner = db_.Object(e.owner);
    Handle space = e.owner;
    if (owner != nullptr && owner->IsEntity()) {
        space = owner->owner;  // attributes and end markers follow their reference's space
    }
    if (space == db_.PaperSpace() && space != kNullHandle) {
        Raw(67, "1");
    }
    Str(8, e.layer != kNullHandle ? std::string_view(NameOf(e.layer)) : std::string_view("0"));
    if (e.color != kColorByLayer) {
        Int(62, e.color);
    }
    if (!e.visible) {
        Raw(60, "1");
    }
    Extra(e, "AcDbEntity");
}

void Writer::Body(const cad::Entity& e) {
    switch (e.Kind()) {
        case ObjectKind::Line: {
            const auto& l = static_cast<const cad::Line&>(e);
            Raw(100, "AcDbLine");
            Point(10, l.start);
            Point(11, l.end);
            Extra(e, "AcDbLine");
            UnusedExtra(e, {"AcDbLine"});
            break;
        }
        case ObjectKind::Point: {
            Raw(100, "AcDbPoint");
            Point(10, static_cast<const PointEntity&>(e).position);
            Extra(e, "AcDbPoint");
            UnusedExtra(e, {"AcDbPoint"});
            break;
        }
        case ObjectKind::Circle: {
            const auto& c = static_cast<const Circle&>(e);
            Raw(100, "AcDbCircle");
            Point(10, c.center);
            Real(40, c.radius);
            Extra(e, "AcDbCircle");
            UnusedExtra(e, {"AcDbCircle"});
            break;
        }
        case ObjectKind::Arc: {
            const auto& a = static_cast<const cad::Arc&>(e);
            Raw(100, "AcDbCircle");
            Point(10, a.center);
            Real(40, a.radius);
            Extra(e, "AcDbCircle");
            Raw(100, "AcDbArc");
            Angle(50, a.startAngle);
            Angle(51, a.endAngle);
            Extra(e, "AcDbArc");
            UnusedExtra(e, {"AcDbCircle", "AcDbArc"});
            break;
        }
        case ObjectKind::LwPolyline:
            PolylineBody(static_cast<const LwPolyline&>(e));
            break;
        case ObjectKind::Text:
            TextBody(static_cast<const cad::Text&>(e), true);
            break;
        case ObjectKind::AttributeDefinition: {
            const auto& d = static_cast<const AttributeDefinition&>(e);
            TextBody(d, false);
            Raw(100, "AcDbAttributeDefinition");
            Str(3, d.prompt);
            Str(2, d.tag);
            Int(70, d.flags);
            if (d.vertical != TextVert::Baseline) {
                Int(74, static_cast<int>(d.vertical));
            }
            Extra(e, "AcDbAttributeDefinition");
            UnusedExtra(e, {"AcDbText", "AcDbText#2", "AcDbAttributeDefinition"});
            break;
        }
        case ObjectKind::Attribute: {
            const auto& a = static_cast<const Attribute&>(e);
            TextBody(a, false);
            Raw(100, "AcDbAttribute");
            Str(2, a.tag);
            Int(70, a.flags);
            if (a.vertical != TextVert::Baseline) {
                Int(74, static_cast<int>(a.vertical));
            }
            Extra(e, "AcDbAttribute");
            UnusedExtra(e, {"AcDbText", "AcDbText#2", "AcDbAttribute"});
            break;
        }
        case ObjectKind::MText:
            MTextBody(static_cast<const cad::MText&>(e));
            break;
        case ObjectKind::BlockReference:
            ReferenceBody(static_cast<const BlockReference&>(e));
            break;
        default:
            UnusedExtra(e, {});
            break;
    }
}

void Writer::TextBody(const cad::Text& t, bool secondAcDbText) {
    Raw(100, "AcDbText");
    Point(10, t.position);
    Real(40, t.height);
    Str(1, t.text);
    if (t.rotation != 0) {
        Angle(50, t.rotation);
    }
    if (t.widthFactor != 1) {
        Real(41, t.widthFactor);
    }
    if (t.oblique != 0) {
        Angle(51, t.oblique);
    }
    Str(7,
        t.style != kNullHandle ? std::string_view(NameOf(t.style)) : std::string_view("Standard"));
    if (t.horizontal != TextHorz::Left) {
        Int(72, static_cast<int>(t.horizontal));
    }
    Point(11, IsPlainAnchor(t) ? t.position : t.alignment);
    Extra(t, "AcDbText");
    if (secondAcDbText) {
        Raw(100, "AcDbText");
        if (t.vertical != TextVert::Baseline) {
            Int(73, static_cast<int>(t.vertical));
        }
        Extra(t, "AcDbText#2");
        UnusedExtra(t, {"AcDbText", "AcDbText#2"});
    }
}

void Writer::MTextBody(const cad::MText& t) {
    Raw(100, "AcDbMText");
    Point(10, t.position);
    Real(40, t.height);
    Real(41, t.referenceWidth);
    Int(71, t.attachment);
    Raw(72, "1");
    NoteEscapes(t.contents);
    std::string encoded = EncodeText(t.contents, charset_);
    BlankControls(encoded);
    const auto pieces = SplitMText(encoded, charset_ == "UTF-8");
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        Raw(3, pieces[i]);
    }
    Raw(1, pieces.back());
    Str(7,
        t.style != kNullHandle ? std::string_view(NameOf(t.style)) : std::string_view("Standard"));
    Point(11, Direction(t.rotation));
    Extra(t, "AcDbMText");
    UnusedExtra(t, {"AcDbMText"});
}

void Writer::PolylineBody(const LwPolyline& p) {
    Raw(100, "AcDbPolyline");
    Int(90, static_cast<long long>(p.vertices.size()));
    Int(70, (p.flags & ~1) | (p.closed ? 1 : 0));
    bool perVertex = false;
    for (const auto& v : p.vertices) {
        perVertex = perVertex || v.startWidth >= 0 || v.endWidth >= 0;
    }
    if (!perVertex) {
        Real(43, p.constantWidth);
    }
    if (p.elevation != 0) {
        Real(38, p.elevation);
    }
    for (const auto& v : p.vertices) {
        Real(10, v.x);
        Real(20, v.y);
        if (perVertex) {
            Real(40, v.startWidth >= 0 ? v.startWidth : p.constantWidth);
            Real(41, v.endWidth >= 0 ? v.endWidth : p.constantWidth);
        }
        if (v.bulge != 0) {
            Real(42, v.bulge);
        }
    }
    Extra(p, "AcDbPolyline");
    UnusedExtra(p, {"AcDbPolyline"});
}

void Writer::ReferenceBody(const BlockReference& r) {
    Raw(100, r.IsArray() ? "AcDbMInsertBlock" : "AcDbBlockReference");
    bool attributes = false;
    for (Handle a : r.attributes) {
        const DbObject* o = db_.Object(a);
        attributes = attributes || (o != nullptr && !o->erased);
    }
    if (attributes) {
        Raw(66, "1");
    }
    Str(2, NameOf(r.block));
    Point(10, r.position);
    if (r.scale.x != 1 || r.scale.y != 1 || r.scale.z != 1) {
        Real(41, r.scale.x);
        Real(42, r.scale.y);
        Real(43, r.scale.z);
    }
    if (r.rotation != 0) {
        Angle(50, r.rotation);
    }
    if (r.IsArray()) {
        Int(70, std::max(1, r.columns));
        Int(71, std::max(1, r.rows));
        Real(44, r.columnSpacing);
        Real(45, r.rowSpacing);
    }
    Extra(r, "AcDbBlockReference");
    Extra(r, "AcDbMInsertBlock");
    UnusedExtra(r, {"AcDbBlockReference", "AcDbMInsertBlock"});
}

// Subclasses a file gave a modelled entity beyond the ones it models: written after them.
void Writer::UnusedExtra(const cad::Entity& e, std::initializer_list<const char*> used) {
    if (!e.extra) {
        return;
    }
    for (const auto& seg : e.extra->segments) {
        if (seg.marker.empty() || seg.marker == "AcDbEntity") {
            continue;
        }
        bool known = false;
        for (const char* u : used) {
            known = known || seg.marker == u;
        }
        if (known) {
            continue;
        }
        if (seg.marker.starts_with(kEmbeddedMarker)) {
            Str(101, std::string_view(seg.marker).substr(kEmbeddedMarker.size()));
        } else {
            Str(100, seg.marker.substr(0, seg.marker.find('#')));
        }
        Tags(seg.tags);
    }
}

void Writer::XData(const cad::Entity& e) {
    for (const auto& group : e.xdata) {
        if (group.items.empty()) {
            continue;
        }
        Str(1001, AppName(group.app));
        for (const auto& item : group.items) {
            if (TypeOfCode(item.code) == TagType::String) {
                Str(item.code, item.value);
            } else if (item.code == 1005) {
                // A link to an erased object is cut: the object is not in the file.
                const DbObject* target = db_.Object(item.AsHandle());
                Raw(1005,
                    target != nullptr && !target->erased ? std::string_view(item.value) : "0");
            } else {
                Raw(item.code, item.value);
            }
        }
    }
}

}  // namespace cad::dxfwrite
