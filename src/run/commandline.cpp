#include "run/commandline.h"
#include "base/text.h"

#include <windows.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/settings.h"
#include "base/ui.h"
#include "run/runstate.h"
#include "base/words.h"

namespace {

bool HasSwitch(const char* line, const char* a, const char* b) {
    return ContainsNoCase(line, a) || ContainsNoCase(line, b);
}

void RemoveAllNoCase(std::string& text, const char* what) {
    size_t n = strlen(what);
    for (char* p; (p = FindNoCase(text.c_str(), what)) != nullptr;) text.erase((size_t)(p - text.c_str()), n);
}

bool IsQuote(char c) { return c == '"' || c == '\''; }

// Takes one quote character off each end, single or double.
void StripOneQuote(std::string& s) {
    if (!s.empty() && IsQuote(s.front())) s.erase(0, 1);
    if (!s.empty() && IsQuote(s.back())) s.pop_back();
}

// A variable given on the command line, under the command line's own
// prefix when LocalVariables is on.
void WriteCommandLineVariable(const std::string& name, const std::string& value) {
    char prefix[32] = "";
    if (SettingInt("LocalVariables")) FormatInto(prefix, "%li_1\\", (long)(INT_PTR)GetModuleHandleA(nullptr));
    WriteSetting(nullptr, value.c_str(), 0, nullptr, ZR_ROOT "UserVariables\\%s%s", prefix, name.c_str());
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

struct Word {
    std::string text;
    bool quoted;  // a quoted word is never a switch
};

// The line's words: blanks separate them, double quotes keep blanks inside a
// word and are taken off. Single quotes quote only the value of a
// %name='value' word, since a path may hold an apostrophe.
std::vector<Word> SplitWords(const char* line) {
    std::vector<Word> words;
    const char* p = line;
    for (;;) {
        while (*p && IsBlank(*p)) p++;
        if (!*p) break;
        Word w{std::string(), false};
        bool inDouble = false, inSingle = false;
        const bool variable = *p == '%';
        for (; *p && (inDouble || inSingle || !IsBlank(*p)); p++) {
            if (*p == '"' && !inSingle) {
                inDouble = !inDouble;
                w.quoted = true;
            } else if (*p == '\'' && !inDouble && variable && (inSingle || w.text.find('=') != std::string::npos)) {
                inSingle = !inSingle;
                w.quoted = true;
            } else {
                w.text += *p;
            }
        }
        words.push_back(w);
    }
    return words;
}

// "/name" or "-name", in any case, as a whole word.
bool IsSwitch(const Word& w, const char* name) {
    if (w.quoted || w.text.size() < 2 || (w.text[0] != '/' && w.text[0] != '-')) return false;
    return lstrcmpiA(w.text.c_str() + 1, name) == 0;
}

const char* const kValueSwitches[] = {"junit", "json", "report", "params", "artifacts"};

std::string* ValueSwitchTarget(const Word& w) {
    std::string* targets[] = {&RunResultSwitches.junit, &RunResultSwitches.json, &RunResultSwitches.report,
                              &RunResultSwitches.params, &RunResultSwitches.artifacts};
    for (size_t i = 0; i < ArraySize(kValueSwitches); i++)
        if (IsSwitch(w, kValueSwitches[i])) return targets[i];
    return nullptr;
}

// The word-by-word parse: each switch is a word of its own, a value switch
// takes the word after it, a word "%name=value" is a variable (its value
// may hold blanks in quotes, and any "/", "%" or "="), and what is left is
// the file's name.
int ParseByWords(const char* line, char* fileName) {
    const std::vector<Word> words = SplitWords(line);
    for (const Word& w : words) {
        if (IsSwitch(w, "?") || IsSwitch(w, "help")) {
            ShowMessageBox(nullptr, ZR_USAGE_TEXT, "ZantoRunner", MB_OK);
            return 0;
        }
    }
    bool view = false, run = false, edit = false, logOn = false, logOff = false;
    std::string rest;
    for (size_t i = 0; i < words.size(); i++) {
        const Word& w = words[i];
        if (std::string* target = ValueSwitchTarget(w)) {
            if (i + 1 < words.size()) {
                *target = words[++i].text;
            } else if (RunResultSwitches.error.empty()) {
                RunResultSwitches.error = "the switch " + w.text + " needs a value after it";
            }
        } else if (IsSwitch(w, "unattended")) {
            LaunchFlags |= LAUNCH_UNATTENDED;
        } else if (IsSwitch(w, "check")) {
            LaunchFlags |= LAUNCH_CHECK;
        } else if (IsSwitch(w, "v")) {
            view = true;
        } else if (IsSwitch(w, "r")) {
            run = true;
        } else if (IsSwitch(w, "e")) {
            edit = true;
        } else if (IsSwitch(w, "L")) {
            logOn = true;
        } else if (IsSwitch(w, "f")) {
            logOff = true;
        } else if (IsSwitch(w, "g") || IsSwitch(w, "d")) {
            // reserved: no effect
        } else if (w.text.size() > 2 && w.text[0] == '%' && w.text.find('=') > 1 &&
                   w.text.find('=') != std::string::npos) {
            const size_t eq = w.text.find('=');
            LaunchFlags |= LAUNCH_VARIABLES;
            WriteCommandLineVariable(w.text.substr(1, eq - 1), w.text.substr(eq + 1));
        } else {
            if (!rest.empty()) rest += ' ';
            rest += w.text;
        }
    }
    if (view)
        LaunchFlags |= LAUNCH_OPEN | LAUNCH_RUN;
    else if (run)
        LaunchFlags |= LAUNCH_OPEN | LAUNCH_RUN | LAUNCH_HIDDEN;
    else if (edit)
        LaunchFlags |= LAUNCH_OPEN;
    if (logOn) WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Log");
    if (logOff) WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Log");
    RunResultSwitches.byWords = true;
    if (!rest.empty() && rest != "%") {
        LaunchFlags |= LAUNCH_OPEN;
        if (fileName) CopyIntoN(fileName, MAX_PATH, rest.c_str());
    }
    return 1;
}

}  // namespace

ResultSwitches RunResultSwitches;

bool ParsesByWords(const char* commandLine) {
    if (!commandLine) return false;
    for (const Word& w : SplitWords(commandLine)) {
        if (IsSwitch(w, "unattended") || IsSwitch(w, "check")) return true;
        for (const char* name : kValueSwitches)
            if (IsSwitch(w, name)) return true;
    }
    return false;
}

int ParseCommandLine(const char* commandLine, char* fileName) {
    LaunchFlags = 0;
    RunResultSwitches = ResultSwitches();
    if (fileName) fileName[0] = 0;
    if (!commandLine || !*commandLine) return 0;
    const char* line = commandLine;
    if (ParsesByWords(line)) return ParseByWords(line, fileName);

    if (ContainsNoCase(line, "/?") || ContainsNoCase(line, "-?") || ContainsNoCase(line, "/HELP") ||
        ContainsNoCase(line, "-HELP")) {
        ShowMessageBox(nullptr, ZR_USAGE_TEXT, "ZantoRunner", MB_OK);
        return 0;
    }

    // "/unattended" first, and taken out of the line before any other switch
    // is looked for: its letters must not count as another switch or as part
    // of the file name.
    std::string work(line);
    if (HasSwitch(line, "/unattended", "-unattended")) {
        LaunchFlags |= LAUNCH_UNATTENDED;
        RemoveAllNoCase(work, "/unattended");
        RemoveAllNoCase(work, "-unattended");
    }
    // "/check" likewise; it wins over every mode.
    if (HasSwitch(line, "/check", "-check")) {
        LaunchFlags |= LAUNCH_CHECK;
        RemoveAllNoCase(work, "/check");
        RemoveAllNoCase(work, "-check");
    }
    const std::string rest = work;
    line = rest.c_str();

    // Exactly one mode: /v ahead of /r ahead of /e.
    if (HasSwitch(line, "/v", "-v"))
        LaunchFlags |= LAUNCH_OPEN | LAUNCH_RUN;
    else if (HasSwitch(line, "/r", "-r"))
        LaunchFlags |= LAUNCH_OPEN | LAUNCH_RUN | LAUNCH_HIDDEN;
    else if (HasSwitch(line, "/e", "-e"))
        LaunchFlags |= LAUNCH_OPEN;

    // These persist beyond the process; "/f" wins over "/L".
    if (HasSwitch(line, "/L", "-L")) WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Log");
    if (HasSwitch(line, "/f", "-f")) WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Log");

    static const char* const kSwitches[] = {"/v", "-v", "/r", "-r", "/e", "-e", "/g",
                                            "-g", "/f", "-f", "/L", "-L", "/d", "-d"};
    for (const char* s : kSwitches) RemoveAllNoCase(work, s);

    const size_t length = strlen(line);
    size_t searchFrom = 0;
    for (const char* eq = strchr(line, '='); eq; eq = strchr(line + searchFrom, '=')) {
        LaunchFlags |= LAUNCH_VARIABLES;
        size_t at = (size_t)(eq - line);
        // The name begins after the previous blank. The walk stops where the
        // previous variable ended, so variables may follow each other with no
        // blank between them; at the line's start it skips the first character.
        size_t nameStart = at;
        while (nameStart > searchFrom && line[nameStart - 1] != ' ') nameStart--;
        if (nameStart == 0) nameStart = 1;
        std::string name(line + nameStart, at > nameStart ? at - nameStart : 0);

        size_t valueEnd = at + 1;
        char quote = 0;
        for (; valueEnd < length; valueEnd++) {
            char c = line[valueEnd];
            if (IsQuote(c)) {
                if (quote == c) {
                    valueEnd++;
                    break;
                }
                quote = c;  // opens, or switches from the other kind
                continue;
            }
            if (!quote && (c == ' ' || c == '%' || c == '/')) break;
        }
        std::string value(line + at + 1, valueEnd - at - 1);
        StripOneQuote(value);
        size_t percent = name.find('%');
        if (percent != std::string::npos) name.erase(percent, 1);

        WriteCommandLineVariable(name, value);

        std::string token(line + nameStart, valueEnd > nameStart ? valueEnd - nameStart : 0);
        if (token.size() > 779) token.resize(779);
        size_t found = token.empty() ? std::string::npos : work.find(token);
        if (found != std::string::npos) work.erase(found, token.size());
        searchFrom = valueEnd;
        if (searchFrom >= length) break;
    }

    size_t first = work.find_first_not_of(' ');
    size_t last = work.find_last_not_of(' ');
    work = first == std::string::npos ? std::string() : work.substr(first, last - first + 1);
    StripOneQuote(work);
    if (!work.empty()) {
        LaunchFlags |= LAUNCH_OPEN;
        if (fileName) {
            CopyIntoN(fileName, MAX_PATH, work.c_str());
            if (strcmp(fileName, "%") == 0) fileName[0] = 0;
        }
    }
    return 1;
}
