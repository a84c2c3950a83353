// Window Spy (Tools menu): a small palette that follows the pointer and shows
// what the window search would see of the window under it, so that a user can
// tell, while pointing at a control, what a step must say to find it. Its
// buttons copy the criteria text, put it into the selected step, or save the
// control's picture beside the script.
#pragma once

#include <windows.h>
#include <stddef.h>

#include <string>

// What the spy read under the pointer last.
struct SpyReading {
    HWND window;  // the window under the pointer
    HWND top;     // its top-level window
    POINT screen, inWindow, inClient;
    char title[260];
    char cls[64];
    int id;
    long long user;
    DWORD pid;
    char program[MAX_PATH];
    char text[260];  // the control's own text, as WM_GETTEXT gives it
    RECT windowRect;  // on the screen
    RECT clientRect;  // the client area, on the screen
    COLORREF colour;  // the screen's pixel under the pointer
    char criteria[300];  // what FindWindowByCriteria resolves to `window` alone; empty if nothing does
    char options[32];    // the options words that select the criteria's fields
};

extern HWND SpyPalette;
extern SpyReading SpyNow;
extern bool SpyFrozen;

// Opens the palette, or brings it forward when it is open.
int CommandWindowSpy(HWND owner);
// Reads the window under the pointer (unless frozen) and shows it: what the
// palette's timer does.
void RefreshWindowSpy();
// The freeze key: the palette keeps what it shows until pressed again.
void ToggleSpyFreeze();
// The lines the palette shows for a reading.
std::string SpyFieldsText(const SpyReading& r);
// "Copy criteria": false when nothing finds the window alone.
bool SpyCopyCriteria();
// "Use in step": writes the criteria into the selected step's match row and
// its options words, as one change Undo takes back. False when the selected
// step finds no window by criteria, or there are no criteria.
bool SpyUseInStep();
// "Capture picture": the window's picture as a PNG file in the script's
// folder, named after the control; an image step selected takes its name.
// False for a script never saved or a failed write.
bool SpyCapturePicture(char* saved, size_t size);
