#include "ui/TermSettingView.h"

#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "draw/settings/DlgDrawSet.h"
#include "ui/DialogLines.h"
#include "ui/ModalScript.h"
#include "ui/Pictures.h"
#include "ui/SymbolChooserView.h"
#include "ui/Text.h"

namespace ui {

namespace {
constexpr QSize kPreviewSize(96, 96);
}

TermSettingView::TermSettingView(CDlgDrawSet& dialog, QWidget* parent)
    : QDialog(parent), dialog_(dialog) {
    setWindowTitle(Q("绘制设置"));
    auto* symbolBox = new QGroupBox(Q("PLC符号样式选择"));
    auto* symbolLayout = new QGridLayout(symbolBox);
    name_ = new QLineEdit;
    name_->setReadOnly(true);
    choose_ = new QPushButton(Q(">>"));
    choose_->setAutoDefault(false);
    preview_ = new QLabel;
    preview_->setFixedSize(kPreviewSize);
    preview_->installEventFilter(this);
    symbolLayout->addWidget(name_, 0, 0);
    symbolLayout->addWidget(choose_, 0, 1);
    symbolLayout->addWidget(preview_, 1, 0, 1, 2);

    auto* directionBox = new QGroupBox(Q("连接方向"));
    direction_ = new QComboBox;
    for (const char* text : CDlgDrawSet::kDirectionTexts) {
        direction_->addItem(Q(text));
    }
    (new QVBoxLayout(directionBox))->addWidget(direction_);
    auto* spacingBox = new QGroupBox(Q("端子间隔长度"));
    spacing_ = new QLineEdit;
    (new QVBoxLayout(spacingBox))->addWidget(spacing_);
    auto* widthBox = new QGroupBox(Q("外框宽度"));
    width_ = new QLineEdit;
    (new QVBoxLayout(widthBox))->addWidget(width_);

    ok_ = new QPushButton(Q("确定"));
    cancel_ = new QPushButton(Q("取消"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);

    auto* right = new QVBoxLayout;
    right->addWidget(directionBox);
    right->addWidget(spacingBox);
    right->addWidget(widthBox);
    auto* top = new QHBoxLayout;
    top->addWidget(symbolBox);
    top->addLayout(right);
    auto* main = new QVBoxLayout(this);
    main->addLayout(top);
    main->addLayout(buttons);

    connect(choose_, &QPushButton::clicked, this, &TermSettingView::Choose);
    connect(direction_, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!syncing_) {
            dialog_.OnSelectDirection(index);
            Sync();
        }
    });
    connect(spacing_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (!syncing_) {
            dialog_.spacingText = U(text);
        }
    });
    connect(width_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (!syncing_) {
            dialog_.widthText = U(text);
        }
    });
    connect(ok_, &QPushButton::clicked, this, [this] {
        const bool closes = dialog_.OnOK();
        Sync();
        if (closes) {
            accept();
        }
    });
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);

    dialog_.OnInitDialog();
    Sync();
}

void TermSettingView::Choose() {
    dialog_.OnChooseSymbol(
        [this](CDlgSelectDz& chooser) { return RunSymbolChooser(chooser, this); });
    Sync();
}

// A double-click in the preview chooses a symbol, as ">>" does.
bool TermSettingView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == preview_ && event->type() == QEvent::MouseButtonDblClick) {
        Choose();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void TermSettingView::Sync() {
    syncing_ = true;
    name_->setText(Q(dialog_.termName));
    direction_->setCurrentIndex(dialog_.directionSelection);
    if (spacing_->text() != Q(dialog_.spacingText)) {
        spacing_->setText(Q(dialog_.spacingText));
    }
    if (width_->text() != Q(dialog_.widthText)) {
        width_->setText(Q(dialog_.widthText));
    }
    if (dialog_.previewPath != shownPreview_) {
        shownPreview_ = dialog_.previewPath;
        preview_->setPixmap(QPixmap::fromImage(DrawingPicture(shownPreview_, kPreviewSize)));
    }
    syncing_ = false;
}

std::string TermSettingView::Play(const std::string& line) {
    const std::vector<std::string> words = SplitWords(line, 2);
    if (line == "choose") {
        choose_->click();
        return TakeModalError();
    }
    if (!words.empty() && words[0] == "width") {
        width_->setText(Q(words.size() > 1 ? words[1] : std::string()));
        return {};
    }
    if (!words.empty() && words[0] == "spacing") {
        spacing_->setText(Q(words.size() > 1 ? words[1] : std::string()));
        return {};
    }
    if (line == "ok") {
        ok_->click();
        return result() == QDialog::Accepted ? std::string() : "the terminal settings refused OK";
    }
    if (line == "cancel") {
        cancel_->click();
        return {};
    }
    return FormatMessage("unknown terminal settings line: %s", line);
}

bool RunTermSetting(CDlgDrawSet& dialog, QWidget* parent) {
    TermSettingView view(dialog, parent);
    return RunModal(view, "terminals",
                    [&view](const std::string& line) { return view.Play(line); });
}

}  // namespace ui
