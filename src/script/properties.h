// The property table: the rows that the properties palette shows for the
// selected step, each naming the Step field that it edits. One table, rebuilt
// on every selection.
#pragma once

#include <stdint.h>

#include "script/step.h"

enum {
    MAX_PROPERTY_ROWS = 32,
};

// rowType
enum {
    ROW_LINE = 1,       // one line of text
    ROW_LINES = 2,      // several lines of text
    ROW_MASKED = 3,     // a password, stored shifted
    ROW_NUMBER = 4,
    ROW_CHECK = 5,
    ROW_LIST = 6,       // drop-down list
    ROW_RECORDING = 7,  // the recording row with its buttons
    ROW_END = 8,        // one blank row that closes the table
};

// field: which Step field a row edits
enum {
    FIELD_TEXT = 1,
    FIELD_COMMENT = 2,
    FIELD_OPTIONS = 3,
    FIELD_TIMEOUT = 4,
    FIELD_VALUE1 = 5,  // value1..value8 are 5..12
    FIELD_OUTPUT = 13,
    FIELD_OUTPUT_VALUE = 14,
    FIELD_ONFAIL = 15,
    FIELD_ONFAIL_VALUE = 16,
    FIELD_ONFAIL_IMAGE = 17,
    FIELD_ONFAIL_LOG = 19,
};

// flags
enum {
    ROWF_EDIT = 1,             // a text or number row other than the comment
    ROWF_CHOOSE_FILE = 2,
    ROWF_CHOOSE_FOLDER = 4,
    ROWF_MOUSE_POINT = 8,
    ROWF_FIND_WINDOW = 0x20,
    ROWF_PROGRAMS = 0x40,
    ROWF_CAPTURE = 0x80,       // "Capture Window or Screen Image"
    ROWF_INNER_CHECK = 0x200,  // an inner check box labelled by `choices`
    ROWF_PREVIEW = 0x4000,
    ROWF_REQUIRED = 0x8000,    // empty, the action fails at once ("Missing Parameters")
};

// extra of a list row: how the palette fills it
enum {
    LIST_SERVICES = 0x200,
    LIST_DATA_SOURCES = 0x400,
    LIST_VIDEO_MODES = 0x800,
    LIST_OUTPUT = 0x4000,
    LIST_ONFAIL = 0x8000,
};

struct PropertyRow {
    char label[64];
    char help[512];
    int32_t rowType;
    int32_t field;
    int32_t checked;
    int32_t locked;
    int32_t flags;
    char choices[512];
    int32_t extra;
    int32_t state;
};

extern PropertyRow PropertyTable[MAX_PROPERTY_ROWS];
// The failure modes in the order the palette offers them, ";" between.
extern const char FailureModeChoices[];
// Rows in use, the end row included.
extern int PropertyRowCount;

// Stores one row; a row number of 32 or more is ignored.
void AddProperty(int row, const char* label, int field, int rowType, int flags, int extra, const char* choices,
                 const char* help, int locked);
// The row with that label in any case; with an empty label, the row of that
// field; 0 if neither is found.
int FindProperty(const char* label, int field);
// Clears the table and fills it for the selected step of the current tab.
void BuildPropertyTable(int show);

// The text of a step field and its width, for the palette's editor. The
// heap texts (text, comment) report 0 as width; the two numbers (onfail_image,
// onfail_log) give null.
char* StepFieldText(Step& s, int field, int* width);
// Whether a check row's option word is set in the step.
bool PropertyChecked(const Step& s, const PropertyRow& row);
// The label of the row after "Save Output To" or "On Failure", which follows
// that row's choice.
const char* FollowingRowLabel(const Step& s, int field);
