// The texts that translation understands, grouped as the editor's "System
// Variables" menu shows them; the script checker knows them by these lists.
#include "run/macronames.h"

// "text\tcaption" pairs separated by "|"; "-" is a separator and a text
// without a tab a heading.
const char MacroNamesRunTime[] =
    "%l\tLoop count|%ll\tLoop count, 2 digits|%llll\tLoop count, 4 digits|%e\tRepeats left|"
    "%currentstep\tCurrent step|%currentfile\tCurrent tab|%ticks\tSystem ticks|-|"
    "%mouse_x\tMouse X|%mouse_y\tMouse Y|%screen_x\tScreen width|%screen_y\tScreen height|-|"
    "%file_loop\tFiles loop: file|%file_line_loop\tFile Line loop: line|%window_loop\tWindows loop: title|"
    "%hwnd_loop\tWindows loop: handle|%data_loop\tDataset loop: row|-|"
    "%x\tRandom digit|%c\tRandom letter|%CLIPBOARD\tClipboard text|%r%n\tNew line (CR LF)|%t\tTab";
const char MacroNamesDateTime[] =
    "%yyyy\tYear (2026)|%yy\tYear (26)|%mmmm\tMonth name|%mmm\tMonth, short|%mm\tMonth (01-12)|"
    "%dddd\tWeekday name|%ddd\tWeekday, short|%dd\tDay (01-31)|-|%hh\tHour (01-12)|%uu\tHour (00-23)|"
    "%ii\tMinute|%ss\tSecond|%a\tAM or PM|-|%dd++1\tTomorrow's day|%mm--1\tLast month";
const char MacroNamesSystem[] =
    "%SYSDIR\tSystem folder|%WINDIR\tWindows folder|%CURDIR\tCurrent folder|%programfiles\tProgram Files|"
    "%path\tPATH|%WINVER\tWindows version|%LOGFILE\tLog file|%tempfile\tNew temporary file|-|"
    "%WINDOW\tCurrent window's title|%HWND\tCurrent window's handle|%WINCLASS\tCurrent window's class|"
    "%window_x\tWindow left|%window_y\tWindow top|%window_wide\tWindow width|%window_hi\tWindow height|-|"
    "%FILENAME\tScript file|%FILEBASENAME\tScript name|%FILEPATH\tScript folder|%FILEEXT\tScript extension";
