#include "script/undo.h"

#include <string.h>

#include "base/ui.h"
#include "script/step.h"

namespace {

size_t Count(const UndoEntry* list) { return list ? HeapBlockSize(list) / sizeof(UndoEntry) : 0; }
size_t Entries(const TabStore& t) { return Count(t.undo); }

// A copy of a step's text in a block of the step's own size, at least 256.
char* CopyText(const char* text) {
    if (!text) return nullptr;
    size_t size = HeapBlockSize(text);
    char* copy = (char*)HeapAllocZero(size < 256 ? 256 : size);
    if (copy) memcpy(copy, text, strlen(text) + 1);
    return copy;
}

void GiveTexts(Step& target, const Step& saved) {
    target.text = saved.text ? CopyText(saved.text) : nullptr;
    target.comment = saved.comment ? CopyText(saved.comment) : nullptr;
}

void Shrink(UndoEntry*& list) {
    size_t n = Count(list);
    if (n <= 1) {
        HeapFreeBlock(list);
        list = nullptr;
        return;
    }
    list = (UndoEntry*)GrowBlock(list, sizeof(UndoEntry) * (n - 1));
}

void FreeList(UndoEntry*& list) {
    for (size_t i = 0; i < Count(list); i++) {
        HeapFreeBlock(list[i].step.text);
        HeapFreeBlock(list[i].step.comment);
    }
    HeapFreeBlock(list);
    list = nullptr;
}

// Appends an entry to `list`, with a copy of the step at `index` for the
// kinds that put a step back. 1 when saved.
int Push(UndoEntry*& list, int32_t stamp, int index, int kind) {
    TabStore& t = CurrentTab();
    if (kind != UNDO_ADDED && (index < 0 || index >= t.count || !t.steps)) return 0;
    const size_t n = Count(list);
    // The list grows in place, as the step array does: a large action does
    // not copy the whole list once per entry.
    UndoEntry* grown = (UndoEntry*)GrowBlock(list, sizeof(UndoEntry) * (n + 1));
    if (!grown) {
        list = nullptr;  // out of memory drops the whole list (GrowBlock freed it)
        return 0;
    }
    list = grown;
    UndoEntry& e = list[n];
    memset(&e, 0, sizeof e);
    e.stamp = stamp;
    e.kind = kind;
    e.index = index;
    if (kind != UNDO_ADDED) {
        const Step& s = t.steps[index];
        e.step = s;
        e.step.text = s.text ? CopyText(s.text) : nullptr;
        e.step.comment = s.comment && *s.comment ? CopyText(s.comment) : nullptr;
    }
    return 1;
}

// Takes the newest group off `from` and carries it out on the current tab;
// what takes each entry back again goes on `other`, so that Undo and Redo
// are the same walk over the two lists.
int ApplyGroup(UndoEntry*& from, UndoEntry*& other) {
    TabStore& t = CurrentTab();
    if (!from) return 0;
    const int32_t group = from[Count(from) - 1].stamp;
    const bool whole = from[Count(from) - 1].kind == UNDO_PASTED;
    if (whole) {
        // The whole list goes: the way back is all of it, saved from the
        // last step to the first as a paste saves it.
        for (int i = t.count - 1; i >= 0; i--) Push(other, group, i, UNDO_PASTED);
        FreeSteps(ScriptStore.currentTab);
    }
    int touched = 0;
    while (from && from[Count(from) - 1].stamp == group) {
        UndoEntry& e = from[Count(from) - 1];
        bool stop = false;
        if (e.kind == UNDO_ADDED) {
            if (!whole) Push(other, group, e.index, UNDO_DELETED);
            DeleteStep(e.index);
            // The step list shows the same selection as the tab holds.
            SelectStepRow(e.index > 0 ? e.index - 1 : 0);
        } else if (e.kind == UNDO_MODIFIED) {
            if (e.index < t.count) {
                if (!whole) Push(other, group, e.index, UNDO_MODIFIED);
                Step& s = t.steps[e.index];
                HeapFreeBlock(s.text);
                HeapFreeBlock(s.comment);
                s = e.step;
                GiveTexts(s, e.step);
            }
        } else {
            int at = AddSteps(e.index, 1, 0);
            if (at == e.index) {
                Step& s = t.steps[at];
                s = e.step;
                GiveTexts(s, e.step);
                t.count++;
                if (!whole) Push(other, group, at, UNDO_ADDED);
            } else {
                stop = true;
            }
        }
        HeapFreeBlock(e.step.text);
        HeapFreeBlock(e.step.comment);
        Shrink(from);
        touched++;
        if (stop) break;
    }
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);
    return touched;
}

}  // namespace

int SaveUndo(int32_t stamp, int index, int kind) {
    TabStore& t = CurrentTab();
    // A new change: what was undone can no longer be redone.
    if (t.redo) FreeList(t.redo);
    const bool first = !t.undo;
    if (!Push(t.undo, stamp, index, kind)) return 0;
    // The caption's "* " may appear with the first entry; later entries of
    // the same action leave the caption to the command that makes them.
    if (first) UpdateTabTitle(ScriptStore.currentTab);
    return 1;
}

int Undo() {
    TabStore& t = CurrentTab();
    return ApplyGroup(t.undo, t.redo);
}

int Redo() {
    TabStore& t = CurrentTab();
    return ApplyGroup(t.redo, t.undo);
}

int RedoCount() { return (int)Count(CurrentTab().redo); }

const char* UndoMenuText() {
    const TabStore& t = CurrentTab();
    if (!t.undo) return "Undo\tCtrl+Z";
    switch (t.undo[Entries(t) - 1].kind) {
    case UNDO_ADDED: return "Undo Add Step\tCtrl+Z";
    case UNDO_MODIFIED: return "Undo Modify Step\tCtrl+Z";
    case UNDO_DELETED: return "Undo Delete Step\tCtrl+Z";
    }
    return "Undo\tCtrl+Z";
}

int UndoCount() { return (int)Entries(CurrentTab()); }

const char* RedoMenuText() {
    const TabStore& t = CurrentTab();
    if (!t.redo) return "Redo\tCtrl+Y";
    // Named after what the step list regains.
    switch (t.redo[Count(t.redo) - 1].kind) {
    case UNDO_ADDED: return "Redo Delete Step\tCtrl+Y";
    case UNDO_MODIFIED: return "Redo Modify Step\tCtrl+Y";
    case UNDO_DELETED: return "Redo Add Step\tCtrl+Y";
    }
    return "Redo\tCtrl+Y";
}
