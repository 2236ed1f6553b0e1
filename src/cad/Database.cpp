#include "cad/Database.h"

#include <algorithm>
#include <bit>

#include "cad/NumberText.h"

namespace cad {

Database::Database() {
    CreateDefaults();
}
Database::Database(BareTag) {}
Database::~Database() = default;

DbObject* Database::Object(Handle h) {
    if (h < dense_.size()) {
        return dense_[h].get();
    }
    auto it = sparse_.find(h);
    return it == sparse_.end() ? nullptr : it->second.get();
}

const DbObject* Database::Object(Handle h) const {
    return const_cast<Database*>(this)->Object(h);
}

Handle Database::NewHandle() {
    return nextHandle_++;
}

void Database::ReserveHandle(Handle h) {
    if (h >= nextHandle_) {
        nextHandle_ = h + 1;
    }
}

Handle Database::Add(std::unique_ptr<DbObject> object) {
    if (object->handle == kNullHandle || Object(object->handle) != nullptr) {
        object->handle = NewHandle();
    } else {
        ReserveHandle(object->handle);
    }
    const Handle h = object->handle;
    if (h < dense_.size()) {
        dense_[h] = std::move(object);
    } else if (h < 2 * (count_ + 4096)) {
        // Near the others: grow the vector (geometrically, so appends stay cheap).
        dense_.resize(std::max<std::size_t>(h + 1, dense_.size() * 3 / 2));
        for (auto it = sparse_.begin(); it != sparse_.end();) {
            if (it->first < dense_.size()) {
                dense_[it->first] = std::move(it->second);
                it = sparse_.erase(it);
            } else {
                ++it;
            }
        }
        dense_[h] = std::move(object);
    } else {
        sparse_.emplace(h, std::move(object));
    }
    ++count_;
    return h;
}

void Database::ForEachObject(const std::function<void(const DbObject&)>& fn) const {
    for (const auto& o : dense_) {
        if (o) {
            fn(*o);
        }
    }
    for (const auto& [h, o] : sparse_) {
        fn(*o);
    }
}

Handle Database::Append(std::unique_ptr<Entity> entity, Handle space) {
    if (space == kNullHandle) {
        space = modelSpace_;
    }
    BlockRecord* block = Block(space);
    if (block == nullptr) {
        return kNullHandle;
    }
    entity->owner = space;
    if (entity->layer == kNullHandle) {
        entity->layer = currentLayer_;
    }
    if (auto* text = const_cast<Text*>(Cast<Text>(entity.get()));
        text != nullptr && text->style == kNullHandle) {
        text->style = currentStyle_;
    }
    if (auto* mtext = const_cast<MText*>(Cast<MText>(entity.get()));
        mtext != nullptr && mtext->style == kNullHandle) {
        mtext->style = currentStyle_;
    }
    const Handle h = Add(std::move(entity));
    block->entities.push_back(h);
    return h;
}

Handle Database::AppendToBlock(const std::string& blockName, std::unique_ptr<Entity> entity) {
    const Handle block = FindBlock(blockName);
    return block == kNullHandle ? kNullHandle : Append(std::move(entity), block);
}

std::vector<Entity*> Database::Entities(Handle space) {
    std::vector<Entity*> out;
    const BlockRecord* block = Block(space == kNullHandle ? modelSpace_ : space);
    if (block == nullptr) {
        return out;
    }
    out.reserve(block->entities.size());
    for (Handle h : block->entities) {
        auto* e = Get<Entity>(h);
        if (e != nullptr && !e->erased) {
            out.push_back(e);
        }
    }
    return out;
}

std::vector<const Entity*> Database::Entities(Handle space) const {
    auto all = const_cast<Database*>(this)->Entities(space);
    return {all.begin(), all.end()};
}

Handle Database::AddAttribute(Handle reference, std::unique_ptr<Attribute> attribute) {
    auto* ref = Get<BlockReference>(reference);
    if (ref == nullptr) {
        return kNullHandle;
    }
    attribute->owner = reference;
    if (attribute->layer == kNullHandle) {
        attribute->layer = ref->layer;
    }
    if (attribute->style == kNullHandle) {
        attribute->style = currentStyle_;
    }
    const Handle h = Add(std::move(attribute));
    ref->attributes.push_back(h);
    if (ref->seqend == kNullHandle) {
        auto end = std::make_unique<Seqend>();
        end->owner = reference;
        end->layer = ref->layer;
        ref->seqend = Add(std::move(end));
    }
    return h;
}

bool Database::Erase(Handle h) {
    DbObject* o = Object(h);
    if (o == nullptr || o->erased) {
        return false;
    }
    o->erased = true;
    if (auto* ref = Database::Cast<BlockReference>(o)) {
        for (Handle a : ref->attributes) {
            Erase(a);
        }
        Erase(ref->seqend);
    } else if (auto* unknown = Database::Cast<UnknownEntity>(o)) {
        for (Handle f : unknown->followers) {
            Erase(f);
        }
    }
    return true;
}

// ---- tables

Handle Database::Table(std::string_view tableName) const {
    for (Handle h : tables_) {
        const auto* t = Get<SymbolTable>(h);
        if (t != nullptr && EqualsNoCase(t->name, tableName)) {
            return h;
        }
    }
    return kNullHandle;
}

namespace {

// The key a table record is found by: its name without regard to case, and as a file holds
// it: control characters become blanks when written and blanks at either end are trimmed when
// read, so two names that would write alike are one name.
void NameKey(std::string_view name, std::string& key) {
    key.clear();
    for (char c : name) {
        const auto u = static_cast<unsigned char>(c);
        key.push_back(u < 0x20 || u == 0x7F ? ' '
                                            : static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c));
    }
    const std::size_t first = key.find_first_not_of(' ');
    if (first == std::string::npos) {
        key.clear();
        return;
    }
    key.erase(key.find_last_not_of(' ') + 1);
    key.erase(0, first);
}

std::size_t KeyHash(std::string_view key) {
    return std::hash<std::string_view>{}(key);
}

// Whether `name` has the name key `key` (see NameKey), without making its key.
bool HasKey(std::string_view name, std::string_view key) {
    std::size_t first = 0;
    std::size_t last = name.size();
    auto blank = [&name](std::size_t i) {
        const auto u = static_cast<unsigned char>(name[i]);
        return u <= 0x20 || u == 0x7F;
    };
    while (first < last && blank(first)) {
        ++first;
    }
    while (last > first && blank(last - 1)) {
        --last;
    }
    if (last - first != key.size()) {
        return false;
    }
    for (std::size_t i = 0; i < key.size(); ++i) {
        const char c = name[first + i];
        const auto u = static_cast<unsigned char>(c);
        const char k = u < 0x20 || u == 0x7F ? ' ' : (c >= 'a' && c <= 'z' ? c - 32 : c);
        if (k != key[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace

// False when a record of that key is indexed already: the first of a name wins.
// Room for `records` records at most half the slots used, the slots kept a power of two.
void Database::Reserve(RecordIndex& index, std::size_t records) {
    if (2 * records <= index.slots.size()) {
        return;
    }
    std::vector<RecordIndex::Slot> old(std::bit_ceil(std::max<std::size_t>(16, 2 * records)));
    old.swap(index.slots);
    const std::size_t mask = index.slots.size() - 1;
    for (const auto& slot : old) {
        if (slot.record != nullptr) {
            std::size_t at = slot.hash & mask;
            while (index.slots[at].record != nullptr) {
                at = (at + 1) & mask;
            }
            index.slots[at] = slot;
        }
    }
}

bool Database::IndexRecord(RecordIndex& index, const TableRecord* record,
                           const std::string& key) const {
    if (2 * (index.used + 1) > index.slots.size()) {
        Reserve(index, 2 * (index.used + 1));
    }
    const std::size_t hash = KeyHash(key);
    const std::size_t mask = index.slots.size() - 1;
    std::size_t at = hash & mask;
    for (; index.slots[at].record != nullptr; at = (at + 1) & mask) {
        const auto& slot = index.slots[at];
        if (slot.hash == hash) {
            if (HasKey(slot.record->name, key)) {
                return false;
            }
        }
    }
    index.slots[at] = {hash, record};
    ++index.used;
    return true;
}

// The record of that key; `stale` when a slot of its hash names a record erased or renamed
// since it was indexed.
Handle Database::LookUp(const RecordIndex& index, std::size_t hash, std::string_view key,
                        bool& stale) const {
    if (index.slots.empty()) {
        return kNullHandle;
    }
    const std::size_t mask = index.slots.size() - 1;
    for (std::size_t at = hash & mask; index.slots[at].record != nullptr; at = (at + 1) & mask) {
        const auto& slot = index.slots[at];
        if (slot.hash != hash) {
            continue;
        }
        const TableRecord* r = slot.record;
        if (!r->erased && HasKey(r->name, key)) {
            return r->handle;
        }
        stale = true;
    }
    return kNullHandle;
}

Handle Database::FindRecord(std::string_view tableName, std::string_view name) const {
    // Names are looked up for every entity read and every extended-data item appended, and a
    // table may hold 100,000 layers: each table keeps an index by name key, brought up to
    // date with the records appended since the last look-up, so that neither a hit nor a
    // miss walks the table.
    const Handle tableHandle = Table(tableName);
    const auto* table = Get<SymbolTable>(tableHandle);
    if (table == nullptr) {
        return kNullHandle;
    }
    // Look-ups come in runs on one table (every entity's layer): its index is kept at hand.
    RecordIndex& index = tableHandle == lastTable_ && lastIndex_ != nullptr
                             ? *lastIndex_
                             : recordIndex_[tableHandle];
    lastTable_ = tableHandle;
    lastIndex_ = &index;
    NameKey(name, lookupKey_);
    const std::size_t hash = KeyHash(lookupKey_);
    for (int pass = 0; pass < 2; ++pass) {
        if (index.indexed > table->records.size()) {
            index = {};
        }
        Reserve(index, table->records.size());
        for (; index.indexed < table->records.size(); ++index.indexed) {
            const Handle h = table->records[index.indexed];
            const auto* r = Get<TableRecord>(h);
            if (r != nullptr && !r->erased) {
                NameKey(r->name, recordKey_);
                IndexRecord(index, r, recordKey_);
            }
        }
        bool stale = false;
        const Handle found = LookUp(index, hash, lookupKey_, stale);
        if (found != kNullHandle || !stale) {
            return found;
        }
        index = {};  // a record was erased or renamed since: index the table again
    }
    return kNullHandle;
}

void Database::ReindexRecords() {
    recordIndex_.clear();
    lastTable_ = kNullHandle;
    lastIndex_ = nullptr;
}

namespace {

Handle AddRecord(Database& db, const std::string& tableName, std::unique_ptr<TableRecord> record) {
    auto* table = db.Get<SymbolTable>(db.Table(tableName));
    if (table == nullptr) {
        auto head = std::make_unique<SymbolTable>();
        head->name = tableName;
        const Handle th = db.Add(std::move(head));
        db.MutableTables().push_back(th);
        table = db.Get<SymbolTable>(th);
    }
    record->owner = table->handle;
    const Handle h = db.Add(std::move(record));
    table->records.push_back(h);
    return h;
}

}  // namespace

Handle Database::AddLayer(const std::string& name, int color) {
    if (Handle h = FindLayer(name); h != kNullHandle) {
        return h;
    }
    auto layer = std::make_unique<LayerRecord>();
    layer->name = name;
    layer->color = color;
    layer->linetype = FindLinetype("Continuous");
    return AddRecord(*this, "LAYER", std::move(layer));
}

Handle Database::AddLinetype(const std::string& name) {
    if (Handle h = FindLinetype(name); h != kNullHandle) {
        return h;
    }
    auto linetype = std::make_unique<LinetypeRecord>();
    linetype->name = name;
    linetype->pattern = {{72, "65"}, {73, "0"}, {40, "0.0"}};
    return AddRecord(*this, "LTYPE", std::move(linetype));
}

void Database::SetCurrentLayer(Handle layer) {
    if (Layer(layer) != nullptr) {
        currentLayer_ = layer;
        SetHeader("$CLAYER", {{8, Layer(layer)->name}});
    }
}

Handle Database::AddTextStyle(const std::string& name, const std::string& font,
                              const std::string& bigFont) {
    if (Handle h = FindTextStyle(name); h != kNullHandle) {
        return h;
    }
    auto style = std::make_unique<TextStyleRecord>();
    style->name = name;
    style->font = font;
    style->bigFont = bigFont;
    return AddRecord(*this, "STYLE", std::move(style));
}

void Database::SetCurrentTextStyle(Handle style) {
    if (TextStyle(style) != nullptr) {
        currentStyle_ = style;
        SetHeader("$TEXTSTYLE", {{7, TextStyle(style)->name}});
    }
}

Handle Database::RegisterApp(std::string_view name) {
    if (Handle h = FindApp(name); h != kNullHandle) {
        return h;
    }
    auto app = std::make_unique<AppIdRecord>();
    app->name = std::string(name);
    return AddRecord(*this, "APPID", std::move(app));
}

std::string ShortAppName(std::string_view name) {
    std::string out(name.substr(0, 31));
    for (char& c : out) {
        const bool ok = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                        (c >= '0' && c <= '9') || c == '$' || c == '-' || c == '_';
        if (!ok) {
            c = '_';
        }
    }
    return out;
}

Handle Database::FindApp(std::string_view name) const {
    if (Handle h = FindTyped<AppIdRecord>("APPID", name); h != kNullHandle) {
        return h;
    }
    const auto* table = Get<SymbolTable>(Table("APPID"));
    if (table == nullptr) {
        return kNullHandle;
    }
    // One name is what an R14 save makes of the other. Two different long names that merely
    // begin alike stay two applications.
    const std::string shortName = ShortAppName(name);
    for (Handle h : table->records) {
        const auto* r = Get<AppIdRecord>(h);
        if (r != nullptr && !r->erased &&
            (EqualsNoCase(r->name, shortName) || EqualsNoCase(ShortAppName(r->name), name))) {
            return h;
        }
    }
    return kNullHandle;
}

std::string Database::AppName(Handle app) const {
    const auto* r = Get<AppIdRecord>(app);
    return r == nullptr ? std::string() : r->name;
}

// ---- blocks

Handle Database::DefineBlock(const std::string& name, const Point3d& basePoint) {
    if (Handle h = FindBlock(name); h != kNullHandle) {
        return h;
    }
    auto block = std::make_unique<BlockRecord>();
    block->name = name;
    block->basePoint = basePoint;
    block->beginHandle = NewHandle();
    block->endHandle = NewHandle();
    block->beginLayer = FindLayer("0");
    return AddRecord(*this, "BLOCK_RECORD", std::move(block));
}

void Database::ClearBlock(Handle block) {
    if (auto* b = Block(block)) {
        for (Handle h : b->entities) {
            Erase(h);
        }
        // The erased entities stay reachable by handle; the block's list forgets them, so a
        // block redefined again and again does not grow.
        b->entities.clear();
    }
}

BlockReference* Database::InsertBlock(Handle block, const Point3d& position, const Vector3d& scale,
                                      double rotation, Handle space) {
    const BlockRecord* def = Block(block);
    if (def == nullptr) {
        return nullptr;
    }
    auto ref = std::make_unique<BlockReference>();
    ref->block = block;
    ref->position = position;
    ref->scale = scale;
    ref->rotation = rotation;
    BlockReference* raw = ref.get();
    if (Append(std::move(ref), space) == kNullHandle) {
        return nullptr;
    }
    std::vector<const AttributeDefinition*> defs;
    for (Handle h : def->entities) {
        const auto* d = Get<AttributeDefinition>(h);
        if (d != nullptr && !d->erased && (d->flags & 2) == 0) {
            defs.push_back(d);
        }
    }
    if (defs.empty()) {
        return raw;
    }
    const Matrix3d m = Matrix3d::Translation({position.x, position.y, position.z}) *
                       Matrix3d::Rotation(rotation) * Matrix3d::Scaling(scale.x, scale.y, scale.z) *
                       Matrix3d::Translation(Point3d{} - def->basePoint);
    for (const AttributeDefinition* d : defs) {
        auto att = std::make_unique<Attribute>();
        att->text = d->text;
        att->widthFactor = d->widthFactor;
        att->oblique = d->oblique;
        att->style = d->style;
        att->horizontal = d->horizontal;
        att->vertical = d->vertical;
        att->color = d->color;
        att->visible = d->visible;
        att->tag = d->tag;
        att->flags = d->flags;
        att->position = m.Apply(d->position);
        att->alignment = m.Apply(d->alignment);
        att->height = d->height * scale.y;
        att->rotation = d->rotation + rotation;
        att->layer = d->layer;
        AddAttribute(raw->handle, std::move(att));
    }
    return raw;
}

}  // namespace cad
