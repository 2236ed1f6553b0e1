// The controls of the plug-in's dialogs as plain data: a tree and a report-style list. They
// hold what a toolkit control would show (texts, images, selection, expansion) and nothing
// else, so the dialog logic runs and is tested without any window system; a view only
// mirrors them and forwards the user's clicks to the dialog. Every change made through a
// control's methods raises its `changed` signal; the fields are read-only to everyone else.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "dialog/Signal.h"

namespace dialog {

struct TreeNode {
    std::string text;
    int image = 0;
    bool expanded = false;
    bool selected = false;
    TreeNode* parent = nullptr;
    std::vector<std::unique_ptr<TreeNode>> children;

    TreeNode* FirstChild() const { return children.empty() ? nullptr : children.front().get(); }
    // The node after this one under the same parent; null for the last one and the root.
    TreeNode* NextSibling() const;
    // Depth below the root: 0 root, 1 manufacturer, 2 series, 3 type, 4 module.
    int Level() const;
    // The first child whose text equals `text` without regard to case.
    TreeNode* FindChildNoCase(std::string_view text) const;
};

// What a tree change touched: the nodes themselves (added, removed, renamed), the selection,
// or a node's expansion.
enum class TreeChange { Nodes, Selection, Expansion };

class TreeModel {
public:
    // Raised after every change, with the node it concerns (null for the whole tree).
    Signal<TreeChange, const TreeNode*> changed;

    // Removes every node; the selection goes with them.
    void Clear();
    TreeNode* InsertRoot(std::string text, int image);
    TreeNode* Insert(TreeNode* parent, std::string text, int image);
    // Removes `node` and everything below it; a selection inside it is cleared first.
    void Remove(TreeNode* node);
    void SetText(TreeNode* node, std::string text);
    void Expand(TreeNode* node, bool expanded = true);
    TreeNode* Root() const { return root_.get(); }
    TreeNode* Selected() const { return selected_; }
    // Selects `node` (null clears the selection); the nodes' `selected` flags follow.
    void Select(TreeNode* node);
    // Number of nodes in the whole tree, root included.
    int Count() const;

private:
    std::unique_ptr<TreeNode> root_;
    TreeNode* selected_ = nullptr;
};

struct ListRow {
    std::vector<std::string> cells;
    int stateImage = 0;
    bool selected = false;
};

// What a list change touched: the rows (added, removed, reordered, a cell set), the
// selection, or the columns.
enum class ListChange { Rows, Selection, Columns };

class ListModel {
public:
    struct Column {
        std::string caption;
        int width = 0;
    };

    // Raised after every change, with the row it concerns (-1 for the whole list).
    Signal<ListChange, int> changed;

    const std::vector<Column>& Columns() const { return columns_; }
    const std::vector<ListRow>& Rows() const { return rows_; }
    const ListRow& Row(int row) const { return rows_.at(row); }
    int Count() const { return static_cast<int>(rows_.size()); }
    // Empty text for a cell that was never set or lies outside the list.
    const std::string& Text(int row, int column) const;
    void SetText(int row, int column, std::string text);
    int StateImage(int row) const;
    void SetStateImage(int row, int image);
    // Appends a row and returns its index.
    int AddRow(std::vector<std::string> cells, int stateImage = 0);
    // Inserts a row before `row` (at the end when `row` is out of range); returns its index.
    int InsertRow(int row, std::vector<std::string> cells, int stateImage = 0);
    void RemoveRow(int row);
    // Replaces every row at once (one notification).
    void SetRows(std::vector<ListRow> rows);
    void Clear();

    std::vector<int> SelectedRows() const;
    int SelectedCount() const;
    // The first selected row, or -1.
    int FirstSelected() const;
    void SelectOnly(int row);
    void SetSelected(int row, bool selected);
    void ClearSelection() { SelectOnly(-1); }

    // Column captions and widths from the client width w and each column's share of
    // u = w / 10 (whole pixels), truncated.
    void SetColumns(const std::vector<std::string>& captions, int clientWidth,
                    const std::vector<double>& shares);

private:
    std::vector<Column> columns_;
    std::vector<ListRow> rows_;
};

}  // namespace dialog
