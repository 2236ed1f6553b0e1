// Binders that make a Qt item widget show a plain-data control of the dialog kit and report
// the user's clicks back: a TreeModel on a QTreeWidget, a ListModel on a QTreeWidget used as a
// report list. They follow the model's `changed` signal; what a click means is left to the
// view's callbacks, which call the dialog's methods. Every view of the plug-in's dialogs
// (drawing dialog, library editor, importer) builds its trees and lists from these.
#pragma once

#include <QHash>
#include <QIcon>
#include <QObject>

#include <functional>
#include <vector>

#include "dialog/Controls.h"

class QTreeWidget;
class QTreeWidgetItem;

namespace ui {

// Disconnects a slot from a dialog-kit signal when it goes; Release() forgets the signal
// without touching it (its owner is gone).
class Connection {
public:
    Connection() = default;
    template <class SignalT, class Slot>
    Connection(SignalT& signal, Slot slot)
        : id_(signal.Connect(std::move(slot))),
          disconnect_([&signal](int id) { signal.Disconnect(id); }) {}
    Connection(Connection&& other) noexcept { *this = std::move(other); }
    Connection& operator=(Connection&& other) noexcept {
        Disconnect();
        id_ = other.id_;
        disconnect_ = std::move(other.disconnect_);
        other.disconnect_ = nullptr;
        return *this;
    }
    ~Connection() { Disconnect(); }
    void Disconnect() {
        if (disconnect_) {
            disconnect_(id_);
            disconnect_ = nullptr;
        }
    }
    void Release() { disconnect_ = nullptr; }

private:
    int id_ = 0;
    std::function<void(int)> disconnect_;
};

class TreeBinder : public QObject {
    Q_OBJECT
public:
    using IconOf = std::function<QIcon(int image)>;
    // Calls on the user's clicks: a node selected, a node expanded or collapsed.
    std::function<void(dialog::TreeNode*)> onSelect;
    std::function<void(dialog::TreeNode*, bool)> onExpand;

    TreeBinder(dialog::TreeModel& model, QTreeWidget& widget, IconOf iconOf);
    // The model is gone: stop following it.
    void Release() { connection_.Release(); }

    QTreeWidgetItem* ItemOf(const dialog::TreeNode* node) const { return items_.value(node); }
    dialog::TreeNode* NodeOf(const QTreeWidgetItem* item) const;

private:
    void OnChanged(dialog::TreeChange change, const dialog::TreeNode* node);
    void Rebuild();
    void SyncChildren(QTreeWidgetItem* item, const dialog::TreeNode& node);
    QTreeWidgetItem* MakeItem(const dialog::TreeNode& node);
    void AddChildren(QTreeWidgetItem* item, const dialog::TreeNode& node);
    void Forget(QTreeWidgetItem* item);
    void ShowSelection();
    void OnUserSelection();

    dialog::TreeModel& model_;
    QTreeWidget& widget_;
    IconOf iconOf_;
    QHash<const dialog::TreeNode*, QTreeWidgetItem*> items_;
    bool updating_ = false;
    Connection connection_;
};

class ListBinder : public QObject {
    Q_OBJECT
public:
    // Check state of a row from its state image; without it the rows have no check box.
    using CheckOf = std::function<bool(int stateImage)>;
    // Calls on the user's clicks: the selection changed (the rows selected now), a row's
    // check box was clicked, a row was double-clicked.
    std::function<void(const std::vector<int>&)> onSelect;
    std::function<void(int)> onCheckClicked;
    std::function<void(int)> onDoubleClick;

    ListBinder(dialog::ListModel& model, QTreeWidget& widget, CheckOf checkOf = nullptr);
    void Release() { connection_.Release(); }

    // The row a widget item shows, or -1.
    int RowOf(const QTreeWidgetItem* item) const;

private:
    void OnChanged(dialog::ListChange change, int row);
    void Rebuild();
    void FillItem(QTreeWidgetItem* item, int row);
    void ShowSelection();
    void ShowColumns();
    void OnUserSelection();

    dialog::ListModel& model_;
    QTreeWidget& widget_;
    CheckOf checkOf_;
    bool updating_ = false;
    Connection connection_;
};

}  // namespace ui
