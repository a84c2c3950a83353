// Every example, opened in the editor and run with F5, passes as it does
// when run hidden: the editor's own window is on the screen beside the
// windows the example looks for, with the script's name in its title.
#include <gtest/gtest.h>

#include <windows.h>
#include <tlhelp32.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/settings.h"
#include "base/ui.h"
#include "editor/commands.h"
#include "editor_support.h"
#include "resources/resource.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

std::string ExeFolder() {
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, sizeof exe);
    return std::string(exe, strrchr(exe, '\\'));
}

// The checkout's examples and their expectations: the harness maps the
// checkout to S: (and the build folder, where the tests run, to T:, whose
// root has no parent); without that mapping the tests run from
// build\x64\tests of the checkout.
std::string SourceFolder() {
    if (GetFileAttributesA("S:\\examples") != INVALID_FILE_ATTRIBUTES) return "S:";
    return ExeFolder() + "\\..\\..\\..";
}

std::vector<std::string> FilesIn(const std::string& pattern) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA found;
    HANDLE find = FindFirstFileA(pattern.c_str(), &found);
    if (find == INVALID_HANDLE_VALUE) return names;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) names.push_back(found.cFileName);
    } while (FindNextFileA(find, &found));
    FindClose(find);
    return names;
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) return;
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// "\r\n" and "\xNN" of an expectation, as bytes.
std::string Unescape(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'r') out += '\r', i++;
        else if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'n') out += '\n', i++;
        else if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x')
            out += (char)strtol(text.substr(i + 2, 2).c_str(), nullptr, 16), i += 3;
        else out += text[i];
    }
    return out;
}

// A line against a pattern where "{any}" and "{time}" stand for any text.
bool LineMatches(const std::string& line, std::string pattern) {
    ReplaceAll(pattern, "{time}", "{any}");
    std::vector<std::string> parts;
    for (size_t from = 0;;) {
        const size_t at = pattern.find("{any}", from);
        parts.push_back(pattern.substr(from, at == std::string::npos ? std::string::npos : at - from));
        if (at == std::string::npos) break;
        from = at + 5;
    }
    if (parts.size() == 1) return line == pattern;
    if (line.compare(0, parts.front().size(), parts.front()) != 0) return false;
    size_t at = parts.front().size();
    for (size_t i = 1; i + 1 < parts.size(); i++) {
        at = line.find(parts[i], at);
        if (at == std::string::npos) return false;
        at += parts[i].size();
    }
    const std::string& last = parts.back();
    return line.size() >= at + last.size() && line.compare(line.size() - last.size(), last.size(), last) == 0;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t from = 0;
    while (from < text.size()) {
        size_t end = text.find('\n', from);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(from, end - from);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
        from = end + 1;
    }
    return lines;
}

void EndProcesses(const char* name) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot, &entry); more; more = Process32Next(snapshot, &entry)) {
        if (lstrcmpiA(entry.szExeFile, name) != 0) continue;
        if (HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID)) {
            TerminateProcess(process, 0);
            WaitForSingleObject(process, 5000);
            CloseHandle(process);
        }
    }
    CloseHandle(snapshot);
}

// The expectations of tests/examples/NAME.expect that a run from the editor
// can meet: the log's lines, files, the exit code. Those of a command line
// ("args:") belong to the hidden runs only.
struct Expect {
    std::vector<std::pair<std::string, std::string>> replaces, makeFiles, files;
    std::vector<std::string> logHas, kills;
    std::string lastLog;
    int exit = 0;
    int within = 60;
};

Expect ReadExpect(const std::string& path, const std::string& dir, const std::string& web) {
    Expect e;
    for (std::string line : Lines(ReadWholeFile(path))) {
        if (line.empty() || line[0] == '#') continue;
        ReplaceAll(line, "{dir}", dir);
        ReplaceAll(line, "{web}", web);
        const size_t colon = line.find(": ");
        if (colon == std::string::npos) continue;
        const std::string word = line.substr(0, colon), rest = line.substr(colon + 2);
        const size_t equals = rest.find(" = ");
        const std::string left = rest.substr(0, equals);
        const std::string right = equals == std::string::npos ? "" : rest.substr(equals + 3);
        if (word == "replace") e.replaces.push_back({left, right});
        else if (word == "make-file") e.makeFiles.push_back({left, Unescape(right)});
        else if (word == "file" && equals != std::string::npos) e.files.push_back({left, Unescape(right)});
        else if (word == "log-has") e.logHas.push_back(rest);
        else if (word == "last-log") e.lastLog = rest;
        else if (word == "kill") e.kills.push_back(rest);
        else if (word == "exit") e.exit = atoi(rest.c_str());
        else if (word == "within") e.within = atoi(rest.c_str());
    }
    return e;
}

