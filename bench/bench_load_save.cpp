// Load and save of long scripts, as a hidden run does them (no settings in
// the registry). Prints the time of each and the peak memory of the process
// against the size of the loaded step array.
//
//   bench_load_save.exe STEPS FOLDER [CHUNK]
#include <windows.h>

#include "bench_clock.h"
#include <psapi.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "base/settings.h"
#include "base/ui.h"
#include "script/catalogue.h"
#include "script/scriptfile.h"
#include "script/step.h"

namespace {

size_t PeakMemory() {
    PROCESS_MEMORY_COUNTERS pmc = {};
    pmc.cb = sizeof pmc;
    GetProcessMemoryInfo(GetCurrentProcess(), &pmc, sizeof pmc);
    return pmc.PeakWorkingSetSize;
}

int NoBox(HWND, const char*, const char*, UINT) { return IDOK; }

// A script of typical steps: several fields each, a comment now and then.
std::string MakeScript(int steps) {
    static const char* const kActions[] = {"Activate", "Type", "Left Button Click", "Delay", "IF Window Exists",
                                           "Write to Log", "Create/Set Variable", "END IF"};
    std::string xml = "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n";
    char step[1024];
    for (int i = 0; i < steps; i++) {
        snprintf(step, sizeof step,
                 "<step>\r\n\t<action>%s</action>\r\n\t<text>Untitled - Notepad %d &amp; more</text>\r\n"
                 "\t<options>Title, Class</options>\r\n\t<value1>%d</value1>\r\n\t<value2>Edit</value2>\r\n"
                 "\t<timeout>5</timeout>\r\n\t<output value=\"result%d\">Variable</output>\r\n%s</step>\r\n",
                 kActions[i % 8], i, i * 7, i % 10, i % 5 == 0 ? "\t<comment>Check the window first</comment>\r\n" : "");
        xml += step;
    }
    return xml + "</ZantoRunner>";
}

}  // namespace

int main(int argc, char** argv) {
    int steps = argc > 1 ? atoi(argv[1]) : 10000;
    std::string folder = argc > 2 ? argv[2] : ".";
    ShowMessageBox = NoBox;
    DeleteSetting(nullptr, "SOFTWARE\\ZantoRunner");
    if (argc > 3) WriteSetting(nullptr, nullptr, atoi(argv[3]), nullptr, ZR_ROOT "MemoryAllocationChunk");
    FillActionsTree(nullptr);

    std::string path = folder + "\\bench_" + std::to_string(steps) + ".zxm";
    {
        std::string xml = MakeScript(steps);
        FILE* f = fopen(path.c_str(), "wb");
        fwrite(xml.data(), 1, xml.size(), f);
        fclose(f);
    }
    size_t before = PeakMemory();
    double t0 = Now();
    int loaded = OpenScript(path.c_str(), 0);
    double t1 = Now();
    size_t afterLoad = PeakMemory();
    lstrcpyA(CurrentTab().path, (path + ".saved").c_str());
    int saved = SaveScript(0, nullptr);
    double t2 = Now();
    size_t afterSave = PeakMemory();
    double arrayMiB = (double)loaded * sizeof(Step) / 1048576.0;
    printf("%7d steps: load %8.1f ms, save %8.1f ms | step array %7.1f MiB, peak growth load %7.1f MiB (%.2fx),"
           " save %7.1f MiB (%.2fx)%s\n",
           steps, (t1 - t0) * 1000, (t2 - t1) * 1000, arrayMiB, (afterLoad - before) / 1048576.0,
           (afterLoad - before) / 1048576.0 / arrayMiB, (afterSave - before) / 1048576.0,
           (afterSave - before) / 1048576.0 / arrayMiB, loaded == steps && saved ? "" : "  (FAILED)");
    DeleteFileA(path.c_str());
    DeleteFileA((path + ".saved").c_str());
    return loaded == steps && saved ? 0 : 1;
}
