#include "run/tempfiles.h"

#include <windows.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> Made;

}  // namespace

void NoteRunTempFile(const char* path) {
    if (path && *path) Made.push_back(path);
}

void RemoveRunTempFiles() {
    for (const std::string& path : Made) DeleteFileA(path.c_str());
    Made.clear();
    Made.shrink_to_fit();
}
