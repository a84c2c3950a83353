// Loops, labels, run repeats, exits and IF blocks.
//
// Flow control is part of the run engine, yet some of its rules are about the
// world outside: the File Line loop reads a file's lines, the window IFs
// match windows, the image and pixel IFs search the screen, and the Dataset
// loop walks a query's rows. It reaches those through RunWorld
// (run/worldseams.h) and includes no category.
#include "run/flow.h"
#include "base/text.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/files.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/clipboard.h"
#include "run/expressions.h"
#include "base/log.h"
#include "run/loopstack.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "run/worldseams.h"
#include "script/step.h"
#include "base/words.h"
#include "base/programpath.h"

namespace {

// The search of the Files loop: one for all loops, so two nested Files loops
// disturb each other, as they always did. It is never closed.
HANDLE FindHandle = INVALID_HANDLE_VALUE;

const Step& At(int tab, int step) { return ScriptStore.tab[tab].steps[step]; }

bool Enabled(const Step& s) { return !(s.status & (STEP_SKIP | STEP_BREAKPOINT)); }
bool IsLoopStart(const Step& s) { return ContainsNoCase(s.action, "START") && ContainsNoCase(s.action, "LOOP"); }
bool IsNamed(const Step& s, const char* name) { return lstrcmpiA(s.action, name) == 0; }

void SetLoopVariable(const char* name, const char* text) {
    WriteSetting(nullptr, text, 0, nullptr, ZR_ROOT "UserVariables\\%s", name);
}

void ClearLoopVariable(const char* name) { DeleteSetting(nullptr, ZR_ROOT "UserVariables\\%s", name); }

// Ends the loop on top of the stack: the step after its "NEXT LOOP" runs next.
int EndLoop(int tab, int step) {
    int id = PopLoop(LoopStack[tab]);
    int total = PopLoop(LoopCounters[tab]);
    int target = LoopEnd(tab, step);
    LogPrintf(OutputEdit, "\tEnd of loop from [Step %d] (%d total loop%s done)\r\n\tContinuing with [Step %d]...\r\n",
              id, total, total == 1 ? "" : "s", target + 2);
    return target + 2;
}

int GotoLabel(int tab, int step, const std::string& value) {
    const Step& s = At(tab, step);
    if (!TextOf(s.text)[0]) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "No label name provided");
        return 0;
    }
    const TabStore& t = ScriptStore.tab[tab];
    for (int i = 0; i < t.count; i++) {
        const char* label = TextOf(t.steps[i].text);
        if (label[0] && IsNamed(t.steps[i], "Label") && lstrcmpiA(label, value.c_str()) == 0) {
            LogPrintf(OutputEdit, "\tJumping to label \"%s\" at [Step %d]\r\n", label, i + 1);
            return i + 1;
        }
    }
    snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Label \"%s\" not found", s.text);
    return 0;
}

int SetRunRepeats(int tab, int step, const std::string& value) {
    // In 64 bits: the smallest number less one must not wrap to a huge count.
    if (RunRepeats[tab] == 0) {
        const long long left = value == "-1" ? (long long)REPEAT_FOREVER : (long long)ParseInt(value.c_str()) - 1;
        RunRepeats[tab] = (int32_t)(left < -1 ? -1 : left >= REPEAT_FOREVER && value != "-1" ? REPEAT_FOREVER - 1 : left);
    }
    if (RunRepeats[tab] == REPEAT_FOREVER)
        LogPrintf(OutputEdit, "\tAn eternity of Run Repeats still remaining....\r\n");
    else
        LogPrintf(OutputEdit, "\t%d Run Repeat(s) remaining\r\n", RunRepeats[tab] < 0 ? 0 : RunRepeats[tab]);
    return step + 2;
}

// The tests of the loop kinds: true to run the body once more.
bool ForPasses(const std::string& value, int count) {
    int passes = ParseInt(value.c_str());
    return passes >= 1 && count < passes;
}

bool FileLinePasses(int tab, const std::string& value, int count) {
    ClearLoopVariable("file_line_loop");
    char path[MAX_PATH];
    ResolveProgramPath(value.c_str(), path, ScriptStore.tab[tab].path);
    std::string line;
    if (!RunWorld.fileLine || !RunWorld.fileLine(path, count + 1, &line)) return false;
    SetLoopVariable("file_line_loop", line.c_str());
    return true;
}

