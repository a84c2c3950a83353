// What a failing step does next: its failure mode decides.
#pragma once

// Returns the step to go on with, `step` itself to run it again, or a negative
// value when the run has failed.
int HandleFailure(int tab, int step);
