// Tools > "Check Script": the script checker on the current tab, its
// findings written into the Output palette, each line leading back to its
// step with a double-click.
#include <windows.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/files.h"
#include "base/log.h"
#include "base/ui.h"
#include "editor/commands.h"
#include "editor/frame.h"
#include "editor/propertygrid.h"
#include "run/checker.h"
#include "script/step.h"
#include "script/fileencoding.h"

namespace {

WNDPROC OutputEditProc;

void AppendOutput(const std::string& text) {
    if (!OutputEdit) return;
    const LRESULT end = SendMessageA(OutputEdit, WM_GETTEXTLENGTH, 0, 0);
    SendMessageA(OutputEdit, EM_SETSEL, (WPARAM)end, (LPARAM)end);
    SendMessageA(OutputEdit, EM_REPLACESEL, FALSE, (LPARAM)text.c_str());
    SendMessageA(OutputEdit, EM_SCROLLCARET, 0, 0);
}

// The file as it is on disk, for the fields cut on load; only while the tab
// holds what the file holds.
std::string UnchangedFileText(const TabStore& t) {
    if (TabModified((int)(&t - ScriptStore.tab)) || !t.path[0]) return std::string();
    return ScriptFileAsProgramText(ReadWholeFile(t.path));
}

LRESULT CALLBACK FindingClicks(HWND edit, UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = CallWindowProcA(OutputEditProc, edit, message, wParam, lParam);
    if (message == WM_LBUTTONDBLCLK) {
        // The line under the pointer (the default double-click only selects a word).
        const LRESULT line = HIWORD(SendMessageA(edit, EM_CHARFROMPOS, 0, lParam));
        char text[1024];
        *(WORD*)text = (WORD)(sizeof text - 1);
        const LRESULT n = SendMessageA(edit, EM_GETLINE, (WPARAM)line, (LPARAM)text);
        text[n >= 0 && n < (LRESULT)sizeof text ? n : 0] = 0;
        const int step = FindingStep(text);
        if (step >= 1 && step <= CurrentTab().count) {
            SelectStepRow(step - 1);
            RefreshPropertyGrid();
        }
    }
    return result;
}

}  // namespace

int FindingStep(const char* line) {
    // "<file>(<step>): problem: ..." or "...: warning: ..."
    for (const char* kind : {"): problem: ", "): warning: "}) {
        const char* at = line ? strstr(line, kind) : nullptr;
        if (!at) continue;
        const char* open = at;
        while (open > line && open[-1] >= '0' && open[-1] <= '9') open--;
        if (open == at || open == line || open[-1] != '(') return 0;
        return atoi(open);
    }
    return 0;
}

void WatchFindingClicks(HWND outputEdit) {
    if (!outputEdit || OutputEditProc) return;
    OutputEditProc = (WNDPROC)SetWindowLongPtrA(outputEdit, GWLP_WNDPROC, (LONG_PTR)FindingClicks);
}

int CommandCheckScript(HWND) {
    if (ActiveEditor) CommitEditor();
    const TabStore& t = CurrentTab();
    const std::string file = UnchangedFileText(t);
    CheckOptions options;
    options.fileText = file.empty() ? nullptr : file.c_str();
    const std::vector<CheckFinding> findings = CheckScript(ScriptStore.currentTab, options);
    ShowPalette(PALETTE_OUTPUT, true);
    char name[MAX_PATH];
    DisplayName(t.path, name, sizeof name);
    std::string text = "Check Script: " + std::string(name) + "\r\n";
    for (const CheckFinding& f : findings) text += CheckFindingLine(name, f) + "\r\n";
    const std::string summary = CheckSummary(findings);
    AppendOutput(text + summary + "\r\n");
    StatusPrintf(StatusBar, 0, "Check Script: %s", summary.c_str());
    return 0;
}
