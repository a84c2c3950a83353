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

// lstrcpyn's cut, done here: under Wine each lstrcpyn call sets up an
// exception frame, which costs more than the copy of a short field, and the
// reader and the writer make several a step.
void CopyIntoN(char* out, size_t size, const char* text) {
    if (!out || !size) return;
    size_t n = 0;
    if (text)
        for (; n + 1 < size && text[n]; n++) out[n] = text[n];
    out[n] = 0;
}

void AppendIntoN(char* out, size_t size, const char* text) {
    if (!out || !size) return;
    const size_t used = strnlen(out, size);
    if (used + 1 >= size) return;
    CopyIntoN(out + used, size - used, text);
}
