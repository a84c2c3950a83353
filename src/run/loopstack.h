// The per-tab loop stacks: 16 entries each, entry 0 the top. A push moves the
// first 15 entries down (the bottom one is lost); a pop moves 15 up and clears
// the last.
#pragma once

#include <stdint.h>

enum { LOOP_STACK_DEPTH = 16 };

extern int32_t LoopStack[8][LOOP_STACK_DEPTH];     // step index + 1 of a loop's Start step
extern int32_t LoopCounters[8][LOOP_STACK_DEPTH];  // passes completed by that loop

void PushLoop(int32_t (&stack)[LOOP_STACK_DEPTH], int32_t value);
int32_t PopLoop(int32_t (&stack)[LOOP_STACK_DEPTH]);
// Clears a tab's LoopStack at the start of a whole run; the counters stay.
void ClearLoopStack(int tab);
