// Prints what the help says of every action, read from the tables the program
// itself uses: the catalogue (names, categories, order), the defaults a new
// step gets, the property rows the palette shows for it, and the step as the
// writer stores it. make-help.py turns this into the help's pages, so the help
// cannot say what the program does not do.
//
//   helpdump.exe > dump.txt
//
// One record a line, fields separated by tabs; a tab, a line end or a
// backslash inside a field is written \t, \n, \r or \\.
//   C  category  heading  summary       a heading of the tree
//   A  category  name  icon  summary    an action of that heading
//   D  field  value               a default of the new step (non-empty only)
//   R  label  type  field  flags  choices  help     a row of the palette
//   T  topic                      the help topic the editor opens for it
//   X  xml                        the step as the script file holds it
//   M  group  list                the texts translation understands (macronames.h)
#include <windows.h>

#include <stdio.h>
#include <string.h>

#include <string>

#include "app/dispatch.h"
#include "base/heap.h"
#include "base/settings.h"
#include "base/ui.h"
#include "editor/commands.h"
#include "run/macronames.h"
#include "run/runstate.h"
#include "script/catalogue.h"
#include "script/newstep.h"
#include "script/properties.h"
#include "script/scriptfile.h"
#include "script/step.h"

namespace {

int NoBox(HWND, const char*, const char*, UINT) { return IDOK; }

std::string Field(const char* text) {
    std::string out;
    for (const char* p = text ? text : ""; *p; p++) {
        switch (*p) {
        case '\t': out += "\\t"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\\': out += "\\\\"; break;
        default: out += *p;
        }
    }
    return out;
}

void Default(const char* field, const char* value) {
    if (value && value[0]) printf("D\t%s\t%s\n", field, Field(value).c_str());
}

void DumpAction(const CatalogueEntry& e) {
    TabStore& t = CurrentTab();
    const int index = NewStep(e.name, -1);
    if (index < 0) return;
    t.selected = index;
    const Step& s = t.steps[index];
    printf("A\t%d\t%s\t%d\t%s\n", e.category, Field(e.name).c_str(), e.image, Field(e.summary).c_str());
    Default("action", s.action);
    Default("text", s.text);
    Default("options", s.options);
    Default("timeout", s.timeout);
    for (int v = 0; v < STEP_VALUES; v++) {
        char name[16];
        snprintf(name, sizeof name, "value%d", v + 1);
        Default(name, s.value[v]);
    }
    Default("output", s.output);
    Default("output_value", s.output_value);
    Default("onfail", s.onfail);
    Default("onfail_value", s.onfail_value);
    Default("comment", s.comment);
    BuildPropertyTable(1);
    for (int row = 0; row < PropertyRowCount; row++) {
        const PropertyRow& r = PropertyTable[row];
        if (r.rowType == ROW_END) continue;
        printf("R\t%s\t%d\t%d\t%d\t%s\t%s\n", Field(r.label).c_str(), r.rowType, r.field, r.flags,
               Field(r.choices).c_str(), Field(r.help).c_str());
    }
    // The topic the editor opens for a step of this action.
    char topic[160];
    HelpTopicOfAction(s.category, s.action, topic, sizeof topic);
    printf("T\t%s\n", Field(topic).c_str());
    // The step alone, as the clipboard and the file carry it.
    const char* xml = WriteSteps(1, 0, 0);
    const char* from = xml ? strstr(xml, "<step>") : nullptr;
    const char* to = from ? strstr(from, "</step>") : nullptr;
    if (from && to) printf("X\t%s\n", Field(std::string(from, (size_t)(to - from) + 7).c_str()).c_str());
}

}  // namespace

// The help describes the program as it starts on a new machine, whatever
// settings this user has: the user's key is swapped, for this process only,
// for an empty one that gets the defaults.
void UseDefaultSettings() {
    const char* scratch = "Software\\ZantoRunnerHelpDump";
    RegDeleteTreeA(HKEY_CURRENT_USER, scratch);
    HKEY fresh = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, scratch, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &fresh,
                        nullptr) != ERROR_SUCCESS)
        return;
    RegOverridePredefKey(HKEY_CURRENT_USER, fresh);
    LoadSettings(0);
}

int main() {
    UseDefaultSettings();
    ShowMessageBox = NoBox;
    InstallStepHandlers();
    StepFailureText = (char*)HeapAllocZero(STEP_FAILURE_TEXT_SIZE);
    FillActionsTree(nullptr);
    ScriptStore.tab[0].selected = -1;
    for (int i = 0; i < ActionCatalogueCount; i++) {
        const CatalogueEntry& e = ActionCatalogue[i];
        if (e.category >= 100000) {
            printf("C\t%d\t%s\t%s\n", e.category - 100000, Field(e.name).c_str(), Field(e.summary).c_str());
            continue;
        }
        DumpAction(e);
    }
    printf("M\tRun time\t%s\n", Field(MacroNamesRunTime).c_str());
    printf("M\tDate and time\t%s\n", Field(MacroNamesDateTime).c_str());
    printf("M\tSystem\t%s\n", Field(MacroNamesSystem).c_str());
    return 0;
}
