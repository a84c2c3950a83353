#include "script/undo.h"

#include <string.h>

#include "base/ui.h"
#include "script/step.h"

namespace {

size_t Entries(const TabStore& t) { return t.undo ? HeapBlockSize(t.undo) / sizeof(UndoEntry) : 0; }

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

void Shrink(TabStore& t) {
    size_t n = Entries(t);
    if (n <= 1) {
        HeapFreeBlock(t.undo);
        t.undo = nullptr;
        return;
    }
    t.undo = (UndoEntry*)GrowBlock(t.undo, sizeof(UndoEntry) * (n - 1));
}

}  // namespace

int SaveUndo(int32_t stamp, int index, int kind) {
    TabStore& t = CurrentTab();
    if (kind != UNDO_ADDED && (index < 0 || index >= t.count || !t.steps)) return 0;
    const size_t n = Entries(t);
    // The list grows in place, as the step array does: a large action does
    // not copy the whole list once per entry.
    UndoEntry* grown = (UndoEntry*)GrowBlock(t.undo, sizeof(UndoEntry) * (n + 1));
    if (!grown) {
        t.undo = nullptr;  // out of memory drops the whole list (GrowBlock freed it)
        return 0;
    }
    t.undo = grown;
    UndoEntry& e = t.undo[n];
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
    UpdateTabTitle(ScriptStore.currentTab);
    return 1;
}

int Undo() {
    TabStore& t = CurrentTab();
    if (!t.undo) return 0;
    const int32_t group = t.undo[Entries(t) - 1].stamp;
    if (t.undo[Entries(t) - 1].kind == UNDO_PASTED) FreeSteps(ScriptStore.currentTab);
    int touched = 0;
    while (t.undo && t.undo[Entries(t) - 1].stamp == group) {
        UndoEntry& e = t.undo[Entries(t) - 1];
        bool stop = false;
        if (e.kind == UNDO_ADDED) {
            DeleteStep(e.index);
            // The step list shows the same selection as the tab holds.
            SelectStepRow(e.index > 0 ? e.index - 1 : 0);
        } else if (e.kind == UNDO_MODIFIED) {
            if (e.index < t.count) {
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
            } else {
                stop = true;
            }
        }
        HeapFreeBlock(e.step.text);
        HeapFreeBlock(e.step.comment);
        Shrink(t);
        touched++;
        if (stop) break;
    }
    RefreshStepList();
    UpdateTabTitle(ScriptStore.currentTab);
    return touched;
}

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
