// The result files of a run that a fleet reads: a JUnit XML result (the
// format CI servers show as tests), one JSON object for schedulers and
// dashboards, and the small JSON case a "Call Script" child leaves for its
// parent's JUnit file.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "run/runrecord.h"

// What the entry knows of the run beyond its record.
struct RunSummary {
    std::string name;     // the script's name without folder and extension
    std::string machine, user;
    std::string outcome;  // "passed", "failed", "timed-out", "stopped" or "load-failed"
    std::string message;  // why it did not pass; "" when it did
    int exitCode = 0;
};

// A child run's own test case.
struct ChildCase {
    std::string name, outcome, message, log;
    double seconds = 0;
    int exitCode = 0, stepsRun = 0;
};

// "2026-11-25T16:18:56Z" (with `zone`), or without the "Z" as JUnit's
// timestamp has it.
std::string IsoTime(const FILETIME& utc, bool zone);
double SecondsBetween(const FILETIME& start, const FILETIME& end);

std::string JUnitText(const RunRecordData& record, const RunSummary& summary, const std::vector<ChildCase>& children);
// `variables`: the name and value of each variable the run wrote.
std::string JsonResultText(const RunRecordData& record, const RunSummary& summary,
                           const std::vector<std::pair<std::string, std::string>>& variables);
// The child's case as a flat JSON object, and read back by the parent.
std::string ChildCaseText(const RunRecordData& record, const RunSummary& summary);
bool ReadChildCase(const std::string& text, ChildCase& child);
