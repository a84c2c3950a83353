// The handler of category 2 ("Run Program"): start programs and scripts,
// wait for them, kill processes, control services.
#pragma once

int RunProgramAction(int tab, int step);