TEST(EditorExamples, EachExamplePassesWhenRunWithF5) {
    const std::string examples = SourceFolder() + "\\examples";
    const std::vector<std::string> scripts = FilesIn(examples + "\\*.zxm");
    ASSERT_GE(scripts.size(), 7u) << examples;
    const char* port = getenv("ZR_WEB_PORT");
    const std::string web = std::string("http://127.0.0.1:") + (port ? port : "9");
    for (const std::string& script : scripts) {
        SCOPED_TRACE(script);
        const std::string name = script.substr(0, script.size() - 4);
        // A folder of its own with every file of the examples and the order
        // form, as the release zip lays them out.
        const std::string dir = TempFolder();
        for (const std::string& file : FilesIn(examples + "\\*"))
            CopyFileA((examples + "\\" + file).c_str(), (dir + "\\" + file).c_str(), FALSE);
        CopyFileA((ExeFolder() + "\\orderform.exe").c_str(), (dir + "\\orderform.exe").c_str(), FALSE);
        const Expect expect = ReadExpect(SourceFolder() + "\\tests\\examples\\" + name + ".expect", dir, web);
        std::string text = ReadWholeFile(dir + "\\" + script);
        for (const auto& r : expect.replaces) ReplaceAll(text, r.first, r.second);
        WriteWholeFile(dir + "\\" + script, text);
        for (const auto& f : expect.makeFiles) {
            CreateDirectoryA(f.first.substr(0, f.first.rfind('\\')).c_str(), nullptr);
            WriteWholeFile(f.first, f.second);
        }
        const std::string log = dir + "\\log.txt";
        WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Log");
        WriteSetting(nullptr, log.c_str(), 0, nullptr, ZR_ROOT "Logfile");
        ExitCode = EXIT_CODE_NOT_SET;

        Editor editor;
        ASSERT_GT(OpenFileInTab((dir + "\\" + script).c_str()), 0);
        SetForegroundWindow(editor.window);
        SetFocus(StepList);
        EXPECT_TRUE(editor.Key(VK_F5));
        EXPECT_TRUE(PumpUntil([] { return RunThread != nullptr; }, 5000)) << "F5 started no run";
        const bool ended = PumpUntil([] { return RunThread == nullptr; }, (DWORD)(expect.within + 30) * 1000);
        if (!ended) {
            SendMessageA(editor.window, WM_COMMAND, CMD_STOP, 0);
            PumpUntil([] { return RunThread == nullptr; }, 10000);
        }
        EXPECT_TRUE(ended) << "the run did not end";
        for (const std::string& kill : expect.kills) EndProcesses(kill.c_str());
        EndProcesses("notepad.exe");
        EndProcesses("orderform.exe");

        const std::vector<std::string> lines = Lines(ReadWholeFile(log));
        size_t at = 0;
        for (const std::string& wanted : expect.logHas) {
            while (at < lines.size() && !LineMatches(lines[at], wanted)) at++;
            EXPECT_LT(at, lines.size()) << "the log has no line \"" << wanted << "\":\n" << ReadWholeFile(log);
            if (at < lines.size()) at++;
        }
        if (!expect.lastLog.empty()) {
            std::string last;
            for (const std::string& line : lines)
                if (!line.empty()) last = line;
            EXPECT_TRUE(LineMatches(last, expect.lastLog)) << "the log's last line: " << last;
        }
        for (const auto& f : expect.files) EXPECT_EQ(ReadWholeFile(f.first), f.second) << f.first;
        if (expect.exit) {
            EXPECT_EQ(ExitCode, expect.exit);
        }
        // No failure box on the way.
        for (const SeenBox& box : SeenBoxes) ADD_FAILURE() << box.title << ": " << box.text;
        SeenBoxes.clear();
    }
}

}  // namespace