bool FilesPasses(const std::string& value, int count) {
    ClearLoopVariable("file_loop");
    WIN32_FIND_DATAA found;
    bool have;
    std::string pattern = value;
    if (pattern.empty() || pattern.back() == '\\' || pattern.find('.') == std::string::npos) pattern += "*.*";
    // The system's search also matches short names ("*.doc" finds
    // "a.docx"): a loop that deletes what it finds must see long names only.
    const size_t cut = pattern.find_last_of("\\/:");
    const std::string wanted = cut == std::string::npos ? pattern : pattern.substr(cut + 1);
    if (count == 0) {
        FindHandle = FindFirstFileA(pattern.c_str(), &found);
        have = FindHandle != INVALID_HANDLE_VALUE;
    } else {
        have = FindHandle != INVALID_HANDLE_VALUE && FindNextFileA(FindHandle, &found);
    }
    while (have && ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) || strcmp(found.cFileName, ".") == 0 ||
                    strcmp(found.cFileName, "..") == 0 ||
                    (HasWildcards(wanted.c_str()) && !NameMatchesPattern(found.cFileName, wanted.c_str()))))
        have = FindNextFileA(FindHandle, &found);
    if (!have) return false;
    SetLoopVariable("file_loop", found.cFileName);
    return true;
}

bool WindowsPasses(int count) {
    ClearLoopVariable("window_loop");
    ClearLoopVariable("hwnd_loop");
    HWND w;
    if (count >= 1 && LastWindow)
        w = IsWindow(LastWindow) ? GetWindow(LastWindow, GW_HWNDNEXT) : nullptr;  // a closed window ends the walk
    else
        w = GetForegroundWindow();
    for (; w; w = GetWindow(w, GW_HWNDNEXT)) {
        LONG style = GetWindowLongA(w, GWL_STYLE);
        if ((style & (WS_DLGFRAME | WS_THICKFRAME)) && IsWindowVisible(w) && !GetParent(w)) break;
    }
    if (!w) return false;
    LastWindow = w;
    WriteSetting(nullptr, nullptr, (int)(INT_PTR)w, nullptr, ZR_ROOT "UserVariables\\hwnd_loop");
    char title[260] = "";
    DWORD_PTR got = 0;
    SendMessageTimeoutA(w, WM_GETTEXT, sizeof title, (LPARAM)title, SMTO_ABORTIFHUNG, 2000, &got);
    SetLoopVariable("window_loop", title);
    return true;
}

bool DatasetPasses(int count) {
    std::string row;
    if (!RunWorld.datasetRow || !RunWorld.datasetRow(count, &row)) return false;
    SetLoopVariable("data_loop", row.c_str());
    return true;
}

int StartLoop(int tab, int step, const std::string& value) {
    if (LoopStack[tab][0] != step + 1) {
        PushLoop(LoopStack[tab], step + 1);
        PushLoop(LoopCounters[tab], 0);
    }
    const char* action = At(tab, step).action;
    int count = LoopCounters[tab][0];
    bool pass = true;
    if (ContainsNoCase(action, "FOR"))
        pass = ForPasses(value, count);
    else if (ContainsNoCase(action, "WHILE"))
        pass = CompareExpression(value.c_str()) != 0;
    else if (ContainsNoCase(action, "FILE LINE"))
        pass = FileLinePasses(tab, value, count);
    else if (ContainsNoCase(action, "FILE"))
        pass = FilesPasses(value, count);
    else if (ContainsNoCase(action, "WINDOW"))
        pass = WindowsPasses(count);
    else if (ContainsNoCase(action, "DATASET"))
        pass = DatasetPasses(count);
    return pass ? step + 2 : EndLoop(tab, step);
}

int NextLoop(int tab, int step) {
    int count = ++LoopCounters[tab][0];
    int start = LoopStart(tab, step);
    LogPrintf(OutputEdit, "\t(%d) loop%s completed for [Step %d]\r\n", count, count == 1 ? "" : "s", LoopStack[tab][0]);
    StatusPrintf(StatusBar, 1, "Loops: %d", count);
    return start + 1;
}



}  // namespace

