// Reading table records, blocks and objects, and completing the database afterwards.
#include <algorithm>
#include <unordered_map>

#include "cad/DxfReader.h"
#include "cad/Message.h"
#include "cad/NumberText.h"

namespace cad::dxfread {

namespace {

std::unique_ptr<TableRecord> NewRecord(std::string_view type) {
    if (type == "LAYER") {
        return std::make_unique<LayerRecord>();
    }
    if (type == "STYLE") {
        return std::make_unique<TextStyleRecord>();
    }
    if (type == "LTYPE") {
        return std::make_unique<LinetypeRecord>();
    }
    if (type == "APPID") {
        return std::make_unique<AppIdRecord>();
    }
    if (type == "BLOCK_RECORD") {
        return std::make_unique<BlockRecord>();
    }
    return nullptr;
}

// The shape nearly every record has: at most four subclass markers, none twice, no embedded
// object, and no owner or 102 group after a stray group. Its tags are taken in one pass;
// any other record is split into its segments first.
bool UsualShape(const std::vector<RawTag>& tags, std::size_t from) {
    std::string_view seen[4];
    int markers = 0;
    for (std::size_t i = from; i < tags.size(); ++i) {
        const RawTag& t = tags[i];
        if (t.code == 100) {
            const std::string_view marker = Trim(t.value);
            if (markers == 4 || std::find(seen, seen + markers, marker) != seen + markers) {
                return false;
            }
            seen[markers++] = marker;
        } else if (t.code == 101 || (markers == 0 && (t.code == 330 || t.code == 102))) {
            return false;
        }
    }
    return true;
}

}  // namespace

// Fills the fields a record class models; false for a tag it leaves to its extra tags.
bool Reader::TakeRecordField(TableRecord& r, const RawTag& t) const {
    if (t.code == 2) {
        r.name = Text(Trim(t.value));
        return true;
    }
    if (t.code == 70) {
        r.flags = static_cast<int>(Int(t));
        return true;
    }
    if (auto* style = Database::Cast<TextStyleRecord>(&r)) {
        switch (t.code) {
            case 40:
                style->fixedHeight = Real(t);
                return true;
            case 41:
                style->widthFactor = Real(t);
                return true;
            case 50:
                style->oblique = Real(t);
                return true;
            case 71:
                style->generation = static_cast<int>(Int(t));
                return true;
            case 42:
                style->lastHeight = Real(t);
                return true;
            case 3:
                style->font = Text(t.value);
                return true;
            case 4:
                style->bigFont = Text(t.value);
                return true;
            default:
                return false;
        }
    }
    if (auto* layer = Database::Cast<LayerRecord>(&r); layer != nullptr && t.code == 62) {
        layer->color = static_cast<int>(Int(t));
        return true;
    }
    return false;
}

// A layer's line type. Layers of a table mostly name one line type: the last one found is
// asked first.
Handle Reader::LinetypeNamed(const std::string& name) {
    const auto* last = db_->Get<LinetypeRecord>(lastLinetype_);
    if (last != nullptr && !last->erased && last->name == name) {
        return lastLinetype_;
    }
    const Handle found = db_->FindLinetype(name);
    if (found != kNullHandle) {
        lastLinetype_ = found;
    }
    return found;
}

// One tag of a modelled record, under the subclass marker it follows ("" before the first).
void Reader::RecordTag(TableRecord& record, const RawTag& t, std::string_view marker,
                       std::string& linetypeName) {
    if (TakeRecordField(record, t)) {
        return;
    }
    const ObjectKind kind = record.Kind();
    if (t.code == 6 && kind == ObjectKind::Layer) {
        linetypeName = Text(t.value);
    } else if (t.code == 3 && kind == ObjectKind::Linetype) {
        static_cast<LinetypeRecord&>(record).description = Text(t.value);
    } else if (kind == ObjectKind::Linetype && marker != "AcDbSymbolTableRecord") {
        static_cast<LinetypeRecord&>(record).pattern.push_back(Keep(t));
    } else if (t.code == 340 && kind == ObjectKind::BlockRecord) {
        static_cast<BlockRecord&>(record).layout = Hex(t);
    } else {
        if (!record.extra) {
            record.extra = std::make_unique<ExtraTags>();
        }
        record.extra->Get(marker.empty() ? "AcDbSymbolTableRecord" : std::string(marker))
            .push_back(Keep(t));
    }
}

void Reader::TableRecordOf(const Record& rec, SymbolTable& table) {
    if (rec.type != table.name) {
        Repair("line " + std::to_string(rec.line) + ": a " + std::string(rec.type) +
               " inside table " + table.name + " was dropped");
        return;
    }
    std::unique_ptr<TableRecord> record = NewRecord(rec.type);
    if (record == nullptr) {
        OtherRecordOf(rec, table);
        return;
    }
    Parsed p;
    const std::size_t body = ParseHead(rec, p);
    record->handle = Claim(p.handle, rec);
    record->owner = table.handle;
    if (!p.preOwner.empty()) {
        record->extra = std::make_unique<ExtraTags>();
        KeepAll(p.preOwner, record->extra->Get(""));
    }
    std::string linetypeName;
    if (UsualShape(rec.tags, body)) {
        std::string_view marker;
        for (std::size_t i = body; i < rec.tags.size(); ++i) {
            if (rec.tags[i].code == 100) {
                marker = Trim(rec.tags[i].value);
            } else {
                RecordTag(*record, rec.tags[i], marker, linetypeName);
            }
        }
    } else {
        ParseBody(rec, body, p, false, false);
        for (const auto& s : p.segments) {
            for (const auto& t : s.tags) {
                RecordTag(*record, t, s.marker, linetypeName);
            }
        }
    }
    if (auto* layer = Database::Cast<LayerRecord>(record.get())) {
        layer->linetype = LinetypeNamed(linetypeName.empty() ? "Continuous" : linetypeName);
        if (layer->linetype == kNullHandle && !linetypeName.empty()) {
            Repair("layer " + layer->name + " used the undefined line type " + linetypeName);
        }
    }
    if (JoinRecord(*record, p.handle, rec, table)) {
        return;
    }
    table.records.push_back(db_->Add(std::move(record)));
}

// VPORT, DIMSTYLE and the other records the database does not model: kept as read.
void Reader::OtherRecordOf(const Record& rec, SymbolTable& table) {
    Parsed p = Parse(rec, false);
    auto other = std::make_unique<OtherRecord>();
    other->typeName = std::string(rec.type);
    KeepAll(p.body, other->tags);
    for (const auto& t : other->tags) {
        if (t.code == 2) {
            other->name = t.value;
            break;
        }
    }
    other->handle = Claim(p.handle, rec);
    other->owner = table.handle;
    if (!p.preOwner.empty()) {
        other->extra = std::make_unique<ExtraTags>();
        KeepAll(p.preOwner, other->extra->Get(""));
    }
    table.records.push_back(db_->Add(std::move(other)));
}

namespace {

// The file's values of a record the reader had to make before the file gave it.
void TakeFields(TableRecord& kept, TableRecord& from) {
    kept.name = from.name;
    kept.flags = from.flags;
    if (from.extra) {
        kept.extra = std::move(from.extra);
    }
    if (auto* layer = Database::Cast<LayerRecord>(&kept)) {
        const auto& f = static_cast<const LayerRecord&>(from);
        layer->color = f.color;
        layer->linetype = f.linetype;
    } else if (auto* style = Database::Cast<TextStyleRecord>(&kept)) {
        const auto& f = static_cast<const TextStyleRecord&>(from);
        style->fixedHeight = f.fixedHeight;
        style->widthFactor = f.widthFactor;
        style->oblique = f.oblique;
        style->lastHeight = f.lastHeight;
        style->generation = f.generation;
        style->font = f.font;
        style->bigFont = f.bigFont;
    } else if (auto* linetype = Database::Cast<LinetypeRecord>(&kept)) {
        const auto& f = static_cast<const LinetypeRecord&>(from);
        linetype->description = f.description;
        linetype->pattern = f.pattern;
    } else if (auto* block = Database::Cast<BlockRecord>(&kept)) {
        block->layout = static_cast<const BlockRecord&>(from).layout;
    }
}

}  // namespace

// A record named like one already in its table is one record with it, found by either
// handle: the reader made the first for what came before the table (an entity on a layer,
// the model space's entities) and it takes the file's values; or the file repeats a block
// record, whose second copy would otherwise be a space or block of its own that owns
// entities and is never written.
bool Reader::JoinRecord(TableRecord& record, Handle fileHandle, const Record& rec,
                        const SymbolTable& table) {
    // Only a block record can repeat a name here, or any record stand in for the file's: the
    // other records of a file are not looked up one by one (a table may hold 100,000).
    if (record.name.empty() || (!standIns_ && record.Kind() != ObjectKind::BlockRecord)) {
        return false;
    }
    const Handle existing = db_->FindRecord(table.name, record.name);
    auto* kept = db_->Get<TableRecord>(existing);
    if (kept == nullptr || kept->Kind() != record.Kind()) {
        return false;
    }
    if (StandsIn(existing)) {
        TakeFields(*kept, record);
    } else if (auto* block = Database::Cast<BlockRecord>(kept)) {
        if (block->layout == kNullHandle) {
            block->layout = static_cast<const BlockRecord&>(record).layout;
        }
        Repair(
            FillMessage("line %d: block record %s repeats the name of block record %s; the "
                        "two were joined",
                        {std::to_string(rec.line), record.name, FormatHandle(existing)}));
    } else {
        return false;
    }
    if (fileHandle != kNullHandle && record.handle == fileHandle) {
        joined_[fileHandle] = existing;
    }
    return true;
}

// ---- blocks

void Reader::MakeSpaces() {
    if (!old_) {
        return;
    }
    for (const char* name : {"*Model_Space", "*Paper_Space"}) {
        if (db_->FindBlock(name) == kNullHandle) {
            const Handle before = Making();
            db_->DefineBlock(name);
            Generated(before);
        }
    }
}

void Reader::Blocks(long line) {
    MakeSpaces();
    Record rec;
    for (;;) {
        ExpectRecord(rec, "section BLOCKS");
        if (rec.type == "ENDSEC") {
            return;
        }
        if (rec.type != "BLOCK") {
            tok_.Fail(rec.line, "BLOCK expected in section BLOCKS", rec.type);
        }
        Block(rec, line);
    }
}

void Reader::Block(const Record& head, long sectionLine) {
    Parsed p = Parse(head);
    std::string name;
    for (const auto& t : p.body) {
        if (t.code == 2) {
            name = Text(Trim(t.value));
            break;
        }
    }
    if (name.empty()) {
        // A block must have a name to be referenced and written: give it one of its own.
        std::string fresh;
        for (int n = 1; fresh.empty() || db_->FindBlock(fresh) != kNullHandle; ++n) {
            fresh = "UNNAMED_BLOCK_" + std::to_string(n);
        }
        Repair("line " + std::to_string(head.line) + ": a block without a name was named " + fresh);
        if (BlockRecord* unnamed = db_->Block(db_->FindBlock(""))) {
            unnamed->name = fresh;  // its record, also without a name
            db_->ReindexRecords();
        }
        name = fresh;
    } else if (old_ && EqualsNoCase(name, "$MODEL_SPACE")) {
        name = "*Model_Space";  // the spaces' names before R13
    } else if (old_ && EqualsNoCase(name, "$PAPER_SPACE")) {
        name = "*Paper_Space";
    }
    Handle recordHandle = db_->FindBlock(name);
    if (recordHandle == kNullHandle) {
        const Handle before = Making();
        recordHandle = db_->DefineBlock(name);
        Generated(before);
        if (!old_) {
            Repair("block " + name + " had no block record");
        }
    }
    BlockRecord& block = *db_->Block(recordHandle);
    block.beginHandle = p.handle;
    if (p.handle == kNullHandle || db_->Object(p.handle) != nullptr ||
        !blockHandles_.insert(p.handle).second) {
        block.beginHandle = Fresh();
        blockHandles_.insert(block.beginHandle);
    }
    db_->ReserveHandle(block.beginHandle);
    KeepAll(p.preOwner, block.beginExtra.Get(""));
    for (const auto& s : p.segments) {
        for (std::size_t i = 0; i < s.tags.size(); ++i) {
            const RawTag& t = s.tags[i];
            if (t.code == 8) {
                block.beginLayer = LayerNamed(Text(Trim(t.value)));
            } else if (t.code == 2 || t.code == 3 || t.code == 67) {
            } else if (t.code == 70) {
                block.flags = static_cast<int>(Int(t));
            } else if (t.code == 10) {
                block.basePoint = PointAt(s.tags, i);
            } else if (t.code == 4) {
                block.description = Text(t.value);
            } else if (t.code == 1 && Trim(t.value).empty()) {
            } else {
                block.beginExtra.Get(s.marker.empty() ? "AcDbEntity" : s.marker).push_back(Keep(t));
            }
        }
    }
    // Extended data stays last, after the block's own groups.
    KeepAll(p.xdata, block.beginExtra.Get("AcDbBlockBegin"));
    Record rec;
    for (;;) {
        if (!ReadRecord(rec)) {
            tok_.Fail(head.line, "block " + name + " is not terminated by ENDBLK");
        }
        if (rec.type == "ENDBLK") {
            break;
        }
        if (rec.type == "ENDSEC" || rec.type == "BLOCK" || rec.type == "EOF") {
            tok_.Fail(rec.line, "block " + name + " is not terminated by ENDBLK", rec.type);
        }
        if (old_) {
            AddEntityMarkers(rec);
        }
        EntityRecord(rec, recordHandle);
    }
    openParent_ = kNullHandle;
    Parsed end = Parse(rec, false);
    BlockRecord& b = *db_->Block(recordHandle);
    b.endHandle = end.handle;
    if (end.handle == kNullHandle || db_->Object(end.handle) != nullptr ||
        !blockHandles_.insert(end.handle).second) {
        b.endHandle = Fresh();
        blockHandles_.insert(b.endHandle);
    }
    db_->ReserveHandle(b.endHandle);
    KeepAll(end.preOwner, b.endExtra.Get(""));
    for (const auto& s : end.segments) {
        for (const auto& t : s.tags) {
            if (t.code != 8 && t.code != 67) {
                b.endExtra.Get(s.marker.empty() ? "AcDbEntity" : s.marker).push_back(Keep(t));
            }
        }
    }
}

// ---- objects

void Reader::Objects(long line) {
    Record rec;
    for (;;) {
        ExpectRecord(rec, "section OBJECTS");
        if (rec.type == "ENDSEC") {
            return;
        }
        if (rec.type == "EOF" || rec.type == "SECTION") {
            tok_.Fail(rec.line, "section OBJECTS is not terminated by ENDSEC", rec.type);
        }
        CheckType(rec, "OBJECTS");
        Parsed p = Parse(rec, false);
        std::unique_ptr<DbObject> object;
        if (rec.type == "DICTIONARY") {
            auto dict = std::make_unique<Dictionary>();
            std::string key;
            for (const auto& s : p.segments) {
                for (const auto& t : s.tags) {
                    if (s.marker != "AcDbDictionary" && s.marker != "") {
                        if (!dict->extra)
                            dict->extra = std::make_unique<ExtraTags>();
                        dict->extra->Get(s.marker).push_back(Keep(t));
                    } else if (t.code == 3) {
                        key = Text(t.value);
                    } else if (t.code == 350 || t.code == 360) {
                        dict->entries.emplace_back(key, Hex(t));
                        dict->hardOwner = dict->hardOwner || t.code == 360;
                    } else if (t.code == 280) {
                        dict->hardOwner = Int(t) != 0;
                    } else if (t.code == 281) {
                        dict->cloning = static_cast<int>(Int(t));
                    } else {
                        if (!dict->extra)
                            dict->extra = std::make_unique<ExtraTags>();
                        dict->extra->Get("AcDbDictionary").push_back(Keep(t));
                    }
                }
            }
            object = std::move(dict);
        } else if (rec.type == "XRECORD") {
            auto x = std::make_unique<XRecord>();
            std::size_t i = 0;
            if (i < p.body.size() && p.body[i].code == 100) {
                ++i;
            }
            if (i < p.body.size() && p.body[i].code == 280) {
                x->cloning = static_cast<int>(Int(p.body[i++]));
            }
            for (; i < p.body.size(); ++i) {
                x->data.push_back(Keep(p.body[i]));
            }
            object = std::move(x);
        } else {
            auto u = std::make_unique<UnknownObject>();
            u->typeName = std::string(rec.type);
            KeepAll(p.body, u->tags);
            object = std::move(u);
        }
        if (!p.preOwner.empty()) {
            if (!object->extra)
                object->extra = std::make_unique<ExtraTags>();
            KeepAll(p.preOwner, object->extra->Get(""));
        }
        object->handle = Claim(p.handle, rec);
        object->owner = Resolve(p.owner);
        const bool root = db_->NamedObjects() == kNullHandle && rec.type == "DICTIONARY";
        const Handle h = db_->Add(std::move(object));
        db_->MutableObjects().push_back(h);
        if (root) {
            db_->SetNamedObjects(h);
        }
    }
}

}  // namespace cad::dxfread

