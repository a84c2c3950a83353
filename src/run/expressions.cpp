// The formula evaluator lands with the expressions; until then a formula
// comes back as it was written, so CALC(...) shows its own argument.
#include "run/expressions.h"

#include <windows.h>

int CalcFormula(const char* formula, char* result, int size) {
    lstrcpynA(result, formula ? formula : "", size);
    return 0;
}
