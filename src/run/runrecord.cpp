#include "run/runrecord.h"

#include "base/heap.h"
#include "base/log.h"
#include "script/step.h"

RunRecordData RunRecord;
void (*RunResultsWriter)(int exitCode);

namespace {

// Enough for a night's loop; the rest is counted.
const size_t kMostSteps = 5000;
const size_t kMostLog = 8u << 20;

CRITICAL_SECTION Guard;
volatile LONG GuardReady;
bool GuardHeld;  // by the reader that got it
int OpenStep = -1;
DWORD OpenTick;
int OpenTab;

void EnsureGuard() {
    if (InterlockedCompareExchange(&GuardReady, 1, 0) == 0) InitializeCriticalSection(&Guard);
}

void CloseOpenStep() {
    if (OpenStep < 0) return;
    const TabStore& t = ScriptStore.tab[OpenTab];
    if (t.steps && OpenStep < t.count) {
        if (RunRecord.steps.size() < kMostSteps) {
            const Step& s = t.steps[OpenStep];
            const bool comment = lstrcmpiA(s.action, "Comment") == 0;
            RunRecord.steps.push_back({OpenStep + 1, s.action, comment ? TextOf(s.comment) : TextOf(s.text),
                                       (unsigned)(GetTickCount() - OpenTick), s.last_run});
        } else {
            RunRecord.stepsLeftOut++;
        }
    }
    OpenStep = -1;
}

void KeepLogLine(const char* line) {
    EnterCriticalSection(&Guard);
    if (RunRecord.log.size() < kMostLog)
        RunRecord.log += line;
    else
        RunRecord.logCut = true;
    LeaveCriticalSection(&Guard);
    if (!RunRecord.logFile.empty()) AppendToFile(nullptr, RunRecord.logFile.c_str(), line);
}

}  // namespace

void StartRunRecord(const char* script) {
    EnsureGuard();
    RunRecord.on = true;
    RunRecord.script = script ? script : "";
    GetSystemTimeAsFileTime(&RunRecord.start);
    RunRecord.end = RunRecord.start;
    LogLineTap = KeepLogLine;
}

void RecordStepBegun(int tab, int step) {
    if (!RunRecord.on || tab < 0 || tab >= MAX_TABS) return;
    EnterCriticalSection(&Guard);
    CloseOpenStep();
    OpenStep = step;
    OpenTab = tab;
    OpenTick = GetTickCount();
    RunRecord.stepsRun++;
    LeaveCriticalSection(&Guard);
}

void RecordRunEnded(int) {
    if (!RunRecord.on) return;
    EnterCriticalSection(&Guard);
    CloseOpenStep();
    LeaveCriticalSection(&Guard);
}

void RecordFailure(int step, const char* action, const char* words, const char* image) {
    if (!RunRecord.on) return;
    EnterCriticalSection(&Guard);
    std::string text = words ? words : "";
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n' || text.back() == ' ')) text.pop_back();
    RunRecord.failures.push_back({step + 1, action ? action : "", text, image ? image : ""});
    LeaveCriticalSection(&Guard);
}

void RecordVariableWritten(const char* prefix, const char* name) {
    if (!RunRecord.on || !name || !*name) return;
    const std::string key = std::string(prefix ? prefix : "") + name;
    EnterCriticalSection(&Guard);
    bool known = false;
    for (const RunRecordData::Variable& v : RunRecord.variables) known = known || lstrcmpiA(v.key.c_str(), key.c_str()) == 0;
    if (!known) RunRecord.variables.push_back({name, key});
    LeaveCriticalSection(&Guard);
}

void LockRunRecord() {
    EnsureGuard();
    GuardHeld = false;
    for (int i = 0; i < 100 && !GuardHeld; i++) {
        GuardHeld = TryEnterCriticalSection(&Guard) != 0;
        if (!GuardHeld) Sleep(10);
    }
    GetSystemTimeAsFileTime(&RunRecord.end);
}

void UnlockRunRecord() {
    if (GuardHeld) LeaveCriticalSection(&Guard);
    GuardHeld = false;
}
