#include "base/text.h"

#include <windows.h>
#include <stdarg.h>
#include <string.h>

#include "base/utf8.h"

int FormatIntoN(char* out, size_t size, const char* format, ...) {
    if (!out || !size) return 0;
    // wvsprintf writes at most 1024 characters and the terminator.
    char whole[1025];
    whole[0] = 0;
    va_list args;
    va_start(args, format);
    if (format) wvsprintfA(whole, format, args);
    va_end(args);
    // wvsprintf's own cut at 1024 knows nothing of characters: a last one
    // it split is dropped whole.
    whole[CharBoundary(whole, strlen(whole))] = 0;
    CopyIntoN(out, size, whole);
    return (int)strlen(out);
}

// lstrcpyn's cut, done here: under Wine each lstrcpyn call sets up an
// exception frame, which costs more than the copy of a short field, and the
// reader and the writer make several a step. A cut ends on a character
// boundary: the buffer keeps its size in bytes, and a character that does
// not fit whole is left out whole.
void CopyIntoN(char* out, size_t size, const char* text) {
    if (!out || !size) return;
    size_t n = 0;
    if (text) {
        for (; n + 1 < size && text[n]; n++) out[n] = text[n];
        if (text[n]) n = CharBoundary(text, n);
    }
    out[n] = 0;
}

void AppendIntoN(char* out, size_t size, const char* text) {
    if (!out || !size) return;
    const size_t used = strnlen(out, size);
    if (used + 1 >= size) return;
    CopyIntoN(out + used, size - used, text);
}
