// Compiling a script into a stand-alone EXE: a copy of the runtime template
// beside the program, given back its "MZ", its version block and icon
// rewritten, and the script's XML appended at its end.
#pragma once

#include <windows.h>

// 1 on success, or -1 (no output or no steps), -5 (no template), -6 (the old
// output cannot be deleted, or is one of the compile's own sources), -7 (the template cannot be copied), -8 (the
// script could not be written).
int CompileExe(const char* outputPath, const char* iconPath, int optimize);
// Whether `outputPath` names one of the compile's own sources: this program,
// a runtime template or the current tab's script. Then `why` (of `size`)
// holds the words, and neither the compile nor its command touches the file.
bool CompileOutputRefused(const char* outputPath, char* why, size_t size);
// Writes the version numbers and, in place, the copyright and description.
void SetVersionResource(const char* path, const char* copyright, const char* description, int major, int minor);
// Replaces the icons of `path` by those of an .ico file or of a module.
void ReplaceIcon(const char* path, const char* iconSource);
// Removes every icon group, in every language, and every icon that one of
// them names; 1 if there was a group.
int RemoveIcons(const char* path);
// "%u.%u.%u.%u" (or "%u.%u" short) of `path`, or of this program.
enum { VERSION_TEXT_SIZE = 64 };  // the size of GetFileVersionText's `out`
void GetFileVersionText(const char* path, char* out, int shortForm);
// The Compile command, in the two halves round the "Compile Options" dialog
// that the editor shows between them: whether this system may compile at all
// (it says why not), then the compile from the stored options: output name,
// the replace question, the compile and its message.
bool CompileAllowed();
void CompileFromOptions();
