// The reader's internals, shared by the files that read sections and entities.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cad/Database.h"
#include "cad/DxfTokens.h"

namespace cad::dxfread {

// An object's tags sorted out: handle, the tags before its owner, the owner, its tags by
// subclass marker (a marker seen twice gets "#2"), and its extended data.
struct Parsed {
    Handle handle = kNullHandle;
    bool hasOwner = false;
    Handle owner = kNullHandle;
    std::vector<RawTag> preOwner;
    struct Segment {
        std::string marker;
        std::vector<RawTag> tags;
    };
    std::vector<Segment> segments;
    std::vector<RawTag> body;   // every tag after the owner, extended data excepted, in order
    std::vector<RawTag> xdata;  // from the first 1001 on
};

class Reader {
public:
    Reader(std::string_view data, std::string fileName);
    std::unique_ptr<Database> Run();
    // Handles made while reading start above `h` (a second reading after a collision).
    void ReserveAbove(Handle h) {
        db_->ReserveHandle(h);
        seedKnown_ = true;
    }
    void SetRelease(std::function<void(std::size_t, std::size_t)> release) {
        tok_.SetRelease(std::move(release));
    }

private:
    // records
    bool ReadRecord(Record& rec);
    void ExpectRecord(Record& rec, const char* what);
    // `body`: also list every tag after the owner (needed for what is kept as read).
    Parsed Parse(const Record& rec, bool splitXData = true, bool body = true) const;
    // Handle, 102 groups and owner only; returns where the tags after them begin.
    std::size_t ParseHead(const Record& rec, Parsed& p) const;
    // The segments and extended data from tag `from` on.
    void ParseBody(const Record& rec, std::size_t from, Parsed& p, bool splitXData,
                   bool body) const;

    // values
    std::string Text(std::string_view raw) const;
    double Real(const RawTag& t) const;
    long long Int(const RawTag& t) const;
    Handle Hex(const RawTag& t) const;  // not hexadecimal: reported, and read as none
    std::string NameInPlaceOfHandle(const RawTag& t) const;
    std::string Lineweight(const RawTag& t) const;
    Point3d PointAt(const std::vector<RawTag>& tags, std::size_t& i) const;
    Tag Keep(const RawTag& t) const;  // validated and decoded for storage
    void KeepAll(const std::vector<RawTag>& in, TagList& out) const;
    Handle Claim(Handle h, const Record& rec);
    // The handle seed before the reader makes a handle (see Generated), and a made handle.
    Handle Making();
    Handle Fresh();
    bool IsGenerated(Handle h) const;
    // A table or record the reader made for what came before the file's own: the first of
    // the file's of that name takes its place (once).
    bool StandsIn(Handle h) { return IsGenerated(h) && given_.insert(h).second; }
    // A file's handle of a record joined with another (see JoinRecord), or the handle itself.
    Handle Resolve(Handle h) const;
    // Notes the handles made since the seed was `before`: a later object of the file that
    // claims one of them means the file's $HANDSEED was too small.
    void Generated(Handle before);
    void Repair(std::string text) const { db_->Repairs().push_back(std::move(text)); }
    // R12 and older have neither block records nor the spaces' blocks: made before the
    // blocks and entities that need them.
    void MakeSpaces();

    // sections
    void Section(const Record& head);
    void OutsideSections(const RawTag& first);
    void Header();
    void RawSection(TagList& out, const char* name, long line);
    void Tables(long line);
    // `first`: a record already read that belongs to the table (its head was missing).
    void Table(const Record& head, Record* first = nullptr);
    void TableRecords(Handle table, Record* first);
    void TableRecordOf(const Record& rec, SymbolTable& table);
    void OtherRecordOf(const Record& rec, SymbolTable& table);
    bool TakeRecordField(TableRecord& r, const RawTag& t) const;
    Handle LinetypeNamed(const std::string& name);
    void RecordTag(TableRecord& record, const RawTag& t, std::string_view marker,
                   std::string& linetypeName);
    bool JoinRecord(TableRecord& record, Handle fileHandle, const Record& rec,
                    const SymbolTable& table);
    void Blocks(long line);
    void Block(const Record& rec, long sectionLine);
    void EntitiesSection(long line);
    void Objects(long line);
    void Finish();
    void CompleteBlocks();
    void RepairLayouts();
    void RepairObjectOwners();
    void MendEllipse(UnknownEntity& e, const Record& rec);
    void DefineUsedLinetypes();
    void OrderTables();

    // entities
    void CheckType(const Record& rec, const char* section) const;
    void EntityRecord(const Record& rec, Handle space);
    std::unique_ptr<Entity> BuildEntity(const Record& rec, Parsed& p);
    bool TakeCommon(Entity& e, const RawTag& t);
    bool TakeSpecific(Entity& e, const std::string& marker, const RawTag& t,
                      std::vector<LwVertex>* vertices);
    void ReadXData(Entity& e, const std::vector<RawTag>& tags);
    struct NamedTable {
        Handle (*find)(Database&, const std::string&);
        Handle (*add)(Database&, const std::string&);
        const char* fallback;  // the name given to an entry named by empty text
        const char* kind;
    };
    Handle NamedEntry(const std::string& name, const NamedTable& table);
    Handle LayerNamed(const std::string& name);
    Handle StyleNamed(const std::string& name);
    void BlockNamed(std::string name, long line);
    void Place(std::unique_ptr<Entity> e, Handle space, const Record& rec);

    Tokenizer tok_;
    std::unique_ptr<Database> db_;
    std::string charset_;
    bool utf8_ = false;
    std::unordered_set<Handle> blockHandles_;
    std::unordered_map<Handle, Handle> joined_;  // a file's record handle -> the record kept
    std::unordered_set<Handle> given_;           // made by the reader, then given by the file
    Handle lastLinetype_ = kNullHandle;
    bool standIns_ = false;  // the table being read holds records the reader made
    static constexpr long kNamedRepairs = 20;
    std::map<std::string, long> undefinedNames_;  // by kind: names used and not defined
    std::set<std::string> dimensionBlocks_;       // blocks dimensions draw with
    std::vector<Handle> dimensions_;
    std::unordered_map<std::string, Handle> appCache_;
    Handle modelSpace_ = kNullHandle;
    Handle paperSpace_ = kNullHandle;
    std::vector<std::pair<Handle, std::string>> pendingBlocks_;  // references to resolve
    Handle openParent_ = kNullHandle;  // an entity whose followers (ATTRIB, VERTEX) are coming
    long openParentLine_ = 0;
    bool sawEof_ = false;
    std::map<Handle, Handle> generated_;  // ranges [from, to) of handles made while reading
    bool old_ = true;         // R12 or older, or no version given: no subclass markers expected
    long unhandled_ = 0;      // objects read without a handle
    bool seedKnown_ = false;  // every handle the file gives is below the seed
    std::size_t recordStart_ = 0;  // where the record being read starts in the data
    mutable long badHandles_ = 0;  // handles that were not hexadecimal, reported one by one
};

// Drawings of R12 and older: subclass markers put into an entity or table record that has
// none, as later versions write them (a type they do not know stays as it is).
void AddEntityMarkers(Record& rec);
void AddRecordMarkers(Record& rec);

// Thrown when a handle of the file was already given to an object the reader made; the
// file is then read again with every new handle above the file's own.
struct HandleCollision {};

// The highest handle the file names (0 when it cannot be told).
Handle HighestHandle(std::string_view data);

}  // namespace cad::dxfread
