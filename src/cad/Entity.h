// The entities the system draws with, as plain data. Angles are radians, points are world
// coordinates. Layers, text styles and blocks are referred to by the handle of their table
// record, so an entity costs no string per name.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cad/Geometry.h"
#include "cad/Object.h"
#include "cad/XData.h"

namespace cad {

inline constexpr int kColorByBlock = 0;
inline constexpr int kColorByLayer = 256;

class Entity : public DbObject {
public:
    bool IsEntity() const override { return true; }

    Handle layer = kNullHandle;  // layer record; the database's current layer when appended
    std::int16_t color = kColorByLayer;
    bool visible = true;
    XDataList xdata;

protected:
    Entity() = default;
    Entity(const Entity&) = default;
};

// Declares Kind, TypeName and Clone of a concrete class.
#define QV_CAD_OBJECT(Class, KindValue, Name)                  \
    static constexpr ObjectKind kKind = ObjectKind::KindValue; \
    ObjectKind Kind() const override {                         \
        return kKind;                                          \
    }                                                          \
    std::string TypeName() const override {                    \
        return Name;                                           \
    }                                                          \
    std::unique_ptr<DbObject> Clone() const override {         \
        return std::make_unique<Class>(*this);                 \
    }

class Line final : public Entity {
public:
    QV_CAD_OBJECT(Line, Line, "LINE")
    Point3d start;
    Point3d end;
};

struct LwVertex {
    double x = 0, y = 0;
    // A negative width means "not given": the polyline's constant width applies.
    double startWidth = -1;
    double endWidth = -1;
    double bulge = 0;  // tan(arc angle / 4), positive counter-clockwise
};

class LwPolyline final : public Entity {
public:
    QV_CAD_OBJECT(LwPolyline, LwPolyline, "LWPOLYLINE")
    std::vector<LwVertex> vertices;
    bool closed = false;
    int flags = 0;  // the other bits of group 70 (128: continuous linetype pattern)
    double constantWidth = 0;
    double elevation = 0;
};

class Circle final : public Entity {
public:
    QV_CAD_OBJECT(Circle, Circle, "CIRCLE")
    Point3d center;
    double radius = 0;
};

class Arc final : public Entity {
public:
    QV_CAD_OBJECT(Arc, Arc, "ARC")
    Point3d center;
    double radius = 0;
    double startAngle = 0;  // radians, counter-clockwise from +X
    double endAngle = 0;
};

class PointEntity final : public Entity {
public:
    QV_CAD_OBJECT(PointEntity, Point, "POINT")
    Point3d position;
};

enum class TextHorz : std::uint8_t {
    Left = 0,
    Center = 1,
    Right = 2,
    Aligned = 3,
    Middle = 4,
    Fit = 5
};
enum class TextVert : std::uint8_t { Baseline = 0, Bottom = 1, Middle = 2, Top = 3 };

class Text : public Entity {
public:
    QV_CAD_OBJECT(Text, Text, "TEXT")
    Point3d position;   // the first alignment point (baseline left for the default modes)
    Point3d alignment;  // the second alignment point, used whenever a mode is not the default
    double height = 2.5;
    double rotation = 0;
    double widthFactor = 1;
    double oblique = 0;
    std::string text;
    Handle style = kNullHandle;  // text style record; the current style when appended
    TextHorz horizontal = TextHorz::Left;
    TextVert vertical = TextVert::Baseline;

    // The point the text hangs on: `position` for left/baseline, else `alignment`.
    Point3d Anchor() const;
    // Sets the anchor the way a user places a text: both points for left/baseline, the
    // alignment point otherwise (and `position` too, as a starting value).
    void SetAnchor(const Point3d& p);
};

class AttributeDefinition final : public Text {
public:
    QV_CAD_OBJECT(AttributeDefinition, AttributeDefinition, "ATTDEF")
    std::string tag;
    std::string prompt;
    int flags = 0;  // 1 invisible, 2 constant, 4 verify, 8 preset
};

class Attribute final : public Text {
public:
    QV_CAD_OBJECT(Attribute, Attribute, "ATTRIB")
    std::string tag;
    int flags = 0;
};

class MText final : public Entity {
public:
    QV_CAD_OBJECT(MText, MText, "MTEXT")
    Point3d position;
    double height = 2.5;
    double referenceWidth = 0;  // 0: no wrapping
    double rotation = 0;        // radians; written as the x-direction vector
    int attachment = 1;         // 1 top left ... 5 middle centre ... 9 bottom right
    std::string contents;       // with MText codes: "\P" is a paragraph break
    Handle style = kNullHandle;
};

class BlockReference final : public Entity {
public:
    QV_CAD_OBJECT(BlockReference, BlockReference, "INSERT")
    Handle block = kNullHandle;  // block record
    Point3d position;
    Vector3d scale{1, 1, 1};
    double rotation = 0;
    // A reference with rows and columns repeats its block on a grid laid along its own
    // rotated axes; one row and one column is an ordinary reference.
    int columns = 1;
    int rows = 1;
    double columnSpacing = 0;
    double rowSpacing = 0;
    std::vector<Handle> attributes;  // Attribute objects owned by this reference

    bool IsArray() const { return columns > 1 || rows > 1; }
    long long Instances() const {
        return static_cast<long long>(columns < 1 ? 1 : columns) * (rows < 1 ? 1 : rows);
    }
    Handle seqend = kNullHandle;  // ends the attribute list when there is one
};

// Ends the attribute list of a block reference (or the vertices of an unmodelled entity).
class Seqend final : public Entity {
public:
    QV_CAD_OBJECT(Seqend, Seqend, "SEQEND")
};

// Any other entity read from a file (hatch, spline, dimension, image, ...): its tags after
// the handle and owner, in order, extended data excepted. Written back as read.
class UnknownEntity final : public Entity {
public:
    QV_CAD_OBJECT(UnknownEntity, UnknownEntity, typeName)
    std::string typeName;
    TagList tags;
    // Entities that follow it in the file and belong to it (VERTEX ... SEQEND).
    std::vector<Handle> followers;
};

}  // namespace cad
