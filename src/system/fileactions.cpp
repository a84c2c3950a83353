// Category 10. Value 1 names the file or folder, value 2 is an offset, line
// number or size. A name that is only read is found by the program's search
// order; a name that is written, changed, moved or deleted is looked for in
// the script's folder and the current folder only (see PlaceOfWrite). Many
// failures leave StepFailureText empty, so that the step's plain failure is
// reported.
#include "system/fileactions.h"
#include "base/text.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/fileidentity.h"
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
#include "system/filemoves.h"
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

bool IsReadOnly(const std::string& path) {
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
}

bool IsRooted(const std::string& name) {
    return !name.empty() && (name[0] == '\\' || name[0] == '/' || (name.size() > 1 && name[1] == ':'));
}

bool ExistsOnDisk(const std::string& path) {
    if (GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    if (!HasWildcards(path.c_str())) return false;
    WIN32_FIND_DATAA found;
    AutoFindHandle find;
    find.h = FindFirstFileA(path.c_str(), &found);
    return find.h != INVALID_HANDLE_VALUE;
}

std::string Joined(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    return folder.back() == '\\' ? folder + name : folder + "\\" + name;
}

// A ":" past the drive names a stream of a file ("a.txt::$DATA" is a.txt
// itself on NTFS) or, where streams are unknown (Wine), another file with
// an odd name: neither is what a name to write means, so it is refused.
bool NamesAStream(const std::string& path) {
    size_t from = path.compare(0, 4, "\\\\?\\") == 0 || path.compare(0, 4, "\\\\.\\") == 0 ? 4 : 0;
    size_t colon = path.find(':', from);
    return colon != std::string::npos && (colon != from + 1 || path.find(':', colon + 1) != std::string::npos);
}

int RefuseStream(const std::string& path) {
    return FailStep("'%s' is not a plain name (a \":\" stands only after a drive letter): nothing was done",
                    path.c_str());
}

// Where a name that is written, changed, moved or deleted lands. A path
// from a root stays as written. A relative name is looked for in the
// script's folder, then in the current folder; found in neither, it is
// beside the script (in the current folder when the script has no file
// yet). Never the rest of the program's search order: a clean-up step in a
// script copied to another machine must not find a file of its name in the
// Windows folder, and a new file belongs beside the script that wrote it.
std::string PlaceOfWrite(const std::string& name, const char* scriptPath) {
    if (name.empty() || IsRooted(name)) return name;
    std::string scriptFolder = scriptPath ? scriptPath : "";
    size_t slash = scriptFolder.rfind('\\');
    scriptFolder = slash == std::string::npos ? std::string() : scriptFolder.substr(0, slash);
    char current[MAX_PATH] = "";
    GetCurrentDirectoryA(sizeof current, current);
    if (!scriptFolder.empty() && ExistsOnDisk(Joined(scriptFolder, name))) return Joined(scriptFolder, name);
    if (current[0] && ExistsOnDisk(Joined(current, name))) return Joined(current, name);
    return Joined(scriptFolder.empty() ? std::string(current) : scriptFolder, name);
}

int WriteBytes(int tab, int step, const std::string& path, long offset) {
    // The system refuses to write a read-only file; so does this, also where
    // the disk would let it (Wine run as root writes such files).
    if (IsReadOnly(path)) return FailStep("Unable to write/create '%s': the file is read-only", path.c_str());
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

// The destination of a copy or move: a bare name goes beside the source,
// a relative path is placed as any other name that is written.
std::string Destination(int tab, int step, const std::string& source) {
    std::string to = Translated(ScriptStore.tab[tab].steps[step].text, tab, step);
    if (to.find('\\') == std::string::npos) {
        size_t slash = source.rfind('\\');
        return (slash == std::string::npos ? "" : source.substr(0, slash + 1)) + to;
    }
    return PlaceOfWrite(to, ScriptStore.tab[tab].path);
}

int CopyOrMove(int tab, int step, const std::string& path, bool move, bool folder) {
    const std::string to = Destination(tab, step, path);
    if (!PathFits(to.c_str())) {
        PathTooLongText(to.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
        return 0;
    }
    if (NamesAStream(to)) return RefuseStream(to);
    return folder ? CopyOrMoveFolderChecked(path.c_str(), to.c_str(), move)
                  : CopyOrMoveFileChecked(path.c_str(), to.c_str(), move);
}

// "Delete File": a pattern deletes the files whose long names match it; a
// plain name deletes that one file, and says why when it cannot.
int DeleteFiles(const std::string& path, const std::string& name) {
    const size_t cut = path.find_last_of("\\/:");
    const std::string last = cut == std::string::npos ? path : path.substr(cut + 1);
    DWORD attributes = GetFileAttributesA(path.c_str());
    const bool folderWithSlash = !path.empty() && path.back() == '\\' && attributes != INVALID_FILE_ATTRIBUTES &&
                                 (attributes & FILE_ATTRIBUTE_DIRECTORY);
    if (folderWithSlash || HasWildcards(last.c_str())) return DeleteFilesByPattern(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return FailStep("The file '%s' does not exist", name.c_str());
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        return FailStep("'%s' is a folder, not a file: nothing was deleted", path.c_str());
    if (attributes & FILE_ATTRIBUTE_READONLY) return FailStep("'%s' is read-only: nothing was deleted", path.c_str());
    if (DeleteFileA(path.c_str())) return 1;
    return FailStep("'%s' could not be deleted: %s", path.c_str(), SystemWords(GetLastError()).c_str());
}

int ChangeSize(const std::string& path, const std::string& name, long size) {
    DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return FailStep("The file '%s' does not exist", name.c_str());
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) return FailStep("'%s' is a folder, not a file", path.c_str());
    if (attributes & FILE_ATTRIBUTE_READONLY)
        return FailStep("'%s' is read-only: its size was not changed", path.c_str());
    if (SetFileLength(path.c_str(), (unsigned long)size, 0)) return 1;
    return FailStep("The size of '%s' could not be changed: %s", path.c_str(), SystemWords(GetLastError()).c_str());
}

// "Delete Folder" of a drive's root would empty the drive.
int DeleteFolder(const std::string& path) {
    std::string full = ResolvedPath(path.c_str());
    if (full.size() == 3 && full[1] == ':') return FailStep("'%s' is a drive's root: nothing was deleted", path.c_str());
    return RemoveFolder(path.c_str(), 1);
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
    CopyIntoN(action, sizeof action, s.action);
    std::string name = Translated(s.value[0], tab, step);
    if (!PathFits(name.c_str())) {
        PathTooLongText(name.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
        return 0;
    }
    // The actions that write, change, move or delete what value 1 names.
    static const char* const writers[] = {"Write/Create File", "Move/Rename File", "Delete File", "Change File Size",
                                          "Create Folder", "Move/Rename Folder", "Delete Folder"};
    bool writes = false;
    for (const char* w : writers) writes = writes || ContainsNoCase(action, w);
    std::string path;
    if (ContainsNoCase(action, "Map Drive")) {
        path = name;
    } else if (writes) {
        path = PlaceOfWrite(name, ScriptStore.tab[tab].path);
        if (!PathFits(path.c_str())) {
            PathTooLongText(path.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
            return 0;
        }
        if (NamesAStream(path)) return RefuseStream(path);
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
    if (ContainsNoCase(action, "Copy File")) return CopyOrMove(tab, step, path, false, false);
    if (ContainsNoCase(action, "Move/Rename File")) return CopyOrMove(tab, step, path, true, false);
    if (ContainsNoCase(action, "Delete File")) return DeleteFiles(path, name);
    if (ContainsNoCase(action, "Change File Size")) return ChangeSize(path, name, number);
    if (ContainsNoCase(action, "Set File Association")) return SetAssociation(s);
    if (ContainsNoCase(action, "Set Current")) return SetCurrentDirectoryA(path.c_str()) ? 1 : 0;
    if (ContainsNoCase(action, "Create Folder")) return CreateFolderPath(path.c_str());
    if (ContainsNoCase(action, "Copy Folder")) return CopyOrMove(tab, step, path, false, true);
    if (ContainsNoCase(action, "Move/Rename Folder")) return CopyOrMove(tab, step, path, true, true);
    if (ContainsNoCase(action, "Delete Folder")) return DeleteFolder(path);
    if (ContainsNoCase(action, "Map Drive Prompt")) return MapDrivePrompt();
    if (ContainsNoCase(action, "Map Drive")) return MapDrive(tab, step, path);
    return 1;
}
