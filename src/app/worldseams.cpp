// The run engine's view of the world (run/worldseams.h), filled from the
// categories: here, above them all, as the dispatch table is.
#include "app/dispatch.h"

#include <windows.h>

#include <string>
#include <vector>

#include "base/log.h"
#include "base/ui.h"
#include "desktop/imagesearch.h"
#include "desktop/keypress.h"
#include "desktop/playbackhook.h"
#include "desktop/popups.h"
#include "desktop/prompts.h"
#include "desktop/failurescreen.h"
#include "desktop/searchfields.h"
#include "desktop/windowmatch.h"
#include "net/resultset.h"
#include "run/worldseams.h"
#include "script/step.h"
#include "system/filelines.h"

namespace {

void BeginRun() { PromptResult[0] = 0; }

void ServeStepWindows() {
    if (PopupWindows) ServeThreadWindows();
}

void ReleaseHeldKey(int32_t key) { PressKey(key, 0, KEY_UP); }

bool WindowExists(const char* title, bool framedOnly) {
    return FindWindowByCriteria(MainWindow, MATCH_TITLE, title, framedOnly ? DUMP_FRAMED : 0) != nullptr;
}

bool ControlChecked(const char* title) {
    HWND control = FindWindowByCriteria(MainWindow, MATCH_TITLE, title, 0);
    // A hung program's control is not checked, rather than a run that waits for it.
    DWORD_PTR state = 0;
    return control && SendMessageTimeoutA(control, BM_GETCHECK, 0, 0, SMTO_ABORTIFHUNG, 1000, &state) &&
           state == BST_CHECKED;
}

bool PixelVisible(int tab, int step, const char* color) {
    SearchFields f = ReadSearchFields(tab, step);
    if (ScriptStore.tab[tab].steps[step].loops == 1) LogPrintf(OutputEdit, "\tSearching for pixel color %s\r\n", color);
    int x = 0, y = 0;
    return PixelSearch(ParseColor(color), &f.region, f.variation, 0, 0, &x, &y, f.showScan, 0, 0);
}

bool ImageVisible(int tab, int step, const char* file) { return FindImageAndSave(tab, step, file); }

// A line may be as long as the file.
bool FileLine(const char* path, int line, std::string* out) {
    size_t size = GetFileSizeByName(path) + 2;
    std::vector<char> text(size < 256 ? 256 : size);
    if (!ReadFileLine(path, line, text.data(), (int)text.size())) return false;
    out->assign(text.data());
    return true;
}

bool DatasetRow(int row, std::string* out) {
    const ResultSetData& r = ResultSet;
    if (r.rows < 1 || r.columns < 1 || r.cells.empty() || row >= r.rows) return false;
    out->clear();
    for (int c = 0; c < r.columns; c++) {
        size_t at = (size_t)row * (size_t)r.columns + (size_t)c;
        *out += (at < r.cells.size() ? r.cells[at] : std::string()) + ", ";
    }
    out->resize(out->size() - 2);
    return true;
}

bool FailureScreen(const char* base, int tab, int step, char* saved, size_t size) {
    return SaveFailureScreen(base, tab, step, saved, size) != 0;
}

}  // namespace

void InstallRunWorld() {
    RunWorld.beginRun = BeginRun;
    RunWorld.serveStepWindows = ServeStepWindows;
    RunWorld.releaseKey = ReleaseHeldKey;
    RunWorld.endPlayback = ReleasePlaybackHook;
    RunWorld.windowExists = WindowExists;
    RunWorld.controlChecked = ControlChecked;
    RunWorld.pixelVisible = PixelVisible;
    RunWorld.imageVisible = ImageVisible;
    RunWorld.fileLine = FileLine;
    RunWorld.datasetRow = DatasetRow;
    RunWorld.saveFailureScreen = FailureScreen;
}
