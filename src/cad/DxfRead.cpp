// Reading DXF: sections, tables, blocks and objects; the checks and repairs after reading.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "cad/DxfReader.h"
#include "cad/Encoding.h"
#include "cad/Limits.h"
#include "cad/Message.h"
#include "cad/NumberText.h"
#include "files/FileIdentity.h"

namespace cad {

DxfError::DxfError(std::string file, long line, std::string problem, std::string text)
    : std::runtime_error(file + (line > 0 ? ":" + std::to_string(line) : std::string()) + ": " +
                         problem + (text.empty() ? std::string() : " (\"" + text + "\")")),
      file_(std::move(file)),
      line_(line),
      problem_(std::move(problem)),
      text_(std::move(text)) {}

DxfError DxfError::AtOffset(std::string file, long offset, const std::string& problem,
                            std::string text) {
    DxfError e(std::move(file), 0, "at byte offset " + std::to_string(offset) + ": " + problem,
               std::move(text));
    e.offset_ = offset;
    return e;
}

namespace dxfread {

namespace {

bool IsTableName(std::string_view name) {
    return name == "VPORT" || name == "LTYPE" || name == "LAYER" || name == "STYLE" ||
           name == "VIEW" || name == "UCS" || name == "APPID" || name == "DIMSTYLE" ||
           name == "BLOCK_RECORD";
}

bool IsSectionName(std::string_view name) {
    return name == "HEADER" || name == "CLASSES" || name == "TABLES" || name == "BLOCKS" ||
           name == "ENTITIES" || name == "OBJECTS" || name == "THUMBNAILIMAGE" ||
           name == "ACDSDATA";
}

}  // namespace

Reader::Reader(std::string_view data, std::string fileName)
    : tok_(data, std::move(fileName)), db_(std::make_unique<Database>(Database::BareTag{})) {
    charset_ = "CP1252";
}

bool Reader::ReadRecord(Record& rec) {
    tok_.ReleaseConsumed();
    recordStart_ = tok_.NextStart();
    RawTag t;
    if (!tok_.Next(t)) {
        return false;
    }
    if (t.code != 0) {
        tok_.Fail(t.line, "group code 0 expected, found " + std::to_string(t.code), t.value);
    }
    rec.type = Trim(t.value);
    rec.line = t.line;
    rec.tags.clear();
    while (tok_.NextInRecord(t)) {
        rec.tags.push_back(t);
    }
    return true;
}

void Reader::ExpectRecord(Record& rec, const char* what) {
    if (!ReadRecord(rec)) {
        tok_.Fail(tok_.Line(), std::string("the file ends inside ") + what + " (truncated?)");
    }
}

std::string Reader::Text(std::string_view raw) const {
    if (utf8_ || IsAscii(raw)) {
        if (raw.find("\\U+") == std::string_view::npos) {
            return std::string(raw);
        }
        return ExpandUnicodeEscapes(raw);
    }
    return DecodeText(raw, charset_);
}

double Reader::Real(const RawTag& t) const {
    double v = 0;
    if (!ParseReal(t.value, v)) {
        tok_.Fail(t.line + 1,
                  "value of group code " + std::to_string(t.code) + " is not a valid number",
                  t.value);
    }
    if (!InCoordinateRange(v)) {
        tok_.Fail(t.line + 1, "value of group code " + std::to_string(t.code) + " is out of range",
                  t.value);
    }
    return v;
}

long long Reader::Int(const RawTag& t) const {
    long long v = 0;
    if (ParseInt(t.value, v)) {
        if (v < -(1LL << 40) || v > (1LL << 40)) {
            tok_.Fail(t.line + 1,
                      "value of group code " + std::to_string(t.code) + " is out of range",
                      t.value);
        }
        return v;
    }
    double d = 0;
    if (ParseReal(t.value, d) && d == std::floor(d) && std::abs(d) < 2147483648.0) {
        return static_cast<long long>(d);
    }
    tok_.Fail(t.line + 1,
              "value of group code " + std::to_string(t.code) + " is not a whole number", t.value);
}

Handle Reader::Hex(const RawTag& t) const {
    Handle h = kNullHandle;
    if (!ParseHandle(t.value, h)) {
        // Some writers put a name or a running text where a handle belongs: read as none.
        if (t.code == 5 || t.code == 105) {
            ++badHandles_;
        }
        Repair("line " + std::to_string(t.line + 1) + ": group code " + std::to_string(t.code) +
               " held \"" + std::string(Trim(t.value)) +
               "\", which is not a handle; it was read as none");
        return kNullHandle;
    }
    return h;
}

Tag Reader::Keep(const RawTag& t) const {
    if (t.code == 370) {
        return {t.code, Lineweight(t)};
    }
    switch (TypeOfCode(t.code)) {
        case TagType::String:
            return {t.code, Text(t.value)};
        case TagType::Real:
            Real(t);
            break;
        case TagType::Int16:
        case TagType::Int32:
        case TagType::Int64:
        case TagType::Bool:
            Int(t);
            break;
        case TagType::Handle:
            if (Handle h = kNullHandle; !Trim(t.value).empty() && !ParseHandle(t.value, h)) {
                return {t.code, NameInPlaceOfHandle(t)};
            }
            break;
    }
    return {t.code, std::string(Trim(t.value))};
}

void Reader::KeepAll(const std::vector<RawTag>& in, TagList& out) const {
    out.reserve(out.size() + in.size());
    for (const auto& t : in) {
        out.push_back(Keep(t));
    }
}

// Lineweights are one of a fixed set (hundredths of a millimetre, or -1 by layer, -2 by block,
// -3 default); another value is read as the next lineweight up, as other readers do.
std::string Reader::Lineweight(const RawTag& t) const {
    static constexpr long long kValid[] = {-3, -2, -1,  0,   5,   9,   13,  15,  18,
                                           20, 25, 30,  35,  40,  50,  53,  60,  70,
                                           80, 90, 100, 106, 120, 140, 158, 200, 211};
    const long long v = Int(t);
    if (std::find(std::begin(kValid), std::end(kValid), v) != std::end(kValid)) {
        return std::to_string(v);
    }
    const long long fixed = v < -3    ? -1
                            : v > 211 ? 211
                                      : *std::lower_bound(std::begin(kValid), std::end(kValid), v);
    Repair("line " + std::to_string(t.line + 1) + ": lineweight " + std::to_string(v) +
           " does not exist; it was read as " + std::to_string(fixed));
    return std::to_string(fixed);
}

// A writer's slip: a text style's name where its handle belongs (340 "standard"). The
// style's handle is put in its place; any other text becomes the null handle.
std::string Reader::NameInPlaceOfHandle(const RawTag& t) const {
    const std::string name(Trim(t.value));
    const Handle style = db_->FindTextStyle(Text(name));
    const std::string line = std::to_string(t.line + 1);
    if (style != kNullHandle) {
        Repair("line " + line + ": group code " + std::to_string(t.code) + " held the name \"" +
               name + "\" instead of a handle; the handle of text style " + name +
               " was put in its place");
        return FormatHandle(style);
    }
    Repair("line " + line + ": group code " + std::to_string(t.code) + " held \"" + name +
           "\", which is not a handle; it was read as none");
    return "0";
}

Point3d Reader::PointAt(const std::vector<RawTag>& tags, std::size_t& i) const {
    Point3d p;
    const int base = tags[i].code;
    p.x = Real(tags[i]);
    if (i + 1 < tags.size() && tags[i + 1].code == base + 10) {
        p.y = Real(tags[++i]);
        if (i + 1 < tags.size() && tags[i + 1].code == base + 20) {
            p.z = Real(tags[++i]);
        }
    }
    return p;
}

void Reader::Generated(Handle before) {
    const Handle after = db_->HandleSeed();
    if (after <= before) {
        return;
    }
    // Handles are mostly made one after another: extend the range that ends where this
    // one begins, so that checking a claim stays a look-up however many were made.
    auto next = generated_.lower_bound(before);
    if (next != generated_.begin()) {
        auto previous = std::prev(next);
        if (previous->second == before) {
            previous->second = after;
            return;
        }
    }
    generated_.emplace(before, after);
}

Handle Reader::Claim(Handle h, const Record& rec) {
    if (auto it = generated_.upper_bound(h); h != kNullHandle && it != generated_.begin()) {
        if (h < std::prev(it)->second) {
            throw HandleCollision{};
        }
    }
    if (h == kNullHandle) {
        const Handle fresh = Fresh();
        ++unhandled_;  // reported once, in Finish
        return fresh;
    }
    if (db_->Object(h) != nullptr || blockHandles_.count(h) != 0 || joined_.count(h) != 0) {
        const Handle fresh = Fresh();
        Repair("line " + std::to_string(rec.line) + ": " + std::string(rec.type) +
               " repeated handle " + FormatHandle(h) + "; given " + FormatHandle(fresh));
        return fresh;
    }
    db_->ReserveHandle(h);
    return h;
}

// A file without a handle seed says nothing of the handles still to come: before the first
// handle is made, the rest of the file is looked through for its highest one, so that no
// handle made can be one the file gives later (which would mean reading it all again).
Handle Reader::Making() {
    if (!seedKnown_) {
        seedKnown_ = true;
        db_->ReserveHandle(tok_.HighestHandleFrom(recordStart_));
    }
    return db_->HandleSeed();
}

Handle Reader::Fresh() {
    Making();
    const Handle h = db_->NewHandle();
    Generated(h);
    return h;
}

bool Reader::IsGenerated(Handle h) const {
    const auto it = generated_.upper_bound(h);
    return it != generated_.begin() && h < std::prev(it)->second;
}

Handle Reader::Resolve(Handle h) const {
    const auto it = joined_.find(h);
    return it != joined_.end() ? it->second : h;
}

std::size_t Reader::ParseHead(const Record& rec, Parsed& p) const {
    std::size_t i = 0;
    const auto& tags = rec.tags;
    for (; i < tags.size(); ++i) {
        const RawTag& t = tags[i];
        // In a DIMSTYLE, 5 is the name of an arrow block (R12): its handle is 105.
        const bool handle = t.code == 105 || (t.code == 5 && rec.type != "DIMSTYLE");
        if (handle && p.handle == kNullHandle) {
            p.handle = Hex(t);
        } else if (t.code == 102 && Trim(t.value).size() > 1) {
            while (i < tags.size()) {  // a 102 group up to its closing brace
                p.preOwner.push_back(tags[i]);
                if (tags[i].code == 102 && Trim(tags[i].value) == "}") {
                    break;
                }
                ++i;
            }
        } else if (t.code == 330) {
            p.hasOwner = true;
            p.owner = Trim(t.value).empty() ? kNullHandle : Hex(t);
            ++i;
            break;
        } else {
            break;
        }
    }
    return i;
}

Parsed Reader::Parse(const Record& rec, bool splitXData, bool body) const {
    Parsed p;
    ParseBody(rec, ParseHead(rec, p), p, splitXData, body);
    return p;
}

void Reader::ParseBody(const Record& rec, std::size_t i, Parsed& p, bool splitXData,
                       bool body) const {
    const auto& tags = rec.tags;
    p.segments.reserve(4);
    p.segments.push_back({"", {}});
    bool inGroup = false;  // inside a 102 group, whose 330s point elsewhere
    for (; i < tags.size(); ++i) {
        const RawTag& t = tags[i];
        if (t.code >= 1000 && splitXData) {
            p.xdata.assign(tags.begin() + static_cast<long>(i), tags.end());
            break;
        }
        if (p.segments.size() == 1 && t.code == 102) {
            inGroup = Trim(t.value) != "}";
        }
        if (t.code == 330 && !p.hasOwner && !inGroup && p.segments.size() == 1) {
            // An owner after a stray group: still the owner, which a writer puts first; kept
            // among the other tags it would come back first, and own the object.
            p.hasOwner = true;
            p.owner = Trim(t.value).empty() ? kNullHandle : Hex(t);
            continue;
        }
        if (body) {
            p.body.push_back(t);
        }
        if (t.code == 100) {
            const std::string_view base = Trim(t.value);
            int seen = 0;
            for (const auto& seg : p.segments) {
                const std::string_view m = seg.marker;
                seen += m.substr(0, m.find('#')) == base ? 1 : 0;
            }
            std::string marker(base);
            if (seen > 0) {
                marker += "#" + std::to_string(seen + 1);
            }
            p.segments.push_back({std::move(marker), {}});
        } else if (t.code == 101) {
            // An embedded object (an MTEXT's columns) is its own part: none of its groups are
            // the entity's own, though they share their codes.
            p.segments.push_back({std::string(kEmbeddedMarker) + std::string(Trim(t.value)), {}});
        } else {
            p.segments.back().tags.push_back(t);
        }
    }
}

// ---- sections

std::unique_ptr<Database> Reader::Run() {
    RawTag t;
    while (tok_.Next(t)) {
        Record head;
        head.line = t.line;
        if (t.code == 2 && IsSectionName(Trim(t.value))) {
            Repair("line " + std::to_string(t.line) + ": section " + std::string(Trim(t.value)) +
                   " had no SECTION before its name; it was read as a section");
            head.tags.push_back(t);
            Section(head);
            continue;
        }
        if (t.code != 0 || Trim(t.value) != "SECTION") {
            if (t.code == 0 && Trim(t.value) == "EOF") {
                sawEof_ = true;
                break;
            }
            OutsideSections(t);
            continue;
        }
        // The section's name only: a HEADER's variables follow without a group code 0.
        RawTag name;
        if (tok_.Next(name)) {
            head.tags.push_back(name);
        }
        Section(head);
    }
    if (!sawEof_ && db_->MutableHeader().empty() && db_->Tables().empty() &&
        db_->ObjectCount() == 0) {
        tok_.Fail(tok_.Line(), "the file holds no DXF section");
    }
    if (!sawEof_) {
        // Every section was closed: only the end marker is missing.
        Repair("the file ends without EOF after its last section");
    }
    Finish();
    return std::move(db_);
}

// Tags between sections (a stray ENDSEC, objects whose SECTION is missing) are dropped up to
// the next SECTION or EOF, and said so.
void Reader::OutsideSections(const RawTag& first) {
    long dropped = 1;
    RawTag t;
    while (tok_.Peek(t)) {
        const std::string_view v = Trim(t.value);
        if ((t.code == 0 && (v == "SECTION" || v == "EOF")) || (t.code == 2 && IsSectionName(v))) {
            break;
        }
        tok_.Next(t);
        ++dropped;
    }
    if (dropped == 1 && first.code == 0 && Trim(first.value) == "ENDSEC") {
        Repair("line " + std::to_string(first.line) +
               ": an ENDSEC outside any section was dropped");
        return;
    }
    Repair("line " + std::to_string(first.line) + ": " + std::to_string(dropped) +
           " groups outside any section were dropped");
}

void Reader::Section(const Record& head) {
    if (head.tags.empty() || head.tags[0].code != 2) {
        tok_.Fail(head.line, "a section without its name");
    }
    const std::string name(Trim(head.tags[0].value));
    if (name == "HEADER") {
        Header();
    } else if (name == "CLASSES") {
        RawSection(db_->MutableClasses(), "CLASSES", head.line);
    } else if (name == "TABLES") {
        Tables(head.line);
    } else if (name == "BLOCKS") {
        Blocks(head.line);
    } else if (name == "ENTITIES") {
        EntitiesSection(head.line);
    } else if (name == "OBJECTS") {
        Objects(head.line);
    } else if (name == "THUMBNAILIMAGE") {
        TagList tags;
        RawSection(tags, "THUMBNAILIMAGE", head.line);
        db_->SetThumbnail(std::move(tags));
    } else {
        TagList skipped;
        RawSection(skipped, name.c_str(), head.line);
        Repair("section " + name + " is not kept");
    }
}

void Reader::RawSection(TagList& out, const char* name, long line) {
    RawTag t;
    for (;;) {
        if (!tok_.Next(t)) {
            tok_.Fail(tok_.Line(), std::string("section ") + name + " is not terminated by ENDSEC");
        }
        if (t.code == 0) {
            const std::string_view type = Trim(t.value);
            if (type == "ENDSEC") {
                return;
            }
            if (type == "EOF" || type == "SECTION") {
                tok_.Fail(t.line, std::string("section ") + name + " is not terminated by ENDSEC",
                          t.value);
            }
        }
        out.push_back(Keep(t));
    }
}

void Reader::Header() {
    RawTag t;
    auto& header = db_->MutableHeader();
    for (;;) {
        if (!tok_.Next(t)) {
            tok_.Fail(tok_.Line(), "section HEADER is not terminated by ENDSEC");
        }
        if (t.code == 0) {
            if (Trim(t.value) != "ENDSEC") {
                tok_.Fail(t.line, "section HEADER is not terminated by ENDSEC", t.value);
            }
            break;
        }
        if (t.code == 9) {
            header.push_back({std::string(Trim(t.value)), {}});
        } else if (header.empty()) {
            Repair("line " + std::to_string(t.line) +
                   ": a header value before any variable name was dropped");
        } else {
            header.back().values.push_back(Keep(t));
        }
    }
    const std::string version = db_->HeaderString("$ACADVER");
    old_ = version.empty() || version < "AC1012";
    utf8_ = version >= "AC1021";
    charset_ = utf8_ ? "UTF-8" : CodepageCharset(db_->HeaderString("$DWGCODEPAGE"));
    Handle seed = kNullHandle;
    if (ParseHandle(db_->HeaderString("$HANDSEED"), seed) && seed > 1 && seed < (Handle{1} << 48)) {
        db_->ReserveHandle(seed - 1);
        seedKnown_ = true;
    }
}

void Reader::Tables(long line) {
    Record rec;
    for (;;) {
        ExpectRecord(rec, "section TABLES");
        if (rec.type == "ENDSEC") {
            return;
        }
        if (rec.type != "TABLE") {
            if (!IsTableName(rec.type)) {
                tok_.Fail(rec.line, "TABLE expected in section TABLES", rec.type);
            }
            // Records whose table head is missing: the head is made.
            Repair("line " + std::to_string(rec.line) + ": a " + std::string(rec.type) +
                   " record stood outside any table; its table head was made");
            Record head;
            head.type = "TABLE";
            head.line = rec.line;
            head.tags.push_back({2, rec.type, rec.line});
            Table(head, &rec);
            continue;
        }
        Table(rec);
    }
}

void Reader::Table(const Record& head, Record* first) {
    auto table = std::make_unique<SymbolTable>();
    Record rest = head;  // the name comes before the handle: set it apart
    for (auto it = rest.tags.begin(); it != rest.tags.end(); ++it) {
        if (it->code == 2) {
            table->name = Text(Trim(it->value));
            rest.tags.erase(it);
            break;
        }
    }
    Parsed p = Parse(rest, false);
    table->extra = std::make_unique<ExtraTags>();
    for (auto& s : p.segments) {
        for (const auto& t : s.tags) {
            if (t.code == 2 || (t.code == 70 && s.marker == "AcDbSymbolTable")) {
                continue;  // name and record count are the table's own
            }
            table->extra->Get(s.marker == "" ? "AcDbSymbolTable" : s.marker).push_back(Keep(t));
        }
    }
    KeepAll(p.preOwner, table->extra->Get(""));
    // One table of a name: a second one, or the file's own after the reader made one for
    // what came before it, adds its records to the first. A second table's records would be
    // found by no look-up, and the blocks of a second BLOCK_RECORD table never written.
    if (const Handle same = db_->Table(table->name); same != kNullHandle) {
        auto* kept = db_->Get<SymbolTable>(same);
        if (StandsIn(same)) {
            kept->extra = std::move(table->extra);
        } else {
            Repair(
                FillMessage("line %d: table %s came a second time; its records were added to "
                            "the first",
                            {std::to_string(head.line), table->name}));
        }
        TableRecords(same, first);
        return;
    }
    table->handle = Claim(p.handle, head);
    const Handle h = db_->Add(std::move(table));
    db_->MutableTables().push_back(h);
    TableRecords(h, first);
}

void Reader::TableRecords(Handle h, Record* first) {
    const auto& made = db_->Get<SymbolTable>(h)->records;
    standIns_ = std::any_of(made.begin(), made.end(),
                            [this](Handle r) { return IsGenerated(r) && given_.count(r) == 0; });
    if (first != nullptr) {
        if (old_) {
            AddRecordMarkers(*first);
        }
        TableRecordOf(*first, *db_->Get<SymbolTable>(h));
    }
    Record rec;
    for (;;) {
        ExpectRecord(rec, "a table");
        if (rec.type == "ENDTAB") {
            return;
        }
        if (rec.type == "ENDSEC" || rec.type == "TABLE" || rec.type == "EOF") {
            tok_.Fail(rec.line,
                      "table " + db_->Get<SymbolTable>(h)->name + " is not terminated by ENDTAB",
                      rec.type);
        }
        if (old_) {
            AddRecordMarkers(rec);
        }
        TableRecordOf(rec, *db_->Get<SymbolTable>(h));
    }
}

}  // namespace dxfread

namespace dxfread {

Handle HighestHandle(std::string_view data) {
    try {
        const Tokenizer tok(data, "");
        return tok.HighestHandleFrom(tok.NextStart());
    } catch (const DxfError&) {
        return kNullHandle;  // the reading proper reports the fault
    }
}

}  // namespace dxfread

std::unique_ptr<Database> ReadDxfString(std::string_view data, const std::string& name) {
    try {
        return dxfread::Reader(data, name).Run();
    } catch (const dxfread::HandleCollision&) {
        dxfread::Reader again(data, name);
        again.ReserveAbove(dxfread::HighestHandle(data));
        try {
            return again.Run();
        } catch (const dxfread::HandleCollision&) {
            throw DxfError(std::string(name), 0, "the handles of the file cannot be told apart");
        }
    }
}

std::unique_ptr<Database> ReadDxfFile(const std::string& path) {
    // Read-only and unlocked: a drawing another program holds open can still be read.
    // A FIFO or a device is refused at once, never waited on.
    int fd = -1;
    try {
        fd = files::OpenForReading(path);
    } catch (const files::FileError& e) {
        throw DxfError(path, 0, e.Reason());
    }
    struct stat st {};
    ::fstat(fd, &st);
    if (st.st_size == 0) {
        ::close(fd);
        throw DxfError(path, 0, "the file is empty");
    }
    // Mapped, and given back to the system as the reader moves on: a large drawing never
    // sits in memory twice (as text and as objects).
    const auto size = static_cast<std::size_t>(st.st_size);
    void* map = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    ::close(fd);
    if (map == MAP_FAILED) {
        throw DxfError(path, 0, std::string("cannot be read: ") + std::strerror(errno));
    }
    ::madvise(map, size, MADV_SEQUENTIAL);
    struct Unmap {
        void* p;
        std::size_t n;
        ~Unmap() { ::munmap(p, n); }
    } unmap{map, size};
    const std::string_view data(static_cast<const char*>(map), size);
    auto release = [map](std::size_t from, std::size_t to) {
        const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        const std::size_t start = (from + page - 1) / page * page;
        const std::size_t end = to / page * page;
        if (end > start) {
            ::madvise(static_cast<char*>(map) + start, end - start, MADV_DONTNEED);
        }
    };
    try {
        dxfread::Reader reader(data, path);
        reader.SetRelease(release);
        return reader.Run();
    } catch (const dxfread::HandleCollision&) {
        dxfread::Reader again(data, path);
        again.SetRelease(release);
        again.ReserveAbove(dxfread::HighestHandle(data));
        try {
            return again.Run();
        } catch (const dxfread::HandleCollision&) {
            throw DxfError(path, 0, "the handles of the file cannot be told apart");
        }
    }
}

std::unique_ptr<Database> TryReadDxfFile(const std::string& path, std::string& error) {
    try {
        return ReadDxfFile(path);
    } catch (const DxfError& e) {
        error = e.what();
        return nullptr;
    }
}

}  // namespace cad
