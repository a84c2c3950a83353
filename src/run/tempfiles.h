// The files that "%tempfile" makes for a run are the run's own: they are
// removed when it ends, so that a run in a loop leaves no trail of empty
// files in the temporary folder.
#pragma once

void NoteRunTempFile(const char* path);
void RemoveRunTempFiles();
