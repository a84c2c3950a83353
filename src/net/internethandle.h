// The owner of a WinInet handle, closed on every path out, and the worker
// that keeps a transfer from blocking a run.
#pragma once

#include <windows.h>
#include <wininet.h>

#include <string>

struct AutoInternet {
    HINTERNET h;
    explicit AutoInternet(HINTERNET handle) : h(handle) {}
    AutoInternet(const AutoInternet&) = delete;
    AutoInternet& operator=(const AutoInternet&) = delete;
    ~AutoInternet() {
        if (h) InternetCloseHandle(h);
    }
};

// One WinInet call, with everything it reads copied in and everything it
// gives back: it may outlive the step that asked for it.
struct InternetCall {
    HINTERNET handle = nullptr;  // what the call works on
    std::string text[3];
    DWORD number = 0;
    char data[4096];
    HINTERNET made = nullptr;  // a handle the call opened
    BOOL ok = FALSE;
    DWORD count = 0;
    DWORD error = 0;  // GetLastError after the call
};
typedef void (*InternetCallOp)(InternetCall& call);

enum {
    CALL_DONE = 1,
    CALL_TIMED_OUT = 0,
    CALL_STOPPED = -1,
};

// The connect and receive limits (milliseconds) and connect retries of a
// WinInet session.
void SetSessionLimits(HINTERNET session, DWORD limit, DWORD retries);

struct InternetWorkerShared;

// Makes WinInet calls on a thread of its own while the run thread waits in
// slices that look at the stop request. A call blocked on a silent server
// cannot be interrupted on every system (closing its handle does not end it
// under Wine), so on a stop, or when nothing has come back within the
// limit, the run thread gives the call up and goes on: the worker owns the
// call's memory, closes what the call opens, and ends when the call comes
// back, or with the process. A worker that gave up a call makes no more.
struct InternetWorker {
    InternetWorkerShared* shared;
    bool dead;

    InternetWorker();
    InternetWorker(const InternetWorker&) = delete;
    InternetWorker& operator=(const InternetWorker&) = delete;
    ~InternetWorker();
    // The call to fill in before Run, and to read after it.
    InternetCall& Call();
    // Runs `op` on the worker and waits for it: CALL_DONE (with the call's
    // GetLastError set again on this thread), CALL_TIMED_OUT or
    // CALL_STOPPED, whose words go to StepFailureText.
    int Run(InternetCallOp op, DWORD limit);
};
