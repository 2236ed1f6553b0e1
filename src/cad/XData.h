// Extended entity data: per registered application, an ordered list of items. Items keep
// their group code and their value as text, so that any 10xx item read from a file is
// written back exactly; the typed constructors and accessors cover the codes the system
// writes itself (1000 string, 1005 handle, 1040 real, 1070 int16, 1071 int32).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cad/Handle.h"

namespace cad {

struct XDataItem {
    int code = 1000;
    std::string value;

    static XDataItem String(std::string text);
    static XDataItem Real(double v);
    static XDataItem Int16(int v);
    static XDataItem Int32(std::int32_t v);
    static XDataItem HandleRef(Handle h);  // 1005, the handle as upper-case hex ("0" for none)

    double AsReal() const;    // 0 when not a number
    long long AsInt() const;  // 0 when not an integer
    Handle AsHandle() const;  // kNullHandle when not a hex handle
    bool operator==(const XDataItem&) const = default;
};

// One application's items on one entity. `app` is the handle of the APPID table record.
struct XDataGroup {
    Handle app = kNullHandle;
    std::vector<XDataItem> items;
};

using XDataList = std::vector<XDataGroup>;

}  // namespace cad
