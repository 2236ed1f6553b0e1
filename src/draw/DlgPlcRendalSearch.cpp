// Search for a module code in the drawing dialog's tree. The walk starts at the selected
// node and covers, in tree order, that node's own subtree (a module start skips itself) and
// then everything after it: the following siblings of the start and, level by level upwards,
// the following siblings of its ancestors. Types fill in their module nodes only when the
// walk reaches them, as a selection does.
#include "draw/DlgPlcRendal.h"
#include "files/TextFile.h"
#include "host/Host.h"

bool CDlgPlcRendal::MatchesSearch(const std::string& code) const {
    if (matchMode == 0) {
        return code.size() >= searchText.size() &&
               files::UpperAscii(code.substr(0, searchText.size())) ==
                   files::UpperAscii(searchText);
    }
    return files::UpperAscii(code).find(files::UpperAscii(searchText)) != std::string::npos;
}

draw::TreeNode* CDlgPlcRendal::SearchSubtree(draw::TreeNode* node) {
    if (node->Level() == 4) {
        return MatchesSearch(node->text) ? node : nullptr;
    }
    if (node->Level() == 3) {
        FillTypeModules(node);
    }
    for (const auto& child : node->children) {
        if (draw::TreeNode* found = SearchSubtree(child.get())) {
            return found;
        }
    }
    return nullptr;
}

draw::TreeNode* CDlgPlcRendal::SearchFrom(draw::TreeNode* start) {
    if (start->Level() != 4) {
        if (draw::TreeNode* found = SearchSubtree(start)) {
            return found;
        }
    }
    for (draw::TreeNode* node = start; node->parent != nullptr; node = node->parent) {
        for (draw::TreeNode* next = node->NextSibling(); next != nullptr;
             next = next->NextSibling()) {
            if (draw::TreeNode* found = SearchSubtree(next)) {
                return found;
            }
        }
    }
    return nullptr;
}

void CDlgPlcRendal::OnSearch() {
    searchText = editSearch;
    draw::TreeNode* root = tree.Root();
    if (root == nullptr) {
        return;
    }
    draw::TreeNode* start = tree.Selected() != nullptr ? tree.Selected() : root;
    draw::TreeNode* found = SearchFrom(start);
    if (found == nullptr) {
        const host::MsgResult answer =
            host::ShowMessage("搜索已达末尾,是否从头开始?", "Zandrix", host::MsgIcon::Question,
                              host::MsgButtons::YesNo);
        if (answer != host::MsgResult::Yes) {
            return;
        }
        found = SearchFrom(root);
    }
    if (found == nullptr) {
        return;
    }
    for (draw::TreeNode* up = found->parent; up != nullptr; up = up->parent) {
        up->expanded = true;
    }
    SelectTreeNode(found);
}
