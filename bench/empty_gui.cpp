// The yardstick of the start-up benchmark: a Win32 GUI program that returns
// at once.
#include <windows.h>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) { return 0; }
