// Load and save of long scripts, as a hidden run does them (no settings in
// the registry). Prints the time of each and the peak memory of the process
// against the size of the loaded step array.
//
//   bench_load_save.exe STEPS FOLDER [CHUNK]
//   bench_load_save.exe entities FOLDER   1 MB of entities and 1 MB of empty
//                                          comments: the load in MB/s
#include <windows.h>

#include "bench_clock.h"
#include <psapi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

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

void WriteText(const std::string& path, const std::string& text) {
    FILE* f = fopen(path.c_str(), "wb");
    fwrite(text.data(), 1, text.size(), f);
    fclose(f);
}

// Loading at file speed: the long script and the entity-heavy one.
const double kTargetRate = 150.0;

// The user and the kernel time of this thread so far, in seconds. A load's
// kernel time is almost all the faults of the new pages it fills: under Wine
// on a virtual machine each is a fault in the guest and often one in the
// host, which makes it the larger and by far the noisier part of a long
// load. Its user time is the reading.
void ThreadTimes(double& user, double& kernel) {
    FILETIME created, exited, k, u;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &k, &u);
    auto seconds = [](const FILETIME& t) { return (double)(((ULONGLONG)t.dwHighDateTime << 32) | t.dwLowDateTime) / 1e7; };
    user = seconds(u);
    kernel = seconds(k);
}

double MegabytesPerSecond(size_t bytes, double seconds) { return seconds > 0 ? bytes / 1e6 / seconds : 0; }

// A text full of what the reader must decode or strip: 1 MB of "&amp;" in
// one step's comment, and 1 MB of empty comments between two steps.
int LoadEntityHeavy(const std::string& folder) {
    std::string xml = "<?xml version=\"1.0\" ?>\r\n<ZantoRunner>\r\n<step><action>Comment</action><comment>";
    for (int i = 0; i < 200000; i++) xml += "&amp;";
    xml += "</comment></step>\r\n";
    for (int i = 0; i < 142858; i++) xml += "<!---->";
    xml += "<step><action>Delay</action><timeout>1</timeout></step>\r\n</ZantoRunner>";
    std::string path = folder + "\\bench_entities.zxm";
    WriteText(path, xml);
    double t0 = Now();
    int loaded = OpenScript(path.c_str(), 0);
    double t1 = Now();
    const double rate = MegabytesPerSecond(xml.size(), t1 - t0);
    printf("%.1f MB entity- and comment-heavy script: load %8.1f ms, %6.1f MB/s (target %.0f MB/s: %s)%s\n",
           xml.size() / 1e6, (t1 - t0) * 1000, rate, kTargetRate, rate >= kTargetRate ? "met" : "missed",
           loaded == 2 ? "" : "  (FAILED)");
    DeleteFileA(path.c_str());
    return loaded == 2 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    std::string folder = argc > 2 ? argv[2] : ".";
    ShowMessageBox = NoBox;
    if (argc > 1 && strcmp(argv[1], "entities") == 0) {
        DeleteSetting(nullptr, "SOFTWARE\\ZantoRunner");
        FillActionsTree(nullptr);
        return LoadEntityHeavy(folder);
    }
    int steps = argc > 1 ? atoi(argv[1]) : 10000;
    DeleteSetting(nullptr, "SOFTWARE\\ZantoRunner");
    if (argc > 3) WriteSetting(nullptr, nullptr, atoi(argv[3]), nullptr, ZR_ROOT "MemoryAllocationChunk");
    FillActionsTree(nullptr);

    std::string path = folder + "\\bench_" + std::to_string(steps) + ".zxm";
    const std::string xml = MakeScript(steps);
    WriteText(path, xml);
    size_t before = PeakMemory();
    double user0, kernel0, user1, kernel1;
    ThreadTimes(user0, kernel0);
    double t0 = Now();
    int loaded = OpenScript(path.c_str(), 0);
    double t1 = Now();
    ThreadTimes(user1, kernel1);
    size_t afterLoad = PeakMemory();
    lstrcpyA(CurrentTab().path, (path + ".saved").c_str());
    int saved = SaveScript(0, nullptr);
    double t2 = Now();
    size_t afterSave = PeakMemory();
    double arrayMiB = (double)loaded * sizeof(Step) / 1048576.0;
    printf("%7d steps (%5.1f MB): load %8.1f ms (%6.1f MB/s), save %8.1f ms | step array %7.1f MiB, peak growth load %7.1f MiB (%.2fx),"
           " save %7.1f MiB (%.2fx)%s\n",
           steps, xml.size() / 1e6, (t1 - t0) * 1000, MegabytesPerSecond(xml.size(), t1 - t0), (t2 - t1) * 1000, arrayMiB, (afterLoad - before) / 1048576.0,
           (afterLoad - before) / 1048576.0 / arrayMiB, (afterSave - before) / 1048576.0,
           (afterSave - before) / 1048576.0 / arrayMiB, loaded == steps && saved ? "" : "  (FAILED)");
    if (steps >= 100000) {
        const double rate = MegabytesPerSecond(xml.size(), t1 - t0);
        printf("        the %d-step load at %.1f MB/s (target %.0f MB/s: %s)\n", steps, rate, kTargetRate,
               rate >= kTargetRate ? "met" : "missed");
        // The records (3.3 KB each) and the text blocks (content + 1025
        // bytes) are sizes the script format's readers rely on: the pages
        // they fill are a cost no reading can go under.
        printf("        of that, the reading (user time) %.0f ms = %.1f MB/s; the system (kernel time, mostly the first"
               " touch of %.0f MiB of new pages) %.0f ms\n",
               (user1 - user0) * 1000, user1 > user0 ? MegabytesPerSecond(xml.size(), user1 - user0) : 0.0,
               (afterLoad - before) / 1048576.0, (kernel1 - kernel0) * 1000);
    }
    DeleteFileA(path.c_str());
    DeleteFileA((path + ".saved").c_str());
    return loaded == steps && saved ? 0 : 1;
}
