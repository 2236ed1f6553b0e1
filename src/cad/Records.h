// Table heads, table records and non-graphical objects of a drawing database.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cad/Entity.h"

namespace cad {

// The head of one table (LAYER, STYLE, ...); records are listed in file order.
class SymbolTable final : public DbObject {
public:
    QV_CAD_OBJECT(SymbolTable, SymbolTable, "TABLE")
    std::string name;  // "LAYER", "STYLE", "LTYPE", "APPID", "BLOCK_RECORD", "VPORT", ...
    std::vector<Handle> records;
};

class TableRecord : public DbObject {
public:
    std::string name;
    int flags = 0;

protected:
    TableRecord() = default;
    TableRecord(const TableRecord&) = default;
};

class LayerRecord final : public TableRecord {
public:
    QV_CAD_OBJECT(LayerRecord, Layer, "LAYER")
    int color = 7;  // negative: layer off
    Handle linetype = kNullHandle;
};

class TextStyleRecord final : public TableRecord {
public:
    QV_CAD_OBJECT(TextStyleRecord, TextStyle, "STYLE")
    double fixedHeight = 0;
    double widthFactor = 1;
    double oblique = 0;
    double lastHeight = 2.5;
    int generation = 0;
    std::string font = "txt";
    std::string bigFont;
};

class LinetypeRecord final : public TableRecord {
public:
    QV_CAD_OBJECT(LinetypeRecord, Linetype, "LTYPE")
    std::string description;
    TagList pattern;  // 72, 73, 40 and the dash items, as read or as created
};

class AppIdRecord final : public TableRecord {
public:
    QV_CAD_OBJECT(AppIdRecord, AppId, "APPID")
};

// A block: its table record, the BLOCK and ENDBLK around its entities, and the entities.
class BlockRecord final : public TableRecord {
public:
    QV_CAD_OBJECT(BlockRecord, BlockRecord, "BLOCK_RECORD")
    Point3d basePoint;
    std::string description;
    Handle layout = kNullHandle;       // LAYOUT object of model and paper space, else none
    std::vector<Handle> entities;      // in drawing order, erased ones included
    Handle beginHandle = kNullHandle;  // the BLOCK entity
    Handle endHandle = kNullHandle;    // the ENDBLK entity
    Handle beginLayer = kNullHandle;
    ExtraTags beginExtra;
    ExtraTags endExtra;

    bool IsModelSpace() const;
    bool IsPaperSpace() const;
    bool IsLayout() const { return IsModelSpace() || IsPaperSpace(); }
};

// Any other table record (VPORT, VIEW, UCS, DIMSTYLE, ...): its tags after the owner.
class OtherRecord final : public TableRecord {
public:
    QV_CAD_OBJECT(OtherRecord, OtherRecord, typeName)
    std::string typeName;
    TagList tags;
};

class Dictionary final : public DbObject {
public:
    QV_CAD_OBJECT(Dictionary, Dictionary, "DICTIONARY")
    std::vector<std::pair<std::string, Handle>> entries;
    bool hardOwner = false;  // 280
    int cloning = 1;         // 281

    Handle Find(const std::string& key) const;
    void Set(const std::string& key, Handle value);  // replaces or appends
    bool Remove(const std::string& key);
};

class XRecord final : public DbObject {
public:
    QV_CAD_OBJECT(XRecord, XRecord, "XRECORD")
    int cloning = 1;  // 280
    TagList data;

    // The first value with this group code, or "" when there is none.
    std::string Value(int code) const;
};

// Any other object read from a file (LAYOUT, ACDBPLACEHOLDER, MLINESTYLE, IMAGEDEF, ...) or
// created for a new drawing: its tags after the owner, written back as they are.
class UnknownObject final : public DbObject {
public:
    QV_CAD_OBJECT(UnknownObject, UnknownObject, typeName)
    std::string typeName;
    TagList tags;
};

}  // namespace cad
