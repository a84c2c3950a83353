// Steps per second of the run core on a 10,000-pass For loop around an
// "Increment Variable" step, with logging off and on, and where the time goes.
#include <windows.h>

#include "bench_clock.h"
#include <stdio.h>

#include <string>

#include "app/dispatch.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/loopstack.h"
#include "run/runstate.h"
#include "script/catalogue.h"
#include "script/scriptfile.h"
#include "base/log.h"
#include "script/step.h"

namespace {

int NoBox(HWND, const char*, const char*, UINT) { return IDOK; }

// The cost of one settings read and of one line appended to a file.
double ReadCost, AppendCost;

void MeasureCosts(const std::string& logfile) {
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Log");
    double start = Now();
    for (int i = 0; i < 2000; i++) SettingInt("Log");
    ReadCost = (Now() - start) / 2000;
    start = Now();
    for (int i = 0; i < 500; i++) AppendToFile(nullptr, logfile.c_str(), "a line of the log\r\n");
    AppendCost = (Now() - start) / 500;
    DeleteFileA(logfile.c_str());
}

void Measure(const char* label, bool logging, const std::string& logfile, double target) {
    DeleteSetting(nullptr, "SOFTWARE\\ZantoRunner");
    if (logging) {
        WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Log");
        WriteSetting(nullptr, logfile.c_str(), 0, nullptr, ZR_ROOT "Logfile");
        DeleteFileA(logfile.c_str());
    }
    ScriptStore.currentTab = 0;
    FreeSteps(0);
    std::string xml =
        "<ZantoRunner><step><action>Start 'For' Loop</action><text>10000</text></step>"
        "<step><action>Increment Variable</action><output value=\"counter\">Variable</output></step>"
        "<step><action>NEXT LOOP</action></step></ZantoRunner>";
    CurrentTab().count = ReadSteps(&xml[0], -1);
    for (auto& r : LoopStack[0]) r = 0;
    unsigned long reads = RegistryReads, opens = FileAppends;
    double start = Now();
    RunCore((LPVOID)(UINT_PTR)MakeRunArgument(0, 0, 0));
    double elapsed = Now() - start;
    long steps = 0;
    for (int i = 0; i < CurrentTab().count; i++) steps += CurrentTab().steps[i].loops;
    double rate = steps / elapsed;
    char counter[32];
    SettingText("UserVariables\\counter", counter, sizeof counter);
    double readsPerStep = (double)(RegistryReads - reads) / steps;
    double appendsPerStep = (double)(FileAppends - opens) / steps;
    double perStep = elapsed / steps;
    printf("%-12s %ld steps in %.2f s: %.0f steps/s (target %.0f: %s); counter %s\n", label, steps, elapsed, rate, target,
           rate >= target ? "met" : "NOT MET", counter);
    printf("             a step: %.0f us = %.1f registry reads (%.0f%%) + %.1f log file opens and appends (%.0f%%) + the rest\n",
           perStep * 1e6, readsPerStep, 100 * readsPerStep * ReadCost / perStep, appendsPerStep,
           100 * appendsPerStep * AppendCost / perStep);
}

}  // namespace



int main(int argc, char** argv) {
    ShowMessageBox = NoBox;
    InstallStepHandlers();
    StepFailureText = (char*)HeapAllocZero(STEP_FAILURE_TEXT_SIZE);
    FillActionsTree(nullptr);
    std::string folder = argc > 1 ? argv[1] : ".";
    MeasureCosts(folder + "\\costs.log");
    printf("== run core: a 10,000-pass For loop around Increment Variable\n");
    printf("one registry read: %.1f us; one line appended to a file (open, seek, write, close): %.1f us\n",
           ReadCost * 1e6, AppendCost * 1e6);
    Measure("logging off", false, "", 5000);
    Measure("logging on", true, folder + "\\runcore.log", 2000);
    DeleteSetting(nullptr, "SOFTWARE\\ZantoRunner");
    return 0;
}
