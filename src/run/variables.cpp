#include "run/variables.h"
#include "base/text.h"
#include "base/utf8.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include "base/files.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/clipboard.h"
#include "base/log.h"
#include "run/runrecord.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "run/translate.h"
#include "base/handles.h"
#include "script/step.h"
#include "base/words.h"

namespace {

enum { LOCAL_PREFIX_SIZE = 40 };  // "<window>_<tab>\\" of LocalVariables

int StoreInRegistry(const char* prefix, const char* name, const char* text) {
    return WriteSetting(nullptr, text, 0, nullptr, ZR_ROOT "UserVariables\\%s%s", prefix, name);
}

}  // namespace

int (*StoreVariableValue)(const char* prefix, const char* name, const char* text) = StoreInRegistry;

namespace {

// With LocalVariables on, each window and tab has its own set.
void LocalPrefix(int tab, char* prefix) {
    prefix[0] = 0;
    if (SettingInt("LocalVariables")) FormatIntoN(prefix, LOCAL_PREFIX_SIZE, "%li_%d\\", (long)(INT_PTR)MainWindow, tab + 1);
}

const char* WithoutPercent(const char* name) { return name[0] == '%' ? name + 1 : name; }

void Preview(const char* data, long length, char* preview, int size) {
    int n = length < size - 1 ? (int)length : size - 1;
    if (n < 0) n = 0;
    if (data) memcpy(preview, data, (size_t)n);
    preview[n] = 0;
}

void SaveToVariable(int tab, const Step& s, const char* data, long length, const char* nameOverride) {
    if (length > 0 && (size_t)length > TEXT_CEILING) {
        TextCeilingHit = true;  // the run core fails the step; the variable stays
        return;
    }
    char preview[130];
    Preview(data, length, preview, sizeof preview);
    if (length <= 5)
        LogPrintf(OutputEdit, "\t%s = \"%s\"\r\n", s.output_value, preview);
    else
        LogPrintf(OutputEdit, "\t%s = \"%s\" (%li bytes)\r\n", s.output_value, preview, length);
    char name[63];
    CopyIntoN(name, sizeof name, WithoutPercent(nameOverride && *nameOverride ? nameOverride : s.output_value));
    char prefix[LOCAL_PREFIX_SIZE];
    LocalPrefix(tab, prefix);
    RecordVariableWritten(prefix, name);
    int ok;
    if (data && *data && length >= 1) {
        ok = StoreVariableValue(prefix, name, data);
        if (SettingInt("LogLevel"))
            LogPrintf(OutputEdit, "\tsaving to: SOFTWARE\\ZantoRunner\\UserVariables\\%s%s\r\n", prefix, name);
    } else {
        ok = DeleteSetting(nullptr, ZR_ROOT "UserVariables\\%s%s", prefix, name);
    }
    if (UserVariableChanged && !prefix[0]) {
        char shown[194];
        Preview(data, length, shown, sizeof shown);
        UserVariableChanged(name, shown, !(data && *data && length >= 1));
    }
    if (ok || !data) return;
    // The registry refused the value: keep it in a file and refer to it.
    char path[MAX_PATH + 2];
    VariableFilePath(name, path);
    DeleteVariableFile(name);
    {
        AutoCloseHandle file(CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file.ok() && length > 0 && !WriteAll(file.h, data, (size_t)length))
            LogPrintf(OutputEdit, "\tERROR saving %li byte(s) to file \"%s\"\r\n", length, path);
    }
    AppendInto(path, "*");
    StoreInRegistry(prefix, name, path);
}

void SaveToClipboard(const char* data, long length) {
    if (length < 1) {
        EmptyClipboard();  // without opening it: the clipboard stays as it was
        return;
    }
    char preview[130];
    Preview(data, length, preview, sizeof preview);
    LogPrintf(OutputEdit, "\tSaving %li byte(s) to clipboard: \"%s\"\r\n", length, preview);
    SetClipboardText(data, (size_t)length);
}

void SaveToFile(int tab, int step, const Step& s, const char* data, long length) {
    char path[MAX_PATH];
    TranslateText(s.output_value, tab, step);
    if (!PathFits(TranslatedText)) {
        // Never a cut path: it would name another file.
        LogPrintf(OutputEdit, "\tERROR saving %li byte(s): the path is longer than %d characters: \"%s\"\r\n",
                  length, MAX_PATH - 1, TextCut(TranslatedText, 1000).c_str());
        return;
    }
    CopyIntoN(path, sizeof path, TranslatedText);
    if (length <= 0) {
        DeleteFileA(path);  // an empty result removes the file
        return;
    }
    // The old file stays until the new one is whole.
    if (!WriteFileReplacing(path, data, (size_t)length, true))
        LogPrintf(OutputEdit, "\tERROR saving %li byte(s) to file \"%s\"\r\n", length, path);
}

// Create/Set (or Update), Increment and Decrement save through the step's
// own output.
int ChangeBy(int tab, int step, int delta) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char value[259];
    int number = ReadVariable(s.output_value, tab, step, value, sizeof value) + delta;
    char text[16];
    FormatInto(text, "%d", number);
    SaveOutput(tab, step, text, (long)strlen(text), nullptr);
    return 1;
}

