#include "plclib/LibraryTree.h"

#include <algorithm>

namespace plcdb {
namespace {

TreeNode& Child(std::vector<TreeNode>& level, const std::string& name) {
    auto it = std::find_if(level.begin(), level.end(),
                           [&](const TreeNode& node) { return node.name == name; });
    if (it != level.end()) {
        return *it;
    }
    return level.emplace_back(TreeNode{name, nullptr, {}});
}

}  // namespace

std::vector<TreeNode> BuildTree(const std::vector<std::unique_ptr<CPlcPartData>>& entries) {
    std::vector<TreeNode> makers;
    for (const auto& entry : entries) {
        TreeNode& maker = Child(makers, entry->manufacturer);
        if (entry->series.empty()) {
            continue;
        }
        TreeNode& series = Child(maker.children, entry->series);
        if (entry->type.empty()) {
            continue;
        }
        TreeNode& type = Child(series.children, entry->type);
        if (!entry->code.empty()) {
            type.children.push_back(TreeNode{entry->code, entry.get(), {}});
        }
    }
    return makers;
}

const CPlcPartData* FindModule(const std::vector<std::unique_ptr<CPlcPartData>>& entries,
                               std::string_view manufacturer, std::string_view series,
                               std::string_view type, std::string_view code) {
    for (const auto& entry : entries) {
        if (entry->manufacturer == manufacturer && entry->series == series && entry->type == type &&
            entry->code == code && !code.empty()) {
            return entry.get();
        }
    }
    return nullptr;
}

}  // namespace plcdb
