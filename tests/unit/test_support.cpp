#include "test_support.h"

#include <stdio.h>
#include <objbase.h>
#include <msxml2.h>
#include <string.h>

#include "base/settings.h"
#include "app/dispatch.h"
#include "base/files.h"
#include "base/ui.h"
#include "desktop/imagefile.h"
#include "editor/frame.h"
#include "run/loopstack.h"
#include "run/runstate.h"
#include "script/catalogue.h"
#include "script/scriptfile.h"
#include "script/step.h"

std::vector<SeenBox> SeenBoxes;
int NextBoxAnswer = IDOK;

namespace {

StepHandler BuiltHandlers[18];

int RecordBox(HWND, const char* text, const char* title, UINT flags) {
    SeenBoxes.push_back({text ? text : "", title ? title : "", flags});
    return NextBoxAnswer;
}

}  // namespace

void InstallTestSeams() {
    // The tests are the editor's process: the frame's notifications and every
    // category's handler, as the program installs them at start-up.
    InstallEditorSeam();
    InstallStepHandlers();
    ShowMessageBox = RecordBox;
    memcpy(BuiltHandlers, StepHandlers, sizeof BuiltHandlers);
    if (!StepFailureText) StepFailureText = (char*)HeapAllocZero(STEP_FAILURE_TEXT_SIZE);
}

void ResetTestState() {
    DeleteSetting(nullptr, "SOFTWARE\\ZantoRunner");
    DeleteSetting(nullptr, "SOFTWARE\\ZantoTask");
    DeleteSetting(nullptr, "SOFTWARE\\ZantoTaskPro");
    for (int tab = MAX_TABS - 1; tab >= 0; tab--) {
        ScriptStore.currentTab = tab;
        FreeUndo(tab);
        FreeSteps(tab);
        ScriptStore.tab[tab] = TabStore{};
        ScriptStore.tab[tab].selected = -1;
    }
    ScriptStore.currentTab = 0;
    FreeRecordings();
    FillActionsTree(nullptr);
    SeenBoxes.clear();
    NextBoxAnswer = IDOK;
    StepFailureText[0] = 0;
    RunThread = nullptr;
    StopRequested = 0;
    ExitCode = EXIT_CODE_NOT_SET;
    LaunchFlags = 0;
    for (auto& r : RunRepeats) r = 0;
    for (int tab = 0; tab < 8; tab++) ClearLoopStack(tab);
    memcpy(StepHandlers, BuiltHandlers, sizeof BuiltHandlers);
}

std::string TempFolder() {
    // Each test runs in its own process, and process ids come back: take the
    // first name that is not there yet, so that no test sees another's files.
    static unsigned serial = GetTickCount();
    char base[MAX_PATH];
    GetTempPathA(sizeof base, base);
    char path[MAX_PATH];
    for (;;) {
        wsprintfA(path, "%szr_unit_%lu_%u", base, GetCurrentProcessId(), ++serial);
        if (CreateDirectoryA(path, nullptr)) return path;
    }
}

std::string LogIntoNewFolder(const char* name) {
    std::string dir = TempFolder();
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Log");
    WriteSetting(nullptr, (dir + "\\" + name).c_str(), 0, nullptr, ZR_ROOT "Logfile");
    return dir;
}

std::string ReadWholeFile(const std::string& path) { return ReadWholeFile(path.c_str()); }

void WriteWholeFile(const std::string& path, const std::string& text) {
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) return;
    fwrite(text.data(), 1, text.size(), f);
    fclose(f);
}

int LoadSteps(const std::string& xml) {
    std::string copy = xml;
    int n = ReadSteps(copy.data(), -1);
    CurrentTab().count += n;
    return n;
}

int ReplaceSteps(const std::string& xml) {
    ScriptStore.currentTab = 0;
    FreeSteps(0);
    ScriptStore.tab[0].count = 0;
    return LoadSteps(xml);
}

void RunProcess(const std::string& commandLine) {
    std::string line = commandLine;
    STARTUPINFOA si = {sizeof si};
    PROCESS_INFORMATION pi = {};
    if (!CreateProcessA(nullptr, &line[0], nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &si, &pi))
        return;
    WaitForSingleObject(pi.hProcess, 30000);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
}

void SaveBmp(const std::string& path, int w, int h, const std::vector<COLORREF>& pixels) {
    int stride = (w * 3 + 3) & ~3;
    std::vector<unsigned char> bytes((size_t)stride * h);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) {
            COLORREF c = pixels[(size_t)y * w + x];
            unsigned char* p = &bytes[(size_t)(h - 1 - y) * stride + x * 3];
            p[0] = GetBValue(c), p[1] = GetGValue(c), p[2] = GetRValue(c);
        }
    BITMAPFILEHEADER fh = {0x4D42, (DWORD)(54 + bytes.size()), 0, 0, 54};
    BITMAPINFOHEADER ih = {sizeof ih, w, h, 1, 24, BI_RGB};
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) return;
    fwrite(&fh, sizeof fh, 1, f);
    fwrite(&ih, sizeof ih, 1, f);
    fwrite(bytes.data(), 1, bytes.size(), f);
    fclose(f);
}

bool SaveScreenPng(const RECT& area, const std::string& path) {
    const int w = area.right - area.left, h = area.bottom - area.top;
    std::vector<DWORD> pixels;
    HDC screen = GetDC(nullptr);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) {
            const COLORREF c = GetPixel(screen, area.left + x, area.top + y);
            pixels.push_back((DWORD)GetRValue(c) << 16 | (DWORD)GetGValue(c) << 8 | GetBValue(c));
        }
    ReleaseDC(nullptr, screen);
    return WritePngFile(path.c_str(), pixels.data(), w, h);
}

// IID_IXMLDOMDocument, which no import library of the toolchain carries.
const IID kIXMLDOMDocument = {0x2933bf81, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};

std::string XmlParseError(const std::string& text) {
    CoInitialize(nullptr);
    CLSID clsid;
    IXMLDOMDocument* document = nullptr;
    if (FAILED(CLSIDFromProgID(L"Msxml2.DOMDocument.3.0", &clsid)) ||
        FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, kIXMLDOMDocument, (void**)&document)))
        return "no XML parser";
    std::wstring wide(text.begin(), text.end());
    BSTR xml = SysAllocStringLen(wide.data(), (UINT)wide.size());
    VARIANT_BOOL ok = VARIANT_FALSE;
    document->loadXML(xml, &ok);
    SysFreeString(xml);
    std::string reason;
    if (ok != VARIANT_TRUE) {
        reason = "not well-formed";
        IXMLDOMParseError* error = nullptr;
        if (SUCCEEDED(document->get_parseError(&error)) && error) {
            BSTR words = nullptr;
            long line = 0;
            error->get_reason(&words);
            error->get_line(&line);
            if (words) {
                std::wstring w(words);
                reason = std::string(w.begin(), w.end());
                SysFreeString(words);
            }
            reason += " (line " + std::to_string(line) + ")";
            error->Release();
        }
    }
    document->Release();
    return reason;
}
