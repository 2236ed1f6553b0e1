#include "cad/Dxf.h"

namespace cad {

const char* AcadVer(DxfVersion v) {
    switch (v) {
        case DxfVersion::R14:
            return "AC1014";
        case DxfVersion::R2000:
            return "AC1015";
        case DxfVersion::R2004:
            return "AC1018";
        case DxfVersion::R2007:
            return "AC1021";
        case DxfVersion::R2010:
            return "AC1024";
    }
    return "AC1024";
}

DxfVersion VersionForSaveFormat(std::string_view f) {
    if (f == "8")
        return DxfVersion::R14;
    if (f == "12")
        return DxfVersion::R2000;
    if (f == "24")
        return DxfVersion::R2004;
    if (f == "36")
        return DxfVersion::R2007;
    return DxfVersion::R2010;
}

void WriteDxf(const Database& db, DxfVersion version, TagSink& sink) {
    throw DxfError("", 0, "writing is not available yet");
}

std::string WriteDxfString(const Database& db, DxfVersion version) {
    throw DxfError("", 0, "writing is not available yet");
}

void WriteDxfFile(const Database& db, const std::string& path, DxfVersion version) {
    throw DxfError(path, 0, "writing is not available yet");
}

}  // namespace cad
