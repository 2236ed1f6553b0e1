#include "ui/PlcRendalView.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "dialog/LibraryTree.h"
#include "draw/DlgPlcRendal.h"
#include "ui/Pictures.h"
#include "ui/SettingsViews.h"
#include "ui/Text.h"

namespace ui {

struct PlcRendalView::EditBinding {
    std::string name;
    QLineEdit* edit;
    std::string CDlgPlcRendal::*field;
};

namespace {

constexpr const char* kCaption = "PLC元器件参数化绘制";
constexpr QSize kPreviewSize(120, 72);

std::vector<PlcRendalView*>& Registry() {
    static std::vector<PlcRendalView*> views;
    return views;
}

// The tree's node images: one colour per level, so that the levels tell apart at a glance.
QIcon NodeIcon(int image) {
    static const QColor colours[] = {Qt::gray,
                                     QColor(0x2e, 0x7d, 0x32),
                                     QColor(0x15, 0x65, 0xc0),
                                     QColor(0xef, 0x6c, 0x00),
                                     QColor(0x6a, 0x1b, 0x9a),
                                     Qt::gray,
                                     QColor(0x37, 0x47, 0x4f)};
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(colours[std::clamp(image, 0, 6)]);
    painter.setPen(Qt::NoPen);
    if (image == dialog::kImageModule) {
        painter.drawEllipse(3, 3, 10, 10);
    } else {
        painter.drawRoundedRect(2, 2, 12, 12, 3, 3);
    }
    return QIcon(pixmap);
}

}  // namespace

PlcRendalView::PlcRendalView(CDlgPlcRendal& dlg, QWidget* parent) : QDialog(parent), dlg_(&dlg) {
    setWindowTitle(Q(kCaption));
    setAttribute(Qt::WA_DeleteOnClose, false);
    setModal(false);
    BuildWidgets();
    Follow();
    ConnectWidgets();
    SyncFields();
    Registry().push_back(this);
    if (dlg.visible) {
        show();
    }
}

PlcRendalView::~PlcRendalView() {
    std::erase(Registry(), this);
    // The widgets go after this body; nothing they raise on their way may reach the dialog.
    for (QTreeWidget* widget : {tree_, moduleList_, termList_}) {
        widget->blockSignals(true);
    }
    delete treeBinder_;
    delete moduleBinder_;
    delete termBinder_;
    if (dlg_ != nullptr) {
        dlg_->settingsSheetRunner = nullptr;
    }
}

PlcRendalView* PlcRendalView::Current() {
    for (auto it = Registry().rbegin(); it != Registry().rend(); ++it) {
        if ((*it)->dlg_ != nullptr) {
            return *it;
        }
    }
    return nullptr;
}

std::vector<PlcRendalView*> PlcRendalView::All() {
    return Registry();
}

QLineEdit* PlcRendalView::Edit(const std::string& name) const {
    for (const auto& binding : edits_) {
        if (binding.name == name) {
            return binding.edit;
        }
    }
    return nullptr;
}

QPushButton* PlcRendalView::Button(const std::string& name) const {
    const auto it = buttons_.find(name);
    return it == buttons_.end() ? nullptr : it->second;
}

void PlcRendalView::BuildWidgets() {
    auto* searchBox = new QGroupBox(Q("搜索"));
    auto* searchLayout = new QGridLayout(searchBox);
    auto* searchEdit = new QLineEdit;
    matchBegin_ = new QRadioButton(Q("前端位置匹配"));
    matchContains_ = new QRadioButton(Q("全字位置匹配"));
    buttons_["search"] = new QPushButton(Q("搜索"));
    searchLayout->addWidget(new QLabel(Q("模块代码")), 0, 0);
    searchLayout->addWidget(searchEdit, 0, 1);
    searchLayout->addWidget(buttons_["search"], 0, 2);
    searchLayout->addWidget(matchBegin_, 1, 0, 1, 2);
    searchLayout->addWidget(matchContains_, 1, 2);

    tree_ = new QTreeWidget;
    moduleList_ = new QTreeWidget;
    termList_ = new QTreeWidget;
    termList_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    termList_->setContextMenuPolicy(Qt::CustomContextMenu);

    auto* left = new QVBoxLayout;
    left->addWidget(searchBox);
    left->addWidget(tree_, 1);

    auto* orientationBox = new QGroupBox(Q("模块方向"));
    auto* orientationLayout = new QGridLayout(orientationBox);
    horizontal_ = new QRadioButton(Q("水平"));
    vertical_ = new QRadioButton(Q("垂直"));
    horPreview_ = new QLabel;
    verPreview_ = new QLabel;
    horPreview_->setFixedSize(kPreviewSize);
    verPreview_->setFixedSize(kPreviewSize);
    orientationLayout->addWidget(horizontal_, 0, 0);
    orientationLayout->addWidget(horPreview_, 1, 0);
    orientationLayout->addWidget(vertical_, 0, 1);
    orientationLayout->addWidget(verPreview_, 1, 1);

    auto* fields = new QGridLayout;
    const std::vector<std::tuple<const char*, const char*, std::string CDlgPlcRendal::*>> edits = {
        {"shortname", "厂家简称", &CDlgPlcRendal::editShortName},
        {"code", "模块代号", &CDlgPlcRendal::editModuleCode},
        {"desc", "模块描述", &CDlgPlcRendal::editModuleDesc},
        {"frame", "框架号", &CDlgPlcRendal::editFrameNo},
        {"slot", "槽号", &CDlgPlcRendal::editSlotNo},
        {"location", "安装位置", &CDlgPlcRendal::editLocation},
        {"tag", "标号", &CDlgPlcRendal::editTag},
    };
    int index = 0;
    for (const auto& [name, caption, field] : edits) {
        auto* edit = new QLineEdit;
        fields->addWidget(new QLabel(Q(caption)), index / 2, (index % 2) * 2);
        fields->addWidget(edit, index / 2, (index % 2) * 2 + 1);
        edits_.push_back({name, edit, field});
        ++index;
    }
    edits_.push_back({"search", searchEdit, &CDlgPlcRendal::editSearch});

    auto* buttonRow = new QHBoxLayout;
    const std::vector<std::pair<const char*, const char*>> buttons = {{"refresh", "刷新"},
                                                                      {"settings", "设置"},
                                                                      {"draw", "完整绘制"},
                                                                      {"divided", "分段绘制"},
                                                                      {"close", "关闭&C"}};
    buttonRow->addStretch();
    for (const auto& [name, caption] : buttons) {
        auto* button = new QPushButton(Q(caption));
        button->setAutoDefault(false);
        buttons_[name] = button;
        buttonRow->addWidget(button);
    }
    buttons_["search"]->setAutoDefault(false);

    auto* right = new QVBoxLayout;
    right->addWidget(new QLabel(Q("元器件模块列表")));
    right->addWidget(moduleList_, 1);
    right->addWidget(new QLabel(Q("元器件模块端点列表")));
    right->addWidget(termList_, 2);
    auto* lower = new QHBoxLayout;
    lower->addWidget(orientationBox);
    lower->addLayout(fields, 1);
    right->addLayout(lower);
    right->addLayout(buttonRow);

    auto* main = new QHBoxLayout(this);
    main->addLayout(left, 2);
    main->addLayout(right, 5);
    resize(980, 620);
}

// Every change of the dialog's controls and window shows in the widgets.
void PlcRendalView::Follow() {
    CDlgPlcRendal& dlg = *dlg_;
    treeBinder_ = new TreeBinder(dlg.tree, *tree_, NodeIcon);
    moduleBinder_ = new ListBinder(dlg.moduleList, *moduleList_);
    termBinder_ =
        new ListBinder(dlg.termList, *termList_, [](int image) { return IsMarked(image); });
    // A change of the controls may come with changes of the plain fields (a selection fills
    // the edits), some of them after the control's last notification: the fields follow at
    // once and again when the dialog's method has returned to the event loop.
    const auto follow = [this] {
        SyncFields();
        ScheduleSync();
    };
    fieldConnections_.emplace_back(
        dlg.tree.changed, [follow](dialog::TreeChange, const dialog::TreeNode*) { follow(); });
    fieldConnections_.emplace_back(dlg.moduleList.changed,
                                   [follow](dialog::ListChange, int) { follow(); });
    fieldConnections_.emplace_back(dlg.termList.changed,
                                   [follow](dialog::ListChange, int) { follow(); });
    dlg.settingsSheetRunner = [this](CPLCSettingSheetDlg& sheet) {
        return RunSettingsSheet(sheet, this);
    };
    windowConnection_ = Connection(dlg.windowChanged, [this](dialog::WindowEvent event) {
        OnWindowEvent(static_cast<int>(event));
    });
}

template <class Action>
void PlcRendalView::Forward(Action action) {
    if (dlg_ == nullptr || syncing_) {
        return;
    }
    CDlgPlcRendal* dlg = dlg_;
    action(*dlg);
    // The action may have closed and deleted the dialog.
    if (dlg_ != nullptr) {
        SyncFields();
    }
}

void PlcRendalView::ConnectWidgets() {
    treeBinder_->onSelect = [this](dialog::TreeNode* node) {
        Forward([node](CDlgPlcRendal& dlg) { dlg.SelectTreeNode(node); });
    };
    treeBinder_->onExpand = [this](dialog::TreeNode* node, bool expanded) {
        Forward([node, expanded](CDlgPlcRendal& dlg) {
            if (node != nullptr) {
                dlg.tree.Expand(node, expanded);
            }
        });
    };
    moduleBinder_->onSelect = [this](const std::vector<int>& rows) {
        if (!rows.empty()) {
            Forward([row = rows.front()](CDlgPlcRendal& dlg) { dlg.SelectModuleRow(row); });
        }
    };
    termBinder_->onSelect = [this](const std::vector<int>& rows) {
        Forward([&rows](CDlgPlcRendal& dlg) {
            for (int row = 0; row < dlg.termList.Count(); ++row) {
                const bool selected = std::find(rows.begin(), rows.end(), row) != rows.end();
                if (dlg.termList.Row(row).selected != selected) {
                    dlg.termList.SetSelected(row, selected);
                }
            }
        });
    };
    termBinder_->onCheckClicked = [this](int row) { OnTermCheckClicked(row); };
    termBinder_->onDoubleClick = [this](int) {
        Forward([](CDlgPlcRendal& dlg) { dlg.OnTermListDoubleClick(); });
    };
    connect(termList_, &QWidget::customContextMenuRequested, this,
            &PlcRendalView::OnTermContextMenu);

    for (const auto& binding : edits_) {
        connect(binding.edit, &QLineEdit::textChanged, this,
                [this, field = binding.field](const QString& text) {
                    Forward([field, value = U(text)](CDlgPlcRendal& dlg) { dlg.*field = value; });
                });
    }
    connect(horizontal_, &QRadioButton::clicked, this,
            [this] { Forward([](CDlgPlcRendal& d) { d.OnHorizontal(); }); });
    connect(vertical_, &QRadioButton::clicked, this,
            [this] { Forward([](CDlgPlcRendal& d) { d.OnVertical(); }); });
    connect(matchBegin_, &QRadioButton::clicked, this,
            [this] { Forward([](CDlgPlcRendal& d) { d.OnMatchMode(0); }); });
    connect(matchContains_, &QRadioButton::clicked, this,
            [this] { Forward([](CDlgPlcRendal& d) { d.OnMatchMode(1); }); });

    const std::vector<std::pair<std::string, void (CDlgPlcRendal::*)()>> actions = {
        {"search", &CDlgPlcRendal::OnSearch},       {"refresh", &CDlgPlcRendal::OnRefresh},
        {"settings", &CDlgPlcRendal::OnSettings},   {"draw", &CDlgPlcRendal::OnDrawFull},
        {"divided", &CDlgPlcRendal::OnDrawDivided}, {"close", &CDlgPlcRendal::OnClose}};
    for (const auto& [name, method] : actions) {
        connect(buttons_[name], &QPushButton::clicked, this, [this, method = method] {
            Forward([method](CDlgPlcRendal& dlg) { (dlg.*method)(); });
        });
    }
}

// A click on a row's check box is a click in the row's state icon: the row is the one
// selected, and the dialog decides what the mark becomes.
void PlcRendalView::OnTermCheckClicked(int row) {
    Forward([row](CDlgPlcRendal& dlg) {
        dlg.termList.SelectOnly(row);
        dlg.OnTermListClick(0);
    });
}

QMenu* PlcRendalView::MakeTermMenu() {
    auto* menu = new QMenu(this);
    if (dlg_ == nullptr) {
        return menu;
    }
    for (const TermMenuEntry& entry : dlg_->TermMenuEntries()) {
        QAction* action = menu->addAction(Q(entry.text));
        action->setData(entry.id);
        connect(action, &QAction::triggered, this, [this, id = entry.id] {
            Forward([id](CDlgPlcRendal& dlg) { dlg.OnTermMenuCommand(id); });
        });
    }
    return menu;
}

void PlcRendalView::OnTermContextMenu(const QPoint& pos) {
    QMenu* menu = MakeTermMenu();
    menu->exec(termList_->viewport()->mapToGlobal(pos));
    menu->deleteLater();
}

void PlcRendalView::OnWindowEvent(int event) {
    switch (static_cast<dialog::WindowEvent>(event)) {
        case dialog::WindowEvent::Created:
            break;
        case dialog::WindowEvent::Shown:
            show();
            break;
        case dialog::WindowEvent::Minimized:
            showMinimized();
            break;
        case dialog::WindowEvent::Restored:
            showNormal();
            break;
        case dialog::WindowEvent::Activated:
            raise();
            activateWindow();
            break;
        case dialog::WindowEvent::Destroyed:
            DialogGone();
            return;
    }
    SyncFields();
}

// The dialog's window is gone (and its object about to go): the view lets go of it without
// touching it again and deletes itself once the current event is done.
void PlcRendalView::DialogGone() {
    treeBinder_->Release();
    moduleBinder_->Release();
    termBinder_->Release();
    windowConnection_.Release();
    for (auto& connection : fieldConnections_) {
        connection.Release();
    }
    dlg_ = nullptr;
    hide();
    deleteLater();
}

void PlcRendalView::ScheduleSync() {
    if (syncScheduled_) {
        return;
    }
    syncScheduled_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            syncScheduled_ = false;
            SyncFields();
        },
        Qt::QueuedConnection);
}

