// The harness's window probe for visible runs: waits for the main window of
// class "ZantoRunner", waits until its control ID holds TEXT, prints that
// control's text, saves a screenshot of the whole screen as a BMP, and closes
// the window as a user would. ID 0 is the main window itself (its title).
//
//   probe.exe ID TEXT SCREENSHOT.bmp
#include <windows.h>
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <string.h>

#include <string>

namespace {

std::string ControlText(HWND control) {
    LRESULT n = SendMessageA(control, WM_GETTEXTLENGTH, 0, 0);
    std::string text((size_t)n + 1, 0);
    SendMessageA(control, WM_GETTEXT, (WPARAM)n + 1, (LPARAM)&text[0]);
    text.resize((size_t)n);
    return text;
}

bool SaveScreen(const char* path) {
    int w = GetSystemMetrics(SM_CXSCREEN), h = GetSystemMetrics(SM_CYSCREEN);
    HDC screen = GetDC(nullptr);
    HDC mem = CreateCompatibleDC(screen);
    BITMAPINFO bi = {};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = w;
    bi.bmiHeader.biHeight = h;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    HBITMAP dib = CreateDIBSection(screen, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(mem, dib);
    BitBlt(mem, 0, 0, w, h, screen, 0, 0, SRCCOPY);
    SelectObject(mem, old);
    DWORD stride = ((DWORD)w * 3 + 3) & ~3u;
    BITMAPFILEHEADER fh = {};
    fh.bfType = 0x4D42;
    fh.bfOffBits = sizeof fh + sizeof bi.bmiHeader;
    fh.bfSize = fh.bfOffBits + stride * (DWORD)h;
    FILE* f = fopen(path, "wb");
    bool ok = f != nullptr;
    if (f) {
        fwrite(&fh, sizeof fh, 1, f);
        fwrite(&bi.bmiHeader, sizeof bi.bmiHeader, 1, f);
        fwrite(bits, 1, stride * (DWORD)h, f);
        fclose(f);
    }
    DeleteObject(dib);
    DeleteDC(mem);
    ReleaseDC(nullptr, screen);
    return ok;
}

// The control with the id anywhere inside the window: the Output palette's
// edit sits inside the palette, not on the main window itself.
HWND ControlById(HWND main, int id) {
    struct Search {
        int id;
        HWND found;
    } search = {id, nullptr};
    EnumChildWindows(
        main,
        [](HWND w, LPARAM p) -> BOOL {
            Search* s = (Search*)p;
            if (GetDlgCtrlID(w) != s->id) return TRUE;
            s->found = w;
            return FALSE;
        },
        (LPARAM)&search);
    return search.found;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    _setmode(_fileno(stdout), _O_BINARY);  // the control's CR LF go out as they are
    int id = atoi(argv[1]);
    const char* wanted = argv[2];
    HWND main = nullptr;
    for (int i = 0; i < 600 && !(main && IsWindowVisible(main)); i++) {
        main = FindWindowA("ZantoRunner", nullptr);
        if (!(main && IsWindowVisible(main))) Sleep(50);
    }
    if (!main) {
        printf("NOWINDOW\n");
        return 1;
    }
    HWND control = id ? ControlById(main, id) : main;
    std::string text;
    for (int i = 0; i < 600 && control; i++) {
        text = ControlText(control);
        if (strstr(text.c_str(), wanted)) break;
        Sleep(50);
    }
    Sleep(300);  // let the window paint before the picture
    SaveScreen(argv[3]);
    printf("TEXT\n%s\nEND\n", text.c_str());
    fflush(stdout);
    PostMessageA(main, WM_CLOSE, 0, 0);
    return 0;
}
