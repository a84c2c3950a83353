// What a failing step does next: its failure mode decides.
#pragma once

#include "base/log.h"  // ZR_PRINTF

// Returns the step to go on with, `step` itself to run it again, or a negative
// value when the run has failed.
int HandleFailure(int tab, int step);

// Writes the step's failure words (bounded to StepFailureText's size) and
// returns 0, the failure a handler gives back.
int FailStep(const char* format, ...) ZR_PRINTF(1, 2);
