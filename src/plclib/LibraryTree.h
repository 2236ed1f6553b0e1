// The tree manufacturer > series > type > module that the entry list encodes, built the way
// the dialogs show it: each level lists its distinct names in order of first appearance;
// an entry with an empty series, type or code adds no node below its level.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plclib/PlcRecords.h"

namespace plcdb {

struct TreeNode {
    std::string name;
    const CPlcPartData* entry = nullptr;  // modules only
    std::vector<TreeNode> children;
};

// The manufacturers, each with its series, types and modules.
std::vector<TreeNode> BuildTree(const std::vector<std::unique_ptr<CPlcPartData>>& entries);

// The entry of module (manufacturer, series, type, code), compared as stored; null if none.
const CPlcPartData* FindModule(const std::vector<std::unique_ptr<CPlcPartData>>& entries,
                               std::string_view manufacturer, std::string_view series,
                               std::string_view type, std::string_view code);

}  // namespace plcdb
