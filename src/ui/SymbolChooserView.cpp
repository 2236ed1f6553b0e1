#include "ui/SymbolChooserView.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include <map>

#include "draw/settings/DlgSelectDz.h"
#include "ui/DialogLines.h"
#include "ui/ModalScript.h"
#include "ui/Pictures.h"
#include "ui/Text.h"

namespace ui {

namespace {

constexpr int kColumns = 6;

// Symbol pictures by file: a symbol is drawn once however often its page is shown.
QIcon SymbolIcon(const std::string& path) {
    static std::map<std::string, QIcon> cache;
    auto it = cache.find(path);
    if (it == cache.end()) {
        const QImage image =
            DrawingPicture(path, QSize(SymbolChooserView::kCellPx, SymbolChooserView::kCellPx));
        it = cache.emplace(path, image.isNull() ? QIcon() : QIcon(QPixmap::fromImage(image))).first;
    }
    return it->second;
}

}  // namespace

SymbolChooserView::SymbolChooserView(CDlgSelectDz& chooser, QWidget* parent)
    : QDialog(parent), chooser_(chooser) {
    setWindowTitle(Q(CDlgSelectDz::kGroupCaptions[0]));
    auto* symbolsBox = new QGroupBox(Q(CDlgSelectDz::kGroupCaptions[0]));
    auto* grid = new QGridLayout;
    for (int i = 0; i < CDlgSelectDz::kCellsPerPage; ++i) {
        auto* cell = new QPushButton;
        cell->setCheckable(true);
        cell->setAutoDefault(false);
        cell->setFixedSize(kCellPx + 8, kCellPx + 8);
        cell->setIconSize(QSize(kCellPx, kCellPx));
        grid->addWidget(cell, i / kColumns, i % kColumns);
        cells_.push_back(cell);
        connect(cell, &QPushButton::clicked, this, [this, i] {
            if (!syncing_) {
                chooser_.OnClickCell(i);
                Sync();
            }
        });
    }
    scroll_ = new QScrollBar(Qt::Vertical);
    scroll_->setPageStep(1);
    connect(scroll_, &QScrollBar::valueChanged, this, [this](int page) {
        if (!syncing_) {
            chooser_.OnScroll(page);
            Sync();
        }
    });
    auto* symbolsLayout = new QHBoxLayout(symbolsBox);
    symbolsLayout->addLayout(grid);
    symbolsLayout->addWidget(scroll_);

    auto* pagesBox = new QGroupBox(Q(CDlgSelectDz::kGroupCaptions[2]));
    auto* pagesLayout = new QVBoxLayout(pagesBox);
    pageCount_ = new QLabel;
    currentPage_ = new QLabel;
    pagesLayout->addWidget(pageCount_);
    pagesLayout->addWidget(currentPage_);

    auto* choiceBox = new QGroupBox(Q(CDlgSelectDz::kGroupCaptions[1]));
    auto* choiceLayout = new QVBoxLayout(choiceBox);
    ok_ = new QPushButton(Q("确定"));
    cancel_ = new QPushButton(Q("取消"));
    choiceLayout->addWidget(ok_);
    choiceLayout->addWidget(cancel_);
    connect(ok_, &QPushButton::clicked, this, [this] {
        if (chooser_.OnOK()) {
            accept();
        }
    });
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);

    auto* side = new QVBoxLayout;
    side->addWidget(choiceBox);
    side->addWidget(pagesBox);
    side->addStretch();
    auto* main = new QHBoxLayout(this);
    main->addWidget(symbolsBox);
    main->addLayout(side);
    Sync();
}

void SymbolChooserView::Sync() {
    syncing_ = true;
    scroll_->setRange(chooser_.scrollMin, std::max(chooser_.scrollMin, chooser_.scrollMax));
    scroll_->setValue(chooser_.scrollPos);
    pageCount_->setText(Q(chooser_.pageCountLabel));
    currentPage_->setText(Q(chooser_.currentPageLabel));
    const auto visible = chooser_.VisibleCells();
    const int first = (chooser_.scrollPos - 1) * CDlgSelectDz::kCellsPerPage;
    for (int i = 0; i < static_cast<int>(cells_.size()); ++i) {
        QPushButton* cell = cells_[i];
        const bool filled = i < static_cast<int>(visible.size());
        cell->setIcon(filled ? SymbolIcon(visible[i]->path) : QIcon());
        cell->setToolTip(filled ? Q(visible[i]->blockName) : QString());
        cell->setChecked(filled && chooser_.picked == first + i);
    }
    syncing_ = false;
}

std::string SymbolChooserView::Play(const std::string& line) {
    const std::vector<std::string> words = SplitWords(line, 2);
    if (words.size() == 2 && words[0] == "pick") {
        const auto& symbols = chooser_.symbols;
        for (int index = 0; index < static_cast<int>(symbols.size()); ++index) {
            if (symbols[index].blockName == words[1]) {
                scroll_->setValue(index / CDlgSelectDz::kCellsPerPage + 1);
                cells_[index % CDlgSelectDz::kCellsPerPage]->click();
                return {};
            }
        }
        return FormatMessage("no terminal symbol %s in the symbol library", words[1]);
    }
    if (line == "ok") {
        ok_->click();
        return result() == QDialog::Accepted ? std::string() : "the symbol chooser refused OK";
    }
    if (line == "cancel") {
        cancel_->click();
        return {};
    }
    return FormatMessage("unknown symbol chooser line: %s", line);
}

bool RunSymbolChooser(CDlgSelectDz& chooser, QWidget* parent) {
    chooser.OnInitDialog();
    SymbolChooserView view(chooser, parent);
    return RunModal(view, "symbols", [&view](const std::string& line) { return view.Play(line); });
}

}  // namespace ui
