#include "net/internethandle.h"

#include "base/text.h"
#include "run/runstate.h"

struct InternetWorkerShared {
    volatile LONG references = 2;  // the worker's and the waiter's
    volatile LONG state = 0;       // 0 running, 1 finished, 2 given up
    HANDLE go = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    HANDLE done = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    InternetCallOp op = nullptr;
    InternetCall call;
};

namespace {

// The slice between two looks at the stop request.
const DWORD kSlice = 100;

void Release(InternetWorkerShared* shared) {
    if (InterlockedDecrement(&shared->references) != 0) return;
    if (shared->go) CloseHandle(shared->go);
    if (shared->done) CloseHandle(shared->done);
    delete shared;
}

DWORD WINAPI WorkerThread(LPVOID parameter) {
    InternetWorkerShared* shared = (InternetWorkerShared*)parameter;
    for (;;) {
        WaitForSingleObject(shared->go, INFINITE);
        if (!shared->op) break;
        shared->op(shared->call);
        shared->call.error = GetLastError();
        if (InterlockedCompareExchange(&shared->state, 1, 0) == 2) {
            // Given up: nobody takes what the call opened.
            if (shared->call.made) InternetCloseHandle(shared->call.made);
            break;
        }
        SetEvent(shared->done);
    }
    Release(shared);
    return 0;
}

}  // namespace

void SetSessionLimits(HINTERNET session, DWORD limit, DWORD retries) {
    // Numbers, as the options want them: the address of a text there would
    // be read as a number of days.
    InternetSetOptionA(session, INTERNET_OPTION_CONNECT_TIMEOUT, &limit, sizeof limit);
    InternetSetOptionA(session, INTERNET_OPTION_RECEIVE_TIMEOUT, &limit, sizeof limit);
    InternetSetOptionA(session, INTERNET_OPTION_CONNECT_RETRIES, &retries, sizeof retries);
}

InternetWorker::InternetWorker() : shared(new InternetWorkerShared), dead(false) {
    HANDLE thread = shared->go && shared->done ? CreateThread(nullptr, 0, WorkerThread, shared, 0, nullptr) : nullptr;
    if (thread) {
        CloseHandle(thread);
    } else {
        shared->references = 1;
        dead = true;
    }
}

InternetWorker::~InternetWorker() {
    if (!dead) {
        shared->op = nullptr;
        SetEvent(shared->go);
    }
    Release(shared);
}

InternetCall& InternetWorker::Call() { return shared->call; }

int InternetWorker::Run(InternetCallOp op, DWORD limit) {
    if (dead) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "No thread for the transfer");
        return CALL_STOPPED;
    }
    shared->call.made = nullptr;
    shared->call.ok = FALSE;
    shared->call.count = 0;
    shared->call.error = 0;
    shared->state = 0;
    shared->op = op;
    SetEvent(shared->go);
    const DWORD start = GetTickCount();
    for (;;) {
        if (WaitForSingleObject(shared->done, kSlice) == WAIT_OBJECT_0) break;
        const bool stopped = StopRequested != 0;
        if (!stopped && GetTickCount() - start < limit) continue;
        if (InterlockedCompareExchange(&shared->state, 2, 0) == 1) {
            WaitForSingleObject(shared->done, INFINITE);  // it came back just now
            break;
        }
        dead = true;
        if (stopped)
            CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Transfer stopped");
        else
            FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "No answer from the server within %lu seconds",
                        (unsigned long)(limit / 1000));
        return stopped ? CALL_STOPPED : CALL_TIMED_OUT;
    }
    SetLastError(shared->call.error);
    return CALL_DONE;
}
