// The editor's frame: its windows are the seam's handles (base/ui.h), and it
// installs the seam's notifications when the editor is built.
#pragma once

#include "base/ui.h"
#include "editor/palettes.h"

// Puts the frame's notifications in the seam: tab titles, the step list's
// refresh and selection, the run commands.
void InstallEditorSeam();

// The status bar's own visibility: while the frame is being made it is not
// shown yet, and IsWindowVisible would say no for a bar that will be seen.
bool StatusBarShown();
