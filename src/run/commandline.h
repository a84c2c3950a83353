// Parsing the command line: switches found anywhere in the line, and
// %name=value user variables written to the registry.
#pragma once

#include <string>

#define ZR_USAGE_TEXT                                                                          \
    "ZantoRunner Startup (Command Line) Options:\n\n\t/e\tEdit file\n\t/r\tRun file\n\t/v\tRun " \
    "file in ZantoRunner\n\t/L\tTurn logging on\n\t/f\tTurn logging off\n\t%x=1\tSet user "     \
    "variable\n\nExample:  ZantoRunner.exe /v C:\\MyFile.zxm /L %foo=\"New Value\"\t"

// Fills LaunchFlags and copies the script's path to fileName (260 bytes).
// Returns 1 when it parsed, 0 for an empty line, help shown, or no memory.
int ParseCommandLine(const char* commandLine, char* fileName);

// What the switches of a run that a fleet reads asked for: result files, a
// file of parameters and a folder of artefacts. Empty when not given; an
// `error` says what was wrong with the line (a switch without its value),
// which the entry reports as a failed load.
struct ResultSwitches {
    std::string junit, json, report, params, artifacts, error;
    bool byWords = false;  // the line was read word by word
};
extern ResultSwitches RunResultSwitches;

// Whether the line is read word by word: it holds "/unattended", "/check" or
// a switch of the result files as a word of its own. Such a line's switches
// count only as whole words, so that a path keeps its letters; any other
// line is parsed as it always was, with switches found anywhere.
bool ParsesByWords(const char* commandLine);