int FlowStep(int tab, int step) {
    const Step& s = At(tab, step);
    TranslateText(s.text, tab, step);
    std::string value = TranslatedText;
    const char* action = s.action;

    if (ContainsNoCase(action, "to Label")) return GotoLabel(tab, step, value);
    if (ContainsNoCase(action, "Repeats")) return SetRunRepeats(tab, step, value);
    if (ContainsNoCase(action, "Exit Run")) {
        ExitCode = ParseInt(value.c_str());
        return -1;
    }
    if (ContainsNoCase(action, "Exit ZantoRunner")) {
        if (MainWindow) PostMessageA(MainWindow, WM_CLOSE, 0, 0);
        ExitCode = ParseInt(value.c_str());
        return -1;
    }
    if (ContainsNoCase(action, "Break")) return EndLoop(tab, step);
    if (ContainsNoCase(action, "Start")) return StartLoop(tab, step, value);
    if (ContainsNoCase(action, "NEXT LOOP")) return NextLoop(tab, step);
    return step + 2;  // "Label" and anything else just pass
}

int LoopStart(int tab, int step) {
    const TabStore& t = ScriptStore.tab[tab];
    int depth = 1;
    int i = IsNamed(t.steps[step], "NEXT LOOP") ? step - 1 : step;
    for (; i >= 0; i--) {
        const Step& s = t.steps[i];
        if (IsLoopStart(s) && Enabled(s) && --depth == 0) return i;
        if (IsNamed(s, "NEXT LOOP") && Enabled(s)) depth++;
    }
    return 0;
}

int LoopEnd(int tab, int step) {
    const TabStore& t = ScriptStore.tab[tab];
    int depth = 1;
    int i = IsLoopStart(t.steps[step]) && Enabled(t.steps[step]) ? step + 1 : step;
    for (; i < t.count; i++) {
        const Step& s = t.steps[i];
        if (IsNamed(s, "NEXT LOOP") && Enabled(s) && --depth == 0) return i;
        if (IsLoopStart(s) && Enabled(s)) depth++;
    }
    return step + 1;
}

int IfStep(int tab, int step) {
    const Step& s = At(tab, step);
    const char* action = s.action;
    auto text = [&]() {
        TranslateText(s.text, tab, step);
        return std::string(TranslatedText);
    };

    if (ContainsNoCase(action, "IF File Exists")) {
        DWORD a = GetFileAttributesA(text().c_str());
        return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
    }
    if (ContainsNoCase(action, "IF Folder Exists")) {
        DWORD a = GetFileAttributesA(text().c_str());
        return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
    }
    if (ContainsNoCase(action, "IF Window Exists")) return RunWorld.windowExists && RunWorld.windowExists(text().c_str(), true);
    if (ContainsNoCase(action, "IF Control Exists"))
        return RunWorld.windowExists && RunWorld.windowExists(text().c_str(), false);
    if (ContainsNoCase(action, "Pixel")) return RunWorld.pixelVisible && RunWorld.pixelVisible(tab, step, text().c_str());
    if (ContainsNoCase(action, "Image")) return RunWorld.imageVisible && RunWorld.imageVisible(tab, step, text().c_str());
    if (ContainsNoCase(action, "IF Control Is Checked"))
        return RunWorld.controlChecked && RunWorld.controlChecked(text().c_str());
    if (ContainsNoCase(action, "IF Caps Lock is On")) return (GetKeyState(VK_CAPITAL) & 0xFFFF) != 0;
    if (ContainsNoCase(action, "IF Clipboard Equals")) return lstrcmpA(GetClipboardText().c_str(), text().c_str()) == 0;
    if (ContainsNoCase(action, "IF Expression")) {
        char raw[259];
        CopyIntoN(raw, sizeof raw, TextOf(s.text));
        TranslateText(raw, tab, step);
        return CompareExpression(TranslatedText) != 0;
    }
    if (IsNamed(s, "ELSE")) return 0;
    return 1;
}

int IfJump(int tab, int step) {
    const TabStore& t = ScriptStore.tab[tab];
    int depth = 0;
    for (int i = step + 1; i < t.count; i++) {
        const Step& s = t.steps[i];
        bool isElse = IsNamed(s, "ELSE"), isEnd = IsNamed(s, "END IF");
        if ((isElse || isEnd) && Enabled(s)) {
            if (depth == 0) {
                LogPrintf(OutputEdit, "\tJumping to matching ELSE/END IF statement: [Step %d]\r\n", i + 1);
                return isElse ? i + 1 : i;
            }
            if (isEnd) depth--;
        } else if (_strnicmp(s.action, "IF ", 3) == 0 && Enabled(s)) {
            depth++;
        }
    }
    LogPrintf(OutputEdit, "\tWARNING: Matching ELSE/END IF statement not found!  Jumping to Step %d\r\n", t.count);
    return t.count - 1;
}
