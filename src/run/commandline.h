// Parsing the command line: switches found anywhere in the line, and
// %name=value user variables written to the registry.
#pragma once

#define ZR_USAGE_TEXT                                                                          \
    "ZantoRunner Startup (Command Line) Options:\n\n\t/e\tEdit file\n\t/r\tRun file\n\t/v\tRun " \
    "file in ZantoRunner\n\t/L\tTurn logging on\n\t/f\tTurn logging off\n\t%x=1\tSet user "     \
    "variable\n\nExample:  ZantoRunner.exe /v C:\\MyFile.zxm /L %foo=\"New Value\"\t"

// Fills LaunchFlags and copies the script's path to fileName (260 bytes).
// Returns 1 when it parsed, 0 for an empty line, help shown, or no memory.
int ParseCommandLine(const char* commandLine, char* fileName);
