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

namespace {

void FreeEntries(UndoEntry*& list) {
    if (!list) return;
    size_t n = HeapBlockSize(list) / sizeof(UndoEntry);
    for (size_t i = 0; i < n; i++) {
        HeapFreeBlock(list[i].step.text);
        HeapFreeBlock(list[i].step.comment);
    }
    HeapFreeBlock(list);
    list = nullptr;
}

// FNV-1a over a field and its terminator.
void Mix(uint64_t& h, const void* data, size_t size) {
    const unsigned char* p = (const unsigned char*)data;
    for (size_t i = 0; i < size; i++) h = (h ^ p[i]) * 1099511628211ULL;
}

void MixText(uint64_t& h, const char* text) { Mix(h, text ? text : "", text ? strlen(text) + 1 : 1); }

}  // namespace

void FreeUndo(int tab) {
    if (tab < 0 || tab >= MAX_TABS) return;
    FreeEntries(ScriptStore.tab[tab].undo);
    FreeEntries(ScriptStore.tab[tab].redo);
}

uint64_t StepsFingerprint(int tab) {
    if (tab < 0 || tab >= MAX_TABS) return 0;
    const TabStore& t = ScriptStore.tab[tab];
    if (!t.steps || t.count <= 0) return 0;
    uint64_t h = 14695981039346656037ULL;
    Mix(h, &t.count, sizeof t.count);
    // The fields the writer puts in the file; the run's own (last_run,
    // loops) and the derived ones (category, icon) are left out.
    for (int i = 0; i < t.count; i++) {
        const Step& s = t.steps[i];
        MixText(h, s.action);
        Mix(h, &s.status, sizeof s.status);
        Mix(h, &s.indents, sizeof s.indents);
        MixText(h, s.text);
        MixText(h, s.comment);
        MixText(h, s.options);
        MixText(h, s.timeout);
        for (const auto& value : s.value) MixText(h, value);
        MixText(h, s.output);
        MixText(h, s.output_value);
        MixText(h, s.onfail);
        MixText(h, s.onfail_value);
        Mix(h, &s.onfail_image, sizeof s.onfail_image);
        Mix(h, &s.onfail_log, sizeof s.onfail_log);
    }
    return h;
}

void MarkTabSaved(int tab) {
    if (tab >= 0 && tab < MAX_TABS) ScriptStore.tab[tab].savedPrint = StepsFingerprint(tab);
}

bool TabModified(int tab) {
    return tab >= 0 && tab < MAX_TABS && StepsFingerprint(tab) != ScriptStore.tab[tab].savedPrint;
}

void ResetTab(int tab) {
    if (tab < 0 || tab >= MAX_TABS) return;
    ScriptStore.currentTab = tab;
    CopyInto(ScriptStore.tab[tab].path, "(Untitled)");
    MarkTabSaved(tab);
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
