// The window of the settings sheet CPLCSettingSheetDlg ("设置") and its three pages: 绘制设置
// (formats and their 端子设置), 标注设置 (label boxes) and 明细设置 (detail). OK and Cancel, no
// Apply button.
#pragma once

#include <QDialog>

#include <array>
#include <string>
#include <vector>

class CPLCSettingSheetDlg;
class QCheckBox;
class QLabel;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace ui {

class SettingsSheetView : public QDialog {
    Q_OBJECT
public:
    // Shows the pages as the sheet opens them.
    SettingsSheetView(CPLCSettingSheetDlg& sheet, QWidget* parent = nullptr);
    ~SettingsSheetView() override;

    // The sheet that is open and waiting for the user, or null.
    static SettingsSheetView* Open();

    QTabWidget* Pages() const { return pages_; }
    QRadioButton* FormatRadio(int format) const { return formats_.at(format - 1); }
    QPushButton* TermButton(int format) const { return termButtons_.at(format - 1); }
    QLabel* FormatPreview() const { return preview_; }
    // The ten boxes of 标注设置 in CLabelSettingDlg::Box order.
    QCheckBox* LabelBox(int box) const { return labelBoxes_.at(box); }
    QCheckBox* AutoDetailBox() const { return autoDetail_; }
    QCheckBox* AutoDetailModelBox() const { return autoDetailModel_; }
    QListWidget* NameList() const { return nameList_; }
    QListWidget* ModelList() const { return modelList_; }
    QPushButton* OkButton() const { return ok_; }
    QPushButton* CancelButton() const { return cancel_; }

    // One sheet line (see SheetLineHelp) on this window's widgets.
    std::string Play(const std::string& line);

private:
    QWidget* MakeDrawPage();
    QWidget* MakeLabelPage();
    QWidget* MakeBomPage();
    void Sync();

    CPLCSettingSheetDlg& sheet_;
    QTabWidget* pages_ = nullptr;
    std::array<QRadioButton*, 3> formats_{};
    std::array<QPushButton*, 3> termButtons_{};
    QLabel* preview_ = nullptr;
    std::vector<QCheckBox*> labelBoxes_;
    QCheckBox* autoDetail_ = nullptr;
    QCheckBox* autoDetailModel_ = nullptr;
    QListWidget* nameList_ = nullptr;
    QListWidget* modelList_ = nullptr;
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
    std::string shownPreview_;
    bool syncing_ = false;
};

// The runner of the drawing dialog's 设置 button.
bool RunSettingsSheet(CPLCSettingSheetDlg& sheet, QWidget* parent);

// "dialog sheet LINE": acts on the open sheet, or is kept for the next sheet that opens.
// Empty when done (or kept), else the error.
std::string RunSheetLine(const std::string& line);
// The sheet lines, one per line, for the help.
std::string SheetLineHelp();

}  // namespace ui
