// Formulas: the CALC function of translation and the "Math Calculation" action.
#pragma once

// Evaluates a formula into `result` (a text of `size` bytes); 1 on success.
int CalcFormula(const char* formula, char* result, int size);
