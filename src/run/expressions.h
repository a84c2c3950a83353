// The two small evaluators of scripts, on text that translation has finished:
// arithmetic formulas and the conditions of the IF family.
#pragma once

// Evaluates `formula` (which it changes: blanks and the word CALC go), writes
// the formatted result to `result` (at least 80 bytes) if given, and returns
// the value. Not re-entrant.
double CalcFormula(char* formula, char* result);
// Decides a condition such as '%a >= 10': 1 or 0.
int CompareExpression(const char* text);
