#include "system/filemoves.h"

#include <windows.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/fileidentity.h"
#include "base/files.h"
#include "base/handles.h"
#include "base/text.h"
#include "base/words.h"
#include "run/failure.h"
#include "system/folders.h"
#include "system/processes.h"

namespace {

bool Exists(DWORD attributes) { return attributes != INVALID_FILE_ATTRIBUTES; }
bool IsFolder(DWORD attributes) { return Exists(attributes) && (attributes & FILE_ATTRIBUTE_DIRECTORY); }

std::string LastPart(const std::string& path) {
    size_t slash = path.find_last_of("\\:");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string FolderPart(const std::string& path) {
    size_t slash = path.rfind('\\');
    if (slash == std::string::npos) return std::string();
    return slash == 2 && path[1] == ':' ? path.substr(0, 3) : path.substr(0, slash);
}

bool SameLettersAnyCase(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); i++)
        if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
    return true;
}

// A move onto the same object is a rename only when it changes the case of
// the name the disk keeps, in the same folder: a loop that puts names in
// one case does this. Any other spelling of the same object (".\", "..\",
// a short name, trailing dots, the very same name) has nothing to do.
bool ChangesOnlyCase(const std::string& source, const std::string& destination) {
    std::string stored = StoredName(source.c_str()), wanted = LastPart(destination);
    return !stored.empty() && stored != wanted && SameLettersAnyCase(stored, wanted) &&
           SameDiskObject(FolderPart(source).c_str(), FolderPart(destination).c_str());
}

// A name in the folder of `path` that nothing has.
std::string FreeNameBeside(const std::string& path) {
    std::string folder = FolderPart(path);
    if (!folder.empty() && folder.back() != '\\') folder += "\\";
    for (DWORD n = GetTickCount() & 0xFFFFF, tries = 0; tries < 1000; n++, tries++) {
        char name[32];
        FormatInto(name, "~zr%05lx.tmp", n & 0xFFFFF);
        std::string candidate = folder + name;
        if (!Exists(GetFileAttributesA(candidate.c_str()))) return candidate;
    }
    return std::string();
}

// Renames `source` to `destination`, which differs from it in case only.
// Some file systems take such a rename as done and keep the old case (Wine
// on a case-sensitive disk does): then it goes through a free name in the
// same folder, so that the file is under one of its two names at every moment.
int RenameCase(const std::string& source, const std::string& destination) {
    const std::string wanted = LastPart(destination);
    if (MoveFileExA(source.c_str(), destination.c_str(), 0) && StoredName(destination.c_str()) == wanted) return 1;
    std::string between = FreeNameBeside(source);
    if (between.empty() || !MoveFileExA(source.c_str(), between.c_str(), 0))
        return FailStep("'%s' could not be renamed to '%s': %s", source.c_str(), destination.c_str(),
                        SystemWords(GetLastError()).c_str());
    if (MoveFileExA(between.c_str(), destination.c_str(), 0)) return 1;
    DWORD error = GetLastError();
    if (!MoveFileExA(between.c_str(), source.c_str(), 0))
        return FailStep("'%s' could not be renamed to '%s' (%s); it is now '%s'", source.c_str(), destination.c_str(),
                        SystemWords(error).c_str(), between.c_str());
    return FailStep("'%s' could not be renamed to '%s': %s", source.c_str(), destination.c_str(),
                    SystemWords(error).c_str());
}

void MakeFolderOf(const std::string& path) {
    std::string folder = FolderPart(path);
    if (!folder.empty()) CreateFolderPath(folder.c_str());
}

