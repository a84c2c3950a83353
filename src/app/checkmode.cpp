#include "app/checkmode.h"

#include <windows.h>
#include <stdio.h>

#include <string>
#include <vector>

#include "base/console.h"
#include "base/files.h"
#include "base/ui.h"
#include "run/checker.h"
#include "run/runstate.h"
#include "script/catalogue.h"
#include "script/scriptfile.h"
#include "script/fileencoding.h"

namespace {

// A load message is a finding of the file, not a box.
std::vector<std::string> LoadMessages;

int KeepLoadMessage(HWND, const char* text, const char*, UINT) {
    std::string line = text ? text : "";
    for (char& c : line)
        if (c == '\r' || c == '\n') c = ' ';
    LoadMessages.push_back(line);
    return IDOK;
}

}  // namespace

int RunCheckCommand(const char* path, bool unattended) {
    std::vector<CheckFinding> findings;
    int loaded = 0;
    if (path && *path) {
        FillActionsTree(nullptr);  // the catalogue, with no window
        ShowMessageBox = KeepLoadMessage;
        loaded = OpenScript(path, 0);
    } else {
        LoadMessages.push_back("no script file was given");
    }
    for (const std::string& message : LoadMessages) findings.push_back({0, CHECK_PROBLEM, message});
    if (loaded) {
        const std::string text = ScriptFileAsProgramText(ReadWholeFile(path));
        CheckOptions options;
        options.unattended = unattended;
        options.fileText = text.c_str();
        for (const CheckFinding& f : CheckScript(0, options)) findings.push_back(f);
    }
    int problems = 0;
    for (const CheckFinding& f : findings) {
        WriteStandardOutput(CheckFindingLine(path, f).c_str());
        if (f.severity == CHECK_PROBLEM) problems++;
    }
    WriteStandardOutput(CheckSummary(findings).c_str());
    if (!loaded) return EXIT_LOAD_FAILED;
    return problems ? 2 : findings.empty() ? 0 : 1;
}
