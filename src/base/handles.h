// Thin owners of Win32 handles, so that no path out of a function leaks one.
#pragma once

#include <windows.h>

#include "base/heap.h"

struct AutoHKEY {
    HKEY h = nullptr;
    AutoHKEY() = default;
    AutoHKEY(const AutoHKEY&) = delete;
    AutoHKEY& operator=(const AutoHKEY&) = delete;
    ~AutoHKEY() {
        if (h) RegCloseKey(h);
    }
};

struct AutoCloseHandle {
    HANDLE h = INVALID_HANDLE_VALUE;
    AutoCloseHandle() = default;
    explicit AutoCloseHandle(HANDLE handle) : h(handle) {}
    AutoCloseHandle(const AutoCloseHandle&) = delete;
    AutoCloseHandle& operator=(const AutoCloseHandle&) = delete;
    ~AutoCloseHandle() {
        if (h && h != INVALID_HANDLE_VALUE) CloseHandle(h);
    }
    bool ok() const { return h && h != INVALID_HANDLE_VALUE; }
};

struct AutoFindHandle {
    HANDLE h = INVALID_HANDLE_VALUE;
    AutoFindHandle() = default;
    AutoFindHandle(const AutoFindHandle&) = delete;
    AutoFindHandle& operator=(const AutoFindHandle&) = delete;
    ~AutoFindHandle() {
        if (h != INVALID_HANDLE_VALUE) FindClose(h);
    }
};

struct ScopedGetDC {
    HWND wnd;
    HDC dc;
    explicit ScopedGetDC(HWND w) : wnd(w), dc(GetDC(w)) {}
    ScopedGetDC(const ScopedGetDC&) = delete;
    ScopedGetDC& operator=(const ScopedGetDC&) = delete;
    ~ScopedGetDC() {
        if (dc) ReleaseDC(wnd, dc);
    }
};

struct AutoDeleteDC {
    HDC dc;
    explicit AutoDeleteDC(HDC d) : dc(d) {}
    AutoDeleteDC(const AutoDeleteDC&) = delete;
    AutoDeleteDC& operator=(const AutoDeleteDC&) = delete;
    ~AutoDeleteDC() {
        if (dc) DeleteDC(dc);
    }
};

struct AutoDeleteObject {
    HGDIOBJ obj;
    explicit AutoDeleteObject(HGDIOBJ o) : obj(o) {}
    AutoDeleteObject(const AutoDeleteObject&) = delete;
    AutoDeleteObject& operator=(const AutoDeleteObject&) = delete;
    ~AutoDeleteObject() {
        if (obj) DeleteObject(obj);
    }
};

// A heap block from HeapAllocZero, freed on scope exit.

struct AutoHeapBlock {
    char* p;
    explicit AutoHeapBlock(void* block) : p((char*)block) {}
    AutoHeapBlock(const AutoHeapBlock&) = delete;
    AutoHeapBlock& operator=(const AutoHeapBlock&) = delete;
    ~AutoHeapBlock() { HeapFreeBlock(p); }
};

// A COM interface pointer, released once. `&holder.p` is what a creating
// call fills.
template <typename T>
struct AutoRelease {
    T* p = nullptr;
    AutoRelease() = default;
    AutoRelease(const AutoRelease&) = delete;
    AutoRelease& operator=(const AutoRelease&) = delete;
    ~AutoRelease() {
        if (p) p->Release();
    }
    T* operator->() const { return p; }
};
