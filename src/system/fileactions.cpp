// Category 10. Value 1 names the file or folder (resolved by the program's
// search order), value 2 is an offset, line number or size. Many failures
// leave StepFailureText empty, so that the step's plain failure is reported.
#include "system/fileactions.h"
#include "base/text.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/files.h"
#include "base/log.h"
#include "base/unattended.h"
#include "run/failure.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "base/handles.h"
#include "script/step.h"
#include "base/words.h"
#include "system/fileassoc.h"
#include "system/filelines.h"
#include "system/folders.h"
#include "system/launch.h"
#include "system/processes.h"
#include "base/programpath.h"

namespace {

int FailWithSystemText() {
    SystemErrorText(GetLastError(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
    return 0;
}

std::string Translated(const char* text, int tab, int step) {
    TranslateText(text, tab, step);
    return TranslatedText;
}

// "Read File": value 3 is a count of bytes (0: to the end), whatever its
// label says. Binary data passes through whole.
int ReadBytes(int tab, int step, const std::string& path, long offset) {
    if (offset < 0) offset = 0;
    long count = ParseInt(Translated(ScriptStore.tab[tab].steps[step].value[2], tab, step).c_str());
    if (count == 0) count = (long)GetFileSizeByName(path.c_str()) - offset;
    // A negative count (an offset past the end) gets the smallest block and
    // so reads nothing; a count too large for memory is this step's failure.
    size_t size = count < 0 || (size_t)count + 2 < 256 ? 256 : (size_t)count + 2;
    AutoHeapBlock data(HeapAllocZero(size));
    if (!data.p) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Insufficient memory available");
        return 0;
    }
    AutoCloseHandle file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.ok()) return FailStep("Unable to read '%s'", path.c_str());
    SetFilePointer(file.h, offset, nullptr, FILE_BEGIN);
    // A count that is negative or past the block is read only as far as the
    // block goes, never beyond it.
    DWORD wanted = count < 0 || (size_t)count > size - 2 ? (DWORD)(size - 2) : (DWORD)count, got = 0;
    if (!ReadFile(file.h, data.p, wanted, &got, nullptr)) FailWithSystemText();
    SaveOutput(tab, step, data.p, (long)got, nullptr);
    return 1;
}

int ReadLine(int tab, int step, const std::string& path, long lineNumber) {
    size_t size = GetFileSizeByName(path.c_str()) + 2;
    std::vector<char> line(size < 256 ? 256 : size);
    int result = ReadFileLine(path.c_str(), (int)lineNumber, line.data(), (int)line.size());
    SaveOutput(tab, step, line.data(), (long)strlen(line.data()), nullptr);
    return result;
}

int WriteBytes(int tab, int step, const std::string& path, long offset) {
    AutoCloseHandle file(OpenFileForWrite(path.c_str()));
    if (!file.ok()) return FailStep("Unable to write/create '%s'", path.c_str());
    if (offset < 0)
        SetFilePointer(file.h, 0, nullptr, FILE_END);  // "Append"
    else
        SetFilePointer(file.h, offset, nullptr, FILE_BEGIN);
    std::string data = Translated(ScriptStore.tab[tab].steps[step].text, tab, step);
    if (!WriteAll(file.h, data.data(), data.size())) return FailWithSystemText();
    return 1;
}

// The destination of a copy or move; a bare name goes beside the source.
std::string Destination(int tab, int step, const std::string& source) {
    std::string to = Translated(ScriptStore.tab[tab].steps[step].text, tab, step);
    if (to.find('\\') == std::string::npos) {
        size_t slash = source.rfind('\\');
        to = (slash == std::string::npos ? "" : source.substr(0, slash + 1)) + to;
    }
    return to;
}

int CopyOrMoveFile(int tab, int step, const std::string& path, bool move) {
    const std::string to = Destination(tab, step, path);
    if (!PathFits(to.c_str())) {
        PathTooLongText(to.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
        return 0;
    }
    if (!CopyFileEnsuringFolder(path.c_str(), to.c_str())) return 0;
    return move ? DeleteFileA(path.c_str()) : 1;
}

int CopyOrMoveFolder(int tab, int step, const std::string& path, bool move) {
    const std::string to = Destination(tab, step, path);
    if (!PathFits(to.c_str())) {
        PathTooLongText(to.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
        return 0;
    }
    if (!CopyFolder(path.c_str(), to.c_str())) return 0;
    return move ? RemoveFolder(path.c_str(), 1) : 1;
}

// The fields as stored, untranslated; it always passes.
int SetAssociation(const Step& s) {
    RegisterFileType(s.value[1], s.value[0], TextOf(s.text), 0, VERB_OPEN);
    return 1;
}

int MapDrivePrompt() {
    if (UnattendedRun) {
        // Cancelled, as a person who is not there would.
        ReportUnshownBox("Map Network Drive", "connection dialog cancelled");
        return 1;
    }
    intptr_t r = DynamicSystemCall("MPR.DLL", "WNetConnectionDialog", (uintptr_t)GetForegroundWindow(), 1, 0, 0, 0);
    // The function gives 0 for success, but 0 is what fails here, as always.
    if (r == 0) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unable to show map prompt");
        return 0;
    }
    return 1;
}

int MapDrive(int tab, int step, const std::string& share) {
    std::string drive = Translated(ScriptStore.tab[tab].steps[step].text, tab, step);
    // The share goes in the local name and the drive in the remote one: the
    // direct call normally fails, and "net use" does the work.
    NETRESOURCEA resource = {};
    resource.dwScope = 2;
    resource.lpLocalName = (LPSTR)share.c_str();
    resource.lpRemoteName = (LPSTR)drive.c_str();
    if (DynamicSystemCall("MPR.DLL", "WNetAddConnection2", (uintptr_t)&resource, 0, 0, 1, 0) == 0) return 1;
    char resolved[MAX_PATH * 2];
    if (!ResolveProgramPath(share.c_str(), resolved, ScriptStore.tab[tab].path))
        return FailStep("The share name \"%s\" could not be found", share.c_str());
    std::string command = "net use " + drive + " " + share;
    int32_t result = LaunchProgram(command.c_str(), 0, 0);
    return result == LAUNCH_FAILED ? 0 : result;
}

}  // namespace

int FileAction(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char action[FIELD_SHORT];
    lstrcpynA(action, s.action, sizeof action);
    std::string name = Translated(s.value[0], tab, step);
    if (!PathFits(name.c_str())) {
        PathTooLongText(name.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
        return 0;
    }
    std::string path;
    if (ContainsNoCase(action, "Map Drive")) {
        path = name;
    } else {
        std::vector<char> resolved(name.size() + 2 < MAX_PATH * 2 ? MAX_PATH * 2 : name.size() + 2);
        ResolveProgramPath(name.c_str(), resolved.data(), ScriptStore.tab[tab].path);
        path = resolved.data();
    }
    const long number = ParseInt(Translated(s.value[1], tab, step).c_str());

    if (lstrcmpiA(action, "Read File") == 0) return ReadBytes(tab, step, path, number);
    if (ContainsNoCase(action, "Read File Line")) return ReadLine(tab, step, path, number);
    if (ContainsNoCase(action, "Count File Lines")) {
        char count[16];
        FormatInto(count, "%li", CountFileLines(path.c_str()));
        SaveOutput(tab, step, count, (long)strlen(count), nullptr);
        return 1;
    }
    if (ContainsNoCase(action, "Write/Create File")) return WriteBytes(tab, step, path, number);
    if (ContainsNoCase(action, "Copy File")) return CopyOrMoveFile(tab, step, path, false);
    if (ContainsNoCase(action, "Move/Rename File")) return CopyOrMoveFile(tab, step, path, true);
    if (ContainsNoCase(action, "Delete File")) return DeleteFilesByPattern(path.c_str());
    if (ContainsNoCase(action, "Change File Size")) return SetFileLength(path.c_str(), (unsigned long)number, 0);
    if (ContainsNoCase(action, "Set File Association")) return SetAssociation(s);
    if (ContainsNoCase(action, "Set Current")) return SetCurrentDirectoryA(path.c_str()) ? 1 : 0;
    if (ContainsNoCase(action, "Create Folder")) return CreateFolderPath(path.c_str());
    if (ContainsNoCase(action, "Copy Folder")) return CopyOrMoveFolder(tab, step, path, false);
    if (ContainsNoCase(action, "Move/Rename Folder")) return CopyOrMoveFolder(tab, step, path, true);
    if (ContainsNoCase(action, "Delete Folder")) return RemoveFolder(path.c_str(), 1);
    if (ContainsNoCase(action, "Map Drive Prompt")) return MapDrivePrompt();
    if (ContainsNoCase(action, "Map Drive")) return MapDrive(tab, step, path);
    return 1;
}
