// The window of the terminal-symbol chooser CDlgSelectDz: 24 cells with pictures of the
// symbols of the current page, a scroll bar over the pages, the page labels, OK and Cancel.
#pragma once

#include <QDialog>

#include <vector>

class CDlgSelectDz;
class QLabel;
class QPushButton;
class QScrollBar;

namespace ui {

class SymbolChooserView : public QDialog {
    Q_OBJECT
public:
    static constexpr int kCellPx = 64;

    // The chooser must have been shown (its list taken) already.
    SymbolChooserView(CDlgSelectDz& chooser, QWidget* parent = nullptr);

    QPushButton* Cell(int index) const { return cells_.at(index); }
    QScrollBar* Pages() const { return scroll_; }
    QLabel* PageCountLabel() const { return pageCount_; }
    QLabel* CurrentPageLabel() const { return currentPage_; }
    QPushButton* OkButton() const { return ok_; }

    // A kept script line: "pick NAME" (scrolls to the symbol's page and clicks its cell),
    // "ok" or "cancel".
    std::string Play(const std::string& line);

private:
    void Sync();

    CDlgSelectDz& chooser_;
    std::vector<QPushButton*> cells_;
    QScrollBar* scroll_ = nullptr;
    QLabel* pageCount_ = nullptr;
    QLabel* currentPage_ = nullptr;
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
    bool syncing_ = false;
};

// The runner CDlgDrawSet's ">>" uses: shows the chooser over the common symbol library.
bool RunSymbolChooser(CDlgSelectDz& chooser, QWidget* parent);

}  // namespace ui
