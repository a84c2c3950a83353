// The handler of category 15 ("System").
#pragma once

int SystemStep(int tab, int step);
