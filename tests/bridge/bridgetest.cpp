// A library for the native bridge's tests: stdcall and cdecl functions that
// return 1000 times their count of arguments plus the sum of them. The bridge
// calls a function of six arguments or more only by a shape it knows, so
// those are named after system functions of that many arguments: stdcall
// MoveWindow (6), SetWindowPos (7), ScrollWindowEx (8); cdecl ToUnicode (6)
// and TrackPopupMenu (7). AngleArc takes two FLOATs where the system's has
// them.
#include <stdint.h>

#define ZR_EXPORT extern "C" __declspec(dllexport)
typedef intptr_t n;

ZR_EXPORT n __stdcall Std0() { return 0; }
ZR_EXPORT n __stdcall Std1(n a) { return 1000 + a; }
ZR_EXPORT n __stdcall Std2(n a, n b) { return 2000 + a + b; }
ZR_EXPORT n __stdcall Std3(n a, n b, n c) { return 3000 + a + b + c; }
ZR_EXPORT n __stdcall Std4(n a, n b, n c, n d) { return 4000 + a + b + c + d; }
ZR_EXPORT n __stdcall Std5(n a, n b, n c, n d, n e) { return 5000 + a + b + c + d + e; }
ZR_EXPORT n __stdcall MoveWindow(n a, n b, n c, n d, n e, n f) { return 6000 + a + b + c + d + e + f; }
ZR_EXPORT n __stdcall SetWindowPos(n a, n b, n c, n d, n e, n f, n g) { return 7000 + a + b + c + d + e + f + g; }
ZR_EXPORT n __stdcall ScrollWindowEx(n a, n b, n c, n d, n e, n f, n g, n h) { return 8000 + a + b + c + d + e + f + g + h; }

ZR_EXPORT n __cdecl Cdecl0() { return 0; }
ZR_EXPORT n __cdecl Cdecl1(n a) { return 1000 + a; }
ZR_EXPORT n __cdecl Cdecl2(n a, n b) { return 2000 + a + b; }
ZR_EXPORT n __cdecl Cdecl3(n a, n b, n c) { return 3000 + a + b + c; }
ZR_EXPORT n __cdecl Cdecl4(n a, n b, n c, n d) { return 4000 + a + b + c + d; }
ZR_EXPORT n __cdecl Cdecl5(n a, n b, n c, n d, n e) { return 5000 + a + b + c + d + e; }
ZR_EXPORT n __cdecl ToUnicode(n a, n b, n c, n d, n e, n f) { return 6000 + a + b + c + d + e + f; }
ZR_EXPORT n __cdecl TrackPopupMenu(n a, n b, n c, n d, n e, n f, n g) { return 7000 + a + b + c + d + e + f + g; }

// Named after the system function with FLOAT arguments that the bridge knows,
// so that a call of this library's "AngleArc" takes the same shape.
ZR_EXPORT n __stdcall AngleArc(n, n, n, n, float start, float sweep) { return (n)(start + sweep); }
