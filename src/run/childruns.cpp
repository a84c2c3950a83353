#include "run/childruns.h"

#include <stdlib.h>

#include "base/text.h"
#include "run/runstate.h"

namespace {

HANDLE Job;  // made with the first child run of a run, closed at its end

// The parent has said what ended the run; the child goes without a word.
DWORD WINAPI WaitForParent(LPVOID parent) {
    WaitForSingleObject((HANDLE)parent, INFINITE);
    EndChildRuns();
    TerminateProcess(GetCurrentProcess(), EXIT_RUN_FAILED);
    return 0;
}

}  // namespace

void EnterChildRunEnvironment() {
    char text[16];
    FormatInto(text, "%d", CallDepth() + 1);
    SetEnvironmentVariableA(CALL_DEPTH_VARIABLE, text);
    FormatInto(text, "%lu", GetCurrentProcessId());
    SetEnvironmentVariableA(PARENT_RUN_VARIABLE, text);
}

void LeaveChildRunEnvironment() {
    char text[16];
    const int depth = CallDepth() - 1;
    FormatInto(text, "%d", depth);
    SetEnvironmentVariableA(CALL_DEPTH_VARIABLE, depth > 0 ? text : nullptr);
    SetEnvironmentVariableA(PARENT_RUN_VARIABLE, nullptr);
}

void WatchParentRun() {
    char text[16] = "";
    DWORD n = GetEnvironmentVariableA(PARENT_RUN_VARIABLE, text, sizeof text);
    if (n == 0 || n >= sizeof text) return;
    SetEnvironmentVariableA(PARENT_RUN_VARIABLE, nullptr);  // not for our own children
    HANDLE parent = OpenProcess(SYNCHRONIZE, FALSE, (DWORD)strtoul(text, nullptr, 10));
    if (!parent) return;
    HANDLE watch = CreateThread(nullptr, 0, WaitForParent, parent, 0, nullptr);
    if (watch) CloseHandle(watch);
}

int CallDepth() {
    char text[16] = "";
    DWORD n = GetEnvironmentVariableA(CALL_DEPTH_VARIABLE, text, sizeof text);
    if (n == 0 || n >= sizeof text) return 0;
    int depth = atoi(text);
    return depth < 0 ? 0 : depth;
}

bool AdoptChildRun(HANDLE process) {
    if (!Job) {
        Job = CreateJobObjectA(nullptr, nullptr);
        if (!Job) return false;
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(Job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    }
    return AssignProcessToJobObject(Job, process) != 0;
}

void EndChildRuns() {
    if (!Job) return;
    TerminateJobObject(Job, 1);
    CloseHandle(Job);
    Job = nullptr;
}
