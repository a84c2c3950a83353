// The step list: the grid of the current tab's steps under a strip of tabs.
// Rows are asked for when drawn, so the script store stays the only copy.
#pragma once

#include <windows.h>

#include "script/step.h"

enum {
    STEP_COLUMNS = 6,
    MAX_COMMENT_ROWS = 128,
    CELL_TEXT = 128,  // every cell is cut to 127 characters
};

// A comment row drawn since the last paint: its band is painted over it.
struct CommentRow {
    RECT rect;
    int index;
};
extern CommentRow CommentRows[MAX_COMMENT_ROWS];
extern int CommentRowCount;

// The drawing values, read at creation and on WM_SETTINGCHANGE.
struct StepListLook {
    int indentAllColumns;
    COLORREF commentText, commentFill, skipText, skipFill, breakText, breakFill, scheduleText, scheduleFill;
    int commentItalic;
    int gridStyle;
    COLORREF altColor;
};
extern StepListLook ListLook;
void ReadListLook();

// The indent text: IndentSize blanks (0 to 31), once per level of indents.
extern char IndentText[32];
void BuildIndentText();

// The text of one cell of step `index` of the current tab.
void StepCellText(int index, int column, char* out, int size);
// The image of a row: skip, breakpoint and bookmark images before the icon.
int StepRowImage(const Step& s);
// The colours of a row that is not a comment; false leaves the defaults.
bool StepRowColors(const Step& s, int row, COLORREF* text, COLORREF* fill);

// Creates the dialog with its tab strip and grid as a child of `parent`.
HWND CreateStepListDialog(HWND parent);
extern HWND StepListDialog;
extern HWND TabStrip;
// The grid's row count follows the current tab's step count.
void ReloadStepCount();
// Remakes the tab strip's items from the tabs that hold a script.
void RefreshTabStrip();
// Makes `tab` current: the strip, the title and the grid follow.
void ShowTab(int tab);
