// The script store: each tab's step array, undo list, path and header, and
// the process-wide recording table.
#include "script/step.h"
#include "base/text.h"
#include "base/ui.h"

#include <string.h>

ScriptStoreData ScriptStore;
RecordingTableData RecordingTable;

int StepCapacity(int tab) {
    if (tab < 0 || tab >= MAX_TABS) return 0;
    return (int)(HeapBlockSize(ScriptStore.tab[tab].steps) / sizeof(Step));
}

// Makes room for `count` records at `position` (appending when the position is
// outside the list) and returns the index of the first one. The step count is
// left to the caller, which sets it once the records are filled.
int AddSteps(int position, int count, int allocateTexts) {
    TabStore& t = CurrentTab();
    if (count < 1) count = 1;
    int oldCapacity = 0;
    if (!t.steps) {
        t.steps = (Step*)HeapAllocZero(sizeof(Step) * (size_t)count);
    } else {
        oldCapacity = StepCapacity(ScriptStore.currentTab);
        t.steps = (Step*)GrowBlock(t.steps, sizeof(Step) * (size_t)(oldCapacity + count));
    }
    if (!t.steps) {
        t.count = 0;
        return 0;
    }
    int capacity = StepCapacity(ScriptStore.currentTab);
    if (position < 0 || position >= capacity || position >= oldCapacity) {
        position = capacity - count;
    } else {
        memmove(&t.steps[position + count], &t.steps[position],
                sizeof(Step) * (size_t)(capacity - count - position));
    }
    memset(&t.steps[position], 0, sizeof(Step) * (size_t)count);
    if (allocateTexts) {
        for (int i = position; i < position + count; i++) {
            t.steps[i].text = (char*)HeapAllocZero(TEXT_BLOCK);
            t.steps[i].comment = (char*)HeapAllocZero(TEXT_BLOCK);
        }
    }
    return position;
}

void DeleteStep(int index) {
    TabStore& t = CurrentTab();
    int capacity = StepCapacity(ScriptStore.currentTab);
    if (!t.steps || index < 0 || index >= capacity) return;
    HeapFreeBlock(t.steps[index].text);
    HeapFreeBlock(t.steps[index].comment);
    memmove(&t.steps[index], &t.steps[index + 1], sizeof(Step) * (size_t)(capacity - index - 1));
    memset(&t.steps[capacity - 1], 0, sizeof(Step));
    t.count--;
    if (capacity - 1 <= 0) {
        HeapFreeBlock(t.steps);
        t.steps = nullptr;
        t.count = 0;
        return;
    }
    t.steps = (Step*)GrowBlock(t.steps, sizeof(Step) * (size_t)(capacity - 1));
    if (!t.steps) t.count = 0;
}

// Frees a whole list. The count cleared is the current tab's: callers pass the
// current tab, or make it current first.
void FreeSteps(int tab) {
    if (tab < 0 || tab >= MAX_TABS) return;
    TabStore& t = ScriptStore.tab[tab];
    int capacity = StepCapacity(tab);
    for (int i = 0; i < capacity; i++) {
        HeapFreeBlock(t.steps[i].text);
        HeapFreeBlock(t.steps[i].comment);
    }
    HeapFreeBlock(t.steps);
    t.steps = nullptr;
    CurrentTab().count = 0;
}

void FreeUndo(int tab) {
    if (tab < 0 || tab >= MAX_TABS) return;
    TabStore& t = ScriptStore.tab[tab];
    if (!t.undo) return;
    size_t n = HeapBlockSize(t.undo) / sizeof(UndoEntry);
    for (size_t i = 0; i < n; i++) {
        HeapFreeBlock(t.undo[i].step.text);
        HeapFreeBlock(t.undo[i].step.comment);
    }
    HeapFreeBlock(t.undo);
    t.undo = nullptr;
}

void ResetTab(int tab) {
    if (tab < 0 || tab >= MAX_TABS) return;
    ScriptStore.currentTab = tab;
    CopyInto(ScriptStore.tab[tab].path, "(Untitled)");
    UpdateTabTitle(tab);
}

void TrimUnusedSteps() {
    TabStore& t = CurrentTab();
    if (!t.steps) return;
    int capacity = StepCapacity(ScriptStore.currentTab);
    int used = capacity;
    for (int i = 0; i < capacity; i++) {
        if (t.steps[i].action[0] == 0) {
            HeapFreeBlock(t.steps[i].text);
            HeapFreeBlock(t.steps[i].comment);
            t.steps[i].text = t.steps[i].comment = nullptr;
        }
    }
    while (used > 0 && t.steps[used - 1].action[0] == 0) used--;
    if (used == capacity) return;
    if (used == 0) {
        HeapFreeBlock(t.steps);
        t.steps = nullptr;
        return;
    }
    t.steps = (Step*)GrowBlock(t.steps, sizeof(Step) * (size_t)used);
}

void FreeRecordings() {
    for (int i = 0; i < MAX_RECORDINGS; i++) {
        HeapFreeBlock(RecordingTable.slot[i]);
        RecordingTable.slot[i] = nullptr;
    }
    RecordingTable.used = 0;
}

void SelectStepRow(int row) {
    CurrentTab().selected = row;
    if (ShowSelectedRow) ShowSelectedRow(row);
}

int SelectedStepRow() { return ListSelectedRow ? ListSelectedRow() : CurrentTab().selected; }

bool StepRowSelected(int row) { return ListRowSelected ? ListRowSelected(row) : row == CurrentTab().selected; }
