// The drawing database: every object of a drawing owned by handle, the tables, the blocks
// (model space is a block), the named object dictionary, the header variables and the
// thumbnail. A default-constructed database is a valid new drawing: layer "0", text style
// "Standard", line types ByBlock/ByLayer/Continuous, application "ACAD", model and paper
// space with their layouts, the required dictionaries and the header variables, so it can
// be written as it is.
#pragma once

#include <type_traits>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cad/Entity.h"
#include "cad/Records.h"
#include "cad/XData.h"

namespace cad {

// A header variable ($ACADVER, $INSBASE, ...) with its value tags in file order.
struct HeaderVar {
    std::string name;
    TagList values;
};

// An application name as R14 can hold it: at most 31 letters, digits and "$-_", every
// other character written as '_'.
std::string ShortAppName(std::string_view name);

class Database {
public:
    Database();
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // An empty database without tables or dictionaries; the reader fills it.
    struct BareTag {};
    explicit Database(BareTag);

    // ---- objects by handle
    DbObject* Object(Handle h);
    const DbObject* Object(Handle h) const;
    template <class T>
    T* Get(Handle h) {
        return const_cast<T*>(Cast<T>(Object(h)));
    }
    template <class T>
    const T* Get(Handle h) const {
        return Cast<T>(Object(h));
    }
    // Typed access asks the object its kind where that decides (every concrete class is
    // final): look-ups by handle sit on the hot path of reading, writing and drawing.
    template <class T>
    static const T* Cast(const DbObject* object) {
        if (object == nullptr) {
            return nullptr;
        }
        if constexpr (std::is_same_v<T, DbObject>) {
            return object;
        } else if constexpr (std::is_same_v<T, Entity>) {
            return object->Kind() <= ObjectKind::UnknownEntity ? static_cast<const T*>(object)
                                                               : nullptr;
        } else if constexpr (std::is_same_v<T, TableRecord>) {
            const ObjectKind k = object->Kind();
            return k >= ObjectKind::Layer && k <= ObjectKind::OtherRecord
                       ? static_cast<const T*>(object)
                       : nullptr;
        } else if constexpr (std::is_same_v<T, Text>) {
            const ObjectKind k = object->Kind();
            return k == ObjectKind::Text || k == ObjectKind::AttributeDefinition ||
                           k == ObjectKind::Attribute
                       ? static_cast<const T*>(object)
                       : nullptr;
        } else if constexpr (std::is_final_v<T>) {
            return object->Kind() == T::kKind ? static_cast<const T*>(object) : nullptr;
        } else {
            return dynamic_cast<const T*>(object);
        }
    }
    template <class T>
    static T* Cast(DbObject* object) {
        return const_cast<T*>(Cast<T>(static_cast<const DbObject*>(object)));
    }
    // Takes an object, gives it a new handle when it has none, and owns it. Returns the handle.
    Handle Add(std::unique_ptr<DbObject> object);
    Handle NewHandle();
    Handle HandleSeed() const { return nextHandle_; }
    void ReserveHandle(Handle h);  // the seed moves above h
    std::size_t ObjectCount() const { return count_; }
    void ForEachObject(const std::function<void(const DbObject&)>& fn) const;

    // ---- spaces and entities
    Handle ModelSpace() const { return modelSpace_; }
    Handle PaperSpace() const { return paperSpace_; }
    // Appends to a block (model space by default): sets the owner, and the current layer
    // and text style where the entity has none. Returns the entity's handle.
    Handle Append(std::unique_ptr<Entity> entity, Handle space = kNullHandle);
    // Appends to the block of that name; kNullHandle when there is no such block.
    Handle AppendToBlock(const std::string& blockName, std::unique_ptr<Entity> entity);
    template <class T>
    T* AppendNew(Handle space = kNullHandle) {
        auto owned = std::make_unique<T>();
        T* raw = owned.get();
        Append(std::move(owned), space);
        return raw;
    }
    // The live (not erased) entities of a block, in drawing order.
    std::vector<Entity*> Entities(Handle space = kNullHandle);
    std::vector<const Entity*> Entities(Handle space = kNullHandle) const;
    // Attaches an attribute to a block reference (before its end marker).
    Handle AddAttribute(Handle reference, std::unique_ptr<Attribute> attribute);
    // Marks the object (and what it owns: attributes, followers) erased. False when the
    // handle names nothing or an object already erased.
    bool Erase(Handle h);