// The entries of a folder (not "." and ".."), read whole before anything in
// it is moved: a listing read while entries leave can skip some.
struct Entry {
    std::string name;
    bool folder;
};
std::vector<Entry> EntriesOf(const std::string& folder) {
    std::vector<Entry> entries;
    WIN32_FIND_DATAA found;
    AutoFindHandle find;
    find.h = FindFirstFileA((folder + "\\*").c_str(), &found);
    if (find.h == INVALID_HANDLE_VALUE) return entries;
    do {
        if (lstrcmpA(found.cFileName, ".") == 0 || lstrcmpA(found.cFileName, "..") == 0) continue;
        entries.push_back({found.cFileName, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileA(find.h, &found));
    return entries;
}

enum MergeResult { MERGED, MERGE_FAILED, OTHER_VOLUME };

// Moves the contents of `from` into the existing folder `to` by renames: an
// entry `to` lacks is renamed into it, a file it has is replaced (as a copy
// over it always did), a folder both have is merged the same way. `from`
// is removed once empty. On a failure the words say what, and whatever was
// not moved is still in `from`.
MergeResult MergeFolder(const std::string& from, const std::string& to) {
    for (const Entry& e : EntriesOf(from)) {
        std::string source = from + "\\" + e.name, target = to + "\\" + e.name;
        DWORD there = GetFileAttributesA(target.c_str());
        if (e.folder && IsFolder(there)) {
            MergeResult r = MergeFolder(source, target);
            if (r != MERGED) return r;
            continue;
        }
        if (Exists(there) && e.folder != IsFolder(there)) {
            FailStep("'%s' is a %s where '%s' is a %s: the rest of '%s' was kept", target.c_str(),
                     IsFolder(there) ? "folder" : "file", source.c_str(), e.folder ? "folder" : "file", from.c_str());
            return MERGE_FAILED;
        }
        if (Exists(there) && (there & FILE_ATTRIBUTE_READONLY)) {
            FailStep("'%s' is read-only: it and the rest of '%s' were kept", target.c_str(), from.c_str());
            return MERGE_FAILED;
        }
        if (!MoveFileExA(source.c_str(), target.c_str(), Exists(there) ? MOVEFILE_REPLACE_EXISTING : 0)) {
            DWORD error = GetLastError();
            if (error == ERROR_NOT_SAME_DEVICE) return OTHER_VOLUME;
            FailStep("'%s' could not be moved to '%s': %s; the rest of '%s' was kept", source.c_str(), target.c_str(),
                     SystemWords(error).c_str(), from.c_str());
            return MERGE_FAILED;
        }
    }
    if (!RemoveDirectoryA(from.c_str())) {
        FailStep("'%s' was moved into '%s' but could not be removed: %s", from.c_str(), to.c_str(),
                 SystemWords(GetLastError()).c_str());
        return MERGE_FAILED;
    }
    return MERGED;
}

// Across volumes a move is a copy, then a check that the copy is whole,
// and only then the removal of the source. The shell's copy can report
// success for a copy cut short (a full disk under Wine does), so the check
// compares every file's size. A copy that failed is removed again when
// its folder is one this move made.
int MoveFolderAcrossVolumes(const std::string& from, const std::string& to) {
    const bool made = !Exists(GetFileAttributesA(to.c_str()));
    if (!CopyFolder(from.c_str(), to.c_str())) {
        if (made) RemoveFolder(to.c_str(), 1);
        return FailStep("'%s' could not be copied to '%s': '%s' was kept", from.c_str(), to.c_str(), from.c_str());
    }
    char missing[MAX_PATH * 2] = "";
    if (!FolderCopyIsWhole(from.c_str(), to.c_str(), missing, sizeof missing)) {
        if (made) RemoveFolder(to.c_str(), 1);
        return FailStep("The copy of '%s' in '%s' is not whole ('%s' differs): '%s' was kept", from.c_str(),
                        to.c_str(), missing, from.c_str());
    }
    if (!RemoveFolder(from.c_str(), 1))
        return FailStep("'%s' was copied to '%s' but could not be removed", from.c_str(), to.c_str());
    return 1;
}

bool SizeOf(const std::string& path, unsigned long long* size) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return false;
    *size = ((unsigned long long)data.nFileSizeHigh << 32) | data.nFileSizeLow;
    return true;
}

}  // namespace

std::string SystemWords(DWORD error) {
    char text[512];
    SystemErrorText(error, text, sizeof text);
    std::string words = text;
    while (!words.empty() && strchr("\r\n .", words.back())) words.pop_back();
    if (words.empty()) {
        char number[32];
        FormatInto(number, "error %lu", error);
        words = number;
    }
    return words;
}

bool FolderCopyIsWhole(const char* source, const char* copy, char* missing, int missingSize) {
    for (const Entry& e : EntriesOf(source)) {
        std::string from = std::string(source) + "\\" + e.name, to = std::string(copy) + "\\" + e.name;
        DWORD there = GetFileAttributesA(to.c_str());
        unsigned long long a = 0, b = 0;
        bool whole = e.folder ? IsFolder(there) && FolderCopyIsWhole(from.c_str(), to.c_str(), missing, missingSize)
                              : Exists(there) && !IsFolder(there) && SizeOf(from, &a) && SizeOf(to, &b) && a == b;
        if (!whole) {
            if (missing && !missing[0]) CopyIntoN(missing, (size_t)missingSize, to.c_str());
            return false;
        }
    }
    return true;
}

