// Shared helpers of the unit tests.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct SeenBox {
    std::string text;
    std::string title;
    UINT flags;
};

// Message boxes shown since the last reset, and the answer the next ones get.
extern std::vector<SeenBox> SeenBoxes;
extern int NextBoxAnswer;

// Replaces the message box seam and allocates the run's failure text.
void InstallTestSeams();
// Deletes HKCU\SOFTWARE\ZantoRunner (and the older products' keys), empties
// every tab, and clears the run state and the recorded boxes.
void ResetTestState();
// A fresh temporary folder for one test, as a Windows path with no trailing "\".
std::string TempFolder();
// A fresh folder with logging turned on into the file `name` in it; returns the folder.
std::string LogIntoNewFolder(const char* name);
std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& text);
// Parses `text` with the system's XML parser (MSXML); "" when it is
// well-formed, else the parser's reason and line.
std::string XmlParseError(const std::string& text);
// Runs a command line to its end (such as the system's "reg add ...").
void RunProcess(const std::string& commandLine);
// Writes a 24-bit BMP file of w x h pixels given top-down.
void SaveBmp(const std::string& path, int w, int h, const std::vector<COLORREF>& pixels);
// Writes what the screen shows in `area` as a PNG file (the help's pictures:
// read pixel by pixel, as a window's own capture shows no text under Wine).
bool SaveScreenPng(const RECT& area, const std::string& path);
// Loads `xml` as the steps of tab 0 (current tab), as a file load does.
int LoadSteps(const std::string& xml);
// Empties tab 0 and loads `xml` into it.
int ReplaceSteps(const std::string& xml);
