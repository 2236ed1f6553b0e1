// The terminal settings of one drawing format: its terminal symbol (chosen from the symbol
// library), the frame width and the terminal spacing. The direction and the lead length are
// never typed: they are measured from the symbol's drawing, and the direction list only shows
// the measured direction.
#pragma once

#include <array>
#include <string>

#include "draw/settings/DlgSelectDz.h"
#include "dialog/ModalRunner.h"

class CDlgDrawSet {
public:
    // The direction list, in its sorted order: the index is the direction code.
    static constexpr std::array<const char*, 4> kDirectionTexts = {"向上", "向下", "向右", "向左"};

    // Seeded by the format page; read back by it on OK.
    std::string termName;  // read-only edit
    std::string termPath;
    int termDirection = 0;
    float termLength = 0.0f;
    std::string widthText;
    std::string spacingText = "10.0";

    int directionSelection = -1;  // the list's selection; -1 none
    std::string previewPath;      // the symbol preview shows this drawing

    // Showing: measures the symbol, selects the measured direction, repaints the preview.
    void OnInitDialog();
    // The user picks a direction in the list. Only the list changes: the measured direction
    // stays in force.
    void OnSelectDirection(int index);
    // ">>" or a double-click in the preview: the chooser; on its OK the chosen symbol replaces
    // the current one and is measured. True when a symbol was chosen.
    bool OnChooseSymbol(const dialog::ModalRunner<CDlgSelectDz>& runChooser);
    // Takes a chosen symbol as the chooser's OK hands it over.
    void TakeSymbol(const std::string& path, const std::string& name);
    // The checks (with their messages), then the short form of the settings file. True when
    // the dialog closes.
    bool OnOK();

private:
    void MeasureSymbol();
};
