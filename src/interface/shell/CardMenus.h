// What the menus of cards and of the canvas offer. Pure.
#pragma once

#include "interface/widgets/MenuPanel.h"
#include "library/Library.h"

namespace corvelle {

// Of the selected cards; at least one.
std::vector<MenuRow> cardMenu(const Library& library, const std::vector<QString>& ids);

struct CanvasMenuState
{
    QString undoName, redoName;
    bool canUndo = false, canRedo = false;
    bool canPaste = false;
};
std::vector<MenuRow> canvasMenu(const CanvasMenuState& state);

// Of a page or a Markdown file that is open, and of its text.
std::vector<MenuRow> pageMenu(bool isFile);
std::vector<MenuRow> pageTextMenu(bool canCopy);

// Of a workbook that is open.
std::vector<MenuRow> workbookMenu(bool hasSheet, bool canFind);

} // namespace corvelle
