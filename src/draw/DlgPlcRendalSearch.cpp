// Search for a module code in the drawing dialog's tree, from the selected node onwards in
// tree order (the walk is the library tree's own); only module nodes match.
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

dialog::TreeNode* CDlgPlcRendal::SearchFrom(dialog::TreeNode* start) {
    return dialog::FindFrom(tree, start, plcLib.Entries(), [this](const dialog::TreeNode& node) {
        return node.Level() == 4 && MatchesSearch(node.text);
    });
}

void CDlgPlcRendal::OnSearch() {
    searchText = editSearch;
    dialog::TreeNode* root = tree.Root();
    if (root == nullptr) {
        return;
    }
    dialog::TreeNode* start = tree.Selected() != nullptr ? tree.Selected() : root;
    dialog::TreeNode* found = SearchFrom(start);
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
    dialog::ExpandTo(tree, found);
    SelectTreeNode(found);
}
