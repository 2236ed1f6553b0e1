// The window of the drawing dialog CDlgPlcRendal. It shows the dialog's state (its controls,
// edits, radios and window flags) and hands every click and keystroke to the dialog's
// methods; it decides nothing itself. It lives as long as the dialog's window: the dialog's
// Destroyed event deletes it.
#pragma once

#include <QDialog>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ui/ModelBinders.h"

class CDlgPlcRendal;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QRadioButton;
class QTreeWidget;

namespace ui {

class PlcRendalView : public QDialog {
    Q_OBJECT
public:
    explicit PlcRendalView(CDlgPlcRendal& dlg, QWidget* parent = nullptr);
    ~PlcRendalView() override;

    // The newest view whose dialog is still there, or null.
    static PlcRendalView* Current();
    // Every live view.
    static std::vector<PlcRendalView*> All();

    CDlgPlcRendal* Dialog() const { return dlg_; }

    // The widgets, for scripts and tests that act as the user would.
    QTreeWidget* Tree() const { return tree_; }
    QTreeWidget* ModuleList() const { return moduleList_; }
    QTreeWidget* TermList() const { return termList_; }
    // Edits by name: tag, frame, slot, shortname, code, desc, location, search.
    QLineEdit* Edit(const std::string& name) const;
    // Buttons by name: search, refresh, settings, draw, divided, close.
    QPushButton* Button(const std::string& name) const;
    QRadioButton* HorizontalRadio() const { return horizontal_; }
    QRadioButton* VerticalRadio() const { return vertical_; }
    QRadioButton* MatchRadio(int mode) const { return mode == 1 ? matchContains_ : matchBegin_; }
    QLabel* Preview(bool horizontal) const { return horizontal ? horPreview_ : verPreview_; }
    // The terminal list's pop-up menu as the right button opens it (the caller owns it).
    QMenu* MakeTermMenu();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void reject() override;

private:
    struct EditBinding;

    void BuildWidgets();
    void ConnectWidgets();
    void Follow();
    void OnWindowEvent(int event);
    void DialogGone();
    void SyncFields();
    void ScheduleSync();
    void SyncPreviews();
    void OnTermCheckClicked(int row);
    void OnTermContextMenu(const QPoint& pos);
    template <class Action>
    void Forward(Action action);

    CDlgPlcRendal* dlg_;
    QTreeWidget* tree_ = nullptr;
    QTreeWidget* moduleList_ = nullptr;
    QTreeWidget* termList_ = nullptr;
    QRadioButton* horizontal_ = nullptr;
    QRadioButton* vertical_ = nullptr;
    QRadioButton* matchBegin_ = nullptr;
    QRadioButton* matchContains_ = nullptr;
    QLabel* horPreview_ = nullptr;
    QLabel* verPreview_ = nullptr;
    std::vector<EditBinding> edits_;
    std::map<std::string, QPushButton*> buttons_;
    TreeBinder* treeBinder_ = nullptr;
    ListBinder* moduleBinder_ = nullptr;
    ListBinder* termBinder_ = nullptr;
    Connection windowConnection_;
    std::vector<Connection> fieldConnections_;
    std::string shownHorPreview_;
    std::string shownVerPreview_;
    std::string shownFocus_;
    bool syncing_ = false;
    bool syncScheduled_ = false;
};

}  // namespace ui
