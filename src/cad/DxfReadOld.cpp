// Drawings of R12 and older (AC1009 down to AC1003): their objects carry no subclass markers.
// The markers later versions need are put in while reading, so that the rest of the reader,
// and what is written back from unmodelled objects, sees the object as R13 and later hold it.
#include <algorithm>
#include <vector>

#include "cad/DxfReader.h"
#include "cad/NumberText.h"

namespace cad::dxfread {

namespace {

// One subclass of an object: its marker and the group codes it holds; no codes: every code
// no other subclass of the object claims.
struct Subclass {
    std::string_view marker;
    std::vector<int> codes;
    bool rest = false;
};

bool IsCommonCode(int code) {
    switch (code) {
        case 6:
        case 8:
        case 48:
        case 60:
        case 62:
        case 67:
        case 284:
        case 347:
        case 370:
        case 390:
        case 420:
        case 430:
        case 440:
            return true;
        default:
            return false;
    }
}

long long FlagsOf(const Record& rec) {
    for (const auto& t : rec.tags) {
        long long v = 0;
        if (t.code == 70 && ParseInt(t.value, v)) {
            return v;
        }
    }
    return 0;
}

std::string_view PolylineMarker(long long flags) {
    if (flags & 64) {
        return "AcDbPolyFaceMesh";
    }
    if (flags & 16) {
        return "AcDbPolygonMesh";
    }
    return flags & 8 ? "AcDb3dPolyline" : "AcDb2dPolyline";
}

std::string_view VertexMarker(long long flags) {
    if (flags & 128) {
        return flags & 64 ? "AcDbPolyFaceMeshVertex" : "AcDbFaceRecord";
    }
    if (flags & 32) {
        return "AcDb3dPolylineVertex";
    }
    return flags & 64 ? "AcDbPolygonMeshVertex" : "AcDb2dVertex";
}

std::string_view DimensionMarker(long long type) {
    switch (type & 7) {
        case 0:
        case 1:
            return "AcDbAlignedDimension";
        case 2:
            return "AcDb2LineAngularDimension";
        case 3:
            return "AcDbDiametricDimension";
        case 4:
            return "AcDbRadialDimension";
        case 5:
            return "AcDb3PointAngularDimension";
        default:
            return "AcDbOrdinateDimension";
    }
}

// The subclasses of an entity type in file order; false for a type left as it is.
bool EntitySubclasses(std::string_view type, const Record& rec, std::vector<Subclass>& out) {
    auto only = [&](std::string_view marker) { out = {{marker, {}, true}}; };
    if (type == "LINE") {
        only("AcDbLine");
    } else if (type == "POINT") {
        only("AcDbPoint");
    } else if (type == "CIRCLE") {
        only("AcDbCircle");
    } else if (type == "ARC") {
        out = {{"AcDbCircle", {}, true}, {"AcDbArc", {50, 51}}};
    } else if (type == "TEXT") {
        out = {{"AcDbText", {}, true}, {"AcDbText", {73}}};
    } else if (type == "ATTDEF") {
        out = {{"AcDbText", {}, true}, {"AcDbAttributeDefinition", {2, 3, 70, 73, 74, 280}}};
    } else if (type == "ATTRIB") {
        out = {{"AcDbText", {}, true}, {"AcDbAttribute", {2, 70, 73, 74, 280}}};
    } else if (type == "INSERT") {
        only("AcDbBlockReference");
    } else if (type == "SEQEND") {
        out.clear();
    } else if (type == "SOLID" || type == "TRACE") {
        only("AcDbTrace");
    } else if (type == "3DFACE") {
        only("AcDbFace");
    } else if (type == "SHAPE") {
        only("AcDbShape");
    } else if (type == "POLYLINE") {
        only(PolylineMarker(FlagsOf(rec)));
    } else if (type == "VERTEX") {
        const std::string_view marker = VertexMarker(FlagsOf(rec));
        if (marker == "AcDbFaceRecord") {
            only(marker);
        } else {
            out = {{"AcDbVertex", {}}, {marker, {}, true}};
        }
    } else if (type == "DIMENSION") {
        const std::string_view marker = DimensionMarker(FlagsOf(rec));
        out = {{"AcDbDimension", {}, true},
               {marker, {13, 23, 33, 14, 24, 34, 15, 25, 35, 16, 26, 36, 40, 50}}};
        if ((FlagsOf(rec) & 7) == 0) {
            out.push_back({"AcDbRotatedDimension", {52}});
        }
    } else {
        return false;
    }
    return true;
}

// Table records: the common marker, then the table's own.
std::string_view RecordMarker(std::string_view type) {
    if (type == "LAYER")
        return "AcDbLayerTableRecord";
    if (type == "LTYPE")
        return "AcDbLinetypeTableRecord";
    if (type == "STYLE")
        return "AcDbTextStyleTableRecord";
    if (type == "VIEW")
        return "AcDbViewTableRecord";
    if (type == "UCS")
        return "AcDbUCSTableRecord";
    if (type == "VPORT")
        return "AcDbViewportTableRecord";
    if (type == "APPID")
        return "AcDbRegAppTableRecord";
    if (type == "DIMSTYLE")
        return "AcDbDimStyleTableRecord";
    return {};
}

bool HasMarkers(const Record& rec) {
    return std::any_of(rec.tags.begin(), rec.tags.end(),
                       [](const RawTag& t) { return t.code == 100; });
}

// The handle and owner tags at the head of a record stay first.
std::size_t HeadLength(const Record& rec) {
    std::size_t i = 0;
    while (i < rec.tags.size() &&
           (rec.tags[i].code == 5 || rec.tags[i].code == 105 || rec.tags[i].code == 330)) {
        ++i;
    }
    return i;
}

}  // namespace

void AddEntityMarkers(Record& rec) {
    std::vector<Subclass> subclasses;
    if (HasMarkers(rec) || !EntitySubclasses(rec.type, rec, subclasses)) {
        return;
    }
    const std::size_t head = HeadLength(rec);
    std::vector<RawTag> out(rec.tags.begin(), rec.tags.begin() + static_cast<long>(head));
    out.reserve(rec.tags.size() + subclasses.size() + 1);
    auto marker = [&](std::string_view name) { out.push_back({100, name, rec.line}); };
    auto end = std::find_if(rec.tags.begin() + static_cast<long>(head), rec.tags.end(),
                            [](const RawTag& t) { return t.code >= 1000; });
    marker("AcDbEntity");
    for (auto it = rec.tags.begin() + static_cast<long>(head); it != end; ++it) {
        if (IsCommonCode(it->code)) {
            out.push_back(*it);
        }
    }
    auto claimedElsewhere = [&](int code) {
        return std::any_of(subclasses.begin(), subclasses.end(), [&](const Subclass& s) {
            return !s.rest && std::find(s.codes.begin(), s.codes.end(), code) != s.codes.end();
        });
    };
    for (const Subclass& s : subclasses) {
        marker(s.marker);
        for (auto it = rec.tags.begin() + static_cast<long>(head); it != end; ++it) {
            if (IsCommonCode(it->code)) {
                continue;
            }
            const bool mine =
                s.rest ? !claimedElsewhere(it->code)
                       : std::find(s.codes.begin(), s.codes.end(), it->code) != s.codes.end();
            if (mine) {
                out.push_back(*it);
            }
        }
    }
    out.insert(out.end(), end, rec.tags.end());
    rec.tags = std::move(out);
}

void AddRecordMarkers(Record& rec) {
    const std::string_view own = RecordMarker(rec.type);
    if (own.empty()) {
        return;
    }
    if (HasMarkers(rec)) {
        // Some writers of R12 put the common marker only: the table's own follows it.
        auto common = std::find_if(rec.tags.begin(), rec.tags.end(), [](const RawTag& t) {
            return t.code == 100 && Trim(t.value) == "AcDbSymbolTableRecord";
        });
        const bool hasOwn = std::any_of(rec.tags.begin(), rec.tags.end(), [&](const RawTag& t) {
            return t.code == 100 && Trim(t.value) == own;
        });
        if (common != rec.tags.end() && !hasOwn) {
            rec.tags.insert(common + 1, RawTag{100, own, rec.line});
        }
        return;
    }
    const std::size_t head = HeadLength(rec);
    std::vector<RawTag> out(rec.tags.begin(), rec.tags.begin() + static_cast<long>(head));
    out.push_back({100, "AcDbSymbolTableRecord", rec.line});
    out.push_back({100, own, rec.line});
    out.insert(out.end(), rec.tags.begin() + static_cast<long>(head), rec.tags.end());
    rec.tags = std::move(out);
}

}  // namespace cad::dxfread
