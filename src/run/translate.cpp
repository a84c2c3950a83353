#include "run/translate.h"

#include <string.h>

#include "script/step.h"

char* TranslatedText;

const char* TranslateText(const char* text, int tab, int step) {
    const char* source = text ? text : "";
    size_t length = strlen(source);
    TranslatedText = EnsureCapacity(TranslatedText, length + 256);
    if (!TranslatedText) return "";
    memcpy(TranslatedText, source, length + 1);
    return TranslatedText;
}
