// The dispatch table: which handler runs the steps of each category. It lives
// here, above the run core and every category, because it is the one place
// that must see them all; the run core only calls the table it is handed.
#include "app/dispatch.h"

#include "desktop/keyboard.h"
#include "desktop/menus.h"
#include "desktop/mouse.h"
#include "desktop/prompts.h"
#include "desktop/recordings.h"
#include "desktop/waits.h"
#include "desktop/windowstep.h"
#include "net/database.h"
#include "net/internet.h"
#include "run/flow.h"
#include "run/functions.h"
#include "run/runstate.h"
#include "system/fileactions.h"
#include "system/nativecall.h"
#include "system/runprogram.h"
#include "system/systemstep.h"

namespace {

const StepHandler kCategoryHandlers[18] = {
    nullptr,  // 0: not used (an unknown action name has category 0)
    nullptr,  // 1: not used
    RunProgramAction,  // 2 "Run Program": start programs, kill processes, services
    ActWindow,  // 3 "Windows/Controls": find windows and controls, act on them
    ActKeyboard,  // 4 "Keyboard": typing and key text
    ActMenu,  // 5 "Menu": menus of other programs
    ActMouse,  // 6 "Mouse": moves and clicks
    ActWait,  // 7 "Wait": waits for time, keys, windows, pixels, files
    ActPrompt,  // 8 "User Prompt": messages, questions, popups
    ActRecording,  // 9 "Recordings": playback of recorded input
    FileAction,  // 10 "Files/Folders": file and folder actions
    InternetAction,  // 11 "Internet": web, FTP, mail, ping
    DatabaseAction,  // 12 "Database": ODBC queries
    FlowStep,  // 13 "Loops / Flow": loops, labels, repeats, exits
    IfStep,  // 14 "IF": conditions and their jumps
    SystemStep,  // 15 "System": variables, log, clipboard, registry, session
    RunFunction,  // 16 "Functions": text and number functions
    ExternalAction,  // 17 "External Functions": DLL calls and posted commands
};

}  // namespace

void InstallStepHandlers() {
    for (int category = 0; category < 18; category++) StepHandlers[category] = kCategoryHandlers[category];
    InstallRunWorld();
}
