// The order-entry fixture (tests/harness/orderentry.cpp) as the recorder's
// and the spy's tests start it: at a place on the screen, writing its state
// to a file when it closes.
#pragma once

#include <windows.h>

#include <string>

#include "editor_support.h"

inline std::string BesideTests(const char* name) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string path = self;
    return path.substr(0, path.rfind('\\') + 1) + name;
}

// The fixture, started at `place` ("x y w h"), closed and waited for at the end.
struct OrderEntry {
    PROCESS_INFORMATION pi = {};
    HWND form = nullptr;
    OrderEntry(const std::string& state, const char* place) {
        // Appended piece by piece: GCC 12 warns of a false overlap in "x" + string.
        std::string line = "\"";
        line += BesideTests("orderentry.exe");
        line += "\" \"";
        line += state;
        line += "\" ";
        line += place;
        STARTUPINFOA si = {sizeof si};
        if (!CreateProcessA(nullptr, &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return;
        PumpUntil([&] {
            form = FindWindowA("ZantoOrderEntry", "Order entry");
            return form && IsWindowVisible(form);
        });
    }
    ~OrderEntry() { Close(); }
    void Close() {
        if (!pi.hProcess) return;
        if (IsWindow(form)) PostMessageA(form, WM_CLOSE, 0, 0);
        if (WaitForSingleObject(pi.hProcess, 10000) != WAIT_OBJECT_0) TerminateProcess(pi.hProcess, 1);
        CloseHandle(pi.hThread);
        CloseHandle(pi.hProcess);
        pi = {};
    }
};
