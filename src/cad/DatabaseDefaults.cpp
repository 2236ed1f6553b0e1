// The contents of a new drawing, and the dictionary, extended data and header services.
#include "cad/Database.h"
#include "cad/NumberText.h"

namespace cad {

namespace {

Handle NewTable(Database& db, const std::string& name) {
    auto head = std::make_unique<SymbolTable>();
    head->name = name;
    if (name == "DIMSTYLE") {
        head->extra = std::make_unique<ExtraTags>();
        head->extra->Get("AcDbSymbolTable").push_back({100, "AcDbDimStyleTable"});
    }
    const Handle h = db.Add(std::move(head));
    db.MutableTables().push_back(h);
    return h;
}

Handle AddOther(Database& db, Handle table, const std::string& type, const std::string& name,
                TagList tags) {
    auto r = std::make_unique<OtherRecord>();
    r->typeName = type;
    r->name = name;
    r->owner = table;
    r->tags = std::move(tags);
    const Handle h = db.Add(std::move(r));
    db.Get<SymbolTable>(table)->records.push_back(h);
    return h;
}

Handle NewLinetype(Database& db, Handle table, const std::string& name) {
    auto r = std::make_unique<LinetypeRecord>();
    r->name = name;
    r->description = name == "Continuous" ? "Solid line" : "";
    r->pattern = {{72, "65"}, {73, "0"}, {40, "0.0"}};
    r->owner = table;
    const Handle h = db.Add(std::move(r));
    db.Get<SymbolTable>(table)->records.push_back(h);
    return h;
}

Handle AddObject(Database& db, std::unique_ptr<DbObject> o, Handle owner) {
    o->owner = owner;
    const Handle h = db.Add(std::move(o));
    db.MutableObjects().push_back(h);
    return h;
}

TagList LayoutTags(const std::string& name, int tabOrder, Handle blockRecord) {
    TagList t = {{100, "AcDbPlotSettings"},
                 {1, ""},
                 {2, "none_device"},
                 {4, ""},
                 {6, ""},
                 {40, "0.0"},
                 {41, "0.0"},
                 {42, "0.0"},
                 {43, "0.0"},
                 {44, "0.0"},
                 {45, "0.0"},
                 {46, "0.0"},
                 {47, "0.0"},
                 {48, "0.0"},
                 {49, "0.0"},
                 {140, "0.0"},
                 {141, "0.0"},
                 {142, "1.0"},
                 {143, "1.0"},
                 {70, "688"},
                 {72, "1"},
                 {73, "0"},
                 {74, "5"},
                 {7, ""},
                 {75, "16"},
                 {147, "1.0"},
                 {148, "0.0"},
                 {149, "0.0"},
                 {100, "AcDbLayout"},
                 {1, name},
                 {70, "1"},
                 {71, std::to_string(tabOrder)},
                 {10, "0.0"},
                 {20, "0.0"},
                 {11, "420.0"},
                 {21, "297.0"},
                 {12, "0.0"},
                 {22, "0.0"},
                 {32, "0.0"},
                 {14, "0.0"},
                 {24, "0.0"},
                 {34, "0.0"},
                 {15, "0.0"},
                 {25, "0.0"},
                 {35, "0.0"},
                 {146, "0.0"},
                 {13, "0.0"},
                 {23, "0.0"},
                 {33, "0.0"},
                 {16, "1.0"},
                 {26, "0.0"},
                 {36, "0.0"},
                 {17, "0.0"},
                 {27, "1.0"},
                 {37, "0.0"},
                 {76, "0"},
                 {330, FormatHandle(blockRecord)}};
    return t;
}

TagList VportTags() {
    return {{100, "AcDbSymbolTableRecord"},
            {100, "AcDbViewportTableRecord"},
            {2, "*Active"},
            {70, "0"},
            {10, "0.0"},
            {20, "0.0"},
            {11, "1.0"},
            {21, "1.0"},
            {12, "0.0"},
            {22, "0.0"},
            {13, "0.0"},
            {23, "0.0"},
            {14, "10.0"},
            {24, "10.0"},
            {15, "10.0"},
            {25, "10.0"},
            {16, "0.0"},
            {26, "0.0"},
            {36, "1.0"},
            {17, "0.0"},
            {27, "0.0"},
            {37, "0.0"},
            {40, "100.0"},
            {41, "1.5"},
            {42, "50.0"},
            {43, "0.0"},
            {44, "0.0"},
            {50, "0.0"},
            {51, "0.0"},
            {71, "0"},
            {72, "1000"},
            {73, "1"},
            {74, "3"},
            {75, "0"},
            {76, "0"},
            {77, "0"},
            {78, "0"}};
}

TagList DimstyleTags() {
    return {{100, "AcDbSymbolTableRecord"},
            {100, "AcDbDimStyleTableRecord"},
            {2, "Standard"},
            {70, "0"},
            {40, "1.0"},
            {41, "2.5"},
            {42, "0.625"},
            {43, "3.75"},
            {44, "1.25"},
            {140, "2.5"},
            {141, "2.5"},
            {147, "0.625"},
            {77, "1"},
            {78, "8"},
            {271, "2"},
            {272, "2"}};
}

// Plot style names: a dictionary with the default entry "Normal", which readers expect.
void AddPlotStyles(Database& db) {
    auto placeholder = std::make_unique<UnknownObject>();
    placeholder->typeName = "ACDBPLACEHOLDER";
    auto styles = std::make_unique<UnknownObject>();
    styles->typeName = "ACDBDICTIONARYWDFLT";
    const Handle stylesHandle = AddObject(db, std::move(styles), db.NamedObjects());
    const Handle normal = AddObject(db, std::move(placeholder), stylesHandle);
    db.Get<UnknownObject>(stylesHandle)->tags = {{100, "AcDbDictionary"},
                                                 {281, "1"},
                                                 {3, "Normal"},
                                                 {350, FormatHandle(normal)},
                                                 {100, "AcDbDictionaryWithDefault"},
                                                 {340, FormatHandle(normal)}};
    db.GetDictionary(db.NamedObjects())->Set("ACAD_PLOTSTYLENAME", stylesHandle);
    TagList& classes = db.MutableClasses();
    for (const auto& [dxfName, cppName] :
         {std::pair{"ACDBDICTIONARYWDFLT", "AcDbDictionaryWithDefault"},
          std::pair{"ACDBPLACEHOLDER", "AcDbPlaceHolder"}, std::pair{"LAYOUT", "AcDbLayout"}}) {
        classes.insert(classes.end(), {{0, "CLASS"},
                                       {1, dxfName},
                                       {2, cppName},
                                       {3, "ObjectDBX Classes"},
                                       {90, "0"},
                                       {280, "0"},
                                       {281, "0"}});
    }
}

}  // namespace

void Database::CreateDefaults() {
    const Handle vport = NewTable(*this, "VPORT");
    const Handle ltype = NewTable(*this, "LTYPE");
    NewTable(*this, "LAYER");
    NewTable(*this, "STYLE");
    NewTable(*this, "VIEW");
    NewTable(*this, "UCS");
    NewTable(*this, "APPID");
    const Handle dimstyle = NewTable(*this, "DIMSTYLE");
    NewTable(*this, "BLOCK_RECORD");

    AddOther(*this, vport, "VPORT", "*Active", VportTags());
    NewLinetype(*this, ltype, "ByBlock");
    NewLinetype(*this, ltype, "ByLayer");
    NewLinetype(*this, ltype, "Continuous");
    currentLayer_ = AddLayer("0", 7);
    currentStyle_ = AddTextStyle("Standard", "txt", "");
    RegisterApp("ACAD");
    AddOther(*this, dimstyle, "DIMSTYLE", "Standard", DimstyleTags());

    modelSpace_ = DefineBlock("*Model_Space");
    paperSpace_ = DefineBlock("*Paper_Space");

    auto root = std::make_unique<Dictionary>();
    namedObjects_ = AddObject(*this, std::move(root), kNullHandle);
    // The dictionaries readers expect in every drawing, most of them empty here.
    GetOrAddDictionary("ACAD_COLOR");
    GetOrAddDictionary("ACAD_GROUP");
    const Handle layouts = GetOrAddDictionary("ACAD_LAYOUT");
    for (const char* name :
         {"ACAD_MATERIAL", "ACAD_MLEADERSTYLE", "ACAD_MLINESTYLE", "ACAD_PLOTSETTINGS"}) {
        GetOrAddDictionary(name);
    }
    AddPlotStyles(*this);
    for (const char* name : {"ACAD_SCALELIST", "ACAD_TABLESTYLE", "ACAD_VISUALSTYLE"}) {
        GetOrAddDictionary(name);
    }
    for (const auto& [name, space, order] :
         {std::tuple{"Model", modelSpace_, 0}, std::tuple{"Layout1", paperSpace_, 1}}) {
        auto layout = std::make_unique<UnknownObject>();
        layout->typeName = "LAYOUT";
        layout->tags = LayoutTags(name, order, space);
        const Handle h = AddObject(*this, std::move(layout), layouts);
        GetDictionary(layouts)->Set(name, h);
        Block(space)->layout = h;
    }

    // No $ACADVER: the writer gives the version it writes, and a drawing holds one only when
    // it was read from a file.
    header_ = {{"$DWGCODEPAGE", {{3, "ANSI_936"}}},
               {"$INSBASE", {{10, "0.0"}, {20, "0.0"}, {30, "0.0"}}},
               {"$EXTMIN", {{10, "0.0"}, {20, "0.0"}, {30, "0.0"}}},
               {"$EXTMAX", {{10, "100.0"}, {20, "100.0"}, {30, "0.0"}}},
               {"$TEXTSIZE", {{40, "2.5"}}},
               {"$CLAYER", {{8, "0"}}},
               {"$TEXTSTYLE", {{7, "Standard"}}},
               {"$MEASUREMENT", {{70, "1"}}},
               {"$INSUNITS", {{70, "4"}}},
               {"$HANDSEED", {{5, "0"}}}};
}

// ---- dictionaries and xrecords

void Database::AddMissingDefaults() {
    for (const char* name :
         {"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD"}) {
        if (Table(name) == kNullHandle) {
            NewTable(*this, name);
        }
    }
    if (FindRecord("VPORT", "*Active") == kNullHandle) {
        AddOther(*this, Table("VPORT"), "VPORT", "*Active", VportTags());
    }
    for (const char* name : {"ByBlock", "ByLayer", "Continuous"}) {
        if (FindRecord("LTYPE", name) == kNullHandle) {
            AddLinetype(name);
        }
    }
    AddLayer("0", 7);
    AddTextStyle("Standard", "txt", "");
    RegisterApp("ACAD");
    if (FindRecord("DIMSTYLE", "Standard") == kNullHandle) {
        AddOther(*this, Table("DIMSTYLE"), "DIMSTYLE", "Standard", DimstyleTags());
    }
    modelSpace_ = DefineBlock("*Model_Space");
    paperSpace_ = DefineBlock("*Paper_Space");
    if (Get<Dictionary>(namedObjects_) == nullptr) {
        namedObjects_ = AddObject(*this, std::make_unique<Dictionary>(), kNullHandle);
        objectOrder_.pop_back();
        objectOrder_.insert(objectOrder_.begin(), namedObjects_);
    }
    for (const char* name : {"ACAD_COLOR", "ACAD_GROUP", "ACAD_LAYOUT", "ACAD_MATERIAL",
                             "ACAD_MLEADERSTYLE", "ACAD_MLINESTYLE", "ACAD_PLOTSETTINGS"}) {
        GetOrAddDictionary(name);
    }
    if (GetDictionary(namedObjects_)->Find("ACAD_PLOTSTYLENAME") == kNullHandle) {
        AddPlotStyles(*this);
    }
    for (const char* name : {"ACAD_SCALELIST", "ACAD_TABLESTYLE", "ACAD_VISUALSTYLE"}) {
        GetOrAddDictionary(name);
    }
    const Handle layouts = FindDictionary("ACAD_LAYOUT");
    for (const auto& [name, space, order] :
         {std::tuple{"Model", modelSpace_, 0}, std::tuple{"Layout1", paperSpace_, 1}}) {
        if (Object(Block(space)->layout) == nullptr &&
            GetDictionary(layouts)->Find(name) == kNullHandle) {
            AddLayout(name, space, order);
        }
    }
}

Handle Database::AddLayout(const std::string& name, Handle space, int tabOrder) {
    const Handle layouts = GetOrAddDictionary("ACAD_LAYOUT");
    auto layout = std::make_unique<UnknownObject>();
    layout->typeName = "LAYOUT";
    layout->tags = LayoutTags(name, tabOrder, space);
    const Handle h = AddObject(*this, std::move(layout), layouts);
    GetDictionary(layouts)->Set(name, h);
    Block(space)->layout = h;
    return h;
}

Handle Database::FindDictionary(const std::string& name, Handle parent) const {
    const auto* dict = Get<Dictionary>(parent == kNullHandle ? namedObjects_ : parent);
    if (dict == nullptr) {
        return kNullHandle;
    }
    const Handle h = dict->Find(name);
    const auto* sub = Get<Dictionary>(h);
    return sub != nullptr && !sub->erased ? h : kNullHandle;
}

Handle Database::GetOrAddDictionary(const std::string& name, Handle parent) {
    if (parent == kNullHandle) {
        parent = namedObjects_;
    }
    if (Handle h = FindDictionary(name, parent); h != kNullHandle) {
        return h;
    }
    auto* dict = GetDictionary(parent);
    if (dict == nullptr) {
        return kNullHandle;
    }
    const Handle h = AddObject(*this, std::make_unique<Dictionary>(), parent);
    GetDictionary(parent)->Set(name, h);
    return h;
}

Handle Database::SetXRecord(Handle dict, const std::string& key, TagList data) {
    auto* d = GetDictionary(dict);
    if (d == nullptr) {
        return kNullHandle;
    }
    if (auto* existing = Get<XRecord>(d->Find(key)); existing != nullptr && !existing->erased) {
        existing->data = std::move(data);
        return existing->handle;
    }
    auto x = std::make_unique<XRecord>();
    x->data = std::move(data);
    const Handle h = AddObject(*this, std::move(x), dict);
    GetDictionary(dict)->Set(key, h);
    return h;
}

const XRecord* Database::FindXRecord(Handle dict, const std::string& key) const {
    const auto* d = Get<Dictionary>(dict);
    if (d == nullptr) {
        return nullptr;
    }
    const auto* x = Get<XRecord>(d->Find(key));
    return x != nullptr && !x->erased ? x : nullptr;
}

// ---- extended data

namespace {

XDataGroup* FindGroup(Entity& e, Handle app) {
    for (auto& g : e.xdata) {
        if (g.app == app) {
            return &g;
        }
    }
    return nullptr;
}

}  // namespace

void Database::AppendXData(Entity& entity, std::string_view app, XDataItem item) {
    const Handle a = RegisterApp(app);
    XDataGroup* g = FindGroup(entity, a);
    if (g == nullptr) {
        entity.xdata.push_back({a, {}});
        g = &entity.xdata.back();
    }
    g->items.push_back(std::move(item));
}

void Database::SetXData(Entity& entity, std::string_view app, XDataItem item) {
    const Handle a = RegisterApp(app);
    if (XDataGroup* g = FindGroup(entity, a)) {
        for (auto& existing : g->items) {
            if (existing.code == item.code) {
                existing.value = std::move(item.value);
                return;
            }
        }
    }
    AppendXData(entity, app, std::move(item));
}

const std::vector<XDataItem>* Database::GetXData(const Entity& entity, std::string_view app) const {
    const Handle a = FindApp(app);
    if (a == kNullHandle) {
        return nullptr;
    }
    for (const auto& g : entity.xdata) {
        if (g.app == a) {
            return &g.items;
        }
    }
    return nullptr;
}

bool Database::RemoveXData(Entity& entity, std::string_view app) {
    const Handle a = FindApp(app);
    for (auto it = entity.xdata.begin(); it != entity.xdata.end(); ++it) {
        if (it->app == a) {
            entity.xdata.erase(it);
            return true;
        }
    }
    return false;
}

// ---- header

const HeaderVar* Database::FindHeader(std::string_view name) const {
    for (const auto& v : header_) {
        if (EqualsNoCase(v.name, name)) {
            return &v;
        }
    }
    return nullptr;
}

void Database::SetHeader(const std::string& name, TagList values) {
    for (auto& v : header_) {
        if (EqualsNoCase(v.name, name)) {
            v.values = std::move(values);
            return;
        }
    }
    header_.push_back({name, std::move(values)});
}

std::string Database::HeaderString(std::string_view name) const {
    const HeaderVar* v = FindHeader(name);
    return v == nullptr || v->values.empty() ? std::string() : v->values.front().value;
}

Point3d Database::InsBase() const {
    Point3d p;
    if (const HeaderVar* v = FindHeader("$INSBASE")) {
        for (const auto& t : v->values) {
            double d = 0;
            ParseReal(t.value, d);
            (t.code == 10 ? p.x : t.code == 20 ? p.y : p.z) = d;
        }
    }
    return p;
}

void Database::SetInsBase(const Point3d& p) {
    SetHeader("$INSBASE", {{10, FormatReal(p.x)}, {20, FormatReal(p.y)}, {30, FormatReal(p.z)}});
}

void Database::SetSpaces(Handle modelSpace, Handle paperSpace) {
    modelSpace_ = modelSpace;
    paperSpace_ = paperSpace;
}

void Database::SetCurrentsFromHeader() {
    currentLayer_ = FindLayer(HeaderString("$CLAYER"));
    if (currentLayer_ == kNullHandle) {
        currentLayer_ = FindLayer("0");
    }
    currentStyle_ = FindTextStyle(HeaderString("$TEXTSTYLE"));
    if (currentStyle_ == kNullHandle) {
        currentStyle_ = FindTextStyle("Standard");
    }
}

}  // namespace cad
