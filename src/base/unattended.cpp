#include "base/unattended.h"

#include <string.h>

#include <string>

#include "base/log.h"
#include "base/ui.h"

bool UnattendedRun;
volatile LONG UnattendedBoxFailed;

namespace {

// The longest text of a box that is written out; the rest is cut.
const size_t kShownText = 900;

std::string OneLine(const char* text) {
    std::string line(text ? text : "");
    if (line.size() > kShownText) line.resize(kShownText);
    for (char& c : line)
        if (c == '\r' || c == '\n') c = ' ';
    return line;
}

}  // namespace

void ReportUnshownBox(const char* title, const char* text) {
    std::string line = "Unattended: " + OneLine(title) + ": " + OneLine(text);
    LogPrintf(OutputEdit, "\t%s\r\n", line.c_str());
    WriteStandardError(line.c_str());
}

int StoppingAnswer(const char* title, UINT flags) {
    switch (flags & MB_TYPEMASK) {
    case MB_OKCANCEL:
        // The one question whose OK is the stop: "force it to stop?"
        return title && strcmp(title, "Stop Process") == 0 ? IDOK : IDCANCEL;
    case MB_ABORTRETRYIGNORE: return IDABORT;
    case MB_YESNO: return IDNO;
    case MB_YESNOCANCEL:
    case MB_RETRYCANCEL:
    case MB_CANCELTRYCONTINUE: return IDCANCEL;
    default: return IDOK;
    }
}

int UnattendedMessageBox(HWND, const char* text, const char* title, UINT flags) {
    ReportUnshownBox(title, text);
    const UINT icon = flags & MB_ICONMASK;
    const bool okOnly = (flags & MB_TYPEMASK) == MB_OK;
    // The failure mode's own box says what the mode does next ("Display
    // Error and Continue" goes on); any other error nobody read ends the run.
    if (okOnly && (icon == MB_ICONERROR || icon == MB_ICONWARNING) && !(title && strcmp(title, "Run Failure") == 0))
        UnattendedBoxFailed = 1;
    return StoppingAnswer(title, flags);
}
