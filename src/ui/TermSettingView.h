// The window of CDlgDrawSet, one format's terminal settings: the symbol's name with ">>" and
// its picture, the measured direction, the terminal spacing and the frame width.
#pragma once

#include <QDialog>

#include <string>

class CDlgDrawSet;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace ui {

class TermSettingView : public QDialog {
    Q_OBJECT
public:
    // Shows the dialog as its window opens: the symbol is measured.
    TermSettingView(CDlgDrawSet& dialog, QWidget* parent = nullptr);

    QLineEdit* NameEdit() const { return name_; }
    QPushButton* ChooseButton() const { return choose_; }
    QComboBox* DirectionList() const { return direction_; }
    QLineEdit* SpacingEdit() const { return spacing_; }
    QLineEdit* WidthEdit() const { return width_; }
    QLabel* Preview() const { return preview_; }
    QPushButton* OkButton() const { return ok_; }

    // A kept script line: "choose" (presses ">>"), "width TEXT", "spacing TEXT", "ok" or
    // "cancel".
    std::string Play(const std::string& line);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Choose();
    void Sync();

    CDlgDrawSet& dialog_;
    QLineEdit* name_ = nullptr;
    QPushButton* choose_ = nullptr;
    QComboBox* direction_ = nullptr;
    QLineEdit* spacing_ = nullptr;
    QLineEdit* width_ = nullptr;
    QLabel* preview_ = nullptr;
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
    std::string shownPreview_;
    bool syncing_ = false;
};

// The runner of 端子设置 on the format page.
bool RunTermSetting(CDlgDrawSet& dialog, QWidget* parent);

}  // namespace ui
