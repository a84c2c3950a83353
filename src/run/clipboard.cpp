#include "run/clipboard.h"

#include <windows.h>
#include <string.h>

void SetClipboardText(const char* text, size_t length) {
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, length + 1);
    if (!memory) return;
    if (char* p = (char*)GlobalLock(memory)) {
        if (text) memcpy(p, text, length);
        GlobalUnlock(memory);
    }
    if (!OpenClipboard(nullptr)) {
        GlobalFree(memory);
        return;
    }
    EmptyClipboard();
    if (!SetClipboardData(CF_TEXT, memory)) GlobalFree(memory);
    CloseClipboard();
}

std::string GetClipboardText() {
    std::string text;
    if (!OpenClipboard(nullptr)) return text;
    if (HANDLE h = GetClipboardData(CF_TEXT)) {
        if (const char* p = (const char*)GlobalLock(h)) text = p;
        GlobalUnlock(h);
    }
    CloseClipboard();
    return text;
}
