#include "run/childruns.h"

#include <stdlib.h>

#include <vector>

#include "base/text.h"
#include "run/runstate.h"

namespace {

HANDLE Job;  // made with the first child run of a run, closed at its end
// The child runs of the current run, with the event each one watches
// (null while a child is still starting and has made none).
std::vector<HANDLE> Children;
// The run thread adds children, and ends them at the run's end, while a
// watch (the parent's ask, the time limit's end) may end them at the same
// time: one at a time, and the second waits until the first is done.
SRWLOCK ChildrenLock = SRWLOCK_INIT;
// Set when this process is about to end: a child run its run thread still
// manages to start is ended at once.
bool Closed;

// How long a run waits for its child runs to end their own children and go.
const DWORD ChildEndMilliseconds = 3000;

// The event by which a parent asks the child run with this process id to end.
void EndEventName(DWORD processId, char* name, size_t size) {
    FormatIntoN(name, size, "ZantoRunner.EndChildRun.%lu", (unsigned long)processId);
}

HANDLE OwnEndEvent;
HANDLE Parent;

// The parent has said what ended the run; the child goes without a word,
// after its own child runs, so that when a run's process is gone its whole
// tree of child runs is gone too.
DWORD WINAPI WaitForParent(LPVOID) {
    HANDLE handles[2] = {Parent, OwnEndEvent};
    WaitForMultipleObjects(OwnEndEvent ? 2 : 1, handles, FALSE, INFINITE);
    CloseChildRuns();
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
    char name[64];
    EndEventName(GetCurrentProcessId(), name, sizeof name);
    OwnEndEvent = CreateEventA(nullptr, TRUE, FALSE, name);
    Parent = OpenProcess(SYNCHRONIZE, FALSE, (DWORD)strtoul(text, nullptr, 10));
    // A parent already gone: nobody waits for this run any more.
    if (!Parent) TerminateProcess(GetCurrentProcess(), EXIT_RUN_FAILED);
    HANDLE watch = CreateThread(nullptr, 0, WaitForParent, nullptr, 0, nullptr);
    if (watch) CloseHandle(watch);
}

int CallDepth() {
    char text[16] = "";
    DWORD n = GetEnvironmentVariableA(CALL_DEPTH_VARIABLE, text, sizeof text);
    if (n == 0 || n >= sizeof text) return 0;
    int depth = atoi(text);
    return depth < 0 ? 0 : depth;
}

bool BeginChildRunStart() {
    AcquireSRWLockExclusive(&ChildrenLock);
    if (!Closed) return true;
    ReleaseSRWLockExclusive(&ChildrenLock);
    return false;
}

bool FinishChildRunStart(HANDLE process) {
    if (!process) {
        ReleaseSRWLockExclusive(&ChildrenLock);
        return false;
    }
    HANDLE own = nullptr;
    if (DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &own, 0, FALSE, DUPLICATE_SAME_ACCESS))
        Children.push_back(own);
    if (!Job) {
        Job = CreateJobObjectA(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        if (Job) SetInformationJobObject(Job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    }
    const bool inJob = Job && AssignProcessToJobObject(Job, process);
    ReleaseSRWLockExclusive(&ChildrenLock);
    return inJob;
}

void EndChildRuns() { EndChildRunsWithin(ChildEndMilliseconds); }

void EndChildRunsWithin(DWORD wait) {
    // The list is taken under the lock, and the lock let go before anything
    // waits: a watch that ends this process must never wait behind a run
    // thread that waits for its children.
    AcquireSRWLockExclusive(&ChildrenLock);
    std::vector<HANDLE> children;
    children.swap(Children);
    HANDLE job = Job;
    Job = nullptr;
    ReleaseSRWLockExclusive(&ChildrenLock);
    // Each child that still runs is asked to end its own children and go;
    // one that has not started its watch yet is ended at once (it has no
    // children then). Then every one is waited for, and ended if it is slow.
    std::vector<HANDLE> running;
    for (HANDLE child : children) {
        if (WaitForSingleObject(child, 0) != WAIT_TIMEOUT) {
            CloseHandle(child);
            continue;
        }
        char name[64];
        EndEventName(GetProcessId(child), name, sizeof name);
        HANDLE event = OpenEventA(EVENT_MODIFY_STATE, FALSE, name);
        if (event) {
            SetEvent(event);
            CloseHandle(event);
        } else {
            TerminateProcess(child, EXIT_RUN_FAILED);
        }
        running.push_back(child);
    }
    const DWORD start = GetTickCount();
    for (HANDLE child : running) {
        const DWORD passed = GetTickCount() - start;
        if (wait && WaitForSingleObject(child, passed < wait ? wait - passed : 0) == WAIT_TIMEOUT)
            TerminateProcess(child, EXIT_RUN_FAILED);
        CloseHandle(child);
    }
    if (job) {
        TerminateJobObject(job, EXIT_RUN_FAILED);
        CloseHandle(job);
    }
}

void CloseChildRuns() {
    AcquireSRWLockExclusive(&ChildrenLock);
    Closed = true;
    ReleaseSRWLockExclusive(&ChildrenLock);
    // Asked, not waited for: each child ends as soon as it has asked its
    // own, so the whole tree goes at once rather than level after level.
    EndChildRunsWithin(0);
}
