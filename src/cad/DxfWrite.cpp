// Writing a database as DXF: the sections, tables, blocks and objects.
#include "cad/DxfWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <numbers>
#include <unordered_set>
#include <vector>

#include "cad/Audit.h"
#include "cad/Encoding.h"
#include "cad/Limits.h"
#include "cad/Message.h"
#include "cad/NumberText.h"

namespace cad {

const char* AcadVer(DxfVersion v) {
    switch (v) {
        case DxfVersion::R14:
            return "AC1014";
        case DxfVersion::R2000:
            return "AC1015";
        case DxfVersion::R2004:
            return "AC1018";
        case DxfVersion::R2007:
            return "AC1021";
        case DxfVersion::R2010:
            return "AC1024";
    }
    return "AC1024";
}

DxfVersion VersionForSaveFormat(std::string_view f) {
    if (f == "8")
        return DxfVersion::R14;
    if (f == "12")
        return DxfVersion::R2000;
    if (f == "24")
        return DxfVersion::R2004;
    if (f == "36")
        return DxfVersion::R2007;
    return DxfVersion::R2010;
}

namespace {

// The names users know the versions by.
std::string VersionName(std::string_view acadVer) {
    static const std::pair<const char*, const char*> kNames[] = {
        {"AC1009", "R12"},  {"AC1012", "R13"},  {"AC1014", "R14"},
        {"AC1015", "2000"}, {"AC1018", "2004"}, {"AC1021", "2007"},
        {"AC1024", "2010"}, {"AC1027", "2013"}, {"AC1032", "2018"}};
    for (const auto& [code, name] : kNames) {
        if (acadVer == code) {
            return std::string(name) + " (" + code + ")";
        }
    }
    return std::string(acadVer);
}

}  // namespace

std::string VersionChange(const Database& db, DxfVersion written) {
    const std::string own = db.HeaderString("$ACADVER");
    if (own.empty() || own == AcadVer(written)) {
        return {};
    }
    return FillMessage(
        "the drawing was in version %s and is written in version %s, the one its "
        "save format gives",
        {VersionName(own), VersionName(AcadVer(written))});
}

namespace dxfwrite {

Writer::Writer(const Database& db, DxfVersion version, TagSink& sink)
    : db_(db), version_(version), sink_(sink) {
    charset_ =
        version >= DxfVersion::R2007 ? "UTF-8" : CodepageCharset(db.HeaderString("$DWGCODEPAGE"));
    if (version == DxfVersion::R14) {
        ShortenAppNames();
    }
}

namespace {

bool IsPlainByte(unsigned char c) {
    return (c >= 0x20 || c == '\t') && c < 0x80;
}

// Printable ASCII (and tabs) go to the file as they are, whatever its code page. Every text
// written is checked, eight bytes at a time: a word passes when no byte has its top bit set
// and none is below 0x20 (a tab is looked at byte by byte).
bool IsPlain(std::string_view s) {
    constexpr std::uint64_t kHigh = 0x8080808080808080ull;
    constexpr std::uint64_t kSpaces = 0x2020202020202020ull;
    std::size_t i = 0;
    for (; i + 8 <= s.size(); i += 8) {
        std::uint64_t w;
        std::memcpy(&w, s.data() + i, 8);
        if (((w | (w - kSpaces)) & kHigh) != 0) {
            for (std::size_t k = i; k < i + 8; ++k) {
                if (!IsPlainByte(static_cast<unsigned char>(s[k]))) {
                    return false;
                }
            }
        }
    }
    for (; i < s.size(); ++i) {
        if (!IsPlainByte(static_cast<unsigned char>(s[i]))) {
            return false;
        }
    }
    return true;
}

}  // namespace

// A literal "\U+" reads back as the character it names.
void Writer::NoteEscapes(std::string_view value) {
    for (std::size_t at = value.find('\\'); at != std::string_view::npos;
         at = value.find('\\', at + 1)) {
        if (at + 2 < value.size() && (value[at + 1] == 'U' || value[at + 1] == 'u') &&
            value[at + 2] == '+') {
            altered_ = true;
        }
    }
}

// A line break (or any control byte) inside a value would break the file: it becomes a blank.
void Writer::BlankControls(std::string& encoded) {
    for (char& c : encoded) {
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t') {
            c = ' ';
            altered_ = true;
        }
    }
}

void Writer::Str(int code, std::string_view value) {
    if (IsPlain(value)) {
        if (std::memchr(value.data(), '\\', value.size()) != nullptr) {
            NoteEscapes(value);
        }
        sink_.Put(code, value);
        return;
    }
    NoteEscapes(value);
    std::string v = EncodeText(value, charset_);
    BlankControls(v);
    sink_.Put(code, v);
}

void Writer::Raw(int code, std::string_view value) {
    sink_.Put(code, value);
}

void Writer::Real(int code, double v) {
    altered_ = altered_ || !std::isfinite(v);
    char text[kRealTextMax];
    sink_.Put(code, std::string_view(text, WriteReal(text, v) - text));
}

namespace {

// Degrees made from radians carry the conversion's last bits (89.99999999999999 for a right
// angle): a value within a few units in the last place of a decimal of twelve significant
// digits is written as that decimal. Anything further from one is written exactly as it is.
double CleanDecimal(double v) {
    if (!std::isfinite(v) || v == 0) {
        return v;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.12g", v);
    double clean = 0;
    if (!ParseReal(text, clean)) {
        return v;
    }
    const double ulp = std::abs(std::nextafter(v, HUGE_VAL) - v);
    return std::abs(clean - v) <= 4 * ulp ? clean : v;
}

}  // namespace

void Writer::Angle(int code, double radians) {
    Real(code, CleanDecimal(radians * (180.0 / std::numbers::pi)));
}

void Writer::Int(int code, long long v) {
    char text[24];
    sink_.Put(code, std::string_view(text, std::to_chars(text, text + sizeof text, v).ptr - text));
}

void Writer::Hex(int code, Handle h) {
    char text[kHandleTextMax];
    sink_.Put(code, std::string_view(text, WriteHandle(text, h) - text));
}

void Writer::Point(int code, const Point3d& p) {
    Real(code, p.x);
    Real(code + 10, p.y);
    Real(code + 20, p.z);
}

void Writer::Tags(const TagList& tags) {
    for (const auto& t : tags) {
        if (TypeOfCode(t.code) == TagType::String) {
            Str(t.code, t.value);
        } else {
            Raw(t.code, t.value);
        }
    }
}

void Writer::Extra(const DbObject& o, std::string_view marker) {
    if (o.extra) {
        if (const TagList* tags = o.extra->Find(marker)) {
            Tags(*tags);
        }
    }
}

void Writer::Head(const DbObject& o, std::string_view type, Handle owner, int handleCode) {
    Str(0, type);
    Hex(handleCode, o.handle);
    Extra(o, "");
    Hex(330, owner);
}

const std::string& Writer::NameOf(Handle record) const {
    static const std::string none;
    const auto* r = Database::Cast<TableRecord>(db_.Object(record));
    return r == nullptr ? none : r->name;
}

const std::string& Writer::AppName(Handle app) {
    if (version_ != DxfVersion::R14) {
        return NameOf(app);
    }
    auto [it, fresh] = appNames_.try_emplace(app);
    if (fresh) {
        it->second = ShortAppName(NameOf(app));
        altered_ = altered_ || it->second != NameOf(app);
    }
    return it->second;
}

namespace {

std::string Upper(std::string s) {
    for (char& c : s) {
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    }
    return s;
}

}  // namespace

// R14 holds at most 31 letters, digits and "$-_" in an application name. Every name is
// shortened once, here, and the APPID table and the extended data both use the result. Names
// R14 can hold keep theirs; a shortened name that would fall on another application's gets a
// number, so two applications never become one in the file.
void Writer::ShortenAppNames() {
    const auto* table = db_.Get<SymbolTable>(db_.Table("APPID"));
    if (table == nullptr) {
        return;
    }
    std::unordered_set<std::string> taken;
    std::vector<const AppIdRecord*> shortened;
    for (Handle h : table->records) {
        const auto* r = db_.Get<AppIdRecord>(h);
        if (r == nullptr || r->erased) {
            continue;
        }
        if (ShortAppName(r->name) == r->name && taken.insert(Upper(r->name)).second) {
            appNames_[h] = r->name;
        } else {
            shortened.push_back(r);
        }
    }
    for (const AppIdRecord* r : shortened) {
        const std::string base = ShortAppName(r->name);
        std::string name = base;
        for (int n = 2; !taken.insert(Upper(name)).second; ++n) {
            const std::string suffix = "_" + std::to_string(n);
            name = base.substr(0, 31 - suffix.size()) + suffix;
        }
        appNames_[r->handle] = name;
        altered_ = true;
    }
}

void Writer::Run() {
    Header();
    Classes();
    Tables();
    Blocks();
    EntitiesSection();
    Objects();
    Thumbnail();
    Raw(0, "EOF");
}

void Writer::Header() {
    Raw(0, "SECTION");
    Raw(2, "HEADER");
    Raw(9, "$ACADVER");
    Raw(1, AcadVer(version_));
    bool seed = false, extMin = false, extMax = false;
    extents_ = SpaceExtents(db_, db_.ModelSpace());
    for (const auto& var : db_.Header()) {
        if (var.name == "$ACADVER" || (var.name == "$EXTNAMES" && !R2000Plus())) {
            continue;
        }
        if (var.name == "$EXTMIN" || var.name == "$EXTMAX") {
            (var.name == "$EXTMIN" ? extMin : extMax) = true;
            Extents(var.name);
            continue;
        }
        Str(9, var.name);
        if (var.name == "$HANDSEED") {
            Hex(5, db_.HandleSeed());
            seed = true;
            continue;
        }
        Tags(var.values);
    }
    if (!seed) {
        Raw(9, "$HANDSEED");
        Hex(5, db_.HandleSeed());
    }
    if (!extMin) {
        Extents("$EXTMIN");
    }
    if (!extMax) {
        Extents("$EXTMAX");
    }
    if (R2000Plus() && db_.FindHeader("$EXTNAMES") == nullptr) {
        Raw(9, "$EXTNAMES");
        Raw(290, "1");
    }
    Raw(0, "ENDSEC");
}

// The model space's extents as they are when the file is written; an empty drawing has the
// customary inverted box (1e20 ... -1e20).
void Writer::Extents(const std::string& name) {
    const bool min = name == "$EXTMIN";
    Point3d p = min ? Point3d{1e20, 1e20, 1e20} : Point3d{-1e20, -1e20, -1e20};
    if (extents_) {
        p = min ? extents_->min : extents_->max;
        // A text's box can reach past the furthest point a drawing may hold.
        for (double* v : {&p.x, &p.y, &p.z}) {
            *v = std::clamp(*v, -kMaxCoordinate, kMaxCoordinate);
        }
    }
    Raw(9, name);
    Point(10, p);
}

void Writer::Classes() {
    Raw(0, "SECTION");
    Raw(2, "CLASSES");
    Tags(db_.Classes());
    Raw(0, "ENDSEC");
}

void Writer::Tables() {
    Raw(0, "SECTION");
    Raw(2, "TABLES");
    for (Handle h : db_.Tables()) {
        if (const auto* t = db_.Get<SymbolTable>(h); t != nullptr && !t->erased) {
            Table(*t);
        }
    }
    Raw(0, "ENDSEC");
}

void Writer::Table(const SymbolTable& table) {
    Raw(0, "TABLE");
    Str(2, table.name);
    Hex(5, table.handle);
    Extra(table, "");
    Hex(330, kNullHandle);
    Raw(100, "AcDbSymbolTable");
    int count = 0;
    for (Handle h : table.records) {
        const DbObject* r = db_.Object(h);
        count += r != nullptr && !r->erased ? 1 : 0;
    }
    Int(70, count);
    Extra(table, "AcDbSymbolTable");
    for (Handle h : table.records) {
        if (const DbObject* r = db_.Object(h); r != nullptr && !r->erased) {
            Record(*r);
        }
    }
    Raw(0, "ENDTAB");
}

void Writer::Record(const DbObject& record) {
    if (const auto* other = Database::Cast<OtherRecord>(&record)) {
        Head(record, other->typeName, record.owner, other->typeName == "DIMSTYLE" ? 105 : 5);
        Tags(other->tags);
        return;
    }
    const auto& r = static_cast<const TableRecord&>(record);
    Head(r, r.TypeName(), r.owner);
    Raw(100, "AcDbSymbolTableRecord");
    Extra(r, "AcDbSymbolTableRecord");
    if (const auto* layer = Database::Cast<LayerRecord>(&r)) {
        Raw(100, "AcDbLayerTableRecord");
        Str(2, r.name);
        Int(70, r.flags);
        Int(62, layer->color);
        Str(6, layer->linetype != kNullHandle ? NameOf(layer->linetype) : "Continuous");
        Extra(r, "AcDbLayerTableRecord");
    } else if (const auto* style = Database::Cast<TextStyleRecord>(&r)) {
        Raw(100, "AcDbTextStyleTableRecord");
        Str(2, r.name);
        Int(70, r.flags);
        Real(40, style->fixedHeight);
        Real(41, style->widthFactor);
        Real(50, style->oblique);
        Int(71, style->generation);
        Real(42, style->lastHeight);
        Str(3, style->font);
        Str(4, style->bigFont);
        Extra(r, "AcDbTextStyleTableRecord");
    } else if (const auto* ltype = Database::Cast<LinetypeRecord>(&r)) {
        Raw(100, "AcDbLinetypeTableRecord");
        Str(2, r.name);
        Int(70, r.flags);
        Str(3, ltype->description);
        Tags(ltype->pattern);
        Extra(r, "AcDbLinetypeTableRecord");
    } else if (Database::Cast<AppIdRecord>(&r) != nullptr) {
        Raw(100, "AcDbRegAppTableRecord");
        Str(2, AppName(r.handle));
        Int(70, r.flags);
        Extra(r, "AcDbRegAppTableRecord");
    } else if (const auto* block = Database::Cast<BlockRecord>(&r)) {
        Raw(100, "AcDbBlockTableRecord");
        Str(2, r.name);
        Hex(340, block->layout);
        Extra(r, "AcDbBlockTableRecord");
    }
}

void Writer::Blocks() {
    Raw(0, "SECTION");
    Raw(2, "BLOCKS");
    const auto* table = db_.Get<SymbolTable>(db_.Table("BLOCK_RECORD"));
    if (table != nullptr) {
        for (Handle h : table->records) {
            const auto* b = db_.Get<BlockRecord>(h);
            if (b != nullptr && !b->erased) {
                const bool inEntities = h == db_.ModelSpace() || h == db_.PaperSpace();
                Block(*b, !inEntities);
            }
        }
    }
    Raw(0, "ENDSEC");
}

// BLOCK and ENDBLK open alike: own handle, owner, entity subclass, the block's layer.
void Writer::BlockEntityHead(const BlockRecord& block, Handle own, const ExtraTags& extra) {
    Hex(5, own);
    if (const TagList* pre = extra.Find("")) {
        Tags(*pre);
    }
    Hex(330, block.handle);
    Raw(100, "AcDbEntity");
    if (block.handle == db_.PaperSpace()) {
        Raw(67, "1");
    }
    Str(8, block.beginLayer != kNullHandle ? NameOf(block.beginLayer) : "0");
    if (const TagList* t = extra.Find("AcDbEntity")) {
        Tags(*t);
    }
}

void Writer::Block(const BlockRecord& block, bool withEntities) {
    bool hasAttdefs = false;
    for (Handle h : block.entities) {
        const auto* d = db_.Get<AttributeDefinition>(h);
        hasAttdefs = hasAttdefs || (d != nullptr && !d->erased);
    }
    Raw(0, "BLOCK");
    BlockEntityHead(block, block.beginHandle, block.beginExtra);
    Raw(100, "AcDbBlockBegin");
    Str(2, block.name);
    Int(70, hasAttdefs ? (block.flags | 2) : (block.flags & ~2));
    Point(10, block.basePoint);
    Str(3, block.name);
    Str(1, block.description);
    if (const TagList* t = block.beginExtra.Find("AcDbBlockBegin")) {
        Tags(*t);
    }
    if (withEntities) {
        for (Handle h : block.entities) {
            const auto* e = db_.Get<cad::Entity>(h);
            if (e != nullptr && !e->erased) {
                Entity(*e);
            }
        }
    }
    Raw(0, "ENDBLK");
    BlockEntityHead(block, block.endHandle, block.endExtra);
    Raw(100, "AcDbBlockEnd");
    if (const TagList* t = block.endExtra.Find("AcDbBlockEnd")) {
        Tags(*t);
    }
}

void Writer::EntitiesSection() {
    Raw(0, "SECTION");
    Raw(2, "ENTITIES");
    for (Handle space : {db_.ModelSpace(), db_.PaperSpace()}) {
        const auto* block = db_.Block(space);
        if (block == nullptr) {
            continue;
        }
        for (Handle h : block->entities) {
            const auto* e = db_.Get<cad::Entity>(h);
            if (e != nullptr && !e->erased) {
                Entity(*e);
            }
        }
    }
    Raw(0, "ENDSEC");
}

void Writer::Objects() {
    Raw(0, "SECTION");
    Raw(2, "OBJECTS");
    for (Handle h : db_.Objects()) {
        if (const DbObject* o = db_.Object(h); o != nullptr && !o->erased) {
            Object(*o);
        }
    }
    Raw(0, "ENDSEC");
}

void Writer::Object(const DbObject& o) {
    if (const auto* dict = Database::Cast<Dictionary>(&o)) {
        Head(o, "DICTIONARY", o.owner);
        Raw(100, "AcDbDictionary");
        if (dict->hardOwner) {
            Raw(280, "1");
        }
        Int(281, dict->cloning);
        for (const auto& [key, value] : dict->entries) {
            const DbObject* target = db_.Object(value);
            if (target == nullptr || target->erased) {
                continue;
            }
            Str(3, key);
            Hex(dict->hardOwner ? 360 : 350, value);
        }
        Extra(o, "AcDbDictionary");
    } else if (const auto* x = Database::Cast<XRecord>(&o)) {
        Head(o, "XRECORD", o.owner);
        Raw(100, "AcDbXrecord");
        Int(280, x->cloning);
        Tags(x->data);
    } else if (const auto* u = Database::Cast<UnknownObject>(&o)) {
        Head(o, u->typeName, o.owner);
        Tags(u->tags);
    }
}

void Writer::Thumbnail() {
    if (db_.Thumbnail().empty() || !R2000Plus()) {
        return;
    }
    Raw(0, "SECTION");
    Raw(2, "THUMBNAILIMAGE");
    Tags(db_.Thumbnail());
    Raw(0, "ENDSEC");
}

}  // namespace dxfwrite

namespace {

// Group codes right-aligned in three columns, as most writers do, with their line end.
constexpr int kCodes = 1072;
struct CodeText {
    char text[8];
    std::size_t size;
};

const CodeText* CodeTexts() {
    static const auto table = [] {
        std::vector<CodeText> t(kCodes);
        for (int code = 0; code < kCodes; ++code) {
            std::snprintf(t[code].text, sizeof t[code].text, "%3d\n", code);
            t[code].size = std::strlen(t[code].text);
        }
        return t;
    }();
    return table.data();
}

// Tags as text in `out`. The text is written into room made ahead (the string is kept longer
// than what it holds until Finish), so each tag costs a few copies and no size checks of the
// string's own.
class TextSink : public TagSink {
public:
    // Writing starts after what `out` holds, into the room it has reserved.
    explicit TextSink(std::string& out) : out_(out), used_(out.size()), codes_(CodeTexts()) {}
    ~TextSink() override { Finish(); }

