// File helpers that every layer shares.
#pragma once

// Creates a folder with all its missing parents; 1 when it exists afterwards.
int CreateFolderPath(const char* path);
