// The step record and the per-tab script store.
//
// A script is one contiguous array of fixed-size Step records per tab. Almost
// every setting is a fixed-width text field, also where it holds a number,
// because the same text goes through macro translation at run time and is
// written to the file as it stands.
#pragma once

#include <windows.h>
#include <stdint.h>

#include "base/heap.h"

// Category ids: the item data of an action in the actions tree.
enum {
    CAT_RUN_PROGRAM = 2,
    CAT_WINDOWS = 3,
    CAT_KEYBOARD = 4,
    CAT_MENU = 5,
    CAT_MOUSE = 6,
    CAT_WAIT = 7,
    CAT_PROMPT = 8,
    CAT_RECORDINGS = 9,
    CAT_FILES = 10,
    CAT_INTERNET = 11,
    CAT_DATABASE = 12,
    CAT_FLOW = 13,
    CAT_IF = 14,
    CAT_SYSTEM = 15,
    CAT_FUNCTIONS = 16,
    CAT_EXTERNAL = 17,
    CAT_LAST = 17,
};

// status bits
enum {
    STEP_SKIP = 1,
    STEP_BREAKPOINT = 2,
    STEP_BOOKMARK = 0x1000,
};

// last_run codes
enum {
    LASTRUN_NOT_RUN = 0,
    LASTRUN_INCOMPLETE = 1,
    LASTRUN_PASS = 2,
    LASTRUN_SKIPPED = 3,
    LASTRUN_BREAKPOINT = 4,
    LASTRUN_FAIL = 5,
    LASTRUN_FAIL_CONTINUE = 6,
};

enum {
    MAX_TABS = 8,
    MAX_RECORDINGS = 256,
    STEP_VALUES = 8,
    FIELD_SHORT = 64,   // action, output, onfail
    FIELD_LONG = 260,   // options, timeout, values, output_value, onfail_value
    TEXT_BLOCK = 260,   // a fresh text or comment block
};

struct Step {
    char action[FIELD_SHORT];
    int32_t category;
    int32_t icon;
    int32_t status;
    int32_t indents;
    char* text;      // owned heap text, may be null (reads as empty)
    char* comment;   // owned heap text, may be null (reads as empty)
    char options[FIELD_LONG];
    char timeout[FIELD_LONG];
    char value[STEP_VALUES][FIELD_LONG];  // value1..value8
    char output[FIELD_SHORT];
    char output_value[FIELD_LONG];
    char onfail[FIELD_SHORT];
    char onfail_value[FIELD_LONG];
    int32_t onfail_image;
    int32_t onfail_log;
    int32_t last_run;
    int32_t loops;
};

// One input event of a recording: the layout of the platform's EVENTMSG.
struct RecordedEvent {
    uint32_t message;
    uint32_t paramL;
    uint32_t paramH;
    uint32_t time;
    uint32_t hwnd;
};

// One entry of a tab's undo list: a whole copy of a step, stamped with the
// group of the user action that saved it. The copy owns its two texts.
struct UndoEntry {
    int32_t stamp;
    int32_t kind;   // 1 added, 2 modified, 3 deleted, 4 saved ahead of a paste
    int32_t index;
    Step step;
};

// Per-tab items of the store. Closing a tab moves all of them down together.
struct TabStore {
    Step* steps;          // null when the tab is empty
    int32_t count;        // steps in use; may be below the capacity during a load
    UndoEntry* undo;      // owned block, newest last; null when there is nothing to undo
    UndoEntry* redo;      // what Undo took back, newest last; emptied by any new change
    uint64_t savedPrint;  // StepsFingerprint of the steps as last loaded or saved
    int32_t selected;     // step last selected in this tab, -1 for none
    char path[MAX_PATH];  // path of the script, or "(Untitled)"
    char xmlHeader[MAX_PATH];  // extra "<?xml" lines kept from the file
    int32_t encoding;     // what the file is in, and a save writes (script/fileencoding.h)
};

struct ScriptStoreData {
    TabStore tab[MAX_TABS];
    int32_t currentTab;
};

struct RecordingTableData {
    RecordedEvent* slot[MAX_RECORDINGS];  // owned blocks; capacity from the block size
    int32_t used;  // slots handed out; never decreases while the program runs
};

extern ScriptStoreData ScriptStore;
extern RecordingTableData RecordingTable;

// Shorthands for the current tab.
inline TabStore& CurrentTab() { return ScriptStore.tab[ScriptStore.currentTab]; }

// Capacity of a tab's step array in records, from its heap block size.
int StepCapacity(int tab);

// Store operations. All but those taking a tab work on the current tab.
int AddSteps(int position, int count, int allocateTexts);
void DeleteStep(int index);
void FreeSteps(int tab);
void FreeUndo(int tab);
void ResetTab(int tab);
// A fingerprint of everything of a tab's steps that the file holds (0 for no
// steps), so that "changed" can mean "not what the file holds".
uint64_t StepsFingerprint(int tab);
// The tab now holds what its file holds (after a load or a save).
void MarkTabSaved(int tab);
// Whether the tab's steps differ from those it last loaded or saved.
bool TabModified(int tab);
// Cuts the current tab's block down to the records in use, freeing the texts of
// records that were allocated during a load and never filled (empty action).
void TrimUnusedSteps();
// Frees every recording slot; called at program exit.
void FreeRecordings();

// The current tab's selected row, kept in the tab and shown by the step list
// when there is one; -1 for none.
void SelectStepRow(int row);
int SelectedStepRow();
bool StepRowSelected(int row);

