// The editor's menu commands: each checks that the selection fits it, runs its operation
// inside the host's document lock and gives the focus back to the control it acted on.
#include "host/Host.h"
#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"

using namespace libedit;

namespace {

// The tree level a tree command is offered on; -1 for the lists' commands.
int LevelOf(int id) {
    switch (id) {
        case kCmdNewManufacturer:
            return 0;
        case kCmdDeleteManufacturer:
        case kCmdRenameManufacturer:
        case kCmdChangeShortName:
        case kCmdNewSeries:
            return 1;
        case kCmdDeleteSeries:
        case kCmdRenameSeries:
        case kCmdNewType:
            return 2;
        case kCmdDeleteType:
        case kCmdRenameType:
        case kCmdNewModule:
            return 3;
        case kCmdDeleteModule:
        case kCmdRenameModule:
            return 4;
        default:
            return -1;
    }
}

bool IsRename(int id) {
    return id == kCmdRenameManufacturer || id == kCmdRenameSeries || id == kCmdRenameType ||
           id == kCmdRenameModule;
}

}  // namespace

bool CDlgPlcDataLibEdit::RunLocked(const std::function<bool()>& body) {
    host::IHost& current = host::Current();
    current.LockDocument();
    const bool done = body();
    current.UnlockDocument();
    return done;
}

bool CDlgPlcDataLibEdit::OnMenuCommand(int id) {
    const ChangingEntries changing(*this);
    const int level = LevelOf(id);
    if (level >= 0) {
        dialog::TreeNode* node = tree.Selected();
        if (node == nullptr || node->Level() != level) {
            return false;
        }
        if (IsRename(id)) {
            return BeginLabelEdit(node);
        }
    }
    bool (CDlgPlcDataLibEdit::*operation)() = nullptr;
    const char* focusAfter = "tree";
    switch (id) {
        case kCmdNewManufacturer:
            operation = &CDlgPlcDataLibEdit::NewManufacturer;
            break;
        case kCmdDeleteManufacturer:
            operation = &CDlgPlcDataLibEdit::DeleteManufacturer;
            break;
        case kCmdChangeShortName:
            operation = &CDlgPlcDataLibEdit::ChangeShortName;
            break;
        case kCmdNewSeries:
            operation = &CDlgPlcDataLibEdit::NewSeries;
            break;
        case kCmdDeleteSeries:
            operation = &CDlgPlcDataLibEdit::DeleteSeries;
            break;
        case kCmdNewType:
            operation = &CDlgPlcDataLibEdit::NewType;
            break;
        case kCmdDeleteType:
            operation = &CDlgPlcDataLibEdit::DeleteType;
            break;
        case kCmdNewModule:
            operation = &CDlgPlcDataLibEdit::NewModule;
            break;
        case kCmdDeleteModule:
            operation = &CDlgPlcDataLibEdit::DeleteModule;
            break;
        case kCmdChangeModule:
            operation = &CDlgPlcDataLibEdit::ChangeModule;
            focusAfter = "moduleList";
            break;
        case kCmdAppendTerm:
            operation = &CDlgPlcDataLibEdit::AppendTerminal;
            break;
        case kCmdInsertTerm:
            operation = &CDlgPlcDataLibEdit::InsertTerminal;
            break;
        case kCmdDeleteTerms:
            operation = &CDlgPlcDataLibEdit::DeleteTerminals;
            break;
        case kCmdChangeTerm:
            operation = &CDlgPlcDataLibEdit::ChangeTerminal;
            break;
        case kCmdReorderTerms:
            operation = &CDlgPlcDataLibEdit::ReorderTerminals;
            break;
        default:
            return false;
    }
    if (id >= kCmdAppendTerm && id != kCmdChangeShortName && id != kCmdChangeModule) {
        focusAfter = "termList";
    }
    const bool done = RunLocked([&] { return (this->*operation)(); });
    focus = focusAfter;
    return done;
}

bool CDlgPlcDataLibEdit::BeginLabelEdit(dialog::TreeNode* node) {
    if (node == nullptr || node->Level() < 1 || node->Level() > 4) {
        return false;
    }
    if (tree.Selected() != node) {
        SelectTreeNode(node);
    }
    oldLabel = node->text;
    editingNode = node;
    return true;
}

bool CDlgPlcDataLibEdit::EndLabelEdit(std::optional<std::string> newText) {
    const ChangingEntries changing(*this);
    dialog::TreeNode* node = editingNode;
    if (node == nullptr || !newText || newText->empty()) {
        editingNode = nullptr;
        return false;
    }
    const std::string newName = *newText;
    bool renamed = true;
    if (newName != oldLabel) {
        // The rename reads the node being edited from editingNode.
        switch (node->Level()) {
            case 1:
                renamed = RenameManufacturer(oldLabel, newName);
                break;
            case 2:
                renamed = RenameSeries(oldLabel, newName);
                break;
            case 3:
                renamed = RenameType(oldLabel, newName);
                break;
            case 4:
                renamed = RenameModule(oldLabel, newName);
                break;
            default:
                renamed = false;
        }
    }
    editingNode = nullptr;
    return renamed;
}
