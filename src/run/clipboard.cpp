#include "run/clipboard.h"

#include <windows.h>
#include <string.h>

#include "base/utf8.h"

// The clipboard carries UTF-16 (CF_UNICODETEXT) both ways: the system makes
// CF_TEXT from it in the machine's legacy code page, which would turn every
// character outside that page into "?" for the program and for other
// programs alike.
void SetClipboardText(const char* text, size_t length) {
    const std::wstring wide = WideFromProgram(text ? text : "", text ? length : 0);
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, (wide.size() + 1) * sizeof(wchar_t));
    if (!memory) return;
    if (wchar_t* p = (wchar_t*)GlobalLock(memory)) {
        if (!wide.empty()) memcpy(p, wide.data(), wide.size() * sizeof(wchar_t));
        GlobalUnlock(memory);
    }
    if (!OpenClipboard(nullptr)) {
        GlobalFree(memory);
        return;
    }
    EmptyClipboard();
    if (!SetClipboardData(CF_UNICODETEXT, memory)) GlobalFree(memory);
    CloseClipboard();
}

std::string GetClipboardText() {
    std::string text;
    if (!OpenClipboard(nullptr)) return text;
    if (HANDLE h = GetClipboardData(CF_UNICODETEXT)) {
        if (const wchar_t* p = (const wchar_t*)GlobalLock(h)) {
            // Up to the terminator, and never past the block.
            const size_t most = GlobalSize(h) / sizeof(wchar_t);
            size_t n = 0;
            while (n < most && p[n]) n++;
            text = ProgramFromWide(p, n);
            GlobalUnlock(h);
        }
    } else if (HANDLE h = GetClipboardData(CF_TEXT)) {
        if (const char* p = (const char*)GlobalLock(h)) {
            text.assign(p, strnlen(p, GlobalSize(h)));
            GlobalUnlock(h);
        }
    }
    CloseClipboard();
    return text;
}