    // ---- tables
    Handle Table(std::string_view tableName) const;  // the table head, e.g. "LAYER"
    Handle FindRecord(std::string_view tableName, std::string_view name) const;  // any case
    // Records are found by the name they had when a look-up first indexed them; code that
    // renames a record in place calls this before the next look-up. (Erased records, and
    // records appended to a table's list, are noticed without it.)
    void ReindexRecords();

    Handle FindLayer(std::string_view name) const { return FindTyped<LayerRecord>("LAYER", name); }
    Handle AddLayer(const std::string& name, int color = 7);  // the existing one if present
    LayerRecord* Layer(Handle h) { return Get<LayerRecord>(h); }
    const LayerRecord* Layer(Handle h) const { return Get<LayerRecord>(h); }
    Handle CurrentLayer() const { return currentLayer_; }
    void SetCurrentLayer(Handle layer);

    Handle FindTextStyle(std::string_view name) const {
        return FindTyped<TextStyleRecord>("STYLE", name);
    }
    Handle AddTextStyle(const std::string& name, const std::string& font = "txt",
                        const std::string& bigFont = "");
    TextStyleRecord* TextStyle(Handle h) { return Get<TextStyleRecord>(h); }
    const TextStyleRecord* TextStyle(Handle h) const { return Get<TextStyleRecord>(h); }
    Handle CurrentTextStyle() const { return currentStyle_; }
    void SetCurrentTextStyle(Handle style);

    Handle FindLinetype(std::string_view name) const {
        return FindTyped<LinetypeRecord>("LTYPE", name);
    }
    // A solid line type of that name; the existing one if present.
    Handle AddLinetype(const std::string& name);

    // Application names of extended data. Registering an existing name returns its record.
    // A name is found in any case, and under the spelling an R14 save gives it (blanks and
    // other characters R14 cannot hold as '_', cut at 31 characters: see ShortAppName), so a
    // drawing saved as R14 and drawn into again keeps one application per system; an exact
    // match is preferred.
    Handle FindApp(std::string_view name) const;
    Handle RegisterApp(std::string_view name);
    std::string AppName(Handle app) const;  // "" for an unknown handle

    // ---- blocks
    Handle FindBlock(std::string_view name) const {
        return FindTyped<BlockRecord>("BLOCK_RECORD", name);
    }
    // A new empty block; the existing one (emptied of nothing) when the name is taken.
    Handle DefineBlock(const std::string& name, const Point3d& basePoint = {});
    BlockRecord* Block(Handle h) { return Get<BlockRecord>(h); }
    const BlockRecord* Block(Handle h) const { return Get<BlockRecord>(h); }
    // Erases every entity of the block (the definition stays).
    void ClearBlock(Handle block);
    // A block reference appended to `space` (model space by default), with one attribute
    // per attribute definition of the block, valued with the definition's default text.
    BlockReference* InsertBlock(Handle block, const Point3d& position,
                                const Vector3d& scale = {1, 1, 1}, double rotation = 0,
                                Handle space = kNullHandle);

    // ---- dictionaries and xrecords
    Handle NamedObjects() const { return namedObjects_; }
    Dictionary* GetDictionary(Handle h) { return Get<Dictionary>(h); }
    // The sub-dictionary `name` of `parent` (the named object dictionary by default),
    // created when missing.
    Handle GetOrAddDictionary(const std::string& name, Handle parent = kNullHandle);
    Handle FindDictionary(const std::string& name, Handle parent = kNullHandle) const;
    // Sets entry `key` of dictionary `dict` to an xrecord holding `data`; returns the xrecord.
    Handle SetXRecord(Handle dict, const std::string& key, TagList data);
    const XRecord* FindXRecord(Handle dict, const std::string& key) const;

    // ---- extended entity data (the application is registered on first use)
    void AppendXData(Entity& entity, std::string_view app, XDataItem item);
    // Replaces the value of the first item with the same group code, or appends the item.
    void SetXData(Entity& entity, std::string_view app, XDataItem item);
    // The items of one application, or null when the entity has none.
    const std::vector<XDataItem>* GetXData(const Entity& entity, std::string_view app) const;
    bool RemoveXData(Entity& entity, std::string_view app);

