// An order-entry window for the recorder's tests: a menu, two edits, a list
// of products, a check box, buttons, and a "Customer details" window that the
// Order menu and a button open. When it closes it writes what was entered to
// the state file named on its command line, one "name=value" a line, so that
// a test can compare two sessions that were driven differently.
//
//   orderentry.exe STATEFILE [X Y WIDTH HEIGHT]
//
// Control IDs: 4201 name, 4202 quantity, 4203 products, 4204 Express, 4205
// Add, 4206 Customer..., 4207 the orders; in the customer window 4301 the
// number, 1 OK. Menu: File (New Order, Save, Exit), Order (Customer...).
#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

namespace {

enum {
    ID_NAME = 4201,
    ID_QUANTITY = 4202,
    ID_PRODUCTS = 4203,
    ID_EXPRESS = 4204,
    ID_ADD = 4205,
    ID_CUSTOMER = 4206,
    ID_ORDERS = 4207,
    ID_NUMBER = 4301,
    IDM_NEW = 5001,
    IDM_SAVE = 5002,
    IDM_EXIT = 5003,
    IDM_CUSTOMER = 5010,
};

HWND Form, Customer;
std::string StateFile, CustomerNumber;
std::vector<std::string> Orders;
int Saves;

std::string Text(HWND parent, int id) {
    char text[256] = "";
    GetDlgItemTextA(parent, id, text, sizeof text);
    return text;
}

HWND Make(HWND parent, const char* cls, const char* text, DWORD style, int x, int y, int w, int h, int id) {
    const DWORD ex = strcmp(cls, "EDIT") == 0 || strcmp(cls, "LISTBOX") == 0 ? WS_EX_CLIENTEDGE : 0;
    HWND c = CreateWindowExA(ex, cls, text, WS_CHILD | WS_VISIBLE | style, x, y, w, h, parent, (HMENU)(INT_PTR)id,
                             GetModuleHandleA(nullptr), nullptr);
    SendMessageA(c, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), 0);
    return c;
}

void Add() {
    HWND products = GetDlgItem(Form, ID_PRODUCTS);
    char product[64] = "";
    const LRESULT sel = SendMessageA(products, LB_GETCURSEL, 0, 0);
    if (sel >= 0) SendMessageA(products, LB_GETTEXT, (WPARAM)sel, (LPARAM)product);
    const bool express = SendDlgItemMessageA(Form, ID_EXPRESS, BM_GETCHECK, 0, 0) == BST_CHECKED;
    const std::string line = Text(Form, ID_NAME) + "," + Text(Form, ID_QUANTITY) + "," + product + "," +
                             (express ? "express" : "standard");
    Orders.push_back(line);
    SendDlgItemMessageA(Form, ID_ORDERS, LB_ADDSTRING, 0, (LPARAM)line.c_str());
    SetDlgItemTextA(Form, ID_NAME, "");
    SetDlgItemTextA(Form, ID_QUANTITY, "");
}

void OpenCustomer() {
    if (Customer) {
        SetForegroundWindow(Customer);
        return;
    }
    Customer = CreateWindowExA(WS_EX_DLGMODALFRAME, "ZantoOrderCustomer", "Customer details",
                               WS_POPUP | WS_CAPTION | WS_SYSMENU, 0, 0, 280, 130, Form, nullptr,
                               GetModuleHandleA(nullptr), nullptr);
    RECT r;
    GetWindowRect(Form, &r);
    SetWindowPos(Customer, nullptr, r.left + 60, r.top + 90, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    Make(Customer, "STATIC", "Customer number:", 0, 10, 14, 100, 20, -1);
    Make(Customer, "EDIT", CustomerNumber.c_str(), WS_TABSTOP | ES_AUTOHSCROLL, 115, 10, 140, 22, ID_NUMBER);
    Make(Customer, "BUTTON", "OK", WS_TABSTOP | BS_DEFPUSHBUTTON, 95, 55, 80, 26, IDOK);
    // Shown only once whole, so that whoever sees it can use it.
    ShowWindow(Customer, SW_SHOW);
    SetForegroundWindow(Customer);
    SetFocus(GetDlgItem(Customer, ID_NUMBER));
}

LRESULT CALLBACK CustomerProc(HWND w, UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_COMMAND:
        if (LOWORD(wp) == IDOK) {
            CustomerNumber = Text(w, ID_NUMBER);
            DestroyWindow(w);
        }
        return 0;
    case WM_CLOSE: DestroyWindow(w); return 0;
    case WM_DESTROY: Customer = nullptr; return 0;
    }
    return DefWindowProcA(w, msg, wp, lp);
}

