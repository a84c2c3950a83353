// The stand-in for a browser or mail program in the internet scenarios: a
// scenario makes it the program of http: and mailto: addresses (or starts
// it as the browser), and it appends its command line, less its own name, as
// one line to recorded.txt beside itself. So a scenario shows what the
// program handed the system, and nothing leaves the machine. The file is
// written aside and renamed into place, so that whoever sees recorded.txt
// sees it whole.
#include <windows.h>
#include <string.h>

#include <string>

namespace {

std::string Beside(const char* name) {
    char path[MAX_PATH];
    DWORD n = GetModuleFileNameA(nullptr, path, MAX_PATH);
    if (!n || n >= MAX_PATH) return "";
    std::string beside(path);
    return beside.substr(0, beside.rfind('\\') + 1) + name;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    const std::string target = Beside("recorded.txt"), aside = Beside("recorded.tmp");
    if (target.empty()) return 1;
    std::string text;
    HANDLE old = CreateFileA(target.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (old != INVALID_HANDLE_VALUE) {
        char buffer[4096];
        DWORD got = 0;
        while (ReadFile(old, buffer, sizeof buffer, &got, nullptr) && got) text.append(buffer, got);
        CloseHandle(old);
    }
    const char* line = GetCommandLineA();
    // Past the program's own name, quoted or not, and the blanks after it.
    if (*line == '"') {
        line = strchr(line + 1, '"');
        line = line ? line + 1 : "";
    } else {
        while (*line && *line != ' ' && *line != '\t') line++;
    }
    while (*line == ' ' || *line == '\t') line++;
    text += line;
    text += "\r\n";
    HANDLE file = CreateFileA(aside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 1;
    DWORD written = 0;
    const bool ok = WriteFile(file, text.data(), (DWORD)text.size(), &written, nullptr) && written == text.size();
    CloseHandle(file);
    return ok && MoveFileExA(aside.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) ? 0 : 1;
}
