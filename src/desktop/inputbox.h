// A free-standing input window for the editor's own questions.
#pragma once

#include <windows.h>

#include <string>

// Asks for one line under `title` with `prompt`, starting from `text`. Returns
// 1 for OK (with `text` set to what was typed) and 0 for Cancel or a closed
// window. With `closeOnly` there is one "&Close" button.
int InputBox(HWND owner, const char* title, const char* prompt, std::string& text, bool closeOnly = false);
