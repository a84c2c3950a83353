// Recording as steps: low-level keyboard and mouse hooks watch what the user
// does in other programs, and what they saw is turned into the ordinary steps
// a person would have written (Activate, Press Button/Control, Type, Select
// Menu Item, Wait for Window to Appear, a click relative to a window).
//
// The hooks live on a thread of their own, which pumps messages as low-level
// hooks need. What a click aimed at is worked out inside the hook, while the
// window is certainly still there: a click that closes a window would leave
// nothing to look at afterwards.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// What a click landed on, with the criteria that find it again.
enum {
    CLICK_AT_POINT = 0,    // no control of its own: a click relative to the window
    CLICK_PRESS = 1,       // "Press Button/Control"
    CLICK_LIST_ITEM = 2,   // "Move to Control" and a click at an offset from its centre
    CLICK_MENU_ITEM = 3,   // an item of a readable menu: "Select Menu Item"
    CLICK_MENU_OPEN = 4,   // a click a readable menu took without choosing (opened a level): nothing of its own
};

struct StepEvent {
    int kind;             // 1 click, 2 key
    HWND top;             // the top-level window it went to
    char title[260];      // that window's title, whole
    bool newWindow;       // the top-level window was not there when recording began
    // a click
    int click;            // CLICK_...
    bool onControl;       // it landed on a child window (a control of its own)
    HWND target;          // the window under the pointer
    POINT pt;             // the screen point
    char cls[64];
    int id;
    char text[128];       // the control's text, ampersands removed
    char criteria[300];   // the criteria text that FindWindowByCriteria resolves to the control
    char options[32];     // the criteria words for the options field
    bool unchecked;       // the control closed before the search could be tried on it
    POINT inWindow;       // the point relative to the top-level window's upper left corner
    POINT fromCentre;     // the point relative to the control's centre
    char menuPath[260];   // CLICK_MENU_ITEM, or a key's MENU_CHOSEN: "File;Save As"
    // a key
    int vk;
    bool shift, ctrl, alt;
    bool menuOpen;        // a popup menu was showing when the key came
    int menuKey;          // MENU_UNREAD, MENU_MOVE or MENU_CHOSEN (desktop/menuchoice.h)
    HWND focus;           // the control with the keyboard focus
    char focusClass[64];
    int focusId;
};

struct RecordedStep {
    char action[64];
    std::string text;
    char options[64];
    char value1[64];
    char timeout[16];
    std::string comment;
};

// The criteria text, and the options words that select its fields, that the
// window search (passing over the windows of `own`) resolves to `control`
// alone: by class and ID, else by the control's text and class, else by all
// three. False when none of them names it alone.
bool ControlCriteria(HWND own, HWND control, char* criteria, size_t size, char* options, size_t optionsSize);

// Starts the hooks. Input to windows of the thread of `notify` (the
// editor's) is left out, as is everything while a script runs; the stop
// key (StopKey) ends the recording by posting `doneMessage` with `doneParam`
// to `notify`. False when a recording runs already or a hook was refused.
bool StartStepRecorder(HWND notify, UINT doneMessage, WPARAM doneParam);
// Removes the hooks and hands over what was seen since the start.
std::vector<StepEvent> StopStepRecorder();
bool StepRecorderRunning();

// The events of one recording turned into steps, each with a comment that
// says what was recorded.
std::vector<RecordedStep> StepsFromEvents(const std::vector<StepEvent>& events);

// The text of one key for a "Type" step: the character, or the {key} name,
// with Ctrl and Alt held down around it.
std::string KeyAsTypeText(int vk, bool shift, bool ctrl, bool alt);

// How many clicks landed on controls with windows of their own, and how
// many of them became control steps rather than points.
void CountControlClicks(const std::vector<StepEvent>& events, int* onControls, int* asControlSteps);
