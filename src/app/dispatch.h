// The dispatch table of the step loop: category to handler.
#pragma once

// Hands the run core the handler of every category (StepHandlers).
void InstallStepHandlers();
