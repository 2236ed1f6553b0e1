#include "ui/SettingsViews.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "draw/settings/PLCSettingSheetDlg.h"
#include "ui/DialogLines.h"
#include "ui/ModalScript.h"
#include "ui/Pictures.h"
#include "ui/TermSettingView.h"
#include "ui/Text.h"

namespace ui {

namespace {

constexpr QSize kPreviewSize(220, 150);
constexpr int kLabelCount = 5;  // boxes of 是否标注; the captions follow in the same order

SettingsSheetView*& OpenSheet() {
    static SettingsSheetView* open = nullptr;
    return open;
}

}  // namespace

SettingsSheetView::SettingsSheetView(CPLCSettingSheetDlg& sheet, QWidget* parent)
    : QDialog(parent), sheet_(sheet) {
    setWindowTitle(Q(CPLCSettingSheetDlg::kCaption));
    sheet_.drawPage.OnInitDialog();
    sheet_.labelPage.OnInitDialog();
    sheet_.bomPage.OnInitDialog();

    pages_ = new QTabWidget;
    pages_->addTab(MakeDrawPage(), Q(CPLCSettingSheetDlg::kPageTitles[0]));
    pages_->addTab(MakeLabelPage(), Q(CPLCSettingSheetDlg::kPageTitles[1]));
    pages_->addTab(MakeBomPage(), Q(CPLCSettingSheetDlg::kPageTitles[2]));
    ok_ = new QPushButton(Q("确定"));
    cancel_ = new QPushButton(Q("取消"));
    ok_->setAutoDefault(false);
    cancel_->setAutoDefault(false);
    connect(ok_, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);
    auto* main = new QVBoxLayout(this);
    main->addWidget(pages_);
    main->addLayout(buttons);
    Sync();
}

SettingsSheetView::~SettingsSheetView() {
    if (OpenSheet() == this) {
        OpenSheet() = nullptr;
    }
}

SettingsSheetView* SettingsSheetView::Open() {
    return OpenSheet();
}

QWidget* SettingsSheetView::MakeDrawPage() {
    auto* page = new QWidget;
    auto* group = new QGroupBox(Q("绘制格式"));
    auto* grid = new QGridLayout(group);
    for (int format = 1; format <= 3; ++format) {
        auto* radio = new QRadioButton(Q("格式" + std::to_string(format)));
        auto* button = new QPushButton(Q("端子设置"));
        button->setAutoDefault(false);
        grid->addWidget(radio, format - 1, 0);
        grid->addWidget(button, format - 1, 1);
        formats_[format - 1] = radio;
        termButtons_[format - 1] = button;
        connect(radio, &QRadioButton::clicked, this, [this, format] {
            if (!syncing_) {
                sheet_.drawPage.OnClickFormat(format);
                Sync();
            }
        });
        connect(button, &QPushButton::clicked, this, [this, format] {
            sheet_.drawPage.OnTermSetting(
                format, [this](CDlgDrawSet& dialog) { return RunTermSetting(dialog, this); });
            Sync();
        });
    }
    preview_ = new QLabel;
    preview_->setFixedSize(kPreviewSize);
    auto* layout = new QHBoxLayout(page);
    layout->addWidget(group);
    layout->addWidget(preview_);
    return page;
}

QWidget* SettingsSheetView::MakeLabelPage() {
    auto* page = new QWidget;
    auto* labels = new QGroupBox(Q(CLabelSettingDlg::kGroupLabels));
    auto* prefixes = new QGroupBox(Q(CLabelSettingDlg::kGroupPrefixes));
    auto* labelLayout = new QVBoxLayout(labels);
    auto* prefixLayout = new QVBoxLayout(prefixes);
    for (int box = 0; box < CLabelSettingDlg::kBoxCount; ++box) {
        auto* check = new QCheckBox(Q(CLabelSettingDlg::kBoxTexts[box]));
        (box < kLabelCount ? labelLayout : prefixLayout)->addWidget(check);
        labelBoxes_.push_back(check);
        connect(check, &QCheckBox::clicked, this, [this, box] {
            if (!syncing_) {
                sheet_.labelPage.OnClick(static_cast<CLabelSettingDlg::Box>(box));
                Sync();
            }
        });
    }
    auto* layout = new QHBoxLayout(page);
    layout->addWidget(labels);
    layout->addWidget(prefixes);
    return page;
}

QWidget* SettingsSheetView::MakeBomPage() {
    auto* page = new QWidget;
    autoDetail_ = new QCheckBox(Q("自动设置明细名称"));
    autoDetailModel_ = new QCheckBox(Q("自动设置明细型号"));
    nameList_ = new QListWidget;
    nameList_->addItem(Q(CSymbBomSettingDlg::kNameEntry));
    modelList_ = new QListWidget;
    for (const char* entry : CSymbBomSettingDlg::kModelEntries) {
        modelList_->addItem(Q(entry));
    }
    connect(autoDetail_, &QCheckBox::clicked, this, [this] {
        if (!syncing_) {
            sheet_.bomPage.OnClickAutoDetail();
            Sync();
        }
    });
    connect(autoDetailModel_, &QCheckBox::clicked, this, [this] {
        if (!syncing_) {
            sheet_.bomPage.OnClickAutoDetailModel();
            Sync();
        }
    });
    connect(modelList_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (!syncing_) {
            sheet_.bomPage.OnSelectModel(row);
            Sync();
        }
    });
    auto* grid = new QGridLayout(page);
    grid->addWidget(autoDetail_, 0, 0);
    grid->addWidget(new QLabel(Q("明细名称")), 1, 0);
    grid->addWidget(nameList_, 2, 0);
    grid->addWidget(autoDetailModel_, 0, 1);
    grid->addWidget(new QLabel(Q("明细型号")), 1, 1);
    grid->addWidget(modelList_, 2, 1);
    return page;
}

void SettingsSheetView::Sync() {
    syncing_ = true;
    const CDrawSettingDlg& draw = sheet_.drawPage;
    for (int i = 0; i < 3; ++i) {
        formats_[i]->setChecked(draw.checkedRadio == i + 1);
        termButtons_[i]->setEnabled(draw.termButtonEnabled[i]);
    }
    if (draw.previewPath != shownPreview_) {
        shownPreview_ = draw.previewPath;
        preview_->setPixmap(QPixmap::fromImage(DrawingPicture(shownPreview_, kPreviewSize)));
    }
    for (int box = 0; box < CLabelSettingDlg::kBoxCount; ++box) {
        labelBoxes_[box]->setChecked(sheet_.labelPage.checked[box]);
    }
    const CSymbBomSettingDlg& bom = sheet_.bomPage;
    autoDetail_->setChecked(bom.autoDetailChecked);
    autoDetailModel_->setChecked(bom.autoDetailModelChecked);
    nameList_->setEnabled(bom.nameListEnabled);
    nameList_->setCurrentRow(bom.nameListSelection);
    modelList_->setEnabled(bom.modelListEnabled);
    modelList_->setCurrentRow(bom.modelListSelection);
    syncing_ = false;
}

bool RunSettingsSheet(CPLCSettingSheetDlg& sheet, QWidget* parent) {
    SettingsSheetView view(sheet, parent);
    SettingsSheetView* outer = OpenSheet();
    OpenSheet() = &view;
    const bool accepted =
        RunModal(view, "sheet", [&view](const std::string& line) { return view.Play(line); });
    OpenSheet() = outer;
    return accepted;
}

}  // namespace ui