namespace cad::dxfread {

// After the last section: the required objects, names resolved, dangling links cut.
void Reader::Finish() {
    if (!old_) {
        // What a drawing of R13 or later must hold; R12 and older have no block records,
        // spaces' blocks or objects, and get them without a word.
        const std::pair<bool, const char*> required[] = {
            {db_->FindLayer("0") != kNullHandle, "layer 0"},
            {db_->FindTextStyle("Standard") != kNullHandle, "text style Standard"},
            {db_->FindApp("ACAD") != kNullHandle, "application ACAD"},
            {db_->FindBlock("*Model_Space") != kNullHandle, "model space"},
            {db_->FindBlock("*Paper_Space") != kNullHandle, "paper space"},
            {db_->NamedObjects() != kNullHandle, "the named object dictionary"}};
        for (const auto& [present, what] : required) {
            if (!present) {
                Repair(std::string(what) + " was missing; it was added");
            }
        }
        if (unhandled_ > badHandles_) {
            Repair(std::to_string(unhandled_ - badHandles_) +
                   " objects had no handle; they were given new ones");
        }
    }
    // Dictionaries every drawing is expected to hold (an empty ACAD_COLOR, say) are added
    // as well, without a word: they hold nothing of the drawing.
    db_->AddMissingDefaults();
    for (Handle h : dimensions_) {
        auto* dimension = db_->Get<UnknownEntity>(h);
        if (dimension == nullptr) {
            continue;
        }
        for (Tag& t : dimension->tags) {
            if (t.code == 3) {  // its style, which must exist
                if (db_->FindRecord("DIMSTYLE", t.value) == kNullHandle) {
                    Repair("entity " + FormatHandle(h) + ": dimension style " + t.value +
                           " is not defined; Standard is used");
                    t.value = "Standard";
                }
                break;
            }
        }
    }
    for (const std::string& name : dimensionBlocks_) {
        if (!name.empty() && db_->FindBlock(name) == kNullHandle) {
            const Handle block = db_->DefineBlock(name);
            db_->Block(block)->flags |= name[0] == '*' ? 1 : 0;  // anonymous, as dimensions' are
            Repair("block " + name +
                   " was drawn by a dimension but not defined; an empty block was added");
        }
    }
    for (const auto& [ref, name] : pendingBlocks_) {
        Handle block = db_->FindBlock(name);
        if (block == kNullHandle) {
            block = db_->DefineBlock(name);
            Repair("block " + name + " was referenced but not defined; an empty block was added");
        }
        if (auto* r = db_->Get<BlockReference>(ref)) {
            r->block = block;
        }
    }
    DefineUsedLinetypes();
    OrderTables();
    for (const auto& [kind, count] : undefinedNames_) {
        if (count > kNamedRepairs) {
            Repair(std::to_string(count - kNamedRepairs) + " more " + kind +
                   " names were used but not defined; they were added");
        }
    }
    CompleteBlocks();
    RepairLayouts();
    RepairObjectOwners();
    db_->ForEachObject([this](const DbObject& o) {
        auto* e = const_cast<Entity*>(dynamic_cast<const Entity*>(&o));
        if (e == nullptr) {
            return;
        }
        for (auto& g : e->xdata) {
            for (auto& item : g.items) {
                if (item.code == 1005 && item.AsHandle() != kNullHandle &&
                    db_->Object(item.AsHandle()) == nullptr) {
                    Repair("entity " + FormatHandle(e->handle) + ": extended data pointed at " +
                           item.value + ", which does not exist; the link was cut");
                    item.value = "0";
                }
            }
        }
    });
    db_->SetCurrentsFromHeader();
}

// Tables in the order readers expect, whatever order the file had or the reader made them
// in: a layer is read after the line types it names.
void Reader::OrderTables() {
    static constexpr std::string_view kOrder[] = {
        "VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD"};
    auto rank = [this](Handle h) {
        const auto* table = db_->Get<SymbolTable>(h);
        const std::string_view name =
            table != nullptr ? std::string_view(table->name) : std::string_view();
        return std::find(std::begin(kOrder), std::end(kOrder), name) - std::begin(kOrder);
    };
    std::stable_sort(db_->MutableTables().begin(), db_->MutableTables().end(),
                     [&rank](Handle a, Handle b) { return rank(a) < rank(b); });
}

// A layout names its block record, and a layout's block record names its layout. Writers
// leave either link pointing at nothing; readers then refuse the file, so each is mended
// from the other side, and a layout with neither is dropped.
void Reader::RepairLayouts() {
    const Handle layouts = db_->FindDictionary("ACAD_LAYOUT");
    auto* dict = db_->GetDictionary(layouts);
    if (dict == nullptr) {
        return;
    }
    const auto entries = dict->entries;
    for (const auto& [name, h] : entries) {
        auto* layout = db_->Get<UnknownObject>(h);
        if (layout == nullptr || layout->typeName != "LAYOUT") {
            continue;
        }
        // The block record is the first 330 after the AcDbLayout marker.
        Tag* link = nullptr;
        bool inLayout = false;
        for (Tag& t : layout->tags) {
            inLayout = inLayout || (t.code == 100 && t.value == "AcDbLayout");
            if (inLayout && t.code == 330) {
                link = &t;
                break;
            }
        }
        Handle record = kNullHandle;
        if (link != nullptr && ParseHandle(link->value, record) && Resolve(record) != record) {
            record = Resolve(record);
            link->value = FormatHandle(record);
        }
        if (link != nullptr && ParseHandle(link->value, record) && db_->Block(record) != nullptr) {
            if (db_->Object(db_->Block(record)->layout) == nullptr) {
                db_->Block(record)->layout = h;
            }
            continue;
        }
        record = kNullHandle;
        const Handle layoutHandle = h;  // a structured binding cannot be captured everywhere
        db_->ForEachObject([&](const DbObject& o) {
            const auto* b = Database::Cast<BlockRecord>(&o);
            if (b != nullptr && !b->erased && b->layout == layoutHandle) {
                record = b->handle;
            }
        });
        if (record == kNullHandle && EqualsNoCase(name, "Model")) {
            record = db_->ModelSpace();
        }
        if (link != nullptr && record != kNullHandle) {
            Repair("layout " + name + " named block record " + link->value +
                   ", which does not exist; it was linked to " + db_->Block(record)->name);
            link->value = FormatHandle(record);
            db_->Block(record)->layout = h;
        } else {
            Repair("layout " + name + " had no block record; it was dropped");
            dict->Remove(name);
            layout->erased = true;
        }
    }
    std::vector<BlockRecord*> orphans;
    db_->ForEachObject([&](const DbObject& o) {
        auto* b = const_cast<BlockRecord*>(Database::Cast<BlockRecord>(&o));
        if (b == nullptr || b->erased || db_->Object(b->layout) != nullptr) {
            return;
        }
        b->layout = kNullHandle;
        if (b->name.size() > 12 && EqualsNoCase(b->name.substr(0, 12), "*Paper_Space")) {
            orphans.push_back(b);
        }
    });
    // Another paper space than the first without its layout: without entities it is what is
    // left of a deleted layout; with entities it gets a layout of its own.
    int order = 2;
    for (BlockRecord* b : orphans) {
        if (db_->Entities(b->handle).empty()) {
            Repair("block record " + b->name + " had no layout; it was dropped");
            b->erased = true;
            continue;
        }
        std::string name = b->name.substr(1);
        while (dict->Find(name) != kNullHandle) {
            name += "_";
        }
        db_->AddLayout(name, b->handle, order++);
        Repair("block record " + b->name + " had no layout; layout " + name + " was made for it");
    }
}

// An object owned by nothing, or by an object that does not exist, is given to the dictionary
// that lists it (the named object dictionary when none does).
void Reader::RepairObjectOwners() {
    std::unordered_map<Handle, Handle> listedBy;
    for (Handle h : db_->Objects()) {
        if (const auto* dict = db_->Get<Dictionary>(h)) {
            for (const auto& entry : dict->entries) {
                listedBy.emplace(entry.second, h);
            }
        } else if (const auto* other = db_->Get<UnknownObject>(h)) {
            for (const Tag& t : other->tags) {  // a dictionary with a default, say
                Handle entry = kNullHandle;
                if ((t.code == 350 || t.code == 360) && ParseHandle(t.value, entry)) {
                    listedBy.emplace(entry, h);
                }
            }
        }
    }
    for (Handle h : db_->Objects()) {
        DbObject* o = db_->Object(h);
        if (o == nullptr || o->erased || h == db_->NamedObjects() ||
            (o->owner != kNullHandle && db_->Object(o->owner) != nullptr)) {
            continue;
        }
        const auto it = listedBy.find(h);
        if (o->owner == kNullHandle && it == listedBy.end()) {
            continue;  // unowned and unlisted: left as the file has it
        }
        const Handle owner = it != listedBy.end() ? it->second : db_->NamedObjects();
        if (o->owner == kNullHandle) {
            Repair(o->TypeName() + " " + FormatHandle(h) +
                   " was owned by nothing; its owner is now " + FormatHandle(owner));
        } else {
            Repair(o->TypeName() + " " + FormatHandle(h) + " was owned by " +
                   FormatHandle(o->owner) + ", which does not exist; its owner is now " +
                   FormatHandle(owner));
        }
        o->owner = owner;
    }
}

// Block records whose BLOCK never came (or came without a name) get an empty definition.
void Reader::CompleteBlocks() {
    const auto* table = db_->Get<SymbolTable>(db_->Table("BLOCK_RECORD"));
    if (table == nullptr) {
        return;
    }
    for (Handle h : table->records) {
        BlockRecord* block = db_->Block(h);
        if (block == nullptr || block->erased) {
            continue;
        }
        if (block->beginHandle == kNullHandle || block->endHandle == kNullHandle) {
            block->beginHandle = db_->NewHandle();
            block->endHandle = db_->NewHandle();
            if (block->beginLayer == kNullHandle) {
                block->beginLayer = db_->FindLayer("0");
            }
            Repair("block " + block->name +
                   " had no definition in section BLOCKS; an empty "
                   "one was added");
        }
    }
}

}  // namespace cad::dxfread
