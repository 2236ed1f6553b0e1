#include "ui/ModelBinders.h"

#include <QHeaderView>
#include <QTreeWidget>

#include "ui/Text.h"

namespace ui {

namespace {

constexpr int kNodeRole = Qt::UserRole + 1;

// Sets a flag for the lifetime of a scope: the widget changes made inside it are the model's,
// not the user's.
class Updating {
public:
    explicit Updating(bool& flag) : flag_(flag), old_(flag) { flag_ = true; }
    ~Updating() { flag_ = old_; }
    Updating(const Updating&) = delete;
    Updating& operator=(const Updating&) = delete;

private:
    bool& flag_;
    bool old_;
};

}  // namespace

// --- tree ------------------------------------------------------------------------------------

TreeBinder::TreeBinder(dialog::TreeModel& model, QTreeWidget& widget, IconOf iconOf)
    : QObject(&widget), model_(model), widget_(widget), iconOf_(std::move(iconOf)) {
    widget_.setHeaderHidden(true);
    widget_.setSelectionMode(QAbstractItemView::SingleSelection);
    connection_ =
        Connection(model_.changed, [this](dialog::TreeChange change, const dialog::TreeNode* node) {
            OnChanged(change, node);
        });
    connect(&widget_, &QTreeWidget::itemSelectionChanged, this, &TreeBinder::OnUserSelection);
    connect(&widget_, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
        if (!updating_ && onExpand) {
            onExpand(NodeOf(item), true);
        }
    });
    connect(&widget_, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) {
        if (!updating_ && onExpand) {
            onExpand(NodeOf(item), false);
        }
    });
    Rebuild();
}

dialog::TreeNode* TreeBinder::NodeOf(const QTreeWidgetItem* item) const {
    if (item == nullptr) {
        return nullptr;
    }
    auto* node = reinterpret_cast<dialog::TreeNode*>(item->data(0, kNodeRole).value<quintptr>());
    // An item whose node left the model is no longer shown by the binder.
    return items_.value(node) == item ? node : nullptr;
}

void TreeBinder::OnChanged(dialog::TreeChange change, const dialog::TreeNode* node) {
    Updating updating(updating_);
    if (change == dialog::TreeChange::Selection) {
        ShowSelection();
        return;
    }
    QTreeWidgetItem* item = node != nullptr ? items_.value(node) : nullptr;
    if (change == dialog::TreeChange::Expansion) {
        if (item != nullptr) {
            item->setExpanded(node->expanded);
        }
        return;
    }
    if (item == nullptr) {
        Rebuild();
        return;
    }
    item->setText(0, Q(node->text));
    item->setIcon(0, iconOf_(node->image));
    SyncChildren(item, *node);
}

void TreeBinder::Rebuild() {
    Updating updating(updating_);
    widget_.clear();
    items_.clear();
    if (const dialog::TreeNode* root = model_.Root()) {
        widget_.addTopLevelItem(MakeItem(*root));
        AddChildren(items_.value(root), *root);
        items_.value(root)->setExpanded(root->expanded);
    }
    ShowSelection();
}

// Nodes are only ever appended, except by a removal: new children are appended to the item,
// and anything else rebuilds the item's children.
void TreeBinder::SyncChildren(QTreeWidgetItem* item, const dialog::TreeNode& node) {
    const int shown = item->childCount();
    const int count = static_cast<int>(node.children.size());
    const bool prefix = shown <= count && (shown == 0 || NodeOf(item->child(shown - 1)) ==
                                                             node.children[shown - 1].get());
    if (!prefix) {
        while (item->childCount() > 0) {
            QTreeWidgetItem* child = item->takeChild(0);
            Forget(child);
            delete child;
        }
    }
    for (int i = item->childCount(); i < count; ++i) {
        const dialog::TreeNode& child = *node.children[i];
        QTreeWidgetItem* childItem = MakeItem(child);
        item->addChild(childItem);
        AddChildren(childItem, child);
        childItem->setExpanded(child.expanded);
    }
    item->setExpanded(node.expanded);
    ShowSelection();
}

QTreeWidgetItem* TreeBinder::MakeItem(const dialog::TreeNode& node) {
    auto* item = new QTreeWidgetItem({Q(node.text)});
    item->setIcon(0, iconOf_(node.image));
    item->setData(0, kNodeRole, QVariant::fromValue(reinterpret_cast<quintptr>(&node)));
    items_.insert(&node, item);
    return item;
}

void TreeBinder::AddChildren(QTreeWidgetItem* item, const dialog::TreeNode& node) {
    for (const auto& child : node.children) {
        QTreeWidgetItem* childItem = MakeItem(*child);
        item->addChild(childItem);
        AddChildren(childItem, *child);
        childItem->setExpanded(child->expanded);
    }
}

void TreeBinder::Forget(QTreeWidgetItem* item) {
    for (int i = 0; i < item->childCount(); ++i) {
        Forget(item->child(i));
    }
    auto* node =
        reinterpret_cast<const dialog::TreeNode*>(item->data(0, kNodeRole).value<quintptr>());
    if (items_.value(node) == item) {
        items_.remove(node);
    }
}

