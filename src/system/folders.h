// Folder and file helpers of the file actions that the rest of the program
// shares.
#pragma once

#include "base/files.h"  // CreateFolderPath

// Copies a file over any existing one, creating the destination's folder.
// With `whole`, the copy takes the destination's place only when it holds as
// many bytes as the source (a move deletes the source after it).
int CopyFileEnsuringFolder(const char* source, const char* destination, bool whole = false);
// Deletes the files (not folders) that match a path or pattern; the count
// deleted, or 0 when none matched or one could not be deleted.
int DeleteFilesByPattern(const char* path);
// Removes a folder, with its contents when it is not empty.
int RemoveFolder(const char* path, int force);
// Copies a folder's contents into another, created if missing.
int CopyFolder(const char* source, const char* destination);
// Cuts or extends a file to `size` bytes; `fillWithZeros` writes the new part.
int SetFileLength(const char* path, unsigned long size, int fillWithZeros);
