// The writer's internals, shared by the files that write sections and entities.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "cad/Database.h"
#include "cad/Dxf.h"
#include "cad/Operations.h"

namespace cad::dxfwrite {

class Writer {
public:
    Writer(const Database& db, DxfVersion version, TagSink& sink);

    void Run();
    // Whether something had to change to fit the file (see WriteDxfString).
    bool Altered() const { return altered_; }

private:
    // tags
    void Str(int code, std::string_view value);  // text, encoded for the file
    void Raw(int code, std::string_view value);  // ASCII as it is
    void Real(int code, double v);
    void Angle(int code, double radians);  // in degrees, without conversion noise
    void Int(int code, long long v);
    void Hex(int code, Handle h);
    void Point(int code, const Point3d& p);
    void Tags(const TagList& tags);
    void NoteEscapes(std::string_view value);
    void BlankControls(std::string& encoded);
    void Extra(const DbObject& o, std::string_view marker);
    void Head(const DbObject& o, std::string_view type, Handle owner, int handleCode = 5);

    // sections
    void Header();
    void Extents(const std::string& name);
    void Classes();
    void Tables();
    void Table(const SymbolTable& table);
    void Record(const DbObject& record);
    void Blocks();
    void Block(const BlockRecord& block, bool withEntities);
    void BlockEntityHead(const BlockRecord& block, Handle own, const ExtraTags& extra);
    void EntitiesSection();
    void Objects();
    void Object(const DbObject& object);
    void Thumbnail();

    // entities
    void Entity(const cad::Entity& e);
    void EntityCommon(const cad::Entity& e);
    void Body(const cad::Entity& e);
    void TextBody(const cad::Text& t, bool secondAcDbText);
    void MTextBody(const cad::MText& t);
    void PolylineBody(const cad::LwPolyline& p);
    void ReferenceBody(const cad::BlockReference& r);
    void UnusedExtra(const cad::Entity& e, std::initializer_list<const char*> used);
    void XData(const cad::Entity& e);

    const std::string& NameOf(Handle record) const;
    const std::string& AppName(Handle app);  // as the file's version spells it
    void ShortenAppNames();
    bool R2000Plus() const { return version_ != DxfVersion::R14; }

    const Database& db_;
    DxfVersion version_;
    TagSink& sink_;
    std::string charset_;
    std::unordered_map<Handle, std::string> appNames_;
    bool altered_ = false;
    std::optional<Extents3d> extents_;
};

}  // namespace cad::dxfwrite