void TreeBinder::ShowSelection() {
    Updating updating(updating_);
    QTreeWidgetItem* item = items_.value(model_.Selected());
    if (item == nullptr) {
        widget_.clearSelection();
        return;
    }
    widget_.setCurrentItem(item);
    item->setSelected(true);
    widget_.scrollToItem(item);
}

void TreeBinder::OnUserSelection() {
    if (updating_ || !onSelect) {
        return;
    }
    const auto selected = widget_.selectedItems();
    if (selected.isEmpty()) {
        return;
    }
    if (dialog::TreeNode* node = NodeOf(selected.front());
        node != nullptr && node != model_.Selected()) {
        onSelect(node);
    }
}

// --- list ------------------------------------------------------------------------------------

ListBinder::ListBinder(dialog::ListModel& model, QTreeWidget& widget, CheckOf checkOf)
    : QObject(&widget), model_(model), widget_(widget), checkOf_(std::move(checkOf)) {
    widget_.setRootIsDecorated(false);
    widget_.setItemsExpandable(false);
    widget_.setAllColumnsShowFocus(true);
    widget_.setSelectionBehavior(QAbstractItemView::SelectRows);
    connection_ = Connection(
        model_.changed, [this](dialog::ListChange change, int row) { OnChanged(change, row); });
    connect(&widget_, &QTreeWidget::itemSelectionChanged, this, &ListBinder::OnUserSelection);
    connect(&widget_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        const int row = RowOf(item);
        if (updating_ || column != 0 || row < 0 || !checkOf_) {
            return;
        }
        if (onCheckClicked) {
            onCheckClicked(row);
        }
        // The box shows the model's mark, whether the click changed it or not.
        if (row < model_.Count() && row < widget_.topLevelItemCount()) {
            Updating updating(updating_);
            FillItem(widget_.topLevelItem(row), row);
        }
    });
    connect(&widget_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item, int) {
        const int row = RowOf(item);
        if (row >= 0 && onDoubleClick) {
            onDoubleClick(row);
        }
    });
    ShowColumns();
    Rebuild();
}

int ListBinder::RowOf(const QTreeWidgetItem* item) const {
    return item == nullptr ? -1 : widget_.indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(item));
}

void ListBinder::OnChanged(dialog::ListChange change, int row) {
    Updating updating(updating_);
    switch (change) {
        case dialog::ListChange::Columns:
            ShowColumns();
            return;
        case dialog::ListChange::Selection:
            ShowSelection();
            return;
        case dialog::ListChange::Rows:
            break;
    }
    const int shown = widget_.topLevelItemCount();
    if (row >= 0 && shown == model_.Count()) {
        FillItem(widget_.topLevelItem(row), row);
    } else if (row >= 0 && shown + 1 == model_.Count()) {
        auto* item = new QTreeWidgetItem();
        widget_.insertTopLevelItem(row, item);
        FillItem(item, row);
    } else {
        Rebuild();
    }
}

void ListBinder::Rebuild() {
    Updating updating(updating_);
    widget_.clear();
    QList<QTreeWidgetItem*> items;
    for (int row = 0; row < model_.Count(); ++row) {
        items.append(new QTreeWidgetItem());
    }
    widget_.addTopLevelItems(items);
    for (int row = 0; row < model_.Count(); ++row) {
        FillItem(items[row], row);
    }
}

void ListBinder::FillItem(QTreeWidgetItem* item, int row) {
    const dialog::ListRow& data = model_.Row(row);
    for (int column = 0; column < widget_.columnCount(); ++column) {
        item->setText(column, Q(model_.Text(row, column)));
    }
    if (checkOf_) {
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(0, checkOf_(data.stateImage) ? Qt::Checked : Qt::Unchecked);
    }
    item->setSelected(data.selected);
}

void ListBinder::ShowSelection() {
    Updating updating(updating_);
    const int count = std::min(widget_.topLevelItemCount(), model_.Count());
    for (int row = 0; row < count; ++row) {
        widget_.topLevelItem(row)->setSelected(model_.Row(row).selected);
    }
}

void ListBinder::ShowColumns() {
    Updating updating(updating_);
    const auto& columns = model_.Columns();
    QStringList captions;
    for (const auto& column : columns) {
        captions.append(Q(column.caption));
    }
    widget_.setColumnCount(static_cast<int>(columns.size()));
    widget_.setHeaderLabels(captions);
    for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
        widget_.setColumnWidth(i, columns[i].width);
    }
    if (model_.Count() > 0) {
        Rebuild();
    }
}

void ListBinder::OnUserSelection() {
    if (updating_ || !onSelect) {
        return;
    }
    std::vector<int> rows;
    for (int row = 0; row < widget_.topLevelItemCount(); ++row) {
        if (widget_.topLevelItem(row)->isSelected()) {
            rows.push_back(row);
        }
    }
    onSelect(rows);
}

}  // namespace ui
