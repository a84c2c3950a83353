// The "Programs" menu of the properties palette: what is on the desktop and
// the common programs.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct ProgramChoice {
    std::string caption;
    std::string command;
};

// The desktop's entries (shortcuts resolved to their targets, without
// "desktop.ini"), then the common programs.
std::vector<ProgramChoice> ListPrograms();
// Shows the menu at (x, y); the chosen command, or "".
std::string ChooseProgram(HWND owner, int x, int y);
