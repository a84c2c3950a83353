// CalcFormula evaluations per second for a 40-character formula with
// parentheses, result text included.
#include <windows.h>

#include "bench_clock.h"
#include <stdio.h>
#include <string.h>

#include "run/expressions.h"

namespace {

}  // namespace

int main() {
    const char formula[] = "(12.5+7)*(3-1.25)/(2+0.5)-(100%7)^2+40/8";
    char text[64], result[128];
    int n = 0;
    double start = Now(), elapsed = 0;
    while ((elapsed = Now() - start) < 2.0) {
        for (int i = 0; i < 1000; i++) {
            memcpy(text, formula, sizeof formula);
            CalcFormula(text, result);
        }
        n += 1000;
    }
    double rate = n / elapsed;
    printf("== formulas\n%zu-character formula: %.0f evaluations/s (target 500000: %s), result %s\n", strlen(formula),
           rate, rate >= 500000 ? "met" : "NOT MET", result);
    return 0;
}
