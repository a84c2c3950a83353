#include "desktop/searchfields.h"
#include "base/text.h"

#include <stdio.h>
#include <string.h>

#include "desktop/imagesearch.h"
#include "desktop/screencapture.h"
#include "base/ui.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "base/programpath.h"

namespace {

void ReadPoint(const char* text, LONG& x, LONG& y) {
    char first[FIELD_LONG] = "", second[FIELD_LONG] = "";
    CopyIntoN(first, sizeof first, text);
    if (char* comma = strchr(first, ',')) {
        CopyInto(second, comma + 1);
        *comma = 0;
    }
    x = ParseInt(first) < 0 ? 0 : ParseInt(first);
    y = ParseInt(second) < 0 ? 0 : ParseInt(second);
}

}  // namespace

SearchFields ReadSearchFields(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    SearchFields f = {};
    TranslateText(s.value[1], tab, step);
    ReadPoint(TranslatedText, f.region.left, f.region.top);
    TranslateText(s.value[2], tab, step);
    if (!TranslatedText[0] && (f.region.left || f.region.top)) {
        f.region.right = GetSystemMetrics(SM_CXSCREEN);
        f.region.bottom = GetSystemMetrics(SM_CYSCREEN);
    } else {
        ReadPoint(TranslatedText, f.region.right, f.region.bottom);
    }
    NormalizeRect(&f.region);
    char variation[63];
    TranslateText(s.value[0], tab, step);
    CopyIntoN(variation, sizeof variation, TranslatedText);
    f.variation = ParseInt(variation);
    f.showScan = s.options[0] ? 1 : 0;
    ReadMatchSettings(tab, step, &f.percent, &f.scale);
    return f;
}

void ReadMatchSettings(int tab, int step, int* percent, int* scale) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char setting[FIELD_LONG];
    TranslateText(s.value[3], tab, step);
    CopyInto(setting, TranslatedText);
    *percent = setting[0] ? ParseInt(setting) : 100;
    if (*percent < 50) *percent = 50;
    if (*percent > 100) *percent = 100;
    TranslateText(s.value[4], tab, step);
    CopyInto(setting, TranslatedText);
    if (!setting[0]) *scale = 100;
    else if (ContainsNoCase(setting, "Common") || ContainsNoCase(setting, "All")) *scale = 0;
    else *scale = ParseInt(setting);
    if (*scale != 0 && (*scale < 25 || *scale > 400)) *scale = 100;
}

bool FindImageFile(int tab, int step, const char* name, char* file) {
    ResolveProgramPath(name, file, ScriptStore.tab[tab].path);
    if (GetFileAttributesA(file) == INVALID_FILE_ATTRIBUTES) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "The file '%s' does not exist", file);
        return false;
    }
    if (ScriptStore.tab[tab].steps[step].loops == 1) LogPrintf(OutputEdit, "\tSearching for image \"%s\"\r\n", file);
    return true;
}

bool FindImageAndSave(int tab, int step, const char* name, int* outX, int* outY, int* outWidth, int* outHeight) {
    SearchFields f = ReadSearchFields(tab, step);
    char file[MAX_PATH];
    if (!FindImageFile(tab, step, name, file)) return false;
    COLORREF mask = ContainsNoCase(ScriptStore.tab[tab].steps[step].action, "Masked") ? MASK_COLOR : NO_MASK;
    int x = 0, y = 0;
    ImageMatchOptions options;
    options.percent = f.percent;
    options.scale = f.scale;
    options.closest = ScriptStore.tab[tab].steps[step].onfail_image != 0;  // a miss frames it in the screen image
    const bool found = ImageSearchWith(file, &f.region, f.variation, mask, options, &x, &y, outWidth, outHeight,
                                       f.showScan, 0x40);
    // The step that searched, for its failure's screen image.
    LastImageMatch.tab = tab;
    LastImageMatch.step = step;
    if (!found) return false;
    if (outX) *outX = x;
    if (outY) *outY = y;
    char point[32];
    snprintf(point, sizeof point, "%d, %d", x, y);
    SaveOutput(tab, step, point, (long)strlen(point), nullptr);
    return true;
}
