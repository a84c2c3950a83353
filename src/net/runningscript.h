// The guard of every download: the script that runs is never its target.
#pragma once

// Whether `target` names the file of the script that runs in `tab`, by
// identity, whatever its spelling; if so the step's words say that writing
// there is refused. A download onto the running script would replace the
// steps under the run.
bool RefuseRunningScript(int tab, const char* target);
