#include "cad/XData.h"

#include <charconv>
#include <cstdio>

#include "cad/NumberText.h"

namespace cad {

XDataItem XDataItem::String(std::string text) {
    return {1000, std::move(text)};
}
XDataItem XDataItem::Real(double v) {
    return {1040, FormatReal(v)};
}
XDataItem XDataItem::Int16(int v) {
    return {1070, std::to_string(static_cast<std::int16_t>(v))};
}
XDataItem XDataItem::Int32(std::int32_t v) {
    return {1071, std::to_string(v)};
}
XDataItem XDataItem::HandleRef(Handle h) {
    return {1005, FormatHandle(h)};
}

double XDataItem::AsReal() const {
    double v = 0;
    return ParseReal(value, v) ? v : 0;
}

long long XDataItem::AsInt() const {
    long long v = 0;
    return ParseInt(value, v) ? v : 0;
}

Handle XDataItem::AsHandle() const {
    Handle h = kNullHandle;
    return ParseHandle(value, h) ? h : kNullHandle;
}

}  // namespace cad
