// The XML report of a script: its steps with their last results, an XSL
// file that shows them as a table, opened in the browser.
#pragma once

// Writes the report and its XSL file by the settings under "Report\", and
// opens it; says by message box what went wrong.
void MakeReport();
// Opens the finished report; a seam, so that tests need no browser. Returns
// 0 when nothing could be started.
extern int (*OpenReport)(const char* command);
