// Flow control: the IF pairing that failure handling and the IF handler share.
#pragma once

// For a false IF: the index of the step after its ELSE or END IF.
int IfJump(int tab, int step);
