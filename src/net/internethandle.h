// The owner of a WinInet handle, closed on every path out.
#pragma once

#include <windows.h>
#include <wininet.h>

struct AutoInternet {
    HINTERNET h;
    explicit AutoInternet(HINTERNET handle) : h(handle) {}
    AutoInternet(const AutoInternet&) = delete;
    AutoInternet& operator=(const AutoInternet&) = delete;
    ~AutoInternet() {
        if (h) InternetCloseHandle(h);
    }
};
