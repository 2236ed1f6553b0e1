// The library tree both dialogs show: a root "PLC" over manufacturers, series, types and
// module codes. Each level lists its distinct names (compared as stored) in the order the
// entry list first names them; an entry with an empty series, type or code adds nothing
// below its level. Module nodes are filled in per type when a type is first opened, as the
// dialogs do, so a large library builds its tree without one node per module.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "dialog/Controls.h"
#include "dialog/LastSelection.h"
#include "plclib/PlcRecords.h"

namespace dialog {

// Tree node images; the same index is the node's selected image.
enum TreeImage { kImageManufacturer = 1, kImageSeries, kImageType, kImageModule, kImageRoot = 6 };

using Entries = std::vector<std::unique_ptr<CPlcPartData>>;

// Replaces the tree with the root "PLC" and the manufacturer, series and type nodes of
// `entries`; returns the root.
TreeNode* FillLibraryTree(TreeModel& tree, const Entries& entries);

// Adds the module nodes of a type node that has none yet.
void FillTypeModules(TreeModel& tree, TreeNode* typeNode, const Entries& entries);

// Adds the module nodes of every type that has none yet.
void FillAllModules(TreeModel& tree, const Entries& entries);

// The names from the manufacturer down to `node`; the levels below it are empty.
LastSelection PathOf(const TreeNode* node);

// The child named `name` as stored, or null.
TreeNode* FindChildExact(const TreeNode* parent, std::string_view name);

// Walks down the remembered names (without regard to case), expanding each level passed,
// filling a type's modules before looking for a code. An empty or unknown name ends the
// descent; the deepest node found is expanded and returned (null when not even the
// manufacturer was found).
TreeNode* DescendTo(TreeModel& tree, const LastSelection& path, const Entries& entries);

// Expands every ancestor of `node` so that it shows.
void ExpandTo(TreeModel& tree, TreeNode* node);

// The first node, in tree order from `start` onwards, for which `match` holds: the start's
// own subtree (the start itself included unless it is a module), then the following
// siblings of the start and of each of its ancestors. Type nodes reached by the walk get
// their module nodes first.
TreeNode* FindFrom(TreeModel& tree, TreeNode* start, const Entries& entries,
                   const std::function<bool(const TreeNode&)>& match);

}  // namespace dialog
