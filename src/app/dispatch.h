// The dispatch table of the step loop: category to handler.
#pragma once

// Hands the run core the handler of every category (StepHandlers).
// Also fills the run engine's view of the categories (RunWorld).
void InstallStepHandlers();

// Fills RunWorld (run/worldseams.h) from the categories.
void InstallRunWorld();
