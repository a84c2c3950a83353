#include "run/numbers.h"

#include <stdlib.h>

double ParseFloat(const char* text) {
    if (!text) return 0;
    char number[33];
    int n = 0;
    for (const char* p = text; *p && n < 32; p++) {
        bool digit = (*p >= '0' && *p <= '9') || *p == '.';
        if (!digit && !(*p == '-' && n == 0)) break;
        number[n++] = *p;
    }
    if (n > 18) n = 18;
    number[n] = 0;
    return strtod(number, nullptr);
}
