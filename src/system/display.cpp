#include "system/display.h"

#include <stdio.h>

#include "base/ui.h"
#include "run/translate.h"
#include "script/step.h"
#include "base/words.h"

int SetDisplayMode(int kind, int width, int height, int depth, int frequency) {
    LONG result;
    if (kind == DISPLAY_RESTORE || width < 1 || height < 1) {
        result = ChangeDisplaySettingsA(nullptr, 0);
    } else {
        DEVMODEA mode = {};
        mode.dmSize = sizeof mode;
        mode.dmPelsWidth = (DWORD)width;
        mode.dmPelsHeight = (DWORD)height;
        mode.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;
        if (depth > 0) {
            mode.dmBitsPerPel = (DWORD)depth;
            mode.dmFields |= DM_BITSPERPEL;
        }
        if (frequency > 0) {
            mode.dmDisplayFrequency = (DWORD)frequency;
            mode.dmFields |= DM_DISPLAYFREQUENCY;
        }
        DWORD flags = kind == DISPLAY_TEST ? CDS_TEST : kind == DISPLAY_KEEP ? CDS_UPDATEREGISTRY : 0;
        result = ChangeDisplaySettingsA(&mode, flags);
    }
    if (result == DISP_CHANGE_SUCCESSFUL) return 1;
    if (result == DISP_CHANGE_RESTART) return -1;
    return 0;
}

std::vector<std::string> ListDisplayModes() {
    std::vector<std::string> modes;
    std::vector<DEVMODEA> seen;
    DEVMODEA mode = {};
    mode.dmSize = sizeof mode;
    for (DWORD i = 0; modes.size() < 256 && EnumDisplaySettingsA(nullptr, i, &mode); i++) {
        bool again = false;
        for (const DEVMODEA& s : seen)
            again = again || (s.dmPelsWidth == mode.dmPelsWidth && s.dmPelsHeight == mode.dmPelsHeight &&
                               s.dmBitsPerPel == mode.dmBitsPerPel && s.dmDisplayFrequency == mode.dmDisplayFrequency);
        if (again) continue;
        seen.push_back(mode);
        char text[96];
        snprintf(text, sizeof text, "%lux%lu, %lu Bit, %lu Hz", (unsigned long)mode.dmPelsWidth,
                 (unsigned long)mode.dmPelsHeight, (unsigned long)mode.dmBitsPerPel,
                 (unsigned long)mode.dmDisplayFrequency);
        modes.push_back(text);
    }
    return modes;
}

int VideoDisplayStep(int tab, int step) {
    TranslateText(ScriptStore.tab[tab].steps[step].text, tab, step);
    std::string text = TranslatedText;
    // The palette's wordings, in what the reading below takes.
    static const char* const wordings[][2] = {{"16 Colors", "4 Bit"},
                                              {"256 Colors", "8 Bit"},
                                              {"High Color (16 Bit)", "16 Bit"},
                                              {"True Color (32 Bit)", "32 Bit"}};
    for (const auto& w : wordings)
        for (size_t at = text.find(w[0]); at != std::string::npos; at = text.find(w[0]))
            text.replace(at, strlen(w[0]), w[1]);
    size_t x = text.find('x');
    std::string width = text.substr(0, x);
    std::string rest = x == std::string::npos ? "" : text.substr(x + 1);
    size_t comma = rest.find(',');
    std::string height = rest.substr(0, comma);
    std::string tail = comma == std::string::npos ? "" : rest.substr(comma + 1);
    size_t second = tail.find(',');
    std::string depth = tail.substr(0, second);
    std::string frequency = second == std::string::npos ? "" : tail.substr(second + 1);
    if (SetDisplayMode(DISPLAY_KEEP, ParseInt(width.c_str()), ParseInt(height.c_str()), ParseInt(depth.c_str()),
                       ParseInt(frequency.c_str())) == -1)
        RunMessageBox("The computer must be restarted to activate the change in the video display mode.",
                      "System Message", MB_OK);
    return 1;  // a display that refuses the mode does not fail the step
}
