#include "run/loopstack.h"

#include <string.h>

int32_t LoopStack[8][LOOP_STACK_DEPTH];
int32_t LoopCounters[8][LOOP_STACK_DEPTH];

void PushLoop(int32_t (&stack)[LOOP_STACK_DEPTH], int32_t value) {
    memmove(&stack[1], &stack[0], sizeof(int32_t) * (LOOP_STACK_DEPTH - 1));
    stack[0] = value;
}

int32_t PopLoop(int32_t (&stack)[LOOP_STACK_DEPTH]) {
    int32_t top = stack[0];
    memmove(&stack[0], &stack[1], sizeof(int32_t) * (LOOP_STACK_DEPTH - 1));
    stack[LOOP_STACK_DEPTH - 1] = 0;
    return top;
}

void ClearLoopStack(int tab) {
    if (tab >= 0 && tab < 8) memset(LoopStack[tab], 0, sizeof LoopStack[tab]);
}
