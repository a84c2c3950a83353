// Lines to the standard output and error of a program that is a GUI program:
// it has them only when its caller gave it some (a redirection, a pipe), and
// then they are written as they are; otherwise nothing happens.
#pragma once

// Each writes `line` and a line end.
void WriteStandardOutput(const char* line);
void WriteStandardError(const char* line);