// The plain fields into the widgets, without raising the widgets' own signals.
void PlcRendalView::SyncFields() {
    if (dlg_ == nullptr || syncing_) {
        return;
    }
    syncing_ = true;
    const CDlgPlcRendal& dlg = *dlg_;
    for (const auto& binding : edits_) {
        const QString text = Q(dlg.*binding.field);
        if (binding.edit->text() != text) {
            binding.edit->setText(text);
        }
    }
    horizontal_->setChecked(dlg.horizontalChecked);
    vertical_->setChecked(!dlg.horizontalChecked);
    matchBegin_->setChecked(dlg.matchMode == 0);
    matchContains_->setChecked(dlg.matchMode == 1);
    if (dlg.focus != shownFocus_) {
        shownFocus_ = dlg.focus;
        if (dlg.focus == "tree") {
            tree_->setFocus();
        } else if (QLineEdit* edit = dlg.focus == "editTag" ? Edit("tag") : nullptr) {
            edit->setFocus();
            if (dlg.tagTextSelected) {
                edit->selectAll();
            }
        }
    }
    SyncPreviews();
    syncing_ = false;
}

void PlcRendalView::SyncPreviews() {
    if (dlg_->horPreviewPath != shownHorPreview_) {
        shownHorPreview_ = dlg_->horPreviewPath;
        horPreview_->setPixmap(QPixmap::fromImage(DrawingPicture(shownHorPreview_, kPreviewSize)));
    }
    if (dlg_->verPreviewPath != shownVerPreview_) {
        shownVerPreview_ = dlg_->verPreviewPath;
        verPreview_->setPixmap(QPixmap::fromImage(DrawingPicture(shownVerPreview_, kPreviewSize)));
    }
}

void PlcRendalView::closeEvent(QCloseEvent* event) {
    // Closing is the dialog's to decide (it refuses while a drawing runs); when it closes,
    // its Destroyed event takes this view down.
    event->ignore();
    Forward([](CDlgPlcRendal& dlg) { dlg.OnClose(); });
}

void PlcRendalView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Forward([](CDlgPlcRendal& dlg) { dlg.OnEnter(); });
        return;
    }
    QDialog::keyPressEvent(event);
}

// Escape does not close the modeless dialog; only 关闭 and the close box do.
void PlcRendalView::reject() {}

void PlcRendalView::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || dlg_ == nullptr) {
        return;
    }
    // The user minimised or restored the window from its frame.
    if (isMinimized() && !dlg_->minimized) {
        Forward([](CDlgPlcRendal& dlg) { dlg.Minimize(); });
    } else if (!isMinimized() && dlg_->minimized && isVisible()) {
        Forward([](CDlgPlcRendal& dlg) { dlg.Restore(); });
    }
}

}  // namespace ui
