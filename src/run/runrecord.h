// The record of one run for the result files a scheduler or a CI server
// reads (JUnit, JSON, the HTML report): when it ran, the steps it ran, its
// failures, its log and the variables it wrote. Kept only when asked for.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct RecordedStep {
    int number;  // one-based
    std::string action, text;
    unsigned milliseconds;
    int lastRun;  // the step's last_run when it ended
};

struct RecordedFailure {
    int step;  // one-based
    std::string action, words, image;
};

struct RunRecordData {
    bool on = false;
    bool captureFailures = false;  // a screen image at every failure, also without onfail_image
    std::string script;
    std::string imageFolder;  // where failure images go; "" for beside the log
    std::string scratchFolder;  // where images made only for the report go (removed after it)
    std::string logFile;      // a copy of every log line goes here as it is written; "" for none
    FILETIME start = {}, end = {};  // UTC
    int stepsRun = 0;
    size_t stepsLeftOut = 0;  // rows past the table's limit
    std::vector<RecordedStep> steps;
    std::vector<RecordedFailure> failures;
    std::string log;
    bool logCut = false;
    struct Variable {
        std::string name, key;
    };
    std::vector<Variable> variables;  // the run wrote them, in the order first written
};
extern RunRecordData RunRecord;

// Turns the record on for a run of `script`, from now.
void StartRunRecord(const char* script);
// A step begins (also again, for a retry): the step before it ends here.
void RecordStepBegun(int tab, int step);
// The run ends: its last step ends.
void RecordRunEnded(int tab);
void RecordFailure(int step, const char* action, const char* words, const char* image);
// A user variable the run wrote: its name, and its key under UserVariables
// (the local prefix and the name).
void RecordVariableWritten(const char* prefix, const char* name);

// The record is written by the run thread and read by whoever writes the
// result files, which may be the time limit's watch while the run thread
// is still in a step. A reader holds it for the time of reading; a holder
// that never lets go (a run thread let go inside a log line) is waited for
// one second, and then the reader goes on without it.
void LockRunRecord();
void UnlockRunRecord();

// Writes the result files once, with the process's exit code. The entry
// installs it; ProcessLastWords calls it.
extern void (*RunResultsWriter)(int exitCode);
