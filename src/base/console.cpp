#include "base/console.h"

#include <windows.h>

#include <string>

namespace {

void WriteLine(DWORD which, const char* line) {
    HANDLE handle = GetStdHandle(which);
    if (!handle || handle == INVALID_HANDLE_VALUE) return;
    std::string out = std::string(line ? line : "") + "\r\n";
    DWORD written = 0;
    WriteFile(handle, out.data(), (DWORD)out.size(), &written, nullptr);
}

}  // namespace

void WriteStandardOutput(const char* line) { WriteLine(STD_OUTPUT_HANDLE, line); }
void WriteStandardError(const char* line) { WriteLine(STD_ERROR_HANDLE, line); }
