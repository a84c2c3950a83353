#include "script/editing.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <vector>

#include "base/settings.h"
#include "base/ui.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "script/undo.h"
#include "base/words.h"

int PasteStepsText(const char* text, int index, int32_t stamp) {
    if (!text || !strstr(text, "<step>")) return 0;
    std::string copy = text;
    TabStore& t = CurrentTab();
    const int at = index < 0 || index > t.count ? t.count : index;
    int n = ReadSteps(&copy[0], index < 0 ? -1 : at);
    t.count += n;
    for (int i = 0; i < n; i++) SaveUndo(stamp, at + i, UNDO_ADDED);
    RefreshStepList();
    return n;
}

std::string CopyStepsText(int first, int last) {
    // The writer's "selected steps" mode follows the step list; without one,
    // the whole tab is written and the range cut from it.
    TabStore& t = CurrentTab();
    std::string all = WriteSteps(2, 0, 0);
    std::string out;
    size_t pos = 0;
    for (int i = 0; i < t.count; i++) {
        size_t start = all.find("<step>", pos);
        size_t end = all.find("</step>", start);
        if (start == std::string::npos || end == std::string::npos) break;
        end += strlen("</step>\r\n");
        if (i >= first && i <= last) out += all.substr(start, end - start);
        pos = end;
    }
    return out;
}

void ToggleStepStatus(int index, int32_t bit, int32_t stamp) {
    TabStore& t = CurrentTab();
    if (index < 0 || index >= t.count) return;
    SaveUndo(stamp, index, UNDO_MODIFIED);
    Step& s = t.steps[index];
    s.status ^= bit;
    // Skip and breakpoint exclude each other.
    if (s.status & bit) s.status &= ~(bit == STEP_SKIP ? STEP_BREAKPOINT : STEP_SKIP);
}

void ToggleBookmark(int index) {
    TabStore& t = CurrentTab();
    if (index >= 0 && index < t.count) t.steps[index].status ^= STEP_BOOKMARK;
}

int NextBookmark(int from) {
    const TabStore& t = CurrentTab();
    for (int k = 1; k <= t.count; k++) {
        int i = (from + k) % (t.count ? t.count : 1);
        if (i >= 0 && i < t.count && (t.steps[i].status & STEP_BOOKMARK)) return i;
    }
    MessageBeep(MB_OK);
    return -1;
}

BlockWalk WalkBlocks(const TabStore& t) {
    BlockWalk w;
    w.indent.assign((size_t)(t.count > 0 ? t.count : 0), -1);
    std::vector<int> ifs, loops;  // the open blocks, innermost last
    for (int i = 0; i < t.count; i++) {
        const Step& s = t.steps[i];
        if (s.status & STEP_SKIP) continue;  // keeps the depth and is not changed
        const bool endIf = lstrcmpiA(s.action, "END IF") == 0, next = lstrcmpiA(s.action, "NEXT LOOP") == 0;
        if (endIf) {
            if (ifs.empty()) w.lonelyEndIf.push_back(i);
            else ifs.pop_back();
        }
        if (next) {
            if (loops.empty()) w.lonelyNext.push_back(i);
            else loops.pop_back();
        }
        int indent = (int)(ifs.size() + loops.size());
        if (lstrcmpiA(s.action, "ELSE") == 0) {
            if (ifs.empty()) w.lonelyElse.push_back(i);
            if (indent > 0) indent--;  // one level out
        }
        w.indent[(size_t)i] = indent;
        if (_strnicmp(s.action, "IF ", 3) == 0) ifs.push_back(i);
        if (_strnicmp(s.action, "Start ", 6) == 0 && ContainsNoCase(s.action, " Loop")) {
            loops.push_back(i);
            if ((int)loops.size() > w.deepestLoops) {
                w.deepestLoops = (int)loops.size();
                w.deepestAt = i;
            }
        }
    }
    w.openIfs = ifs;
    w.openLoops = loops;
    return w;
}

std::string AutoIndent(int32_t stamp) {
    TabStore& t = CurrentTab();
    const BlockWalk w = WalkBlocks(t);
    for (int i = 0; i < t.count; i++) {
        const int indent = w.indent[(size_t)i];
        if (indent < 0 || t.steps[i].indents == indent) continue;
        SaveUndo(stamp, i, UNDO_MODIFIED);
        t.steps[i].indents = indent;
    }
    const int ifDepth = (int)w.openIfs.size(), ifMissing = (int)w.lonelyEndIf.size();
    const int loopDepth = (int)w.openLoops.size(), loopMissing = (int)w.lonelyNext.size();
    std::string warnings;
    auto Report = [&](int n, const char* what) {
        if (!n) return;
        char line[160];
        snprintf(line, sizeof line, "There %s %d %s", n == 1 ? "is" : "are", n, what);
        warnings += std::string(line) + "\n";
    };
    Report(ifDepth, "'IF' without a matching 'END IF'");
    Report(ifMissing, "'END IF' without a matching 'IF'");
    Report(loopDepth, "'START LOOP' without a matching 'NEXT LOOP'");
    Report(loopMissing, "'NEXT LOOP' without a matching 'START LOOP'");
    RefreshStepList();
    return warnings;
}

int UndoLimit() {
    const int limit = SettingInt("MaxUndo");
    return limit > 0 ? limit : 500;
}

bool ConfirmUndoSpace(int count) {
    if (count < UndoLimit()) return true;
    return RunMessageBox("Insufficient space in the Undo buffer to save this action.  This action cannot be undone.\n\n"
                         "To increase the buffer size, change the \"Maximum Undo Steps\" setting in Tools - "
                         "Options.\n\nDo you want to continue?",
                         "ZantoRunner", MB_YESNO | MB_ICONQUESTION) == IDYES;
}
