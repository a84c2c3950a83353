// "/check": the script checker on the command line.
#pragma once

// Loads `path` as a run would, runs no step, prints each finding on standard
// output as "<file>(<step>): <severity>: <message>" and then
// "N problem(s), M warning(s)". Returns 0 with no finding, 1 with warnings
// only, 2 with problems, and 3830 when the file cannot be loaded.
int RunCheckCommand(const char* path, bool unattended);