int CopyOrMoveFileChecked(const char* sourceText, const char* destinationText, bool move) {
    const char* done = move ? "moved" : "copied";
    const std::string source = sourceText, destination = destinationText;
    const DWORD from = GetFileAttributesA(sourceText), to = GetFileAttributesA(destinationText);
    if (!Exists(from)) return FailStep("The file '%s' does not exist", sourceText);
    if (IsFolder(from)) return FailStep("'%s' is a folder, not a file: nothing was %s", sourceText, done);
    if (SameDiskObject(sourceText, destinationText)) {
        std::string target = ResolvedPath(destinationText);
        if (move && ChangesOnlyCase(ResolvedPath(sourceText), target)) return RenameCase(ResolvedPath(sourceText), target);
        return FailStep("'%s' and '%s' are the same file: nothing was %s", sourceText, destinationText, done);
    }
    if (IsFolder(to)) return FailStep("'%s' is a folder, not a file: nothing was %s", destinationText, done);
    // The system refuses to replace a read-only file; so does this, also
    // where the disk would let it (Wine run as root writes such files).
    if (Exists(to) && (to & FILE_ATTRIBUTE_READONLY))
        return FailStep("'%s' is read-only: nothing was %s", destinationText, done);
    if (!move) {
        if (CopyFileEnsuringFolder(sourceText, destinationText)) return 1;
        return FailStep("'%s' could not be copied to '%s': %s", sourceText, destinationText,
                        SystemWords(GetLastError()).c_str());
    }
    // Within a volume a move is a rename: the file is never copied and
    // never deleted, so no failure can lose it.
    MakeFolderOf(ResolvedPath(destinationText));
    if (MoveFileExA(sourceText, destinationText, MOVEFILE_REPLACE_EXISTING)) return 1;
    DWORD error = GetLastError();
    if (error != ERROR_NOT_SAME_DEVICE)
        return FailStep("'%s' could not be moved to '%s': %s", sourceText, destinationText, SystemWords(error).c_str());
    // Across volumes: a copy the copier checks is whole, then the source goes.
    if (!CopyFileEnsuringFolder(sourceText, destinationText, true))
        return FailStep("'%s' could not be copied to '%s': %s; it was kept", sourceText, destinationText,
                        SystemWords(GetLastError()).c_str());
    if (!DeleteFileA(sourceText))
        return FailStep("'%s' was copied to '%s' but could not be removed: %s", sourceText, destinationText,
                        SystemWords(GetLastError()).c_str());
    return 1;
}

int CopyOrMoveFolderChecked(const char* sourceText, const char* destinationText, bool move) {
    const char* done = move ? "moved" : "copied";
    const std::string from = ResolvedPath(sourceText), to = ResolvedPath(destinationText);
    const DWORD source = GetFileAttributesA(from.c_str()), there = GetFileAttributesA(to.c_str());
    if (!Exists(source)) return FailStep("The folder '%s' does not exist", sourceText);
    if (!IsFolder(source)) return FailStep("'%s' is a file, not a folder: nothing was %s", sourceText, done);
    if (SameDiskObject(sourceText, destinationText)) {
        if (move && ChangesOnlyCase(from, to)) return RenameCase(from, to);
        return FailStep("'%s' and '%s' are the same folder: nothing was %s", sourceText, destinationText, done);
    }
    if (PathWithinFolder(destinationText, sourceText))
        return FailStep("'%s' is inside '%s': nothing was %s", destinationText, sourceText, done);
    if (Exists(there) && !IsFolder(there))
        return FailStep("'%s' is a file, not a folder: nothing was %s", destinationText, done);
    if (!move) {
        if (CopyFolder(from.c_str(), to.c_str())) return 1;
        return FailStep("'%s' could not be copied to '%s'", sourceText, destinationText);
    }
    // Moving a folder into the folder that holds it would merge it into
    // itself.
    if (PathWithinFolder(sourceText, destinationText))
        return FailStep("'%s' is inside '%s': nothing was moved", sourceText, destinationText);
    if (!Exists(there)) {
        MakeFolderOf(to);
        if (MoveFileExA(from.c_str(), to.c_str(), 0)) return 1;
        DWORD error = GetLastError();
        if (error != ERROR_NOT_SAME_DEVICE)
            return FailStep("'%s' could not be moved to '%s': %s", sourceText, destinationText, SystemWords(error).c_str());
        return MoveFolderAcrossVolumes(from, to);
    }
    switch (MergeFolder(from, to)) {
        case MERGED: return 1;
        case OTHER_VOLUME: return MoveFolderAcrossVolumes(from, to);
        default: return 0;
    }
}
