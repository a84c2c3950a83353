#include "base/text.h"

#include <windows.h>
#include <stdarg.h>
#include <string.h>

int FormatIntoN(char* out, size_t size, const char* format, ...) {
    if (!out || !size) return 0;
    // wvsprintf writes at most 1024 characters and the terminator.
    char whole[1025];
    whole[0] = 0;
    va_list args;
    va_start(args, format);
    if (format) wvsprintfA(whole, format, args);
    va_end(args);
    lstrcpynA(out, whole, (int)(size < 0x7FFFFFFF ? size : 0x7FFFFFFF));
    return (int)strlen(out);
}

void CopyIntoN(char* out, size_t size, const char* text) {
    if (!out || !size) return;
    lstrcpynA(out, text ? text : "", (int)(size < 0x7FFFFFFF ? size : 0x7FFFFFFF));
}

void AppendIntoN(char* out, size_t size, const char* text) {
    if (!out || !size) return;
    const size_t used = strnlen(out, size);
    if (used + 1 >= size) return;
    CopyIntoN(out + used, size - used, text);
}
