// User variables live in the registry under SOFTWARE\ZantoRunner\UserVariables
// (one value each), so that they survive runs and pass between processes;
// every action's result goes to a variable, the clipboard or a file.
#pragma once

#include "base/uservariables.h"  // where they are kept

// Reads a variable (translated) into buffer and returns its integer value;
// 0 with the buffer untouched for bad arguments.
int ReadVariable(const char* name, int tab, int step, char* buffer, int size);
// Saves a result where the step's output says; `nameOverride` names the
// variable instead of output_value. A failed save does not fail the step.
void SaveOutput(int tab, int step, const char* data, long length, const char* nameOverride);
// True when SaveOutput would write the step's result to a file.
struct Step;
bool OutputGoesToFile(const Step& s);
// Category 15 actions with "Variable" in their names.
int VariableStep(int tab, int step);

// Stores one variable's text in the registry; 1 on success. A seam, so that
// tests can make the registry refuse a value.
extern int (*StoreVariableValue)(const char* prefix, const char* name, const char* text);
