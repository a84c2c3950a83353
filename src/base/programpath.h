// Finding a program or file by name the way the system's users expect.
#pragma once

// Resolves `name` into `out` (260 bytes) by the search order of the program:
// a path that exists, the registered App Path, the current folder, the
// script's folder, the program's folder, Windows, system, "C:\", the system's
// search. 1 when `out` holds a usable path, else 0 with `out` a copy of name.
int ResolveProgramPath(const char* name, char* out, const char* scriptPath);

// The program registered for a file extension (".htm") or for "MAIL", without
// quotes and arguments, in `out` (260 bytes). `document` (optional) is asked
// of the system when the extension has no open command. 1 on success.
int AssociatedProgram(const char* key, char* out, const char* document);