int SetEnvironment(int tab, int step, const char* text) {
    Step& s = ScriptStore.tab[tab].steps[step];
    // The name loses every "%", in the step itself.
    char* out = s.value[0];
    for (const char* in = s.value[0]; *in; in++)
        if (*in != '%') *out++ = *in;
    *out = 0;
    if (SetEnvironmentVariableA(s.value[0], *text ? text : nullptr)) return 1;
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, GetLastError(), 0,
                   StepFailureText, STEP_FAILURE_TEXT_SIZE - 1, nullptr);
    return 0;
}

}  // namespace

int ReadVariable(const char* name, int tab, int step, char* buffer, int size) {
    if (!name || !buffer || size <= 0 || tab < 0 || step < 0) return 0;
    char prefix[LOCAL_PREFIX_SIZE];
    LocalPrefix(tab, prefix);
    ReadSetting(nullptr, buffer, size, nullptr, ZR_ROOT "UserVariables\\%s%s", prefix, WithoutPercent(name));
    // A variable that holds a macro is expanded at each read.
    TranslateText(buffer, tab, step);
    CopyIntoN(buffer, size, TranslatedText);
    return ParseInt(buffer);
}

void SaveOutput(int tab, int step, const char* data, long length, const char* nameOverride) {
    if (tab < 0 || tab >= MAX_TABS || step < 0 || !ScriptStore.tab[tab].steps) return;
    // A result made from a text that a stop cut short is no result: an
    // empty one would even remove the output file.
    if (TranslationCut) return;
    const Step& s = ScriptStore.tab[tab].steps[step];
    if ((nameOverride && *nameOverride) || (ContainsNoCase(s.output, "var") && s.output_value[0]))
        SaveToVariable(tab, s, data, length, nameOverride);
    else if (ContainsNoCase(s.output, "clip"))
        SaveToClipboard(data, length);
    else if (OutputGoesToFile(s))
        SaveToFile(tab, step, s, data, length);
}

bool OutputGoesToFile(const Step& s) {
    return !(ContainsNoCase(s.output, "var") && s.output_value[0]) && !ContainsNoCase(s.output, "clip") &&
           ContainsNoCase(s.output, "file") && s.output_value[0];
}

int VariableStep(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    int translated = TranslateText(s.text, tab, step);
    size_t length = translated > 0 ? (size_t)translated - 1 : 0;
    AutoHeapBlock text(HeapAllocZero(length + 256));
    if (!text.p) return 1;
    memcpy(text.p, TranslatedText, length + 1);
    if (ContainsNoCase(s.action, "Create") || ContainsNoCase(s.action, "Update")) {
        SaveOutput(tab, step, text.p, (long)length, nullptr);
        return 1;
    }
    if (ContainsNoCase(s.action, "Increment")) return ChangeBy(tab, step, 1);
    if (ContainsNoCase(s.action, "Decrement")) return ChangeBy(tab, step, -1);
    if (ContainsNoCase(s.action, "Environment")) return SetEnvironment(tab, step, text.p);
    return 1;
}
