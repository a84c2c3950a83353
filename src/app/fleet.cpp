#include "app/fleet.h"

#include <windows.h>
#include <stdio.h>

#include <string>
#include <utility>
#include <vector>

#include "base/console.h"
#include "base/fileidentity.h"
#include "base/files.h"
#include "base/settings.h"
#include "base/ui.h"
#include "products/runreport.h"
#include "products/runresults.h"
#include "run/commandline.h"
#include "run/params.h"
#include "run/runrecord.h"
#include "run/runstate.h"
#include "run/timelimit.h"

namespace {

// A child run of "Call Script" finds here the folder where its parent wants
// its test case; grandchildren inherit it.
const char kChildResults[] = "ZR_CHILD_RESULTS";

std::string JUnitPath, JsonPath, ReportPath, ChildFolder, ScratchFolder;
bool ChildOnly;  // this run only leaves its case for its parent
bool LoadFailed;
std::string LastBoxText;
int (*ShownBox)(HWND, const char*, const char*, UINT);

// The last box's words: why a load failed.
int KeepBoxText(HWND owner, const char* text, const char* title, UINT flags) {
    LastBoxText = text ? text : "";
    return ShownBox(owner, text, title, flags);
}

std::string ScriptName(const std::string& path) {
    size_t slash = path.find_last_of("\\/");
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos && dot > 0) name.erase(dot);
    return name.empty() ? "script" : name;
}

std::string Joined(const std::string& folder, const char* name) { return folder + "\\" + name; }

// A result file that cannot be written is said on standard error, where the
// scheduler that started the run looks; the run's exit code stays its own.
bool WriteResultFile(const std::string& path, const std::string& text) {
    if (path.empty()) return true;
    if (PathFits(path.c_str()) && WriteFileReplacing(path.c_str(), text.data(), text.size(), true)) return true;
    WriteStandardError(("ZantoRunner: the result file \"" + path + "\" could not be written").c_str());
    return false;
}

// Whether a file is one of this run's own scratch files, by where it is on
// the disk (not by its spelling): only those are ever deleted.
bool IsScratch(const std::string& path) {
    return !ScratchFolder.empty() && !path.empty() && PathWithinFolder(path.c_str(), ScratchFolder.c_str()) &&
           !SameDiskObject(path.c_str(), ScratchFolder.c_str());
}

std::vector<ChildCase> ReadChildCases() {
    std::vector<ChildCase> cases;
    if (ChildFolder.empty()) return cases;
    WIN32_FIND_DATAA found;
    const std::string pattern = Joined(ChildFolder, "*.case.json");
    HANDLE search = FindFirstFileA(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return cases;
    do {
        ChildCase c;
        const std::string path = Joined(ChildFolder, found.cFileName);
        if (ReadChildCase(ReadWholeFile(path.c_str()), c)) cases.push_back(c);
        if (IsScratch(path)) DeleteFileA(path.c_str());
    } while (FindNextFileA(search, &found));
    FindClose(search);
    return cases;
}

std::vector<std::pair<std::string, std::string>> VariablesWritten() {
    std::vector<std::pair<std::string, std::string>> out;
    std::vector<char> value(65536);
    for (const RunRecordData::Variable& v : RunRecord.variables) {
        value[0] = 0;
        ReadSetting(nullptr, value.data(), (int)value.size(), nullptr, ZR_ROOT "UserVariables\\%s", v.key.c_str());
        out.push_back({v.name, value.data()});
    }
    return out;
}

RunSummary Summary(int exitCode) {
    RunSummary s;
    s.name = ScriptName(RunRecord.script);
    char text[256];
    DWORD size = sizeof text;
    if (GetComputerNameA(text, &size)) s.machine = text;
    size = sizeof text;
    if (GetUserNameA(text, &size)) s.user = text;
    s.exitCode = exitCode;
    if (LoadFailed) {
        s.outcome = "load-failed";
        s.message = LastBoxText.empty() ? "the script could not be loaded" : LastBoxText;
    } else if (RunOutcome == EXIT_TIME_LIMIT) {
        s.outcome = "timed-out";
        char words[96];
        snprintf(words, sizeof words, "the run time limit of %d seconds ran out", TimeLimitReached());
        s.message = words;
    } else if (RunOutcome == EXIT_RUN_FAILED || (!RunRecord.failures.empty() && !RunRecord.steps.empty() &&
                                                RunRecord.steps.back().lastRun == 5)) {
        s.outcome = "failed";
        s.message = RunRecord.failures.empty() ? "the run failed"
                                               : "[STEP " + std::to_string(RunRecord.failures.back().step) + "] " +
                                                     RunRecord.failures.back().action + ": " +
                                                     RunRecord.failures.back().words;
    } else {
        s.outcome = "passed";
    }
    return s;
}

void WriteResults(int exitCode) {
    LockRunRecord();
    const RunSummary summary = Summary(exitCode);
    if (ChildOnly) {
        char name[64];
        snprintf(name, sizeof name, "%lu.case.json", GetCurrentProcessId());
        WriteResultFile(Joined(ChildFolder, name), ChildCaseText(RunRecord, summary));
    } else {
        const std::vector<ChildCase> children = ReadChildCases();
        if (!ReportPath.empty())
            WriteResultFile(ReportPath, RunReportHtml(RunRecord, summary, VariablesWritten()));
        // Failure images made only for the report are gone after it: the
        // other files do not name them.
        RunRecordData kept = RunRecord;
        for (RecordedFailure& f : kept.failures)
            if (IsScratch(f.image)) {
                DeleteFileA(f.image.c_str());
                f.image.clear();
            }
        WriteResultFile(JUnitPath, JUnitText(kept, summary, children));
        if (!JsonPath.empty()) WriteResultFile(JsonPath, JsonResultText(kept, summary, VariablesWritten()));
        if (!ScratchFolder.empty()) {
            // The children's cases: nobody asked to keep them.
            RemoveDirectoryA(Joined(ScratchFolder, "children").c_str());
            RemoveDirectoryA(ScratchFolder.c_str());
        }
    }
    UnlockRunRecord();
}

}  // namespace