void WriteState() {
    if (StateFile.empty()) return;
    FILE* f = fopen(StateFile.c_str(), "wb");
    if (!f) return;
    fprintf(f, "orders=%u\r\n", (unsigned)Orders.size());
    for (size_t i = 0; i < Orders.size(); i++) fprintf(f, "order%u=%s\r\n", (unsigned)i + 1, Orders[i].c_str());
    fprintf(f, "customer=%s\r\n", CustomerNumber.c_str());
    fprintf(f, "saves=%d\r\n", Saves);
    fclose(f);
}

LRESULT CALLBACK FormProc(HWND w, UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_COMMAND:
        switch (LOWORD(wp)) {
        case ID_ADD: Add(); break;
        case ID_CUSTOMER:
        case IDM_CUSTOMER: OpenCustomer(); break;
        case IDM_NEW:
            SetDlgItemTextA(w, ID_NAME, "");
            SetDlgItemTextA(w, ID_QUANTITY, "");
            break;
        case IDM_SAVE: Saves++; break;
        case IDM_EXIT: DestroyWindow(w); break;
        }
        return 0;
    case WM_DESTROY:
        WriteState();
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(w, msg, wp, lp);
}

HMENU MakeMenu() {
    HMENU bar = CreateMenu(), file = CreatePopupMenu(), order = CreatePopupMenu();
    AppendMenuA(file, MF_STRING, IDM_NEW, "&New Order");
    AppendMenuA(file, MF_STRING, IDM_SAVE, "&Save\tCtrl+S");
    AppendMenuA(file, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(file, MF_STRING, IDM_EXIT, "E&xit");
    AppendMenuA(order, MF_STRING, IDM_CUSTOMER, "&Customer...");
    AppendMenuA(bar, MF_POPUP, (UINT_PTR)file, "&File");
    AppendMenuA(bar, MF_POPUP, (UINT_PTR)order, "&Order");
    return bar;
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    if (__argc > 1) StateFile = __argv[1];
    int x = 100, y = 100, width = 460, height = 330;
    if (__argc > 5) {
        x = atoi(__argv[2]);
        y = atoi(__argv[3]);
        width = atoi(__argv[4]);
        height = atoi(__argv[5]);
    }
    WNDCLASSA wc = {};
    wc.lpfnWndProc = FormProc;
    wc.hInstance = instance;
    wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
    wc.hbrBackground = (HBRUSH)(COLOR_BTNFACE + 1);
    wc.lpszClassName = "ZantoOrderEntry";
    RegisterClassA(&wc);
    wc.lpfnWndProc = CustomerProc;
    wc.lpszClassName = "ZantoOrderCustomer";
    RegisterClassA(&wc);
    Form = CreateWindowExA(0, "ZantoOrderEntry", "Order entry", WS_OVERLAPPEDWINDOW, x, y, width, height, nullptr,
                           MakeMenu(), instance, nullptr);
    Make(Form, "STATIC", "Name:", 0, 10, 14, 70, 20, -1);
    Make(Form, "EDIT", "", WS_TABSTOP | ES_AUTOHSCROLL, 85, 10, 160, 22, ID_NAME);
    Make(Form, "STATIC", "Quantity:", 0, 10, 44, 70, 20, -1);
    Make(Form, "EDIT", "", WS_TABSTOP | ES_AUTOHSCROLL, 85, 40, 60, 22, ID_QUANTITY);
    HWND products = Make(Form, "LISTBOX", "", WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY, 260, 10, 170, 90, ID_PRODUCTS);
    for (const char* p : {"Apples", "Bread", "Cheese", "Dates"}) SendMessageA(products, LB_ADDSTRING, 0, (LPARAM)p);
    Make(Form, "BUTTON", "Express", WS_TABSTOP | BS_AUTOCHECKBOX, 85, 72, 100, 22, ID_EXPRESS);
    Make(Form, "BUTTON", "Add", WS_TABSTOP | BS_PUSHBUTTON, 85, 105, 80, 26, ID_ADD);
    Make(Form, "BUTTON", "Customer...", WS_TABSTOP | BS_PUSHBUTTON, 175, 105, 100, 26, ID_CUSTOMER);
    Make(Form, "LISTBOX", "", WS_VSCROLL, 10, 145, 420, 90, ID_ORDERS);
    ShowWindow(Form, SW_SHOW);
    SetForegroundWindow(Form);
    SetFocus(GetDlgItem(Form, ID_NAME));
    HACCEL keys = nullptr;
    ACCEL save = {FCONTROL | FVIRTKEY, 'S', IDM_SAVE};
    keys = CreateAcceleratorTableA(&save, 1);
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (TranslateAcceleratorA(Form, keys, &msg)) continue;
        if (Customer && IsDialogMessageA(Customer, &msg)) continue;
        if (IsDialogMessageA(Form, &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    DestroyAcceleratorTable(keys);
    return 0;
}
