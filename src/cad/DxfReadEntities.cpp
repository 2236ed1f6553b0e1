// Reading entities: the common part, the modelled entities' fields, unmodelled entities as
// they are, extended data; and the completion of the database after the last section.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "cad/DxfReader.h"
#include "cad/Message.h"
#include "cad/NumberText.h"

namespace cad::dxfread {

namespace {

constexpr double kRadians = std::numbers::pi / 180.0;

std::unique_ptr<Entity> NewEntity(std::string_view type) {
    if (type == "LINE")
        return std::make_unique<Line>();
    if (type == "LWPOLYLINE")
        return std::make_unique<LwPolyline>();
    if (type == "CIRCLE")
        return std::make_unique<Circle>();
    if (type == "ARC")
        return std::make_unique<Arc>();
    if (type == "POINT")
        return std::make_unique<PointEntity>();
    if (type == "TEXT")
        return std::make_unique<Text>();
    if (type == "ATTDEF")
        return std::make_unique<AttributeDefinition>();
    if (type == "ATTRIB")
        return std::make_unique<Attribute>();
    if (type == "MTEXT")
        return std::make_unique<MText>();
    if (type == "INSERT")
        return std::make_unique<BlockReference>();
    if (type == "SEQEND")
        return std::make_unique<Seqend>();
    return nullptr;
}

bool In(const std::string& marker, const char* a, const char* b = nullptr) {
    return marker.empty() || marker == a || (b != nullptr && marker == b);
}

}  // namespace

void Reader::EntitiesSection(long line) {
    MakeSpaces();
    Record rec;
    for (;;) {
        if (!ReadRecord(rec)) {
            tok_.Fail(line, "section ENTITIES is not terminated by ENDSEC");
        }
        if (rec.type == "ENDSEC") {
            openParent_ = kNullHandle;
            return;
        }
        if (rec.type == "EOF" || rec.type == "SECTION") {
            tok_.Fail(rec.line, "section ENTITIES is not terminated by ENDSEC", rec.type);
        }
        if (old_) {
            AddEntityMarkers(rec);
        }
        EntityRecord(rec, kNullHandle);
    }
}

// Resolves a table entry named by an entity; a name the file never defined is added, so
// that the written drawing defines every name it uses. The database's own index by name
// answers every look-up (a second cache by spelling cost a hash look-up more per entity).
Handle Reader::NamedEntry(const std::string& name, const NamedTable& table) {
    if (const Handle h = table.find(*db_, name); h != kNullHandle) {
        return h;
    }
    const Handle before = Making();
    const Handle h = table.add(*db_, name.empty() ? table.fallback : name);
    Generated(before);
    // A file may use 100,000 names it never defines: the first few are named, the rest
    // counted.
    if (++undefinedNames_[table.kind] <= kNamedRepairs) {
        Repair(std::string(table.kind) + " " + name + " was used but not defined; it was added");
    }
    return h;
}

// The block an INSERT draws, resolved when every block is known. An INSERT naming two
// blocks draws the last, as other readers take it; the first name is reported, and makes
// no block.
void Reader::BlockNamed(std::string name, long line) {
    if (!pendingBlocks_.empty() && pendingBlocks_.back().first == kNullHandle) {
        Repair(FillMessage("line %d: an INSERT named block %s and then block %s; it draws %s",
                           {std::to_string(line), pendingBlocks_.back().second, name, name}));
        pendingBlocks_.back().second = std::move(name);
        return;
    }
    pendingBlocks_.emplace_back(kNullHandle, std::move(name));
}

Handle Reader::LayerNamed(const std::string& name) {
    static const NamedTable layers{
        [](Database& db, const std::string& n) { return db.FindLayer(n); },
        [](Database& db, const std::string& n) { return db.AddLayer(n); }, "0", "layer"};
    return NamedEntry(name, layers);
}

Handle Reader::StyleNamed(const std::string& name) {
    static const NamedTable styles{
        [](Database& db, const std::string& n) { return db.FindTextStyle(n); },
        [](Database& db, const std::string& n) { return db.AddTextStyle(n); }, "Standard",
        "text style"};
    return NamedEntry(name, styles);
}

namespace {

// Names that structure a file and can never be an entity or object of its own.
bool IsStructural(std::string_view type) {
    return type.empty() || type == "BLOCK" || type == "ENDBLK" || type == "TABLE" ||
           type == "ENDTAB" || type == "CLASS" || type == "SECTION" || type == "ENDSEC" ||
           type == "EOF";
}

}  // namespace

void Reader::CheckType(const Record& rec, const char* section) const {
    // A type name is one word of visible characters: a blank or a control character in it
    // could not be written back as the same name.
    if (std::any_of(rec.type.begin(), rec.type.end(),
                    [](char c) { return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F; })) {
        tok_.Fail(rec.line,
                  std::string("an object type name holds a blank or a control character in "
                              "section ") +
                      section,
                  rec.type);
    }
    if (IsStructural(rec.type)) {
        const std::string what = rec.type.empty() ? "an object without a type name"
                                                  : "misplaced " + std::string(rec.type);
        tok_.Fail(rec.line, what + " in section " + section, rec.type);
    }
}

void Reader::EntityRecord(const Record& rec, Handle space) {
    CheckType(rec, space == kNullHandle ? "ENTITIES" : "BLOCKS");
    static constexpr std::string_view kModelled[] = {"LINE",  "LWPOLYLINE", "CIRCLE", "ARC",
                                                     "POINT", "TEXT",       "ATTDEF", "ATTRIB",
                                                     "MTEXT", "INSERT",     "SEQEND"};
    const bool modelled =
        std::find(std::begin(kModelled), std::end(kModelled), rec.type) != std::end(kModelled);
    Parsed p = Parse(rec, true, !modelled);
    p.owner = Resolve(p.owner);
    std::unique_ptr<Entity> e = BuildEntity(rec, p);
    e->handle = Claim(p.handle, rec);
    e->owner = p.owner;
    if (e->Kind() == ObjectKind::BlockReference && !pendingBlocks_.empty() &&
        pendingBlocks_.back().first == kNullHandle) {
        pendingBlocks_.back().first = e->handle;
    }
    if (!p.xdata.empty()) {
        ReadXData(*e, p.xdata);
    }
    if (auto* u = Database::Cast<UnknownEntity>(e.get());
        u != nullptr && u->typeName == "ELLIPSE") {
        MendEllipse(*u, rec);
    } else if (u != nullptr && u->typeName == "DIMENSION") {
        dimensions_.push_back(u->handle);
        for (const Tag& t : u->tags) {
            if (t.code == 2) {
                dimensionBlocks_.insert(t.value);  // its picture; checked in Finish
                break;
            }
        }
    }
    if (space == kNullHandle) {
        bool paper = false;
        for (const auto& s : p.segments) {
            for (const auto& t : s.tags) {
                paper = paper || (t.code == 67 && Trim(t.value) == "1");
            }
        }
        const auto* block = db_->Block(p.owner);
        const bool layout = block != nullptr && (block->IsModelSpace() || block->IsPaperSpace());
        if (!layout) {
            // Looked up once: the spaces do not change while the entities are read.
            Handle& cached = paper ? paperSpace_ : modelSpace_;
            if (cached == kNullHandle || db_->Block(cached) == nullptr) {
                cached = db_->FindBlock(paper ? "*Paper_Space" : "*Model_Space");
            }
            space = cached;
        } else {
            space = p.owner;
        }
    }
    Place(std::move(e), space, rec);
}

// An ellipse whose axis ratio is above 1 has its axes swapped: the minor axis becomes the
// major one, the ratio its inverse, and the parameters move by a quarter turn, so that every
// point stays where it was. Readers refuse or mend such an ellipse otherwise.
void Reader::MendEllipse(UnknownEntity& e, const Record& rec) {
    Tag* axis[3] = {};
    Tag* ratio = nullptr;
    Tag* params[2] = {};
    double normal[3] = {0, 0, 1};
    for (Tag& t : e.tags) {
        if (t.code == 11 || t.code == 21 || t.code == 31) {
            axis[(t.code - 11) / 10] = &t;
        } else if (t.code == 40) {
            ratio = &t;
        } else if (t.code == 41 || t.code == 42) {
            params[t.code - 41] = &t;
        } else if (t.code == 210 || t.code == 220 || t.code == 230) {
            ParseReal(t.value, normal[(t.code - 210) / 10]);
        }
    }
    double r = 0;
    double m[3] = {0, 0, 0};
    if (ratio == nullptr || axis[0] == nullptr || axis[1] == nullptr ||
        !ParseReal(ratio->value, r) || r <= 1.0 + 1e-12) {
        return;
    }
    for (int i = 0; i < 3; ++i) {
        if (axis[i] != nullptr) {
            ParseReal(axis[i]->value, m[i]);
        }
    }
    // The minor axis: the normal crossed with the major axis, times the ratio.
    const double minor[3] = {(normal[1] * m[2] - normal[2] * m[1]) * r,
                             (normal[2] * m[0] - normal[0] * m[2]) * r,
                             (normal[0] * m[1] - normal[1] * m[0]) * r};
    for (int i = 0; i < 3; ++i) {
        if (axis[i] != nullptr) {
            axis[i]->value = FormatReal(minor[i]);
        }
    }
    ratio->value = FormatReal(1.0 / r);
    double start = 0;
    double end = 2 * std::numbers::pi;
    if (params[0] != nullptr && params[1] != nullptr && ParseReal(params[0]->value, start) &&
        ParseReal(params[1]->value, end) &&
        std::abs(std::abs(end - start) - 2 * std::numbers::pi) > 1e-9) {  // a whole one stays
        for (Tag* param : params) {
            double v = 0;
            ParseReal(param->value, v);
            v -= std::numbers::pi / 2;
            param->value = FormatReal(v < 0 ? v + 2 * std::numbers::pi : v);
        }
    }
    Repair("line " + std::to_string(rec.line) + ": an ellipse had an axis ratio of " +
           FormatReal(r) + "; its axes were swapped");
}

// Adds the entity to its space, or to the entity whose followers it is.
void Reader::Place(std::unique_ptr<Entity> e, Handle space, const Record& rec) {
    const ObjectKind kind = e->Kind();
    const bool follower = kind == ObjectKind::Attribute || kind == ObjectKind::Seqend ||
                          (kind == ObjectKind::UnknownEntity && rec.type == "VERTEX");
    if (openParent_ != kNullHandle && follower) {
        e->owner = openParent_;
        auto* ref = db_->Get<BlockReference>(openParent_);
        if (ref != nullptr && kind != ObjectKind::Attribute && kind != ObjectKind::Seqend) {
            Repair("line " + std::to_string(rec.line) +
                   ": a VERTEX under a block reference was dropped");
            return;
        }
        const Handle h = db_->Add(std::move(e));
        if (ref != nullptr) {
            if (kind == ObjectKind::Seqend) {
                ref->seqend = h;
            } else {
                ref->attributes.push_back(h);
            }
        } else if (auto* owner = db_->Get<UnknownEntity>(openParent_)) {
            owner->followers.push_back(h);
        }
        if (kind == ObjectKind::Seqend) {
            openParent_ = kNullHandle;
        }
        return;
    }
    if (openParent_ != kNullHandle) {
        Repair("line " + std::to_string(openParentLine_) +
               ": an entity's attribute or vertex list has no SEQEND");
        if (auto* ref = db_->Get<BlockReference>(openParent_);
            ref != nullptr && ref->seqend == kNullHandle) {
            auto end = std::make_unique<Seqend>();
            end->owner = openParent_;
            end->layer = ref->layer;
            ref->seqend = db_->Add(std::move(end));
        }
        openParent_ = kNullHandle;
    }
    // A stray ATTRIB holds text: it is kept where it stands, and the audit names it, so that
    // it is never lost unseen (no file can hold it there, so it is not written until it is
    // attached or erased). A stray SEQEND holds nothing.
    if (kind == ObjectKind::Seqend) {
        Repair("line " + std::to_string(rec.line) + ": " + std::string(rec.type) +
               " outside any block reference was dropped");
        return;
    }
    BlockRecord* block = db_->Block(space);
    if (block == nullptr) {
        space =
            db_->ModelSpace() != kNullHandle ? db_->ModelSpace() : db_->FindBlock("*Model_Space");
        if (space == kNullHandle) {
            const Handle before = Making();
            space = db_->DefineBlock("*Model_Space");
            Generated(before);
        }
        block = db_->Block(space);
    }
    e->owner = space;
    bool opens = false;
    if (auto* u = dynamic_cast<UnknownEntity*>(e.get())) {
        for (const auto& t : u->tags) {
            opens = opens || (t.code == 66 && Trim(t.value) == "1");
        }
        opens = opens || u->typeName == "POLYLINE";
    }
    opens = opens || (kind == ObjectKind::BlockReference && rec.tags.size() > 0 &&
                      std::any_of(rec.tags.begin(), rec.tags.end(), [](const RawTag& t) {
                          return t.code == 66 && Trim(t.value) == "1";
                      }));
    const Handle h = db_->Add(std::move(e));
    block->entities.push_back(h);
    if (opens) {
        openParent_ = h;
        openParentLine_ = rec.line;
    }
}

std::unique_ptr<Entity> Reader::BuildEntity(const Record& rec, Parsed& p) {
    std::unique_ptr<Entity> e = NewEntity(rec.type);
    if (!e) {
        auto u = std::make_unique<UnknownEntity>();
        u->typeName = std::string(rec.type);
        KeepAll(p.body, u->tags);
        if (!p.preOwner.empty()) {
            u->extra = std::make_unique<ExtraTags>();
            KeepAll(p.preOwner, u->extra->Get(""));
        }
        return u;
    }
    if (!p.preOwner.empty()) {
        e->extra = std::make_unique<ExtraTags>();
        KeepAll(p.preOwner, e->extra->Get(""));
    }
    std::vector<LwVertex> vertices;
    std::string mtext;
    for (const auto& s : p.segments) {
        for (std::size_t i = 0; i < s.tags.size(); ++i) {
            const RawTag& t = s.tags[i];
            if ((s.marker.empty() || s.marker == "AcDbEntity") && TakeCommon(*e, t)) {
                continue;
            }
            if (t.code >= 10 && t.code <= 18 && e->Kind() != ObjectKind::LwPolyline) {
                const std::size_t start = i;
                const Point3d pt = PointAt(s.tags, i);
                if (!TakeSpecific(*e, s.marker, {t.code, {}, 0}, nullptr)) {
                    for (std::size_t k = start; k <= i; ++k) {
                        if (!e->extra)
                            e->extra = std::make_unique<ExtraTags>();
                        e->extra->Get(s.marker).push_back(Keep(s.tags[k]));
                    }
                    continue;
                }
                // The point goes to the field the code names.
                auto set = [&](Point3d& target) { target = pt; };
                switch (e->Kind()) {
                    case ObjectKind::Line:
                        set(t.code == 10 ? static_cast<Line&>(*e).start
                                         : static_cast<Line&>(*e).end);
                        break;
                    case ObjectKind::Circle:
                        set(static_cast<Circle&>(*e).center);
                        break;
                    case ObjectKind::Arc:
                        set(static_cast<Arc&>(*e).center);
                        break;
                    case ObjectKind::Point:
                        set(static_cast<PointEntity&>(*e).position);
                        break;
                    case ObjectKind::Text:
                    case ObjectKind::Attribute:
                    case ObjectKind::AttributeDefinition:
                        set(t.code == 10 ? static_cast<cad::Text&>(*e).position
                                         : static_cast<cad::Text&>(*e).alignment);
                        break;
                    case ObjectKind::MText:
                        if (t.code == 10) {
                            set(static_cast<MText&>(*e).position);
                        } else {
                            static_cast<MText&>(*e).rotation = std::atan2(pt.y, pt.x);
                        }
                        break;
                    case ObjectKind::BlockReference:
                        set(static_cast<BlockReference&>(*e).position);
                        break;
                    default:
                        break;
                }
                continue;
            }
            if (e->Kind() == ObjectKind::MText && (t.code == 1 || t.code == 3) &&
                In(s.marker, "AcDbMText")) {
                mtext.append(t.value);  // pieces are joined before decoding
                continue;
            }
            if (!TakeSpecific(*e, s.marker, t, &vertices)) {
                if (!e->extra)
                    e->extra = std::make_unique<ExtraTags>();
                e->extra->Get(s.marker).push_back(Keep(t));
            }
        }
    }
    const ObjectKind kind = e->Kind();
    if (kind == ObjectKind::LwPolyline) {
        static_cast<LwPolyline&>(*e).vertices = std::move(vertices);
    } else if (kind == ObjectKind::MText) {
        static_cast<MText&>(*e).contents = Text(mtext);
    } else if (kind == ObjectKind::Text || kind == ObjectKind::Attribute ||
               kind == ObjectKind::AttributeDefinition) {
        auto* t = static_cast<cad::Text*>(e.get());
        bool hasAlignment = false;
        for (const auto& s : p.segments) {
            for (const auto& tag : s.tags) {
                hasAlignment = hasAlignment || tag.code == 11;
            }
        }
        if (!hasAlignment) {
            t->alignment = t->position;
        }
    }
    return e;
}

bool Reader::TakeCommon(Entity& e, const RawTag& t) {
    switch (t.code) {
        case 8:
            e.layer = LayerNamed(Text(Trim(t.value)));
            return true;
        case 62:
            e.color = static_cast<std::int16_t>(Int(t));
            return true;
        case 60:
            e.visible = Int(t) == 0;
            return true;
        case 67:
            return true;  // the space follows from the owner
        default:
            return false;
    }
}

// Takes one tag into the field of the entity it names (for points: only says whether the
// code is a point of this entity). False leaves it to the extra tags.
bool Reader::TakeSpecific(Entity& e, const std::string& m, const RawTag& t,
                          std::vector<LwVertex>* vertices) {
    const bool point = t.value.data() == nullptr;
    switch (e.Kind()) {
        case ObjectKind::Line:
            return In(m, "AcDbLine") && (t.code == 10 || t.code == 11);
        case ObjectKind::Point:
            return In(m, "AcDbPoint") && t.code == 10;
        case ObjectKind::Circle:
        case ObjectKind::Arc: {
            if (In(m, "AcDbCircle") && t.code == 10)
                return true;
            if (point)
                return false;
            if (In(m, "AcDbCircle") && t.code == 40) {
                (e.Kind() == ObjectKind::Circle ? static_cast<Circle&>(e).radius
                                                : static_cast<Arc&>(e).radius) = Real(t);
                return true;
            }
            if (e.Kind() == ObjectKind::Arc && In(m, "AcDbArc") && (t.code == 50 || t.code == 51)) {
                // Whole turns dropped: an angle of 1e13 degrees is the same arc, and code that
                // walks an arc's quarters should not walk a billion turns.
                (t.code == 50 ? static_cast<Arc&>(e).startAngle : static_cast<Arc&>(e).endAngle) =
                    std::fmod(Real(t), 360.0) * kRadians;
                return true;
            }
            return false;
        }
        case ObjectKind::LwPolyline: {
            auto& pl = static_cast<LwPolyline&>(e);
            if (!In(m, "AcDbPolyline"))
                return false;
            switch (t.code) {
                case 90:
                    return true;  // the count follows from the vertices
                case 91:
                    return true;  // vertex identifiers are not kept
                case 70: {
                    const int flags = static_cast<int>(Int(t));
                    pl.closed = (flags & 1) != 0;
                    pl.flags = flags & ~1;
                    return true;
                }
                case 43:
                    pl.constantWidth = Real(t);
                    return true;
                case 38:
                    pl.elevation = Real(t);
                    return true;
                case 10:
                    vertices->push_back({Real(t), 0});
                    return true;
                case 20:
                case 40:
                case 41:
                case 42: {
                    if (vertices->empty())
                        return false;
                    LwVertex& v = vertices->back();
                    (t.code == 20   ? v.y
                     : t.code == 40 ? v.startWidth
                     : t.code == 41 ? v.endWidth
                                    : v.bulge) = Real(t);
                    return true;
                }
                default:
                    return false;
            }
        }
        case ObjectKind::Text:
        case ObjectKind::Attribute:
        case ObjectKind::AttributeDefinition: {
            auto& x = static_cast<cad::Text&>(e);
            if (In(m, "AcDbText")) {
                if (t.code == 10 || t.code == 11)
                    return true;
                if (point)
                    return false;
                switch (t.code) {
                    case 40:
                        x.height = Real(t);
                        return true;
                    case 1:
                        x.text = Text(t.value);
                        return true;
                    case 50:
                        x.rotation = Real(t) * kRadians;
                        return true;
                    case 41:
                        x.widthFactor = Real(t);
                        return true;
                    case 51:
                        x.oblique = Real(t) * kRadians;
                        return true;
                    case 7:
                        x.style = StyleNamed(Text(Trim(t.value)));
                        return true;
                    case 72: {
                        const long long h = Int(t);
                        x.horizontal = static_cast<TextHorz>(h >= 0 && h <= 5 ? h : 0);
                        return true;
                    }
                    default:
                        break;
                }
            }
            if (point)
                return false;
            if (t.code == 73 && e.Kind() == ObjectKind::Text &&
                (In(m, "AcDbText#2") || m == "AcDbText")) {
                const long long v = Int(t);
                x.vertical = static_cast<TextVert>(v >= 0 && v <= 3 ? v : 0);
                return true;
            }
            if (e.Kind() == ObjectKind::Text)
                return false;
            const bool own = m == "AcDbAttribute" || m == "AcDbAttributeDefinition";
            if (!own)
                return false;
            switch (t.code) {
                case 74: {
                    const long long v = Int(t);
                    x.vertical = static_cast<TextVert>(v >= 0 && v <= 3 ? v : 0);
                    return true;
                }
                case 2:
                    (e.Kind() == ObjectKind::Attribute ? static_cast<Attribute&>(e).tag
                                                       : static_cast<AttributeDefinition&>(e).tag) =
                        Text(t.value);
                    return true;
                case 70:
                    (e.Kind() == ObjectKind::Attribute
                         ? static_cast<Attribute&>(e).flags
                         : static_cast<AttributeDefinition&>(e).flags) = static_cast<int>(Int(t));
                    return true;
                case 3:
                    if (e.Kind() != ObjectKind::AttributeDefinition)
                        return false;
                    static_cast<AttributeDefinition&>(e).prompt = Text(t.value);
                    return true;
                default:
                    return false;
            }
        }
        case ObjectKind::MText: {
            auto& x = static_cast<MText&>(e);
            if (!In(m, "AcDbMText"))
                return false;
            if (t.code == 10 || t.code == 11)
                return true;
            if (point)
                return false;
            switch (t.code) {
                case 40:
                    x.height = Real(t);
                    return true;
                case 41:
                    x.referenceWidth = Real(t);
                    return true;
                case 71: {
                    const long long a = Int(t);
                    x.attachment = a >= 1 && a <= 9 ? static_cast<int>(a) : 1;
                    return true;
                }
                case 72:
                    return true;  // written again as left to right
                case 7:
                    x.style = StyleNamed(Text(Trim(t.value)));
                    return true;
                case 50:
                    x.rotation = Real(t) * kRadians;
                    return true;
                default:
                    return false;
            }
        }
        case ObjectKind::BlockReference: {
            auto& r = static_cast<BlockReference&>(e);
            if (!In(m, "AcDbBlockReference", "AcDbMInsertBlock"))
                return false;
            if (t.code == 10)
                return true;
            if (point)
                return false;
            switch (t.code) {
                case 66:
                    return true;
                case 2:
                    BlockNamed(Text(Trim(t.value)), t.line);
                    return true;
                case 41:
                    r.scale.x = Real(t);
                    return true;
                case 42:
                    r.scale.y = Real(t);
                    return true;
                case 43:
                    r.scale.z = Real(t);
                    return true;
                case 50:
                    r.rotation = Real(t) * kRadians;
                    return true;
                case 70:
                case 71: {
                    const long long n = Int(t);
                    (t.code == 70 ? r.columns : r.rows) =
                        n >= 1 && n <= 32767 ? static_cast<int>(n) : 1;
                    return true;
                }
                case 44:
                    r.columnSpacing = Real(t);
                    return true;
                case 45:
                    r.rowSpacing = Real(t);
                    return true;
                default:
                    return false;
            }
        }
        default:
            return false;
    }
}

// Every line type an entity names (group 6 of its common part) must be defined for the file
// it is written to, as must Continuous, which a layer without a line type is written with: a
// missing one is added as a solid line, and reported.
void Reader::DefineUsedLinetypes() {
    std::vector<std::string> used;
    auto note = [&used](const Tag& t) {
        if (t.code == 6 && std::find(used.begin(), used.end(), t.value) == used.end()) {
            used.push_back(t.value);
        }
    };
    db_->ForEachObject([&](const DbObject& o) {
        if (const auto* layer = Database::Cast<LayerRecord>(&o);
            layer != nullptr && !layer->erased && layer->linetype == kNullHandle) {
            note({6, "Continuous"});
        }
        if (!o.IsEntity() || o.erased) {
            return;
        }
        if (const auto* u = Database::Cast<UnknownEntity>(&o)) {
            int markers = 0;
            for (const Tag& t : u->tags) {
                markers += t.code == 100 ? 1 : 0;
                if (markers <= 1) {
                    note(t);
                }
            }
        } else if (o.extra) {
            if (const TagList* common = o.extra->Find("AcDbEntity")) {
                for (const Tag& t : *common) {
                    note(t);
                }
            }
        }
    });
    for (const std::string& name : used) {
        if (!name.empty() && db_->FindLinetype(name) == kNullHandle) {
            const Handle before = Making();
            db_->AddLinetype(name);
            Generated(before);
            if (++undefinedNames_["line type"] <= kNamedRepairs) {
                Repair(FillMessage("line type %s was used but not defined; it was added", {name}));
            }
        }
    }
}

void Reader::ReadXData(Entity& e, const std::vector<RawTag>& tags) {
    for (const auto& t : tags) {
        if (t.code == 1001) {
            const std::string name = Text(Trim(t.value));
            auto cached = appCache_.find(name);
            Handle app = cached != appCache_.end() ? cached->second : db_->FindApp(name);
            if (app == kNullHandle) {
                const Handle before = Making();
                app = db_->RegisterApp(name);
                Generated(before);
                Repair("application " + name + " was used but not registered; it was added");
            }
            if (cached == appCache_.end()) {
                appCache_.emplace(name, app);
            }
            e.xdata.push_back({app, {}});
        } else if (t.code < 1000) {
            tok_.Fail(t.line, "group code " + std::to_string(t.code) +
                                  " after the extended data of " + e.TypeName());
        } else if (e.xdata.empty()) {
            tok_.Fail(t.line, "extended data without its application name (1001)");
        } else {
            Tag kept = Keep(t);
            e.xdata.back().items.push_back({kept.code, std::move(kept.value)});
        }
    }
}

}  // namespace cad::dxfread