    void Put(int code, std::string_view value) override {
        if (code < 0 || code >= kCodes) {
            char text[16];
            const int size = std::snprintf(text, sizeof text, "%d\n", code);
            Append(std::string_view(text, static_cast<std::size_t>(size)), value);
            return;
        }
        const CodeText& c = codes_[code];
        // The code's text is copied whole (one move) and the end set back over the padding.
        char* p = Room(sizeof c.text + value.size() + 1);
        std::memcpy(p, c.text, sizeof c.text);
        p += c.size;
        std::memcpy(p, value.data(), value.size());
        p[value.size()] = '\n';
        used_ += c.size + value.size() + 1;
    }

    const char* Data() const { return out_.data(); }
    std::size_t Size() const { return used_; }
    void Clear() { used_ = 0; }
    void Finish() { out_.resize(used_); }

private:
    void Append(std::string_view code, std::string_view value) {
        char* p = Room(code.size() + value.size() + 1);
        std::memcpy(p, code.data(), code.size());
        std::memcpy(p + code.size(), value.data(), value.size());
        p[code.size() + value.size()] = '\n';
        used_ += code.size() + value.size() + 1;
    }

    char* Room(std::size_t need) {
        if (used_ + need > out_.size()) {
            // Room is made a step at a time, so little more than what is written gets cleared
            // first; the string's reserve, or its doubling, keeps the text in place.
            out_.resize(used_ + need + kStep);
        }
        return out_.data() + used_;
    }

