// Acting on a found window: activating it against the foreground rules,
// pressing a control, closing by rising force.
#pragma once

#include <windows.h>

enum {
    KIND_OTHER = 0,
    KIND_LABEL = 1,      // "Static", or a group box
    KIND_EDIT = 2,
    KIND_COMBOBOX = 3,
    KIND_AUTORADIO = 4,  // a button with (style & 9) == 9
    KIND_AUTOCHECK = 5,  // a button with (style & 3) == 3
    KIND_BUTTON = 6,
    KIND_LISTBOX = 7,
    KIND_SCROLLBAR = 8,
    KIND_MULTILINE_EDIT = 9,
};

// How long a window of another program is given to answer a message the run
// waits on; a hung one (no message taken for 5 seconds) is given up at once.
const UINT kAnswerMs = 1000;

// SendMessageTimeoutA that gives up on a hung window and after `limitMs`:
// false when the window did not answer. `result` may be null; for
// WM_GETTEXTLENGTH it is a length that the ANSI text does not pass.
bool SendWithin(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT limitMs = kAnswerMs,
                DWORD_PTR* result = nullptr);
// A window's text (at most size - 1 bytes), "" when it does not answer
// within `limitMs`: a reader that must not hang on a busy program.
void WindowTextWithin(HWND window, char* out, size_t size, UINT limitMs = kAnswerMs);
// Whether the window belongs to this process.
bool InThisProcess(HWND window);
// Whether the window's thread takes messages: the calls that act on a
// window of another thread (showing, moving, enabling it) wait for it.
bool WindowAnswers(HWND window, UINT limitMs = kAnswerMs);

int ControlKind(HWND window);
// The next tab stop after a label, or the window itself.
HWND SkipStaticControl(HWND window);
// Activates a window even when the system's foreground rules would refuse.
// A window that does not answer is left alone: activating it would wait on it.
void ForceForeground(HWND window);
// Moves the pointer to a control and presses it; returns the control pressed.
HWND PressControl(HWND window);
// The smallest visible sibling under a screen point (finds a control inside a
// group box).
HWND SmallestWindowAtPoint(POINT point);
// WM_CLOSE, then the process's end, a posted close, DestroyWindow and Alt+F4,
// each only while the window is still there. Always true. This is the close
// of the option "Force": it ends a program that is asking to save.
int CloseWindowForcibly(HWND window, int timeoutMs);

// The enabled, visible window through which the window's program asks
// something while the window itself is disabled (a modal box or dialog): a
// top-level window the window owns, or one of its thread. Null when there is
// none; a modeless window it owns asks nothing.
HWND QuestionOf(HWND window);

enum CloseOutcome {
    CLOSE_DONE,     // the window went
    CLOSE_ENDED,    // its program did not answer (hung) and was ended
    CLOSE_ASKING,   // the program answers and puts a question: left as it is
    CLOSE_REFUSED,  // the program answers and keeps the window open
};
// Asks a window to close and waits up to `timeoutMs` (at least 250) for it
// to go. Only a program that does not answer messages at all (hung) is
// ended by force; one that answers is never forced. A question it puts up,
// or had up already (then it is not asked again), goes to `*question`.
CloseOutcome CloseWindowPolitely(HWND window, int timeoutMs, HWND* question);
