// The fuzz driver: scripts are input from strangers, so this mutates the
// scenario scripts (cuts, overlong fields, entity and "%" abuse, byte flips,
// lost and doubled tags) and runs each result in-process through the reader,
// the run's step line (BeginStep's formatting) and the script checker. A
// fixed seed makes a run repeatable. An input that crashes the process is
// kept under the crashers folder first, and every kept input is run again at
// the start of each run, as a regression test.
//
//   fuzz_reader.exe SEED SECONDS CORPUS-FOLDER CRASHERS-FOLDER
#include <windows.h>

#include "bench_clock.h"
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "app/dispatch.h"
#include "base/files.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/checker.h"
#include "run/runstate.h"
#include "script/catalogue.h"
#include "script/scriptfile.h"
#include "script/step.h"

namespace {

int NoBox(HWND, const char*, const char*, UINT) { return IDOK; }

// The input in hand, kept where the crash handler can write it out.
std::string Current;
std::string CrashFolder;

LONG WINAPI KeepCrasher(EXCEPTION_POINTERS* info) {
    // A name from the input's own bytes, so the same crasher is kept once.
    unsigned long hash = 5381;
    for (unsigned char c : Current) hash = hash * 33 + c;
    char path[MAX_PATH];
    snprintf(path, sizeof path, "%s\\crash-%08lx.zxm", CrashFolder.c_str(), hash);
    if (FILE* f = fopen(path, "wb")) {
        fwrite(Current.data(), 1, Current.size(), f);
        fclose(f);
    }
    printf("CRASH (exception 0x%08lx): the input is kept as %s\n",
           info && info->ExceptionRecord ? (unsigned long)info->ExceptionRecord->ExceptionCode : 0ul, path);
    fflush(stdout);
    ExitProcess(3);
    return EXCEPTION_EXECUTE_HANDLER;
}

std::vector<std::string> Inputs(const std::string& folder) {
    std::vector<std::string> texts;
    WIN32_FIND_DATAA found;
    HANDLE find = FindFirstFileA((folder + "\\*.zxm").c_str(), &found);
    if (find == INVALID_HANDLE_VALUE) return texts;
    do texts.push_back(ReadWholeFile((folder + "\\" + found.cFileName).c_str()));
    while (FindNextFileA(find, &found));
    FindClose(find);
    return texts;
}

// A small generator of its own, so that a seed gives the same run anywhere.
unsigned long long State;
unsigned Next() {
    State = State * 6364136223846793005ULL + 1442695040888963407ULL;
    return (unsigned)(State >> 33);
}
size_t Pick(size_t n) { return n ? Next() % n : 0; }

const char* const kTags[] = {"<step>", "</step>", "<action>", "</action>", "<text>", "</text>", "<value1>",
                             "</value1>", "<comment>", "<!--", "-->", "<onfail value=\"", "<output value=\"",
                             "<ZantoRunner>", "</ZantoRunner>", "<recording>", "[1-2-3-4]"};
const char* const kAbuse[] = {"%s%s%s%s%n%n", "%%", "%", "&amp;amp;amp;", "&#", "&", "&lt;", "FindText(",
                              "InsertText(a, 99999999, b)", "%l%ll%llll", "%dd++99999999", "\"", "'", "\r\n",
                              "-2147483649", "99999999999999999999", "0x"};

void Mutate(std::string& s) {
    const int count = 1 + (int)Pick(4);
    for (int k = 0; k < count; k++) {
        const size_t at = Pick(s.size() + 1);
        switch (Pick(8)) {
        case 0: s.resize(at); break;                                        // cut
        case 1: s.insert(at, std::string(200 + Pick(6000), 'A' + (char)Pick(26))); break;  // overlong
        case 2: s.insert(at, kAbuse[Pick(sizeof kAbuse / sizeof *kAbuse)]); break;
        case 3: s.insert(at, kTags[Pick(sizeof kTags / sizeof *kTags)]); break;
        case 4:
            if (!s.empty()) s[Pick(s.size())] ^= (char)(1 << Pick(8));  // a flipped bit
            break;
        case 5: {  // a piece doubled
            const size_t length = Pick(200);
            if (at < s.size()) s.insert(at, s.substr(at, length));
            break;
        }
        case 6: {  // a tag lost
            const size_t tag = s.find('<', at);
            const size_t end = tag == std::string::npos ? tag : s.find('>', tag);
            if (end != std::string::npos) s.erase(tag, end - tag + 1);
            break;
        }
        default:  // a field of an action name made of abuse
            s.insert(at, std::string("<step><action>") + kAbuse[Pick(sizeof kAbuse / sizeof *kAbuse)] +
                             "</action><text>" + kAbuse[Pick(sizeof kAbuse / sizeof *kAbuse)] + "</text></step>");
        }
    }
}

// One input: read as a file load reads it, every step's line formatted as
// the run writes it, and the checker over the steps.
void RunOne(const std::string& input) {
    Current = input;
    ScriptStore.currentTab = 0;
    FreeSteps(0);
    FreeUndo(0);
    ScriptStore.tab[0] = TabStore{};
    ScriptStore.tab[0].selected = -1;
    FreeRecordings();
    std::string copy = input;
    CurrentTab().count += ReadSteps(&copy[0], -1);
    for (int i = 0; i < CurrentTab().count; i++) BeginStep(0, i);
    CheckOptions options;
    options.unattended = true;
    options.fileText = input.c_str();
    CheckScript(0, options);
}

}  // namespace

int main(int argc, char** argv) {
    const unsigned long long seed = argc > 1 ? strtoull(argv[1], nullptr, 10) : 1;
    const double seconds = argc > 2 ? atof(argv[2]) : 60;
    const std::string corpus = argc > 3 ? argv[3] : ".";
    CrashFolder = argc > 4 ? argv[4] : ".";
    SetUnhandledExceptionFilter(KeepCrasher);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    ShowMessageBox = NoBox;
    DeleteSetting(nullptr, "SOFTWARE\\ZantoRunner");  // logging off: the lines are formatted, not written
    FillActionsTree(nullptr);
    InstallStepHandlers();
    StepFailureText = (char*)HeapAllocZero(STEP_FAILURE_TEXT_SIZE);

    // The kept crashers first: each must now pass.
    const std::vector<std::string> kept = Inputs(CrashFolder);
    for (const std::string& input : kept) RunOne(input);
    const std::vector<std::string> seeds = Inputs(corpus);
    if (seeds.empty()) {
        printf("no scripts in %s\n", corpus.c_str());
        return 2;
    }
    State = seed;
    const double start = Now();
    unsigned long runs = 0;
    while (Now() - start < seconds) {
        std::string input = seeds[Pick(seeds.size())];
        Mutate(input);
        RunOne(input);
        runs++;
    }
    const double elapsed = Now() - start;
    printf("fuzz: seed %llu, %lu kept inputs passed, %lu mutated inputs run in %.1f s (%.0f inputs/s), 0 crashes\n",
           seed, (unsigned long)kept.size(), runs, elapsed, elapsed > 0 ? runs / elapsed : 0.0);
    printf("%lu passed, 0 failed\n", runs + (unsigned long)kept.size());
    return 0;
}
