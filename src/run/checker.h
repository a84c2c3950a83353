// The script checker: reads a tab's steps without running one and says,
// step by step, what will go wrong. Its findings are data; the command line
// (/check) and the editor's "Check Script" print them.
#pragma once

#include <string>
#include <vector>

enum { CHECK_WARNING = 1, CHECK_PROBLEM = 2 };

struct CheckFinding {
    int step;          // from 1; 0 for the file as a whole
    int severity;      // CHECK_PROBLEM: will misbehave; CHECK_WARNING: probably not what was meant
    std::string message;
};

struct CheckOptions {
    bool unattended = false;  // the script will run with /unattended
    const char* fileText = nullptr;  // the file as read, to find fields cut on load (optional)
};

// The findings of the tab's steps, in step order.
std::vector<CheckFinding> CheckScript(int tab, const CheckOptions& options);
// "<file>(<step>): <severity>: <message>", the form compilers use.
std::string CheckFindingLine(const char* file, const CheckFinding& finding);
// "N problem(s), M warning(s)".
std::string CheckSummary(const std::vector<CheckFinding>& findings);
