#include "dialog/Controls.h"

#include <algorithm>
#include <cctype>

namespace dialog {

namespace {

bool EqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

int CountBelow(const TreeNode& node) {
    int count = 1;
    for (const auto& child : node.children) {
        count += CountBelow(*child);
    }
    return count;
}

const std::string kEmpty;

}  // namespace

TreeNode* TreeNode::NextSibling() const {
    if (parent == nullptr) {
        return nullptr;
    }
    auto& siblings = parent->children;
    for (size_t i = 0; i + 1 < siblings.size(); ++i) {
        if (siblings[i].get() == this) {
            return siblings[i + 1].get();
        }
    }
    return nullptr;
}

int TreeNode::Level() const {
    int level = 0;
    for (const TreeNode* node = parent; node != nullptr; node = node->parent) {
        ++level;
    }
    return level;
}

TreeNode* TreeNode::FindChildNoCase(std::string_view wanted) const {
    for (const auto& child : children) {
        if (EqualNoCase(child->text, wanted)) {
            return child.get();
        }
    }
    return nullptr;
}

void TreeModel::Clear() {
    selected_ = nullptr;
    root_.reset();
    changed.Emit(TreeChange::Nodes, nullptr);
}

TreeNode* TreeModel::InsertRoot(std::string text, int image) {
    selected_ = nullptr;
    root_ = std::make_unique<TreeNode>();
    root_->text = std::move(text);
    root_->image = image;
    changed.Emit(TreeChange::Nodes, nullptr);
    return root_.get();
}

TreeNode* TreeModel::Insert(TreeNode* parent, std::string text, int image) {
    auto node = std::make_unique<TreeNode>();
    node->text = std::move(text);
    node->image = image;
    node->parent = parent;
    parent->children.push_back(std::move(node));
    changed.Emit(TreeChange::Nodes, parent);
    return parent->children.back().get();
}

void TreeModel::Remove(TreeNode* node) {
    for (const TreeNode* up = selected_; up != nullptr; up = up->parent) {
        if (up == node) {
            Select(nullptr);
            break;
        }
    }
    if (node == root_.get()) {
        Clear();
        return;
    }
    TreeNode* parent = node->parent;
    std::erase_if(parent->children, [node](const auto& child) { return child.get() == node; });
    changed.Emit(TreeChange::Nodes, parent);
}

void TreeModel::SetText(TreeNode* node, std::string text) {
    node->text = std::move(text);
    changed.Emit(TreeChange::Nodes, node);
}

void TreeModel::Expand(TreeNode* node, bool expanded) {
    node->expanded = expanded;
    changed.Emit(TreeChange::Expansion, node);
}

void TreeModel::Select(TreeNode* node) {
    if (selected_ != nullptr) {
        selected_->selected = false;
    }
    selected_ = node;
    if (node != nullptr) {
        node->selected = true;
    }
    changed.Emit(TreeChange::Selection, node);
}

int TreeModel::Count() const {
    return root_ ? CountBelow(*root_) : 0;
}

const std::string& ListModel::Text(int row, int column) const {
    if (row < 0 || row >= Count() || column < 0) {
        return kEmpty;
    }
    const auto& cells = rows_[row].cells;
    return column < static_cast<int>(cells.size()) ? cells[column] : kEmpty;
}

void ListModel::SetText(int row, int column, std::string text) {
    if (row < 0 || row >= Count() || column < 0) {
        return;
    }
    auto& cells = rows_[row].cells;
    if (column >= static_cast<int>(cells.size())) {
        cells.resize(column + 1);
    }
    cells[column] = std::move(text);
    changed.Emit(ListChange::Rows, row);
}

int ListModel::StateImage(int row) const {
    return row >= 0 && row < Count() ? rows_[row].stateImage : 0;
}

void ListModel::SetStateImage(int row, int image) {
    if (row >= 0 && row < Count()) {
        rows_[row].stateImage = image;
        changed.Emit(ListChange::Rows, row);
    }
}

int ListModel::AddRow(std::vector<std::string> cells, int stateImage) {
    return InsertRow(Count(), std::move(cells), stateImage);
}

int ListModel::InsertRow(int row, std::vector<std::string> cells, int stateImage) {
    if (row < 0 || row > Count()) {
        row = Count();
    }
    rows_.insert(rows_.begin() + row, ListRow{std::move(cells), stateImage, false});
    changed.Emit(ListChange::Rows, row);
    return row;
}

void ListModel::RemoveRow(int row) {
    if (row >= 0 && row < Count()) {
        rows_.erase(rows_.begin() + row);
        changed.Emit(ListChange::Rows, -1);
    }
}

void ListModel::SetRows(std::vector<ListRow> rows) {
    rows_ = std::move(rows);
    changed.Emit(ListChange::Rows, -1);
}

void ListModel::Clear() {
    rows_.clear();
    changed.Emit(ListChange::Rows, -1);
}

std::vector<int> ListModel::SelectedRows() const {
    std::vector<int> selected;
    for (int i = 0; i < Count(); ++i) {
        if (rows_[i].selected) {
            selected.push_back(i);
        }
    }
    return selected;
}

int ListModel::SelectedCount() const {
    return static_cast<int>(
        std::count_if(rows_.begin(), rows_.end(), [](const ListRow& row) { return row.selected; }));
}

int ListModel::FirstSelected() const {
    for (int i = 0; i < Count(); ++i) {
        if (rows_[i].selected) {
            return i;
        }
    }
    return -1;
}

void ListModel::SelectOnly(int row) {
    for (int i = 0; i < Count(); ++i) {
        rows_[i].selected = (i == row);
    }
    changed.Emit(ListChange::Selection, row);
}

void ListModel::SetSelected(int row, bool selected) {
    if (row >= 0 && row < Count()) {
        rows_[row].selected = selected;
        changed.Emit(ListChange::Selection, row);
    }
}

void ListModel::SetColumns(const std::vector<std::string>& captions, int clientWidth,
                           const std::vector<double>& shares) {
    const int unit = clientWidth / 10;
    columns_.clear();
    for (size_t i = 0; i < captions.size(); ++i) {
        const double share = i < shares.size() ? shares[i] : 1.0;
        columns_.push_back(Column{captions[i], static_cast<int>(share * unit)});
    }
    changed.Emit(ListChange::Columns, -1);
}

}  // namespace dialog
