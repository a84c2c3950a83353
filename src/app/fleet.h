// The results of a run for a fleet: what /junit, /json, /report, /params and
// /artifacts ask of the run, prepared before it and written when it ends.
#pragma once

// Prepares the run's record, its folder of artefacts and the word for child
// runs, when the command line asked for a result (or this is a child run of
// a run that did). Call it with the script's path before the window exists.
void PrepareRunResults(const char* script);
// What must hold before the script loads: the line's switches were whole,
// and the parameters file was read into variables. False when the load
// must fail; the reason was shown (or, unattended, reported) as a box.
bool ReadRunParameters();
// Writes the result files of a script that could not be loaded.
void WriteLoadFailureResults(int exitCode);