    // ---- header variables
    const std::vector<HeaderVar>& Header() const { return header_; }
    const HeaderVar* FindHeader(std::string_view name) const;
    void SetHeader(const std::string& name, TagList values);
    std::string HeaderString(std::string_view name) const;  // first value or ""
    Point3d InsBase() const;
    void SetInsBase(const Point3d& p);

    // ---- the preview image: the tags of the THUMBNAILIMAGE section, kept as read
    const TagList& Thumbnail() const { return thumbnail_; }
    void SetThumbnail(TagList tags) { thumbnail_ = std::move(tags); }

    // ---- the order of objects and tables as the writer needs it
    const std::vector<Handle>& Tables() const { return tables_; }  // table heads in file order
    std::vector<Handle>& MutableTables() { return tables_; }
    const std::vector<Handle>& Objects() const { return objectOrder_; }  // OBJECTS section order
    std::vector<Handle>& MutableObjects() { return objectOrder_; }
    const TagList& Classes() const { return classes_; }
    TagList& MutableClasses() { return classes_; }
    std::vector<HeaderVar>& MutableHeader() { return header_; }
    void SetSpaces(Handle modelSpace, Handle paperSpace);
    void SetNamedObjects(Handle h) { namedObjects_ = h; }
    void SetCurrentsFromHeader();  // $CLAYER, $TEXTSTYLE after reading
    // Adds what a new drawing holds and a read one lacks (tables and their required records,
    // the spaces, the dictionaries, the layouts): a drawing of R12 or older has none of the
    // objects later versions require.
    void AddMissingDefaults();
    // A layout for the block record `space` (a paper space), listed under ACAD_LAYOUT.
    Handle AddLayout(const std::string& name, Handle space, int tabOrder);

    // Repairs made while reading a file, for the caller to report.
    std::vector<std::string>& Repairs() { return repairs_; }
    const std::vector<std::string>& Repairs() const { return repairs_; }

private:
    void CreateDefaults();
    template <class T>
    Handle FindTyped(std::string_view tableName, std::string_view name) const {
        const Handle h = FindRecord(tableName, name);
        return Get<T>(h) != nullptr ? h : kNullHandle;
    }

    // Objects by handle: handles are mostly dense (one counter), so most live in a vector
    // indexed by handle; far-off handles from files go to the map.
    std::vector<std::unique_ptr<DbObject>> dense_;
    std::unordered_map<Handle, std::unique_ptr<DbObject>> sparse_;
    std::size_t count_ = 0;
    Handle nextHandle_ = 1;
    Handle modelSpace_ = kNullHandle;
    Handle paperSpace_ = kNullHandle;
    Handle namedObjects_ = kNullHandle;
    Handle currentLayer_ = kNullHandle;
    Handle currentStyle_ = kNullHandle;
    std::vector<Handle> tables_;
    std::vector<Handle> objectOrder_;
    std::vector<HeaderVar> header_;
    TagList classes_;
    TagList thumbnail_;
    std::vector<std::string> repairs_;
    // A table's records by name key (see FindRecord): open addressing over the keys' hashes,
    // each hit checked against the record's own name, so that a look-up touches one slot and
    // one record however large the table.
    struct RecordIndex {
        struct Slot {
            std::size_t hash = 0;
            // Objects stay where they were made as long as the database lives.
            const TableRecord* record = nullptr;  // none: the slot is free
        };
        std::size_t indexed = 0;  // records of the table's list already in `slots`
        std::size_t used = 0;
        std::vector<Slot> slots;  // a power of two long, at most half used
    };
    static void Reserve(RecordIndex& index, std::size_t records);
    bool IndexRecord(RecordIndex& index, const TableRecord* record, const std::string& key) const;
    Handle LookUp(const RecordIndex& index, std::size_t hash, std::string_view key,
                  bool& stale) const;
    mutable std::unordered_map<Handle, RecordIndex> recordIndex_;  // by table head
    mutable Handle lastTable_ = kNullHandle;  // the table the last look-up went to
    mutable RecordIndex* lastIndex_ = nullptr;
    mutable std::string lookupKey_;
    mutable std::string recordKey_;
};

}  // namespace cad
