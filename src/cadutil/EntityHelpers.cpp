#include "cadutil/EntityHelpers.h"

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "cad/Dxf.h"
#include "cad/Operations.h"
#include "cadutil/Thumbnail.h"
#include "host/Host.h"

namespace cadutil {

cad::Handle AddPolylineWithWidths(cad::Database* db, const std::vector<cad::Point3d>& points,
                                  const std::vector<double>& widths) {
    const long long n = static_cast<long long>(points.size());
    if (!db || static_cast<long long>(widths.size()) != 2 * n - 2) {
        return cad::kNullHandle;
    }
    auto polyline = std::make_unique<cad::LwPolyline>();
    for (long long i = 0; i < n; ++i) {
        cad::LwVertex v;
        v.x = points[i].x;
        v.y = points[i].y;
        if (i + 1 < n) {
            v.startWidth = widths[2 * i];
            v.endWidth = widths[2 * i + 1];
        }  // the last vertex keeps -1: the default width
        polyline->vertices.push_back(v);
    }
    return db->Append(std::move(polyline), db->ModelSpace());
}

cad::Handle AddPolylineWithWidth(cad::Database* db, const std::vector<cad::Point3d>& points,
                                 double width) {
    const size_t count = points.empty() ? 0 : 2 * points.size() - 2;
    return AddPolylineWithWidths(db, points, std::vector<double>(count, width));
}

bool EraseObject(cad::Database* db, cad::Handle id) {
    return db && db->Erase(id);
}

bool EntityExtents(const cad::Database& db, const cad::Entity& entity, cad::Point3d& min,
                   cad::Point3d& max) {
    const auto extents = cad::EntityExtents(db, entity);
    if (!extents) {
        return false;
    }
    min = extents->min;
    max = extents->max;
    return max.x > min.x && max.y > min.y;
}

std::string DrawingFilePath(std::string path) {
    const auto dot = path.size() >= 4 ? path.substr(path.size() - 4) : std::string();
    std::string lower = dot;
    for (char& c : lower) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (lower != ".dxf") {
        path += ".dxf";
    }
    return path;
}

namespace {

// Puts a host environment setting back when the save is over, whatever happens.
class RestoreEnvironment {
public:
    RestoreEnvironment(std::string name, std::string value)
        : name_(std::move(name)), value_(std::move(value)) {}
    ~RestoreEnvironment() { host::Current().SetEnvironment(name_, value_); }

private:
    std::string name_;
    std::string value_;
};

bool IsKnownSaveFormat(const std::string& value) {
    return value == "8" || value == "12" || value == "24" || value == "36" || value == "48";
}

}  // namespace

SaveStatus SaveSideDatabase(cad::Database* db, std::string path, std::string* error) {
    path = DrawingFilePath(std::move(path));
    if (!db) {
        if (error) {
            *error = "no drawing to save";
        }
        return SaveStatus::NoDatabase;
    }
    if (auto preview = ReadThumbnail(path)) {
        db->SetThumbnail(std::move(*preview));
    }
    const char* kSetting = "DefaultFormatForSave";
    const std::string previous = host::Current().GetEnvironment(kSetting);
    std::unique_ptr<RestoreEnvironment> restore;
    if (!IsKnownSaveFormat(previous)) {
        restore = std::make_unique<RestoreEnvironment>(kSetting, previous);
        host::Current().SetEnvironment(kSetting, "48");
    }
    const cad::DxfVersion version =
        cad::VersionForSaveFormat(host::Current().GetEnvironment(kSetting));
    try {
        cad::WriteDxfFile(*db, path, version);
    } catch (const std::exception& e) {
        if (error) {
            *error = e.what();
        }
        return SaveStatus::WriteFailed;
    }
    return SaveStatus::Ok;
}

void SendCommandString(std::string_view text) {
    if (!text.empty()) {
        host::Current().SendCommandString(text);
    }
}

std::string DwgPrefix() {
    return host::Current().GetVariable("dwgprefix");
}

std::string DwgName() {
    return host::Current().GetVariable("dwgname");
}

bool DwgTitled() {
    const std::string value = host::Current().GetVariable("dwgtitled");
    return !value.empty() && std::atoi(value.c_str()) != 0;
}

}  // namespace cadutil
