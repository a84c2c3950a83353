// The run log. The file is opened and closed for each line, so nothing is lost
// if the process is killed, and the user may read or delete it at any moment.
#include "base/log.h"
#include "base/text.h"

#include <commctrl.h>
#include <stdarg.h>
#include <string.h>

#include "base/settings.h"
#include "base/handles.h"
#include "base/heap.h"
#include "base/files.h"

namespace {

// Formats into a buffer of 1280 bytes; a format of 992 characters or more is
// copied unformatted (cut at 992), so its "%" signs stay as they are.
void FormatLine(char* line, const char* format, va_list args) {
    line[0] = 0;
    if (!format) return;
    if (strlen(format) < 992) {
        wvsprintfA(line, format, args);
    } else {
        memcpy(line, format, 992);
        line[992] = 0;
    }
}

void AppendToPalette(HWND window, const char* line) {
    if (!window || !IsWindow(window)) return;
    if (!(GetWindowLongA(window, GWL_STYLE) & WS_VISIBLE) || !IsWindowVisible(window)) return;
    LRESULT length = SendMessageA(window, WM_GETTEXTLENGTH, 0, 0);
    if (length > 16777216) length = 16777216;
    size_t lineLength = strlen(line);
    size_t size = (size_t)length + lineLength + 3;
    AutoHeapBlock block(HeapAllocZero(size < 256 ? 256 : size));
    if (!block.p) return;
    if (length > 0) SendMessageA(window, WM_GETTEXT, (WPARAM)length + 1, (LPARAM)block.p);
    size_t have = strlen(block.p);
    memcpy(block.p + have, line, lineLength + 1);
    SendMessageA(window, WM_SETTEXT, 0, (LPARAM)block.p);
    UpdateWindow(window);
    char className[32];
    if (GetClassNameA(window, className, sizeof className) && lstrcmpiA(className, "Edit") == 0 &&
        (GetWindowLongA(window, GWL_STYLE) & ES_MULTILINE)) {
        WPARAM end = (WPARAM)(have + lineLength);
        SendMessageA(window, EM_SETSEL, end, (LPARAM)end);
        SendMessageA(window, EM_SCROLLCARET, 0, 0);
    }
}

}  // namespace

unsigned long FileAppends;
void (*LogLineTap)(const char* line);

void LogPrintf(HWND window, const char* format, ...) {
    char line[1280];
    va_list args;
    va_start(args, format);
    FormatLine(line, format, args);
    va_end(args);
    if (LogLineTap) LogLineTap(line);
    if (SettingInt("Log")) {
        char logfile[MAX_PATH];
        SettingText("Logfile", logfile, sizeof logfile);
        AppendToFile(nullptr, logfile, line);
    }
    AppendToPalette(window, line);
}

void StatusPrintf(HWND statusBar, int part, const char* format, ...) {
    if (!statusBar || !IsWindow(statusBar) || part < 0) return;
    char line[1280];
    line[0] = 0;
    if (format && *format && strlen(format) < 992) {
        va_list args;
        va_start(args, format);
        wvsprintfA(line, format, args);
        va_end(args);
    }
    SendMessageA(statusBar, SB_SETTEXTA, (WPARAM)part, (LPARAM)line);
}

void FormatElapsed(unsigned milliseconds, char* buffer) {
    if (!buffer || !buffer[0]) return;
    unsigned seconds = milliseconds / 1000;
    if (seconds == 0)
        CopyIntoN(buffer, ELAPSED_TEXT_SIZE, "less than 1 second");
    else if (seconds < 60)
        FormatIntoN(buffer, ELAPSED_TEXT_SIZE, "%d second%s", (int)seconds, seconds == 1 ? "" : "s");
    else if (seconds < 3600)
        FormatIntoN(buffer, ELAPSED_TEXT_SIZE, "%d:%02d", (int)(seconds / 60), (int)(seconds % 60));
    else if (seconds < 216000)
        FormatIntoN(buffer, ELAPSED_TEXT_SIZE, "%d:%02d:%02d", (int)(seconds / 3600), (int)(seconds / 60 % 60), (int)(seconds % 60));
}

namespace {

// Makes the folders of `path` that are missing.
void MakeFolderOf(const char* path) {
    if (const char* slash = strrchr(path, '\\')) {
        char folder[MAX_PATH];
        size_t n = (size_t)(slash - path);
        if (n < sizeof folder) {
            memcpy(folder, path, n);
            folder[n] = 0;
            bool bareDrive = n == 2 && folder[1] == ':';
            if (n && !bareDrive) CreateFolderPath(folder);
        }
    }
}

// A handle that may only append: the system places each write at the end of
// the file as one piece, so two processes logging into one file lose and
// cut no line. (Read access only lets the handle take the lock below.)
HANDLE OpenFileForAppend(const char* path) {
    MakeFolderOf(path);
    return CreateFileA(path, FILE_APPEND_DATA | FILE_READ_DATA | SYNCHRONIZE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Some systems place an append by first asking the file's size and then
// writing there, so two processes appending at the same moment can land on
// one place and cut each other's line. Every append of ours therefore holds
// a lock on one byte far beyond any real end of file while it writes: the
// appends of all our processes take turns, and no reader of the file's
// content ever meets the lock. A handle that cannot take it writes all the
// same.
bool WriteInTurn(HANDLE file, const char* text) {
    OVERLAPPED turn = {};
    turn.OffsetHigh = 0x40000000;
    const bool held = LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &turn) != 0;
    const bool written = WriteAll(file, text, strlen(text));
    if (held) UnlockFileEx(file, 0, 1, 0, &turn);
    return written;
}

}  // namespace

HANDLE OpenFileForWrite(const char* path) {
    if (!path || !*path) return INVALID_HANDLE_VALUE;
    MakeFolderOf(path);
    return CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                       OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

int AppendToFile(HANDLE handle, const char* path, const char* text) {
    if (!handle && (!path || !*path)) return 0;
    if (!text || !*text) return 0;
    AutoCloseHandle opened;
    if (!handle) {
        FileAppends++;
        opened.h = OpenFileForAppend(path);
        if (!opened.ok()) return 0;
        return WriteInTurn(opened.h, text) ? 1 : 0;
    }
    SetFilePointer(handle, 0, nullptr, FILE_END);
    return WriteAll(handle, text, strlen(text)) ? 1 : 0;
}

int AppendPrintf(HANDLE handle, const char* path, const char* format, ...) {
    // wvsprintf writes up to 1024 characters whatever the format's length.
    size_t size = (format ? strlen(format) : 0) + 256;
    AutoHeapBlock block(HeapAllocZero(size < 1025 ? 1025 : size));
    if (!block.p) return 0;
    if (format && strlen(format) < 1024) {
        va_list args;
        va_start(args, format);
        wvsprintfA(block.p, format, args);
        va_end(args);
    } else if (format) {
        CopyIntoN(block.p, HeapBlockSize(block.p), format);
    }
    return AppendToFile(handle, path, block.p);
}

int AppendLineToFile(HANDLE handle, const char* path, const char* text) {
    const size_t length = text ? strlen(text) : 0;
    AutoHeapBlock block(HeapAllocZero(length + 3 < 256 ? 256 : length + 3));
    if (!block.p) return 0;
    if (length) memcpy(block.p, text, length);
    memcpy(block.p + length, "\r\n", 3);
    return AppendToFile(handle, path, block.p);
}