    static constexpr std::size_t kStep = 16384;
    std::string& out_;
    std::size_t used_;
    const CodeText* codes_;
};

// Audited first, so a drawing that must not be written leaves no trace at all.
void RequireAudit(const Database& db, const std::string& path) {
    auto issues = Audit(db);
    if (issues.empty()) {
        return;
    }
    // The first few say what is wrong; a drawing with thousands of faults must not make a
    // message of thousands of lines.
    constexpr std::size_t kShown = 3;
    const std::size_t more = issues.size() > kShown ? issues.size() - kShown : 0;
    issues.resize(issues.size() - more);
    throw DxfError(path, 0,
                   more == 0
                       ? FillMessage("the drawing fails its audit: %s", {FormatIssues(issues)})
                       : FillMessage("the drawing fails its audit: %s (and %d more)",
                                     {FormatIssues(issues), std::to_string(more)}));
}

}  // namespace

bool WriteDxf(const Database& db, DxfVersion version, TagSink& sink) {
    RequireAudit(db, "");
    dxfwrite::Writer writer(db, version, sink);
    writer.Run();
    return !writer.Altered();
}

std::string WriteDxfString(const Database& db, DxfVersion version, bool* exact) {
    std::string out;
    out.reserve(db.ObjectCount() * 160 + 4096);
    bool written = false;
    {
        TextSink sink(out);
        written = WriteDxf(db, version, sink);
    }
    if (exact != nullptr) {
        *exact = written;
    }
    return out;
}

namespace {

// Streams the tags into the atomic file in large pieces.
class FileSink : public TagSink {
public:
    explicit FileSink(files::AtomicFile& file) : file_(file) {}
    void Put(int code, std::string_view value) override {
        text_.Put(code, value);
        if (text_.Size() >= kChunk) {
            Flush();
        }
    }
    void Flush() {
        file_.Write(std::string_view(text_.Data(), text_.Size()));
        text_.Clear();
    }

private:
    static constexpr std::size_t kChunk = 1 << 20;
    files::AtomicFile& file_;
    std::string buffer_;
    TextSink text_{buffer_};
};

}  // namespace

void WriteDxfFile(const Database& db, const std::string& path, DxfVersion version,
                  const files::WriteOptions& options) {
    RequireAudit(db, path);
    files::AtomicFile file(path, options);
    FileSink sink(file);
    dxfwrite::Writer(db, version, sink).Run();
    sink.Flush();
    file.Commit();
}

}  // namespace cad
