#include "dialog/LibraryTree.h"

namespace dialog {

namespace {

TreeNode* ChildOrInsert(TreeModel& tree, TreeNode* parent, const std::string& name, int image) {
    if (TreeNode* found = FindChildExact(parent, name)) {
        return found;
    }
    return tree.Insert(parent, name, image);
}

TreeNode* FindInSubtree(TreeModel& tree, TreeNode* node, const Entries& entries,
                        const std::function<bool(const TreeNode&)>& match) {
    if (match(*node)) {
        return node;
    }
    if (node->Level() == 3) {
        FillTypeModules(tree, node, entries);
    }
    for (const auto& child : node->children) {
        if (TreeNode* found = FindInSubtree(tree, child.get(), entries, match)) {
            return found;
        }
    }
    return nullptr;
}

}  // namespace

TreeNode* FindChildExact(const TreeNode* parent, std::string_view name) {
    for (const auto& child : parent->children) {
        if (child->text == name) {
            return child.get();
        }
    }
    return nullptr;
}

TreeNode* FillLibraryTree(TreeModel& tree, const Entries& entries) {
    TreeNode* root = tree.InsertRoot("PLC", kImageRoot);
    for (const auto& entry : entries) {
        if (entry->manufacturer.empty()) {
            continue;
        }
        TreeNode* maker = ChildOrInsert(tree, root, entry->manufacturer, kImageManufacturer);
        if (entry->series.empty()) {
            continue;
        }
        TreeNode* series = ChildOrInsert(tree, maker, entry->series, kImageSeries);
        if (!entry->type.empty()) {
            ChildOrInsert(tree, series, entry->type, kImageType);
        }
    }
    return root;
}

void FillTypeModules(TreeModel& tree, TreeNode* typeNode, const Entries& entries) {
    if (!typeNode->children.empty()) {
        return;
    }
    const LastSelection path = PathOf(typeNode);
    for (const auto& entry : entries) {
        if (!entry->code.empty() && entry->manufacturer == path.manufacturer &&
            entry->series == path.series && entry->type == path.type) {
            tree.Insert(typeNode, entry->code, kImageModule);
        }
    }
}

void FillAllModules(TreeModel& tree, const Entries& entries) {
    std::vector<TreeNode*> pending = {tree.Root()};
    while (!pending.empty()) {
        TreeNode* node = pending.back();
        pending.pop_back();
        if (node == nullptr) {
            continue;
        }
        if (node->Level() == 3) {
            FillTypeModules(tree, node, entries);
            continue;
        }
        for (const auto& child : node->children) {
            pending.push_back(child.get());
        }
    }
}

LastSelection PathOf(const TreeNode* node) {
    LastSelection path;
    std::string* fields[] = {&path.manufacturer, &path.series, &path.type, &path.code};
    for (; node != nullptr && node->Level() > 0; node = node->parent) {
        if (node->Level() <= 4) {
            *fields[node->Level() - 1] = node->text;
        }
    }
    return path;
}

TreeNode* DescendTo(TreeModel& tree, const LastSelection& path, const Entries& entries) {
    const std::string* levels[] = {&path.manufacturer, &path.series, &path.type, &path.code};
    TreeNode* node = tree.Root();
    TreeNode* found = nullptr;
    for (const std::string* name : levels) {
        if (node == nullptr || name->empty()) {
            break;
        }
        if (node->Level() == 3) {
            FillTypeModules(tree, node, entries);
        }
        TreeNode* child = node->FindChildNoCase(*name);
        if (child == nullptr) {
            break;
        }
        tree.Expand(node);
        node = found = child;
    }
    if (found != nullptr) {
        tree.Expand(found);
    }
    return found;
}

void ExpandTo(TreeModel& tree, TreeNode* node) {
    for (TreeNode* up = node->parent; up != nullptr; up = up->parent) {
        tree.Expand(up);
    }
}

TreeNode* FindFrom(TreeModel& tree, TreeNode* start, const Entries& entries,
                   const std::function<bool(const TreeNode&)>& match) {
    if (start->Level() != 4) {
        if (TreeNode* found = FindInSubtree(tree, start, entries, match)) {
            return found;
        }
    }
    for (TreeNode* node = start; node->parent != nullptr; node = node->parent) {
        for (TreeNode* next = node->NextSibling(); next != nullptr; next = next->NextSibling()) {
            if (TreeNode* found = FindInSubtree(tree, next, entries, match)) {
                return found;
            }
        }
    }
    return nullptr;
}

}  // namespace dialog
