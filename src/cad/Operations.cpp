#include "cad/Operations.h"

#include <algorithm>

namespace cad {

void Extents3d::Add(const Point3d& p) {
    min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
    max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
}
void Extents3d::Add(const Extents3d& e) {
    Add(e.min);
    Add(e.max);
}
double TextWidth(std::string_view, double, double) {
    return 0;
}
std::vector<std::string> MTextLines(std::string_view) {
    return {};
}
std::optional<Extents3d> EntityExtents(const Database&, const Entity&) {
    return std::nullopt;
}
Matrix3d BlockTransform(const Database&, const BlockReference&) {
    return {};
}
bool TransformEntity(Entity&, const Matrix3d&) {
    return false;
}
std::vector<Handle> ExplodeReference(Database&, Handle) {
    return {};
}
int ExplodeAllReferences(Database&, Handle) {
    return 0;
}
Handle InsertAsBlock(Database&, const Database&, const std::string&) {
    return kNullHandle;
}
Handle CopyEntity(Database&, Handle, Handle) {
    return kNullHandle;
}

}  // namespace cad
