// The script checker. Each rule reads the steps as the run would read them
// and says what the run would do: the run itself keeps every one of these
// behaviours, so the checker is where a user learns of them before a run.
#include "run/checker.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <set>

#include "base/heap.h"
#include "base/words.h"
#include "run/macronames.h"
#include "script/editing.h"
#include "script/properties.h"
#include "script/step.h"
#include "script/xmltags.h"

namespace {

// The loop stack keeps 15 entries that can be relied on.
const int kLoopStackDepth = 15;

struct Checker {
    const TabStore& tab;
    std::vector<CheckFinding> findings;

    void Add(int index, int severity, const std::string& message) {
        findings.push_back({index + 1, severity, message});
    }
    const Step& At(int i) const { return tab.steps[i]; }
    bool Skipped(int i) const { return (At(i).status & STEP_SKIP) != 0; }
};

std::string Lower(std::string text) {
    if (!text.empty()) CharLowerBuffA(&text[0], (DWORD)text.size());
    return text;
}

std::string Quoted(const char* text) { return std::string("'") + TextOf(text) + "'"; }

// The texts of a step that its action translates before use.
std::vector<const char*> TranslatedFields(const Step& s) {
    std::vector<const char*> fields = {TextOf(s.text), s.timeout, s.output_value};
    for (const auto& value : s.value) fields.push_back(value);
    return fields;
}

void CheckBlocks(Checker& c) {
    const BlockWalk w = WalkBlocks(c.tab);
    for (int i : w.lonelyEndIf) c.Add(i, CHECK_PROBLEM, "'END IF' with no 'IF' before it");
    for (int i : w.lonelyElse) c.Add(i, CHECK_PROBLEM, "'ELSE' with no 'IF' before it");
    for (int i : w.lonelyNext)
        c.Add(i, CHECK_PROBLEM, "'NEXT LOOP' with no loop Start before it: the run jumps back to step 1 for ever");
    for (int i : w.openIfs) c.Add(i, CHECK_PROBLEM, "this IF block is not closed by an 'END IF'");
    for (int i : w.openLoops) c.Add(i, CHECK_PROBLEM, "this loop Start has no 'NEXT LOOP'");
    if (w.deepestLoops > kLoopStackDepth) {
        char text[160];
        snprintf(text, sizeof text, "loops nested %d deep: the loop stack holds %d, so the outer loops never end",
                 w.deepestLoops, kLoopStackDepth);
        c.Add(w.deepestAt, CHECK_PROBLEM, text);
    }
}

// Labels are found as the run finds them: the raw text of a "Label" step,
// in any case.
void CheckLabels(Checker& c) {
    std::vector<std::string> labels;
    for (int i = 0; i < c.tab.count; i++)
        if (lstrcmpiA(c.At(i).action, "Label") == 0 && TextOf(c.At(i).text)[0]) labels.push_back(TextOf(c.At(i).text));
    auto known = [&](const char* name) {
        for (const std::string& label : labels)
            if (lstrcmpiA(label.c_str(), name) == 0) return true;
        return false;
    };
    for (int i = 0; i < c.tab.count; i++) {
        const Step& s = c.At(i);
        if (c.Skipped(i)) continue;
        // A target built from variables is known only at run time.
        const char* target = TextOf(s.text);
        if (s.category == CAT_FLOW && ContainsNoCase(s.action, "to Label") && target[0] && !strchr(target, '%') &&
            !known(target))
            c.Add(i, CHECK_PROBLEM, "no 'Label' step is named " + Quoted(target));
        if (s.category != CAT_IF && ContainsNoCase(s.onfail, "Jump") && !known(s.onfail_value))
            c.Add(i, CHECK_PROBLEM, "its failure mode jumps to the label " + Quoted(s.onfail_value) +
                                        ", which no 'Label' step has");
    }
}

void CheckActions(Checker& c) {
    for (int i = 0; i < c.tab.count; i++) {
        const Step& s = c.At(i);
        if (c.Skipped(i)) continue;
        if (s.category == 0)
            c.Add(i, CHECK_PROBLEM, "unknown action " + Quoted(s.action) + ": the run skips it as an unknown action");
        if (s.category == 0 || lstrcmpiA(s.action, "Comment") == 0) continue;
        for (const char* field : TranslatedFields(s)) {
            if (FindNoCase(field, "FindText(") || FindNoCase(field, "FindText (") || FindNoCase(field, "FindText  (")) {
                c.Add(i, CHECK_PROBLEM, "'FindText(' in a text that is translated: its translation never ends");
                break;
            }
        }
    }
    // The last step that runs: an IF there has nothing to jump to when false.
    int last = c.tab.count - 1;
    while (last >= 0 && c.Skipped(last)) last--;
    if (last >= 0 && c.At(last).category == CAT_IF && _strnicmp(c.At(last).action, "IF ", 3) == 0)
        c.Add(last, CHECK_PROBLEM, "an IF as the last step with no 'END IF' after it: when false, the run starts "
                                   "it again for ever");
}

// Names a user may mean as "%name%": the variables the script sets and the
// system's own texts.
std::set<std::string> VariableNames(const TabStore& tab) {
    std::set<std::string> names;
    auto add = [&](const char* name) {
        std::string n = name[0] == '%' ? name + 1 : name;
        if (n.empty()) return;
        n = Lower(n);
        names.insert(n);
    };
    for (int i = 0; i < tab.count; i++) {
        const Step& s = tab.steps[i];
        if (ContainsNoCase(s.output, "var") && s.output_value[0]) add(s.output_value);
    }
    for (const char* list : {MacroNamesRunTime, MacroNamesDateTime, MacroNamesSystem}) {
        for (const char* p = list; *p;) {
            const char* end = strchr(p, '|');
            std::string entry(p, end ? (size_t)(end - p) : strlen(p));
            std::string text = entry.substr(0, entry.find('\t'));
            // "%path" and "%programfiles" become environment names that are
            // written with both signs on purpose.
            bool word = text.size() > 1 && text[0] == '%';
            for (size_t k = 1; word && k < text.size(); k++) word = isalnum((unsigned char)text[k]) || text[k] == '_';
            if (word && lstrcmpiA(text.c_str(), "%path") != 0 && lstrcmpiA(text.c_str(), "%programfiles") != 0)
                add(text.c_str());
            if (!end) break;
            p = end + 1;
        }
    }
    return names;
}

void CheckPercentNames(Checker& c) {
    const std::set<std::string> names = VariableNames(c.tab);
    for (int i = 0; i < c.tab.count; i++) {
        const Step& s = c.At(i);
        if (c.Skipped(i) || lstrcmpiA(s.action, "Comment") == 0) continue;
        std::set<std::string> said;
        for (const char* field : TranslatedFields(s)) {
            for (const char* p = strchr(field, '%'); p; p = strchr(p + 1, '%')) {
                const char* close = strchr(p + 1, '%');
                if (!close || close == p + 1) continue;
                // "%bytes%r%n": the second sign starts the next name.
                if (isalnum((unsigned char)close[1]) || close[1] == '_') continue;
                std::string name(p + 1, (size_t)(close - p - 1));
                const std::string lower = Lower(name);
                if (!names.count(lower) || said.count(lower)) continue;
                said.insert(lower);
                c.Add(i, CHECK_WARNING,
                      "'%" + name + "%' reads %" + name + " followed by '%'; write %" + name);
            }
        }
    }
}

void CheckRequiredFields(Checker& c, int tabIndex) {
    TabStore& t = ScriptStore.tab[tabIndex];
    const int keepTab = ScriptStore.currentTab, keepSelected = t.selected;
    PropertyRow keepRows[MAX_PROPERTY_ROWS];
    memcpy(keepRows, PropertyTable, sizeof keepRows);
    const int keepCount = PropertyRowCount;
    ScriptStore.currentTab = tabIndex;
    for (int i = 0; i < t.count; i++) {
        // Only the categories whose table marks a row as required; the
        // table of an IF or a comment would clear the step's failure fields.
        if (c.Skipped(i) || t.steps[i].category != CAT_INTERNET) continue;
        t.selected = i;
        BuildPropertyTable(1);
        for (int row = 0; row < PropertyRowCount; row++) {
            const PropertyRow& r = PropertyTable[row];
            if (!(r.flags & ROWF_REQUIRED)) continue;
            int width = 0;
            const char* value = StepFieldText(t.steps[i], r.field, &width);
            if (!value || !*value)
                c.Add(i, CHECK_WARNING, std::string("'") + r.label + "' is empty: the step fails at once");
        }
    }
    t.selected = keepSelected;
    ScriptStore.currentTab = keepTab;
    memcpy(PropertyTable, keepRows, sizeof keepRows);
    PropertyRowCount = keepCount;
}

void CheckUnattended(Checker& c) {
    for (int i = 0; i < c.tab.count; i++) {
        const Step& s = c.At(i);
        if (c.Skipped(i) || s.category == CAT_IF || lstrcmpiA(s.action, "Comment") == 0) continue;
        if (ContainsNoCase(s.onfail, "Display Error") || ContainsNoCase(s.onfail, "Ask to Continue"))
            c.Add(i, CHECK_WARNING, "its failure mode " + Quoted(s.onfail) +
                                        " ends an unattended run at this step when it fails");
    }
}

// The fields the reader cuts to their width, found in the file as the reader
// walks it: one step per "<step>" ... "</step>", comments taken out first.
void CheckCuts(Checker& c, const char* fileText) {
    std::vector<char> text(fileText, fileText + strlen(fileText) + 1);
    StripComments(text.data(), text.size() - 1);
    struct Field {
        const char* tag;
        int width;
    };
    static const Field kFields[] = {
        {"<action>", FIELD_SHORT - 1}, {"<options>", 259}, {"<timeout>", 259}, {"<value1>", 259},
        {"<value2>", 259},  {"<value3>", 259},  {"<value4>", 259},  {"<value5>", 259},
        {"<value6>", 259},  {"<value7>", 259},  {"<value8>", 259},  {"<output>", FIELD_SHORT - 1},
        {"<onfail>", FIELD_SHORT - 1},
    };
    int index = 0;
    for (const char* cursor = text.data();; index++) {
        const char* open = strstr(cursor, "<step>");
        const char* close = open ? strstr(open, "</step>") : nullptr;
        if (!close) break;
        std::string piece(open + 6, (size_t)(close - open - 6));
        for (const Field& f : kFields) {
            const int length = ReadTag(piece.c_str(), f.tag, nullptr, -1) - 1;
            if (length <= f.width) continue;
            char message[160];
            snprintf(message, sizeof message, "%s holds %d characters; only the first %d were loaded", f.tag, length,
                     f.width);
            c.Add(index, CHECK_WARNING, message);
        }
        cursor = close + 7;
    }
}

}  // namespace

