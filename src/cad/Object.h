// Every object of a drawing database: entities, table records, dictionaries, xrecords and
// the objects this database keeps without modelling them. The database owns them all in one
// table keyed by handle; erasing only marks an object, so handles held elsewhere stay valid.
#pragma once

#include <memory>
#include <string>

#include "cad/Handle.h"
#include "cad/Tags.h"

namespace cad {

enum class ObjectKind {
    // entities
    Line,
    LwPolyline,
    Circle,
    Arc,
    Point,
    Text,
    MText,
    BlockReference,
    AttributeDefinition,
    Attribute,
    Seqend,
    UnknownEntity,
    // table heads and records
    SymbolTable,
    Layer,
    TextStyle,
    Linetype,
    AppId,
    BlockRecord,
    OtherRecord,
    // objects
    Dictionary,
    XRecord,
    UnknownObject,
};

class DbObject {
public:
    virtual ~DbObject() = default;
    virtual ObjectKind Kind() const = 0;
    // The DXF type name written after group code 0 ("LINE", "LAYER", "DICTIONARY", ...).
    virtual std::string TypeName() const = 0;
    virtual bool IsEntity() const { return false; }
    // A copy with the same data and no handle; owner and references are left for the
    // caller to set.
    virtual std::unique_ptr<DbObject> Clone() const = 0;

    Handle handle = kNullHandle;
    Handle owner = kNullHandle;
    bool erased = false;
    // Tags read from a file that the class does not model (null when there are none).
    std::unique_ptr<ExtraTags> extra;

protected:
    DbObject() = default;
    DbObject(const DbObject& o);
    DbObject& operator=(const DbObject&) = delete;
};

}  // namespace cad
