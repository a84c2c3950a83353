#include "run/childruns.h"

#include <stdlib.h>

namespace {

HANDLE Job;  // made with the first child run of a run, closed at its end

}  // namespace

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
