// The terminal list of the drawing dialog: the marks that choose which terminals are drawn,
// the direction patterns of the pop-up menu, the flip and the orientation radios.
#include "draw/DlgPlcRendal.h"

namespace {

bool Contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

// The first and second direction of a pattern for an orientation.
std::string_view FirstDirection(int orientation) {
    return orientation == 0 ? kDirUp : kDirLeft;
}
std::string_view SecondDirection(int orientation) {
    return orientation == 0 ? kDirDown : kDirRight;
}

// Whether row i of n takes the first direction under pattern `choice` (menu id - 101).
bool TakesFirst(int choice, int i, int n) {
    const int half = (n + 1) / 2;
    switch (choice) {
        case 0:
            return true;
        case 1:
            return false;
        case 2:
            return i % 2 == 0;
        case 3:
            return i % 2 != 0;
        case 4:
            return i < half;
        case 5:
            return i >= half;
        default:
            return true;
    }
}

std::string_view Flipped(const std::string& text) {
    if (Contains(text, "上")) {
        return kDirDown;
    }
    if (Contains(text, "下")) {
        return kDirUp;
    }
    if (Contains(text, "左")) {
        return kDirRight;
    }
    if (Contains(text, "右")) {
        return kDirLeft;
    }
    return {};
}

}  // namespace

void CDlgPlcRendal::OnTermListClick(int x) {
    if (termList.SelectedCount() != 1 || x > stateIconWidth) {
        return;
    }
    const int row = termList.FirstSelected();
    const int image = termList.StateImage(row);
    if (image == 0 || image == 3) {
        termList.SetStateImage(row, kMarkOn);
    } else if (image == 1 || image == 4) {
        termList.SetStateImage(row, kMarkOff);
    }
}

void CDlgPlcRendal::OnTermListDoubleClick() {
    FlipSelectedRows();
}

void CDlgPlcRendal::FlipSelectedRows() {
    for (int row : termList.SelectedRows()) {
        const std::string_view flipped = Flipped(termList.Text(row, kColDirection));
        if (!flipped.empty()) {
            termList.SetText(row, kColDirection, std::string(flipped));
        }
    }
}

std::vector<TermMenuEntry> CDlgPlcRendal::TermMenuEntries() const {
    if (orientation == 0) {
        return {{kMenuAllFirst, "全部向上"},
                {kMenuAllSecond, "全部向下"},
                {kMenuEvenFirst, "奇数向上,偶数向下"},
                {kMenuEvenSecond, "奇数向下,偶数向上"},
                {kMenuHalfFirst, "前半部分向上,后面向下"},
                {kMenuHalfSecond, "前半部分向下,后面向上"},
                {kMenuFlip, "改变端点连接方向"}};
    }
    return {{kMenuAllFirst, "全部向左"},
            {kMenuAllSecond, "全部向右"},
            {kMenuEvenFirst, "奇数向左,偶数向右"},
            {kMenuEvenSecond, "奇数向右,偶数向左"},
            {kMenuHalfFirst, "前半部分向左,后面向右"},
            {kMenuHalfSecond, "前半部分向右,后面向左"},
            {kMenuFlip, "改变端点连接方向"}};
}

void CDlgPlcRendal::OnTermMenuCommand(int id) {
    if (id == kMenuFlip) {
        FlipSelectedRows();
    } else if (id >= kMenuAllFirst && id <= kMenuHalfSecond) {
        termDirChoice = id - kMenuAllFirst;
        ApplyDirectionPattern(termDirChoice);
    }
}

void CDlgPlcRendal::ApplyDirectionPattern(int choice) {
    const int n = termList.Count();
    for (int i = 0; i < n; ++i) {
        const std::string_view text =
            TakesFirst(choice, i, n) ? FirstDirection(orientation) : SecondDirection(orientation);
        termList.SetText(i, kColDirection, std::string(text));
    }
}

void CDlgPlcRendal::OnHorizontal() {
    orientation = 0;
    horizontalChecked = true;
    ApplyDirectionPattern(termDirChoice);
}

void CDlgPlcRendal::OnVertical() {
    orientation = 1;
    horizontalChecked = false;
    ApplyDirectionPattern(termDirChoice);
}
