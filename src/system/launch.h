// Starting a program from a command line, by five attempts of rising
// leniency, and waiting for it.
#pragma once

#include <stdint.h>

enum : int32_t {
    LAUNCH_FAILED = -12349,   // nothing could be started, or the command was empty
    LAUNCH_TIMEOUT = -12348,  // the program was still running when the wait ran out
    LAUNCH_STOPPED = -12347,  // the run was asked to stop while it waited
};

// Returns the program's exit code, 1 when none was waited for, or one of the
// values above. `waitMilliseconds` 0 returns once the program has settled;
// above 0 waits up to that time plus 500 ms; below 0 waits (in practice) for
// ever, until the run is stopped. Hidden programs get no window. A
// `childRun` (a run of this program) goes into the run's job, which ends it
// with the run.
int32_t LaunchProgram(const char* commandLine, int visible, int32_t waitMilliseconds, bool childRun = false);
