// A small order form for the examples: three fields and an "Add" button that
// appends the fields as one CSV line to "entered.csv" beside the program, a
// list of what was entered, and a picture button that opens an "Order
// Details" window. The example scripts drive it as they would any form.
//
//   orderform.exe
//
// Control IDs: 4101 name, 4102 item, 4103 quantity, 4110 Add, 4111 the
// picture button, 4120 the list.
#include <windows.h>

#include <stdio.h>
#include <string.h>

#include <string>

namespace {

enum { ID_NAME = 4101, ID_ITEM = 4102, ID_QUANTITY = 4103, ID_ADD = 4110, ID_DETAILS = 4111, ID_LIST = 4120 };

HWND Form, List;
int Entered;

std::string Text(int id) {
    char text[256] = "";
    GetDlgItemTextA(Form, id, text, sizeof text);
    return text;
}

std::string BesideProgram(const char* name) {
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, sizeof path);
    if (char* slash = strrchr(path, '\\')) slash[1] = 0;
    return std::string(path) + name;
}

void Add() {
    const std::string line = Text(ID_NAME) + "," + Text(ID_ITEM) + "," + Text(ID_QUANTITY);
    if (FILE* f = fopen(BesideProgram("entered.csv").c_str(), "ab")) {
        fputs((line + "\r\n").c_str(), f);
        fclose(f);
    }
    SendMessageA(List, LB_ADDSTRING, 0, (LPARAM)line.c_str());
    for (int id : {ID_NAME, ID_ITEM, ID_QUANTITY}) SetDlgItemTextA(Form, id, "");
    SetFocus(GetDlgItem(Form, ID_NAME));  // ready for the next order, as forms are
    Entered++;
}

void ShowDetails() {
    char text[64];
    snprintf(text, sizeof text, "%d order(s) entered", Entered);
    HWND details = CreateWindowExA(WS_EX_TOOLWINDOW, "STATIC", "Order Details",
                                   WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE | SS_CENTER, 200, 200, 260, 80, Form,
                                   nullptr, GetModuleHandleA(nullptr), nullptr);
    SetWindowTextA(details, "Order Details");
    HWND label = CreateWindowExA(0, "STATIC", text, WS_CHILD | WS_VISIBLE | SS_CENTER, 0, 10, 250, 20, details,
                                 nullptr, GetModuleHandleA(nullptr), nullptr);
    SendMessageA(label, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), 0);
}

HWND Child(const char* cls, const char* text, DWORD style, int x, int y, int w, int h, int id) {
    HWND c = CreateWindowExA(strcmp(cls, "EDIT") == 0 || strcmp(cls, "LISTBOX") == 0 ? WS_EX_CLIENTEDGE : 0, cls, text,
                             WS_CHILD | WS_VISIBLE | style, x, y, w, h, Form, (HMENU)(INT_PTR)id,
                             GetModuleHandleA(nullptr), nullptr);
    SendMessageA(c, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), 0);
    return c;
}

LRESULT CALLBACK FormProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    switch (m) {
    case WM_COMMAND:
        if (LOWORD(wp) == ID_ADD) Add();
        else if (LOWORD(wp) == ID_DETAILS) ShowDetails();
        return 0;
    case WM_DESTROY: PostQuitMessage(0); return 0;
    }
    return DefWindowProcA(w, m, wp, lp);
}

}  // namespace

int main() {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = FormProc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "ZantoOrderForm";
    wc.hbrBackground = (HBRUSH)(COLOR_BTNFACE + 1);
    wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
    RegisterClassA(&wc);
    Form = CreateWindowExA(0, "ZantoOrderForm", "Order Form", WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX,
                           60, 60, 420, 300, nullptr, nullptr, wc.hInstance, nullptr);
    const char* labels[] = {"Name:", "Item:", "Quantity:"};
    for (int i = 0; i < 3; i++) {
        Child("STATIC", labels[i], 0, 12, 16 + 30 * i, 70, 20, -1);
        Child("EDIT", "", WS_TABSTOP | ES_AUTOHSCROLL, 90, 14 + 30 * i, 200, 22, ID_NAME + i);
    }
    Child("BUTTON", "Add", WS_TABSTOP | BS_DEFPUSHBUTTON, 300, 14, 90, 26, ID_ADD);
    HWND details = Child("BUTTON", "", WS_TABSTOP | BS_BITMAP, 300, 50, 90, 40, ID_DETAILS);
    HBITMAP picture = LoadBitmapA(wc.hInstance, "DETAILS");
    SendMessageA(details, BM_SETIMAGE, IMAGE_BITMAP, (LPARAM)picture);
    List = Child("LISTBOX", "", WS_VSCROLL | LBS_NOINTEGRALHEIGHT, 12, 110, 380, 140, ID_LIST);
    ShowWindow(Form, SW_SHOW);
    SetFocus(GetDlgItem(Form, ID_NAME));
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (IsDialogMessageA(Form, &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return 0;
}