void PrepareRunResults(const char* script) {
    const ResultSwitches& sw = RunResultSwitches;
    const bool wanted = !sw.junit.empty() || !sw.json.empty() || !sw.report.empty() || !sw.artifacts.empty();
    char parentFolder[MAX_PATH] = "";
    GetEnvironmentVariableA(kChildResults, parentFolder, sizeof parentFolder);
    if (!wanted && !(parentFolder[0] && (LaunchFlags & LAUNCH_HIDDEN))) return;
    StartRunRecord(script);
    RunResultsWriter = WriteResults;
    ShownBox = ShowMessageBox;
    ShowMessageBox = KeepBoxText;
    if (!wanted) {
        ChildOnly = true;
        ChildFolder = parentFolder;
        return;
    }
    JUnitPath = sw.junit;
    JsonPath = sw.json;
    ReportPath = sw.report;
    std::string folder;
    if (!sw.artifacts.empty()) {
        SYSTEMTIME now;
        GetLocalTime(&now);
        char leaf[MAX_PATH];
        snprintf(leaf, sizeof leaf, "%s-%04d%02d%02d-%02d%02d%02d-%lu", ScriptName(RunRecord.script).c_str(), now.wYear,
                 now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, GetCurrentProcessId());
        folder = Joined(sw.artifacts, leaf);
        CreateFolderPath(folder.c_str());
        RunRecord.logFile = Joined(folder, "run.log");
        if (JUnitPath.empty()) JUnitPath = Joined(folder, "junit.xml");
        if (JsonPath.empty()) JsonPath = Joined(folder, "result.json");
        if (ReportPath.empty()) ReportPath = Joined(folder, "report.html");
    } else {
        char temp[MAX_PATH];
        GetTempPathA(sizeof temp, temp);
        char leaf[64];
        snprintf(leaf, sizeof leaf, "ZantoRunner-results-%lu", GetCurrentProcessId());
        ScratchFolder = std::string(temp) + leaf;
        CreateFolderPath(ScratchFolder.c_str());
        folder = ScratchFolder;
    }
    if (!sw.artifacts.empty()) RunRecord.imageFolder = folder;
    RunRecord.scratchFolder = ScratchFolder;
    RunRecord.captureFailures = !ReportPath.empty();
    ChildFolder = Joined(folder, "children");
    CreateFolderPath(ChildFolder.c_str());
    SetEnvironmentVariableA(kChildResults, ChildFolder.c_str());
}

bool ReadRunParameters() {
    std::string error = RunResultSwitches.error;
    if (!RunResultSwitches.params.empty()) {
        // Variables given for the run: the reset at its start spares them.
        LaunchFlags |= LAUNCH_VARIABLES;
        if (error.empty()) SetVariablesFromJsonFile(RunResultSwitches.params.c_str(), error);
    }
    if (error.empty()) return true;
    ShowMessageBox(nullptr, error.c_str(), "ZantoRunner Error", MB_OK | MB_ICONERROR);
    return false;
}

void WriteLoadFailureResults(int exitCode) {
    LoadFailed = true;
    if (RunResultsWriter) {
        RunResultsWriter(exitCode);
        RunResultsWriter = nullptr;
    }
}
