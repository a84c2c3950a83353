// Flow control: the handlers of categories 13 ("Loops / Flow") and 14 ("IF").
// A script is a flat list; loops, IF blocks and labels find their partners
// by scanning it, counting depth, at the moment they run.
#pragma once

// Returns the next step's index plus 1, 0 for a failure, -1 to stop the run.
int FlowStep(int tab, int step);
// Returns 1 for true, 0 for false or failure.
int IfStep(int tab, int step);
// For a false IF (or an ELSE reached from its true block): the step to go on with.
int IfJump(int tab, int step);
// The loop's Start step above `step`, and its "NEXT LOOP" below.
int LoopStart(int tab, int step);
int LoopEnd(int tab, int step);
