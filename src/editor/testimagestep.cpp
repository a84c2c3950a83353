// Tools > "Test Image Step": runs only the search of the selected image step
// on the screen as it is, without running the script: the editor steps out
// of the way (minimised) while the screen is read, the outcome goes to the
// Output palette as the step would log it, and the screen comes back as a
// picture with the search region and the place found, or the closest miss,
// framed. A click on the picture closes it.
#include <windows.h>
#include <string.h>

#include "base/log.h"
#include "base/text.h"
#include "base/ui.h"
#include "base/words.h"
#include "desktop/imagesearch.h"
#include "desktop/popups.h"
#include "desktop/failurescreen.h"
#include "desktop/searchfields.h"
#include "editor/commands.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "script/step.h"

int CommandTestImageStep(HWND window) {
    const int tab = ScriptStore.currentTab, step = SelectedStepRow();
    const TabStore& t = ScriptStore.tab[tab];
    if (step < 0 || step >= t.count || !ContainsNoCase(t.steps[step].action, "Image") ||
        ContainsNoCase(t.steps[step].action, "Capture") || ContainsNoCase(t.steps[step].action, "Display")) {
        RunMessageBox("Select a step that finds an image (Move to Image, Click on Image, Wait for Image to Appear, "
                      "IF Image is Visible) first.",
                      "Test Image Step", MB_OK | MB_ICONINFORMATION);
        return 0;
    }
    SearchFields f = ReadSearchFields(tab, step);
    TranslateText(t.steps[step].text, tab, step);
    char name[MAX_PATH], file[MAX_PATH];
    CopyInto(name, TranslatedText);
    StepFailureText[0] = 0;
    if (!FindImageFile(tab, step, name, file)) {
        RunMessageBox(StepFailureText, "Test Image Step", MB_OK | MB_ICONWARNING);
        StepFailureText[0] = 0;
        return 0;
    }
    LogPrintf(OutputEdit, "Test Image Step [Step %d]: %s\r\n", step + 1, file);
    ImageMatchOptions options;
    options.percent = f.percent;
    options.scale = f.scale;
    options.closest = true;
    const COLORREF mask = ContainsNoCase(t.steps[step].action, "Masked") ? MASK_COLOR : NO_MASK;
    // The editor out of the way while the screen is read.
    const bool shown = IsWindowVisible(window) && !IsIconic(window);
    if (shown) {
        ShowWindow(window, SW_MINIMIZE);
        UpdateWindow(GetDesktopWindow());
        Sleep(300);
    }
    int x = 0, y = 0;
    const bool found = ImageSearchWith(file, &f.region, f.variation, mask, options, &x, &y, nullptr, nullptr, 0, 0);
    const ImageMatchReport& m = LastImageMatch;
    if (found) {
        const int score = ScorePermille(m.best);
        LogPrintf(OutputEdit, "\t*Found at (%d, %d)  Scale: %d%%  Score: %d.%d%%\r\n", x, y, m.scale, score / 10,
                  score % 10);
    } else if (StepFailureText[0]) {
        LogPrintf(OutputEdit, "\t%s\r\n", StepFailureText);
    } else if (m.compared && m.best.compared > 0) {
        const int score = ScorePermille(m.best);
        LogPrintf(OutputEdit, "\t*Not found: best candidate at (%d, %d)  Scale: %d%%  Score: %d.%d%%\r\n", m.best.x,
                  m.best.y, m.scale, score / 10, score % 10);
    }
    char picture[MAX_PATH + 32] = "";
    char folder[MAX_PATH];
    if (m.compared && GetTempPathA(sizeof folder, folder)) {
        FormatInto(picture, "%sZantoRunner test image step.png", folder);
        if (!SaveFramedScreen(picture)) picture[0] = 0;
    }
    if (shown) ShowWindow(window, SW_RESTORE);
    if (picture[0]) ShowImagePopup(picture, 0, 0, WS_BORDER, nullptr);
    StepFailureText[0] = 0;
    return found ? 1 : 0;
}