std::vector<CheckFinding> CheckScript(int tab, const CheckOptions& options) {
    if (tab < 0 || tab >= MAX_TABS || !ScriptStore.tab[tab].steps) return {};
    Checker c{ScriptStore.tab[tab], {}};
    CheckBlocks(c);
    CheckLabels(c);
    CheckActions(c);
    CheckPercentNames(c);
    CheckRequiredFields(c, tab);
    if (options.unattended) CheckUnattended(c);
    if (options.fileText) CheckCuts(c, options.fileText);
    std::stable_sort(c.findings.begin(), c.findings.end(),
                     [](const CheckFinding& a, const CheckFinding& b) { return a.step < b.step; });
    return c.findings;
}

std::string CheckFindingLine(const char* file, const CheckFinding& finding) {
    return std::string(file ? file : "") + "(" + std::to_string(finding.step) + "): " +
           (finding.severity == CHECK_PROBLEM ? "problem" : "warning") + ": " + finding.message;
}

std::string CheckSummary(const std::vector<CheckFinding>& findings) {
    int problems = 0, warnings = 0;
    for (const CheckFinding& f : findings) (f.severity == CHECK_PROBLEM ? problems : warnings)++;
    return std::to_string(problems) + " problem(s), " + std::to_string(warnings) + " warning(s)";
}
