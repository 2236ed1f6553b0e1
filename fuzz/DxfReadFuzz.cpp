// Feeds arbitrary bytes to the DXF reader. A file is either read or refused with a DxfError;
// whatever is read must pass through the audit and, when it passes, be written and read
// back without error.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cad/Audit.h"
#include "cad/Dxf.h"
#include "cad/Operations.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::unique_ptr<cad::Database> db;
    try {
        db = cad::ReadDxfString(std::string_view(reinterpret_cast<const char*>(data), size),
                                "fuzz.dxf");
    } catch (const cad::DxfError&) {
        return 0;
    }
    for (const cad::Entity* e : db->Entities()) {
        (void)cad::EntityExtents(*db, *e);
    }
    if (!cad::Audit(*db).empty()) {
        return 0;
    }
    std::string text;
    try {
        text = cad::WriteDxfString(*db, cad::DxfVersion::R2000);
    } catch (const cad::DxfError&) {
        return 0;
    }
    // What was written must read back.
    auto again = cad::ReadDxfString(text, "rewritten.dxf");
    if (again->Entities().size() != db->Entities().size()) {
        __builtin_trap();
    }
    return 0;
}
